// The report commands as a user runs them: logged data imported from CSV
// into a SQLite file, the example monthly report rendered for a known month
// to PDF (read back with poppler's tools) and its value document.
#include "host/core/XmlDocument.h"
#include "tests/app/commands/ProgramRun.h"
#include "tests/support/ZWTestSupport.h"

#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <cmath>
#include <gtest/gtest.h>

namespace {

using Result = zwtest::ProgramResult;

Result RunProcess(const QString& program, const QStringList& args)
{
    return zwtest::RunProgram(args, {}, program);
}

Result Zw(const QStringList& args)
{
    return zwtest::RunProgram(
        QStringList{QStringLiteral("--tz"), QStringLiteral("UTC"), QStringLiteral("--locale"), QStringLiteral("en_US")}
        + args);
}

class MonthlyReport : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        m_db = QStringLiteral("sqlite:") + m_dir.filePath(QStringLiteral("site.sqlite"));
        // February 2026 in UTC. Counters: the reading before the month, one
        // inside, one on the 1 March boundary (it still counts) and one after.
        const QByteArray csv = "time,Main meter.Active energy,Gas meter.Volume,Water meter.Volume,PV inverter.Energy\n"
                               "2026-01-31T23:45:00Z,1000,100,10,0\n"
                               "2026-02-14T12:00:00Z,6000,700,20,2000\n"
                               "2026-03-01T00:00:00Z,13345.6,1334.5,42.42,4115.2\n"
                               "2026-03-02T00:00:00Z,99999,9999,999,9999\n";
        ASSERT_TRUE(zwtest::WriteFile(m_dir.filePath(QStringLiteral("site.csv")), csv));
        const Result imported = Zw({QStringLiteral("import"), QStringLiteral("--db"), m_db, QStringLiteral("--counter"),
            QStringLiteral("Main meter.Active energy"), QStringLiteral("--counter"), QStringLiteral("Gas meter.Volume"),
            QStringLiteral("--counter"), QStringLiteral("Water meter.Volume"), QStringLiteral("--counter"),
            QStringLiteral("PV inverter.Energy"), m_dir.filePath(QStringLiteral("site.csv"))});
        ASSERT_EQ(imported.status, 0) << imported.err.toStdString();
    }

    QStringList Period() const
    {
        return {QStringLiteral("--db"), m_db, QStringLiteral("--unit"), QStringLiteral("month"),
            QStringLiteral("--date"), QStringLiteral("2026-02-14T08:00:00"), QStringLiteral("--now"),
            QStringLiteral("2026-11-21T10:00:00")};
    }

    QTemporaryDir m_dir;
    QString m_db;
};

TEST_F(MonthlyReport, RendersTheMonthsNumbersIntoAPdf)
{
    const QString pdf = m_dir.filePath(QStringLiteral("february.pdf"));
    const QString pngs = m_dir.filePath(QStringLiteral("pages"));
    const Result r = Zw(
        QStringList{QStringLiteral("render"), zwtest::SourcePath(QStringLiteral("examples/reports/MonthlyEnergy.XRPT"))}
        + Period()
        + QStringList{
            QStringLiteral("-o"), pdf, QStringLiteral("--png"), pngs, QStringLiteral("--dpi"), QStringLiteral("50")});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();

    const Result info = RunProcess(QStringLiteral("pdfinfo"), {pdf});
    ASSERT_EQ(info.status, 0);
    EXPECT_TRUE(info.out.contains(QRegularExpression(QStringLiteral("Pages:\\s+2\\n")))) << info.out.toStdString();
    EXPECT_TRUE(info.out.contains(QStringLiteral("595 x 842 pts (A4)"))) << info.out.toStdString();
    const Result fonts = RunProcess(QStringLiteral("pdffonts"), {pdf});
    EXPECT_TRUE(fonts.out.contains(QStringLiteral("LiberationSans"))) << fonts.out.toStdString();
    // The "emb" column says yes for every font.
    EXPECT_FALSE(fonts.out.contains(QRegularExpression(QStringLiteral("Identity-H\\s+no")))) << "every font embedded:\n"
                                                                                             << fonts.out.toStdString();

    const Result text = RunProcess(QStringLiteral("pdftotext"), {pdf, QStringLiteral("-")});
    ASSERT_EQ(text.status, 0);
    const char* expected[] = {
        "01/02/2026 00:00", "01/03/2026 00:00", // the period, its end exclusive
        "12,345.6",                             // electricity: 13345.6 - 1000
        "1,234.50",                             // gas m3, two decimals kept
        "13,024",                               // gas energy: 1234.5 * 10.55 = 13023.975
        "32.42",                                // water
        "4,115.2",                              // solar
        "25,370",                               // total energy: 12345.6 + 13023.975, no decimals
        "2,592.58",                             // electricity cost: 12345.6 * 0.21
        "Over budget",                          // 12345.6 kWh > 400 kWh a day over 28 days
        "25",                                   // solar share, percent
        "[Main meter.Active power]",            // no power data: the formula shows as written
    };
    for (const char* e : expected)
        EXPECT_TRUE(text.out.contains(QString::fromUtf8(e))) << e << "\n" << text.out.toStdString();
    EXPECT_FALSE(text.out.contains(QStringLiteral("Within budget")));
    EXPECT_TRUE(QFile::exists(pngs + QStringLiteral("/MonthlyEnergy-page2.png")));
}

TEST_F(MonthlyReport, ValueDocumentAndItsFailures)
{
    const Result values = Zw(
        QStringList{QStringLiteral("values"), zwtest::SourcePath(QStringLiteral("examples/reports/MonthlyEnergy.XRPT"))}
        + Period());
    ASSERT_EQ(values.status, 0) << values.err.toStdString();
    EXPECT_TRUE(values.out.startsWith(QStringLiteral("<fields><date><id>"))) << values.out.toStdString();
    EXPECT_TRUE(values.out.contains(QStringLiteral("<value>12,345.6</value>")));
    EXPECT_EQ(values.out.count(QStringLiteral("<conditioned>")), 2);

    // A report that does not exist, a database that cannot be opened, a bad unit.
    const Result missing
        = Zw(QStringList{QStringLiteral("values"), m_dir.filePath(QStringLiteral("none.XRPT"))} + Period());
    EXPECT_EQ(missing.status, 1);
    EXPECT_TRUE(missing.err.contains(QStringLiteral("none.XRPT"))) << missing.err.toStdString();
    const Result badDb
        = Zw({QStringLiteral("values"), zwtest::SourcePath(QStringLiteral("examples/reports/MonthlyEnergy.XRPT")),
            QStringLiteral("--db"), QStringLiteral("postgresql://nobody@127.0.0.1:1/none?connect_timeout=2")});
    EXPECT_EQ(badDb.status, 1) << badDb.err.toStdString();
    // Said once, in the server's words, without the driver's own line.
    EXPECT_TRUE(badDb.err.startsWith(QStringLiteral(
        "zwinformes: Cannot open the logger database postgresql://nobody@127.0.0.1:1/none: connection to server")))
        << badDb.err.toStdString();
    EXPECT_EQ(badDb.err.count(QStringLiteral("logger database")), 1) << badDb.err.toStdString();
    EXPECT_FALSE(badDb.err.contains(QStringLiteral("QPSQL"))) << badDb.err.toStdString();
    // A period without any logged data says so beside its value document.
    const Result empty
        = Zw({QStringLiteral("values"), zwtest::SourcePath(QStringLiteral("examples/reports/MonthlyEnergy.XRPT")),
            QStringLiteral("--db"), m_db, QStringLiteral("--unit"), QStringLiteral("month"), QStringLiteral("--date"),
            QStringLiteral("2025-06-10T00:00:00"), QStringLiteral("--now"), QStringLiteral("2026-11-21T10:00:00")});
    EXPECT_EQ(empty.status, 0);
    EXPECT_TRUE(empty.err.contains(QStringLiteral("No logged data between 6/1/25 12:00 AM and 7/1/25 12:00 AM.")))
        << empty.err.toStdString();
    EXPECT_FALSE(values.err.contains(QStringLiteral("No logged data"))) << values.err.toStdString();

    // A mistyped database path is said to be one; no empty database is made.
    const QString typo = m_dir.filePath(QStringLiteral("sites.sqlite"));
    const Result missingDb
        = Zw({QStringLiteral("values"), zwtest::SourcePath(QStringLiteral("examples/reports/MonthlyEnergy.XRPT")),
            QStringLiteral("--db"), QStringLiteral("sqlite:") + typo});
    EXPECT_EQ(missingDb.status, 1);
    EXPECT_TRUE(missingDb.err.contains(QStringLiteral("the file does not exist"))) << missingDb.err.toStdString();
    EXPECT_FALSE(QFile::exists(typo));
    const Result badUnit = Zw(
        {QStringLiteral("values"), QStringLiteral("x.XRPT"), QStringLiteral("--unit"), QStringLiteral("fortnight")});
    EXPECT_EQ(badUnit.status, 2);
}

TEST_F(MonthlyReport, WhatIsNoReportIsRefusedBeforeAnyGathering)
{
    const QByteArray whole
        = zwtest::ReadFile(zwtest::SourcePath(QStringLiteral("examples/reports/MonthlyEnergy.XRPT")));
    struct File
    {
        const char* name;
        QByteArray bytes;
        const char* reason;
    } files[] = {
        {"Style.XRPT", "<style><font>Arial</font></style>", "root element is \"style\", not \"design\""},
        {"Values.XRPT", "<fields><formule><id>1</id><value>2</value></formule></fields>", "not \"design\""},
        {"Truncated.XRPT", whole.left(whole.size() / 2), "line"},
    };
    for (const File& f : files) {
        const QString path = m_dir.filePath(QString::fromLatin1(f.name));
        ASSERT_TRUE(zwtest::WriteFile(path, f.bytes));
        const QStringList commands[] = {
            QStringList{QStringLiteral("values"), path} + Period(),
            QStringList{QStringLiteral("render"), path, QStringLiteral("-o"), m_dir.filePath(QStringLiteral("x.pdf"))}
                + Period(),
            {QStringLiteral("render-template"), path, QStringLiteral("--png"), m_dir.filePath(QStringLiteral("png"))},
            {QStringLiteral("resave"), path, m_dir.filePath(QStringLiteral("out.XRPT"))},
            {QStringLiteral("view"), path, QStringLiteral("--db"), m_db},
        };
        for (const QStringList& args : commands) {
            const Result r = Zw(args);
            EXPECT_EQ(r.status, 1) << args.join(QLatin1Char(' ')).toStdString() << "\n" << r.err.toStdString();
            EXPECT_TRUE(r.err.contains(QString::fromUtf8(f.reason)))
                << args.join(QLatin1Char(' ')).toStdString() << "\n"
                << r.err.toStdString();
            // Refused before gathering: no progress, no value document, no file.
            EXPECT_FALSE(r.err.contains(QStringLiteral("%"))) << r.err.toStdString();
            EXPECT_TRUE(r.out.isEmpty()) << r.out.toStdString();
        }
        EXPECT_FALSE(QFile::exists(m_dir.filePath(QStringLiteral("x.pdf"))));
        EXPECT_FALSE(QFile::exists(m_dir.filePath(QStringLiteral("out.XRPT"))));
    }
}

TEST_F(MonthlyReport, APageLargerThanAPdfPageIsNamedBeforeAnythingIsWritten)
{
    const QString in = m_dir.filePath(QStringLiteral("Long.XRPT"));
    ASSERT_TRUE(zwtest::WriteFile(in, "<design><page><width>210</width><height>9000</height></page></design>"));
    const QString pdf = m_dir.filePath(QStringLiteral("long.pdf"));
    const Result r = Zw(QStringList{QStringLiteral("render"), in, QStringLiteral("-o"), pdf} + Period());
    EXPECT_EQ(r.status, 1);
    EXPECT_TRUE(r.err.contains(
        QStringLiteral("page 1 cannot be drawn: its height of 9000 mm is larger than a PDF page can be (5080 mm)")))
        << r.err.toStdString();
    EXPECT_FALSE(QFile::exists(pdf));
}

// The value of the formula card whose formula is `formula`, from a value
// document, as a number (NaN when it is not there).
double CardValue(const QString& report, const QString& values, const QString& formula)
{
    XmlDocument design;
    XmlDocument document;
    if (!design.Load(report) || !document.Parse(values))
        return std::nan("");
    QString id;
    for (const XmlDocument::XmlNode& page : design.Root().Nodes(QStringLiteral("page")))
        for (const XmlDocument::XmlNode& card : page.Nodes(QStringLiteral("formule")))
            if (card.Value(QStringLiteral("/value")) == formula)
                id = card.Value(QStringLiteral("/id"));
    for (const XmlDocument::XmlNode& card : document.Root().Nodes(QStringLiteral("formule")))
        if (!id.isEmpty() && card.Value(QStringLiteral("/id")) == id) {
            bool ok = false;
            const double v = card.Value(QStringLiteral("/value")).remove(QLatin1Char(',')).toDouble(&ok);
            return ok ? v : std::nan("");
        }
    return std::nan("");
}

TEST(ExampleReport, MeanPowerFromEnergyAgreesWithTheMeanPowerForEveryUnit)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString db = QStringLiteral("sqlite:") + dir.filePath(QStringLiteral("demo.sqlite"));
    const Result made = Zw({QStringLiteral("demo-db"), QStringLiteral("--db"), db, QStringLiteral("--months"),
        QStringLiteral("2"), QStringLiteral("--step"), QStringLiteral("15m"), QStringLiteral("--until"),
        QStringLiteral("2026-03-20T09:00:00Z")});
    ASSERT_EQ(made.status, 0) << made.err.toStdString();
    const QString report = zwtest::SourcePath(QStringLiteral("examples/reports/MonthlyEnergy.XRPT"));
    struct Case
    {
        const char* unit;
        const char* date;
    } cases[] = {
        {"day", "2026-03-10T12:00:00"},
        {"day", nullptr}, // today, nine hours of it logged
        {"week", "2026-03-10T12:00:00"},
        {"month", "2026-02-10T12:00:00"},
        {"month", nullptr},
    };
    for (const Case& c : cases) {
        QStringList args{QStringLiteral("values"), report, QStringLiteral("--db"), db, QStringLiteral("--unit"),
            QString::fromLatin1(c.unit), QStringLiteral("--now"), QStringLiteral("2026-03-20T09:00:00")};
        if (c.date)
            args << QStringLiteral("--date") << QString::fromLatin1(c.date);
        const Result r = Zw(args);
        ASSERT_EQ(r.status, 0) << r.err.toStdString();
        const double mean = CardValue(report, r.out, QStringLiteral("[Main meter.Active power]"));
        const double fromEnergy
            = CardValue(report, r.out, QStringLiteral("[Main meter.Active energy] / [Main meter.Active energy:hours]"));
        ASSERT_GT(mean, 1.0) << c.unit << "\n" << r.out.toStdString();
        EXPECT_NEAR(fromEnergy / mean, 1.0, 0.05) << c.unit << " " << (c.date ? c.date : "now") << ": " << fromEnergy
                                                  << " kW from energy, " << mean << " kW mean";
    }
}

TEST(PeriodCommand, JsonOfUnitsAndTheUserInterval)
{
    struct Case
    {
        QStringList args;
        int status;
        const char* json;
    } cases[] = {
        {{QStringLiteral("--unit"), QStringLiteral("month"), QStringLiteral("--date"),
             QStringLiteral("2026-02-14T10:00:00")},
            0, R"({"start":"2026-02-01T00:00:00","end":"2026-03-01T00:00:00","lengthDays":31})"},
        {{QStringLiteral("--unit"), QStringLiteral("month"), QStringLiteral("--date"),
             QStringLiteral("2026-03-01T00:00:00")},
            0, R"({"start":"2026-02-01T00:00:00","end":"2026-03-01T00:00:00","lengthDays":31})"},
        {{QStringLiteral("--unit"), QStringLiteral("3month"), QStringLiteral("--date"),
             QStringLiteral("2026-11-02T00:00:00")},
            0, R"({"start":"2026-10-01T00:00:00","end":"2027-01-01T00:00:00","lengthDays":91})"},
        {{QStringLiteral("--unit"), QStringLiteral("day"), QStringLiteral("--date"),
             QStringLiteral("2030-01-01T00:00:00")},
            0, R"({"start":"2026-11-21T00:00:00","end":"2026-11-22T00:00:00","lengthDays":1})"},
        {{QStringLiteral("--unit"), QStringLiteral("user"), QStringLiteral("--from"),
             QStringLiteral("2026-01-01T06:00:00"), QStringLiteral("--to"), QStringLiteral("2026-01-01T18:00:00")},
            0, R"({"start":"2026-01-01T06:00:00","end":"2026-01-01T18:00:00","lengthDays":0.5})"},
        {{QStringLiteral("--unit"), QStringLiteral("user"), QStringLiteral("--from"),
             QStringLiteral("2026-01-01T06:00:00"), QStringLiteral("--to"), QStringLiteral("2026-01-01T06:59:59")},
            1, ""},
        {{QStringLiteral("--unit"), QStringLiteral("week"), QStringLiteral("--date"), QStringLiteral("not a date")}, 2,
            ""},
    };
    for (const Case& c : cases) {
        const Result r = Zw(QStringList{QStringLiteral("period"), QStringLiteral("--json"), QStringLiteral("--now"),
                                QStringLiteral("2026-11-21T10:00:00")}
            + c.args);
        EXPECT_EQ(r.status, c.status) << c.args.join(QLatin1Char(' ')).toStdString() << r.err.toStdString();
        if (c.status == 0) {
            EXPECT_EQ(r.out.trimmed(), QString::fromUtf8(c.json)) << c.args.join(QLatin1Char(' ')).toStdString();
        }
    }
}

} // namespace
