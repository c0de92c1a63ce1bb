#include "app/commands/ZWCommand.h"
#include "app/commands/ZWCommandLine.h"
#include "app/commands/ZWReportJob.h"
#include "viewer/ZWReportPeriod.h"

namespace {

int Run(const QStringList& args)
{
    ZWCommandLine cl(QStringLiteral("period"),
        QStringLiteral("Prints the report period that a unit and a date select: the whole unit that "
                       "contains the date (the unit before it when the date is on a boundary), never "
                       "starting in the future."),
        QString());
    QCommandLineParser& p = cl.Parser();
    ZWReportJob::AddOptions(p);
    p.addOption({QStringLiteral("json"), QStringLiteral("Print one JSON object.")});
    if (const int status = cl.Parse(args); status >= 0)
        return status;
    if (!p.positionalArguments().isEmpty())
        return cl.UsageError(QStringLiteral("unexpected argument '%1'").arg(p.positionalArguments().first()));

    ZWReportPeriod period;
    ZWDateTime now;
    if (const int status = ZWReportJob::ReadPeriod(cl, period, now); status >= 0)
        return status;

    const qint64 seconds = period.Length().GetTotalSeconds();
    if (p.isSet(QStringLiteral("json"))) {
        const QString length = seconds % 86400 == 0 ? QString::number(seconds / 86400)
                                                    : QString::number(double(seconds) / 86400.0, 'g', 17);
        Out() << "{\"start\":\"" << period.Start().ToIso() << "\",\"end\":\"" << period.End().ToIso()
              << "\",\"lengthDays\":" << length << "}\n";
    } else {
        Out() << "start  " << period.Start().ToIso() << "\n"
              << "end    " << period.End().ToIso() << " (exclusive)\n"
              << "length " << period.Length().GetTotalDays() << " days\n";
    }
    return ExitOk;
}

const ZWCommandRegistration registration(
    {QStringLiteral("period"), QStringLiteral("the report period of a unit and a date"), ZWCommand::Needs::Core, Run});

} // namespace
