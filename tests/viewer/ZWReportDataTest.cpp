#include "viewer/ZWReportData.h"
#include "host/core/ZWLocale.h"
#include "host/core/ZWProgress.h"
#include "host/drivers/ZWDriverSupport.h"
#include "host/drivers/ZWLiveValues.h"
#include "tests/support/ZWTestSupport.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

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

class ZWReportDataTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ZWSetLocaleOverride(u"C"_s);
        m_live = std::make_shared<ZWLiveValues>();
        m_live->Set(u"Main meter.Active energy"_s, 12345.678);
        m_live->Set(u"Office.Temperature"_s, 21.5);
        m_live->Set(u"Gas meter.Volume"_s, 1234.5);
        m_live->Set(u"Empty.Value"_s, std::nullopt);
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

TEST_F(ZWReportDataTest, VariablesAreCollectedOnceAndOnlyFromTheFirstCondition)
{
    Gather(uR"(<design><formules>
        <formule><name>Cost</name><text>[Gas meter.Volume] * 0.95</text></formule>
        <formule><name>Bad</name><text>[Lib.Broken] +</text></formule></formules><page>
        <formule><id>1</id><value>[Main meter.Active energy]</value></formule>
        <formule><id>2</id><value>[Main meter.Active energy] * 2</value></formule>
        <formule><id>3</id><value>[Bool.Formula] &gt; 1</value></formule>
        <conditioned><id>C</id>
        <control><condition>[Office.Temperature] &gt; 19</condition><label><id>a</id></label></control>
        <control><condition>[Second.Condition] &gt; 1</condition><label><id>b</id></label></control></conditioned>
        <conditioned><id>D</id>
        <control><condition>[Numeric.Condition] + 1</condition><label><id>c</id></label></control></conditioned>
        </page></design>)"_s);
    // Not a value ("> 1"), nor a condition after the first, nor a numeric one.
    EXPECT_EQ(m_data.LoggerInfo().Variables(),
        (QStringList{u"Gas meter.Volume"_s, u"Main meter.Active energy"_s, u"Office.Temperature"_s}));
}

TEST_F(ZWReportDataTest, FormulaValuesAndTheirFormatsAndTheDatesOfThePeriod)
{
    XmlDocument values;
    ASSERT_TRUE(values.Parse(Gather(uR"(<design><formules>
        <formule><name>Cost</name><text>[Gas meter.Volume] * 2</text></formule></formules><page>
        <formule><id>default</id><value>[Main meter.Active energy]</value></formule>
        <formule><id>T</id><value>[Main meter.Active energy]</value><format>.1</format>
            <thousandSeparator>T</thousandSeparator></formule>
        <formule><id>t</id><value>[Main meter.Active energy]</value><format>.1</format>
            <thousandSeparator>t</thousandSeparator></formule>
        <formule><id>true</id><value>[Main meter.Active energy]</value><format>.1</format>
            <thousandSeparator>true</thousandSeparator></formule>
        <formule><id>lib</id><value>Cost</value><format>.02</format></formule>
        <formule><id>nodata</id><value>[Empty.Value] + 1</value></formule>
        <formule><id>div0</id><value>1/0</value></formule>
        <formule><id>syntax</id><value>2 +</value></formule>
        <formule><id>novalue</id></formule>
        <formule><value>1</value></formule>
        <date><id>begin</id><field>BEGIN_DATE</field></date>
        <date><id>end</id><field>END_DATE</field><format>dd/MM/yyyy</format></date>
        <date><id>now</id><field>ACTUAL_DATE</field><format>"at" hh:mm</format></date>
        <date><id>other</id><field>begin_date</field></date>
        <date><id>fixed</id><value>2024-03-05T09:05:07</value><format>d/M/yyyy</format></date>
        <date><id>text</id><value>end of season</value></date>
        </page></design>)"_s)));
    const std::pair<const char*, const char*> cases[] = {
        {"formule?id=default", "12345.678"}, // ".3"
        {"formule?id=T", "12,345.7"},
        {"formule?id=t", "12345.7"},
        {"formule?id=true", "12345.7"},
        {"formule?id=lib", "2469.00"},
        // A formula that fails shows its own text; one that is no formula shows nothing.
        {"formule?id=nodata", "[Empty.Value] + 1"},
        {"formule?id=div0", "1/0"},
        {"formule?id=syntax", "<none>"},
        {"formule?id=novalue", "<none>"},
        {"date?id=begin", "01/02/2026 00:00:00"},
        // The end is exclusive: February's report ends on 1 March.
        {"date?id=end", "01/03/2026"},
        {"date?id=now", "at 10:30"},
        {"date?id=other", "<none>"},
        {"date?id=fixed", "5/3/2024"},
        {"date?id=text", "end of season"},
    };
    for (const auto& [card, value] : cases)
        EXPECT_EQ(values.Value(u"/"_s + QLatin1String(card) + u"?/value"_s, u"<none>"_s), QString::fromUtf8(value))
            << card;
    EXPECT_EQ(values.Root().Nodes(u"formule"_s).size(), 7u);
}

TEST_F(ZWReportDataTest, TheFirstAlternativeThatHoldsWins)
{
    // The second alternative of "first" holds but has no card: the search goes on.
    EXPECT_EQ(Gather(uR"(<design><page><conditioned><id>none</id>
        <control><condition>[Office.Temperature] &lt; 19</condition><label><id>cold</id></label></control>
        <control><condition>[Office.Temperature] &gt; 26</condition><label><id>warm</id></label></control>
        </conditioned><conditioned><id>first</id>
        <control><condition>1 &gt; 2</condition><label><id>a</id></label></control>
        <control><condition>1 &lt; 2</condition></control>
        <control><condition>[Office.Temperature] &gt;= 19</condition>
        <formule><id>f</id><value>[Office.Temperature]</value><format>.1</format></formule></control>
        <control><condition>1 &lt; 2</condition><label><id>later</id></label></control>
        </conditioned><conditioned><id>numeric</id>
        <control><condition>1 + 1</condition><label><id>n</id></label></control>
        <control><condition>[Empty.Value] &gt; 1</condition><label><id>e</id></label></control>
        <control><condition>!(1 &gt; 2)</condition><image><id>pic</id></image></control>
        </conditioned></page></design>)"_s),
        u"<fields><conditioned><id>none</id></conditioned>"
        u"<conditioned><id>first</id><formule><id>f</id><value>21.5</value></formule></conditioned>"
        u"<conditioned><id>numeric</id><image><id>pic</id></image></conditioned></fields>"_s);
}

TEST_F(ZWReportDataTest, ProgressRunsOverPagesAndCardsAndNoPagesGiveAnEmptyDocument)
{
    RecordingProgress progress;
    // No pages: an empty document and an empty range.
    EXPECT_EQ(Gather(u"<design><name>x</name></design>"_s, &progress), u"<fields/>"_s);
    EXPECT_EQ(progress.range, std::make_pair(0, 0));
    EXPECT_EQ(m_data.LoggerInfo().GetCount(), 0);

    progress.positions.clear();
    const QString design = u"<design><page><formule><id>a</id><value>1</value></formule><formule><id>b</id>"
                           u"<value>2</value></formule><label><id>x</id></label></page><page><formule><id>c</id>"
                           u"<value>3</value></formule></page></design>"_s;
    Gather(design, &progress);
    EXPECT_EQ(progress.range, std::make_pair(0, 200));
    EXPECT_EQ(progress.positions, (std::vector<int>{0, 33, 66, 100, 200}));
}

} // namespace
