// The export of a value document as CSV, JSON and a workbook read back from its zip, by Excel's rules.
#include "viewer/ZWValueExport.h"
#include "host/core/ZWLocale.h"
#include "tests/support/ZWTestSupport.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

TEST(ValueExport, CsvFieldsAreQuotedOnlyWhenTheyMustBe)
{
    const std::pair<QString, QString> cases[] = {{u"plain text"_s, u"plain text"_s}, {u""_s, u""_s},
        {u"1,234.5"_s, u"\"1,234.5\""_s}, {u"say \"hi\""_s, u"\"say \"\"hi\"\"\""_s},
        {u"two\nlines"_s, u"\"two\nlines\""_s}, {u"cr\ronly"_s, u"\"cr\ronly\""_s}, {u"\""_s, u"\"\"\"\""_s},
        {u"semi;colon and 'quote'"_s, u"semi;colon and 'quote'"_s}, {u"ünïcödé €"_s, u"ünïcödé €"_s}};
    for (const auto& [in, out] : cases)
        EXPECT_EQ(ZWValueExport::CsvField(in), out) << in.toStdString();
}

TEST(ValueExport, CardNumberFormatsBecomeExcelNumberFormats)
{
    const std::tuple<const char*, bool, const char*> cases[] = {
        {".2", true, "#,##0.00"}, {".2", false, "0.00"}, {".02", false, "0.00"}, {".0", true, "#,##0"},
        {".0", false, "0"}, {"03.02", false, "000.00"}, {"03.02", true, "#,000.00"}, {"02.1", true, "#,#00.0"},
        {"05.0", true, "00,000"}, {"3.2", false, "0.00"}, // a width without zero filling limits, it does not pad
        {".", false, ""},                                 // up to five decimals: General
        {".", true, "#,##0.#####"}, {"", false, "0.000"}, // no format: three decimals
        {".:", false, "0.000000000"},                     // ":" is 10 decimals, shown as 9
    };
    for (const auto& [format, thousands, excel] : cases)
        EXPECT_EQ(ZWValueExport::ExcelNumberFormat(QString::fromLatin1(format), thousands), QString::fromLatin1(excel))
            << format << (thousands ? " with thousands" : "");
}

TEST(ValueExport, SheetNamesFollowExcelsRules)
{
    QStringList taken{u"Values"_s};
    const std::pair<QString, QString> cases[]
        = {{u"Energy"_s, u"Energy"_s}, {u"energy"_s, u"energy (2)"_s}, // Excel compares names in any case
            {u"Energy"_s, u"Energy (3)"_s}, {u"a[b]c:d*e?f/g\\h"_s, u"a_b_c_d_e_f_g_h"_s},
            {u"A title that is far longer than thirty-one characters"_s, u"A title that is far longer than"_s},
            {u"A title that is far longer than thirty-one characters, again"_s, u"A title that is far longer (2)"_s},
            {u"'quoted'"_s, u"quoted"_s}, {u"History"_s, u"History 1"_s}, {u""_s, u"Sheet"_s},
            {u"VALUES"_s, u"VALUES (2)"_s}};
    for (const auto& [wanted, expected] : cases) {
        const QString name = ZWValueExport::SheetName(wanted, taken);
        EXPECT_EQ(name, expected) << wanted.toStdString();
        EXPECT_LE(name.size(), 31);
    }
}

TEST(ValueExport, ShownNumbersAreReadWithTheLocalesSeparators)
{
    const std::tuple<const char*, QString, std::optional<double>> cases[]
        = {{"en_US", u"12,345.60"_s, 12345.6}, {"en_US", u"-0.5"_s, -0.5}, {"en_US", u"007"_s, 7.0},
            {"es_ES", u"12.345,6"_s, 12345.6}, {"en_US", u"***.**"_s, std::nullopt}, {"en_US", u"inf"_s, std::nullopt},
            {"en_US", u"nan"_s, std::nullopt}, {"en_US", u"1e5"_s, std::nullopt}, {"en_US", u"1.2.3"_s, std::nullopt},
            {"en_US", u"[Main meter.Active power]"_s, std::nullopt}, {"en_US", u""_s, std::nullopt}};
    for (const auto& [locale, shown, number] : cases) {
        ASSERT_TRUE(ZWSetLocaleOverride(QString::fromLatin1(locale)));
        EXPECT_EQ(ZWValueExport::ReadShownNumber(shown), number) << locale << " " << shown.toStdString();
    }
    ZWSetLocaleOverride(u"C"_s);
}

// A report with every kind of card, and values for it as the gathering
// writes them.
const char* kDesign = R"(<design><name>Site</name><page>
<formule><id>F</id><value>[M.E] * 2</value><format>.2</format><thousandSeparator>T</thousandSeparator></formule>
<date><id>D</id><field>BEGIN_DATE</field></date>
<conditioned><id>C</id><control><condition>1</condition>
  <label><id>L</id><value>Over budget</value></label></control></conditioned>
<chart><id>G</id><title>Energy: daily [kWh]</title><format>.1</format><thousandSeparator>T</thousandSeparator></chart>
<table><id>T</id><labelTitle>Day</labelTitle>
  <column><title>Energy</title><format>03.02</format></column>
  <column><title>Cost, "EUR"</title><format>.0</format><thousandSeparator>T</thousandSeparator></column></table>
</page></design>)";

const char* kValues = R"(<fields>
<formule><id>F</id><value>12,345.60</value></formule>
<date><id>D</id><value>01/02/2026</value></date>
<conditioned><id>C</id><label><id>L</id></label></conditioned>
<conditioned><id>C2</id></conditioned>
<formule><id>X</id><value>[No.Such] / 2</value></formule>
<chart><id>G</id><label>01</label><label>02</label><label>03</label>
  <series><title>This year</title><values>12.5;;1234.25</values></series>
  <series><title>Last year</title><values>10;11;0.1</values></series></chart>
<table><id>T</id>
  <row><label>01/03</label><cell>012.50</cell><cell></cell></row>
  <row><label>02/03</label><cell>001.00</cell><cell>1,234</cell></row>
  <total><label>Total</label><cell>013.50</cell><cell>1,234</cell></total></table>
<chart><id>H</id><error>more than 1000 points</error></chart>
</fields>)";

class ValueExportDocument : public testing::Test
{
protected:
    void SetUp() override
    {
        ZWSetLocaleOverride(u"en_US"_s);
        ASSERT_TRUE(m_design.Parse(QByteArray(kDesign)));
        ASSERT_TRUE(m_export.Read(QByteArray(kValues), m_design)) << m_export.Error().toStdString();
    }
    void TearDown() override { ZWSetLocaleOverride(u"C"_s); }

    // One member of the xlsx zip.
    QString Unzip(const QString& xlsx, const QString& member)
    {
        QProcess unzip;
        unzip.start(u"unzip"_s, {u"-p"_s, xlsx, member});
        EXPECT_TRUE(unzip.waitForFinished(30000));
        EXPECT_EQ(unzip.exitCode(), 0) << member.toStdString();
        return QString::fromUtf8(unzip.readAllStandardOutput());
    }

    XmlDocument m_design;
    ZWValueExport m_export;
    QTemporaryDir m_dir;
};

TEST_F(ValueExportDocument, CsvHasARowPerShownValueJsonAnObjectPerCard)
{
    const QString expected = uR"csv(id,kind,text,value
F,formule,[M.E] * 2,"12,345.60"
D,date,BEGIN_DATE,01/02/2026
C,conditioned,L,Over budget
C2,conditioned,,
X,formule,,[No.Such] / 2
G,chart,This year (01),12.5
G,chart,This year (02),
G,chart,This year (03),1234.25
G,chart,Last year (01),10
G,chart,Last year (02),11
G,chart,Last year (03),0.1
T,table,Energy (01/03),012.50
T,table,"Cost, ""EUR"" (01/03)",
T,table,Energy (02/03),001.00
T,table,"Cost, ""EUR"" (02/03)","1,234"
T,table,Energy (Total),013.50
T,table,"Cost, ""EUR"" (Total)","1,234"
H,chart,error,more than 1000 points
)csv"_s;
    EXPECT_EQ(m_export.Csv().toStdString(), QString(expected).replace(u"\n"_s, u"\r\n"_s).toStdString());

    // JSON: an object per card.
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(m_export.Json(), &error);
    ASSERT_EQ(error.error, QJsonParseError::NoError) << m_export.Json().toStdString();
    const QJsonArray cards = doc.array();
    ASSERT_EQ(cards.size(), 8);
    const auto compact = [](const QJsonValue& v) {
        return QString::fromUtf8(QJsonDocument(v.toObject()).toJson(QJsonDocument::Compact));
    };
    EXPECT_EQ(
        compact(cards[0]), uR"({"id":"F","kind":"formule","number":12345.6,"text":"[M.E] * 2","value":"12,345.60"})"_s);
    EXPECT_EQ(compact(cards[2]),
        uR"({"alternative":{"id":"L","kind":"label","value":"Over budget"},"id":"C","kind":"conditioned"})"_s);
    EXPECT_TRUE(cards[3].toObject().value(u"alternative"_s).isNull());
    EXPECT_FALSE(cards[4].toObject().contains(u"number"_s));
    EXPECT_EQ(compact(cards[5]),
        uR"({"id":"G","kind":"chart","labels":["01","02","03"],"series":[{"title":"This year","values":[12.5,null,1234.25]},{"title":"Last year","values":[10,11,0.1]}],"title":"Energy: daily [kWh]"})"_s);
    EXPECT_EQ(compact(cards[6]),
        uR"({"columns":["Energy","Cost, \"EUR\""],"id":"T","kind":"table","rows":[{"cells":["012.50",""],"label":"01/03"},{"cells":["001.00","1,234"],"label":"02/03"}],"total":{"cells":["013.50","1,234"],"label":"Total"}})"_s);
    EXPECT_EQ(cards[7].toObject().value(u"error"_s).toString(), u"more than 1000 points"_s);
}

TEST_F(ValueExportDocument, WorkbookHoldsNumbersWithTheCardsFormatsAndASheetPerChartAndTable)
{
    const QString xlsx = m_dir.filePath(u"values.xlsx"_s);
    QString error;
    ASSERT_TRUE(m_export.Write(xlsx, ZWValueExport::Format::Xlsx, error)) << error.toStdString();

    const QString workbook = Unzip(xlsx, u"xl/workbook.xml"_s);
    for (const char* sheet :
        {"name=\"Values\"", "name=\"Energy_ daily _kWh_\"", "name=\"Table 1\"", "name=\"Chart 2\""})
        EXPECT_TRUE(workbook.contains(QString::fromLatin1(sheet))) << sheet << "\n" << workbook.toStdString();
    const QString styles = Unzip(xlsx, u"xl/styles.xml"_s);
    for (const char* format :
        {"formatCode=\"#,##0.00\"", "formatCode=\"#,##0.0\"", "formatCode=\"000.00\"", "formatCode=\"#,##0\""})
        EXPECT_TRUE(styles.contains(QString::fromLatin1(format))) << format << "\n" << styles.toStdString();
    const QString strings = Unzip(xlsx, u"xl/sharedStrings.xml"_s);
    for (const char* text : {"Over budget", "[No.Such] / 2", "This year (02)", "Cost, \"EUR\"", "Total",
             "more than 1000 points", "01/02/2026"})
        EXPECT_TRUE(strings.contains(QString::fromUtf8(text).toHtmlEscaped().replace(u"&quot;"_s, u"\""_s))) << text;

    // The formula card's value is a number, the failed formula a text. The
    // chart: labels down A, a column per series, the missing point empty.
    // The table: the empty cell stays empty, the total row is read as numbers.
    QString sheets[4];
    for (int i = 1; i <= 3; ++i)
        sheets[i] = Unzip(xlsx, u"xl/worksheets/sheet%1.xml"_s.arg(i));
    for (const auto& [sheet, pattern, present] : {std::tuple(1, uR"(<c r="D2" s=")"_s, true),
             std::tuple(1, u"<v>12345.6</v>"_s, true), std::tuple(1, uR"(<c r="D6" t="s">)"_s, true),
             std::tuple(2, uR"(<c r="B2" s="\d+"><v>12.5</v></c>)"_s, true), std::tuple(2, uR"(r="B3")"_s, false),
             std::tuple(2, uR"(<c r="C4" s="\d+"><v>0.1</v></c>)"_s, true), std::tuple(3, uR"(r="C2")"_s, false),
             std::tuple(3, u"<v>1234</v>"_s, true), std::tuple(3, uR"(<c r="B4" s=")"_s, true),
             std::tuple(3, u"<v>13.5</v>"_s, true)})
        EXPECT_EQ(sheets[sheet].contains(QRegularExpression(pattern)), present) << pattern.toStdString() << "\n"
                                                                                << sheets[sheet].toStdString();
}

TEST_F(ValueExportDocument, AFileThatCannotBeWrittenLeavesWhatWasThere)
{
    const QString path = m_dir.filePath(u"values.csv"_s);
    ASSERT_TRUE(zwtest::WriteFile(path, "before"));
    QString error;
    ASSERT_TRUE(m_export.Write(path, ZWValueExport::Format::Csv, error));
    EXPECT_TRUE(zwtest::ReadFile(path).startsWith("id,kind,text,value\r\n"));

    // A folder where the file should be, a folder that does not exist.
    ASSERT_TRUE(QDir(m_dir.path()).mkdir(u"taken.json"_s));
    for (const QString& bad : {m_dir.filePath(u"taken.json"_s), m_dir.filePath(u"none/values.xlsx"_s)}) {
        const ZWValueExport::Format format = *ZWValueExport::FormatOfPath(bad);
        EXPECT_FALSE(m_export.Write(bad, format, error)) << bad.toStdString();
        EXPECT_FALSE(error.isEmpty());
    }
    EXPECT_TRUE(QFileInfo(m_dir.filePath(u"taken.json"_s)).isDir());
    EXPECT_FALSE(QFile::exists(m_dir.filePath(u"none"_s)));

    ZWValueExport notValues;
    EXPECT_FALSE(notValues.Read("<design/>"));
    EXPECT_FALSE(notValues.Read("<fields><formule>"));
    EXPECT_EQ(ZWValueExport::FormatOfPath(u"a/b.XLSX"_s), ZWValueExport::Format::Xlsx);
    EXPECT_EQ(ZWValueExport::FormatOfPath(u"a/b.pdf"_s), std::nullopt);
}

} // namespace
