#include "host/core/ZWRegularFile.h"

#include <QFile>
#include <QFileInfo>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

ZWRegularFile::Result ZWRegularFile::Read(const QString& path, qint64 maxBytes, QByteArray& bytes, QString* error)
{
    bytes.clear();
    const auto fail = [error](Result result, const QString& why) {
        if (error)
            *error = why;
        return result;
    };
    QFile file;
#ifdef Q_OS_UNIX
    // Opened without waiting (a FIFO's open would wait for a writer), then
    // asked what it is on the very descriptor that will be read.
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return fail(Result::CannotOpen, QString::fromLocal8Bit(strerror(errno)));
    struct stat info;
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        ::close(fd);
        return fail(Result::NotRegular, QStringLiteral("not a regular file"));
    }
    if (qint64(info.st_size) > maxBytes) {
        ::close(fd);
        return fail(Result::TooLarge, QStringLiteral("file larger than %1 bytes").arg(maxBytes));
    }
    // Reading a regular file never waits; the flag only mattered for open.
    ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) & ~O_NONBLOCK);
    if (!file.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        ::close(fd);
        return fail(Result::CannotOpen, file.errorString());
    }
#else
    if (!QFileInfo(path).isFile())
        return fail(Result::NotRegular, QStringLiteral("not a regular file"));
    file.setFileName(path);
    if (!file.open(QIODevice::ReadOnly))
        return fail(Result::CannotOpen, file.errorString());
    if (file.size() > maxBytes)
        return fail(Result::TooLarge, QStringLiteral("file larger than %1 bytes").arg(maxBytes));
#endif
    bytes = file.read(maxBytes + 1);
    if (file.error() != QFileDevice::NoError) {
        bytes.clear();
        return fail(Result::ReadError, file.errorString());
    }
    // A file that grew while it was read.
    if (bytes.size() > maxBytes) {
        bytes.clear();
        return fail(Result::TooLarge, QStringLiteral("file larger than %1 bytes").arg(maxBytes));
    }
    return Result::Ok;
}
