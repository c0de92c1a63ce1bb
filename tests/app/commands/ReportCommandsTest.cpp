// The store and report commands as a user runs them: logged data imported
// from CSV into a SQLite file or made by demo-db, the example monthly report
// rendered for a known month to PDF (read back with poppler's tools), its
// value document, and the period command.
#include "host/core/XmlDocument.h"
#include "tests/app/commands/ProgramRun.h"
#include "tests/support/ZWTestSupport.h"

#include <QRegularExpression>
#include <QTemporaryDir>
#include <cmath>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

using Result = zwtest::ProgramResult;

// The program in UTC and the US English conventions, without a database
// named by the environment.
Result Zw(const QString& commandLine)
{
    zwtest::RunOptions options;
    options.environment = {{u"ZWINFORMES_DB"_s, QString()}};
    return zwtest::RunProgram(zwtest::Args(u"--tz UTC --locale en_US "_s + commandLine), options);
}

Result Poppler(const QString& program, const QStringList& args)
{
    return zwtest::RunProgram(args, {}, program);
}

const QString kExample = zwtest::SourcePath(u"examples/reports/MonthlyEnergy.XRPT"_s);

TEST(StoreCommands, ImportReportsAndRefusesBadRows)
{
    QTemporaryDir dir;
    const QString db = u"sqlite:"_s + dir.filePath(u"x.sqlite"_s);
    const QString good = dir.filePath(u"good.csv"_s), bad = dir.filePath(u"bad.csv"_s);
    ASSERT_TRUE(zwtest::WriteFile(good, "time,M.E,R.T\n2025-01-06T00:00:00Z,1,20\n2025-01-06T01:00:00Z,3,\n"));
    ASSERT_TRUE(zwtest::WriteFile(bad, "time,M.E\n2025-01-06T02:00:00Z,4\n2025-01-06T03:00:00Z,x\n"));

    Result r = Zw(u"import --db %1 --counter M.E %2"_s.arg(db, good));
    EXPECT_EQ(r.status, 0) << r;
    EXPECT_TRUE(r.out.startsWith(u"Imported 3 samples of 2 variables (2 new) from 2 rows"_s)) << r;
    r = Zw(u"import --db %1 %2"_s.arg(db, bad));
    EXPECT_EQ(r.status, 1);
    EXPECT_TRUE(r.err.contains(u"bad.csv: line 3: 'x' is not a number"_s)) << r;
    r = Zw(u"period-values --db %1 --from 2025-01-06 --to 2025-01-07 M.E R.T:count No.Such"_s.arg(db));
    EXPECT_EQ(r.status, 0) << r;
    EXPECT_EQ(r.out, u"M.E\t2\nR.T:count\t1\nNo.Such\t-\n"_s);
    r = Zw(u"period-values --db %1 --from 2025-01-06 --to 2025-01-06T03:00:00 --series hour M.E R.T"_s.arg(db));
    EXPECT_EQ(r.status, 0) << r;
    EXPECT_EQ(r.out,
        u"start\tM.E\tR.T\n2025-01-06T00:00:00\t2\t20\n2025-01-06T01:00:00\t-\t-\n2025-01-06T02:00:00\t-\t-\n"_s);
    EXPECT_EQ(Zw(u"period-values --db %1 --from 2025-01-06 --to 2025-01-07 --series year M.E"_s.arg(db)).status, 2);

    EXPECT_EQ(Zw(u"import --db "_s + db).status, 2);
    EXPECT_EQ(Zw(u"import --db mysql://x/y "_s + good).status, 2);
    r = Zw(u"import --db %1 %2"_s.arg(db, dir.filePath(u"missing.csv"_s)));
    EXPECT_EQ(r.status, 1);
    EXPECT_TRUE(r.err.contains(u"cannot open the file"_s)) << r;
}

TEST(StoreCommands, DemoDbFillsOnceAndReplacesOnRequest)
{
    QTemporaryDir dir;
    const QString db = u"sqlite:"_s + dir.filePath(u"demo.sqlite"_s);
    const QString line = u"demo-db --db %1 --months 1 --until 2025-02-01T00:00:00Z"_s.arg(db);
    Result r = Zw(line);
    EXPECT_EQ(r.status, 0) << r;
    EXPECT_TRUE(r.out.startsWith(u"Wrote 20839 samples of 7 variables, 2025-01-01T00:00:00Z to 2025-02-01T00:00:00Z"_s))
        << r;
    r = Zw(line);
    EXPECT_EQ(r.status, 1);
    EXPECT_TRUE(r.err.contains(u"already holds logged data"_s)) << r;
    EXPECT_EQ(Zw(line + u" --replace"_s).status, 0);
    EXPECT_EQ(Zw(u"demo-db --db %1 --step 5m"_s.arg(db)).status, 2);
}

class MonthlyReport : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        const Result imported = zwtest::ImportFebruarySite(m_dir.path(), m_db);
        ASSERT_EQ(imported.status, 0) << imported;
    }

    // February 2026 from a day in it, seen in November.
    QString Period() const
    {
        return u" --db %1 --unit month --date 2026-02-14T08:00:00 --now 2026-11-21T10:00:00"_s.arg(m_db);
    }

    QTemporaryDir m_dir;
    const QString m_db = u"sqlite:"_s + m_dir.filePath(u"site.sqlite"_s);
};

TEST_F(MonthlyReport, RendersTheMonthsNumbersIntoAPdf)
{
    const QString pdf = m_dir.filePath(u"february.pdf"_s), pngs = m_dir.filePath(u"pages"_s);
    // The tariff page's calendar in the data folder.
    const QString data = m_dir.filePath(u"data"_s);
    ASSERT_TRUE(QDir().mkpath(data));
    ASSERT_TRUE(QFile::copy(zwtest::SourcePath(u"examples/tariffs/three-period.xml"_s), data + u"/tariffs.xml"_s));
    const Result r
        = Zw(u"render %1 %2 -o %3 --png %4 --dpi 50 --data-dir %5"_s.arg(kExample, Period(), pdf, pngs, data));
    ASSERT_EQ(r.status, 0) << r;

    const Result info = Poppler(u"pdfinfo"_s, {pdf});
    ASSERT_EQ(info.status, 0);
    EXPECT_TRUE(info.out.contains(QRegularExpression(u"Pages:\\s+4\\n"_s))) << info;
    EXPECT_TRUE(info.out.contains(u"595 x 842 pts (A4)"_s)) << info;
    const Result fonts = Poppler(u"pdffonts"_s, {pdf});
    EXPECT_TRUE(fonts.out.contains(u"LiberationSans"_s)) << fonts;
    // The "emb" column says yes for every font.
    EXPECT_FALSE(fonts.out.contains(QRegularExpression(u"Identity-H\\s+no"_s))) << fonts;

    const Result text = Poppler(u"pdftotext"_s, {pdf, u"-"_s});
    ASSERT_EQ(text.status, 0);
    const char* expected[] = {
        "01/02/2026 00:00",
        "01/03/2026 00:00",          // the period, its end exclusive
        "12,345.6",                  // electricity: 13345.6 - 1000
        "1,234.50",                  // gas m3, two decimals kept
        "13,024",                    // gas energy: 1234.5 * 10.55 = 13023.975
        "32.42",                     // water
        "4,115.2",                   // solar
        "25,370",                    // total energy: 12345.6 + 13023.975, no decimals
        "2,592.58",                  // electricity cost: 12345.6 * 0.21
        "Over budget",               // 12345.6 kWh > 400 kWh a day over 28 days
        "25",                        // solar share, percent
        "[Main meter.Active power]", // no power data: the formula shows as written
        "Week from",                 // the weekly table's label column
        "7,346",                     // its last week: 13345.6 - 6000
        // Both rises close Saturday hours: all off-peak, at 0.11 EUR/kWh.
        "1,358.02",
    };
    for (const char* e : expected)
        EXPECT_TRUE(text.out.contains(QString::fromUtf8(e))) << e << "\n" << text;
    EXPECT_FALSE(text.out.contains(u"Within budget"_s));
    EXPECT_TRUE(QFile::exists(pngs + u"/MonthlyEnergy-page2.png"_s));
}

TEST_F(MonthlyReport, ValueDocumentAndItsFailures)
{
    const Result values = Zw(u"values "_s + kExample + Period());
    ASSERT_EQ(values.status, 0) << values;
    EXPECT_TRUE(values.out.startsWith(u"<fields><date><id>"_s)) << values;
    EXPECT_TRUE(values.out.contains(u"<value>12,345.6</value>"_s));
    EXPECT_EQ(values.out.count(u"<conditioned>"_s), 2);
    EXPECT_FALSE(values.err.contains(u"No logged data"_s)) << values;

    const QString typo = m_dir.filePath(u"sites.sqlite"_s);
    struct Case
    {
        QString line;
        int status;
        const char* err; // a part of the error output
    } cases[] = {
        {u"values "_s + m_dir.filePath(u"none.XRPT"_s) + Period(), 1, "none.XRPT"},
        // Said once, in the server's words, without the driver's own line.
        {u"values %1 --db postgresql://nobody@127.0.0.1:1/none?connect_timeout=2"_s.arg(kExample), 1,
            "zwinformes: Cannot open the logger database postgresql://nobody@127.0.0.1:1/none: connection to server"},
        // A period without any logged data says so beside its value document.
        {u"values %1 --db %2 --unit month --date 2025-06-10T00:00:00 --now 2026-11-21T10:00:00"_s.arg(kExample, m_db),
            0, "No logged data between 6/1/25 12:00 AM and 7/1/25 12:00 AM."},
        // A mistyped database path is said to be one; no empty database is made.
        {u"values %1 --db sqlite:%2"_s.arg(kExample, typo), 1, "the file does not exist"},
        {u"values x.XRPT --unit fortnight"_s, 2, ""},
    };
    for (const Case& c : cases) {
        const Result r = Zw(c.line);
        EXPECT_EQ(r.status, c.status) << r;
        EXPECT_TRUE(r.err.contains(QString::fromUtf8(c.err))) << r;
        if (c.line.contains(u"postgresql"_s)) {
            EXPECT_EQ(r.err.count(u"logger database"_s), 1) << r;
        }
        EXPECT_FALSE(r.err.contains(u"QPSQL"_s)) << r;
    }
    EXPECT_FALSE(QFile::exists(typo));
}

TEST_F(MonthlyReport, WhatIsNoReportIsRefusedBeforeAnythingIsGatheredOrWritten)
{
    const QByteArray whole = zwtest::ReadFile(kExample);
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
    const QString pdf = m_dir.filePath(u"x.pdf"_s), resaved = m_dir.filePath(u"out.XRPT"_s);
    for (const File& f : files) {
        const QString path = m_dir.filePath(QString::fromLatin1(f.name));
        ASSERT_TRUE(zwtest::WriteFile(path, f.bytes));
        for (const QString& line : {u"values "_s + path + Period(), u"render %1 -o %2"_s.arg(path, pdf) + Period(),
                 u"render-template %1 --png %2"_s.arg(path, m_dir.filePath(u"png"_s)),
                 u"resave %1 %2"_s.arg(path, resaved), u"view %1 --db %2"_s.arg(path, m_db)}) {
            const Result r = Zw(line);
            EXPECT_EQ(r.status, 1) << line.toStdString() << "\n" << r;
            EXPECT_TRUE(r.err.contains(QString::fromUtf8(f.reason))) << line.toStdString() << "\n" << r;
            // Refused before gathering: no progress, no value document, no file.
            EXPECT_FALSE(r.err.contains(u"%"_s)) << r;
            EXPECT_TRUE(r.out.isEmpty()) << r;
        }
        EXPECT_FALSE(QFile::exists(pdf));
        EXPECT_FALSE(QFile::exists(resaved));
    }
}

TEST_F(MonthlyReport, APageLargerThanAPdfPageIsNamedBeforeAnythingIsWritten)
{
    const QString in = m_dir.filePath(u"Long.XRPT"_s), pdf = m_dir.filePath(u"long.pdf"_s);
    ASSERT_TRUE(zwtest::WriteFile(in, "<design><page><width>210</width><height>9000</height></page></design>"));
    const Result r = Zw(u"render %1 -o %2"_s.arg(in, pdf) + Period());
    EXPECT_EQ(r.status, 1);
    EXPECT_TRUE(
        r.err.contains(u"page 1 cannot be drawn: its height of 9000 mm is larger than a PDF page can be (5080 mm)"_s))
        << r;
    EXPECT_FALSE(QFile::exists(pdf));
}

// The value of the formula card whose formula is `formula`, from a value
// document, as a number (NaN when it is not there).
double CardValue(const QString& values, const QString& formula)
{
    XmlDocument design, document;
    if (!design.Load(kExample) || !document.Parse(values))
        return std::nan("");
    QString id;
    for (const XmlDocument::XmlNode& page : design.Root().Nodes(u"page"_s))
        for (const XmlDocument::XmlNode& card : page.Nodes(u"formule"_s))
            if (card.Value(u"/value"_s) == formula)
                id = card.Value(u"/id"_s);
    for (const XmlDocument::XmlNode& card : document.Root().Nodes(u"formule"_s))
        if (!id.isEmpty() && card.Value(u"/id"_s) == id) {
            bool ok = false;
            const double v = card.Value(u"/value"_s).remove(QLatin1Char(',')).toDouble(&ok);
            return ok ? v : std::nan("");
        }
    return std::nan("");
}

TEST(ExampleReport, MeanPowerFromEnergyAgreesWithTheMeanPowerForEveryUnit)
{
    QTemporaryDir dir;
    const QString db = u"sqlite:"_s + dir.filePath(u"demo.sqlite"_s);
    const Result made = Zw(u"demo-db --db %1 --months 2 --step 15m --until 2026-03-20T09:00:00Z"_s.arg(db));
    ASSERT_EQ(made.status, 0) << made;
    // Today (nine hours of it logged) and this month when no date is given.
    for (const char* period : {"day --date 2026-03-10T12:00:00", "day", "week --date 2026-03-10T12:00:00",
             "month --date 2026-02-10T12:00:00", "month"}) {
        const Result r = Zw(
            u"values %1 --db %2 --now 2026-03-20T09:00:00 --unit %3"_s.arg(kExample, db, QString::fromLatin1(period)));
        ASSERT_EQ(r.status, 0) << r;
        const double mean = CardValue(r.out, u"[Main meter.Active power]"_s);
        const double fromEnergy = CardValue(r.out, u"[Main meter.Active energy] / [Main meter.Active energy:hours]"_s);
        ASSERT_GT(mean, 1.0) << period << "\n" << r;
        EXPECT_NEAR(fromEnergy / mean, 1.0, 0.05) << period << ": " << fromEnergy << " kW from energy, " << mean;
    }
}

TEST(PeriodCommand, JsonOfUnitsAndTheUserInterval)
{
    struct Case
    {
        const char* args;
        int status;
        const char* json;
    } cases[] = {
        {"--unit month --date 2026-02-14T10:00:00", 0,
            R"({"start":"2026-02-01T00:00:00","end":"2026-03-01T00:00:00","lengthDays":31})"},
        {"--unit month --date 2026-03-01T00:00:00", 0,
            R"({"start":"2026-02-01T00:00:00","end":"2026-03-01T00:00:00","lengthDays":31})"},
        {"--unit 3month --date 2026-11-02T00:00:00", 0,
            R"({"start":"2026-10-01T00:00:00","end":"2027-01-01T00:00:00","lengthDays":91})"},
        {"--unit day --date 2030-01-01T00:00:00", 0,
            R"({"start":"2026-11-21T00:00:00","end":"2026-11-22T00:00:00","lengthDays":1})"},
        {"--unit user --from 2026-01-01T06:00:00 --to 2026-01-01T18:00:00", 0,
            R"({"start":"2026-01-01T06:00:00","end":"2026-01-01T18:00:00","lengthDays":0.5})"},
        {"--unit user --from 2026-01-01T06:00:00 --to 2026-01-01T06:59:59", 1, ""},
        {"--unit week --date \"not a date\"", 2, ""},
    };
    for (const Case& c : cases) {
        const Result r = Zw(u"period --json --now 2026-11-21T10:00:00 "_s + QString::fromLatin1(c.args));
        EXPECT_EQ(r.status, c.status) << c.args << "\n" << r;
        if (c.status == 0) {
            EXPECT_EQ(r.out.trimmed(), QString::fromUtf8(c.json)) << c.args;
        }
    }
}

} // namespace
