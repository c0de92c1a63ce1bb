#include "host/core/ZWDateTime.h"
#include "host/core/ZWLocale.h"
#include "host/core/ZWMath.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

TEST(ZWDateTime, CivilCalendarRoundTrip)
{
    // year, month, day, day of the week
    const std::tuple<int, int, int, int> cases[] = {{1970, 1, 1, Qt::Thursday}, {2000, 2, 29, Qt::Tuesday},
        {2024, 3, 5, Qt::Tuesday}, {1969, 12, 31, Qt::Wednesday}, {2100, 3, 1, Qt::Monday}, {1900, 1, 1, Qt::Monday}};
    for (const auto& [year, month, day, dayOfWeek] : cases) {
        const ZWDateTime t = ZWDateTime::FromDMY(year, month, day, 13, 4, 5);
        int y, m, d;
        t.DateTime2DMY(y, m, d);
        EXPECT_EQ(std::tuple(y, m, d, t.Hour(), t.Minute(), t.Second(), t.DayOfWeek()),
            std::tuple(year, month, day, 13, 4, 5, dayOfWeek));
        EXPECT_EQ(t.Date(), ZWDateTime::FromDMY(year, month, day));
    }
}

TEST(ZWDateTime, ImpossibleDatesAreInvalid)
{
    for (const ZWDateTime& t : {ZWDateTime::FromDMY(2023, 2, 29), ZWDateTime::FromDMY(2024, 13, 1),
             ZWDateTime::FromDMY(2024, 1, 1, 24), ZWDateTime()})
        EXPECT_FALSE(t.IsValid()) << t.ToIso().toStdString();
    EXPECT_TRUE(ZWDateTime::FromDMY(2024, 2, 29).IsValid());
}

TEST(ZWDateTime, ArithmeticAndOrder)
{
    const ZWDateTime a = ZWDateTime::FromDMY(2024, 2, 28, 23, 0, 0);
    const ZWDateTime b = a + ZWDateTimeSpan(1, 2, 0, 0);
    EXPECT_EQ(b, ZWDateTime::FromDMY(2024, 3, 1, 1, 0, 0));
    EXPECT_EQ((b - a).GetTotalSeconds(), 26 * 3600);
    EXPECT_LT(a, b);
    EXPECT_EQ(b - ZWDateTimeSpan(1, 2, 0, 0), a);
    EXPECT_EQ(ZWDateTimeSpan(1, 2, 3, 4).GetHours(), 2);
    EXPECT_DOUBLE_EQ(ZWDateTimeSpan(0, 12, 0, 0).GetTotalDays(), 0.5);
}

TEST(String2DateTime, Forms)
{
    // A refused text leaves the time as it was.
    const std::pair<const char*, const char*> cases[] = {
        {"2024-03-05T09:05:07", "2024-03-05T09:05:07"},
        {"2024-03-05 09:05:07", "2024-03-05T09:05:07"},
        {"2024-03-05T09:05", "2024-03-05T09:05:00"},
        {"2024-03-05", "2024-03-05T00:00:00"},
        {"  2024-03-05  ", "2024-03-05T00:00:00"},
        // A wall-clock time that daylight saving skips is still a wall-clock time.
        {"2024-03-31T02:30:00", "2024-03-31T02:30:00"},
        {"2024-02-30", nullptr},
        {"yesterday", nullptr},
        {"", nullptr},
        {"2024-03-05T25:00:00", nullptr},
    };
    for (const auto& [text, iso] : cases) {
        ZWDateTime t = ZWDateTime::FromDMY(1999, 1, 1, 1, 2, 3);
        EXPECT_EQ(String2DateTime(t, QString::fromUtf8(text)), iso != nullptr) << text;
        EXPECT_EQ(t.ToIso(), QString::fromUtf8(iso ? iso : "1999-01-01T01:02:03")) << text;
    }
}

TEST(ZWMath, RoundHalfAwayFromZero)
{
    const std::pair<double, int> cases[] = {{2.5, 3}, {-2.5, -3}, {2.4999, 2}, {1e300, std::numeric_limits<int>::max()},
        {-1e300, std::numeric_limits<int>::min()}, {std::nan(""), 0}};
    for (const auto& [value, rounded] : cases)
        EXPECT_EQ(roundi(value), rounded) << value;
    EXPECT_DOUBLE_EQ(round(1.005, 2), 1.0); // 1.005 is 1.00499999… in binary
    EXPECT_DOUBLE_EQ(round(-12.345, 1), -12.3);
}

TEST(ZWLocale, AnUnknownOverrideIsRefused)
{
    ASSERT_TRUE(ZWSetLocaleOverride(u"en_US"_s));
    EXPECT_FALSE(ZWSetLocaleOverride(u"xx_notalocale"_s));
    EXPECT_EQ(LocaleInformationWide().firstDayOfWeek, Qt::Sunday);
    ASSERT_TRUE(ZWSetLocaleOverride(u"C"_s));
}

} // namespace
