#include "host/images/ZWImageSupport.h"

#include "host/core/ZWRegularFile.h"
#include "host/images/ZWImageDecoderProcess.h"
#include "host/images/ZWPcxDecoder.h"
#include "host/images/ZWTgaDecoder.h"

#include <QBuffer>
#include <QCache>
#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QMutex>
#include <QTransform>
#include <atomic>
#include <mutex>

namespace {

struct CacheEntry
{
    QImage image;
    ZWImageSupport::Status status = ZWImageSupport::Status::Ok;
};

struct State
{
    QMutex mutex;
    // Cost in KiB: MaxCacheBytes of decoded pictures and their drawn copies.
    QCache<QByteArray, CacheEntry> cache{qsizetype(ZWImageSupport::MaxCacheBytes / 1024)};
    QString decoderPath;
    int timeoutMs = 5000;
    qint64 memoryBytes = 1024LL * 1024 * 1024;
};

State& TheState()
{
    static State state;
    return state;
}

std::atomic<quint64> g_resamples{0};
std::atomic<quint64> g_decodes{0};

bool WithinLimits(const QSize& size)
{
    return size.isValid() && size.width() <= ZWImageSupport::MaxSide && size.height() <= ZWImageSupport::MaxSide
        && qint64(size.width()) * size.height() <= ZWImageSupport::MaxPixels;
}

void KeepAllocationLimit()
{
    // Qt's own guard against image bombs; kept on, at what the largest
    // picture accepted here needs (Qt's default of 128 MiB refused pictures
    // these limits accept, such as 6000 × 5000 or a 16-bit PNG).
    static std::once_flag once;
    std::call_once(once, [] { QImageReader::setAllocationLimit(ZWImageSupport::QtAllocationLimitMiB); });
}

qint64 Cost(const QImage& image)
{
    return image.sizeInBytes() / 1024 + 1;
}

QImage Fail(ZWImageSupport::Status* status, ZWImageSupport::Status value)
{
    if (status)
        *status = value;
    return QImage();
}

} // namespace

QImage ZWImageSupport::ToDisplayFormat(const QImage& image)
{
    if (image.isNull())
        return image;
    const QImage::Format format = image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32;
    return image.format() == format ? image : image.convertToFormat(format);
}

QImage ZWImageSupport::DecodeHere(const QByteArray& bytes, Status* status)
{
    if (bytes.isEmpty())
        return Fail(status, Status::Empty);
    if (bytes.size() > MaxFileBytes)
        return Fail(status, Status::TooLarge);
    const ZWImageFormat::Type type = ZWImageFormat::Detect(bytes);
    QImage image;
    switch (type) {
    case ZWImageFormat::Unknown:
        return Fail(status, Status::NotAPicture);
    case ZWImageFormat::Tga:
        if (!WithinLimits(ZWImageFormat::TgaSize(bytes)))
            return Fail(status, Status::TooLarge);
        image = ZWTgaDecoder::Decode(bytes);
        break;
    case ZWImageFormat::Pcx:
        if (!WithinLimits(ZWImageFormat::PcxSize(bytes)))
            return Fail(status, Status::TooLarge);
        image = ZWPcxDecoder::Decode(bytes);
        break;
    default: {
        KeepAllocationLimit();
        QBuffer buffer;
        buffer.setData(bytes);
        buffer.open(QIODevice::ReadOnly);
        QImageReader reader(&buffer, QByteArray(ZWImageFormat::QtName(type)));
        reader.setAutoDetectImageFormat(false);
        reader.setDecideFormatFromContent(false);
        const QSize size = reader.size();
        if (!size.isValid())
            return Fail(status, Status::Corrupt);
        if (!WithinLimits(size))
            return Fail(status, Status::TooLarge);
        image = reader.read();
        break;
    }
    }
    if (image.isNull())
        return Fail(status, Status::Corrupt);
    if (!WithinLimits(image.size()))
        return Fail(status, Status::TooLarge);
    if (status)
        *status = Status::Ok;
    return ToDisplayFormat(image);
}

QImage ZWImageSupport::Decode(const QByteArray& bytes, Status* status)
{
    ++g_decodes;
    if (bytes.isEmpty())
        return Fail(status, Status::Empty);
    if (bytes.size() > MaxFileBytes)
        return Fail(status, Status::TooLarge);
    const ZWImageFormat::Type type = ZWImageFormat::Detect(bytes);
    if (type != ZWImageFormat::Tiff)
        return DecodeHere(bytes, status);
    const QString program = DecoderPath();
    if (program.isEmpty() || !QFileInfo(program).isExecutable())
        return Fail(status, Status::NoDecoder);
    Status result = Status::Ok;
    QImage image = ZWImageDecoderProcess::Decode(program, bytes, DecoderTimeout(), DecoderMemory(), result);
    if (status)
        *status = image.isNull() ? result : Status::Ok;
    return image;
}

QByteArray ZWImageSupport::Key(const QByteArray& bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256);
}

QSize ZWImageSupport::Probe(const QByteArray& bytes, Status* status)
{
    if (bytes.isEmpty()) {
        Fail(status, Status::Empty);
        return QSize();
    }
    if (bytes.size() > MaxFileBytes) {
        Fail(status, Status::TooLarge);
        return QSize();
    }
    const ZWImageFormat::Type type = ZWImageFormat::Detect(bytes);
    QSize size;
    switch (type) {
    case ZWImageFormat::Unknown:
        Fail(status, Status::NotAPicture);
        return QSize();
    case ZWImageFormat::Tiff:
        if (status)
            *status = Status::Ok;
        return QSize();
    case ZWImageFormat::Tga:
        size = ZWImageFormat::TgaSize(bytes);
        break;
    case ZWImageFormat::Pcx:
        size = ZWImageFormat::PcxSize(bytes);
        break;
    default: {
        QBuffer buffer;
        buffer.setData(bytes);
        buffer.open(QIODevice::ReadOnly);
        QImageReader reader(&buffer, QByteArray(ZWImageFormat::QtName(type)));
        reader.setAutoDetectImageFormat(false);
        reader.setDecideFormatFromContent(false);
        size = reader.size();
        break;
    }
    }
    if (!size.isValid()) {
        Fail(status, Status::Corrupt);
        return QSize();
    }
    if (status)
        *status = WithinLimits(size) ? Status::Ok : Status::TooLarge;
    return size;
}

namespace {

QByteArray VariantKey(const QByteArray& key, int turns, const QSize& size)
{
    QByteArray variant = key;
    variant += char('0' + turns);
    variant += QByteArray::number(size.width()) + 'x' + QByteArray::number(size.height());
    return variant;
}

} // namespace

bool ZWImageSupport::IsCached(const QByteArray& key, int quarterTurns, const QSize& size)
{
    const int turns = ((quarterTurns % 4) + 4) % 4;
    State& state = TheState();
    QMutexLocker lock(&state.mutex);
    return state.cache.contains(turns == 0 && size.isEmpty() ? key : VariantKey(key, turns, size));
}

QImage ZWImageSupport::Picture(
    const QByteArray& key, const QByteArray& bytes, int quarterTurns, const QSize& size, Status* status)
{
    const int turns = ((quarterTurns % 4) + 4) % 4;
    if (turns == 0 && size.isEmpty())
        return Load(key, bytes, status);
    // A drawn copy: its own entry, so that repainting at one size resamples
    // once, and that copies leave the cache as pictures do.
    const QByteArray variant = VariantKey(key, turns, size);
    State& state = TheState();
    {
        QMutexLocker lock(&state.mutex);
        if (const CacheEntry* entry = state.cache.object(variant)) {
            if (status)
                *status = entry->status;
            return entry->image;
        }
    }
    const QImage decoded = Load(key, bytes, status);
    if (decoded.isNull())
        return decoded;
    QImage image = decoded;
    for (int i = 0; i < turns; ++i)
        image = RotateQuarter(image, true);
    if (!size.isEmpty() && image.size() != size)
        image = Resample(image, size);
    {
        QMutexLocker lock(&state.mutex);
        state.cache.insert(variant, new CacheEntry{image, Status::Ok}, Cost(image));
    }
    return image;
}

QString ZWImageSupport::Reason(Status status, const QSize& size)
{
    switch (status) {
    case Status::Ok:
        return QString();
    case Status::TooLarge:
        if (size.isValid())
            return QStringLiteral("%1 × %2 pixels: more than %3 per side or %4 in all")
                .arg(size.width())
                .arg(size.height())
                .arg(MaxSide)
                .arg(MaxPixels);
        return QStringLiteral("larger than %1 bytes").arg(MaxFileBytes);
    case Status::NotAPicture:
        return QStringLiteral("no bmp, jpg, pcx, png, tga or tif picture");
    case Status::Corrupt:
        return QStringLiteral("the picture is damaged and cannot be decoded");
    case Status::NoDecoder:
        return QStringLiteral("tif pictures need the helper program (zwinformes decode-image), which is not there");
    case Status::DecoderFailed:
        return QStringLiteral("the helper program could not decode the picture");
    case Status::TimedOut:
        return QStringLiteral("decoding the picture took too long");
    case Status::Empty:
        return QStringLiteral("the picture is empty");
    }
    return QString();
}

QImage ZWImageSupport::Load(const QByteArray& bytes, Status* status)
{
    if (bytes.isEmpty())
        return Fail(status, Status::Empty);
    return Load(Key(bytes), bytes, status);
}

QImage ZWImageSupport::Load(const QByteArray& key, const QByteArray& bytes, Status* status)
{
    if (bytes.isEmpty())
        return Fail(status, Status::Empty);
    State& state = TheState();
    {
        QMutexLocker lock(&state.mutex);
        if (const CacheEntry* entry = state.cache.object(key)) {
            if (status)
                *status = entry->status;
            return entry->image;
        }
    }
    Status result = Status::Ok;
    const QImage image = Decode(bytes, &result);
    {
        // A picture larger than the whole cache is not kept (QCache drops it
        // at once): it is decoded again for each use.
        QMutexLocker lock(&state.mutex);
        state.cache.insert(key, new CacheEntry{image, result}, Cost(image));
    }
    if (status)
        *status = result;
    return image;
}

bool ZWImageSupport::ReadPictureFile(const QString& path, QByteArray& bytes)
{
    bytes.clear();
    return !path.isEmpty() && ZWRegularFile::Read(path, MaxFileBytes, bytes) == ZWRegularFile::Result::Ok;
}

QImage ZWImageSupport::Resample(const QImage& image, const QSize& size)
{
    ++g_resamples;
    if (image.isNull() || size.isEmpty())
        return QImage();
    return image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

quint64 ZWImageSupport::ResampleCount()
{
    return g_resamples.load();
}

QImage ZWImageSupport::RotateQuarter(const QImage& image, bool right)
{
    if (image.isNull())
        return image;
    return image.transformed(QTransform().rotate(right ? 90 : -90));
}

void ZWImageSupport::SetDecoderPath(const QString& path)
{
    State& state = TheState();
    QMutexLocker lock(&state.mutex);
    state.decoderPath = path;
}

QString ZWImageSupport::DecoderPath()
{
    State& state = TheState();
    {
        QMutexLocker lock(&state.mutex);
        if (!state.decoderPath.isEmpty())
            return state.decoderPath;
    }
    return qEnvironmentVariable("ZWINFORMES_IMAGE_DECODER");
}

void ZWImageSupport::SetDecoderLimits(int timeoutMs, qint64 memoryBytes)
{
    State& state = TheState();
    QMutexLocker lock(&state.mutex);
    state.timeoutMs = std::max(timeoutMs, 100);
    state.memoryBytes = std::max<qint64>(memoryBytes, 64LL * 1024 * 1024);
}

int ZWImageSupport::DecoderTimeout()
{
    State& state = TheState();
    QMutexLocker lock(&state.mutex);
    return state.timeoutMs;
}

qint64 ZWImageSupport::DecoderMemory()
{
    State& state = TheState();
    QMutexLocker lock(&state.mutex);
    return state.memoryBytes;
}

quint64 ZWImageSupport::DecodeCount()
{
    return g_decodes.load();
}

void ZWImageSupport::ClearCache()
{
    State& state = TheState();
    QMutexLocker lock(&state.mutex);
    state.cache.clear();
}

qint64 ZWImageSupport::CachedBytes()
{
    State& state = TheState();
    QMutexLocker lock(&state.mutex);
    return qint64(state.cache.totalCost()) * 1024;
}

const char* ZWImageSupport::StatusName(Status status)
{
    switch (status) {
    case Status::Ok:
        return "ok";
    case Status::Empty:
        return "empty";
    case Status::NotAPicture:
        return "not a picture";
    case Status::TooLarge:
        return "too large";
    case Status::Corrupt:
        return "corrupt";
    case Status::NoDecoder:
        return "no decoder";
    case Status::DecoderFailed:
        return "decoder failed";
    case Status::TimedOut:
        return "timed out";
    }
    return "unknown";
}
