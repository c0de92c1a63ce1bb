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
//   Qt's allocation limit is kept on as a second guard, set to what MaxPixels
//   take at 64 bits a pixel, so that it never refuses a picture these
//   limits accept;
// - bmp, jpg and png are decoded in this process by Qt's reader for that one
//   format; tga and pcx by the module's own bounded decoders (Qt's tga reader
//   can loop forever, and Qt has no pcx reader);
// - tif, whose decoder can take seconds and gigabytes on a crafted file, is
//   decoded only in a helper process (the "decode-image" command of the
//   zwinformes program) that runs with a memory limit and is killed after a
//   time limit; without a helper, tif pictures are refused;
// - results, failures included, are cached by a hash of the bytes, so each
//   distinct picture is decoded once per process while it stays cached;
// - every decoded picture of the process and every copy drawn from one (turned,
//   resampled) shares that one cache of MaxCacheBytes: cards keep bytes, not
//   pixels, so that many pictures take no more memory than few. A picture
//   larger than the whole cache is decoded for each use and not kept.
// A picture that is refused or fails leaves its card without a picture.
class ZWImageSupport
{
public:
    enum class Status { Ok, Empty, NotAPicture, TooLarge, Corrupt, NoDecoder, DecoderFailed, TimedOut };

    static constexpr int MaxSide = 32767;
    // 32 Mi pixels: 128 MiB at 32 bits a pixel, as pictures are drawn.
    static constexpr qint64 MaxPixels = 32LL * 1024 * 1024;
    // Qt's allocation limit (MiB): MaxPixels at 64 bits (16-bit PNG).
    static constexpr int QtAllocationLimitMiB = int(MaxPixels * 8 / (1024 * 1024));
    static constexpr qint64 MaxFileBytes = 128LL * 1024 * 1024;
    static constexpr qint64 MaxCacheBytes = 256LL * 1024 * 1024;

    // The key of a picture's bytes in the cache: a hash, to be made once per
    // picture and kept with its bytes.
    static QByteArray Key(const QByteArray& bytes);
    // The pixel size that `bytes` declare, from their header alone (no pixel
    // memory): an invalid size with the reason in `status` when they are no
    // picture or too large. Tif pictures, whose header is read only by the
    // helper, give an invalid size and Ok.
    static QSize Probe(const QByteArray& bytes, Status* status = nullptr);
    // The picture as drawn: decoded, turned `quarterTurns` quarters clockwise
    // and resampled to `size` (an empty size keeps the decoded size), from
    // the cache when it holds it. `key` is Key(bytes). Null on failure.
    static QImage Picture(const QByteArray& key, const QByteArray& bytes, int quarterTurns = 0,
        const QSize& size = QSize(), Status* status = nullptr);
    // Whether the drawn copy of Picture(key, …, quarterTurns, size) is cached.
    static bool IsCached(const QByteArray& key, int quarterTurns, const QSize& size);
    // A text for a failure ("6000 × 6000 pixels: more than 33554432"...).
    static QString Reason(Status status, const QSize& size = QSize());

    // The decoded picture in display form (see ToDisplayFormat), from the
    // cache when these bytes were decoded before. Null on failure.
    static QImage Load(const QByteArray& bytes, Status* status = nullptr);
    // The same with the bytes' Key made already.
    static QImage Load(const QByteArray& key, const QByteArray& bytes, Status* status = nullptr);
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
    // What the cache holds now, in bytes of pixels.
    static qint64 CachedBytes();
    static const char* StatusName(Status status);
};
