#pragma once

#include "host/core/XmlDocument.h"
#include "template/ZWTemplatePage.h"

#include <QByteArray>
#include <QPointF>
#include <QRect>
#include <QSize>

class QPainter;
class QPaintDevice;

// One page of a report as the viewer shows it: the page and its cards, the
// values put into them (the value document), the zoom factor and the out
// colour, drawing at a zoom and printing at real size. The page window
// (ZWViewTemplateWnd) is this object plus a widget; rendering to PDF or
// pictures uses it without one.
class ZWViewPage
{
public:
    ZWViewPage();
    virtual ~ZWViewPage();

    // Builds the page from a "page" element and re-applies the current
    // value document.
    virtual bool SetTemplate(const XmlDocument::XmlNode& page);
    // Takes a value document; a malformed one is refused (false) and the
    // cards keep their values.
    bool SetUserData(const QByteArray& text);
    // Puts every value of the value document into the card with its id.
    bool RechargeUserDataValues();
    // One value into one card, by element name and card kind.
    virtual bool RechargeValue(ZWCardControl* card, const XmlDocument::XmlNode& element);

    // Zoom: mode 0 fits `clientSize` (pixels at `pixelsPerMm`), 1..4 are
    // fixed factors, 100 keeps the factor, any other mode is 1.0. True when
    // the factor changed.
    bool SetMode(int mode, const QSize& clientSize = QSize(), const QPointF& pixelsPerMm = QPointF());
    bool SetMode(double factor);
    void GetMode(double& factor) const { factor = m_factor; }
    double Factor() const { return m_factor; }

    double GetWidth() const { return m_page.properties.width; }
    double GetHeight() const { return m_page.properties.height; }
    void SetOutColor(quint32 color) { m_page.properties.outColor = color; }
    quint32 GetOutColor() const { return m_page.properties.outColor; }
    bool HasTemplate() const { return m_hasTemplate; }
    // Windows mark a picture that cannot be drawn on its card; paper does not
    // (Print leaves the mark out).
    void SetMarkProblems(bool mark) { m_markProblems = mark; }

    // The page's placed size in pixels at the present factor on `device`.
    QSizeF GetMinimumControlDimensions(const QPaintDevice* device) const;

    // Draws the page in `target` of the painter's device: out colour,
    // page, background and cards by layer. `logicalResolution` goes to the
    // fonts, `noBackground` tells image cards not to fill.
    void Draw(QPainter& dc, const QRect& target, bool logicalResolution, bool noBackground, const QRect& clip,
        int scrollX = 0, int scrollY = 0);
    void Draw(QPainter& dc, const QRect& target, const QRect& clip) { Draw(dc, target, false, true, clip); }

    // The page at real size, centred on the device's page (the printable
    // area of a printer), turned a quarter when the page and the paper
    // differ in orientation; factor and out colour are restored after.
    // `physicalOffset` is where the printable area begins on the paper (in
    // device pixels): positions are then measured from the paper's edge, so
    // a page as large as the paper prints where it lies on the paper.
    void Print(QPainter& dc, const QPointF& physicalOffset = QPointF());
    // Turns the page and its cards a quarter to the right (or back to the
    // left) for printing.
    void FlipCard(bool right);
    bool IsFlipped() const { return m_flipped; }

    ZWTemplatePage& Page() { return m_page; }
    const ZWTemplatePage& Page() const { return m_page; }
    const XmlDocument& UserData() const { return m_userData; }

private:
    ZWTemplatePage m_page;
    bool m_hasTemplate = false;
    double m_factor;
    XmlDocument m_userData;
    bool m_flipped = false;
    bool m_markProblems = false;
};
