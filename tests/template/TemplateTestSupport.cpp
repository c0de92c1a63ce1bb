#include "tests/template/TemplateTestSupport.h"

#include "host/core/ZWMarentaSetup.h"

#include <QBuffer>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace zwtest {

QImage WhiteImage(int w, int h, int dotsPerMeter)
{
    QImage image(w, h, QImage::Format_RGB32);
    image.setDotsPerMeterX(dotsPerMeter);
    image.setDotsPerMeterY(dotsPerMeter);
    image.fill(Qt::white);
    return image;
}

QRect InkBounds(const QImage& image, QRgb background)
{
    int left = image.width(), top = image.height(), right = -1, bottom = -1;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if ((image.pixel(x, y) & 0xFFFFFF) != (background & 0xFFFFFF)) {
                left = std::min(left, x);
                right = std::max(right, x);
                top = std::min(top, y);
                bottom = std::max(bottom, y);
            }
    return right < 0 ? QRect() : QRect(QPoint(left, top), QPoint(right, bottom));
}

int CountColour(const QImage& image, QRgb colour)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if ((image.pixel(x, y) & 0xFFFFFF) == (colour & 0xFFFFFF))
                ++count;
    return count;
}

QByteArray PngBytes(const QImage& image)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

QByteArray SolidPng(int w, int h, QColor colour)
{
    QImage image(w, h, QImage::Format_RGB32);
    image.fill(colour);
    return PngBytes(image);
}

tagDraw PageDraw(double pxPerMm, double widthMm, double heightMm)
{
    tagDraw draw;
    std::tie(draw.pageWidthMm, draw.pageHeightMm, draw.pageWidthPx, draw.pageHeightPx)
        = std::tuple(widthMm, heightMm, widthMm * pxPerMm, heightMm * pxPerMm);
    return draw;
}

XmlDocument::XmlNode WriteCard(const ZWCardControl& card, XmlDocument& document)
{
    document.Create(u"page"_s);
    card.SaveTemplate(document.Root(), true);
    return document.Root().Children().front();
}

QString CardXml(const ZWCardControl& card)
{
    XmlDocument document;
    return QString::fromUtf8(WriteCard(card, document).ToXml()).remove(QRegularExpression(u"\n *"_s)).trimmed();
}

std::unique_ptr<ZWCardControl> RoundTrip(const ZWCardControl& card)
{
    XmlDocument document;
    const XmlDocument::XmlNode element = WriteCard(card, document);
    // Through the text form, as a file would carry it.
    XmlDocument reread;
    reread.Parse(document.ToXml());
    std::unique_ptr<ZWCardControl> copy = ZWCardControl::CreateFromElement(element.Name());
    copy->GetFromXml(reread.Root().Children().front());
    return copy;
}

TempDataDir::TempDataDir()
{
    ZWMarentaSetup::instance().SetDataDirectory(m_dir.path());
}

TempDataDir::~TempDataDir()
{
    ZWMarentaSetup::instance().SetDataDirectory(QString());
}

} // namespace zwtest
