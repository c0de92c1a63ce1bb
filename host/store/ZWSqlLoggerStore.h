#pragma once

#include "host/drivers/ZWLoggerStore.h"
#include "host/drivers/ZWPeriodShift.h"
#include "host/drivers/ZWTariffCalendar.h"
#include "host/store/ZWLoggerUrl.h"
#include "host/store/ZWPeriodAggregate.h"

#include <QHash>
#include <QMutex>
#include <atomic>
#include <memory>
#include <optional>

class ZWSqlLoggerConnection;

// The logged data in a SQL database (SQLite file or PostgreSQL server, one
// schema: see ZWLoggerSchema). Safe to use from several threads: each thread
// reads through a connection of its own.
//
// Names: "device.variable" (the whole text as stored; it may hold blanks,
// dots, quotes, brackets and colons), optionally followed by ":REDUCTION"
// with REDUCTION one of avg, min, max, sum, first, last, count, delta, hours. A name
// that is itself a stored variable is taken whole, so a variable whose own
// name ends in ":max" is still found.
//
// Period values over the local period [start, end), converted to UTC with
// ZWLocalTime:
// - avg (a gauge's default): the mean of the samples with start <= t < end;
// - min, max, sum, count, first, last: of those samples;
// - hours: the time in hours that delta's increase spans (from the sample it
//   starts at to the one it ends at): energy / hours is the mean power;
// - delta (a counter's default): the increase from the last sample at or
//   before start to the last one at or before end, a sample below the one
//   before it counting as a meter reset whose reading is itself increase;
// - no sample (for delta: no sample after the first one in reach) gives the
//   no-value marker.
// A filter may end in a shift, "@-1y" (see ZWPeriodShift): that name's value
// is read over the shifted period.
//
// With a tariff calendar set, a filter may name one of its periods after the
// reduction: "A.b:P1", "A.b:max:P1", "A.b:P1@-1y". The value is then taken
// over the period's local hours within [start, end) only (the calendar's
// hour map, by local date and hour): avg, min, max, sum and count of the
// samples in those hours (start <= t < end, as for a period), and a
// counter's increase as the sum of the rises of its samples over the sample
// before each (a drop: its own reading) that those hours close (a sample on
// the hour closes the hour before; the rises of [start, end) add up to its
// delta). The period's hours read the counter_hour and rollup tables, one
// row per hour or day, grouped by tariff period in the query; partial hours
// at the edges read raw samples. No other reduction takes a tariff period,
// nor does a gauge's delta.
//
// All values of a call come from one query, with bound values only: the
// period, every distinct shifted period and, for a series, every sub-period
// are ranges of that query, each cut into pieces so that rollups serve its
// whole hours and days and raw samples only the partial hours at its edges;
// the pieces' partial results are put together per (variable, range) by
// ZWPeriodAggregate. Method::Raw reads only raw samples (the reference that
// the rollups are checked against). Only a call whose ranges need more than
// some 30,000 bound values (many shifts of a long hour series) is split into
// several statements, a group of ranges each.
class ZWSqlLoggerStore : public ZWLoggerStore
{
public:
    enum class Kind { Gauge, Counter };
    enum class Method { Rollups, Raw };
    struct Variable
    {
        qint64 id = 0;
        QString name;
        QString unit;
        Kind kind = Kind::Gauge;
    };

    // Whether opening may make a new database: a missing SQLite file, the
    // tables of an empty database. Only the writers that fill a database
    // (import, demo data) ask for it; readers open what exists.
    enum class Creation { OpenExisting, CreateMissing };

    explicit ZWSqlLoggerStore(const ZWLoggerUrl& url, Creation creation = Creation::OpenExisting);
    ~ZWSqlLoggerStore() override;

    // Opens the database on the calling thread (with CreateMissing creating
    // a missing SQLite file and missing tables) and reads the variable list.
    bool Open(QString* error);
    const ZWLoggerUrl& Url() const { return m_url; }

    bool HasVariable(const QString& name) override;
    bool HoldsNoVariables() override;
    QStringList VariableNames() override;
    // The reductions, in the order they are documented above, then the
    // tariff calendar's periods.
    QStringList FilterNames() override;
    // The calendar whose periods filters may name (none: no tariff
    // filters). False, keeping the one before, when a period of it is named
    // like a reduction.
    bool SetTariffCalendar(std::shared_ptr<const ZWTariffCalendar> calendar, QString* error);
    std::shared_ptr<const ZWTariffCalendar> TariffCalendar();
    bool LiveValue(const QString& name, double& value) override;
    bool PeriodValues(const QStringList& names, const ZWDateTime& start, const ZWDateTime& end,
        std::vector<double>& values, ZWProgress* progress, QString* error) override;
    // The same over UTC bounds (shifts move the bounds' local times). The
    // query is bounded by the URL's statement timeout and ends early when
    // `progress` is cancelled.
    bool PeriodValuesUtc(const QStringList& names, qint64 start, qint64 end, std::vector<double>& values,
        QString* error, Method method = Method::Rollups, const ZWProgress* progress = nullptr);
    // Every sub-period in one query (the override reads rollups).
    bool SeriesValues(const QStringList& names, const ZWDateTime& start, const ZWDateTime& end, ZWSeriesUnit unit,
        ZWSeries& out, ZWProgress* progress, QString* error) override;
    bool SeriesValues(const QStringList& names, const ZWDateTime& start, const ZWDateTime& end, ZWSeriesUnit unit,
        ZWSeries& out, ZWProgress* progress, QString* error, Method method);

    // A name (plain or filtered) to its variable, reduction and shift; false
    // when the variable is unknown, the filter is not a reduction or the
    // shift is malformed.
    // `tariff` is the index of a tariff period, or -1.
    bool Resolve(
        const QString& name, Variable& variable, ZWLoggerReduction& reduction, ZWPeriodShift& shift, int& tariff);
    bool Resolve(const QString& name, Variable& variable, ZWLoggerReduction& reduction, ZWPeriodShift& shift);
    bool Resolve(const QString& name, Variable& variable, ZWLoggerReduction& reduction);
    std::optional<Variable> FindVariable(const QString& plainName);
    QList<Variable> Variables();
    bool ReloadVariables(QString* error);
    // Adds a variable to the in-memory list (writers, after they made it).
    void NoteVariable(const Variable& variable);

    // The calling thread's connection (opened by the caller).
    ZWSqlLoggerConnection& Connection();
    // Queries run for period values so far, retries included (tests).
    int PeriodQueryCount() const { return m_periodQueries.load(); }

private:
    // UTC ranges [start, end) read together.
    using Ranges = std::vector<std::pair<qint64, qint64>>;
    // One value to compute: a variable's reduction over range `range` of
    // group `group`, within the hours of tariff period `tariff` (-1: all).
    struct Ask
    {
        Variable variable;
        ZWLoggerReduction reduction;
        int group;
        int range;
        double value;
        int tariff = -1;
    };
    struct Rows;
    bool ReadRanges(const std::vector<Ranges>& groups, std::vector<Ask>& asks, Method method,
        const ZWProgress* progress, QString* error);
    bool ReadPeriod(const QStringList& names, const ZWDateTime& localStart, const ZWDateTime& localEnd, qint64 start,
        qint64 end, std::vector<double>& values, QString* error, Method method, const ZWProgress* progress);
    bool EnsureReady(ZWSqlLoggerConnection& c, QString* error);
    bool RunPeriodQuery(ZWSqlLoggerConnection& c, const QString& sql, const QVariantList& binds, Rows& out,
        const ZWProgress* progress, QString* error);
    bool LoadVariables(ZWSqlLoggerConnection& c, QString* error);
    // A filter after a variable's name: "[REDUCTION][:PERIOD][@SHIFT]" or
    // "PERIOD[@SHIFT]".
    bool ParseFilter(const QString& filter, const Variable& variable, ZWLoggerReduction& reduction,
        ZWPeriodShift& shift, int& tariff);
    std::optional<Variable> Lookup(const QString& name);

    const ZWLoggerUrl m_url;
    const Creation m_creation;
    const quint64 m_id;
    std::atomic<bool> m_schemaReady{false};
    std::atomic<int> m_periodQueries{0};
    QMutex m_mutex;
    QHash<QString, Variable> m_variables;
    std::shared_ptr<const ZWTariffCalendar> m_calendar;
    qint64 m_lastReloadMs = -1;
};
