// The store, report, export, period and tariff commands as a user runs them:
// a known month of the example report read back from PDF, XML, JSON and CSV.
#include "tests/app/commands/ProgramRun.h"
#include "tests/support/ZWTestSupport.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

using Result = zwtest::ProgramResult;
const auto Zw = zwtest::RunUtc;

// A tool of another program (poppler's, unzip) on a file.
Result Tool(const QString& program, const QStringList& args)
{
    return zwtest::RunProgram(args, {}, program);
}

const QString kExample = zwtest::SourcePath(u"examples/reports/MonthlyEnergy.XRPT"_s);

// The first card of a JSON value document whose text is `text`.
QJsonObject Card(const QJsonArray& cards, const QString& text)
{
    for (const QJsonValue& card : cards)
        if (card.toObject().value(u"text"_s).toString() == text)
            return card.toObject();
    return {};
}

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
    // A small site: four counters read before February 2026 (UTC), inside
    // it, on 1 March (which still counts) and after it. Electricity over
    // February: 12,345.6 kWh.
    void SetUp() override
    {
        const QString file = m_dir.filePath(u"site.csv"_s);
        ASSERT_TRUE(zwtest::WriteFile(file,
            "time,Main meter.Active energy,Gas meter.Volume,Water meter.Volume,PV inverter.Energy\n"
            "2026-01-31T23:45:00Z,1000,100,10,0\n"
            "2026-02-14T12:00:00Z,6000,700,20,2000\n"
            "2026-03-01T00:00:00Z,13345.6,1334.5,42.42,4115.2\n"
            "2026-03-02T00:00:00Z,99999,9999,999,9999\n"));
        const Result imported = Zw(
            u"import --db %1 --counter \"Main meter.Active energy\" --counter \"Gas "
            u"meter.Volume\" --counter \"Water meter.Volume\" --counter \"PV inverter.Energy\" %2"_s.arg(m_db, file));
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
    const QString pdf = m_dir.filePath(u"out/2026/february.pdf"_s), pngs = m_dir.filePath(u"pages"_s);
    // The tariff page's calendar in the data folder.
    const QString data = m_dir.filePath(u"data"_s);
    ASSERT_TRUE(QDir().mkpath(data));
    ASSERT_TRUE(QFile::copy(zwtest::SourcePath(u"examples/tariffs/three-period.xml"_s), data + u"/tariffs.xml"_s));
    const Result r
        = Zw(u"render %1 %2 -o %3 --png %4 --dpi 50 --data-dir %5"_s.arg(kExample, Period(), pdf, pngs, data));
    ASSERT_EQ(r.status, 0) << r;

    const Result info = Tool(u"pdfinfo"_s, {pdf});
    ASSERT_EQ(info.status, 0);
    EXPECT_TRUE(info.out.contains(QRegularExpression(u"Pages:\\s+4\\n"_s))) << info;
    EXPECT_TRUE(info.out.contains(u"595 x 842 pts (A4)"_s)) << info;
    const Result fonts = Tool(u"pdffonts"_s, {pdf});
    EXPECT_TRUE(fonts.out.contains(u"LiberationSans"_s)) << fonts;
    // The "emb" column says yes for every font.
    EXPECT_FALSE(fonts.out.contains(QRegularExpression(u"Identity-H\\s+no"_s))) << fonts;

    const Result text = Tool(u"pdftotext"_s, {pdf, u"-"_s});
    ASSERT_EQ(text.status, 0);
    const char* expected[] = {
        "01/02/2026 00:00",
        "01/03/2026 00:00",          // the period, its end exclusive
        "12,345.6",                  // electricity: 13345.6 - 1000
        "13,024",                    // gas energy: 1234.5 * 10.55 = 13023.975
        "32.42",                     // water
        "4,115.2",                   // solar
        "[Main meter.Active power]", // no power data: the formula shows as written
        "Week from",                 // the weekly table's label column
        "7,346",                     // its last week: 13345.6 - 6000
        // Both rises close Saturday hours: all off-peak, at 0.11 EUR/kWh.
        "1,358.02",
    };
    for (const char* e : expected)
        EXPECT_TRUE(text.out.contains(QString::fromUtf8(e))) << e << "\n" << text;
    EXPECT_TRUE(QFile::exists(pngs + u"/MonthlyEnergy-page2.png"_s));
}

TEST_F(MonthlyReport, WhatCannotBeGatheredOrDrawnSaysSo)
{
    const QString typo = m_dir.filePath(u"sites.sqlite"_s), tall = m_dir.filePath(u"Tall.XRPT"_s),
                  pdf = m_dir.filePath(u"tall.pdf"_s);
    ASSERT_TRUE(zwtest::WriteFile(tall, "<design><page><width>210</width><height>9000</height></page></design>"));
    // command line, status, a part of the error output
    const std::tuple<QString, int, const char*> cases[] = {
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
        // A page larger than a PDF page is named before anything is written.
        {u"render %1 -o %2"_s.arg(tall, pdf) + Period(), 1,
            "page 1 cannot be drawn: its height of 9000 mm is larger than a PDF page can be (5080 mm)"},
    };
    for (const auto& [line, status, err] : cases) {
        const Result r = Zw(line);
        EXPECT_EQ(r.status, status) << r;
        EXPECT_TRUE(r.err.contains(QString::fromUtf8(err))) << r;
        EXPECT_LE(r.err.count(u"logger database"_s), 1) << r;
        EXPECT_FALSE(r.err.contains(u"QPSQL"_s)) << r;
    }
    EXPECT_FALSE(QFile::exists(typo));
    EXPECT_FALSE(QFile::exists(pdf));
}

TEST_F(MonthlyReport, WhatIsNoReportIsRefusedBeforeAnythingIsGatheredOrWritten)
{
    const QByteArray whole = zwtest::ReadFile(kExample);
    const std::tuple<const char*, QByteArray, const char*> files[] = {
        {"Style.XRPT", "<style><font>Arial</font></style>", "root element is \"style\", not \"design\""},
        {"Truncated.XRPT", whole.left(whole.size() / 2), "line"},
    };
    const QString pdf = m_dir.filePath(u"x.pdf"_s), resaved = m_dir.filePath(u"out.XRPT"_s);
    for (const auto& [name, bytes, reason] : files) {
        const QString path = m_dir.filePath(QString::fromLatin1(name));
        ASSERT_TRUE(zwtest::WriteFile(path, bytes));
        for (const QString& line : {u"values "_s + path + Period(), u"render %1 -o %2"_s.arg(path, pdf) + Period(),
                 u"render-template %1 --png %2"_s.arg(path, m_dir.filePath(u"png"_s)),
                 u"resave %1 %2"_s.arg(path, resaved), u"view %1 --db %2"_s.arg(path, m_db)}) {
            const Result r = Zw(line);
            EXPECT_EQ(r.status, 1) << line.toStdString() << "\n" << r;
            EXPECT_TRUE(r.err.contains(QString::fromUtf8(reason))) << line.toStdString() << "\n" << r;
            // Refused before gathering: no progress, no value document, no file.
            EXPECT_FALSE(r.err.contains(u"%"_s)) << r;
            EXPECT_TRUE(r.out.isEmpty()) << r;
        }
        EXPECT_FALSE(QFile::exists(pdf));
        EXPECT_FALSE(QFile::exists(resaved));
    }
}

TEST_F(MonthlyReport, ValuesAsXmlJsonAndCsvCarryTheMonthsNumbers)
{
    const Result xml = Zw(u"values "_s + kExample + Period());
    ASSERT_EQ(xml.status, 0) << xml;
    EXPECT_TRUE(xml.out.startsWith(u"<fields><date><id>"_s)) << xml;
    EXPECT_TRUE(xml.out.contains(u"<value>12,345.6</value>"_s));
    EXPECT_EQ(xml.out.count(u"<conditioned>"_s), 2);
    EXPECT_FALSE(xml.err.contains(u"No logged data"_s)) << xml;
    const Result asXml = Zw(u"values "_s + kExample + Period() + u" --format xml"_s);
    EXPECT_EQ(asXml.raw, xml.raw);

    const Result json = Zw(u"values "_s + kExample + Period() + u" --format json"_s);
    ASSERT_EQ(json.status, 0) << json;
    const QJsonArray cards = json.Json().toArray();
    // card formula → shown value, its number
    const std::tuple<QString, QString, double> expected[] = {
        {u"[Main meter.Active energy]"_s, u"12,345.6"_s, 12345.6},
        {u"[Gas meter.Volume]"_s, u"1,234.50"_s, 1234.5},
        {u"TotalEnergy"_s, u"25,370"_s, 25370},
        {u"ElectricityCost"_s, u"2,592.58"_s, 2592.58},
    };
    for (const auto& [text, value, number] : expected) {
        const QJsonObject card = Card(cards, text);
        EXPECT_EQ(card.value(u"kind"_s).toString(), u"formule"_s) << text.toStdString();
        EXPECT_EQ(card.value(u"value"_s).toString(), value) << text.toStdString();
        EXPECT_DOUBLE_EQ(card.value(u"number"_s).toDouble(), number) << text.toStdString();
    }
    // No power data: the formula shows as written and is no number; the
    // chart and table of the trends page carry their points.
    for (const QString& part :
        {uR"("kind":"formule","text":"[Main meter.Active power]","value":"[Main meter.Active power]"})"_s,
            uR"("alternative":{"id":)"_s, uR"("kind":"label","value":"Over budget"})"_s,
            uR"("title":"This period","values":[null,)"_s,
            uR"("total":{"cells":["12,346","1,234.5","32.4","","3,765.35"],"label":"Total"})"_s})
        EXPECT_TRUE(json.out.contains(part)) << part.toStdString() << "\n" << json;

    const Result csv = Zw(u"values "_s + kExample + Period() + u" --format csv"_s);
    ASSERT_EQ(csv.status, 0) << csv;
    EXPECT_TRUE(csv.out.contains(u"},formule,PVShare,25\r\n"_s)) << csv;

    for (const char* bad : {" --format xlsx", " --format yaml"}) {
        const Result r = Zw(u"values "_s + kExample + Period() + QString::fromLatin1(bad));
        EXPECT_EQ(r.status, 2) << bad << "\n" << r;
    }
}

TEST_F(MonthlyReport, ExportWritesEveryFileAskedForAndNamesOneItCannotWrite)
{
    const QString xlsx = m_dir.filePath(u"feb.xlsx"_s), csv = m_dir.filePath(u"feb.csv"_s),
                  json = m_dir.filePath(u"missing/feb.json"_s);
    const Result r = Zw(u"export %1 %2 --xlsx %3 --csv %4 --json %5"_s.arg(kExample, Period(), xlsx, csv, json));
    EXPECT_EQ(r.status, 1) << r;
    EXPECT_EQ(r.out, xlsx + u"\n"_s + csv + u"\n"_s) << r;
    EXPECT_TRUE(r.err.contains(json + u": "_s)) << r;
    EXPECT_FALSE(QFile::exists(json));
    EXPECT_EQ(zwtest::ReadFile(csv), Zw(u"values "_s + kExample + Period() + u" --format csv"_s).raw);

    // Electricity and gas as numbers in the workbook's value column.
    const QString sheet = Tool(u"unzip"_s, {u"-p"_s, xlsx, u"xl/worksheets/sheet1.xml"_s}).out;
    EXPECT_TRUE(sheet.contains(u"<v>12345.6</v>"_s) && sheet.contains(u"<v>1234.5</v>"_s)) << sheet.toStdString();

    EXPECT_EQ(Zw(u"export %1 %2"_s.arg(kExample, Period())).status, 2);
}

TEST_F(MonthlyReport, ABatchRendersEveryMonthAndGoesOnPastOneThatFails)
{
    const QString out = m_dir.filePath(u"out"_s);
    // A folder where May's PDF must go: that month cannot be written.
    ASSERT_TRUE(QDir().mkpath(out + u"/2026/MonthlyEnergy-05.pdf"_s));
    const QString line = u"render %1 --db %2 --each month --from 2026-01-01T00:00:00 --to 2027-01-01T00:00:00 "
                         u"-o %3/{start:yyyy}/{name}-{start:MM}.pdf"_s.arg(kExample, m_db, out);
    const Result r = Zw(line);
    EXPECT_EQ(r.status, 1) << r;
    EXPECT_TRUE(r.out.endsWith(u"12 periods: 11 written, 1 failed\n"_s)) << r;
    EXPECT_EQ(r.out.count(u".pdf\n"_s), 11) << r;
    EXPECT_TRUE(
        r.err.contains(u"2026-05-01T00:00:00 - 2026-06-01T00:00:00: "_s + out + u"/2026/MonthlyEnergy-05.pdf: "_s))
        << r;
    EXPECT_EQ(QDir(out + u"/2026"_s).entryList({u"*.pdf"_s}, QDir::Files).size(), 11);

    // February's PDF holds February's numbers, June's the month's own.
    const Result february = Tool(u"pdftotext"_s, {out + u"/2026/MonthlyEnergy-02.pdf"_s, u"-"_s});
    EXPECT_TRUE(february.out.contains(u"12,345.6"_s)) << february;
    EXPECT_TRUE(february.out.contains(u"01/02/2026 00:00"_s)) << february;
    const Result march = Tool(u"pdftotext"_s, {out + u"/2026/MonthlyEnergy-03.pdf"_s, u"-"_s});
    EXPECT_TRUE(march.out.contains(u"01/03/2026 00:00"_s)) << march;
    EXPECT_FALSE(march.out.contains(u"12,345.6"_s)) << march;

    const std::pair<const char*, QString> usage[] = {
        {"one file for twelve months", u"--each month -o %1/same.pdf"_s.arg(out)},
        {"a placeholder that is none", u"--each month -o %1/{month}.pdf"_s.arg(out)},
        {"a date pattern left open", u"--each month -o %1/{start:yyyy.pdf"_s.arg(out)},
        {"the user unit", u"--each user -o %1/{start}.pdf"_s.arg(out)},
        {"a unit beside --each", u"--each month --unit month -o %1/{start}.pdf"_s.arg(out)},
    };
    for (const auto& [what, args] : usage) {
        const Result bad = Zw(
            u"render %1 --db %2 --from 2026-01-01T00:00:00 --to 2027-01-01T00:00:00 "_s.arg(kExample, m_db) + args);
        EXPECT_EQ(bad.status, 2) << what << "\n" << bad;
    }
    // One period may go to a file without placeholders.
    const Result one = Zw(u"render %1 --db %2 --each 3month --from 2026-01-01T00:00:00 --to 2026-04-01T00:00:00 -o "
                          u"%3/q1.pdf"_s.arg(kExample, m_db, out));
    EXPECT_EQ(one.status, 0) << one;
    EXPECT_TRUE(one.out.endsWith(u"1 period: 1 written, 0 failed\n"_s)) << one;
}

TEST(ExampleReport, MeanPowerFromEnergyAgreesWithTheMeanPowerForEveryUnit)
{
    QTemporaryDir dir;
    const QString db = u"sqlite:"_s + dir.filePath(u"demo.sqlite"_s);
    const Result made = Zw(u"demo-db --db %1 --months 2 --step 15m --until 2026-03-20T09:00:00Z"_s.arg(db));
    ASSERT_EQ(made.status, 0) << made;
    // Today (nine hours of it logged) and this month when no date is given.
    for (const char* period : {"day", "week --date 2026-03-10T12:00:00", "month --date 2026-02-10T12:00:00"}) {
        const Result r = Zw(u"values %1 --db %2 --now 2026-03-20T09:00:00 --format json --unit %3"_s.arg(
            kExample, db, QString::fromLatin1(period)));
        ASSERT_EQ(r.status, 0) << r;
        const QJsonArray cards = r.Json().toArray();
        const double mean = Card(cards, u"[Main meter.Active power]"_s)[u"number"_s].toDouble();
        const double fromEnergy
            = Card(cards, u"[Main meter.Active energy] / [Main meter.Active energy:hours]"_s)[u"number"_s].toDouble();
        ASSERT_GT(mean, 1.0) << period << "\n" << r;
        EXPECT_NEAR(fromEnergy / mean, 1.0, 0.05) << period << ": " << fromEnergy << " kW from energy, " << mean;
    }
}

TEST(PeriodCommand, JsonOfUnitsAndTheUserInterval)
{
    const std::tuple<const char*, int, const char*> cases[] = {
        {"--unit month --date 2026-02-14T10:00:00", 0,
            R"({"start":"2026-02-01T00:00:00","end":"2026-03-01T00:00:00","lengthDays":31})"},
        {"--unit user --from 2026-01-01T06:00:00 --to 2026-01-01T18:00:00", 0,
            R"({"start":"2026-01-01T06:00:00","end":"2026-01-01T18:00:00","lengthDays":0.5})"},
        {"--unit user --from 2026-01-01T06:00:00 --to 2026-01-01T06:59:59", 1, ""},
        {"--unit week --date \"not a date\"", 2, ""},
    };
    for (const auto& [args, status, json] : cases) {
        const Result r = Zw(u"period --json --now 2026-11-21T10:00:00 "_s + QString::fromLatin1(args));
        EXPECT_EQ(r.status, status) << args << "\n" << r;
        EXPECT_EQ(r.out.trimmed(), QString::fromUtf8(json)) << args;
    }
}

TEST(TariffCommand, PrintsTheHourMapOfTheWeekOfADateAndRefusesABadFileAndBadUsage)
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

    const QString bad = dir.filePath(u"bad.xml"_s);
    ASSERT_TRUE(zwtest::WriteFile(bad,
        "<tariffs><calendar><name>6P</name><period>P1</period><period>P2</period>"
        "<rule><hours>0-14</hours><period>P1</period></rule><rule><hours>15-24</hours><period>P2</period></rule>"
        "</calendar></tariffs>"));
    const QString shadow = dir.filePath(u"shadow.xml"_s);
    ASSERT_TRUE(zwtest::WriteFile(shadow,
        "<tariffs><calendar><name>M</name><period>Max</period><rule><period>max</period></rule>"
        "</calendar></tariffs>"));
    const std::tuple<const char*, QString, int, QString> cases[] = {
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
    for (const auto& [what, args, status, err] : cases) {
        r = Zw(args);
        EXPECT_EQ(r.status, status) << what << "\n" << r;
        EXPECT_TRUE(r.err.contains(err)) << what << "\n" << r;
        EXPECT_TRUE(r.out.isEmpty()) << what << "\n" << r;
    }
}

} // namespace
