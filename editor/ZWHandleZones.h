#pragma once

#include "template/ZWRect.h"

#include <QPoint>

class ZWCardControl;

// What the mouse may do to a card at a point of its pixel rectangle: the
// dragging style (a bit set, 1 left, 2 right, 4 bottom, 8 top; 15 moves),
// the cursor that says so and the corner that stays fixed. The zones are
// screen pixels, whatever the zoom.
class ZWHandleZones
{
public:
    enum Style {
        None = 0,
        Left = 1,
        Right = 2,
        Bottom = 4,
        BottomLeft = 5,
        BottomRight = 6,
        Top = 8,
        TopLeft = 9,
        TopRight = 10,
        Move = 15,
    };

    // The window maps these to its cursors.
    enum class Cursor {
        Arrow,
        SizeWestEast,
        SizeNorthSouth,
        SizeNorthEastSouthWest,
        SizeNorthWestSouthEast,
        SizeAll,
        OverCard,
        Moving,
        NoEntry,
    };

    // 0 for no card or one that cannot be resized (it is moved instead).
    static int GetDraggingStyle(const ZWCardControl* card, const QPoint& point, const ZWRect& rect);
    // The cursor of a drag of this style: sizing for the edges and corners,
    // Moving otherwise.
    static Cursor DragCursor(int style);
    // The cursor while hovering: sizing over handles, OverCard elsewhere on
    // a card.
    static Cursor HoverCursor(int style);
    // Sets `anchor` to the corner of `rect` opposite the handle of `style`;
    // false (anchor untouched) for a move.
    static bool AnchorFor(int style, const ZWRect& rect, QPoint& anchor);
};
