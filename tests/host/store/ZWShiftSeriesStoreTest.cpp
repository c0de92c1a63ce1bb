// Shifted periods and series from the SQL store, checked against the raw
// reading of the same ranges and against the plain computation in memory.
#include "host/core/ZWLocalTime.h"
#include "host/core/ZWNoValue.h"
#include "host/drivers/ZWLoggerData.h"
#include "host/drivers/ZWPeriodShift.h"
#include "tests/host/store/ZWStoreTestSupport.h"

#include <cmath>
#include <random>

using namespace Qt::StringLiterals;
using namespace zwtest;
using Kind = ZWSqlLoggerStore::Kind;
using Method = ZWSqlLoggerStore::Method;

namespace {

ZWDateTime At(const char* iso)
{
    ZWDateTime t;
    EXPECT_TRUE(String2DateTime(t, QString::fromLatin1(iso))) << iso;
    return t;
}

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

const char* const Reductions[] = {"", "delta", "avg", "max", "first", "last", "count", "hours"};

TEST_P(ShiftSeriesStore, ShiftedPeriodsAreReadInTheSameQueryAsThePeriod)
{
    const char* const shifts[] = {"", "-1", "-1y", "-1m", "-3d", "-1w", "-2y"};
    QStringList names, plain;
    std::vector<ZWPeriodShift> nameShifts;
    for (const QString& variable : {Meter, Power}) {
        for (const char* r : Reductions) {
            for (const char* s : shifts) {
                QString filter = QString::fromLatin1(r);
                if (*s)
                    filter += QLatin1Char('@') + QString::fromLatin1(s);
                names << (filter.isEmpty() ? variable : variable + QLatin1Char(':') + filter);
                plain << (*r ? variable + QLatin1Char(':') + QLatin1String(r) : variable);
                ZWPeriodShift shift;
                ASSERT_TRUE(ZWPeriodShift::ParseShift(QString::fromLatin1(s), shift));
                nameShifts.push_back(shift);
            }
        }
    }
    struct Case
    {
        const char* name;
        const char *start, *end;
    } cases[] = {
        {"March 2025 (a DST change, a reset, a gap)", "2025-03-01", "2025-04-01"},
        {"February 2025 (a year back: leap February)", "2025-02-01", "2025-03-01"},
        {"the 23-hour day", "2025-03-30", "2025-03-31"},
        {"a day without samples", "2025-03-11", "2025-03-12"},
        {"the week with the reset", "2025-03-17", "2025-03-24"},
        {"a user interval over the reset", "2025-03-20T10:30:00", "2025-03-21T09:15:00"},
        {"February 2024 (data begins in the month before)", "2024-02-01", "2024-03-01"},
    };
    for (const Case& c : cases) {
        std::vector<double> values;
        QString error;
        const int before = m_store->PeriodQueryCount();
        ASSERT_TRUE(m_store->PeriodValues(names, At(c.start), At(c.end), values, nullptr, &error))
            << error.toStdString();
        EXPECT_EQ(m_store->PeriodQueryCount() - before, 1) << c.name;
        ASSERT_EQ(values.size(), size_t(names.size()));
        // By shift: the unshifted names' raw reading over the shifted period.
        for (const char* text : shifts) {
            ZWPeriodShift shift;
            ASSERT_TRUE(ZWPeriodShift::ParseShift(QString::fromLatin1(text), shift));
            QStringList group;
            std::vector<double> got;
            for (int i = 0; i < names.size(); ++i) {
                if (nameShifts[size_t(i)] == shift) {
                    group << plain[i];
                    got.push_back(values[size_t(i)]);
                }
            }
            ZWDateTime s = At(c.start), e = At(c.end);
            shift.Apply(s, e);
            Check(group, got, ZWLocalTime::ToUtc(s), ZWLocalTime::ToUtc(e), std::string(c.name) + " @" + text);
            // Two years back lies before the first sample.
            if (shift.ToText() == u"-2y"_s) {
                EXPECT_EQ(got, std::vector<double>(got.size(), ZW_NO_VALUE)) << c.name;
            }
        }
    }
}

TEST_P(ShiftSeriesStore, MalformedShiftsAreUnknownNames)
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
        {"March 2025 by day", ZWSeriesUnit::Day, "2025-03-01", "2025-04-01", "", 31, true},
        {"March 2025 by day against February", ZWSeriesUnit::Day, "2025-03-01", "2025-04-01", "-1m", 31, true},
        {"February 2025 by day against leap February", ZWSeriesUnit::Day, "2025-02-01", "2025-03-01", "-1y", 28, true},
        {"the 23-hour day by hour", ZWSeriesUnit::Hour, "2025-03-30", "2025-03-31", "-1", 23, true},
        {"the 25-hour day by hour", ZWSeriesUnit::Hour, "2025-10-26", "2025-10-27", "-1d", 25, false},
        {"March 2025 by week, cut at both ends", ZWSeriesUnit::Week, "2025-03-01T06:00:00", "2025-03-31T12:00:00",
            "-1y", 6, true},
        {"sixteen months by month, most empty", ZWSeriesUnit::Month, "2024-01-01", "2025-05-01", "-1", 16, true},
    };
    for (const Case& c : cases) {
        // Each name plain and shifted (when the case has a shift).
        QStringList own, shiftedNames;
        for (const QString& variable : {Meter, Power}) {
            for (const char* r : Reductions) {
                own << (*r ? variable + QLatin1Char(':') + QLatin1String(r) : variable);
                if (*c.shift)
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
            if (shiftedNames.isEmpty())
                continue;
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
    // Spot checks on the data's shape: the empty days, the reset's day.
    ZWSeries march;
    QString error;
    ASSERT_TRUE(m_store->SeriesValues(
        {Meter, Power + u":count"_s}, At("2025-03-01"), At("2025-04-01"), ZWSeriesUnit::Day, march, nullptr, &error));
    EXPECT_EQ(march.values[10], (std::vector<double>{ZW_NO_VALUE, ZW_NO_VALUE})); // 11 March
    EXPECT_NE(march.values[11][1], ZW_NO_VALUE);                                  // 12 March, from midday
    const double resetDay = march.values[19][0];
    EXPECT_TRUE(Close(resetDay,
        m_meter->Increase(ZWLocalTime::ToUtc(At("2025-03-20")), ZWLocalTime::ToUtc(At("2025-03-21"))), 1e-12));
}

TEST_P(ShiftSeriesStore, TooManyPointsAreRefusedWithoutAQuery)
{
    ZWSeries series;
    QString error;
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

TEST_P(ShiftSeriesStore, LoggerDataSelectsASeriesOfItsNames)
{
    auto shared = std::shared_ptr<ZWSqlLoggerStore>(std::move(m_store));
    ZWLoggerData data(shared);
    ZWLoggerInfo info;
    info.AddVariable(Meter);
    info.AddVariable(Meter + u":@-1y"_s);
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
}

} // namespace
