// The commands gui, view and the hidden screenshot of the zwinformes program.
#include "tests/app/commands/ProgramRun.h"
#include "tests/support/ZWTestSupport.h"

#include <QFileInfo>
#include <QImage>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

class ViewerCommands : public testing::Test
{
protected:
    using Result = zwtest::ProgramResult;

    Result Run(const QString& commandLine, bool display = true)
    {
        zwtest::RunOptions options = zwtest::Offscreen();
        options.environment.push_back({u"ZWINFORMES_SETTINGS"_s, m_dir.filePath(u"settings.ini"_s)});
        if (!display)
            options.environment.insert(options.environment.end(),
                {{u"QT_QPA_PLATFORM"_s, {}}, {u"DISPLAY"_s, {}}, {u"WAYLAND_DISPLAY"_s, {}}});
        return zwtest::RunProgram(zwtest::Args(commandLine), options);
    }

    QTemporaryDir m_dir;
    const QString m_db = u"sqlite:"_s + m_dir.filePath(u"demo.sqlite"_s);
    const QString m_png = m_dir.filePath(u"shot.png"_s);
    const QString m_report = zwtest::SourcePath(u"examples/reports/MonthlyEnergy.XRPT"_s);
};

TEST_F(ViewerCommands, ScreenshotOfTheViewerOnThePeriodTheOtherCommandsShow)
{
    ASSERT_EQ(Run(u"demo-db --db %1 --months 2 --step 15m"_s.arg(m_db)).status, 0);
    // A date on a boundary shows the unit before it.
    const Result r = Run(u"screenshot %1 --db %2 --unit month --date 2025-10-01T00:00:00 --size 800x600 --zoom 100 "
                         u"--page 2 -o %3"_s.arg(m_report, m_db, m_png));
    ASSERT_EQ(r.status, 0) << r;
    EXPECT_TRUE(r.out.contains(u"period 2025-09-01T00:00:00 2025-10-01T00:00:00"_s)) << r;
    const QImage image(m_png);
    ASSERT_EQ(image.size(), QSize(800, 600));
    // The page (white) fills part of the window at 100 %.
    int white = 0;
    for (int y = 100; y < image.height(); y += 4)
        for (int x = 0; x < image.width(); x += 4)
            white += image.pixel(x, y) == qRgb(255, 255, 255);
    EXPECT_GT(white, 1000);
}

TEST_F(ViewerCommands, RefusalsBeforeAnyWindow)
{
    // A mistyped database path makes no database (nor its folder).
    const Result typo = Run(u"view %1 --db sqlite:%2"_s.arg(m_report, m_dir.filePath(u"typo/demo.sqlite"_s)));
    EXPECT_EQ(typo.status, 1) << typo;
    EXPECT_TRUE(typo.err.contains(u"the file does not exist"_s)) << typo;
    EXPECT_FALSE(QFileInfo::exists(m_dir.filePath(u"typo"_s)));

    ASSERT_TRUE(zwtest::WriteFile(m_dir.filePath(u"a.csv"_s), "time,A.b\n2025-01-01T00:00:00Z,1\n"));
    ASSERT_EQ(Run(u"import --db %1 %2"_s.arg(m_db, m_dir.filePath(u"a.csv"_s))).status, 0);
    const std::tuple<QString, int, const char*> cases[] = {
        {u"view"_s, 2, "expected one REPORT"},
        {u"view %1 --unit fortnight"_s.arg(m_report), 2, "unknown unit 'fortnight'"},
        {u"view %1 --unit user"_s.arg(m_report), 2, "--unit user needs --from and --to"},
        {u"view %1 --date yesterday"_s.arg(m_report), 2, "is not a date-time"},
        {u"view %1 --unit user --from 2025-01-01T10:00:00 --to 2025-01-01T10:59:59"_s.arg(m_report), 1,
            "at least one hour"},
        {u"view %1 --db mysql://h/d"_s.arg(m_report), 1, "is not valid"},
        {u"view %1 --db %2"_s.arg(m_dir.filePath(u"Missing.XRPT"_s), m_db), 1, "cannot read the report"},
        {u"screenshot %1 -o %2 --zoom 33"_s.arg(m_report, m_png), 2, "--zoom must be"},
        {u"screenshot %1 --db %2 -o %3 --page 9"_s.arg(m_report, m_db, m_png), 1, "the report has 4 page(s)"},
        {u"gui extra"_s, 2, "takes no arguments"},
    };
    for (const auto& [line, status, message] : cases) {
        const Result r = Run(line);
        EXPECT_EQ(r.status, status) << line.toStdString() << "\n" << r;
        EXPECT_TRUE(r.err.contains(QString::fromUtf8(message))) << line.toStdString() << "\n" << r;
    }
}

TEST_F(ViewerCommands, WithoutADisplayWindowsAreRefusedButHelpIsGiven)
{
    const Result gui = Run({}, false);
    EXPECT_EQ(gui.status, 1);
    EXPECT_TRUE(gui.err.contains(u"there is no display"_s)) << gui;
    EXPECT_EQ(Run(u"view "_s + m_report, false).status, 1);
    EXPECT_EQ(Run(u"view --help"_s, false).status, 0);
}

} // namespace
