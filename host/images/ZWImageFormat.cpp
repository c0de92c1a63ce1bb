#include "host/images/ZWImageFormat.h"

namespace {

quint16 U16(const QByteArray& b, qsizetype at)
{
    return quint16(quint8(b[at]) | (quint16(quint8(b[at + 1])) << 8));
}

bool StartsWith(const QByteArray& bytes, const char* magic, qsizetype length)
{
    return bytes.size() >= length && std::equal(magic, magic + length, bytes.constData());
}

} // namespace

QSize ZWImageFormat::TgaSize(const QByteArray& b)
{
    constexpr qsizetype HeaderSize = 18;
    if (b.size() < HeaderSize)
        return QSize();
    const int idLength = quint8(b[0]);
    const int mapType = quint8(b[1]);
    const int imageType = quint8(b[2]);
    const int mapLength = U16(b, 5);
    const int mapEntryBits = quint8(b[7]);
    const int width = U16(b, 12);
    const int height = U16(b, 14);
    const int depth = quint8(b[16]);
    const int descriptor = quint8(b[17]);

    if (mapType > 1 || width == 0 || height == 0 || (descriptor & 0xC0) != 0)
        return QSize();
    const int baseType = imageType & ~8;
    if ((imageType != baseType && imageType != baseType + 8) || baseType < 1 || baseType > 3)
        return QSize();
    const bool validMapEntry = mapEntryBits == 15 || mapEntryBits == 16 || mapEntryBits == 24 || mapEntryBits == 32;
    switch (baseType) {
    case 1: // colour-mapped
        if (mapType != 1 || mapLength == 0 || !validMapEntry || (depth != 8 && depth != 16))
            return QSize();
        break;
    case 2: // true colour
        if (depth != 15 && depth != 16 && depth != 24 && depth != 32)
            return QSize();
        break;
    case 3: // grey
        if (depth != 8 && depth != 16)
            return QSize();
        break;
    }
    if (mapType == 1 && !validMapEntry)
        return QSize();
    const qint64 mapBytes = mapType == 1 ? qint64(mapLength) * ((mapEntryBits + 7) / 8) : 0;
    const qint64 dataStart = HeaderSize + idLength + mapBytes;
    const qint64 pixelBytes = (depth + 7) / 8;
    const qint64 pixels = qint64(width) * height;
    const qint64 available = b.size() - dataStart;
    if (available <= 0)
        return QSize();
    if (imageType == baseType) {
        if (available < pixels * pixelBytes)
            return QSize();
    } else {
        // A run packet gives at most 128 pixels for 1 + pixelBytes bytes.
        if ((available / (1 + pixelBytes) + 1) * 128 < pixels)
            return QSize();
    }
    return QSize(width, height);
}

QSize ZWImageFormat::PcxSize(const QByteArray& b)
{
    constexpr qsizetype HeaderSize = 128;
    if (b.size() <= HeaderSize || quint8(b[0]) != 0x0A)
        return QSize();
    const int version = quint8(b[1]);
    const int encoding = quint8(b[2]);
    const int bits = quint8(b[3]);
    const int planes = quint8(b[65]);
    const int bytesPerLine = U16(b, 66);
    if (version > 5 || version == 1 || encoding > 1)
        return QSize();
    const bool supported = (bits == 1 && (planes == 1 || planes == 4)) || (bits == 2 && planes == 1)
        || (bits == 4 && planes == 1) || (bits == 8 && (planes == 1 || planes == 3 || planes == 4));
    if (!supported)
        return QSize();
    const int xMin = U16(b, 4), yMin = U16(b, 6), xMax = U16(b, 8), yMax = U16(b, 10);
    if (xMax < xMin || yMax < yMin)
        return QSize();
    const int width = xMax - xMin + 1;
    const int height = yMax - yMin + 1;
    if (bytesPerLine == 0 || qint64(bytesPerLine) * 8 < qint64(width) * bits)
        return QSize();
    const qint64 total = qint64(height) * planes * bytesPerLine;
    const qint64 available = b.size() - HeaderSize;
    // A run of two bytes gives at most 63 bytes; a plain file gives one each.
    if ((encoding == 1 ? available * 63 / 2 + 63 : available) < total)
        return QSize();
    return QSize(width, height);
}

ZWImageFormat::Type ZWImageFormat::Detect(const QByteArray& b)
{
    if (StartsWith(b, "\x89PNG\r\n\x1a\n", 8))
        return Png;
    if (StartsWith(b, "\xFF\xD8\xFF", 3))
        return Jpeg;
    if (StartsWith(b, "II*\0", 4) || StartsWith(b, "MM\0*", 4) || StartsWith(b, "II+\0", 4)
        || StartsWith(b, "MM\0+", 4))
        return Tiff;
    if (StartsWith(b, "BM", 2) && b.size() >= 26) {
        // The info header's size tells the known bitmap headers apart from
        // text that happens to start with "BM".
        const quint32 infoSize = quint32(U16(b, 14)) | (quint32(U16(b, 16)) << 16);
        if (infoSize == 12 || infoSize == 16 || infoSize == 40 || infoSize == 52 || infoSize == 56 || infoSize == 64
            || infoSize == 108 || infoSize == 124)
            return Bmp;
        return Unknown;
    }
    if (PcxSize(b).isValid())
        return Pcx;
    if (TgaSize(b).isValid())
        return Tga;
    return Unknown;
}

const char* ZWImageFormat::QtName(Type type)
{
    switch (type) {
    case Bmp:
        return "bmp";
    case Jpeg:
        return "jpeg";
    case Png:
        return "png";
    case Tiff:
        return "tiff";
    default:
        return "";
    }
}

const char* ZWImageFormat::Name(Type type)
{
    switch (type) {
    case Bmp:
        return "bmp";
    case Jpeg:
        return "jpg";
    case Png:
        return "png";
    case Tga:
        return "tga";
    case Tiff:
        return "tif";
    case Pcx:
        return "pcx";
    default:
        return "unknown";
    }
}
