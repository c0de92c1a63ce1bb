#pragma once

#include <QRect>
#include <algorithm>

// A device rectangle as the drawing code reasons about it: integer edges,
// right and bottom being the first column and row past the rectangle for
// fills and clips, and the last ones drawn for the editor's outline.
struct ZWRect
{
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    int Width() const { return int(std::clamp<qint64>(qint64(right) - left, -MaxExtent, MaxExtent)); }
    int Height() const { return int(std::clamp<qint64>(qint64(bottom) - top, -MaxExtent, MaxExtent)); }
    bool IsEmpty() const { return right <= left || bottom <= top; }

    // The area [left, right) × [top, bottom) as a QRect. Absurd geometry
    // (cards kilometres wide) is clamped so that the arithmetic stays defined.
    QRect ToQRect() const
    {
        const auto clampEdge = [](int v) { return int(std::clamp<qint64>(v, -MaxExtent, MaxExtent)); };
        const int l = clampEdge(left), t = clampEdge(top);
        return QRect(l, t, clampEdge(right) - l, clampEdge(bottom) - t);
    }

    bool operator==(const ZWRect& other) const = default;

    static constexpr qint64 MaxExtent = 1 << 24;
};
