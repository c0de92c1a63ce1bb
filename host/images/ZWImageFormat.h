#pragma once

#include <QByteArray>
#include <QSize>

// The picture formats a template may carry, recognised by their content
// (never by a file name, and never by asking every installed image plugin).
class ZWImageFormat
{
public:
    enum Type { Unknown, Bmp, Jpeg, Png, Tga, Tiff, Pcx };

    // The format of `bytes`: by the magic bytes of bmp, jpeg, png and tiff;
    // pcx by its header fields; tga, which has no magic, by the consistency of
    // its header fields with the length of the data. Anything else (gif, ico,
    // xml, text...) is Unknown.
    static Type Detect(const QByteArray& bytes);

    // The pixel size that the header of a tga or pcx picture declares
    // (invalid size when the header does not hold together).
    static QSize TgaSize(const QByteArray& bytes);
    static QSize PcxSize(const QByteArray& bytes);

    // Name of the Qt image plugin for a format ("bmp", "jpeg", "png", "tiff"),
    // empty for the formats decoded by the module itself.
    static const char* QtName(Type type);
    // "bmp", "jpg", "png", "tga", "tif", "pcx" or "unknown".
    static const char* Name(Type type);
};
