#include "app/commands/ZWCommand.h"
#include "host/images/ZWImageDecoderProcess.h"

#include <QFile>
#include <cstdio>

namespace {

// The helper process of ZWImageSupport: picture bytes on standard input,
// raw pixels on standard output. Started by the program on itself.
int Run(const QStringList&)
{
    QFile in;
    QFile out;
    if (!in.open(stdin, QIODevice::ReadOnly) || !out.open(stdout, QIODevice::WriteOnly))
        return ExitFailed;
    return ZWImageDecoderProcess::HelperMain(in, out);
}

const ZWCommandRegistration registration({QStringLiteral("decode-image"),
    QStringLiteral("decode a picture from standard input (used by the program itself)"), ZWCommand::Needs::Core, Run,
    true});

} // namespace
