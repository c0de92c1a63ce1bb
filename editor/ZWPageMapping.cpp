#include "editor/ZWPageMapping.h"

#include "host/core/ZWMath.h"
#include "template/ZWCardControl.h"
#include "template/ZWGlobalProperties.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

double OnGrid(double value, double grid)
{
    return std::round(value / grid) * grid;
}

} // namespace

ZWPageMapping::ZWPageMapping(ZWGlobalProperties& page) : m_page(page)
{
    m_orientation = page.IsPortrait() ? 1 : 0;
}

void ZWPageMapping::SetDevice(double pixelsPerMmX, double pixelsPerMmY)
{
    m_pixelsPerMmX = pixelsPerMmX;
    m_pixelsPerMmY = pixelsPerMmY;
}

bool ZWPageMapping::HasDevice() const
{
    // A page without area cannot be mapped either: every conversion divides
    // by its size in pixels.
    return m_pixelsPerMmX > 0.0 && m_pixelsPerMmY > 0.0 && m_page.width > 0.0 && m_page.height > 0.0;
}

void ZWPageMapping::SetClientSize(int width, int height)
{
    m_clientWidth = width;
    m_clientHeight = height;
}

void ZWPageMapping::SetScrollPosition(int x, int y)
{
    m_scrollX = x;
    m_scrollY = y;
}

bool ZWPageMapping::GetTemplateDimensions(Dimensions& d)
{
    if (!HasDevice())
        return false;
    if (m_zoom == FitPending)
        SetMode(1);
    d.pixelsPerMmX = m_pixelsPerMmX;
    d.pixelsPerMmY = m_pixelsPerMmY;
    const double z = std::fabs(m_zoom);
    d.pageWidthPx = m_page.width * m_pixelsPerMmX * z;
    d.pageHeightPx = m_page.height * m_pixelsPerMmY * z;
    d.roundedXPx = z * m_pixelsPerMmX * m_page.rounded;
    d.roundedYPx = z * m_pixelsPerMmY * m_page.rounded;
    d.offsetX = (m_clientWidth - d.pageWidthPx) * 0.5;
    d.offsetY = (m_clientHeight - d.pageHeightPx) * 0.5;
    // A page larger than the window starts at its scroll position instead of
    // being centred.
    if (roundi(d.offsetX) < 0)
        d.offsetX = -m_scrollX;
    if (roundi(d.offsetY) < 0)
        d.offsetY = -m_scrollY;
    return true;
}

bool ZWPageMapping::SetMode(int mode)
{
    const double previous = m_zoom;
    switch (mode) {
    case 0:
        if (!HasDevice()) {
            m_zoom = FitPending;
        } else {
            const double zx = m_clientWidth / m_pixelsPerMmX / m_page.width;
            const double zy = m_clientHeight / m_pixelsPerMmY / m_page.height;
            m_zoom = -std::min(zx, zy);
        }
        break;
    case 2:
        m_zoom = 2.0;
        break;
    case 3:
        m_zoom = 3.0;
        break;
    case 4:
        m_zoom = 4.0;
        break;
    case 100:
        break;
    default:
        m_zoom = 1.0;
        break;
    }
    return m_zoom != previous;
}

bool ZWPageMapping::SetMode(double factor)
{
    if (factor == m_zoom)
        return false;
    m_zoom = factor;
    return true;
}

bool ZWPageMapping::SetOrientation(int orientation)
{
    m_orientation = orientation;
    const bool swap
        = (orientation == 0 && m_page.width < m_page.height) || (orientation != 0 && m_page.width > m_page.height);
    if (!swap)
        return false;
    std::swap(m_page.width, m_page.height);
    if (m_zoom < 0.0)
        SetMode(0);
    return true;
}

bool ZWPageMapping::GetMinimumControlDimensions(double& w, double& h)
{
    if (!HasDevice())
        return false;
    if (m_zoom == FitPending)
        SetMode(1);
    const double z = std::fabs(m_zoom);
    w = z * m_page.width * m_pixelsPerMmX;
    h = z * m_page.height * m_pixelsPerMmY;
    return true;
}

void ZWPageMapping::GetInitialControlDimensions(const QPoint& lastMouse, double& x, double& y, double& w, double& h)
{
    Dimensions d;
    if (!GetTemplateDimensions(d)) {
        x = y = 0.0;
        w = h = 10.0;
        return;
    }
    const double z = std::fabs(m_zoom);
    const int widthPx = m_page.xgrid > 0.0 ? roundi(z * m_page.xgrid * d.pixelsPerMmX) : 30;
    const int heightPx = m_page.ygrid > 0.0 ? roundi(z * m_page.ygrid * d.pixelsPerMmY) : 30;
    // Kept on the page: its far edge at most on the page's last pixel, its
    // near edge at least on the first.
    const auto place = [](int start, int size, double offset, double extent) {
        const int last = roundi(offset + extent - 1.0);
        if (start + size > last)
            return last - size;
        if (start < roundi(offset))
            return roundi(offset);
        return start;
    };
    const int left = place(lastMouse.x(), widthPx, d.offsetX, d.pageWidthPx);
    const int top = place(lastMouse.y(), heightPx, d.offsetY, d.pageHeightPx);
    x = PixelToMmX(left, d);
    y = PixelToMmY(top, d);
    w = widthPx * m_page.width / d.pageWidthPx;
    h = heightPx * m_page.height / d.pageHeightPx;
    if (m_page.xgrid > 0.0) {
        const double right = x + w;
        x = OnGrid(x, m_page.xgrid);
        w = OnGrid(right, m_page.xgrid) - x;
    }
    if (m_page.ygrid > 0.0) {
        const double bottom = y + h;
        y = OnGrid(y, m_page.ygrid);
        h = OnGrid(bottom, m_page.ygrid) - y;
    }
}

ZWRect ZWPageMapping::CardRect(const ZWCardControl& card, const Dimensions& d) const
{
    const double left = d.pageWidthPx * card.x / m_page.width + d.offsetX;
    const double top = d.pageHeightPx * card.y / m_page.height + d.offsetY;
    ZWRect r;
    r.left = roundi(left);
    r.top = roundi(top);
    r.right = roundi(left + d.pageWidthPx * card.width / m_page.width);
    r.bottom = roundi(top + d.pageHeightPx * card.height / m_page.height);
    return r;
}

ZWRect ZWPageMapping::PageRect(const Dimensions& d) const
{
    ZWRect r;
    r.left = int(d.offsetX);
    r.top = int(d.offsetY);
    r.right = int(d.offsetX + d.pageWidthPx);
    r.bottom = int(d.offsetY + d.pageHeightPx);
    return r;
}

double ZWPageMapping::PixelToMmX(double px, const Dimensions& d) const
{
    return (px - d.offsetX) * m_page.width / d.pageWidthPx;
}

double ZWPageMapping::PixelToMmY(double px, const Dimensions& d) const
{
    return (px - d.offsetY) * m_page.height / d.pageHeightPx;
}

QPoint ZWPageMapping::SnapPointToGrid(const QPoint& p, const Dimensions& d) const
{
    const double z = std::fabs(m_zoom);
    QPoint out = p;
    if (m_page.xgrid > 0.0) {
        const double s = z * d.pixelsPerMmX;
        const double mm = std::max(0.0, (p.x() - d.offsetX) / s);
        out.setX(roundi(OnGrid(mm, m_page.xgrid) * s + d.offsetX));
    }
    if (m_page.ygrid > 0.0) {
        const double s = z * d.pixelsPerMmY;
        const double mm = std::max(0.0, (p.y() - d.offsetY) / s);
        out.setY(roundi(OnGrid(mm, m_page.ygrid) * s + d.offsetY));
    }
    return out;
}

void ZWPageMapping::IntelligentAdjustToGrid(ZWCardControl& card, const Dimensions& d) const
{
    const auto adjust = [](double& pos, double& size, double grid, double tolerance) {
        if (grid <= 0.0)
            return;
        if (std::fabs(OnGrid(pos, grid) - pos) < tolerance)
            pos = OnGrid(pos, grid);
        const double far = pos + size;
        if (std::fabs(OnGrid(far, grid) - far) < tolerance)
            size = OnGrid(far, grid) - pos;
    };
    adjust(card.x, card.width, m_page.xgrid, d.MmPerPixelX(m_page.width));
    adjust(card.y, card.height, m_page.ygrid, d.MmPerPixelY(m_page.height));
}
