#include "host/drivers/ZWLoggerStore.h"

#include "host/core/ZWLoadString.h"
#include "host/core/ZWLocalTime.h"
#include "host/core/ZWNoValue.h"
#include "host/core/ZWProgress.h"
#include "host/core/ZWTextId.h"
#include "host/drivers/ZWPeriodShift.h"

#include <algorithm>

namespace {

constexpr qint64 HourSeconds = 3600;
constexpr qint64 DaySeconds = 86400;

const char* const g_unitNames[] = {"hour", "day", "week", "month"};

// The first local calendar boundary of `unit` after `t` (wall clock).
ZWDateTime NextBoundary(const ZWDateTime& t, ZWSeriesUnit unit)
{
    const qint64 day = ZWDateTime::FloorDiv(t.Seconds(), DaySeconds);
    switch (unit) {
    case ZWSeriesUnit::Hour:
        return ZWDateTime::FromSeconds((ZWDateTime::FloorDiv(t.Seconds(), HourSeconds) + 1) * HourSeconds);
    case ZWSeriesUnit::Day:
        return ZWDateTime::FromSeconds((day + 1) * DaySeconds);
    case ZWSeriesUnit::Week: {
        // 1970-01-01 was a Thursday: day + 3 counts from a Monday.
        const qint64 monday = day - ZWDateTime::FloorMod(day + 3, 7);
        return ZWDateTime::FromSeconds((monday + 7) * DaySeconds);
    }
    case ZWSeriesUnit::Month: {
        int y, m, d;
        t.DateTime2DMY(y, m, d);
        return m == 12 ? ZWDateTime::FromDMY(y + 1, 1, 1) : ZWDateTime::FromDMY(y, m + 1, 1);
    }
    }
    return ZWDateTime();
}

// Local bounds and their instants. Hours are counted on the UTC axis, from
// one instant at which the local clock shows a whole hour to the next, so
// that a repeated hour is its own sub-period; the other units are calendar
// boundaries converted to UTC.
void MakeSubPeriods(const ZWDateTime& start, const ZWDateTime& end, ZWSeriesUnit unit, std::vector<ZWDateTime>* local,
    std::vector<qint64>* utc)
{
    if (!start.IsValid() || !end.IsValid() || end <= start)
        return;
    const size_t most = size_t(ZWLoggerStore::MaxSeriesPoints) + 1;
    const qint64 u0 = ZWLocalTime::ToUtc(start), u1 = ZWLocalTime::ToUtc(end);
    if (unit == ZWSeriesUnit::Hour) {
        if (u1 <= u0)
            return;
        std::vector<qint64> instants{u0};
        bool reached = false;
        for (qint64 u = u0; instants.size() <= most;) {
            const qint64 next = u + HourSeconds - ZWDateTime::FloorMod(ZWLocalTime::FromUtc(u).Seconds(), HourSeconds);
            if (next >= u1) {
                instants.push_back(u1);
                reached = true;
                break;
            }
            instants.push_back(next);
            u = next;
        }
        if (local) {
            for (size_t i = 0; i < instants.size(); ++i)
                local->push_back(i == 0                       ? start
                        : reached && i + 1 == instants.size() ? end
                                                              : ZWLocalTime::FromUtc(instants[i]));
        }
        if (utc)
            *utc = std::move(instants);
        return;
    }
    std::vector<ZWDateTime> bounds{start};
    for (ZWDateTime t = start; bounds.size() <= most;) {
        const ZWDateTime next = NextBoundary(t, unit);
        if (!next.IsValid() || next >= end) {
            bounds.push_back(end);
            break;
        }
        bounds.push_back(next);
        t = next;
    }
    if (utc) {
        for (const ZWDateTime& b : bounds)
            utc->push_back(ZWLocalTime::ToUtc(b));
    }
    if (local)
        *local = std::move(bounds);
}

} // namespace

QString ZWSeriesUnitName(ZWSeriesUnit unit)
{
    return QLatin1String(g_unitNames[int(unit)]);
}

bool ZWSeriesUnitFromName(const QString& name, ZWSeriesUnit& unit)
{
    for (int i = 0; i < 4; ++i) {
        if (name.compare(QLatin1String(g_unitNames[i]), Qt::CaseInsensitive) == 0) {
            unit = ZWSeriesUnit(i);
            return true;
        }
    }
    return false;
}

std::vector<ZWDateTime> ZWLoggerStore::SubPeriodBounds(
    const ZWDateTime& start, const ZWDateTime& end, ZWSeriesUnit unit)
{
    std::vector<ZWDateTime> bounds;
    MakeSubPeriods(start, end, unit, &bounds, nullptr);
    return bounds;
}

std::vector<qint64> ZWLoggerStore::SubPeriodInstants(const ZWDateTime& start, const ZWDateTime& end, ZWSeriesUnit unit)
{
    std::vector<qint64> instants;
    MakeSubPeriods(start, end, unit, nullptr, &instants);
    return instants;
}

QString ZWLoggerStore::TooManyPointsMessage(const ZWDateTime& start, const ZWDateTime& end, ZWSeriesUnit unit)
{
    return ZWLoadString(ZWTextId::StoreSeriesTooLong)
        .arg(ZWSeriesUnitName(unit), start.ToIso(), end.ToIso())
        .arg(MaxSeriesPoints);
}

bool ZWLoggerStore::SeriesValues(const QStringList& names, const ZWDateTime& start, const ZWDateTime& end,
    ZWSeriesUnit unit, ZWSeries& out, ZWProgress* progress, QString* error)
{
    out = ZWSeries();
    std::vector<ZWDateTime> bounds = SubPeriodBounds(start, end, unit);
    if (bounds.size() > size_t(MaxSeriesPoints) + 1) {
        if (error)
            *error = TooManyPointsMessage(start, end, unit);
        return false;
    }
    const size_t count = bounds.empty() ? 0 : bounds.size() - 1;
    out.values.assign(count, std::vector<double>(size_t(names.size()), ZW_NO_VALUE));
    out.bounds = bounds;

    // Names by shift: each shift reads its own period's sub-periods, with the
    // names as they read without the shift.
    struct Group
    {
        ZWPeriodShift shift;
        QStringList names;
        std::vector<int> index;
    };
    std::vector<Group> groups;
    for (int i = 0; i < names.size(); ++i) {
        QString plain;
        ZWPeriodShift shift;
        if (!ZWPeriodShift::SplitName(names[i], plain, shift))
            plain = names[i];
        auto it = std::find_if(groups.begin(), groups.end(), [&](const Group& g) { return g.shift == shift; });
        if (it == groups.end())
            it = groups.insert(groups.end(), Group{shift, {}, {}});
        it->names << plain;
        it->index.push_back(i);
    }
    for (const Group& g : groups) {
        std::vector<ZWDateTime> sub = bounds;
        if (!g.shift.IsNone()) {
            ZWDateTime s = start, e = end;
            g.shift.Apply(s, e);
            sub = SubPeriodBounds(s, e, unit);
        }
        for (size_t j = 0; j < count && j + 1 < sub.size(); ++j) {
            if (progress && progress->IsCancelled()) {
                if (error)
                    *error = ZWLoadString(ZWTextId::StoreSeriesCancelled);
                return false;
            }
            std::vector<double> values;
            if (!PeriodValues(g.names, sub[j], sub[j + 1], values, progress, error))
                return false;
            for (size_t k = 0; k < g.index.size() && k < values.size(); ++k)
                out.values[j][size_t(g.index[k])] = values[k];
        }
    }
    return true;
}
