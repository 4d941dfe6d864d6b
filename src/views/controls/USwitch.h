#pragma once

#include "views/controls/USwitchBase.h"

namespace qorl {

class UDrawDevice;
class UFilmStrip;

/// A switch that shows frames of a bitmap by its state; without a bitmap a button that stays down while it is
/// on.
///
/// A film strip with two frames a state shows the state released and pressed in turn; with one frame a state
/// only the state. Any other number of frames is spread over the range of the value.
class USwitch : public USwitchBase {
    QORL_CLASS(USwitch, USwitchBase)

public:
    using USwitchBase::USwitchBase;

    bool drawContent(const CmRect& rect) override;
    void resizeToFit(int32_t extraWidth, int32_t extraHeight) override;

    void setBitmap(Ref<UBitmap> bitmap);
    /// A word of `TextJust` for the title.
    void setJust(uint32_t just) { just_ = just; }

protected:
    ~USwitch() override;

    /// The frame for the present state.
    int32_t getFrameIndex(int32_t frameCount) const;

private:
    void drawButtonLook(UDrawDevice& device);
    CmSize getBitmapSize() const;

    Ref<UBitmap> bitmap_;
    UFilmStrip* frames_ = nullptr; ///< `bitmap_` when that is a film strip.
    uint32_t just_ = 0;
};

} // namespace qorl
