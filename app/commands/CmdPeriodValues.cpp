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
                       "(\"-\" when it has no data). --all takes every variable of the database.\n"
                       "With --series, a header line \"start<TAB>NAME...\", then one line per sub-period:\n"
                       "its local start, then the values.\n"
                       "With --tariff, each NAME once per period of that tariff calendar (NAME:P1...)."),
        QStringLiteral("[NAME...]"));
    QCommandLineParser& p = cl.Parser();
    p.addOption({QStringLiteral("from"), QStringLiteral("Start, local time (ISO 8601)."), QStringLiteral("TIME")});
    p.addOption(
        {QStringLiteral("to"), QStringLiteral("End (excluded), local time (ISO 8601)."), QStringLiteral("TIME")});
    p.addOption({QStringLiteral("all"), QStringLiteral("Every variable of the database.")});
    p.addOption({QStringLiteral("raw"), QStringLiteral("Read raw samples only, not the rollups.")});
    p.addOption({QStringLiteral("tariff"),
        QStringLiteral("Values per period of this calendar of the data folder's tariffs.xml."),
        QStringLiteral("NAME")});
    p.addOption({QStringLiteral("series"), QStringLiteral("One line per hour, day, week or month of the period."),
        QStringLiteral("UNIT")});
    const int parsed = cl.Parse(args);
    if (parsed >= 0)
        return parsed;
    ZWDateTime from, to;
    if (!String2DateTime(from, p.value(QStringLiteral("from"))) || !String2DateTime(to, p.value(QStringLiteral("to"))))
        return cl.UsageError(QStringLiteral("--from and --to must be dates and times"));
    ZWSeriesUnit unit = ZWSeriesUnit::Day;
    const bool series = p.isSet(QStringLiteral("series"));
    if (series && !ZWSeriesUnitFromName(p.value(QStringLiteral("series")), unit))
        return cl.UsageError(QStringLiteral("--series must be hour, day, week or month"));
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
    if (p.isSet(QStringLiteral("tariff"))) {
        if (!ZWLoggerDatabase::LoadTariffCalendar(store, p.value(QStringLiteral("tariff")), &error)) {
            Err() << "zwinformes period-values: " << error << "\n";
            return ExitFailed;
        }
        QStringList expanded;
        for (const QString& name : std::as_const(names))
            for (const QString& period : store.TariffCalendar()->PeriodNames())
                expanded << name + QLatin1Char(':') + period;
        names = expanded;
    }
    const auto number = [](double v) { return IsNoValue(v) ? QStringLiteral("-") : QString::number(v, 'g', 17); };
    const ZWSqlLoggerStore::Method method
        = p.isSet(QStringLiteral("raw")) ? ZWSqlLoggerStore::Method::Raw : ZWSqlLoggerStore::Method::Rollups;
    if (series) {
        ZWSeries out;
        if (!store.SeriesValues(names, from, to, unit, out, nullptr, &error, method)) {
            Err() << "zwinformes period-values: " << error << "\n";
            return ExitFailed;
        }
        Out() << "start";
        for (const QString& name : names)
            Out() << '\t' << name;
        Out() << '\n';
        for (size_t j = 0; j < out.values.size(); ++j) {
            Out() << out.bounds[j].ToIso();
            for (const double v : out.values[j])
                Out() << '\t' << number(v);
            Out() << '\n';
        }
        return ExitOk;
    }
    std::vector<double> values;
    if (!store.PeriodValuesUtc(names, ZWLocalTime::ToUtc(from), ZWLocalTime::ToUtc(to), values, &error, method)) {
        Err() << "zwinformes period-values: " << error << "\n";
        return ExitFailed;
    }
    for (int i = 0; i < names.size(); ++i)
        Out() << names[i] << '\t' << number(values[size_t(i)]) << '\n';
    return ExitOk;
}

ZWCommandRegistration g_periodValues({QStringLiteral("period-values"),
    QStringLiteral("print variables' values over a period (diagnostics)"), ZWCommand::Needs::Core, RunPeriodValues});

} // namespace
