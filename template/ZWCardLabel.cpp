#include "template/ZWCardLabel.h"

#include "host/core/ZWFont.h"
#include "host/core/ZWMarentaSetup.h"
#include "host/core/ZWMath.h"
#include "template/ZWXmlFields.h"

#include <QFontMetricsF>
#include <QPainter>
#include <cmath>
#include <numbers>

ZWCardLabel::ZWCardLabel()
{
    layer = 1;
}

const char* ZWCardLabel::GetRuntimeClass() const
{
    return "ZWCardLabel";
}

void ZWCardLabel::SaveLabelFields(XmlDocument::XmlNode e) const
{
    SaveCommon(e);
    e.NewChild(QStringLiteral("font"), font);
    e.NewChild(QStringLiteral("style"), ZWXmlFields::WriteInt(style));
    e.NewChild(QStringLiteral("horizontalAlign"), ZWXmlFields::WriteInt(horizontalAlign));
    e.NewChild(QStringLiteral("verticalAlign"), ZWXmlFields::WriteInt(verticalAlign));
    e.NewChild(QStringLiteral("orientation"), ZWXmlFields::WriteMm(orientation));
    e.NewChild(QStringLiteral("size"), ZWXmlFields::WriteMm(size));
    e.NewChild(QStringLiteral("value"), value);
    e.NewChild(QStringLiteral("styleFile"), styleFile);
}

void ZWCardLabel::ReadLabelFields(const XmlDocument::XmlNode& e)
{
    ZWCardControl::GetFromXml(e);
    ZWXmlFields::Read(e, QStringLiteral("font"), font);
    ZWXmlFields::Read(e, QStringLiteral("style"), style);
    horizontalAlign = AlignCenter;
    verticalAlign = AlignCenter;
    orientation = 0.0;
    ZWXmlFields::Read(e, QStringLiteral("horizontalAlign"), horizontalAlign);
    ZWXmlFields::Read(e, QStringLiteral("verticalAlign"), verticalAlign);
    ZWXmlFields::Read(e, QStringLiteral("orientation"), orientation);
    ZWXmlFields::Read(e, QStringLiteral("size"), size);
    ZWXmlFields::Read(e, QStringLiteral("value"), value);
    ZWXmlFields::Read(e, QStringLiteral("styleFile"), styleFile);
}

bool ZWCardLabel::SaveTemplate(XmlDocument::XmlNode node, bool createElement) const
{
    SaveLabelFields(TargetElement(node, createElement));
    return true;
}

bool ZWCardLabel::GetFromXml(const XmlDocument::XmlNode& e)
{
    ReadLabelFields(e);
    return true;
}

std::unique_ptr<ZWCardControl> ZWCardLabel::GetClone() const
{
    return std::make_unique<ZWCardLabel>(*this);
}

bool ZWCardLabel::UpdateStyleFromFile()
{
    return GetStyleFromFile(styleFile);
}

bool ZWCardLabel::GetStyleFromFile(const QString& name)
{
    // A style is a name in the data folder, never a path elsewhere.
    if (name.isEmpty() || name.contains(QLatin1Char('/')) || name.contains(QLatin1Char('\\')))
        return false;
    XmlDocument doc;
    if (!doc.Load(ZWMarentaSetup::instance().GetDataDirectory() + name + QStringLiteral(".XSTY")))
        return false;
    const XmlDocument::XmlNode root = doc.Root();
    ZWXmlFields::Read(root, QStringLiteral("font"), font);
    ZWXmlFields::Read(root, QStringLiteral("size"), size);
    ZWXmlFields::ReadColor(root, QStringLiteral("color"), color);
    ZWXmlFields::Read(root, QStringLiteral("style"), style);
    ZWXmlFields::Read(root, QStringLiteral("orientation"), orientation);
    return true;
}

QString ZWCardLabel::GetDrawText() const
{
    return value;
}

int ZWCardLabel::Escapement() const
{
    if (!std::isfinite(orientation))
        return 0;
    return int(std::clamp(std::trunc(orientation * 10.0), -36000000.0, 36000000.0));
}

QFont ZWCardLabel::CreateFont(const QPaintDevice* device, const tagDraw& draw) const
{
    const double points = std::fabs(draw.fontScale) * size * 10.0;
    const int deciPoints = std::isfinite(points) ? roundi(points) : 0;
    return EzCreateFont(device, font, deciPoints, 0, style & 3, draw.logicalResolution);
}

QSizeF ZWCardLabel::RotatedExtent(double cx, double cy, double orientation)
{
    const double a = orientation * std::numbers::pi / 180.0;
    const double c = std::cos(a), s = std::sin(a);
    return QSizeF(std::fabs(cx * c) + std::fabs(cy * s), std::fabs(cx * s) + std::fabs(cy * c));
}

QPointF ZWCardLabel::TextStart(
    const ZWRect& rect, double cx, double cy, double orientation, int horizontalAlign, int verticalAlign)
{
    const double a = orientation * std::numbers::pi / 180.0;
    const double c = std::cos(a), s = std::sin(a);
    const QSizeF extent = RotatedExtent(cx, cy, orientation);
    double x = rect.left + std::max(0.0, -cx * c) + std::max(0.0, -cy * s);
    double y = rect.top + std::max(0.0, cx * s) + std::max(0.0, -cy * c);
    const double cardWidth = double(rect.right) - rect.left;
    const double cardHeight = double(rect.bottom) - rect.top;
    if (horizontalAlign == AlignCenter)
        x += (cardWidth - extent.width()) * 0.5;
    else if (horizontalAlign == AlignRight)
        x += cardWidth - extent.width();
    if (verticalAlign == AlignCenter)
        y += (cardHeight - extent.height()) * 0.5;
    else if (verticalAlign == AlignBottom)
        y += cardHeight - extent.height();
    return QPointF(x, y);
}

void ZWCardLabel::DrawText(QPainter& dc, const tagDraw& draw, const QString& text) const
{
    const ZWRect rect = draw.CardRect(x, y, width, height);
    if (!draw.IsVisible(rect))
        return;
    const QFont qfont = CreateFont(dc.device(), draw);
    const QFontMetricsF metrics(qfont, dc.device());
    const double cx = metrics.horizontalAdvance(text);
    const double cy = metrics.height();
    const double angle = std::isfinite(orientation) ? orientation : 0.0;

    dc.save();
    dc.setClipRect(rect.ToQRect(), Qt::IntersectClip);
    if (draw.clipToPage)
        dc.setClipPath(draw.PageClipPath(), Qt::IntersectClip);
    const QPointF start = TextStart(rect, cx, cy, angle, horizontalAlign, verticalAlign);
    dc.setFont(qfont);
    dc.setPen(ZWColorRefToQColor(color));
    dc.translate(roundi(start.x()), roundi(start.y()));
    // Counter-clockwise on the page, as the escapement turns the text.
    dc.rotate(-Escapement() / 10.0);
    dc.drawText(QPointF(0.0, metrics.ascent()), text);
    dc.restore();
}

void ZWCardLabel::Draw(QPainter& dc, const tagDraw& draw)
{
    DrawText(dc, draw, GetDrawText());
}
