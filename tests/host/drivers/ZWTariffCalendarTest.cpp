// Tariff calendars: files refused with their first fault, the period of
// chosen local hours (holidays, weekends, daylight-saving days) and the two
// example calendars.
#include "host/core/ZWLocalTime.h"
#include "host/core/ZWMarentaSetup.h"
#include "host/drivers/ZWTariffCalendarFile.h"
#include "tests/support/ZWTestSupport.h"

#include <QFile>
#include <ctime>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

// A file of one calendar "T" with periods A and B and the given rules.
QByteArray Calendar(const char* rules, const char* extra = "")
{
    return QByteArray("<tariffs><calendar><name>T</name><period>A</period><period>B</period>") + extra + rules
        + "</calendar></tariffs>";
}

struct RefusedCase
{
    const char* what;
    QByteArray xml;
    const char* error;
};
using zwtest::PrintTo;

class TariffRefused : public testing::TestWithParam<RefusedCase>
{};

TEST_P(TariffRefused, NamesTheFirstFault)
{
    ZWTariffCalendarFile file;
    EXPECT_FALSE(file.Parse(GetParam().xml));
    EXPECT_EQ(file.LastError(), QString::fromUtf8(GetParam().error));
    EXPECT_TRUE(file.Calendars().empty());
}

const char* const kAllA = "<rule><period>A</period></rule>";

const RefusedCase kRefused[] = {
    {"a gap of one hour",
        Calendar("<rule><months>1-6</months><period>A</period></rule>"
                 "<rule><months>7-12</months><hours>0-14,15-24</hours><period>B</period></rule>"),
        "calendar \"T\": July, working day, hour 14 has no period"},
    {"a gap of hours on Saturdays",
        Calendar("<rule><days>working,sunday,holiday</days><period>A</period></rule>"
                 "<rule><days>Saturday</days><hours>0-20</hours><period>B</period></rule>"),
        "calendar \"T\": January, Saturday, hours 20–23 have no period"},
    {"an overlap of hours",
        Calendar(
            "<rule><hours>0-10</hours><period>A</period></rule><rule><hours>8-24</hours><period>B</period></rule>"),
        "calendar \"T\": January, working day, hours 8–9 are in both A and B"},
    {"an overlap in a wrapping month range",
        Calendar("<rule><months>11-2</months><period>A</period></rule>"
                 "<rule><months>2-10</months><days>holiday</days><period>B</period></rule>"),
        "calendar \"T\": February, holiday, hours 0–23 are in both A and B"},
    {"an overlap in a wrapping hour range",
        Calendar(
            "<rule><hours>22-6</hours><period>A</period></rule><rule><hours>5-22</hours><period>B</period></rule>"),
        "calendar \"T\": January, working day, hour 5 is in both A and B"},
    {"an unknown period name", Calendar("<rule><period>C</period></rule>"),
        "calendar \"T\", rule 1: \"C\" is not one of the calendar's periods (A B)"},
    {"a calendar name that looks like a placeholder",
        "<tariffs><calendar><name>%2%1</name><period>A</period><rule><period>B</period></rule></calendar></"
        "tariffs>",
        "calendar \"%2%1\", rule 1: \"B\" is not one of the calendar's periods (A)"},
    {"month 13", Calendar("<rule><months>1-13</months><period>A</period></rule>"),
        "calendar \"T\", rule 1: '1-13' is not a list of months (1 to 12, as 1-2,12 or 11-2)"},
    {"an empty hour range", Calendar("<rule><hours>8-8</hours><period>A</period></rule>"),
        "calendar \"T\", rule 1: '8-8' is not a list of hour ranges [from-to) (0 to 24, as 8-14,18-22 or 22-6)"},
    {"hour 24 alone", Calendar("<rule><hours>24</hours><period>A</period></rule>"),
        "calendar \"T\", rule 1: '24' is not a list of hour ranges [from-to) (0 to 24, as 8-14,18-22 or 22-6)"},
    {"an unknown day type", Calendar("<rule><days>weekday</days><period>A</period></rule>"),
        "calendar \"T\", rule 1: 'weekday' is not a list of day types (working, saturday, sunday, holiday)"},
    {"an impossible holiday", Calendar(kAllA, "<holiday>2026-02-30</holiday>"),
        "calendar \"T\": '2026-02-30' is not a date (yyyy-MM-dd)"},
    {"a rule without a period", Calendar("<rule><hours>0-24</hours></rule>"),
        "calendar \"T\", rule 1: the rule names no period"},
    {"a misspelt element", Calendar("<rule><hour>0-24</hour><period>A</period></rule>"),
        "calendar \"T\", rule 1: unknown element <hour> in <rule>"},
    {"a period named twice", Calendar(kAllA, "<period>a</period>"), "calendar \"T\": the period \"a\" is named twice"},
    {"no period", "<tariffs><calendar><name>T</name></calendar></tariffs>",
        "calendar \"T\": the calendar names no period"},
    {"two calendars of one name",
        "<tariffs><calendar><name>T</name><period>A</period>" + QByteArray(kAllA)
            + "</calendar><calendar><name>t</name><period>X</period><rule><period>X</period></rule></calendar>"
              "</tariffs>",
        "two calendars are named \"t\""},
    {"a calendar without a name", "<tariffs><calendar><period>A</period></calendar></tariffs>",
        "calendar 1 of the file has no name"}};

INSTANTIATE_TEST_SUITE_P(Files, TariffRefused, testing::ValuesIn(kRefused),
    [](const testing::TestParamInfo<RefusedCase>& info) { return zwtest::CaseName(info.param.what); });

ZWTariffCalendar Load(const QByteArray& xml)
{
    ZWTariffCalendarFile file;
    EXPECT_TRUE(file.Parse(xml)) << file.LastError().toStdString();
    return file.Calendars().empty() ? ZWTariffCalendar() : file.Calendars().front();
}

// The period names of the local hours of a day as the clock shows them,
// from the UTC hours between two local midnights.
QString DayByClock(const ZWTariffCalendar& calendar, const ZWDateTime& day)
{
    QStringList hours;
    const qint64 end = ZWLocalTime::ToUtc(day + ZWDateTimeSpan(1, 0, 0, 0));
    for (qint64 t = ZWLocalTime::ToUtc(day); t < end; t += 3600) {
        const ZWDateTime local = ZWLocalTime::FromUtc(t);
        hours.append(QString::number(local.Hour()) + calendar.PeriodNames().value(calendar.PeriodAt(local)));
    }
    return hours.join(QLatin1Char(' '));
}

TEST(TariffCalendar, PeriodOfLocalHoursByDayType)
{
    // Wrapping months and hours; Saturdays and holidays apart; two rules may
    // give the same hours the same period.
    const ZWTariffCalendar c
        = Load(Calendar("<rule><months>11-2</months><days>working</days><period>A</period></rule>"
                        "<rule><months>3-10</months><days>working</days><hours>22-6</hours>"
                        "<period>A</period></rule>"
                        "<rule><months>3-10</months><days>working</days><hours>6-22</hours>"
                        "<period>B</period></rule>"
                        "<rule><days>saturday,holiday</days><hours>0-12</hours><period>B</period></rule>"
                        "<rule><days>saturday,holiday</days><hours>12-24</hours><period>A</period></rule>"
                        "<rule><days>sunday</days><period>B</period></rule>"
                        "<rule><days>sunday</days><hours>3</hours><period>B</period></rule>",
            "<holiday>2026-05-01</holiday><holiday>2026-08-15</holiday><holiday>2026-05-01</holiday>"));
    struct Case
    {
        int y, m, d, hour;
        ZWTariffCalendar::DayType type;
        const char* period;
    } cases[] = {
        {2026, 12, 1, 10, ZWTariffCalendar::Working, "A"}, // November-February: A all day
        {2026, 3, 2, 5, ZWTariffCalendar::Working, "A"},   // March: night A, day B
        {2026, 3, 2, 6, ZWTariffCalendar::Working, "B"},
        {2026, 10, 30, 22, ZWTariffCalendar::Working, "A"},
        {2026, 5, 1, 10, ZWTariffCalendar::Holiday, "B"}, // a Friday holiday
        {2026, 5, 1, 12, ZWTariffCalendar::Holiday, "A"},
        {2026, 8, 15, 13, ZWTariffCalendar::Holiday, "A"}, // a Saturday holiday
        {2026, 8, 22, 11, ZWTariffCalendar::Saturday, "B"},
        {2026, 8, 23, 23, ZWTariffCalendar::Sunday, "B"},
    };
    for (const Case& k : cases) {
        const ZWDateTime t = ZWDateTime::FromDMY(k.y, k.m, k.d, k.hour, 30);
        EXPECT_EQ(c.DayTypeOf(QDate(k.y, k.m, k.d)), k.type) << t.ToIso().toStdString();
        EXPECT_EQ(c.PeriodNames().value(c.PeriodAt(t)), QString::fromLatin1(k.period)) << t.ToIso().toStdString();
    }
    EXPECT_EQ(c.Holidays().size(), 2u);
    EXPECT_EQ(c.PeriodAt(ZWDateTime()), -1);
    EXPECT_EQ(ZWTariffCalendar().PeriodAt(ZWDateTime::FromDMY(2026, 1, 1)), -1);
}

TEST(TariffCalendar, DaylightSavingDaysGoByTheLocalHourNumber)
{
    const QByteArray zone = qgetenv("TZ");
    qputenv("TZ", "Europe/Madrid");
    tzset();
    // Sundays: hour 2 is B, every other hour A.
    const ZWTariffCalendar c = Load(Calendar("<rule><days>sunday</days><hours>2</hours><period>B</period></rule>"
                                             "<rule><days>sunday</days><hours>3-2</hours><period>A</period></rule>"
                                             "<rule><days>working,saturday,holiday</days><period>A</period></rule>"));
    // The clock goes back from 03:00 to 02:00: hour 2 twice, both B.
    EXPECT_EQ(DayByClock(c, ZWDateTime::FromDMY(2026, 10, 25)),
        u"0A 1A 2B 2B 3A 4A 5A 6A 7A 8A 9A 10A 11A 12A 13A 14A 15A 16A 17A 18A 19A 20A 21A 22A 23A"_s);
    // The clock jumps from 02:00 to 03:00: no hour 2, no B.
    EXPECT_EQ(DayByClock(c, ZWDateTime::FromDMY(2026, 3, 29)),
        u"0A 1A 3A 4A 5A 6A 7A 8A 9A 10A 11A 12A 13A 14A 15A 16A 17A 18A 19A 20A 21A 22A 23A"_s);
    zone.isNull() ? qunsetenv("TZ") : qputenv("TZ", zone);
    tzset();
}

// The hour map as runs: "P6×8 P2 P1×5 …".
QString Runs(const ZWTariffCalendar& c, int month, ZWTariffCalendar::DayType type)
{
    QStringList runs;
    const ZWTariffCalendar::Hours& hours = c.HourMap(month, type);
    for (size_t from = 0, to = 0; from < 24; from = to) {
        while (to < 24 && hours[to] == hours[from])
            ++to;
        runs.append(c.PeriodNames().value(hours[from]) + (to - from > 1 ? u"×%1"_s.arg(to - from) : QString()));
    }
    return runs.join(QLatin1Char(' '));
}

TEST(TariffCalendar, ExampleCalendarsLoadAndMapKnownHours)
{
    ZWTariffCalendarFile six, three;
    ASSERT_TRUE(six.Load(zwtest::SourcePath(u"examples/tariffs/six-period.xml"_s))) << six.LastError().toStdString();
    ASSERT_TRUE(three.Load(zwtest::SourcePath(u"examples/tariffs/three-period.xml"_s)))
        << three.LastError().toStdString();
    const ZWTariffCalendar* td = six.Find(u" 6.1td "_s);
    ASSERT_NE(td, nullptr);
    EXPECT_EQ(td->PeriodNames(), (QStringList{u"P1"_s, u"P2"_s, u"P3"_s, u"P4"_s, u"P5"_s, u"P6"_s}));
    const std::tuple<int, ZWTariffCalendar::DayType, const char*> sixCases[] = {
        {7, ZWTariffCalendar::Working, "P6×8 P2 P1×5 P2×4 P1×4 P2×2"},
        {11, ZWTariffCalendar::Working, "P6×8 P3 P2×5 P3×4 P2×4 P3×2"},
        {9, ZWTariffCalendar::Working, "P6×8 P4 P3×5 P4×4 P3×4 P4×2"},
        {4, ZWTariffCalendar::Working, "P6×8 P5 P4×5 P5×4 P4×4 P5×2"},
        {12, ZWTariffCalendar::Holiday, "P6×24"},
        {2, ZWTariffCalendar::Saturday, "P6×24"},
    };
    for (const auto& [month, type, runs] : sixCases)
        EXPECT_EQ(Runs(*td, month, type), QString::fromUtf8(runs)) << month << " " << type;
    // Epiphany, a Tuesday, is a holiday; the Monday before is a working day.
    EXPECT_EQ(td->PeriodAt(ZWDateTime::FromDMY(2026, 1, 6, 10)), 5);
    EXPECT_EQ(td->PeriodAt(ZWDateTime::FromDMY(2026, 1, 5, 10)), 0);

    const ZWTariffCalendar& tri = three.Calendars().front();
    EXPECT_EQ(Runs(tri, 1, ZWTariffCalendar::Working), u"OffPeak×7 Shoulder×10 Peak×4 Shoulder×2 OffPeak"_s);
    EXPECT_EQ(Runs(tri, 7, ZWTariffCalendar::Working), u"OffPeak×7 Shoulder×5 Peak×6 Shoulder×5 OffPeak"_s);
    EXPECT_EQ(Runs(tri, 7, ZWTariffCalendar::Sunday), u"OffPeak×24"_s);
    EXPECT_EQ(tri.DayTypeOf(QDate(2026, 12, 26)), ZWTariffCalendar::Holiday);
}

TEST(TariffCalendar, TheDataFolderFileIsFoundByCalendarName)
{
    QTemporaryDir dir;
    ZWMarentaSetup::instance().SetDataDirectory(dir.path());
    const QString path = dir.filePath(u"tariffs.xml"_s);
    ZWTariffCalendar calendar;
    QString error;
    ASSERT_TRUE(QFile::copy(zwtest::SourcePath(u"examples/tariffs/six-period.xml"_s), path));
    EXPECT_TRUE(ZWTariffCalendarFile::LoadNamed(u"6.1td"_s, calendar, error)) << error.toStdString();
    EXPECT_EQ(calendar.PeriodNames().size(), 6);
    EXPECT_FALSE(ZWTariffCalendarFile::LoadNamed(u"3P"_s, calendar, error));
    EXPECT_EQ(error, path + u" holds no calendar named \"3P\" (it holds: \"6.1TD\")"_s);
    ZWMarentaSetup::instance().SetDataDirectory(QString());
}

} // namespace
