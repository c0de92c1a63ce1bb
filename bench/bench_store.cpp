// Period values from the logger store against one plain SQL aggregate query
// over the raw samples, on the benchmark database (bench/make-bench-db.sh).
//
//   bench_store [--repeat N] [--baseline-repeat N] [--series-only] DB_URL...
//
// For the example report's seven variables and for all variables, for a day,
// a month and a year (local time, TZ, default Europe/Madrid), it prints the
// median time of the store's PeriodValues (rollups plus raw edges, one
// query) and of the baseline query, their ratio, and the largest relative
// difference between their values.
//
// Then, for ten counters over the 31 days of March 2025, the median time of
// SeriesValues by day (one query) against PeriodValues of the whole month and
// against 31 PeriodValues calls, one per day, with their ratios and the
// largest difference between the series and the daily calls' values.
#include "app/demo/ZWDemoData.h"
#include "host/core/ZWLocalTime.h"
#include "host/core/ZWNoValue.h"
#include "host/store/ZWSqlLoggerConnection.h"
#include "host/store/ZWSqlLoggerStore.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSqlError>
#include <QSqlQuery>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>

namespace {

double Median(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return v.empty() ? 0.0 : v.size() % 2 ? v[v.size() / 2] : (v[v.size() / 2 - 1] + v[v.size() / 2]) / 2.0;
}

// Gauges: the mean of [S, E); counters: the sum of the rises (a fall counts
// its new reading) of the samples in (S, E] over the one before each. One
// statement, raw samples only; the look-back of an hour finds the sample
// before the start (the data has one a minute).
bool Baseline(ZWSqlLoggerStore& store, const std::vector<ZWSqlLoggerStore::Variable>& vars, qint64 s, qint64 e,
    std::vector<double>& out, QString* error)
{
    QStringList marks;
    for (size_t i = 0; i < vars.size(); ++i)
        marks << QStringLiteral("?");
    const QString sql = QStringLiteral(
        "SELECT w.variable_id, "
        "AVG(CASE WHEN w.t >= ? AND w.t < ? THEN w.value END), "
        "SUM(CASE WHEN w.t > ? AND w.prev IS NOT NULL THEN "
        "CASE WHEN w.value >= w.prev THEN w.value - w.prev ELSE w.value END END) "
        "FROM (SELECT variable_id, t, value, LAG(value) OVER (PARTITION BY variable_id ORDER BY t) AS prev "
        "FROM samples WHERE variable_id IN (%1) AND t >= ? AND t <= ?) w GROUP BY w.variable_id")
                            .arg(marks.join(QLatin1Char(',')));
    QSqlQuery q(store.Connection().Database());
    q.setForwardOnly(true);
    if (!q.prepare(sql)) {
        *error = q.lastError().text();
        return false;
    }
    int i = 0;
    q.bindValue(i++, s);
    q.bindValue(i++, e);
    q.bindValue(i++, s);
    for (const auto& v : vars)
        q.bindValue(i++, v.id);
    q.bindValue(i++, s - 3600);
    q.bindValue(i++, e);
    if (!q.exec()) {
        *error = q.lastError().text();
        return false;
    }
    QHash<qint64, std::pair<double, double>> rows;
    while (q.next())
        rows.insert(q.value(0).toLongLong(), {q.value(1).toDouble(), q.value(2).toDouble()});
    out.clear();
    for (const auto& v : vars) {
        const auto it = rows.constFind(v.id);
        out.push_back(it == rows.constEnd()                 ? ZW_NO_VALUE
                : v.kind == ZWSqlLoggerStore::Kind::Counter ? it->second
                                                            : it->first);
    }
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    if (qEnvironmentVariableIsEmpty("TZ"))
        qputenv("TZ", "Europe/Madrid");
    tzset();
    int repeat = 7, baselineRepeat = 3;
    bool seriesOnly = false;
    QStringList urls;
    const QStringList args = app.arguments().mid(1);
    for (int i = 0; i < args.size(); ++i) {
        if (args[i] == QLatin1String("--repeat") && i + 1 < args.size())
            repeat = args[++i].toInt();
        else if (args[i] == QLatin1String("--baseline-repeat") && i + 1 < args.size())
            baselineRepeat = args[++i].toInt();
        else if (args[i] == QLatin1String("--series-only"))
            seriesOnly = true;
        else
            urls << args[i];
    }
    if (urls.isEmpty()) {
        std::fprintf(stderr, "usage: bench_store [--repeat N] [--baseline-repeat N] [--series-only] DB_URL...\n");
        return 2;
    }
    struct Period
    {
        const char* name;
        ZWDateTime start, end;
    };
    const Period periods[] = {
        {"day", ZWDateTime::FromDMY(2025, 6, 18), ZWDateTime::FromDMY(2025, 6, 19)},
        {"month", ZWDateTime::FromDMY(2025, 6, 1), ZWDateTime::FromDMY(2025, 7, 1)},
        {"year", ZWDateTime::FromDMY(2025, 1, 1), ZWDateTime::FromDMY(2026, 1, 1)},
    };
    if (!seriesOnly)
        std::printf("| database | variables | period | store (median ms) | first call, new store (ms) | baseline raw "
                    "query (median ms) | baseline / store | largest relative difference "
                    "|\n|---|---|---|---|---|---|---|---|\n");
    for (const QString& text : seriesOnly ? QStringList() : urls) {
        ZWLoggerUrl url;
        QString error;
        if (!url.Parse(text, &error)) {
            std::fprintf(stderr, "%s\n", qPrintable(error));
            return 2;
        }
        ZWSqlLoggerStore store(url);
        if (!store.Open(&error)) {
            std::fprintf(stderr, "%s\n", qPrintable(error));
            return 1;
        }
        std::vector<ZWSqlLoggerStore::Variable> site, all;
        for (const auto& v : store.Variables())
            all.push_back(v);
        for (const auto& s : ZWDemoData::SiteVariables())
            if (const auto v = store.FindVariable(QString::fromUtf8(s.name)))
                site.push_back(*v);
        const char* backend = url.backend() == ZWLoggerUrl::Backend::SQLite ? "SQLite" : "PostgreSQL";
        for (const auto* set : {&site, &all}) {
            QStringList names;
            for (const auto& v : *set)
                names << v.name;
            for (const Period& p : periods) {
                const qint64 s = ZWLocalTime::ToUtc(p.start), e = ZWLocalTime::ToUtc(p.end);
                std::vector<double> values, base;
                // A new store's first call: connection, variable list, query.
                QElapsedTimer timer;
                timer.start();
                {
                    ZWSqlLoggerStore fresh(url);
                    if (!fresh.PeriodValues(names, p.start, p.end, values, nullptr, &error)) {
                        std::fprintf(stderr, "%s\n", qPrintable(error));
                        return 1;
                    }
                }
                const double firstMs = double(timer.nsecsElapsed()) / 1e6;
                std::vector<double> storeMs, baseMs;
                for (int r = 0; r < repeat; ++r) {
                    timer.start();
                    if (!store.PeriodValues(names, p.start, p.end, values, nullptr, &error)) {
                        std::fprintf(stderr, "%s\n", qPrintable(error));
                        return 1;
                    }
                    storeMs.push_back(double(timer.nsecsElapsed()) / 1e6);
                }
                for (int r = 0; r < baselineRepeat; ++r) {
                    timer.start();
                    if (!Baseline(store, *set, s, e, base, &error)) {
                        std::fprintf(stderr, "%s\n", qPrintable(error));
                        return 1;
                    }
                    baseMs.push_back(double(timer.nsecsElapsed()) / 1e6);
                }
                double worst = 0.0;
                for (size_t i = 0; i < values.size(); ++i) {
                    if (IsNoValue(values[i]) != IsNoValue(base[i])) {
                        worst = INFINITY;
                        continue;
                    }
                    if (!IsNoValue(values[i]))
                        worst = std::max(worst, std::fabs(values[i] - base[i]) / std::max(1e-300, std::fabs(base[i])));
                }
                std::printf("| %s | %zu | %s | %.1f | %.1f | %.0f | %.0f× | %.1e |\n", backend, set->size(), p.name,
                    Median(storeMs), firstMs, Median(baseMs), Median(baseMs) / Median(storeMs), worst);
                std::fflush(stdout);
            }
        }
    }
    std::printf("\n| database | counters | series by day, 31 days (median ms) | PeriodValues of the month (median ms) "
                "| 31 PeriodValues calls (median ms) | series / month | series / 31 calls | largest difference |\n"
                "|---|---|---|---|---|---|---|---|\n");
    for (const QString& text : urls) {
        ZWLoggerUrl url;
        QString error;
        url.Parse(text, &error);
        ZWSqlLoggerStore store(url);
        if (!store.Open(&error)) {
            std::fprintf(stderr, "%s\n", qPrintable(error));
            return 1;
        }
        QStringList names;
        for (const auto& v : store.Variables())
            if (v.kind == ZWSqlLoggerStore::Kind::Counter && names.size() < 10)
                names << v.name;
        const ZWDateTime start = ZWDateTime::FromDMY(2025, 3, 1), end = ZWDateTime::FromDMY(2025, 4, 1);
        const std::vector<ZWDateTime> days = ZWLoggerStore::SubPeriodBounds(start, end, ZWSeriesUnit::Day);
        std::vector<double> seriesMs, monthMs, callsMs;
        ZWSeries series;
        std::vector<std::vector<double>> daily(days.size() - 1);
        std::vector<double> month;
        QElapsedTimer timer;
        for (int r = 0; r < repeat; ++r) {
            timer.start();
            if (!store.SeriesValues(names, start, end, ZWSeriesUnit::Day, series, nullptr, &error)) {
                std::fprintf(stderr, "%s\n", qPrintable(error));
                return 1;
            }
            seriesMs.push_back(double(timer.nsecsElapsed()) / 1e6);
            timer.start();
            if (!store.PeriodValues(names, start, end, month, nullptr, &error)) {
                std::fprintf(stderr, "%s\n", qPrintable(error));
                return 1;
            }
            monthMs.push_back(double(timer.nsecsElapsed()) / 1e6);
            timer.start();
            for (size_t d = 0; d + 1 < days.size(); ++d) {
                if (!store.PeriodValues(names, days[d], days[d + 1], daily[d], nullptr, &error)) {
                    std::fprintf(stderr, "%s\n", qPrintable(error));
                    return 1;
                }
            }
            callsMs.push_back(double(timer.nsecsElapsed()) / 1e6);
        }
        double worst = 0.0;
        for (size_t d = 0; d < daily.size(); ++d)
            for (size_t i = 0; i < daily[d].size(); ++i)
                worst = std::max(worst, std::fabs(daily[d][i] - series.values[d][i]));
        std::printf("| %s | %lld | %.2f | %.2f | %.2f | %.2f | %.3f | %.1e |\n",
            url.backend() == ZWLoggerUrl::Backend::SQLite ? "SQLite" : "PostgreSQL", qlonglong(names.size()),
            Median(seriesMs), Median(monthMs), Median(callsMs), Median(seriesMs) / Median(monthMs),
            Median(seriesMs) / Median(callsMs), worst);
        std::fflush(stdout);
    }
    return 0;
}
