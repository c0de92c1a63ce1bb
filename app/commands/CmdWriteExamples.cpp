#include "app/commands/ZWCommand.h"
#include "app/commands/ZWCommandLine.h"
#include "app/demo/ZWExampleReports.h"

#include <QDir>

namespace {

// Writes the sample reports of examples/reports (kept in the repository and
// used by the demonstration): `zwinformes write-examples examples/reports`.
int Run(const QStringList& args)
{
    ZWCommandLine cl(
        QStringLiteral("write-examples"), QStringLiteral("Writes the sample reports into DIR."), QStringLiteral("DIR"));
    if (const int status = cl.Parse(args); status >= 0)
        return status;
    const QStringList positional = cl.Parser().positionalArguments();
    if (positional.size() != 1)
        return cl.UsageError(QStringLiteral("expected one DIR"));
    const QDir dir(positional[0]);
    if (!QDir().mkpath(dir.path())) {
        Err() << "zwinformes write-examples: cannot create " << dir.path() << "\n";
        return ExitFailed;
    }
    const std::pair<QString, ZWTemplate> reports[] = {
        {QStringLiteral("MonthlyEnergy.XRPT"), ZWExampleReports::MonthlyEnergy()},
        {QStringLiteral("LandscapeSummary.XRPT"), ZWExampleReports::LandscapeSummary()},
    };
    for (const auto& [file, report] : reports) {
        QString error;
        if (!report.Save(dir.filePath(file), &error)) {
            Err() << "zwinformes write-examples: " << error << "\n";
            return ExitFailed;
        }
        QFile::remove(ZWTemplate::BackupPath(dir.filePath(file)));
        Out() << dir.filePath(file) << "\n";
    }
    return ExitOk;
}

const ZWCommandRegistration registration(
    {QStringLiteral("write-examples"), QStringLiteral("write the sample reports"), ZWCommand::Needs::Gui, Run, true});

} // namespace
