#include "host/core/ZWLocalTime.h"
#include "host/core/ZWLocale.h"
#include "host/drivers/ZWDriverSupport.h"
#include "tests/host/store/ZWStoreTestSupport.h"
#include "tests/support/ZWTestSupport.h"
#include "viewer/ZWReportData.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

// A meter that counts 1 kWh an hour through 2025 and 2 kWh an hour from
// 2026, sampled on every hour of January to March of both years.
class SeriesGatheringTest : public zwtest::StoreTest
{
protected:
    void SetUp() override
    {
        zwtest::StoreTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        ZWSetLocaleOverride(u"C"_s);
        zwtest::Samples samples;
        for (const int year : {2025, 2026}) {
            const qint64 from = ZWLocalTime::ToUtc(ZWDateTime::FromDMY(year, 1, 1));
            const qint64 to = ZWLocalTime::ToUtc(ZWDateTime::FromDMY(year, 3, 31));
            const double perHour = year == 2025 ? 1.0 : 2.0;
            const double base = year == 2025 ? 1000.0 : 50000.0;
            for (qint64 t = from; t <= to; t += 3600)
                samples.emplace_back(t, base + perHour * double((t - from) / 3600));
        }
        Write(u"M.E"_s, ZWSqlLoggerStore::Kind::Counter, samples);
    }

    // The value document of February 2026 for a page of `cards`.
    XmlDocument Gather(const QString& cards, bool expectRead = true)
    {
        XmlDocument design;
        EXPECT_TRUE(design.Parse(u"<design><formules><formule><name>Price</name><text>0.5</text></formule>"
                                 "<formule><name>Cost</name><text>[M.E] * Price</text></formule></formules><page>"_s
            + cards + u"</page></design>"_s));
        ZWReportData data;
        std::shared_ptr<ZWSqlLoggerStore> store(m_store.release());
        // Formulas know device variables through the installed store.
        ZWDriverSupport::SetStore(store);
        data.SetLoggerData(std::make_unique<ZWLoggerData>(store));
        data.SetDesign(design);
        const ZWDateTime now = ZWDateTime::FromDMY(2026, 11, 21);
        data.Period().Reset(ID_GROUPBY_MONTH);
        data.Period().SetupData(ZWDateTime::FromDMY(2026, 2, 10), ID_GROUPBY_MONTH, false, now);
        const int before = store->PeriodQueryCount();
        EXPECT_EQ(data.SetupDataWork(true, nullptr), expectRead) << data.LastError().toStdString();
        m_queries = store->PeriodQueryCount() - before;
        ZWDriverSupport::SetStore(nullptr);
        XmlDocument values;
        EXPECT_TRUE(values.Parse(QString::fromUtf8(data.ValueDocument())));
        return values;
    }

    static QStringList Texts(const XmlDocument::XmlNode& node, const QString& child)
    {
        QStringList out;
        for (const XmlDocument::XmlNode& n : node.Nodes(child))
            out << n.Text();
        return out;
    }

    int m_queries = 0;
};

TEST_P(SeriesGatheringTest, ChartSeriesAreTheirFormulasOverEveryDayAndOverTheSameDaysAYearBefore)
{
    const XmlDocument values = Gather(u"<chart><id>C</id><unit>day</unit>"
                                      "<series><title>This year</title><formula>[M.E]</formula></series>"
                                      "<series><title>Cost</title><formula>Cost</formula></series>"
                                      "<series><title>Last year</title><formula>[M.E]</formula><shift>-1y</shift>"
                                      "</series></chart>"_s);
    const XmlDocument::XmlNode chart = values.Node(u"/chart"_s);
    ASSERT_FALSE(chart.IsNull()) << values.ToXml().toStdString();
    const QStringList labels = Texts(chart, u"label"_s);
    ASSERT_EQ(labels.size(), 28);
    EXPECT_EQ(labels.front(), u"01"_s);
    EXPECT_EQ(labels.back(), u"28"_s);
    const std::vector<XmlDocument::XmlNode> series = chart.Nodes(u"series"_s);
    ASSERT_EQ(series.size(), 3u);
    const QString expected[] = {u"48"_s, u"24"_s, u"24"_s};
    for (size_t s = 0; s < series.size(); ++s) {
        const QStringList points = series[s].Value(u"/values"_s).split(u';');
        EXPECT_EQ(points, QStringList(28, expected[s])) << s;
    }
    EXPECT_EQ(series[2].Value(u"/title"_s), u"Last year"_s);
    // One query for the period (the library's variables), one for its days
    // and one for the same days a year before.
    EXPECT_EQ(m_queries, 3);
}

TEST_P(SeriesGatheringTest, TableRowsAreCalendarWeeksCutToTheMonthWithTheirTotals)
{
    const XmlDocument values = Gather(u"<table><id>T</id><unit>week</unit><labelFormat>dd/MM</labelFormat>"
                                      "<total>sum</total><totalTitle>All</totalTitle>"
                                      "<column><formula>[M.E]</formula><format>.0</format></column>"
                                      "<column><formula>[M.E]</formula><format>.01</format><total>max</total></column>"
                                      "<column><formula>[M.E]</formula><shift>-1y</shift><format>.0</format>"
                                      "<total>none</total></column></table>"_s);
    const XmlDocument::XmlNode table = values.Node(u"/table"_s);
    ASSERT_FALSE(table.IsNull()) << values.ToXml().toStdString();
    QStringList rows;
    for (const XmlDocument::XmlNode& row : table.Nodes(u"row"_s))
        rows << row.Value(u"/label"_s) + u' ' + Texts(row, u"cell"_s).join(u' ');
    // 1 February 2026 is a Sunday; the last week is cut at 1 March. The
    // year-before column goes by position: the weeks of February 2025,
    // which starts on a Saturday.
    EXPECT_EQ(rows,
        QStringList({u"01/02 48 48.0 48"_s, u"02/02 336 336.0 168"_s, u"09/02 336 336.0 168"_s,
            u"16/02 336 336.0 168"_s, u"23/02 288 288.0 120"_s}));
    const XmlDocument::XmlNode total = table.Node(u"/total"_s);
    EXPECT_EQ(total.Value(u"/label"_s) + u' ' + Texts(total, u"cell"_s).join(u' '), u"All 1344 336.0 "_s);
}

TEST_P(SeriesGatheringTest, CardsBeyondTheirBoundsOrWithABadShiftCarryAnErrorInstead)
{
    const XmlDocument values = Gather(u"<table><id>H</id><unit>hour</unit><column><formula>[M.E]</formula></column>"
                                      "</table><chart><id>S</id><series><formula>[M.E]</formula><shift>-1x</shift>"
                                      "</series></chart><chart><id>Ok</id><unit>hour</unit>"
                                      "<series><formula>[M.E]</formula></series></chart>"_s);
    EXPECT_TRUE(values.Node(u"/table/error"_s).Text().startsWith(u"672 rows in one table; at most 100"_s));
    const std::vector<XmlDocument::XmlNode> charts = values.Root().Nodes(u"chart"_s);
    ASSERT_EQ(charts.size(), 2u);
    EXPECT_TRUE(charts[0].Value(u"/error"_s).contains(u"-1x"_s));
    const XmlDocument::XmlNode& hourly = charts[1];
    EXPECT_TRUE(hourly.Node(u"/error"_s).IsNull());
    EXPECT_EQ(hourly.Nodes(u"label"_s).size(), 672u);
}

INSTANTIATE_TEST_SUITE_P(Store, SeriesGatheringTest, testing::Values(zwtest::Backend::SQLite), zwtest::BackendName);

} // namespace
