// zwinformes import: CSV samples into the logger database.
#include "app/commands/ZWCommand.h"
#include "app/commands/ZWCommandLine.h"
#include "app/commands/ZWTerminalProgress.h"
#include "host/core/ZWLoadString.h"
#include "host/core/ZWMarentaSetup.h"
#include "host/core/ZWTextId.h"
#include "host/store/ZWLoggerDatabase.h"
#include "host/store/ZWLoggerImport.h"
#include "host/store/ZWSqlLoggerStore.h"

namespace {

int RunImport(const QStringList& args)
{
    ZWCommandLine cl(QStringLiteral("import"),
        QStringLiteral("Reads samples from a CSV file into the logger database (--db).\n"
                       "The header is 'time,NAME,NAME...' with one column per variable (device.variable);\n"
                       "then one row per time (ISO 8601: with Z or an offset an instant, without one\n"
                       "local time). Empty cells are skipped. A sample for a variable and time already\n"
                       "stored is replaced. The first bad row stops the import and nothing is kept."),
        QStringLiteral("FILE.csv"));
    QCommandLineParser& p = cl.Parser();
    p.addOption({QStringLiteral("counter"),
        QStringLiteral("Make NAME a counter (its period value is its increase); others are gauges. Repeatable."),
        QStringLiteral("NAME")});
    const int parsed = cl.Parse(args);
    if (parsed >= 0)
        return parsed;
    if (p.positionalArguments().size() != 1)
        return cl.UsageError(QStringLiteral("give one CSV file"));

    ZWLoggerDatabase::Opened opened = ZWLoggerDatabase::OpenConfigured(ZWSqlLoggerStore::Creation::CreateMissing);
    if (opened.badAddress)
        return cl.UsageError(opened.error);
    if (!opened) {
        Err() << "zwinformes import: " << opened.error << "\n";
        return ExitFailed;
    }
    ZWSqlLoggerStore& store = *opened.store;
    QString error;
    ZWLoggerImport import(store);
    import.SetCounters(p.values(QStringLiteral("counter")));
    ZWTerminalProgress progress;
    const QString file = p.positionalArguments().first();
    if (!import.ImportFile(file, &progress, &error)) {
        progress.End(false);
        Err() << "zwinformes import: " << error << "\n";
        return ExitFailed;
    }
    Out() << ZWLoadString(ZWTextId::ImportDone)
                 .arg(import.Samples())
                 .arg(import.Variables())
                 .arg(import.CreatedVariables())
                 .arg(import.Rows())
                 .arg(store.Url().Display())
          << "\n";
    return ExitOk;
}

ZWCommandRegistration g_import({QStringLiteral("import"), QStringLiteral("import CSV samples into the logger database"),
    ZWCommand::Needs::Core, RunImport});

} // namespace
