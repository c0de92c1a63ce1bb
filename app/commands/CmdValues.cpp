#include "app/commands/ZWCommand.h"
#include "app/commands/ZWCommandLine.h"
#include "app/commands/ZWReportJob.h"
#include "viewer/ZWValueExport.h"

namespace {

int Run(const QStringList& args)
{
    ZWCommandLine cl(QStringLiteral("values"),
        QStringLiteral("Gathers the logged data of a report's period and prints its value document: the "
                       "formatted value of every formula card, the text of every date card and the "
                       "alternative chosen by every conditioned card."),
        QStringLiteral("REPORT"));
    ZWReportJob::AddOptions(cl.Parser());
    cl.Parser().addOption({QStringLiteral("format"),
        QStringLiteral("xml (the value document, the default), json (an object per card) or csv (a row per "
                       "value: id, kind, text, value)."),
        QStringLiteral("F"), QStringLiteral("xml")});
    if (const int status = cl.Parse(args); status >= 0)
        return status;
    const QStringList positional = cl.Parser().positionalArguments();
    if (positional.size() != 1)
        return cl.UsageError(QStringLiteral("give one report (a .XRPT path or a report name)"));
    const std::optional<ZWValueExport::Format> format
        = ZWValueExport::FormatFromName(cl.Parser().value(QStringLiteral("format")));
    if (!format || *format == ZWValueExport::Format::Xlsx)
        return cl.UsageError(QStringLiteral("--format is xml, json or csv (a workbook: zwinformes export --xlsx)"));
    ZWReportJob job;
    if (const int status = job.Prepare(cl, positional.first()); status >= 0)
        return status;
    if (!job.Gather())
        return ExitFailed;
    if (*format == ZWValueExport::Format::Xml) {
        Out() << QString::fromUtf8(job.Data().ValueDocument());
        return ExitOk;
    }
    ZWValueExport values;
    if (!values.Read(job.Data().ValueDocument(), job.Data().Design())) {
        Err() << "zwinformes values: the value document does not read: " << values.Error() << "\n";
        return ExitFailed;
    }
    QString error;
    Out() << QString::fromUtf8(values.Bytes(*format, error));
    return ExitOk;
}

const ZWCommandRegistration registration({QStringLiteral("values"),
    QStringLiteral("the value document of a report for a period"), ZWCommand::Needs::Core, Run});

} // namespace
