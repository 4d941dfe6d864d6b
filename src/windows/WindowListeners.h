#pragma once

#include <qorl/Geometry.h>

namespace qorl {

class UWindow;

/// Hears what happens to a window without being its controller. Registered by whoever owns it; not counted.
class WindowListener {
public:
    /// The size of the client changed; 11 is told to the window's dependents, too.
    virtual void windowSized(UWindow* window, CmSize oldSize) = 0;
    virtual void windowClosing(UWindow* window) = 0;

protected:
    ~WindowListener() = default;
};

/// Told around each paint with the bounding box of what is painted, in client coordinates.
class WindowPaintListener {
public:
    virtual void windowPaint(UWindow* window, const CmRect& bounds) = 0;

protected:
    ~WindowPaintListener() = default;
};

} // namespace qorl
