#pragma once

#include <QByteArray>
#include <QString>

// Reading a whole file named in a template or on the command line (a report,
// a style, a picture): only a regular file is read, so that a path naming a
// FIFO, a device or a socket is refused at once instead of blocking the
// reader or feeding it without end.
class ZWRegularFile
{
public:
    enum class Result { Ok, CannotOpen, NotRegular, TooLarge, ReadError };

    // Reads `path` whole into `bytes` when it is a regular file of at most
    // `maxBytes`; otherwise `bytes` is empty and `error` says why.
    static Result Read(const QString& path, qint64 maxBytes, QByteArray& bytes, QString* error = nullptr);
};
