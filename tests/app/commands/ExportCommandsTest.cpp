// The value export and batch rendering as a user runs them: the example
// monthly report over a SQLite file with a known month, its values as JSON,
// CSV and a workbook, and a year of monthly PDFs in one run.
#include "tests/app/commands/ProgramRun.h"
#include "tests/support/ZWTestSupport.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

using Result = zwtest::ProgramResult;

Result Zw(const QString& commandLine)
{
    zwtest::RunOptions options;
    options.environment = {{u"ZWINFORMES_DB"_s, QString()}};
    return zwtest::RunProgram(zwtest::Args(u"--tz UTC --locale en_US "_s + commandLine), options);
}

QString Unzip(const QString& zip, const QString& member)
{
    return zwtest::RunProgram({u"-p"_s, zip, member}, {}, u"unzip"_s).out;
}

const QString kExample = zwtest::SourcePath(u"examples/reports/MonthlyEnergy.XRPT"_s);

class ExportCommands : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        const Result imported = zwtest::ImportFebruarySite(m_dir.path(), m_db);
        ASSERT_EQ(imported.status, 0) << imported;
    }

    QString February() const
    {
        return u" --db %1 --unit month --date 2026-02-14T08:00:00 --now 2026-11-21T10:00:00"_s.arg(m_db);
    }

    QTemporaryDir m_dir;
    const QString m_db = u"sqlite:"_s + m_dir.filePath(u"site.sqlite"_s);
};

TEST_F(ExportCommands, ValuesAsJsonAndCsvCarryTheMonthsNumbers)
{
    const Result xml = Zw(u"values "_s + kExample + February());
    ASSERT_EQ(xml.status, 0) << xml;
    const Result asXml = Zw(u"values "_s + kExample + February() + u" --format xml"_s);
    EXPECT_EQ(asXml.raw, xml.raw);

    const Result json = Zw(u"values "_s + kExample + February() + u" --format json"_s);
    ASSERT_EQ(json.status, 0) << json;
    const QJsonArray cards = json.Json().toArray();
    EXPECT_EQ(cards.size(),
        xml.out.count(u"<formule>"_s) + xml.out.count(u"<date>"_s) + xml.out.count(u"<conditioned>"_s)
            + xml.out.count(u"<chart>"_s) + xml.out.count(u"<table>"_s));
    // card formula → shown value, its number
    const struct
    {
        QString text;
        QString value;
        double number;
    } expected[] = {
        {u"[Main meter.Active energy]"_s, u"12,345.6"_s, 12345.6},
        {u"[Gas meter.Volume]"_s, u"1,234.50"_s, 1234.5},
        {u"TotalEnergy"_s, u"25,370"_s, 25370},
        {u"ElectricityCost"_s, u"2,592.58"_s, 2592.58},
    };
    for (const auto& e : expected) {
        QJsonObject card;
        for (const QJsonValue& c : cards)
            if (card.isEmpty() && c.toObject().value(u"text"_s).toString() == e.text)
                card = c.toObject();
        EXPECT_EQ(card.value(u"kind"_s).toString(), u"formule"_s) << e.text.toStdString();
        EXPECT_EQ(card.value(u"value"_s).toString(), e.value) << e.text.toStdString();
        EXPECT_DOUBLE_EQ(card.value(u"number"_s).toDouble(), e.number) << e.text.toStdString();
    }
    // No power data: the formula shows as written and is no number; the
    // chart and table of the trends page carry their points.
    for (const QString& part :
        {uR"("kind":"formule","text":"[Main meter.Active power]","value":"[Main meter.Active power]"})"_s,
            uR"("alternative":{"id":)"_s, uR"("kind":"label","value":"Over budget"})"_s,
            uR"("title":"This period","values":[null,)"_s,
            uR"("total":{"cells":["12,346","1,234.5","32.4","","3,765.35"],"label":"Total"})"_s})
        EXPECT_TRUE(json.out.contains(part)) << part.toStdString() << "\n" << json;

    const Result csv = Zw(u"values "_s + kExample + February() + u" --format csv"_s);
    ASSERT_EQ(csv.status, 0) << csv;
    EXPECT_TRUE(csv.out.startsWith(u"id,kind,text,value\r\n"_s));
    for (const QString& line : {u"},formule,[Main meter.Active energy],\"12,345.6\"\r\n"_s,
             u"},date,BEGIN_DATE,01/02/2026 00:00\r\n"_s, u"},Over budget\r\n"_s, u"},formule,PVShare,25\r\n"_s,
             u"},chart,This period (14),5000\r\n"_s, u"},table,Electricity kWh (Total),\"12,346\"\r\n"_s})
        EXPECT_TRUE(csv.out.contains(line)) << line.toStdString() << "\n" << csv;

    for (const char* bad : {" --format xlsx", " --format yaml"}) {
        const Result r = Zw(u"values "_s + kExample + February() + QString::fromLatin1(bad));
        EXPECT_EQ(r.status, 2) << bad << "\n" << r;
    }
}

TEST_F(ExportCommands, ExportWritesEveryFileAskedForAndNamesOneItCannotWrite)
{
    const QString xlsx = m_dir.filePath(u"feb.xlsx"_s), csv = m_dir.filePath(u"feb.csv"_s),
                  json = m_dir.filePath(u"missing/feb.json"_s);
    const Result r = Zw(u"export %1 %2 --xlsx %3 --csv %4 --json %5"_s.arg(kExample, February(), xlsx, csv, json));
    EXPECT_EQ(r.status, 1) << r;
    EXPECT_EQ(r.out, xlsx + u"\n"_s + csv + u"\n"_s) << r;
    EXPECT_TRUE(r.err.contains(json + u": "_s)) << r;
    EXPECT_FALSE(QFile::exists(json));
    EXPECT_EQ(zwtest::ReadFile(csv), Zw(u"values "_s + kExample + February() + u" --format csv"_s).raw);

    // Electricity with one decimal and gas with two, as numbers in the
    // workbook's value column, each with its card's format.
    const QString sheet = Unzip(xlsx, u"xl/worksheets/sheet1.xml"_s);
    EXPECT_TRUE(sheet.contains(u"<v>12345.6</v>"_s)) << sheet.toStdString();
    EXPECT_TRUE(sheet.contains(u"<v>1234.5</v>"_s)) << sheet.toStdString();
    const QString styles = Unzip(xlsx, u"xl/styles.xml"_s);
    for (const char* format : {"formatCode=\"#,##0.0\"", "formatCode=\"#,##0.00\"", "formatCode=\"#,##0.0000\""})
        EXPECT_TRUE(styles.contains(QString::fromLatin1(format))) << format << "\n" << styles.toStdString();
    EXPECT_TRUE(Unzip(xlsx, u"xl/sharedStrings.xml"_s).contains(u"Over budget"_s));

    EXPECT_EQ(Zw(u"export %1 %2"_s.arg(kExample, February())).status, 2);
}

TEST_F(ExportCommands, ABatchRendersEveryMonthAndGoesOnPastOneThatFails)
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
    const Result february = zwtest::RunProgram({out + u"/2026/MonthlyEnergy-02.pdf"_s, u"-"_s}, {}, u"pdftotext"_s);
    EXPECT_TRUE(february.out.contains(u"12,345.6"_s)) << february;
    EXPECT_TRUE(february.out.contains(u"01/02/2026 00:00"_s)) << february;
    const Result march = zwtest::RunProgram({out + u"/2026/MonthlyEnergy-03.pdf"_s, u"-"_s}, {}, u"pdftotext"_s);
    EXPECT_TRUE(march.out.contains(u"01/03/2026 00:00"_s)) << march;
    EXPECT_FALSE(march.out.contains(u"12,345.6"_s)) << march;

    const struct
    {
        const char* what;
        QString args;
    } usage[] = {
        {"one file for twelve months", u"--each month -o %1/same.pdf"_s.arg(out)},
        {"a placeholder that is none", u"--each month -o %1/{month}.pdf"_s.arg(out)},
        {"a date pattern left open", u"--each month -o %1/{start:yyyy.pdf"_s.arg(out)},
        {"the user unit", u"--each user -o %1/{start}.pdf"_s.arg(out)},
        {"a unit beside --each", u"--each month --unit month -o %1/{start}.pdf"_s.arg(out)},
    };
    for (const auto& u : usage) {
        const Result bad = Zw(
            u"render %1 --db %2 --from 2026-01-01T00:00:00 --to 2027-01-01T00:00:00 "_s.arg(kExample, m_db) + u.args);
        EXPECT_EQ(bad.status, 2) << u.what << "\n" << bad;
    }
    // One period may go to a file without placeholders.
    const Result one = Zw(u"render %1 --db %2 --each 3month --from 2026-01-01T00:00:00 --to 2026-04-01T00:00:00 -o "
                          u"%3/q1.pdf"_s.arg(kExample, m_db, out));
    EXPECT_EQ(one.status, 0) << one;
    EXPECT_TRUE(one.out.endsWith(u"1 period: 1 written, 0 failed\n"_s)) << one;
}

} // namespace
