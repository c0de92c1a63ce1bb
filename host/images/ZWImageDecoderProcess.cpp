#include "host/images/ZWImageDecoderProcess.h"

#include <QDeadlineTimer>
#include <QIODevice>
#include <QProcess>
#include <QtEndian>

#include <sys/resource.h>

namespace {

constexpr char Magic[] = "ZWRAW1";
constexpr qsizetype MagicSize = 6;
constexpr qsizetype HeaderSize = MagicSize + 12;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool Sanitized = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool Sanitized = true;
#else
constexpr bool Sanitized = false;
#endif
#else
constexpr bool Sanitized = false;
#endif

} // namespace

QImage ZWImageDecoderProcess::Decode(
    const QString& program, const QByteArray& bytes, int timeoutMs, qint64 memoryBytes, ZWImageSupport::Status& status)
{
    using Status = ZWImageSupport::Status;
    QProcess process;
    process.setProgram(program);
    process.setArguments({QStringLiteral("decode-image")});
    process.setStandardErrorFile(QProcess::nullDevice());
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("ZWINFORMES_IMAGE_DECODER"));
    if constexpr (Sanitized) {
        // An address-space limit would stop the sanitizer's own shadow
        // memory; its resident-size limit does the same work.
        QString options = environment.value(QStringLiteral("ASAN_OPTIONS"));
        if (!options.isEmpty())
            options += QLatin1Char(':');
        options += QStringLiteral("detect_leaks=0:allocator_may_return_null=1:hard_rss_limit_mb=%1")
                       .arg(memoryBytes / (1024 * 1024));
        environment.insert(QStringLiteral("ASAN_OPTIONS"), options);
    }
    process.setProcessEnvironment(environment);
    const rlim_t memory = rlim_t(memoryBytes);
    const rlim_t cpuSeconds = rlim_t(timeoutMs / 1000 + 2);
    process.setChildProcessModifier([memory, cpuSeconds] {
        // Runs in the child between fork and exec: plain system calls only.
        struct rlimit limit;
        if (!Sanitized) {
            limit.rlim_cur = limit.rlim_max = memory;
            setrlimit(RLIMIT_AS, &limit);
        }
        limit.rlim_cur = limit.rlim_max = cpuSeconds;
        setrlimit(RLIMIT_CPU, &limit);
        limit.rlim_cur = limit.rlim_max = 0;
        setrlimit(RLIMIT_CORE, &limit);
    });

    const QDeadlineTimer deadline(timeoutMs);
    process.start();
    if (!process.waitForStarted(int(std::max<qint64>(deadline.remainingTime(), 1)))) {
        status = Status::NoDecoder;
        return QImage();
    }
    process.write(bytes);
    process.closeWriteChannel();

    const qint64 maxOutput = HeaderSize + ZWImageSupport::MaxPixels * 4;
    QByteArray output;
    bool timedOut = false;
    while (process.state() != QProcess::NotRunning) {
        const qint64 left = deadline.remainingTime();
        if (left <= 0) {
            timedOut = true;
            break;
        }
        if (process.waitForReadyRead(int(std::min<qint64>(left, 200))))
            output += process.readAllStandardOutput();
        if (output.size() > maxOutput)
            break;
    }
    if (process.state() != QProcess::NotRunning) {
        process.kill();
        process.waitForFinished(2000);
        status = timedOut ? Status::TimedOut : Status::DecoderFailed;
        return QImage();
    }
    output += process.readAllStandardOutput();
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
        const int code = process.exitCode() - 10;
        status = process.exitStatus() == QProcess::NormalExit && code >= int(Status::Empty)
                && code <= int(Status::TimedOut)
            ? Status(code)
            : Status::DecoderFailed;
        return QImage();
    }

    if (output.size() < HeaderSize || !output.startsWith(QByteArrayView(Magic, MagicSize))) {
        status = Status::DecoderFailed;
        return QImage();
    }
    const auto* header = reinterpret_cast<const uchar*>(output.constData() + MagicSize);
    const quint32 width = qFromLittleEndian<quint32>(header);
    const quint32 height = qFromLittleEndian<quint32>(header + 4);
    const quint32 code = qFromLittleEndian<quint32>(header + 8);
    if (width == 0 || height == 0 || width > quint32(ZWImageSupport::MaxSide)
        || height > quint32(ZWImageSupport::MaxSide) || qint64(width) * height > ZWImageSupport::MaxPixels || code > 1
        || output.size() != HeaderSize + qint64(width) * height * 4) {
        status = Status::DecoderFailed;
        return QImage();
    }
    QImage image(int(width), int(height), code == 1 ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
    if (image.isNull()) {
        status = Status::TooLarge;
        return QImage();
    }
    const char* pixels = output.constData() + HeaderSize;
    for (int y = 0; y < int(height); ++y)
        memcpy(image.scanLine(y), pixels + qint64(y) * width * 4, size_t(width) * 4);
    status = Status::Ok;
    return image;
}

int ZWImageDecoderProcess::HelperMain(QIODevice& in, QIODevice& out)
{
    using Status = ZWImageSupport::Status;
    QByteArray bytes;
    // Blocking reads of a pipe: an empty read is the end of the input.
    while (bytes.size() <= ZWImageSupport::MaxFileBytes) {
        const QByteArray chunk = in.read(1 << 20);
        if (chunk.isEmpty())
            break;
        bytes += chunk;
    }
    if (bytes.size() > ZWImageSupport::MaxFileBytes)
        return 10 + int(Status::TooLarge);
    Status status = Status::Ok;
    const QImage image = ZWImageSupport::DecodeHere(bytes, &status);
    if (image.isNull())
        return 10 + int(status == Status::Ok ? Status::Corrupt : status);

    QByteArray header(Magic, MagicSize);
    uchar numbers[12];
    qToLittleEndian<quint32>(quint32(image.width()), numbers);
    qToLittleEndian<quint32>(quint32(image.height()), numbers + 4);
    qToLittleEndian<quint32>(image.format() == QImage::Format_ARGB32_Premultiplied ? 1u : 0u, numbers + 8);
    header.append(reinterpret_cast<const char*>(numbers), 12);
    if (out.write(header) != header.size())
        return 10 + int(Status::DecoderFailed);
    const qint64 rowBytes = qint64(image.width()) * 4;
    for (int y = 0; y < image.height(); ++y)
        if (out.write(reinterpret_cast<const char*>(image.constScanLine(y)), rowBytes) != rowBytes)
            return 10 + int(Status::DecoderFailed);
    return 0;
}
