#include "app/commands/ZWCommand.h"
#include "app/commands/ZWCommandLine.h"
#include "template/ZWTemplate.h"

namespace {

int Run(const QStringList& args)
{
    ZWCommandLine cl(QStringLiteral("resave"),
        QStringLiteral("Reads a report (pages, page properties, cards, formula library) and writes it back\n"
                       "as this program writes reports. Unknown elements are dropped; values that are not\n"
                       "numbers read as 0. An existing OUT is kept as OUT.bak."),
        QStringLiteral("IN.XRPT OUT.XRPT"));
    if (const int status = cl.Parse(args); status >= 0)
        return status;
    const QStringList positional = cl.Parser().positionalArguments();
    if (positional.size() != 2)
        return cl.UsageError(QStringLiteral("expected IN.XRPT and OUT.XRPT"));

    ZWTemplate report;
    QString error;
    if (!report.Load(positional[0], &error)) {
        Err() << "zwinformes resave: " << error << "\n";
        return ExitFailed;
    }
    if (!report.Save(positional[1], &error)) {
        Err() << "zwinformes resave: " << error << "\n";
        return ExitFailed;
    }
    Out() << positional[1] << ": " << report.pages.size() << " page(s), " << report.CountCards() << " card(s)"
          << (report.HasFormules() ? ", formula library" : "") << "\n";
    return ExitOk;
}

const ZWCommandRegistration registration({QStringLiteral("resave"),
    QStringLiteral("read a report and write it back normalised"), ZWCommand::Needs::Core, Run});

} // namespace
