#include "editor/ZWHandleZones.h"

#include "template/ZWCardControl.h"

namespace {

// Left and top included, right and bottom excluded, as the card's own
// rectangle is hit-tested.
bool Contains(int l, int t, int r, int b, const QPoint& p)
{
    return p.x() >= l && p.x() < r && p.y() >= t && p.y() < b;
}

} // namespace

int ZWHandleZones::GetDraggingStyle(const ZWCardControl* card, const QPoint& p, const ZWRect& rect)
{
    if (!card || !card->Resizable())
        return None;
    const int l = rect.left, t = rect.top, r = rect.right, b = rect.bottom;
    struct Zone
    {
        int l, t, r, b, style;
    };
    // Corners first (an L of 10 along the horizontal edge and 6 along the
    // vertical one), then the edges, 3 pixels thick.
    const Zone zones[] = {
        {l, t, l + 10, t + 3, TopLeft},
        {l, t, l + 3, t + 6, TopLeft},
        {l, b - 3, l + 10, b, BottomLeft},
        {l, b - 6, l + 3, b, BottomLeft},
        {r - 10, t, r, t + 3, TopRight},
        {r - 3, t, r, t + 6, TopRight},
        {r - 10, b - 3, r, b, BottomRight},
        {r - 3, b - 6, r, b, BottomRight},
        {l, t, r, t + 3, Top},
        {l, b - 3, r, b, Bottom},
        {l, t, l + 3, b, Left},
        {r - 3, t, r, b, Right},
    };
    for (const Zone& z : zones) {
        if (Contains(z.l, z.t, z.r, z.b, p))
            return z.style;
    }
    return Move;
}

ZWHandleZones::Cursor ZWHandleZones::DragCursor(int style)
{
    switch (style) {
    case Left:
    case Right:
        return Cursor::SizeWestEast;
    case Bottom:
    case Top:
        return Cursor::SizeNorthSouth;
    case BottomLeft:
    case TopRight:
        return Cursor::SizeNorthEastSouthWest;
    case BottomRight:
    case TopLeft:
        return Cursor::SizeNorthWestSouthEast;
    default:
        return Cursor::Moving;
    }
}

ZWHandleZones::Cursor ZWHandleZones::HoverCursor(int style)
{
    const Cursor c = DragCursor(style);
    return c == Cursor::Moving ? Cursor::OverCard : c;
}

bool ZWHandleZones::AnchorFor(int style, const ZWRect& rect, QPoint& anchor)
{
    switch (style) {
    case Left:
    case BottomLeft:
        anchor = QPoint(rect.right, rect.top);
        return true;
    case Right:
    case Bottom:
    case BottomRight:
        anchor = QPoint(rect.left, rect.top);
        return true;
    case Top:
    case TopRight:
        anchor = QPoint(rect.left, rect.bottom);
        return true;
    case TopLeft:
        anchor = QPoint(rect.right, rect.bottom);
        return true;
    default:
        return false;
    }
}
