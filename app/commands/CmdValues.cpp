#include "app/commands/ZWCommand.h"
#include "app/commands/ZWCommandLine.h"
#include "app/commands/ZWReportJob.h"

namespace {

int Run(const QStringList& args)
{
    ZWCommandLine cl(QStringLiteral("values"),
        QStringLiteral("Gathers the logged data of a report's period and prints its value document: the "
                       "formatted value of every formula card, the text of every date card and the "
                       "alternative chosen by every conditioned card."),
        QStringLiteral("REPORT"));
    ZWReportJob::AddOptions(cl.Parser());
    if (const int status = cl.Parse(args); status >= 0)
        return status;
    const QStringList positional = cl.Parser().positionalArguments();
    if (positional.size() != 1)
        return cl.UsageError(QStringLiteral("give one report (a .XRPT path or a report name)"));
    ZWReportJob job;
    if (const int status = job.Prepare(cl, positional.first()); status >= 0)
        return status;
    if (!job.Gather())
        return ExitFailed;
    Out() << QString::fromUtf8(job.Data().ValueDocument());
    return ExitOk;
}

const ZWCommandRegistration registration({QStringLiteral("values"),
    QStringLiteral("the value document of a report for a period"), ZWCommand::Needs::Core, Run});

} // namespace
