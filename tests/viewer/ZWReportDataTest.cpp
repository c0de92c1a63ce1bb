#include "viewer/ZWReportData.h"
#include "host/core/ZWLocale.h"
#include "host/core/ZWProgress.h"
#include "host/drivers/ZWDriverSupport.h"
#include "host/drivers/ZWLiveValues.h"
#include "tests/support/ZWTestSupport.h"

#include <gtest/gtest.h>

namespace {

struct RecordingProgress : ZWProgress
{
    void SetText(const QString& t) override { text = t; }
    void SetRange(int a, int b) override { range = {a, b}; }
    void SetPos(int p) override { positions.push_back(p); }
    void End(bool) override {}
    QString text;
    std::pair<int, int> range{-1, -1};
    std::vector<int> positions;
};

QString Card(const QString& kind, const QString& id, const QString& body)
{
    return QStringLiteral("<%1><id>%2</id>%3</%1>").arg(kind, id, body);
}

QString Formule(const QString& id, const QString& formula, const QString& extra = QString())
{
    return Card(
        QStringLiteral("formule"), id, QStringLiteral("<value>%1</value>").arg(formula.toHtmlEscaped()) + extra);
}

class ZWReportDataTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ZWSetLocaleOverride(QStringLiteral("C"));
        m_live = std::make_shared<ZWLiveValues>();
        m_live->Set(QStringLiteral("Main meter.Active energy"), 12345.678);
        m_live->Set(QStringLiteral("Office.Temperature"), 21.5);
        m_live->Set(QStringLiteral("Gas meter.Volume"), 1234.5);
        m_live->Set(QStringLiteral("Empty.Value"), std::nullopt);
        ZWDriverSupport::SetStore(m_live);
    }
    void TearDown() override { ZWDriverSupport::SetStore(nullptr); }

    // Loads a design, finds its variables and gathers February 2026.
    QString Gather(const QString& designXml, RecordingProgress* progress = nullptr)
    {
        XmlDocument design;
        EXPECT_TRUE(design.Parse(designXml)) << designXml.toStdString();
        m_data.SetLoggerData(std::make_unique<ZWLoggerData>(m_live));
        m_data.SetDesign(design);
        const ZWDateTime now = ZWDateTime::FromDMY(2026, 11, 21, 10, 30, 0);
        m_data.SetNow(now);
        m_data.Period().Reset(ID_GROUPBY_MONTH);
        m_data.Period().SetupData(ZWDateTime::FromDMY(2026, 2, 10), ID_GROUPBY_MONTH, false, now);
        EXPECT_TRUE(m_data.SetupDataWork(true, progress));
        return QString::fromUtf8(m_data.ValueDocument());
    }

    std::shared_ptr<ZWLiveValues> m_live;
    ZWReportData m_data;
};

TEST_F(ZWReportDataTest, NoPagesGivesAnEmptyDocumentAndAnEmptyRange)
{
    RecordingProgress progress;
    EXPECT_EQ(Gather(QStringLiteral("<design><name>x</name></design>"), &progress), QStringLiteral("<fields/>"));
    EXPECT_EQ(progress.range, std::make_pair(0, 0));
    EXPECT_EQ(m_data.LoggerInfo().GetCount(), 0);
}

TEST_F(ZWReportDataTest, VariablesAreCollectedOnceAndOnlyFromTheFirstCondition)
{
    const QString design = QStringLiteral("<design><formules>"
                                          "<formule><name>Cost</name><text>[Gas meter.Volume] * 0.95</text></formule>"
                                          "<formule><name>Bad</name><text>[Lib.Broken] +</text></formule>"
                                          "</formules><page>")
        + Formule(QStringLiteral("1"), QStringLiteral("[Main meter.Active energy]"))
        + Formule(QStringLiteral("2"), QStringLiteral("[Main meter.Active energy] * 2"))
        + Formule(QStringLiteral("3"), QStringLiteral("[Bool.Formula] > 1")) // not a value: nothing
        + QStringLiteral(
            "<conditioned><id>C</id>"
            "<control><condition>[Office.Temperature] &gt; 19</condition><label><id>a</id></label></control>"
            "<control><condition>[Second.Condition] &gt; 1</condition><label><id>b</id></label></control>"
            "</conditioned>"
            "<conditioned><id>D</id>"
            "<control><condition>[Numeric.Condition] + 1</condition><label><id>c</id></label></control>"
            "</conditioned></page></design>");
    Gather(design);
    EXPECT_EQ(m_data.LoggerInfo().Variables(),
        (QStringList{QStringLiteral("Gas meter.Volume"), QStringLiteral("Main meter.Active energy"),
            QStringLiteral("Office.Temperature")}));
}

TEST_F(ZWReportDataTest, FormulaValuesAndTheirFormats)
{
    const QString design = QStringLiteral("<design><formules>"
                                          "<formule><name>Cost</name><text>[Gas meter.Volume] * 2</text></formule>"
                                          "</formules><page>")
        + Formule(QStringLiteral("default"), QStringLiteral("[Main meter.Active energy]")) // ".3"
        + Formule(QStringLiteral("T"), QStringLiteral("[Main meter.Active energy]"),
            QStringLiteral("<format>.1</format><thousandSeparator>T</thousandSeparator>"))
        + Formule(QStringLiteral("t"), QStringLiteral("[Main meter.Active energy]"),
            QStringLiteral("<format>.1</format><thousandSeparator>t</thousandSeparator>"))
        + Formule(QStringLiteral("true"), QStringLiteral("[Main meter.Active energy]"),
            QStringLiteral("<format>.1</format><thousandSeparator>true</thousandSeparator>"))
        + Formule(QStringLiteral("lib"), QStringLiteral("Cost"), QStringLiteral("<format>.02</format>"))
        + Formule(QStringLiteral("nodata"), QStringLiteral("[Empty.Value] + 1"))
        + Formule(QStringLiteral("div0"), QStringLiteral("1/0"))
        + Formule(QStringLiteral("syntax"), QStringLiteral("2 +"))
        + Card(QStringLiteral("formule"), QStringLiteral("novalue"), QString())
        + QStringLiteral("<formule><value>1</value></formule>") // no id: nothing
        + QStringLiteral("</page></design>");
    XmlDocument values;
    ASSERT_TRUE(values.Parse(Gather(design)));
    const auto value = [&values](const char* id) {
        return values.Node(QStringLiteral("/formule?id=%s?"), QString::fromLatin1(id))
            .Value(QStringLiteral("/value"), QStringLiteral("<none>"));
    };
    EXPECT_EQ(value("default"), QStringLiteral("12345.678"));
    EXPECT_EQ(value("T"), QStringLiteral("12,345.7"));
    EXPECT_EQ(value("t"), QStringLiteral("12345.7"));
    EXPECT_EQ(value("true"), QStringLiteral("12345.7"));
    EXPECT_EQ(value("lib"), QStringLiteral("2469.00"));
    // A formula that fails shows its own text; one that is no formula shows nothing.
    EXPECT_EQ(value("nodata"), QStringLiteral("[Empty.Value] + 1"));
    EXPECT_EQ(value("div0"), QStringLiteral("1/0"));
    EXPECT_EQ(value("syntax"), QStringLiteral("<none>"));
    EXPECT_EQ(value("novalue"), QStringLiteral("<none>"));
    EXPECT_EQ(values.Root().Children().size(), 7u);
}

TEST_F(ZWReportDataTest, DatesOfThePeriod)
{
    const QString design = QStringLiteral("<design><page>")
        + Card(QStringLiteral("date"), QStringLiteral("begin"), QStringLiteral("<field>BEGIN_DATE</field>"))
        + Card(QStringLiteral("date"), QStringLiteral("end"),
            QStringLiteral("<field>END_DATE</field><format>dd/MM/yyyy</format>"))
        + Card(QStringLiteral("date"), QStringLiteral("now"),
            QStringLiteral("<field>ACTUAL_DATE</field><format>\"at\" hh:mm</format>"))
        + Card(QStringLiteral("date"), QStringLiteral("other"), QStringLiteral("<field>begin_date</field>"))
        + Card(QStringLiteral("date"), QStringLiteral("fixed"),
            QStringLiteral("<value>2024-03-05T09:05:07</value><format>d/M/yyyy</format>"))
        + Card(QStringLiteral("date"), QStringLiteral("text"), QStringLiteral("<value>end of season</value>"))
        + QStringLiteral("</page></design>");
    XmlDocument values;
    ASSERT_TRUE(values.Parse(Gather(design)));
    const auto value = [&values](const char* id) {
        return values.Node(QStringLiteral("/date?id=%s?"), QString::fromLatin1(id))
            .Value(QStringLiteral("/value"), QStringLiteral("<none>"));
    };
    EXPECT_EQ(value("begin"), QStringLiteral("01/02/2026 00:00:00"));
    // The end is exclusive: February's report ends on 1 March.
    EXPECT_EQ(value("end"), QStringLiteral("01/03/2026"));
    EXPECT_EQ(value("now"), QStringLiteral("at 10:30"));
    EXPECT_EQ(value("other"), QStringLiteral("<none>"));
    EXPECT_EQ(value("fixed"), QStringLiteral("5/3/2024"));
    EXPECT_EQ(value("text"), QStringLiteral("end of season"));
}

TEST_F(ZWReportDataTest, TheFirstAlternativeThatHoldsWins)
{
    const QString design = QStringLiteral(
        "<design><page>"
        "<conditioned><id>none</id>"
        "<control><condition>[Office.Temperature] &lt; 19</condition><label><id>cold</id></label></control>"
        "<control><condition>[Office.Temperature] &gt; 26</condition><label><id>warm</id></label></control>"
        "</conditioned>"
        "<conditioned><id>first</id>"
        "<control><condition>1 &gt; 2</condition><label><id>a</id></label></control>"
        // Holds, but has no card: the search goes on.
        "<control><condition>1 &lt; 2</condition></control>"
        "<control><condition>[Office.Temperature] &gt;= 19</condition>"
        "<formule><id>f</id><value>[Office.Temperature]</value><format>.1</format></formule></control>"
        "<control><condition>1 &lt; 2</condition><label><id>later</id></label></control>"
        "</conditioned>"
        "<conditioned><id>numeric</id>"
        "<control><condition>1 + 1</condition><label><id>n</id></label></control>"
        "<control><condition>[Empty.Value] &gt; 1</condition><label><id>e</id></label></control>"
        "<control><condition>!(1 &gt; 2)</condition><image><id>pic</id></image></control>"
        "</conditioned>"
        "</page></design>");
    EXPECT_EQ(Gather(design),
        QStringLiteral("<fields>"
                       "<conditioned><id>none</id></conditioned>"
                       "<conditioned><id>first</id><formule><id>f</id><value>21.5</value></formule></conditioned>"
                       "<conditioned><id>numeric</id><image><id>pic</id></image></conditioned>"
                       "</fields>"));
}

TEST_F(ZWReportDataTest, ProgressRunsOverPagesAndCards)
{
    RecordingProgress progress;
    const QString design = QStringLiteral("<design><page>") + Formule(QStringLiteral("a"), QStringLiteral("1"))
        + Formule(QStringLiteral("b"), QStringLiteral("2")) + QStringLiteral("<label><id>x</id></label></page><page>")
        + Formule(QStringLiteral("c"), QStringLiteral("3")) + QStringLiteral("</page></design>");
    Gather(design, &progress);
    EXPECT_EQ(progress.range, std::make_pair(0, 200));
    EXPECT_EQ(progress.positions, (std::vector<int>{0, 33, 66, 100, 200}));
}

} // namespace
