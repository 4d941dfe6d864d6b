#include "platform/x11/X11Wheel.h"

#include <gtest/gtest.h>
#include <vector>

namespace qorl::platform {
namespace {

TEST(X11Wheel, CountsNotchesFromWhereItsAxesStand) {
    const std::vector<X11Wheel::Axis> axes = {{9, 2, true, 15}, {9, 35, false, 15}, {11, 2, true, -120}};
    struct Move {
        const char* what;
        uint16_t source;
        uint32_t mask[2];
        std::vector<double> values;
        double x, y;
    };
    const auto play = [](X11Wheel& wheel, const std::vector<Move>& moves) {
        for (const Move& move : moves) {
            const WheelDistance distance = wheel.move(move.source, move.mask, 2, move.values.data());
            EXPECT_EQ(distance.x, move.x) << move.what;
            EXPECT_EQ(distance.y, move.y) << move.what;
        }
    };
    X11Wheel wheel;
    wheel.setAxes(axes);
    play(wheel, {
                    {"where it stands is no turn", 9, {4, 0}, {1000}, 0, 0},
                    {"towards the user", 9, {4, 0}, {1015}, 0, -1},
                    {"a third of a notch, with the mouse's place", 9, {7, 0}, {50, 60, 1010}, 0, 1.0 / 3},
                    {"the other axis was nowhere", 9, {4, 8}, {1010, 30}, 0, 0},
                    {"two at once", 9, {4, 8}, {995, 60}, 2, 1},
                    {"turned round", 11, {4, 0}, {0}, 0, 0},
                    {"turned round", 11, {4, 0}, {120}, 0, 1},
                    {"no wheel of ours", 12, {4, 0}, {500}, 0, 0},
                });
    wheel.forgetPositions();
    play(wheel, {{"it went on elsewhere", 9, {4, 0}, {4000}, 0, 0}, {"here again", 9, {4, 0}, {3985}, 0, 1}});
    wheel.setAxes(axes);
    play(wheel, {{"another device took the number", 9, {4, 0}, {0}, 0, 0}});
}

} // namespace
} // namespace qorl::platform
