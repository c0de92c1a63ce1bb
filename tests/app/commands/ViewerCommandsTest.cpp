// The commands gui, view and the hidden screenshot of the zwinformes program.
#include "tests/app/commands/ProgramRun.h"
#include "tests/support/ZWTestSupport.h"

#include <QFileInfo>
#include <QImage>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

class ViewerCommands : public testing::Test
{
protected:
    using Result = zwtest::ProgramResult;

    void SetUp() override { ASSERT_TRUE(m_dir.isValid()); }

    Result Run(const QStringList& args, bool display = true)
    {
        zwtest::RunOptions options;
        options.environment = {{QStringLiteral("ZWINFORMES_LOCALE"), QStringLiteral("C")},
            {QStringLiteral("QT_QPA_PLATFORM"), display ? QStringLiteral("offscreen") : QString()},
            {QStringLiteral("ZWINFORMES_SETTINGS"), m_dir.filePath(QStringLiteral("settings.ini"))}};
        if (!display) {
            options.environment.push_back({QStringLiteral("DISPLAY"), QString()});
            options.environment.push_back({QStringLiteral("WAYLAND_DISPLAY"), QString()});
        }
        return zwtest::RunProgram(args, options);
    }

    QString Db() const { return QStringLiteral("sqlite:") + m_dir.filePath(QStringLiteral("demo.sqlite")); }
    // A small logger database at Db(), made as a user makes one.
    void MakeDb()
    {
        ASSERT_TRUE(zwtest::WriteFile(m_dir.filePath(QStringLiteral("a.csv")), "time,A.b\n2025-01-01T00:00:00Z,1\n"));
        const Result r
            = Run({QStringLiteral("import"), QStringLiteral("--db"), Db(), m_dir.filePath(QStringLiteral("a.csv"))});
        ASSERT_EQ(r.status, 0) << r.err.toStdString();
    }
    static QString Report() { return zwtest::SourcePath(QStringLiteral("examples/reports/MonthlyEnergy.XRPT")); }

    QTemporaryDir m_dir;
};

TEST_F(ViewerCommands, ScreenshotOfTheViewer)
{
    ASSERT_EQ(Run({QStringLiteral("demo-db"), QStringLiteral("--db"), Db(), QStringLiteral("--months"),
                      QStringLiteral("2"), QStringLiteral("--step"), QStringLiteral("15m")})
                  .status,
        0);
    const QString png = m_dir.filePath(QStringLiteral("shot.png"));
    const Result r
        = Run({QStringLiteral("screenshot"), Report(), QStringLiteral("--db"), Db(), QStringLiteral("--unit"),
            QStringLiteral("month"), QStringLiteral("--size"), QStringLiteral("800x600"), QStringLiteral("--zoom"),
            QStringLiteral("100"), QStringLiteral("--page"), QStringLiteral("2"), QStringLiteral("-o"), png});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    const QImage image(png);
    ASSERT_FALSE(image.isNull());
    EXPECT_EQ(image.size(), QSize(800, 600));
    // The page (white) fills part of the window at 100 %.
    int white = 0;
    for (int y = 100; y < image.height(); y += 4)
        for (int x = 0; x < image.width(); x += 4)
            white += image.pixel(x, y) == qRgb(255, 255, 255);
    EXPECT_GT(white, 1000);
}

TEST_F(ViewerCommands, ADateOnABoundaryShowsTheUnitBeforeItAsTheOtherCommandsDo)
{
    ASSERT_EQ(Run({QStringLiteral("demo-db"), QStringLiteral("--db"), Db(), QStringLiteral("--months"),
                      QStringLiteral("1"), QStringLiteral("--step"), QStringLiteral("15m")})
                  .status,
        0);
    const QString png = m_dir.filePath(QStringLiteral("shot.png"));
    struct Case
    {
        const char* unit;
        const char* date;
        const char* period;
    } cases[] = {
        {"month", "2025-10-01T00:00:00", "period 2025-09-01T00:00:00 2025-10-01T00:00:00"},
        {"month", "2025-10-01T00:00:01", "period 2025-10-01T00:00:00 2025-11-01T00:00:00"},
        {"day", "2025-03-05T00:00:00", "period 2025-03-04T00:00:00 2025-03-05T00:00:00"},
        {"year", "2025-01-01T00:00:00", "period 2024-01-01T00:00:00 2025-01-01T00:00:00"},
    };
    for (const Case& c : cases) {
        const Result r
            = Run({QStringLiteral("screenshot"), Report(), QStringLiteral("--db"), Db(), QStringLiteral("--unit"),
                QString::fromLatin1(c.unit), QStringLiteral("--date"), QString::fromLatin1(c.date),
                QStringLiteral("--size"), QStringLiteral("400x300"), QStringLiteral("-o"), png});
        ASSERT_EQ(r.status, 0) << r.err.toStdString();
        EXPECT_TRUE(r.out.contains(QString::fromLatin1(c.period))) << c.unit << " " << c.date << "\n"
                                                                   << r.out.toStdString();
    }
}

TEST_F(ViewerCommands, RefusalsBeforeAnyWindow)
{
    const QString png = m_dir.filePath(QStringLiteral("x.png"));
    const QString typo = QStringLiteral("sqlite:") + m_dir.filePath(QStringLiteral("typo/demo.sqlite"));
    {
        const Result r = Run({QStringLiteral("view"), Report(), QStringLiteral("--db"), typo});
        EXPECT_EQ(r.status, 1) << r.err.toStdString();
        EXPECT_TRUE(r.err.contains(QStringLiteral("the file does not exist"))) << r.err.toStdString();
        EXPECT_FALSE(QFileInfo::exists(m_dir.filePath(QStringLiteral("typo"))));
    }
    MakeDb();
    struct Case
    {
        QStringList args;
        int status;
        const char* message;
    } cases[] = {
        {{QStringLiteral("view")}, 2, "expected one REPORT"},
        {{QStringLiteral("view"), Report(), QStringLiteral("--unit"), QStringLiteral("fortnight")}, 2,
            "unknown unit 'fortnight'"},
        {{QStringLiteral("view"), Report(), QStringLiteral("--unit"), QStringLiteral("user")}, 2,
            "--unit user needs --from and --to"},
        {{QStringLiteral("view"), Report(), QStringLiteral("--date"), QStringLiteral("yesterday")}, 2,
            "is not a date-time"},
        {{QStringLiteral("view"), Report(), QStringLiteral("--unit"), QStringLiteral("user"), QStringLiteral("--from"),
             QStringLiteral("2025-01-01T10:00:00"), QStringLiteral("--to"), QStringLiteral("2025-01-01T10:59:59")},
            1, "at least one hour"},
        {{QStringLiteral("view"), Report(), QStringLiteral("--db"), QStringLiteral("mysql://h/d")}, 1, "is not valid"},
        {{QStringLiteral("view"), m_dir.filePath(QStringLiteral("Missing.XRPT")), QStringLiteral("--db"), Db()}, 1,
            "cannot read the report"},
        {{QStringLiteral("screenshot"), Report(), QStringLiteral("-o"), png, QStringLiteral("--zoom"),
             QStringLiteral("33")},
            2, "--zoom must be"},
        {{QStringLiteral("screenshot"), Report(), QStringLiteral("--db"), Db(), QStringLiteral("-o"), png,
             QStringLiteral("--page"), QStringLiteral("9")},
            1, "the report has 2 page(s)"},
        {{QStringLiteral("gui"), QStringLiteral("extra")}, 2, "takes no arguments"},
    };
    for (const Case& c : cases) {
        const Result r = Run(c.args);
        EXPECT_EQ(r.status, c.status) << c.args.join(QLatin1Char(' ')).toStdString() << "\n" << r.err.toStdString();
        EXPECT_TRUE(r.err.contains(QString::fromUtf8(c.message))) << c.args.join(QLatin1Char(' ')).toStdString() << "\n"
                                                                  << r.err.toStdString();
    }
}

TEST_F(ViewerCommands, WithoutADisplayWindowsAreRefusedButHelpIsGiven)
{
    const Result gui = Run({}, false);
    EXPECT_EQ(gui.status, 1);
    EXPECT_TRUE(gui.err.contains(QStringLiteral("there is no display"))) << gui.err.toStdString();
    const Result view = Run({QStringLiteral("view"), Report()}, false);
    EXPECT_EQ(view.status, 1);
    EXPECT_EQ(Run({QStringLiteral("view"), QStringLiteral("--help")}, false).status, 0);
}

} // namespace
