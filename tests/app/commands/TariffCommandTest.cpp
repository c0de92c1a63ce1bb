// zwinformes tariff check as a user runs it: the hour maps of the example
// calendars for a known week, a refused file, and usage errors.
#include "tests/app/commands/ProgramRun.h"
#include "tests/support/ZWTestSupport.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

using Result = zwtest::ProgramResult;

Result Zw(const QString& commandLine)
{
    zwtest::RunOptions options;
    options.environment = {{u"ZWINFORMES_DATA_DIR"_s, QString()}};
    return zwtest::RunProgram(zwtest::Args(u"--tz UTC --locale en_US "_s + commandLine), options);
}

TEST(TariffCommand, PrintsTheHourMapOfTheWeekOfADate)
{
    const QString six = zwtest::SourcePath(u"examples/tariffs/six-period.xml"_s);
    Result r = Zw(u"tariff check %1 --week 2026-01-08"_s.arg(six));
    ASSERT_EQ(r.status, 0) << r;
    const QStringList lines = r.out.split(u'\n');
    ASSERT_GE(lines.size(), 7) << r;
    EXPECT_EQ(lines[2], u"calendar \"6.1TD\": 6 periods (P1 P2 P3 P4 P5 P6), 27 holidays"_s);
    EXPECT_EQ(lines[3], u"week 2026-01-05 to 2026-01-11"_s);
    EXPECT_EQ(
        lines[4], u"                        0  1  2  3  4  5  6  7  8  9  10 11 12 13 14 15 16 17 18 19 20 21 22 23"_s);
    EXPECT_EQ(
        lines[5], u"Mon 2026-01-05 working  P6 P6 P6 P6 P6 P6 P6 P6 P2 P1 P1 P1 P1 P1 P2 P2 P2 P2 P1 P1 P1 P1 P2 P2"_s);
    EXPECT_EQ(
        lines[6], u"Tue 2026-01-06 holiday  P6 P6 P6 P6 P6 P6 P6 P6 P6 P6 P6 P6 P6 P6 P6 P6 P6 P6 P6 P6 P6 P6 P6 P6"_s);

    // Long period names as runs of hours [from-to); the default file of the
    // data folder.
    QTemporaryDir dir;
    ASSERT_TRUE(
        QFile::copy(zwtest::SourcePath(u"examples/tariffs/three-period.xml"_s), dir.filePath(u"tariffs.xml"_s)));
    r = Zw(u"tariff check --data-dir %1 --calendar peak-shoulder-offpeak --week 2026-07-01"_s.arg(dir.path()));
    ASSERT_EQ(r.status, 0) << r;
    EXPECT_TRUE(r.out.contains(
        u"\nWed 2026-07-01 working  00-07 OffPeak, 07-12 Shoulder, 12-18 Peak, 18-23 Shoulder, 23-24 OffPeak\n"_s))
        << r;
    EXPECT_TRUE(r.out.contains(u"\nSun 2026-07-05 sunday   00-24 OffPeak\n"_s)) << r;
}

TEST(TariffCommand, RefusesABadFileAndBadUsage)
{
    QTemporaryDir dir;
    const QString bad = dir.filePath(u"bad.xml"_s);
    ASSERT_TRUE(zwtest::WriteFile(bad,
        "<tariffs><calendar><name>6P</name><period>P1</period><period>P2</period>"
        "<rule><hours>0-14</hours><period>P1</period></rule><rule><hours>15-24</hours><period>P2</period></rule>"
        "</calendar></tariffs>"));
    const QString shadow = dir.filePath(u"shadow.xml"_s);
    ASSERT_TRUE(zwtest::WriteFile(shadow,
        "<tariffs><calendar><name>M</name><period>Max</period><rule><period>max</period></rule>"
        "</calendar></tariffs>"));
    struct Case
    {
        const char* what;
        QString args;
        int status;
        QString err;
    } cases[] = {
        {"a gap", u"tariff check "_s + bad, 1,
            bad + u": calendar \"6P\": January, working day, hour 14 has no period"_s},
        {"a missing file", u"tariff check "_s + dir.filePath(u"none.xml"_s), 1, dir.filePath(u"none.xml"_s)},
        {"an unknown calendar",
            u"tariff check %1 --calendar X"_s.arg(zwtest::SourcePath(u"examples/tariffs/six-period.xml"_s)), 1,
            u"holds no calendar named \"X\" (it holds: \"6.1TD\")"_s},
        {"a period named like a reduction", u"tariff check "_s + shadow, 1,
            u"its period \"Max\" is named like a reduction"_s},
        {"an unknown subcommand", u"tariff show"_s, 2, u"unknown subcommand 'show'"_s},
        {"a bad week", u"tariff check %1 --week soon"_s.arg(bad), 2, u"--week: 'soon' is not a date"_s},
    };
    for (const Case& c : cases) {
        const Result r = Zw(c.args);
        EXPECT_EQ(r.status, c.status) << c.what << "\n" << r;
        EXPECT_TRUE(r.err.contains(c.err)) << c.what << "\n" << r;
        EXPECT_TRUE(r.out.isEmpty()) << c.what << "\n" << r;
    }
}

} // namespace
