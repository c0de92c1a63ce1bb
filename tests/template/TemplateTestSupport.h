#pragma once

#include "host/core/XmlDocument.h"
#include "template/ZWCardControl.h"
#include "template/tagDraw.h"

#include <QByteArray>
#include <QImage>
#include <QRect>
#include <QTemporaryDir>
#include <memory>
#include <tuple>

namespace zwtest {

// A white RGB32 picture of w × h pixels with `dotsPerMeter` resolution.
QImage WhiteImage(int w, int h, int dotsPerMeter = 5000);
// The smallest rectangle holding every pixel that differs from `background`
// (null when there is none).
QRect InkBounds(const QImage& image, QRgb background = qRgb(255, 255, 255));
// Number of pixels of exactly `colour`.
int CountColour(const QImage& image, QRgb colour);
QByteArray PngBytes(const QImage& image);
QByteArray SolidPng(int w, int h, QColor colour);

// A drawing record for a page of widthMm × heightMm at `pxPerMm`, placed at
// the device origin.
tagDraw PageDraw(double pxPerMm, double widthMm = 210.0, double heightMm = 297.0);

// Puts `card` at (x, y) mm with a size of w × h mm.
template <class Card> Card& Place(Card& card, double x, double y, double w, double h)
{
    std::tie(card.x, card.y, card.width, card.height) = std::tuple(x, y, w, h);
    return card;
}

// Writes `card` under a fresh "page" element and returns the card's element.
XmlDocument::XmlNode WriteCard(const ZWCardControl& card, XmlDocument& document);
// The element `card` writes, as one line without indentation.
QString CardXml(const ZWCardControl& card);
// Writes `card`, reads it back into a new card of the same kind.
std::unique_ptr<ZWCardControl> RoundTrip(const ZWCardControl& card);

// Points the host's data folder at a temporary folder for the lifetime of
// the object.
class TempDataDir
{
public:
    TempDataDir();
    ~TempDataDir();
    QString Path() const { return m_dir.path() + QLatin1Char('/'); }

private:
    QTemporaryDir m_dir;
};

} // namespace zwtest
