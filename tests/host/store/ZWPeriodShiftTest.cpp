// The calendar of shifts and series: pure, in Madrid's time (the store
// tests' environment sets TZ).
#include "host/drivers/ZWPeriodShift.h"
#include "host/core/ZWLocalTime.h"
#include "host/core/ZWNoValue.h"
#include "host/drivers/ZWLiveValues.h"
#include "host/drivers/ZWLoggerStore.h"
#include "tests/host/store/ZWStoreTestSupport.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

using zwtest::At;

TEST(PeriodShift, FiltersReadAsReductionThenShift)
{
    // filter, reduction, shift
    const std::tuple<const char*, const char*, const char*> cases[]
        = {{"delta@-1", "delta", "-1"}, {"@-1y", "", "-1y"}, {"max@-2M", "max", "-2m"}, {"@-1000w", "", "-1000w"},
            {"avg@-7D", "avg", "-7d"}, {"sum", "sum", ""}, {"", "", ""}};
    for (const auto& [filter, expectedReduction, expectedShift] : cases) {
        QString reduction;
        ZWPeriodShift shift;
        ASSERT_TRUE(ZWPeriodShift::Parse(QString::fromLatin1(filter), reduction, shift)) << filter;
        EXPECT_EQ(reduction, QString::fromLatin1(expectedReduction)) << filter;
        EXPECT_EQ(shift.ToText(), QString::fromLatin1(expectedShift)) << filter;
    }
    for (const char* bad : {"delta@", "@+1", "@-0", "@-01", "@-1001", "@-1x", "@-1y2", "@ -1", "@-1 ", "@-", "@1",
             "@-1@-1", "@-99999999999999999999"}) {
        QString reduction;
        ZWPeriodShift shift;
        EXPECT_FALSE(ZWPeriodShift::Parse(QString::fromLatin1(bad), reduction, shift)) << bad;
    }
    // A name keeps its reduction and loses its shift.
    QString plain;
    ZWPeriodShift shift;
    ASSERT_TRUE(ZWPeriodShift::SplitName(u"Main meter.Active energy:delta@-1"_s, plain, shift));
    EXPECT_EQ(plain, u"Main meter.Active energy:delta"_s);
    ASSERT_TRUE(ZWPeriodShift::SplitName(u"Main meter.Active energy:@-1y"_s, plain, shift));
    EXPECT_EQ(plain, u"Main meter.Active energy"_s);
    EXPECT_EQ(shift.ToText(), u"-1y"_s);
    EXPECT_FALSE(ZWPeriodShift::SplitName(u"A.b:max@-1q"_s, plain, shift));
}

TEST(PeriodShift, MovesPeriodsOnTheLocalCalendar)
{
    // what, shift, period, shifted period
    const std::tuple<const char*, const char*, const char*, const char*, const char*, const char*> cases[] = {
        {"a month to the month before", "-1", "2025-03-01", "2025-04-01", "2025-02-01", "2025-03-01"},
        {"a quarter to the quarter before", "-1", "2025-04-01", "2025-07-01", "2025-01-01", "2025-04-01"},
        {"a year two years back", "-2", "2025-01-01", "2026-01-01", "2023-01-01", "2024-01-01"},
        {"a day to the day before", "-1", "2025-03-31", "2025-04-01", "2025-03-30", "2025-03-31"},
        {"a week to the week before", "-1", "2025-03-31", "2025-04-07", "2025-03-24", "2025-03-31"},
        {"an interval to the one just before it", "-1", "2025-03-03T08:30:00", "2025-03-03T10:00:00",
            "2025-03-03T07:00:00", "2025-03-03T08:30:00"},
        {"leap February a year back", "-1y", "2024-02-01", "2024-03-01", "2023-02-01", "2023-03-01"},
        {"29 February a year back is 28 February", "-1y", "2024-02-29T06:00:00", "2024-03-01", "2023-02-28T06:00:00",
            "2023-03-01"},
        {"31 May a month back is 30 April", "-1m", "2025-05-31", "2025-06-01", "2025-04-30", "2025-05-01"},
        {"days keep wall-clock times across a DST change", "-3d", "2025-03-31T12:00:00", "2025-04-01T12:00:00",
            "2025-03-28T12:00:00", "2025-03-29T12:00:00"},
        {"weeks", "-2w", "2025-03-10", "2025-03-17", "2025-02-24", "2025-03-03"},
    };
    for (const auto& [what, text, start, end, shiftedStart, shiftedEnd] : cases) {
        ZWPeriodShift shift;
        ASSERT_TRUE(ZWPeriodShift::ParseShift(QString::fromLatin1(text), shift)) << what;
        ZWDateTime s = At(start), e = At(end);
        shift.Apply(s, e);
        EXPECT_EQ(std::pair(s.ToIso(), e.ToIso()), std::pair(At(shiftedStart).ToIso(), At(shiftedEnd).ToIso())) << what;
    }
}

TEST(SeriesBounds, SubPeriodsFollowTheLocalCalendar)
{
    struct Case
    {
        const char* name;
        ZWSeriesUnit unit;
        const char *start, *end;
        size_t count;
        std::vector<const char*> firstBounds; // the first bounds, in order
        qint64 longestSeconds, shortestSeconds;
    } cases[] = {
        {"the spring change's day has 23 hours", ZWSeriesUnit::Hour, "2025-03-30", "2025-03-31", 23,
            {"2025-03-30T00:00:00", "2025-03-30T01:00:00", "2025-03-30T03:00:00"}, 3600, 3600},
        {"the autumn change's day has 25 hours", ZWSeriesUnit::Hour, "2025-10-26", "2025-10-27", 25,
            {"2025-10-26T00:00:00", "2025-10-26T01:00:00", "2025-10-26T02:00:00", "2025-10-26T02:00:00",
                "2025-10-26T03:00:00"},
            3600, 3600},
        {"hours cut at both ends", ZWSeriesUnit::Hour, "2025-01-06T10:30:00", "2025-01-06T12:15:00", 3,
            {"2025-01-06T10:30:00", "2025-01-06T11:00:00", "2025-01-06T12:00:00", "2025-01-06T12:15:00"}, 3600, 900},
        {"March's days, one of 23 hours", ZWSeriesUnit::Day, "2025-03-01", "2025-04-01", 31,
            {"2025-03-01T00:00:00", "2025-03-02T00:00:00"}, 86400, 82800},
        {"October's days, one of 25 hours", ZWSeriesUnit::Day, "2025-10-01", "2025-11-01", 31, {"2025-10-01T00:00:00"},
            90000, 86400},
        {"leap February's days", ZWSeriesUnit::Day, "2024-02-01", "2024-03-01", 29, {"2024-02-01T00:00:00"}, 86400,
            86400},
        {"days cut at both ends", ZWSeriesUnit::Day, "2025-01-06T10:00:00", "2025-01-08T06:00:00", 3,
            {"2025-01-06T10:00:00", "2025-01-07T00:00:00", "2025-01-08T00:00:00", "2025-01-08T06:00:00"}, 86400,
            6 * 3600},
        {"weeks start on Monday", ZWSeriesUnit::Week, "2025-03-01", "2025-04-01", 6,
            {"2025-03-01T00:00:00", "2025-03-03T00:00:00", "2025-03-10T00:00:00", "2025-03-17T00:00:00",
                "2025-03-24T00:00:00", "2025-03-31T00:00:00", "2025-04-01T00:00:00"},
            7 * 86400, 86400},
        {"months start on day 1", ZWSeriesUnit::Month, "2024-11-15", "2025-03-01", 4,
            {"2024-11-15T00:00:00", "2024-12-01T00:00:00", "2025-01-01T00:00:00", "2025-02-01T00:00:00",
                "2025-03-01T00:00:00"},
            31 * 86400, 16 * 86400},
        {"a year's months", ZWSeriesUnit::Month, "2025-01-01", "2026-01-01", 12, {"2025-01-01T00:00:00"},
            31 * 86400 + 3600, 28 * 86400},
        {"a reversed period", ZWSeriesUnit::Hour, "2025-01-07", "2025-01-06", 0, {}, 0, 0},
    };
    for (const Case& c : cases) {
        const std::vector<ZWDateTime> bounds = ZWLoggerStore::SubPeriodBounds(At(c.start), At(c.end), c.unit);
        const std::vector<qint64> instants = ZWLoggerStore::SubPeriodInstants(At(c.start), At(c.end), c.unit);
        ASSERT_EQ(bounds.size(), c.count ? c.count + 1 : 0) << c.name;
        ASSERT_EQ(instants.size(), bounds.size()) << c.name;
        if (c.count == 0)
            continue;
        for (size_t i = 0; i < c.firstBounds.size(); ++i)
            EXPECT_EQ(bounds[i].ToIso(), At(c.firstBounds[i]).ToIso()) << c.name << " bound " << i;
        EXPECT_EQ(bounds.front(), At(c.start)) << c.name;
        EXPECT_EQ(bounds.back(), At(c.end)) << c.name;
        EXPECT_EQ(instants.front(), ZWLocalTime::ToUtc(At(c.start))) << c.name;
        EXPECT_EQ(instants.back(), ZWLocalTime::ToUtc(At(c.end))) << c.name;
        qint64 longest = 0, shortest = std::numeric_limits<qint64>::max();
        for (size_t i = 0; i + 1 < instants.size(); ++i) {
            longest = std::max(longest, instants[i + 1] - instants[i]);
            shortest = std::min(shortest, instants[i + 1] - instants[i]);
        }
        EXPECT_EQ(longest, c.longestSeconds) << c.name;
        EXPECT_EQ(shortest, c.shortestSeconds) << c.name;
    }
    // Hours of two months: generation stops one sub-period past the limit.
    const auto many = ZWLoggerStore::SubPeriodBounds(At("2025-01-01"), At("2025-03-01"), ZWSeriesUnit::Hour);
    EXPECT_EQ(many.size(), size_t(ZWLoggerStore::MaxSeriesPoints) + 2);
    EXPECT_NE(many.back(), At("2025-03-01"));
}

TEST(SeriesBounds, UnitNamesReadBack)
{
    for (const ZWSeriesUnit unit : {ZWSeriesUnit::Hour, ZWSeriesUnit::Day, ZWSeriesUnit::Week, ZWSeriesUnit::Month}) {
        ZWSeriesUnit read = ZWSeriesUnit::Hour;
        ASSERT_TRUE(ZWSeriesUnitFromName(ZWSeriesUnitName(unit).toUpper(), read));
        EXPECT_EQ(read, unit);
    }
    EXPECT_EQ(ZWSeriesUnitName(ZWSeriesUnit::Week), u"week"_s);
    ZWSeriesUnit unit;
    EXPECT_FALSE(ZWSeriesUnitFromName(u"quarter"_s, unit));
    EXPECT_FALSE(ZWSeriesUnitFromName(QString(), unit));
}

// The in-process store: shifted names are known when they read, and a
// series is its live value at every point.
TEST(LiveValuesSeries, ShiftedNamesAndTheDefaultSeries)
{
    ZWLiveValues live;
    live.Set(u"Main meter.Active energy"_s, 42.0);
    const std::pair<const char*, bool> names[] = {{"Main meter.Active energy:delta@-1", true},
        {"Main meter.Active energy:@-1y", true}, {"Main meter.Active energy:@-1q", false},
        {"Main meter.Active energy:max@", false}, {"Main meter.Other:@-1", false}};
    for (const auto& [name, known] : names)
        EXPECT_EQ(live.HasVariable(QString::fromLatin1(name)), known) << name;
    ZWSeries series;
    QString error;
    ASSERT_TRUE(live.SeriesValues(
        {u"Main meter.Active energy@-1"_s, u"Main meter.Active energy:@-1m"_s, u"Main meter.Active energy:@-1q"_s},
        At("2025-03-01"), At("2025-04-01"), ZWSeriesUnit::Day, series, nullptr, &error))
        << error.toStdString();
    ASSERT_EQ(series.bounds.size(), 32u);
    ASSERT_EQ(series.values.size(), 31u);
    // February has 28 days: March's last three have no shifted value. The
    // first name has no ":" (no filter): it is unknown, as a malformed shift.
    EXPECT_EQ(series.values[0], (std::vector<double>{ZW_NO_VALUE, 42.0, ZW_NO_VALUE}));
    EXPECT_EQ(series.values[27][1], 42.0);
    EXPECT_EQ(series.values[28][1], ZW_NO_VALUE);
    EXPECT_FALSE(live.SeriesValues({u"Main meter.Active energy"_s}, At("2025-01-01"), At("2025-03-01"),
        ZWSeriesUnit::Hour, series, nullptr, &error));
    EXPECT_TRUE(error.contains(u"more than 1000 points"_s)) << error.toStdString();
}

} // namespace
