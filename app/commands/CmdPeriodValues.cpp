// zwinformes period-values: the values of variables over a period, straight
// from the logger store (for checking data and timing the store).
#include "app/commands/ZWCommand.h"
#include "app/commands/ZWCommandLine.h"
#include "host/core/ZWLocalTime.h"
#include "host/core/ZWMarentaSetup.h"
#include "host/core/ZWNoValue.h"
#include "host/store/ZWLoggerDatabase.h"
#include "host/store/ZWSqlLoggerStore.h"

namespace {

int RunPeriodValues(const QStringList& args)
{
    ZWCommandLine cl(QStringLiteral("period-values"),
        QStringLiteral("Prints NAME<TAB>VALUE for each variable over the local period [--from, --to)\n"
                       "(\"-\" when it has no data). --all takes every variable of the database."),
        QStringLiteral("[NAME...]"));
    QCommandLineParser& p = cl.Parser();
    p.addOption({QStringLiteral("from"), QStringLiteral("Start, local time (ISO 8601)."), QStringLiteral("TIME")});
    p.addOption(
        {QStringLiteral("to"), QStringLiteral("End (excluded), local time (ISO 8601)."), QStringLiteral("TIME")});
    p.addOption({QStringLiteral("all"), QStringLiteral("Every variable of the database.")});
    p.addOption({QStringLiteral("raw"), QStringLiteral("Read raw samples only, not the rollups.")});
    const int parsed = cl.Parse(args);
    if (parsed >= 0)
        return parsed;
    ZWDateTime from, to;
    if (!String2DateTime(from, p.value(QStringLiteral("from"))) || !String2DateTime(to, p.value(QStringLiteral("to"))))
        return cl.UsageError(QStringLiteral("--from and --to must be dates and times"));
    ZWLoggerDatabase::Opened opened = ZWLoggerDatabase::OpenConfigured();
    if (opened.badAddress)
        return cl.UsageError(opened.error);
    if (!opened) {
        Err() << "zwinformes period-values: " << opened.error << "\n";
        return ExitFailed;
    }
    ZWSqlLoggerStore& store = *opened.store;
    QString error;
    QStringList names = p.positionalArguments();
    if (p.isSet(QStringLiteral("all")))
        for (const auto& v : store.Variables())
            names << v.name;
    std::vector<double> values;
    if (!store.PeriodValuesUtc(names, ZWLocalTime::ToUtc(from), ZWLocalTime::ToUtc(to), values, &error,
            p.isSet(QStringLiteral("raw")) ? ZWSqlLoggerStore::Method::Raw : ZWSqlLoggerStore::Method::Rollups)) {
        Err() << "zwinformes period-values: " << error << "\n";
        return ExitFailed;
    }
    for (int i = 0; i < names.size(); ++i) {
        Out() << names[i] << '\t';
        if (IsNoValue(values[size_t(i)]))
            Out() << "-";
        else
            Out() << QString::number(values[size_t(i)], 'g', 17);
        Out() << '\n';
    }
    return ExitOk;
}

ZWCommandRegistration g_periodValues({QStringLiteral("period-values"),
    QStringLiteral("print variables' values over a period (diagnostics)"), ZWCommand::Needs::Core, RunPeriodValues});

} // namespace
