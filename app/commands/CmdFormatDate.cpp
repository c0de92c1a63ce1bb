#include "app/commands/ZWCommand.h"
#include "app/commands/ZWCommandLine.h"
#include "host/core/ZWDateTime.h"
#include "template/ZWCardDate.h"
#include "template/ZWFormat.h"

namespace {

int Run(const QStringList& args)
{
    ZWCommandLine cl(QStringLiteral("format-date"),
        QStringLiteral("Prints DATETIME (ISO 8601, 2024-03-05T09:05:07) by the date pattern P, as a date card\n"
                       "shows it: y year, M month, d day, h hour, m minute, s second, each zero-filled to\n"
                       "the length of its run; text in double quotes is copied as it stands."),
        QStringLiteral("DATETIME"));
    const QCommandLineOption pattern(QStringLiteral("pattern"),
        QStringLiteral("the date pattern (default dd/MM/yyyy hh:mm:ss)"), QStringLiteral("P"),
        QString::fromLatin1(ZWCardDate::DefaultFormat));
    cl.Parser().addOption(pattern);
    if (const int status = cl.Parse(args); status >= 0)
        return status;
    const QStringList positional = cl.Parser().positionalArguments();
    if (positional.size() != 1)
        return cl.UsageError(QStringLiteral("expected one DATETIME"));
    ZWDateTime date;
    if (!String2DateTime(date, positional[0]))
        return cl.UsageError(QStringLiteral("'%1' is not a date (use 2024-03-05T09:05:07)").arg(positional[0]));
    Out() << ZWFormat::ParseDate(cl.Parser().value(pattern), date) << "\n";
    return ExitOk;
}

const ZWCommandRegistration registration(
    {QStringLiteral("format-date"), QStringLiteral("format a date as a date card does"), ZWCommand::Needs::Core, Run});

} // namespace
