#include "viewer/ZWReportPeriod.h"
#include "host/core/ZWLocale.h"
#include "viewer/ZWUserInterval.h"

#include <QSettings>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

ZWDateTime T(int y, int m, int d, int h = 0, int mi = 0, int s = 0)
{
    return ZWDateTime::FromDMY(y, m, d, h, mi, s);
}

QString Span(const ZWDateTime& start, const ZWDateTime& end)
{
    return start.ToIso() + u" .. "_s + end.ToIso();
}

QString Span(const ZWReportPeriod& p)
{
    return Span(p.Start(), p.End());
}

class ZWReportPeriodTest : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(ZWSetLocaleOverride(u"es_ES"_s)); } // weeks start on Monday
    void TearDown() override { ZWSetLocaleOverride(u"C"_s); }
};

TEST_F(ZWReportPeriodTest, AdjustToGroupBy)
{
    const std::tuple<ZWDateTime, int, ZWDateTime> cases[] = {{T(2024, 3, 5, 9, 5, 7), ID_GROUPBY_DAY, T(2024, 3, 5)},
        {T(2024, 3, 5, 0, 0, 0), ID_GROUPBY_DAY, T(2024, 3, 5)},
        // 2024-03-05 is a Tuesday; the week starts on Monday the 4th.
        {T(2024, 3, 5, 9), ID_GROUPBY_WEEK, T(2024, 3, 4)}, {T(2024, 3, 4, 0), ID_GROUPBY_WEEK, T(2024, 3, 4)},
        {T(2024, 3, 10, 23, 59, 59), ID_GROUPBY_WEEK, T(2024, 3, 4)},
        // Week across a month and a year boundary.
        {T(2025, 1, 1, 12), ID_GROUPBY_WEEK, T(2024, 12, 30)}, {T(2024, 3, 5, 9), ID_GROUPBY_USER, T(2024, 3, 4)},
        {T(2024, 2, 29, 23), ID_GROUPBY_MONTH, T(2024, 2, 1)}, {T(2024, 2, 15), ID_GROUPBY_3MONTH, T(2024, 1, 1)},
        {T(2024, 6, 30, 23, 59, 59), ID_GROUPBY_3MONTH, T(2024, 4, 1)},
        {T(2024, 7, 1), ID_GROUPBY_3MONTH, T(2024, 7, 1)}, {T(2024, 12, 31, 5), ID_GROUPBY_3MONTH, T(2024, 10, 1)},
        {T(2024, 12, 31, 5), ID_GROUPBY_YEAR, T(2024, 1, 1)}, {T(2024, 12, 31, 5), 12345, T(2024, 12, 31, 5)}};
    for (const auto& [date, unit, expected] : cases)
        EXPECT_EQ(ZWReportPeriod::AdjustToGroupBy(date, unit).ToIso(), expected.ToIso())
            << date.ToIso().toStdString() << " unit " << unit;
    // The week follows the locale's first day.
    ASSERT_TRUE(ZWSetLocaleOverride(u"en_US"_s)); // Sunday
    EXPECT_EQ(ZWReportPeriod::AdjustToGroupBy(T(2024, 3, 5, 9), ID_GROUPBY_WEEK), T(2024, 3, 3));
    EXPECT_EQ(ZWReportPeriod::AdjustToGroupBy(T(2024, 3, 3, 9), ID_GROUPBY_WEEK), T(2024, 3, 3));
    EXPECT_EQ(ZWReportPeriod::AdjustToGroupBy(T(2024, 3, 2, 9), ID_GROUPBY_WEEK), T(2024, 2, 25));
}

TEST_F(ZWReportPeriodTest, AddGroupByUnitAndAdjustToGoTo)
{
    // A date, a signed unit, then what AddGroupByUnit and AdjustToGoTo give.
    // Inside a unit Add only snaps back, whatever the direction.
    const std::tuple<ZWDateTime, int, ZWDateTime, ZWDateTime> cases[]
        = {{T(2024, 3, 5, 9), ID_GROUPBY_DAY, T(2024, 3, 5), T(2024, 3, 6, 9)},
            {T(2024, 3, 5, 9), -ID_GROUPBY_DAY, T(2024, 3, 5), T(2024, 3, 4, 9)},
            {T(2024, 3, 5), ID_GROUPBY_DAY, T(2024, 3, 6), T(2024, 3, 6)},
            {T(2024, 3, 1), -ID_GROUPBY_DAY, T(2024, 2, 29), T(2024, 2, 29)},
            {T(2024, 3, 4), ID_GROUPBY_WEEK, T(2024, 3, 11), T(2024, 3, 11)},
            {T(2024, 3, 4), -ID_GROUPBY_WEEK, T(2024, 2, 26), T(2024, 2, 26)},
            {T(2024, 1, 1), -ID_GROUPBY_MONTH, T(2023, 12, 1), T(2023, 12, 1)},
            {T(2024, 12, 1), ID_GROUPBY_MONTH, T(2025, 1, 1), T(2025, 1, 1)},
            {T(2024, 12, 15), ID_GROUPBY_MONTH, T(2024, 12, 1), T(2025, 1, 1)},
            {T(2024, 10, 1), ID_GROUPBY_3MONTH, T(2025, 1, 1), T(2025, 1, 1)},
            {T(2024, 1, 1), -ID_GROUPBY_3MONTH, T(2023, 10, 1), T(2023, 10, 1)},
            {T(2024, 2, 10), ID_GROUPBY_3MONTH, T(2024, 1, 1), T(2024, 5, 1)},
            {T(2024, 1, 1), ID_GROUPBY_YEAR, T(2025, 1, 1), T(2025, 1, 1)},
            {T(2024, 1, 1), -ID_GROUPBY_YEAR, T(2023, 1, 1), T(2023, 1, 1)},
            {T(2024, 5, 5, 5), ID_GROUPBY_YEAR, T(2024, 1, 1), T(2025, 1, 1)}};
    for (const auto& [date, unit, add, goTo] : cases)
        EXPECT_EQ(
            Span(ZWReportPeriod::AddGroupByUnit(date, unit), ZWReportPeriod::AdjustToGoTo(date, unit)), Span(add, goTo))
            << date.ToIso().toStdString() << " " << unit;
}

TEST_F(ZWReportPeriodTest, SetupDataPeriodRule)
{
    const ZWDateTime now = T(2026, 11, 21, 23, 50, 52);
    // The end asked for, the unit, then the period and its length in days.
    // An end on a boundary gives the unit before it.
    const std::tuple<ZWDateTime, int, ZWDateTime, ZWDateTime, qint64> cases[]
        = {{T(2026, 3, 1), ID_GROUPBY_MONTH, T(2026, 2, 1), T(2026, 3, 1), 31},
            {T(2026, 3, 1, 0, 0, 1), ID_GROUPBY_MONTH, T(2026, 3, 1), T(2026, 4, 1), 31},
            // The present: the unit that contains now.
            {now, ID_GROUPBY_DAY, T(2026, 11, 21), T(2026, 11, 22), 1},
            {now, ID_GROUPBY_WEEK, T(2026, 11, 16), T(2026, 11, 23), 7},
            {now, ID_GROUPBY_3MONTH, T(2026, 10, 1), T(2027, 1, 1), 91},
            {now, ID_GROUPBY_YEAR, T(2026, 1, 1), T(2027, 1, 1), 365},
            // A future request never starts a period in the future.
            {T(2027, 6, 15), ID_GROUPBY_MONTH, T(2026, 11, 1), T(2026, 12, 1), 31},
            {T(2026, 11, 23), ID_GROUPBY_DAY, T(2026, 11, 21), T(2026, 11, 22), 1}};
    for (const auto& [requested, unit, start, end, days] : cases) {
        ZWReportPeriod p;
        p.Reset(unit);
        EXPECT_TRUE(p.SetupData(requested, unit, false, now));
        EXPECT_EQ(Span(p), Span(start, end)) << requested.ToIso().toStdString();
        EXPECT_EQ(p.Length().GetDays(), days);
    }
}

TEST_F(ZWReportPeriodTest, NavigationReloadsAndGoTo)
{
    const ZWDateTime now = T(2026, 11, 21, 10);
    ZWReportPeriod p;
    p.Reset(ID_GROUPBY_MONTH);
    ASSERT_TRUE(p.SetupData(now, ID_GROUPBY_MONTH, false, now));
    EXPECT_EQ(Span(p), Span(T(2026, 11, 1), T(2026, 12, 1)));
    // The current month is incomplete: Next is disabled.
    EXPECT_FALSE(p.CanNext(now));
    EXPECT_TRUE(p.Previous(now));
    EXPECT_EQ(Span(p), Span(T(2026, 10, 1), T(2026, 11, 1)));
    EXPECT_TRUE(p.CanNext(now));
    EXPECT_TRUE(p.Next(now));
    EXPECT_EQ(p.Start(), T(2026, 11, 1));
    // Next on the present month (disabled in the window) asks for a month in
    // the future: the period stays the present month.
    EXPECT_TRUE(p.Next(now));
    EXPECT_EQ(Span(p), Span(T(2026, 11, 1), T(2026, 12, 1)));
    // Back over a year boundary.
    for (int i = 0; i < 11; ++i)
        ASSERT_TRUE(p.Previous(now));
    EXPECT_EQ(Span(p), Span(T(2025, 12, 1), T(2026, 1, 1)));

    // The same unit again with the same end: nothing to reload.
    EXPECT_FALSE(p.ChooseUnit(ID_GROUPBY_MONTH, now));
    // Another unit keeps the end as the requested date.
    EXPECT_TRUE(p.ChooseUnit(ID_GROUPBY_YEAR, now));
    EXPECT_EQ(Span(p), Span(T(2025, 1, 1), T(2026, 1, 1)));
    // The user unit always reloads, even unchanged.
    EXPECT_TRUE(p.ChooseUserInterval(T(2026, 1, 5, 8), T(2026, 1, 5, 18), now));
    EXPECT_EQ(Span(p), Span(T(2026, 1, 5, 8), T(2026, 1, 5, 18)));
    EXPECT_EQ(p.Length().GetTotalSeconds(), 10 * 3600);
    EXPECT_TRUE(p.ChooseUserInterval(T(2026, 1, 5, 8), T(2026, 1, 5, 18), now));
    EXPECT_FALSE(p.CanNext(now));
    EXPECT_FALSE(p.CanGoTo());

    // Go to, by weeks: the dialog opens on the period's start.
    p.Reset(ID_GROUPBY_WEEK);
    p.SetupData(now, ID_GROUPBY_WEEK, false, now);
    EXPECT_EQ(p.GoToInitialDate(), T(2026, 11, 16));
    EXPECT_TRUE(p.GoTo(T(2025, 7, 9, 13), now)); // a Wednesday
    EXPECT_EQ(Span(p), Span(T(2025, 7, 7), T(2025, 7, 14)));
    // A date in the future gives the week that contains now; a cancelled
    // dialog's invalid date changes nothing.
    EXPECT_TRUE(p.GoTo(T(2030, 1, 1), now));
    EXPECT_FALSE(p.GoTo(ZWDateTime(), now));
    EXPECT_EQ(Span(p), Span(T(2026, 11, 16), T(2026, 11, 23)));
}

TEST(ZWUserInterval, Checks)
{
    const ZWDateTime now = T(2026, 11, 21, 12);
    const std::tuple<ZWDateTime, ZWDateTime, ZWUserInterval::Check> cases[]
        = {{T(2026, 11, 21, 8), T(2026, 11, 21, 8), ZWUserInterval::FromNotBeforeTo},
            {T(2026, 11, 21, 9), T(2026, 11, 21, 8), ZWUserInterval::FromNotBeforeTo},
            {T(2026, 11, 21, 8), T(2026, 11, 21, 8, 59, 59), ZWUserInterval::ShorterThanAnHour},
            {T(2026, 11, 21, 8), T(2026, 11, 21, 9), ZWUserInterval::Accepted},
            {T(2020, 1, 1), T(2026, 11, 21, 12), ZWUserInterval::Accepted},
            {T(2026, 11, 21, 8), T(2026, 11, 21, 12, 0, 1), ZWUserInterval::EndsInTheFuture},
            // Both faults: the order of the checks decides the message.
            {T(2026, 11, 21, 12, 30), T(2026, 11, 21, 13), ZWUserInterval::ShorterThanAnHour}};
    for (const auto& [from, to, expected] : cases)
        EXPECT_EQ(ZWUserInterval::Validate(from, to, now), expected)
            << from.ToIso().toStdString() << " .. " << to.ToIso().toStdString();
}

TEST(ZWUserInterval, SettingsRoundTripAndBadValues)
{
    QTemporaryDir dir;
    QSettings settings(dir.filePath(u"s.ini"_s), QSettings::IniFormat);
    const ZWDateTime now = T(2026, 11, 21, 12, 34, 56);

    const ZWUserInterval defaults = ZWUserInterval::Load(settings, now);
    EXPECT_EQ(Span(defaults.from, defaults.to), Span(T(2026, 11, 21), now));
    ZWUserInterval saved;
    saved.from = T(2025, 2, 3, 4, 5, 6);
    saved.to = T(2025, 12, 31, 23, 59, 59);
    saved.Save(settings);
    EXPECT_EQ(settings.value(u"ZWIToSecond"_s).toInt(), 59);
    const ZWUserInterval loaded = ZWUserInterval::Load(settings, now);
    EXPECT_EQ(Span(loaded.from, loaded.to), Span(saved.from, saved.to));
    // A part missing keeps the default's part; garbage and impossible dates
    // keep the default.
    settings.remove(u"ZWIFromHour"_s);
    EXPECT_EQ(ZWUserInterval::Load(settings, now).from, T(2025, 2, 3, 0, 5, 6));
    settings.setValue(u"ZWIFromMonth"_s, u"abc"_s);
    EXPECT_EQ(ZWUserInterval::Load(settings, now).from, T(2025, 11, 3, 0, 5, 6));
    settings.setValue(u"ZWIToDay"_s, 31);
    settings.setValue(u"ZWIToMonth"_s, 2);
    EXPECT_EQ(ZWUserInterval::Load(settings, now).to, now);
}

TEST(ZWReportPeriodSettings, LastReportGroup)
{
    QTemporaryDir dir;
    QSettings settings(dir.filePath(u"s.ini"_s), QSettings::IniFormat);
    EXPECT_FALSE(ZWReportPeriod::ReadLastReportGroup(settings).has_value());
    ZWReportPeriod::WriteLastReportGroup(settings, ID_GROUPBY_3MONTH);
    EXPECT_EQ(settings.value(u"LastReportGroup"_s).toString(), u"3MONTH"_s);
    EXPECT_EQ(ZWReportPeriod::ReadLastReportGroup(settings), ID_GROUPBY_3MONTH);
    ZWReportPeriod::WriteLastReportGroup(settings, ID_GROUPBY_USER); // never stored
    EXPECT_EQ(settings.value(u"LastReportGroup"_s).toString(), u"3MONTH"_s);
    settings.setValue(u"LastReportGroup"_s, u"FORTNIGHT"_s);
    EXPECT_FALSE(ZWReportPeriod::ReadLastReportGroup(settings).has_value());
}

} // namespace
