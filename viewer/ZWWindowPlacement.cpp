#include "viewer/ZWWindowPlacement.h"

#include <algorithm>

QRect ZWWindowPlacement::Place(
    const QRect& wanted, const QSize& defaultSize, const QRect& available, const QMargins& frame)
{
    // The room for the inner rectangle once the frame is around it.
    const QRect room = available.marginsRemoved(frame);
    if (room.width() <= 0 || room.height() <= 0)
        return wanted.isValid() ? wanted : QRect(QPoint(0, 0), defaultSize);
    const bool remembered = wanted.isValid() && !wanted.isEmpty();
    const QSize size = (remembered ? wanted.size() : defaultSize).boundedTo(room.size()).expandedTo(QSize(1, 1));
    QRect placed(QPoint(0, 0), size);
    if (remembered)
        placed.moveTopLeft(wanted.topLeft());
    else
        placed.moveCenter(room.center());
    const auto inside
        = [](int pos, int length, int low, int extent) { return std::clamp(pos, low, low + extent - length); };
    placed.moveTopLeft(QPoint(inside(placed.left(), size.width(), room.left(), room.width()),
        inside(placed.top(), size.height(), room.top(), room.height())));
    return placed;
}
