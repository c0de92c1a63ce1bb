#pragma once

#include <QMargins>
#include <QRect>
#include <QSize>

// Where a window opens: the place and size it had last time, or a default
// size in the middle of the screen, always whole on the screen's free area.
class ZWWindowPlacement
{
public:
    // The window's inner rectangle (without the frame the window manager
    // adds, `frame`) on `available`, the screen's free area: `wanted` (a
    // remembered rectangle; null for none) or `defaultSize` centred. The
    // size is cut to what fits, then the window is moved inside.
    static QRect Place(
        const QRect& wanted, const QSize& defaultSize, const QRect& available, const QMargins& frame = QMargins());
};
