#pragma once

#include "host/images/ZWImageSupport.h"

#include <QByteArray>
#include <QImage>
#include <QString>

class QIODevice;

// Decoding a picture in a helper process with a time and a memory limit.
//
// Protocol: the helper reads the picture file's bytes from its standard
// input until end of file and writes "ZWRAW1", then the width, the height
// and a format code (0: RGB32, 1: premultiplied ARGB32) as 32-bit little
// endian numbers, then width × height × 4 bytes of pixels, row by row. On
// failure it writes nothing and exits with 10 + the status code.
class ZWImageDecoderProcess
{
public:
    static QImage Decode(const QString& program, const QByteArray& bytes, int timeoutMs, qint64 memoryBytes,
        ZWImageSupport::Status& status);
    // The helper's side: returns the exit status.
    static int HelperMain(QIODevice& in, QIODevice& out);
};
