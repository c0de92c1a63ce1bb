#pragma once

#include "host/images/ZWImageFormat.h"

#include <QByteArray>
#include <QImage>
#include <QString>

// The host's image library: pictures of templates decoded from their file
// bytes, with the guards that hostile bytes need.
//
// Safety design. A picture reaches a template from anywhere (a report made on
// another machine, a value document), and decoding runs inside the host's
// process, so:
// - the format is recognised by the content (ZWImageFormat::Detect); only
//   bmp, jpg, png, tga, tif and pcx are accepted and no installed image
//   plugin is ever asked to guess;
// - the declared pixel size is read from the header before any pixel memory
//   is allocated, and refused above MaxSide per side or MaxPixels in all;
//   Qt's allocation limit is kept on as a second guard;
// - bmp, jpg and png are decoded in this process by Qt's reader for that one
//   format; tga and pcx by the module's own bounded decoders (Qt's tga reader
//   can loop forever, and Qt has no pcx reader);
// - tif, whose decoder can take seconds and gigabytes on a crafted file, is
//   decoded only in a helper process (the "decode-image" command of the
//   zwinformes program) that runs with a memory limit and is killed after a
//   time limit; without a helper, tif pictures are refused;
// - results, failures included, are cached by a hash of the bytes, so each
//   distinct picture is decoded once per process.
// A picture that is refused or fails leaves its card without a picture.
class ZWImageSupport
{
public:
    enum class Status { Ok, Empty, NotAPicture, TooLarge, Corrupt, NoDecoder, DecoderFailed, TimedOut };

    static constexpr int MaxSide = 32767;
    static constexpr qint64 MaxPixels = 50'000'000;
    static constexpr qint64 MaxFileBytes = 128LL * 1024 * 1024;

    // The decoded picture in display form (see ToDisplayFormat), from the
    // cache when these bytes were decoded before. Null on failure.
    static QImage Load(const QByteArray& bytes, Status* status = nullptr);
    // The same without the cache.
    static QImage Decode(const QByteArray& bytes, Status* status = nullptr);
    // Decodes in this process whatever the format, tif included: the work of
    // the helper process. Limits apply as above.
    static QImage DecodeHere(const QByteArray& bytes, Status* status = nullptr);

    // Reads a picture file: a regular file of at most MaxFileBytes (never a
    // device, a pipe or a folder). False when it cannot be read.
    static bool ReadPictureFile(const QString& path, QByteArray& bytes);

    // 24-bit colour: RGB32, or premultiplied ARGB32 when the picture has
    // transparency (kept so that a logo lies on its page as drawn).
    static QImage ToDisplayFormat(const QImage& image);
    // A smooth resampling to `size`; counted (ResampleCount) so that callers
    // can show that a cache works.
    static QImage Resample(const QImage& image, const QSize& size);
    static quint64 ResampleCount();
    // A quarter turn, clockwise when `right`.
    static QImage RotateQuarter(const QImage& image, bool right);

    // The helper program (started as `PROGRAM decode-image`). Set by the
    // zwinformes program to itself; a library user sets it, or the
    // ZWINFORMES_IMAGE_DECODER environment variable names it.
    static void SetDecoderPath(const QString& path);
    static QString DecoderPath();
    // Time limit (ms) and memory limit (bytes) of the helper process.
    static void SetDecoderLimits(int timeoutMs, qint64 memoryBytes);
    static int DecoderTimeout();
    static qint64 DecoderMemory();

    // Number of decodes done so far (cache misses), and emptying the cache.
    static quint64 DecodeCount();
    static void ClearCache();
    static const char* StatusName(Status status);
};
