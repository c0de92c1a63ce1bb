#include "host/images/ZWImageDecoderProcess.h"

#include <QCoreApplication>
#include <QFile>
#include <cstdio>

// `zw_image_decoder decode-image`: the decoder helper of the zwinformes
// program, on its own.
int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    if (argc != 2 || QByteArray(argv[1]) != "decode-image")
        return 2;
    QFile in;
    QFile out;
    if (!in.open(stdin, QIODevice::ReadOnly) || !out.open(stdout, QIODevice::WriteOnly))
        return 1;
    return ZWImageDecoderProcess::HelperMain(in, out);
}
