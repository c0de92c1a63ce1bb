#include "host/images/ZWPcxDecoder.h"

#include "host/images/ZWImageFormat.h"

#include <vector>

QImage ZWPcxDecoder::Decode(const QByteArray& bytes)
{
    const QSize size = ZWImageFormat::PcxSize(bytes);
    if (!size.isValid())
        return QImage();
    const auto* data = reinterpret_cast<const uchar*>(bytes.constData());
    const qsizetype length = bytes.size();
    const bool encoded = data[2] == 1;
    const int bits = data[3];
    const int planes = data[65];
    const int bytesPerLine = data[66] | (data[67] << 8);
    const int width = size.width(), height = size.height();

    // Palette: 16 colours in the header; 256 after a 0x0C mark at the end.
    std::vector<QRgb> palette(256, qRgb(0, 0, 0));
    for (int i = 0; i < 16; ++i)
        palette[size_t(i)] = qRgb(data[16 + 3 * i], data[17 + 3 * i], data[18 + 3 * i]);
    qsizetype end = length;
    if (bits == 8 && planes == 1) {
        if (length >= 128 + 769 && data[length - 769] == 0x0C) {
            const uchar* p = data + length - 768;
            for (int i = 0; i < 256; ++i)
                palette[size_t(i)] = qRgb(p[3 * i], p[3 * i + 1], p[3 * i + 2]);
            end = length - 769;
        } else {
            for (int i = 0; i < 256; ++i)
                palette[size_t(i)] = qRgb(i, i, i);
        }
    }
    if (bits == 1 && planes == 1) {
        palette[0] = qRgb(0, 0, 0);
        palette[1] = qRgb(255, 255, 255);
    }

    QImage image(width, height, planes == 4 && bits == 8 ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    if (image.isNull())
        return QImage();
    image.fill(qRgb(0, 0, 0));

    const qsizetype lineBytes = qsizetype(planes) * bytesPerLine;
    std::vector<uchar> line(static_cast<size_t>(lineBytes));
    qsizetype pos = 128;
    int runLeft = 0;
    uchar runValue = 0;
    for (int y = 0; y < height; ++y) {
        // Runs may go on from one line into the next.
        qsizetype filled = 0;
        while (filled < lineBytes) {
            if (runLeft > 0) {
                const qsizetype n = std::min<qsizetype>(runLeft, lineBytes - filled);
                std::fill_n(line.begin() + filled, n, runValue);
                filled += n;
                runLeft -= int(n);
                continue;
            }
            if (pos >= end)
                break;
            const uchar b = data[pos++];
            if (encoded && (b & 0xC0) == 0xC0) {
                if (pos >= end)
                    break;
                runLeft = b & 0x3F;
                runValue = data[pos++];
            } else {
                line[size_t(filled++)] = b;
            }
        }
        if (filled < lineBytes)
            std::fill(line.begin() + filled, line.end(), 0);

        auto* out = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < width; ++x) {
            if (bits == 8 && planes >= 3) {
                const int r = line[size_t(x)];
                const int g = line[size_t(bytesPerLine + x)];
                const int b = line[size_t(2 * bytesPerLine + x)];
                const int a = planes == 4 ? line[size_t(3 * bytesPerLine + x)] : 255;
                out[x] = qRgba(r, g, b, a);
            } else if (bits == 8) {
                out[x] = palette[line[size_t(x)]];
            } else {
                // Bit-packed: `bits` bits per pixel in each plane, planes
                // giving successive bits of the colour index.
                int index = 0;
                for (int plane = 0; plane < planes; ++plane) {
                    const qint64 bit = qint64(x) * bits;
                    const uchar byte = line[size_t(plane * bytesPerLine + bit / 8)];
                    const int shift = 8 - bits - int(bit % 8);
                    const int value = (byte >> shift) & ((1 << bits) - 1);
                    index |= value << (plane * bits);
                }
                out[x] = palette[size_t(index & 0xFF)];
            }
        }
        if (pos >= end && runLeft == 0 && filled < lineBytes)
            break;
    }
    return image;
}
