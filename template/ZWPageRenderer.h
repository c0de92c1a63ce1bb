#pragma once

#include "template/ZWTemplatePage.h"
#include "template/tagDraw.h"

#include <QImage>
#include <QRect>

class QPainter;
class QPainterPath;
class QPaintDevice;

// Drawing a whole page: the placement of the page on a device at a zoom,
// the page background and the cards layer by layer. The viewer and editor
// windows draw through it, and so does rendering a report to pictures.
class ZWPageRenderer
{
public:
    // The drawing record for `properties` on `device` at zoom |zoom| (1.0 =
    // real size), centred in `target` when it fits there, else scrolled to
    // (scrollX, scrollY).
    static tagDraw MakeDraw(const QPaintDevice* device, const ZWGlobalProperties& properties, double zoom,
        const QRect& target, int scrollX = 0, int scrollY = 0);
    // The out colour over `clip` (unless it is ZW_NO_COLOR), the page white,
    // then the page's background card; a page with rounded corners is
    // filled, clipped and outlined as its rounded rectangle.
    static void DrawBackground(
        QPainter& dc, const tagDraw& draw, const ZWGlobalProperties& properties, quint32 outColor, const QRect& clip);
    // Every card of layer 0 in list order, then every card of layer 1, and so
    // on up to `layers` − 1.
    static void DrawCards(
        QPainter& dc, const tagDraw& draw, const std::vector<std::unique_ptr<ZWCardControl>>& cards, int layers = 2);
    // The page at real size as a picture of `dpi` dots per inch (the page's
    // size in pixels: PageSize). A null image when the page would be larger
    // than MaxPixels or the resolution is out of 1..2400.
    static QImage RenderPage(ZWTemplatePage& page, double dpi);
    // A white picture of the page's size at `dpi`, measuring millimetres as
    // the page does (null as for RenderPage).
    static QImage PageImage(const ZWGlobalProperties& properties, double dpi);
    static QSize PageSize(const ZWGlobalProperties& properties, double dpi);
    // Why a page cannot be drawn: a width or height of 0, negative or not a
    // number; for a PDF (`dpi` 0) larger than a PDF page can be (MaxPdfMm);
    // for a picture at `dpi`, more than MaxPixels or less than a pixel.
    // Empty when it can be drawn.
    static QString SizeProblem(const ZWGlobalProperties& properties, double dpi = 0.0);
    // The rounded outline of the page filling `page` on the device; empty
    // for square corners.
    static QPainterPath RoundedPage(const tagDraw& draw, const QRect& page);

    static constexpr qint64 MaxPixels = 200'000'000;
    // 14,400 points, the largest page side a PDF reader must accept.
    static constexpr double MaxPdfMm = 5080.0;
};
