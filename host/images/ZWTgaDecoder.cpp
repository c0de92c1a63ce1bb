#include "host/images/ZWTgaDecoder.h"

#include "host/images/ZWImageFormat.h"

#include <vector>

namespace {

QRgb From16(quint16 v, bool useAlpha)
{
    const int r = (v >> 10) & 0x1F, g = (v >> 5) & 0x1F, b = v & 0x1F;
    const int a = useAlpha ? ((v & 0x8000) ? 255 : 0) : 255;
    return qRgba((r << 3) | (r >> 2), (g << 3) | (g >> 2), (b << 3) | (b >> 2), a);
}

// One pixel or colour-map entry of `bits` bits at `p` (little endian, BGR(A)).
QRgb ReadColour(const uchar* p, int bits, bool useAlpha)
{
    switch (bits) {
    case 15:
    case 16:
        return From16(quint16(p[0] | (p[1] << 8)), useAlpha && bits == 16);
    case 24:
        return qRgb(p[2], p[1], p[0]);
    default:
        return qRgba(p[2], p[1], p[0], useAlpha ? p[3] : 255);
    }
}

} // namespace

QImage ZWTgaDecoder::Decode(const QByteArray& bytes)
{
    const QSize size = ZWImageFormat::TgaSize(bytes);
    if (!size.isValid())
        return QImage();
    const auto* data = reinterpret_cast<const uchar*>(bytes.constData());
    const qsizetype length = bytes.size();
    const int idLength = data[0];
    const bool mapped = data[1] == 1;
    const int imageType = data[2];
    const int mapFirst = data[3] | (data[4] << 8);
    const int mapLength = data[5] | (data[6] << 8);
    const int mapBits = data[7];
    const int depth = data[16];
    const int descriptor = data[17];
    const int alphaBits = descriptor & 0x0F;
    const bool rightToLeft = descriptor & 0x10;
    const bool topToBottom = descriptor & 0x20;
    const bool rle = imageType & 8;
    const int baseType = imageType & 7;
    const int width = size.width(), height = size.height();

    qsizetype pos = 18 + idLength;
    std::vector<QRgb> palette;
    if (mapped) {
        const int entryBytes = (mapBits + 7) / 8;
        palette.reserve(size_t(mapLength));
        for (int i = 0; i < mapLength; ++i, pos += entryBytes)
            palette.push_back(ReadColour(data + pos, mapBits, alphaBits > 0));
    }
    const int pixelBytes = (depth + 7) / 8;
    const bool useAlpha = alphaBits > 0 && (depth == 32 || depth == 16);

    const auto decodePixel = [&](const uchar* p) -> QRgb {
        if (baseType == 1) {
            const int index = (pixelBytes == 1 ? p[0] : (p[0] | (p[1] << 8))) - mapFirst;
            return index >= 0 && size_t(index) < palette.size() ? palette[size_t(index)] : qRgb(0, 0, 0);
        }
        if (baseType == 3) {
            const int grey = p[0];
            return qRgba(grey, grey, grey, depth == 16 && alphaBits > 0 ? p[1] : 255);
        }
        return ReadColour(p, depth, useAlpha);
    };

    QImage image(width, height, QImage::Format_ARGB32);
    if (image.isNull())
        return QImage();
    image.fill(qRgb(0, 0, 0));
    const qint64 total = qint64(width) * height;
    qint64 done = 0;
    const auto put = [&](QRgb colour) {
        const int row = int(done / width);
        const int column = int(done % width);
        const int y = topToBottom ? row : height - 1 - row;
        const int x = rightToLeft ? width - 1 - column : column;
        reinterpret_cast<QRgb*>(image.scanLine(y))[x] = colour;
        ++done;
    };

    if (!rle) {
        for (; done < total && pos + pixelBytes <= length; pos += pixelBytes)
            put(decodePixel(data + pos));
    } else {
        while (done < total && pos < length) {
            const int header = data[pos++];
            const int count = (header & 0x7F) + 1;
            if (header & 0x80) {
                if (pos + pixelBytes > length)
                    break;
                const QRgb colour = decodePixel(data + pos);
                pos += pixelBytes;
                for (int i = 0; i < count && done < total; ++i)
                    put(colour);
            } else {
                for (int i = 0; i < count && done < total && pos + pixelBytes <= length; ++i, pos += pixelBytes)
                    put(decodePixel(data + pos));
            }
        }
    }
    return useAlpha || (baseType == 3 && depth == 16 && alphaBits > 0) || (baseType == 1 && alphaBits > 0)
        ? image
        : image.convertToFormat(QImage::Format_RGB32);
}
