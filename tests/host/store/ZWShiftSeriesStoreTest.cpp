// Shifted periods and series from the SQL store, checked against the raw
// reading of the same ranges and against the plain computation in memory.
#include "host/core/ZWLocalTime.h"
#include "host/core/ZWNoValue.h"
#include "host/drivers/ZWLoggerData.h"
#include "host/drivers/ZWPeriodShift.h"
#include "host/drivers/ZWTariffCalendarFile.h"
#include "host/store/ZWLoggerSchema.h"
#include "host/store/ZWSqlLoggerConnection.h"
#include "tests/host/store/ZWStoreTestSupport.h"

#include <QSqlQuery>
#include <QSqlRecord>
#include <algorithm>
#include <cmath>
#include <random>

using namespace Qt::StringLiterals;
using namespace std::string_literals;
using namespace zwtest;
using Kind = ZWSqlLoggerStore::Kind;
using Method = ZWSqlLoggerStore::Method;

namespace {

const QString Meter = u"Main meter.Active energy"_s;
const QString Power = u"Main meter.Active power"_s;

class ShiftSeriesStore : public StoreTest
{
protected:
    // Irregular samples (1 to 45 minutes apart, some on whole hours) over
    // Feb-Mar 2024 (leap February), Feb-Mar 2025 and the end of October 2025
    // (both daylight-saving changes in Madrid); nothing from 10 March 2025
    // to midday on the 12th; the meter replaced on 20 March 2025 (a reset).
    void SetUp() override
    {
        StoreTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        std::mt19937 rng(20250330);
        std::uniform_int_distribution<int> minutes(1, 45);
        std::uniform_real_distribution<double> u(0.0, 1.0);
        Samples power, meter;
        double reading = 1000.0;
        const qint64 gapFrom = ZWLocalTime::ToUtc(At("2025-03-10")),
                     gapTo = ZWLocalTime::ToUtc(At("2025-03-12T12:00:00"));
        const qint64 reset = ZWLocalTime::ToUtc(At("2025-03-20T13:17:00"));
        const char* const spans[][2]
            = {{"2024-01-25", "2024-04-05"}, {"2025-01-25", "2025-04-05"}, {"2025-10-20", "2025-10-31"}};
        for (const auto& span : spans) {
            for (qint64 t = ZWLocalTime::ToUtc(At(span[0])); t < ZWLocalTime::ToUtc(At(span[1]));) {
                if (t < gapFrom || t >= gapTo) {
                    power.push_back({t, std::round((5.0 + 20.0 * u(rng)) * 100.0) / 100.0});
                    reading += std::round(u(rng) * 300.0) / 100.0;
                    if (t >= reset && meter.back().first < reset)
                        reading = 0.5;
                    meter.push_back({t, reading});
                }
                t += u(rng) < 0.1 ? 3600 - ZWDateTime::FloorMod(t, 3600) : 60 * minutes(rng);
            }
        }
        Write(Power, Kind::Gauge, power);
        Write(Meter, Kind::Counter, meter);
        m_power = std::make_unique<Reference>(power);
        m_meter = std::make_unique<Reference>(meter);
    }

    // Compares values of plain names over [start, end) (UTC) with their raw
    // reading (sums may differ in the last bits) and, where it is defined,
    // with the computation in memory.
    void Check(
        const QStringList& names, const std::vector<double>& values, qint64 start, qint64 end, const std::string& what)
    {
        const std::vector<double> raw = Values(names, start, end, Method::Raw);
        ASSERT_EQ(raw.size(), values.size()) << what;
        for (int i = 0; i < names.size(); ++i) {
            const QString& name = names[i];
            const double value = values[size_t(i)];
            const std::string which = what + " " + name.toStdString();
            const QString reduction = name.section(QLatin1Char(':'), 1);
            const bool summed = reduction.isEmpty() || reduction == QLatin1String("avg")
                || reduction == QLatin1String("sum") || reduction == QLatin1String("delta");
            if (summed)
                EXPECT_TRUE(Close(value, raw[size_t(i)], 1e-12)) << which << ": " << value << " vs " << raw[size_t(i)];
            else
                EXPECT_EQ(value, raw[size_t(i)]) << which;
            if (reduction == QLatin1String("hours"))
                continue;
            const bool meter = name.startsWith(Meter);
            const Reference& ref = meter ? *m_meter : *m_power;
            const double expected
                = ref.Reduce(reduction.isEmpty() ? (meter ? u"delta"_s : u"avg"_s) : reduction, start, end);
            EXPECT_TRUE(Close(value, expected, 1e-11)) << which << ": " << value << " vs reference " << expected;
        }
    }

    std::unique_ptr<Reference> m_power, m_meter;
};

INSTANTIATE_TEST_SUITE_P(
    Backends, ShiftSeriesStore, testing::Values(Backend::SQLite, Backend::PostgreSQL), BackendName);

const char* const Reductions[] = {"", "delta", "avg", "min", "max", "sum", "first", "last", "count", "hours"};

TEST_P(ShiftSeriesStore, ShiftedPeriodsAreReadInTheSameQueryAsThePeriod)
{
    const QStringList shifts = {u""_s, u"-1"_s, u"-1y"_s, u"-1m"_s, u"-3d"_s, u"-1w"_s, u"-2y"_s};
    // Every name with every shift, the shifts innermost.
    QStringList names, plain;
    for (const QString& variable : {Meter, Power}) {
        for (const char* r : Reductions) {
            for (const QString& shift : shifts) {
                const QString filter = QLatin1String(r) + (shift.isEmpty() ? QString() : u"@"_s + shift);
                names << (filter.isEmpty() ? variable : variable + QLatin1Char(':') + filter);
                plain << (*r ? variable + QLatin1Char(':') + QLatin1String(r) : variable);
            }
        }
    }
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"March 2025 (a DST change, a reset, a gap)", "2025-03-01", "2025-04-01"},
        {"February 2025 (a year back: leap February)", "2025-02-01", "2025-03-01"},
        {"the 23-hour day", "2025-03-30", "2025-03-31"},
        {"a day without samples", "2025-03-11", "2025-03-12"},
        {"the week with the reset", "2025-03-17", "2025-03-24"},
        {"a user interval over the reset", "2025-03-20T10:30:00", "2025-03-21T09:15:00"},
        {"February 2024 (data begins in the month before)", "2024-02-01", "2024-03-01"},
        {"a week across the first sample", "2024-01-22", "2024-01-29"},
        {"within one hour", "2025-03-20T13:05:00", "2025-03-20T13:50:00"},
        {"two days and an hour from a cut start", "2025-03-05T10:17:00", "2025-03-07T11:17:00"},
    };
    for (const auto& [what, start, end] : cases) {
        std::vector<double> values;
        QString error;
        const int before = m_store->PeriodQueryCount();
        ASSERT_TRUE(m_store->PeriodValues(names, At(start), At(end), values, nullptr, &error)) << error.toStdString();
        EXPECT_EQ(m_store->PeriodQueryCount() - before, 1) << what;
        ASSERT_EQ(values.size(), size_t(names.size()));
        // By shift: the unshifted names' raw reading over the shifted period.
        for (int k = 0; k < shifts.size(); ++k) {
            ZWPeriodShift shift;
            ASSERT_TRUE(ZWPeriodShift::ParseShift(shifts[k], shift));
            QStringList group;
            std::vector<double> got;
            for (int i = k; i < names.size(); i += int(shifts.size())) {
                group << plain[i];
                got.push_back(values[size_t(i)]);
            }
            ZWDateTime s = At(start), e = At(end);
            shift.Apply(s, e);
            Check(group, got, ZWLocalTime::ToUtc(s), ZWLocalTime::ToUtc(e), what + " @"s + shifts[k].toStdString());
            // Two years back lies before the first sample.
            if (shifts[k] == u"-2y"_s) {
                EXPECT_EQ(got, std::vector<double>(got.size(), ZW_NO_VALUE)) << what;
            }
        }
    }
}

TEST_P(ShiftSeriesStore, MalformedShiftsAreUnknownNamesAndTooManyPointsAreRefused)
{
    const char* const bad[] = {":delta@", ":@+1", ":@-0", ":@-1x", ":@-1y2", ":@ -1", ":median@-1", ":@-1001"};
    QStringList names;
    for (const char* b : bad) {
        names << Meter + QString::fromLatin1(b);
        EXPECT_FALSE(m_store->HasVariable(names.back())) << b;
    }
    EXPECT_TRUE(m_store->HasVariable(Meter + u":@-1000W"_s));
    EXPECT_FALSE(m_store->FindVariable(Meter + u":@-1"_s).has_value());
    std::vector<double> values;
    QString error;
    ASSERT_TRUE(m_store->PeriodValues(names, At("2025-03-01"), At("2025-04-01"), values, nullptr, &error));
    EXPECT_EQ(values, std::vector<double>(size_t(names.size()), ZW_NO_VALUE));
    // Too many points are refused without a query.
    ZWSeries series;
    const int before = m_store->PeriodQueryCount();
    EXPECT_FALSE(m_store->SeriesValues(
        {Meter}, At("2024-01-01"), At("2025-01-01"), ZWSeriesUnit::Hour, series, nullptr, &error));
    EXPECT_TRUE(error.contains(u"more than 1000 points"_s)) << error.toStdString();
    EXPECT_EQ(m_store->PeriodQueryCount(), before);
    // 1,000 exactly is allowed: 41 days and 16 hours by hour.
    EXPECT_TRUE(m_store->SeriesValues(
        {Meter}, At("2025-01-01"), At("2025-02-11T16:00:00"), ZWSeriesUnit::Hour, series, nullptr, &error))
        << error.toStdString();
    EXPECT_EQ(series.values.size(), 1000u);
}

TEST_P(ShiftSeriesStore, SeriesReadEverySubPeriodInOneQuery)
{
    struct Case
    {
        const char* name;
        ZWSeriesUnit unit;
        const char *start, *end;
        const char* shift;
        size_t points;
        // The default (one PeriodValues per sub-period) gives the same
        // values, except across the repeated autumn hour, which local times
        // cannot name twice.
        bool sameAsDefault;
    } cases[] = {
        {"March 2025 by day against February", ZWSeriesUnit::Day, "2025-03-01", "2025-04-01", "-1m", 31, true},
        {"February 2025 by day against leap February", ZWSeriesUnit::Day, "2025-02-01", "2025-03-01", "-1y", 28, true},
        {"the 23-hour day by hour", ZWSeriesUnit::Hour, "2025-03-30", "2025-03-31", "-1", 23, true},
        {"the 25-hour day by hour", ZWSeriesUnit::Hour, "2025-10-26", "2025-10-27", "-1d", 25, false},
        {"March 2025 by week, cut at both ends", ZWSeriesUnit::Week, "2025-03-01T06:00:00", "2025-03-31T12:00:00",
            "-1y", 6, true},
        {"sixteen months by month, most empty", ZWSeriesUnit::Month, "2024-01-01", "2025-05-01", "-1", 16, true},
    };
    for (const Case& c : cases) {
        // Each name plain and shifted.
        QStringList own, shiftedNames;
        for (const QString& variable : {Meter, Power}) {
            for (const char* r : Reductions) {
                own << (*r ? variable + QLatin1Char(':') + QLatin1String(r) : variable);
                shiftedNames << variable + QLatin1Char(':') + QLatin1String(r) + QLatin1Char('@')
                        + QLatin1String(c.shift);
            }
        }
        const QStringList names = own + shiftedNames;
        ZWSeries series;
        QString error;
        const int before = m_store->PeriodQueryCount();
        ASSERT_TRUE(m_store->SeriesValues(names, At(c.start), At(c.end), c.unit, series, nullptr, &error))
            << error.toStdString();
        EXPECT_EQ(m_store->PeriodQueryCount() - before, 1) << c.name;
        ASSERT_EQ(series.values.size(), c.points) << c.name;
        EXPECT_EQ(series.bounds, ZWLoggerStore::SubPeriodBounds(At(c.start), At(c.end), c.unit)) << c.name;

        ZWDateTime s = At(c.start), e = At(c.end);
        ZWPeriodShift shift;
        ASSERT_TRUE(ZWPeriodShift::ParseShift(QString::fromLatin1(c.shift), shift));
        shift.Apply(s, e);
        const std::vector<qint64> ownBounds = ZWLoggerStore::SubPeriodInstants(At(c.start), At(c.end), c.unit);
        const std::vector<qint64> shiftedBounds = ZWLoggerStore::SubPeriodInstants(s, e, c.unit);
        for (size_t j = 0; j < c.points; ++j) {
            ASSERT_EQ(series.values[j].size(), size_t(names.size()));
            const std::vector<double> mine(series.values[j].begin(), series.values[j].begin() + own.size());
            const std::vector<double> theirs(series.values[j].begin() + own.size(), series.values[j].end());
            const std::string what = std::string(c.name) + " point " + std::to_string(j);
            Check(own, mine, ownBounds[j], ownBounds[j + 1], what);
            if (j + 1 < shiftedBounds.size())
                Check(own, theirs, shiftedBounds[j], shiftedBounds[j + 1], what + " shifted");
            else
                EXPECT_EQ(theirs, std::vector<double>(theirs.size(), ZW_NO_VALUE)) << what;
        }
        if (c.sameAsDefault) {
            ZWSeries plain;
            ASSERT_TRUE(
                m_store->ZWLoggerStore::SeriesValues(names, At(c.start), At(c.end), c.unit, plain, nullptr, &error));
            EXPECT_EQ(plain.bounds, series.bounds) << c.name;
            // PostgreSQL may add a piece's samples in another order under
            // another plan: the last bits of sums may differ.
            ASSERT_EQ(plain.values.size(), series.values.size()) << c.name;
            for (size_t j = 0; j < plain.values.size(); ++j)
                for (size_t i = 0; i < plain.values[j].size(); ++i)
                    EXPECT_TRUE(Close(plain.values[j][i], series.values[j][i], 1e-12))
                        << c.name << " point " << j << " " << names[int(i)].toStdString();
        }
    }
}

TEST_P(ShiftSeriesStore, LoggerDataSelectsThePeriodAndASeriesOfItsNames)
{
    auto shared = std::shared_ptr<ZWSqlLoggerStore>(std::move(m_store));
    ZWLoggerData data(shared);
    ZWLoggerInfo info;
    info.AddVariable(Meter);
    info.AddVariable(Meter + u":@-1y"_s);
    info.AddVariable(u"Site.Unknown"_s);
    ASSERT_TRUE(data.Setup(info));
    ZWSeries series, direct;
    ASSERT_TRUE(data.SelectSeries(At("2025-02-01"), At("2025-04-01"), ZWSeriesUnit::Month, series, nullptr))
        << data.LastError().toStdString();
    QString error;
    ASSERT_TRUE(shared->SeriesValues(
        info.Variables(), At("2025-02-01"), At("2025-04-01"), ZWSeriesUnit::Month, direct, nullptr, &error));
    EXPECT_EQ(series.values, direct.values);
    ASSERT_EQ(series.values.size(), 2u);
    // March a year back: leap 2024's.
    EXPECT_TRUE(Close(series.values[1][1],
        m_meter->Increase(ZWLocalTime::ToUtc(At("2024-03-01")), ZWLocalTime::ToUtc(At("2024-04-01"))), 1e-12));
    EXPECT_FALSE(data.SelectSeries(At("2024-01-01"), At("2025-01-01"), ZWSeriesUnit::Hour, series, nullptr));
    EXPECT_TRUE(data.LastError().contains(u"more than 1000 points"_s));
    EXPECT_TRUE(series.values.empty());

    // A period's record: its names' values, none for the unknown one.
    const ZWDateTime start = At("2025-03-01"), end = At("2025-04-01");
    ASSERT_TRUE(data.SelectData(start, end, nullptr)) << data.LastError().toStdString();
    const ZWDataRecord* record = data.DataRecord(start, end);
    ASSERT_NE(record, nullptr);
    EXPECT_TRUE(Close(record->values[0], m_meter->Increase(ZWLocalTime::ToUtc(start), ZWLocalTime::ToUtc(end)), 1e-12));
    EXPECT_EQ(record->values[2], ZW_NO_VALUE);
}

// Nights, weekends and a public holiday on a Wednesday (19 March 2025) in
// P3; working days P1 from 8 to 18 in winter, P2 in summer, P2 evenings.
const char* const TestCalendar = R"(<tariffs><calendar><name>T3</name>
  <period>P1</period><period>P2</period><period>P3</period><holiday>2025-03-19</holiday>
  <rule><days>saturday,sunday,holiday</days><period>P3</period></rule>
  <rule><days>working</days><hours>0-8</hours><period>P3</period></rule>
  <rule><months>10-3</months><days>working</days><hours>8-18</hours><period>P1</period></rule>
  <rule><months>4-9</months><days>working</days><hours>8-18</hours><period>P2</period></rule>
  <rule><days>working</days><hours>18-24</hours><period>P2</period></rule>
</calendar></tariffs>)";

class TariffStore : public ShiftSeriesStore
{
protected:
    void SetUp() override
    {
        ShiftSeriesStore::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        ZWTariffCalendarFile file;
        ASSERT_TRUE(file.Parse(TestCalendar)) << file.LastError().toStdString();
        m_calendar = std::make_shared<ZWTariffCalendar>(file.Calendars().front());
        QString error;
        ASSERT_TRUE(m_store->SetTariffCalendar(m_calendar, &error)) << error.toStdString();
    }

    // The tariff period of the local hour that holds UTC instant t.
    int PeriodOf(qint64 t) const
    {
        const ZWDateTime local = ZWLocalTime::FromUtc(t);
        return m_calendar->PeriodAt(
            ZWDateTime::FromSeconds(local.Seconds() - ZWDateTime::FloorMod(local.Seconds(), 3600)));
    }

    // The plainest computation: a counter's rises (a drop: its reading) of
    // the samples in (start, end] whose hour, the one their time closes, is
    // in `period`; a gauge's samples in [start, end) whose hour is.
    double Expected(const QString& name, qint64 start, qint64 end) const
    {
        const QString filter = name.section(QLatin1Char(':'), 1);
        const QString period = filter.section(QLatin1Char(':'), -1);
        const QString reduction
            = filter.contains(QLatin1Char(':')) ? filter.section(QLatin1Char(':'), 0, 0) : QString();
        const int p = m_calendar->PeriodIndex(period);
        if (name.startsWith(Meter)) {
            double sum = 0.0;
            bool any = false;
            const Samples& m = m_meter->samples;
            for (size_t k = 1; k < m.size(); ++k) {
                if (m[k].first > start && m[k].first <= end && PeriodOf(m[k].first - 1) == p) {
                    sum += m[k].second >= m[k - 1].second ? m[k].second - m[k - 1].second : m[k].second;
                    any = true;
                }
            }
            if (any)
                return sum;
            // No sample in the period's hours: unknown, unless there are
            // no such hours at all.
            for (qint64 u = start; u < end; u += 60)
                if (PeriodOf(u) == p)
                    return ZW_NO_VALUE;
            return 0.0;
        }
        Samples in;
        for (const auto& sample : m_power->samples)
            if (sample.first >= start && sample.first < end && PeriodOf(sample.first) == p)
                in.push_back(sample);
        return Reference(in).Reduce(reduction.isEmpty() ? u"avg"_s : reduction, start, end);
    }

    std::shared_ptr<ZWTariffCalendar> m_calendar;
};

INSTANTIATE_TEST_SUITE_P(Backends, TariffStore, testing::Values(Backend::SQLite, Backend::PostgreSQL), BackendName);

TEST_P(TariffStore, TariffPeriodsSplitAPeriodByTheCalendarsHoursInTheSameQuery)
{
    QStringList names;
    for (const char* p : {"P1", "P2", "p3"}) {
        names << Meter + u":"_s + QLatin1String(p);
        for (const char* r : {"avg", "max", "min", "count", "sum"})
            names << Power + u":"_s + QLatin1String(r) + u":"_s + QLatin1String(p);
    }
    struct Case
    {
        const char* name;
        const char *start, *end;
    } cases[] = {
        {"March 2025 (DST change, holiday, reset, gap)", "2025-03-01", "2025-04-01"},
        {"the 25-hour day", "2025-10-26", "2025-10-27"},
        {"the holiday", "2025-03-19", "2025-03-20"},
        {"mid-hour to mid-hour over the reset", "2025-03-20T10:30:00", "2025-03-21T09:15:00"},
        {"within one hour", "2025-03-20T13:05:00", "2025-03-20T13:50:00"},
        {"a day without samples", "2025-03-11", "2025-03-12"},
    };
    for (const Case& c : cases) {
        const qint64 start = ZWLocalTime::ToUtc(At(c.start)), end = ZWLocalTime::ToUtc(At(c.end));
        std::vector<double> values;
        QString error;
        const int before = m_store->PeriodQueryCount();
        ASSERT_TRUE(m_store->PeriodValues(names + QStringList{Meter}, At(c.start), At(c.end), values, nullptr, &error))
            << error.toStdString();
        EXPECT_EQ(m_store->PeriodQueryCount() - before, 1) << c.name;
        const std::vector<double> raw = Values(names, start, end, Method::Raw);
        double total = 0.0;
        for (int i = 0; i < names.size(); ++i) {
            const std::string what = std::string(c.name) + " " + names[i].toStdString();
            const double expected = Expected(names[i], start, end);
            EXPECT_TRUE(Close(values[size_t(i)], expected, 1e-11))
                << what << ": " << values[size_t(i)] << " vs " << expected;
            EXPECT_TRUE(Close(values[size_t(i)], raw[size_t(i)], 1e-11)) << what << " raw " << raw[size_t(i)];
            if (names[i].startsWith(Meter) && !IsNoValue(values[size_t(i)]))
                total += values[size_t(i)];
        }
        // The periods' increases add up to the period's.
        EXPECT_TRUE(Close(total == 0.0 ? ZW_NO_VALUE : total, values.back(), 1e-11)) << c.name << ": " << total;
    }
    // A shifted tariff period: March a year back.
    std::vector<double> shifted;
    QString error;
    ASSERT_TRUE(m_store->PeriodValues({Meter + u":P1@-1y"_s, Power + u":max:P3@-1y"_s}, At("2025-03-01"),
        At("2025-04-01"), shifted, nullptr, &error));
    const qint64 s = ZWLocalTime::ToUtc(At("2024-03-01")), e = ZWLocalTime::ToUtc(At("2024-04-01"));
    EXPECT_TRUE(Close(shifted[0], Expected(Meter + u":P1"_s, s, e), 1e-11));
    EXPECT_TRUE(Close(shifted[1], Expected(Power + u":max:P3"_s, s, e), 1e-11));
    // By day: each day's P1 increase.
    ZWSeries series;
    ASSERT_TRUE(m_store->SeriesValues(
        {Meter + u":P1"_s}, At("2025-03-01"), At("2025-04-01"), ZWSeriesUnit::Day, series, nullptr, &error));
    const std::vector<qint64> days
        = ZWLoggerStore::SubPeriodInstants(At("2025-03-01"), At("2025-04-01"), ZWSeriesUnit::Day);
    ASSERT_EQ(series.values.size(), 31u);
    for (size_t j = 0; j < 31; ++j)
        EXPECT_TRUE(Close(series.values[j][0], Expected(Meter + u":P1"_s, days[j], days[j + 1]), 1e-11)) << "day " << j;
    EXPECT_EQ(series.values[0][0], 0.0);          // a Saturday: no P1 hour
    EXPECT_EQ(series.values[10][0], ZW_NO_VALUE); // 11 March: P1 hours, no samples
}

TEST_P(TariffStore, AZoneOfHalfHoursSplitsUtcHoursAtEveryChangeOfPeriod)
{
    // Local hours from :30 UTC: every change of period splits a UTC hour,
    // whose halves come from raw samples.
    qputenv("TZ", "Asia/Kolkata");
    tzset();
    QStringList names;
    for (const char* p : {"P1", "P2", "P3"})
        names << Meter + u":"_s + QLatin1String(p) << Power + u":max:"_s + QLatin1String(p)
              << Power + u":"_s + QLatin1String(p);
    const qint64 start = ZWLocalTime::ToUtc(At("2025-03-03")), end = ZWLocalTime::ToUtc(At("2025-03-24T17:00:00"));
    const std::vector<double> values = Values(names, start, end), raw = Values(names, start, end, Method::Raw);
    for (int i = 0; i < names.size(); ++i) {
        const double expected = Expected(names[i], start, end);
        EXPECT_NE(expected, ZW_NO_VALUE) << names[i].toStdString();
        EXPECT_TRUE(Close(values[size_t(i)], expected, 1e-11)) << names[i].toStdString() << ": " << values[size_t(i)];
        EXPECT_TRUE(Close(raw[size_t(i)], expected, 1e-11)) << names[i].toStdString() << " raw: " << raw[size_t(i)];
    }
    qputenv("TZ", "Europe/Madrid");
    tzset();
}

TEST_P(TariffStore, TariffFiltersOutsideTheGrammarAreUnknownNames)
{
    for (const char* bad :
        {":P4", ":first:P1", ":last:P1", ":hours:P1", ":P1:max", "::P1", ":max:", ":P1@", ":P1@+1", ":avg:P1:P2"})
        EXPECT_FALSE(m_store->HasVariable(Meter + QLatin1String(bad))) << bad;
    // A gauge's delta has no tariff form.
    EXPECT_FALSE(m_store->HasVariable(Power + u":delta:P1"_s));
    for (const char* good : {":P1", ":delta:p2", ":MAX:P3", ":P1@-1y", ":count:P2@-3d"})
        EXPECT_TRUE(m_store->HasVariable(Meter + QLatin1String(good))) << good;
    EXPECT_FALSE(m_store->FindVariable(Meter + u":P1"_s).has_value());
    EXPECT_EQ(m_store->FilterNames().mid(9), (QStringList{u"P1"_s, u"P2"_s, u"P3"_s}));

    // A period named like a reduction would shadow it: refused.
    ZWTariffCalendarFile file;
    ASSERT_TRUE(file.Parse(QByteArray(TestCalendar).replace("P2", "Max")));
    QString error;
    EXPECT_FALSE(m_store->SetTariffCalendar(std::make_shared<ZWTariffCalendar>(file.Calendars().front()), &error));
    EXPECT_TRUE(error.contains(u"\"Max\""_s)) << error.toStdString();
    EXPECT_TRUE(m_store->HasVariable(Meter + u":P2"_s));
    // Without a calendar, no period is known.
    ASSERT_TRUE(m_store->SetTariffCalendar(nullptr, &error));
    EXPECT_FALSE(m_store->HasVariable(Meter + u":P1"_s));
}

TEST_P(TariffStore, CounterHoursFollowEveryWriteAndAnOlderDatabaseGetsThem)
{
    // Both tables as rows of numbers (NULL as the no-value marker), by key.
    using Table = std::vector<std::vector<double>>;
    const auto rows = [&] {
        Table out;
        QSqlQuery q(m_store->Connection().Database());
        for (const char* table : {"counter_hour", "counter_day"}) {
            EXPECT_TRUE(q.exec(u"SELECT * FROM %1 ORDER BY 1, 2"_s.arg(QLatin1String(table))));
            while (q.next()) {
                std::vector<double> row;
                for (int i = 0; i < q.record().count(); ++i)
                    row.push_back(q.value(i).isNull() ? ZW_NO_VALUE : q.value(i).toDouble());
                out.push_back(row);
            }
        }
        return out;
    };
    ZWSqlLoggerConnection& c = m_store->Connection();
    const QString counters = u"variable_id IN (SELECT id FROM variables WHERE kind = 'counter')"_s;
    const auto rebuilt = [&] {
        EXPECT_TRUE(c.Exec(u"DELETE FROM counter_hour"_s, nullptr));
        EXPECT_TRUE(c.Exec(u"DELETE FROM counter_day"_s, nullptr));
        EXPECT_TRUE(c.Exec(ZWLoggerSchema::CounterHourFillSql(counters), nullptr));
        EXPECT_TRUE(c.Exec(ZWLoggerSchema::CounterDayFillSql(u"h."_s + counters), nullptr));
        return rows();
    };
    const auto same = [](const Table& a, const Table& b) {
        const auto close = [](double x, double y) { return Close(x, y, 1e-12); };
        return std::equal(a.begin(), a.end(), b.begin(), b.end(),
            [&](const auto& x, const auto& y) { return std::equal(x.begin(), x.end(), y.begin(), y.end(), close); });
    };
    // Late samples: on the hour, a drop, a replaced value, before all others.
    const qint64 h = ZWLocalTime::ToUtc(At("2025-03-05T10:00:00"));
    Write(Meter, Kind::Counter, {{h, 1.0}, {h + 3600 * 5 + 7, 99999.0}, {m_meter->samples[10].first, 5.0}, {100, 1.0}});
    const Table written = rows();
    EXPECT_GT(written.size(), 1000u);
    EXPECT_TRUE(same(written, rebuilt()));

    // A database of the first schema: opened, it gets both tables.
    ASSERT_TRUE(c.Exec(u"DROP TABLE counter_hour"_s, nullptr));
    ASSERT_TRUE(c.Exec(u"DROP TABLE counter_day"_s, nullptr));
    ASSERT_TRUE(c.Exec(u"UPDATE zw_schema SET version = 1"_s, nullptr));
    m_store.reset();
    m_store = std::make_unique<ZWSqlLoggerStore>(m_parsed);
    QString error;
    ASSERT_TRUE(m_store->Open(&error)) << error.toStdString();
    EXPECT_TRUE(same(rows(), written));
    QSqlQuery q(m_store->Connection().Database());
    ASSERT_TRUE(q.exec(u"SELECT version FROM zw_schema"_s) && q.next());
    EXPECT_EQ(q.value(0).toInt(), ZWLoggerSchema::Version);
}

} // namespace
