#include "template/tagDraw.h"

#include "host/core/ZWMath.h"

#include <QImage>
#include <QPaintDevice>

namespace {

double Ratio(double px, double mm)
{
    return mm != 0.0 ? px / mm : 0.0;
}

} // namespace

ZWRect tagDraw::CardRect(double x, double y, double width, double height) const
{
    const double sx = Ratio(pageWidthPx, pageWidthMm);
    const double sy = Ratio(pageHeightPx, pageHeightMm);
    ZWRect r;
    r.left = roundi(roundi(left) + x * sx) - scrollX;
    r.top = roundi(roundi(top) + y * sy) - scrollY;
    r.right = int(std::clamp<qint64>(qint64(r.left) + roundi(width * sx), INT_MIN, INT_MAX));
    r.bottom = int(std::clamp<qint64>(qint64(r.top) + roundi(height * sy), INT_MIN, INT_MAX));
    return r;
}

ZWRect tagDraw::PageRect() const
{
    ZWRect r;
    r.left = roundi(left) - scrollX;
    r.top = roundi(top) - scrollY;
    r.right = int(std::clamp<qint64>(qint64(roundi(left)) + roundi(pageWidthPx) + 1 - scrollX, INT_MIN, INT_MAX));
    r.bottom = int(std::clamp<qint64>(qint64(roundi(top)) + roundi(pageHeightPx) + 1 - scrollY, INT_MIN, INT_MAX));
    return r;
}

QPainterPath tagDraw::PageClipPath() const
{
    const QRectF rect = PageRect().ToQRect();
    QPainterPath path;
    if (roundWidthPx > 0.0 && roundHeightPx > 0.0)
        path.addRoundedRect(rect, roundWidthPx / 2.0, roundHeightPx / 2.0);
    else
        path.addRect(rect);
    return path;
}

bool tagDraw::IsVisible(const ZWRect& area, const ZWRect& rect)
{
    return !(rect.bottom < area.top || rect.top > area.bottom || rect.right < area.left || rect.left > area.right);
}

bool tagDraw::IsVisible(const ZWRect& rect) const
{
    return !visibleArea || IsVisible(*visibleArea, rect);
}

QPointF ZWDevicePixelsPerMm(const QPaintDevice* device)
{
    if (!device)
        return QPointF(96.0 / 25.4, 96.0 / 25.4);
    if (device->devType() == QInternal::Image) {
        const auto* image = static_cast<const QImage*>(device);
        if (image->dotsPerMeterX() > 0 && image->dotsPerMeterY() > 0)
            return QPointF(image->dotsPerMeterX() / 1000.0, image->dotsPerMeterY() / 1000.0);
    }
    // The resolution fonts are laid out at, so that text and geometry scale
    // together: a PDF writer's or printer's resolution, a screen's logical
    // dots per inch. (A PDF writer reports a physical resolution of its own
    // that is not the one it draws at.)
    const int dpiX = device->logicalDpiX() > 0 ? device->logicalDpiX() : device->physicalDpiX();
    const int dpiY = device->logicalDpiY() > 0 ? device->logicalDpiY() : device->physicalDpiY();
    return QPointF(std::max(dpiX, 1) / 25.4, std::max(dpiY, 1) / 25.4);
}
