#include "platform/PollSource.h"

#include "platform/headless/HeadlessDesktop.h"
#include "platform/x11/X11Desktop.h"
#include "support/PlatformThread.h"
#include "support/XServer.h"

#include <gtest/gtest.h>
#include <memory>
#include <unistd.h>

namespace qorl::platform {
namespace {

/// A foreign event loop whose events are bytes in a pipe.
class PipeSource : public PollSource {
public:
    PipeSource() { EXPECT_EQ(pipe(ends_), 0); }
    ~PipeSource() {
        close(ends_[0]);
        close(ends_[1]);
    }

    void write(char byte) { EXPECT_EQ(::write(ends_[1], &byte, 1), 1); }

    int64_t prepare(std::vector<PollEntry>& entries) override {
        entries.push_back({ends_[0], PollEntry::readable, 0});
        return -1;
    }
    bool check(const PollEntry* entries, size_t count) override {
        EXPECT_EQ(count, 1U);
        return entries->got & PollEntry::readable;
    }
    void dispatch() override {
        char byte = 0;
        EXPECT_EQ(read(ends_[0], &byte, 1), 1);
        taken += byte;
    }

    std::string taken;

private:
    int ends_[2] = {-1, -1};
};

void expectToServe(DesktopServices& desktop) {
    PipeSource first;
    PipeSource second;
    desktop.addPollSource(first);
    desktop.addPollSource(first);
    desktop.addPollSource(second);
    EXPECT_FALSE(desktop.hasEvent());
    second.write('b');
    first.write('a');
    first.write('c');
    EXPECT_EQ(desktop.waitForEvent(-1), WaitResult::event);
    desktop.processEvents();
    EXPECT_EQ(first.taken, "ac");
    EXPECT_EQ(second.taken, "b");

    second.write('d');
    EXPECT_TRUE(desktop.hasEvent());
    desktop.removePollSource(second);
    EXPECT_FALSE(desktop.dispatchEvent()) << "a source that left is not called";
    desktop.removePollSource(first);
}

TEST(PollSource, IsServedBesideTheHeadlessDesktop) {
    HeadlessDesktop desktop;
    expectToServe(desktop);
}

TEST(PollSource, IsServedBesideAnXServerWhoseWaitAnotherThreadEnds) {
    const test::XServer server(test::XServer::Manager::none);
    std::string error;
    const std::unique_ptr<DesktopServices> desktop = X11Desktop::create(server.getDisplay(), error);
    ASSERT_NE(desktop, nullptr) << error;
    desktop->processEvents();
    expectToServe(*desktop);

    const testing::PlatformThread waker([&] { desktop->wakeUp(); });
    EXPECT_EQ(desktop->waitForEvent(60'000), WaitResult::wakeUp);
    EXPECT_TRUE(waker.ends());
}

} // namespace
} // namespace qorl::platform
