#pragma once

#include <QByteArray>
#include <QImage>

// Truevision TGA pictures (colour-mapped, true colour and grey, plain or
// run-length encoded), decoded by the module itself: Qt's own reader can loop
// forever on a crafted file. The work is bounded by the declared pixel count,
// which the caller limits, and every read is checked against the data; a
// truncated picture keeps its missing pixels black.
class ZWTgaDecoder
{
public:
    // A null image when the header does not hold together.
    static QImage Decode(const QByteArray& bytes);
};
