#pragma once

#include "host/core/ZWDateTime.h"

#include <QString>
#include <QStringList>
#include <vector>

class ZWProgress;

// The sub-period unit of a series.
enum class ZWSeriesUnit { Hour, Day, Week, Month };

// "hour", "day", "week", "month" (in XML and on the command line).
QString ZWSeriesUnitName(ZWSeriesUnit unit);
// The unit of a name (any letter case); false for another text.
bool ZWSeriesUnitFromName(const QString& name, ZWSeriesUnit& unit);

// The values of a set of names for each sub-period of a local period.
struct ZWSeries
{
    // Local starts of the sub-periods, then the end: size() == values.size() + 1.
    // The first and last sub-periods are cut to [start, end). An empty period
    // has no sub-periods (both empty).
    std::vector<ZWDateTime> bounds;
    // values[sub][name], the no-value marker where a sub-period has no data.
    std::vector<std::vector<double>> values;
};

// The host's logged data as the module sees it: which device variables
// exist, their live (latest) values and their values over a period. A
// variable is named "device.variable"; a filter may follow (see
// SplitFilterDriverVariable). Implementations: ZWLiveValues (in process) and
// the database store.
class ZWLoggerStore
{
public:
    virtual ~ZWLoggerStore() = default;

    // Whether `name` (plain or filtered) names a variable the store serves.
    virtual bool HasVariable(const QString& name) = 0;
    // The variable's current value; false when it has none.
    virtual bool LiveValue(const QString& name, double& value) = 0;
    // One value per name for the local period [start, end); a name without
    // data in the period gets the no-value marker. False (with `error`) when
    // the data cannot be read at all.
    virtual bool PeriodValues(const QStringList& names, const ZWDateTime& start, const ZWDateTime& end,
        std::vector<double>& values, ZWProgress* progress, QString* error)
        = 0;
    // True when the store is known to hold no variable at all (an empty
    // database), so that a report can say so instead of showing its formulas.
    virtual bool HoldsNoVariables() { return false; }
    // The plain names ("device.variable") of every variable the store
    // serves, sorted, for choosers and completion; empty when it cannot say.
    virtual QStringList VariableNames() { return {}; }
    // The filters a name may carry after its last ":" ("max", "sum"...).
    virtual QStringList FilterNames() { return {}; }

    // At most this many sub-periods in a series.
    static constexpr int MaxSeriesPoints = 1000;

    // One value per name for every sub-period of the local period [start, end).
    // The default calls PeriodValues once per sub-period; the SQL store reads
    // every sub-period in one query. False (with `error`) when the data cannot
    // be read or the period holds more than MaxSeriesPoints sub-periods.
    //
    // A name with a shift ("...:delta@-1y") reads the sub-periods of the
    // shifted period, index by index: sub-period i of the series gets the
    // shifted period's sub-period i, and no value where the shifted period has
    // fewer (February against the March before it).
    virtual bool SeriesValues(const QStringList& names, const ZWDateTime& start, const ZWDateTime& end,
        ZWSeriesUnit unit, ZWSeries& out, ZWProgress* progress, QString* error);

    // The sub-period bounds alone (static, pure calendar): weeks start on
    // Monday, months on day 1, local midnight; a day with a daylight-saving
    // change has 23 or 25 hours, so an hour series over such a day has 23 or
    // 25 points (the repeated hour of an autumn change appears twice, with
    // the same local start). The first and last bounds are `start` and `end`.
    // Generation stops after MaxSeriesPoints + 1 sub-periods (the last bound
    // is then not `end`): more are refused anyway. Empty when the period is.
    static std::vector<ZWDateTime> SubPeriodBounds(const ZWDateTime& start, const ZWDateTime& end, ZWSeriesUnit unit);
    // The same bounds as UTC instants (the process's time zone), which tell
    // the two occurrences of a repeated hour apart.
    static std::vector<qint64> SubPeriodInstants(const ZWDateTime& start, const ZWDateTime& end, ZWSeriesUnit unit);
    // The message for a period with more than MaxSeriesPoints sub-periods.
    static QString TooManyPointsMessage(const ZWDateTime& start, const ZWDateTime& end, ZWSeriesUnit unit);
};
