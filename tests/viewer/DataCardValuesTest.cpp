// A value document's chart and table entries put into their cards, gaps, errors and limits included.
#include "host/core/ZWNoValue.h"
#include "template/ZWCardChart.h"
#include "template/ZWCardTable.h"
#include "tests/template/TemplateTestSupport.h"
#include "viewer/ZWViewPage.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

class DataCardValues : public testing::Test
{
protected:
    void SetUp() override
    {
        ZWTemplatePage page;
        auto chart = std::make_unique<ZWCardChart>();
        chart->id = u"C"_s;
        chart->series = {{u"E"_s, u"1"_s, 0, QString()}, {u"E-1"_s, u"1"_s, 0, u"-1"_s}};
        page.cards.push_back(std::move(chart));
        auto table = std::make_unique<ZWCardTable>();
        table->id = u"T"_s;
        table->columns.resize(2);
        page.cards.push_back(std::move(table));
        XmlDocument doc;
        doc.Create(u"design"_s);
        page.SaveTemplate(doc.Root());
        m_view = std::make_unique<ZWViewPage>();
        m_view->SetTemplate(doc.Root().Node(u"page"_s));
    }
    ZWCardChart& Chart() { return static_cast<ZWCardChart&>(*m_view->Page().cards[0]); }
    ZWCardTable& Table() { return static_cast<ZWCardTable&>(*m_view->Page().cards[1]); }
    bool Apply(const QString& entries)
    {
        return m_view->SetUserData((u"<fields>"_s + entries + u"</fields>"_s).toUtf8());
    }

    std::unique_ptr<ZWViewPage> m_view;
};

QString Repeat(const QString& pattern, int count)
{
    QString out;
    for (int i = 0; i < count; ++i)
        out += pattern.arg(i);
    return out;
}

TEST_F(DataCardValues, ChartEntriesGiveLabelsAndValuesWithGaps)
{
    EXPECT_FALSE(Chart().HasValues());
    ASSERT_TRUE(Apply(u"<chart><id>C</id><label>01</label><label>02</label><label>03</label><label>04</label>"
                      u"<series><title>E</title><values>12.5;13;;14.25</values></series>"
                      u"<series><title>E-1</title><values>1e3; x ;-0.5</values></series></chart>"_s));
    EXPECT_TRUE(Chart().HasValues());
    EXPECT_EQ(Chart().Labels(), (QStringList{u"01"_s, u"02"_s, u"03"_s, u"04"_s}));
    // A value that is no number is a gap, not a refusal of the chart.
    EXPECT_EQ(Chart().Values(),
        (std::vector<std::vector<double>>{{12.5, 13.0, ZW_NO_VALUE, 14.25}, {1000.0, ZW_NO_VALUE, -0.5}}));
    EXPECT_TRUE(Chart().Error().isEmpty());

    // The next period's document replaces everything, the error included.
    ASSERT_TRUE(Apply(u"<chart><id>C</id><error>The series cannot be read</error></chart>"_s));
    EXPECT_TRUE(Chart().Labels().isEmpty());
    EXPECT_EQ(Chart().Error(), u"The series cannot be read"_s);
    ASSERT_TRUE(Apply(u"<chart><id>C</id><label>a</label><series><values>1</values></series></chart>"_s));
    EXPECT_TRUE(Chart().Error().isEmpty());
}

TEST_F(DataCardValues, TableEntriesGiveRowsAndTheTotalsRow)
{
    ASSERT_TRUE(Apply(u"<table><id>T</id><row><label>01/03</label><cell>12.50</cell><cell></cell></row>"
                      u"<row><label>02/03</label><cell>1,234.00</cell><cell>7</cell><cell>extra</cell></row>"
                      u"<total><label>Total</label><cell>1,246.50</cell><cell>7</cell></total></table>"_s));
    ASSERT_EQ(Table().Rows().size(), 2u);
    EXPECT_EQ(Table().Rows()[0], (ZWCardTable::Row{u"01/03"_s, {u"12.50"_s, QString()}}));
    EXPECT_EQ(Table().Rows()[1].cells, (QStringList{u"1,234.00"_s, u"7"_s, u"extra"_s}));
    ASSERT_TRUE(Table().HasTotalRow());
    EXPECT_EQ(Table().TotalRow(), (ZWCardTable::Row{u"Total"_s, {u"1,246.50"_s, u"7"_s}}));

    ASSERT_TRUE(Apply(u"<table><id>T</id><row><label>a</label></row></table>"_s));
    EXPECT_FALSE(Table().HasTotalRow()); // a total of "none" sends no totals row
}

TEST_F(DataCardValues, EntriesBeyondTheLimitsAreDroppedAndTheCardSaysSo)
{
    struct Case
    {
        const char* what;
        QString entries;
        size_t points, rows; // kept
        bool chartError, tableError;
    };
    const QString thousandValues = QStringList(1000, u"1"_s).join(u';');
    const Case cases[] = {
        {"1000 points and 100 rows",
            u"<chart><id>C</id><series><values>"_s + thousandValues + u"</values></series></chart>"_s
                + u"<table><id>T</id>"_s + Repeat(u"<row><label>%1</label></row>"_s, 100) + u"</table>"_s,
            1000, 100, false, false},
        {"1001 points", u"<chart><id>C</id><series><values>"_s + thousandValues + u";2</values></series></chart>"_s,
            1000, 0, true, false},
        {"1001 labels", u"<chart><id>C</id>"_s + Repeat(u"<label>%1</label>"_s, 1001) + u"</chart>"_s, 0, 0, true,
            false},
        {"101 rows", u"<table><id>T</id>"_s + Repeat(u"<row><label>%1</label></row>"_s, 101) + u"</table>"_s, 0, 100,
            false, true},
    };
    for (const Case& c : cases) {
        SetUp();
        ASSERT_TRUE(Apply(c.entries)) << c.what;
        if (c.points > 0) {
            ASSERT_EQ(Chart().Values().size(), 1u) << c.what;
            EXPECT_EQ(Chart().Values()[0].size(), c.points) << c.what;
        }
        EXPECT_LE(Chart().Labels().size(), ZWCardChart::MaxPoints) << c.what;
        EXPECT_EQ(Table().Rows().size(), c.rows) << c.what;
        EXPECT_EQ(Chart().Error().contains(u"at most 1000"_s), c.chartError) << c.what;
        EXPECT_EQ(Table().Error().contains(u"at most 100"_s), c.tableError) << c.what;
    }
}

TEST_F(DataCardValues, EntriesForACardOfAnotherKindAreIgnored)
{
    ASSERT_TRUE(Apply(u"<table><id>C</id><row><label>x</label></row></table>"
                      u"<chart><id>T</id><label>x</label></chart><formule><id>C</id><value>3</value></formule>"_s));
    EXPECT_FALSE(Chart().HasValues());
    EXPECT_FALSE(Table().HasValues());
}

} // namespace
