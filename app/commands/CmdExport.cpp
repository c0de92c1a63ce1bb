#include "app/commands/ZWCommand.h"
#include "app/commands/ZWCommandLine.h"
#include "app/commands/ZWReportJob.h"
#include "viewer/ZWValueExport.h"

namespace {

int Run(const QStringList& args)
{
    ZWCommandLine cl(QStringLiteral("export"),
        QStringLiteral("Gathers the logged data of a report's period and writes its values to files: an "
                       "Excel workbook (a sheet of every value, a sheet per chart and table), CSV, JSON or "
                       "the value document. Each file is written whole or not at all."),
        QStringLiteral("REPORT"));
    QCommandLineParser& p = cl.Parser();
    ZWReportJob::AddOptions(p);
    const struct
    {
        const char* option;
        ZWValueExport::Format format;
        const char* what;
    } outputs[] = {
        {"xlsx", ZWValueExport::Format::Xlsx, "The Excel workbook to write."},
        {"csv", ZWValueExport::Format::Csv, "The CSV file to write."},
        {"json", ZWValueExport::Format::Json, "The JSON file to write."},
        {"xml", ZWValueExport::Format::Xml, "The value document to write."},
    };
    for (const auto& o : outputs)
        p.addOption({QString::fromLatin1(o.option), QString::fromLatin1(o.what),
            QStringLiteral("OUT.%1").arg(QString::fromLatin1(o.option))});
    if (const int status = cl.Parse(args); status >= 0)
        return status;
    const QStringList positional = p.positionalArguments();
    if (positional.size() != 1)
        return cl.UsageError(QStringLiteral("give one report (a .XRPT path or a report name)"));
    bool any = false;
    for (const auto& o : outputs)
        any = any || p.isSet(QString::fromLatin1(o.option));
    if (!any)
        return cl.UsageError(QStringLiteral("give --xlsx, --csv, --json and/or --xml with the file to write"));

    ZWReportJob job;
    if (const int status = job.Prepare(cl, positional.first()); status >= 0)
        return status;
    if (!job.Gather())
        return ExitFailed;
    ZWValueExport values;
    if (!values.Read(job.Data().ValueDocument(), job.Data().Design())) {
        Err() << "zwinformes export: the value document does not read: " << values.Error() << "\n";
        return ExitFailed;
    }
    int status = ExitOk;
    for (const auto& o : outputs) {
        const QString option = QString::fromLatin1(o.option);
        if (!p.isSet(option))
            continue;
        const QString path = p.value(option);
        QString error;
        if (!values.Write(path, o.format, error)) {
            Err() << "zwinformes export: " << path << ": " << error << "\n";
            status = ExitFailed;
            continue;
        }
        Out() << path << "\n";
    }
    return status;
}

const ZWCommandRegistration registration({QStringLiteral("export"),
    QStringLiteral("a report's values for a period to xlsx, csv, json or xml files"), ZWCommand::Needs::Core, Run});

} // namespace
