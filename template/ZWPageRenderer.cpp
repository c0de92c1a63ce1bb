#include "template/ZWPageRenderer.h"

#include "host/core/ZWLoadString.h"
#include "host/core/ZWMath.h"
#include "host/core/ZWTextId.h"

#include <QPainter>
#include <QPainterPath>
#include <cmath>

tagDraw ZWPageRenderer::MakeDraw(const QPaintDevice* device, const ZWGlobalProperties& properties, double zoom,
    const QRect& target, int scrollX, int scrollY)
{
    const QPointF pxPerMm = ZWDevicePixelsPerMm(device);
    const double z = std::fabs(zoom);
    tagDraw draw;
    draw.pageWidthMm = properties.width;
    draw.pageHeightMm = properties.height;
    draw.pageWidthPx = z * properties.width * pxPerMm.x();
    draw.pageHeightPx = z * properties.height * pxPerMm.y();
    draw.roundWidthPx = z * properties.rounded * pxPerMm.x();
    draw.roundHeightPx = z * properties.rounded * pxPerMm.y();
    draw.left = (target.width() - draw.pageWidthPx) * 0.5;
    draw.top = (target.height() - draw.pageHeightPx) * 0.5;
    // A page wider than the target starts at the scroll position instead.
    if (roundi(draw.left) < 0)
        draw.left = -scrollX;
    if (roundi(draw.top) < 0)
        draw.top = -scrollY;
    draw.left += target.left();
    draw.top += target.top();
    draw.fontScale = zoom;
    draw.logicalResolution = true;
    return draw;
}

void ZWPageRenderer::DrawBackground(
    QPainter& dc, const tagDraw& draw, const ZWGlobalProperties& properties, quint32 outColor, const QRect& clip)
{
    dc.save();
    if (outColor != ZW_NO_COLOR)
        dc.fillRect(clip, ZWColorRefToQColor(outColor));
    // The page's edges truncated to whole pixels.
    const auto edge
        = [](double v) { return int(std::clamp(v, -double(ZWRect::MaxExtent), double(ZWRect::MaxExtent))); };
    const ZWRect page{
        edge(draw.left), edge(draw.top), edge(draw.left + draw.pageWidthPx), edge(draw.top + draw.pageHeightPx)};
    const QPainterPath rounded = RoundedPage(draw, page.ToQRect());
    if (rounded.isEmpty()) {
        dc.fillRect(page.ToQRect(), Qt::white);
        dc.restore();
        properties.background->Draw(dc, draw);
        return;
    }
    // Rounded corners: the out colour shows beyond them, the background
    // picture stays inside, and an outline draws them where the paper
    // around is white too.
    dc.setRenderHint(QPainter::Antialiasing, true);
    dc.fillPath(rounded, Qt::white);
    dc.save();
    dc.setClipPath(rounded, Qt::IntersectClip);
    properties.background->Draw(dc, draw);
    dc.restore();
    QPen outline(QColor(128, 128, 128));
    outline.setCosmetic(true);
    dc.strokePath(rounded, outline);
    dc.restore();
}

QPainterPath ZWPageRenderer::RoundedPage(const tagDraw& draw, const QRect& page)
{
    QPainterPath path;
    const double rx = std::min(std::fabs(draw.roundWidthPx), double(page.width())) * 0.5;
    const double ry = std::min(std::fabs(draw.roundHeightPx), double(page.height())) * 0.5;
    if (!(rx >= 0.5 && ry >= 0.5) || page.isEmpty())
        return path;
    // Half a pixel in, so that the outline's pixels lie on the page.
    path.addRoundedRect(QRectF(page).adjusted(0.5, 0.5, -0.5, -0.5), rx, ry);
    return path;
}

void ZWPageRenderer::DrawCards(
    QPainter& dc, const tagDraw& draw, const std::vector<std::unique_ptr<ZWCardControl>>& cards, int layers)
{
    for (int layer = 0; layer < layers; ++layer)
        for (const auto& card : cards)
            if (card->layer == layer)
                card->Draw(dc, draw);
}

QSize ZWPageRenderer::PageSize(const ZWGlobalProperties& properties, double dpi)
{
    const double pxPerMm = std::round(dpi / 0.0254) / 1000.0;
    const double w = properties.width * pxPerMm;
    const double h = properties.height * pxPerMm;
    if (!(w >= 1.0 && h >= 1.0 && w * h <= double(MaxPixels)))
        return QSize();
    return QSize(roundi(w), roundi(h));
}

QString ZWPageRenderer::SizeProblem(const ZWGlobalProperties& properties, double dpi)
{
    const std::pair<double, int> sides[]
        = {{properties.width, ZWTextId::PageWidth}, {properties.height, ZWTextId::PageHeight}};
    for (const auto& [mm, side] : sides) {
        const QString name = ZWLoadString(side);
        if (std::isnan(mm))
            return ZWLoadString(ZWTextId::PageSizeNotANumber).arg(name);
        if (mm == 0.0)
            return ZWLoadString(ZWTextId::PageSizeZero).arg(name);
        if (mm < 0.0)
            return ZWLoadString(ZWTextId::PageSizeNegative).arg(name).arg(mm, 0, 'f', 2);
        if (dpi <= 0.0 && mm > MaxPdfMm)
            return ZWLoadString(ZWTextId::PageSizeTooLargeForPdf).arg(name).arg(mm, 0, 'g', 6).arg(MaxPdfMm, 0, 'f', 0);
    }
    if (dpi > 0.0 && !PageSize(properties, dpi).isValid()) {
        const double pxPerMm = dpi / 25.4;
        if (properties.width * pxPerMm < 1.0 || properties.height * pxPerMm < 1.0)
            return ZWLoadString(ZWTextId::PageSmallerThanAPixel).arg(dpi);
        return ZWLoadString(ZWTextId::PageTooLargeAtDpi)
            .arg(dpi)
            .arg(properties.width * pxPerMm, 0, 'f', 0)
            .arg(properties.height * pxPerMm, 0, 'f', 0)
            .arg(MaxPixels / 1000000);
    }
    return QString();
}

QImage ZWPageRenderer::PageImage(const ZWGlobalProperties& properties, double dpi)
{
    if (!(dpi >= 1.0 && dpi <= 2400.0))
        return QImage();
    const QSize size = PageSize(properties, dpi);
    if (!size.isValid())
        return QImage();
    QImage image(size, QImage::Format_RGB32);
    if (image.isNull())
        return image;
    const int dotsPerMeter = int(std::round(dpi / 0.0254));
    image.setDotsPerMeterX(dotsPerMeter);
    image.setDotsPerMeterY(dotsPerMeter);
    image.fill(Qt::white);
    return image;
}

QImage ZWPageRenderer::RenderPage(ZWTemplatePage& page, double dpi)
{
    QImage image = PageImage(page.properties, dpi);
    if (image.isNull())
        return image;
    const QSize size = image.size();
    QPainter painter(&image);
    painter.setRenderHint(QPainter::TextAntialiasing, true);
    const QRect target(QPoint(0, 0), size);
    const tagDraw draw = MakeDraw(&image, page.properties, 1.0, target);
    DrawBackground(painter, draw, page.properties, ZW_NO_COLOR, target);
    DrawCards(painter, draw, page.cards);
    painter.end();
    return image;
}
