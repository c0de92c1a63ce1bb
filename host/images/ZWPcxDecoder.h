#pragma once

#include <QByteArray>
#include <QImage>

// ZSoft PCX pictures (1, 2, 4 and 8 bits per pixel, 1 to 4 planes, run-length
// encoded or plain), decoded by the module itself since Qt has no reader for
// them. Bounded like the tga decoder: by the declared size, which the caller
// limits, with every read checked; a truncated picture keeps its missing
// pixels black.
class ZWPcxDecoder
{
public:
    // A null image when the header does not hold together.
    static QImage Decode(const QByteArray& bytes);
};
