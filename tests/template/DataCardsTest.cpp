// The chart and table cards: their elements, what bad input leaves, and how they
// draw: inside their card, bars to scale, gaps, comparisons, cut rows, thinned labels.
#include "host/core/ZWLocale.h"
#include "host/core/ZWNoValue.h"
#include "template/ZWCardChart.h"
#include "template/ZWCardTable.h"
#include "template/ZWDataCardDrawing.h"
#include "tests/support/ZWTestSupport.h"
#include "tests/template/TemplateTestSupport.h"

#include <QPainter>
#include <QPdfWriter>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

using zwtest::CardXml;
using zwtest::RoundTrip;

constexpr QRgb Blue = qRgb(0, 0, 255);
constexpr double PxPerMm = 4.0;

class DataCards : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(ZWSetLocaleOverride(u"C"_s)); }
};

ZWCardChart Chart(ZWCardChart::Type type, int series = 1)
{
    ZWCardChart chart;
    zwtest::Place(chart, 10.0, 10.0, 80.0, 50.0);
    chart.type = type;
    for (int s = 0; s < series; ++s)
        chart.series.push_back({u"S%1"_s.arg(s), u"[M.E]"_s, ZWRGB(0, 0, 255), QString()});
    return chart;
}

// The card drawn alone on a white 100 × 80 mm page at 4 px/mm.
QImage Picture(ZWCardControl& card)
{
    QImage image = zwtest::WhiteImage(400, 320, int(PxPerMm * 1000));
    QPainter painter(&image);
    card.Draw(painter, zwtest::PageDraw(PxPerMm, 100.0, 80.0));
    return image;
}

// The text pdftotext reads from the card drawn on a PDF page.
QString PdfText(ZWCardControl& card)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(u"card.pdf"_s);
    {
        QPdfWriter writer(path);
        writer.setPageSize(QPageSize(QSizeF(100.0, 80.0), QPageSize::Millimeter));
        writer.setPageMargins(QMarginsF());
        writer.setResolution(300);
        QPainter painter(&writer);
        tagDraw draw = zwtest::PageDraw(300 / 25.4, 100.0, 80.0);
        card.Draw(painter, draw);
    }
    QProcess process;
    process.start(u"pdftotext"_s, {u"-layout"_s, path, u"-"_s});
    process.waitForFinished(30000);
    return QString::fromUtf8(process.readAllStandardOutput());
}

// Pixels of mostly blue (antialiased lines blend into white).
int BluePixels(const QImage& image, int fromX, int toX)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = fromX; x <= toX; ++x) {
            const QColor c = image.pixelColor(x, y);
            count += c.blue() > 200 && c.red() < 120 && c.green() < 120;
        }
    return count;
}

// ---------------------------------------------------------------- elements

TEST_F(DataCards, ChartAndTableWriteEveryFieldInOrderAndReadItBack)
{
    ZWCardChart chart;
    zwtest::Place(chart, 1.0, 2.0, 30.0, 20.0);
    std::tie(chart.id, chart.type, chart.unit) = std::tuple(u"c1"_s, ZWCardChart::Type::Stacked, u"month"_s);
    std::tie(chart.title, chart.xTitle, chart.yTitle) = std::tuple(u"Energy & cost"_s, u"Month"_s, u"kWh"_s);
    std::tie(chart.format, chart.thousandSeparator, chart.labelFormat) = std::tuple(u"03.02"_s, true, u"MM/yy"_s);
    std::tie(chart.legend, chart.font, chart.size) = std::tuple(false, u"Times New Roman"_s, 9.5);
    chart.series = {{u"This year"_s, u"[Main.E:delta]"_s, 0x0000FF, QString()},
        {u"Last year"_s, u"[Main.E:delta]"_s, 0x00FF00, u"-1y"_s}};
    EXPECT_EQ(CardXml(chart),
        u"<chart><x>1.00</x><y>2.00</y><width>30.00</width><height>20.00</height><color>000000</color><id>c1</id>"
        u"<type>stacked</type><unit>month</unit><title>Energy &amp; cost</title><xTitle>Month</xTitle>"
        u"<yTitle>kWh</yTitle><format>03.02</format><thousandSeparator>T</thousandSeparator>"
        u"<labelFormat>MM/yy</labelFormat><legend>F</legend><font>Times New Roman</font><size>9.50</size>"
        u"<series><title>This year</title><formula>[Main.E:delta]</formula><color>0000FF</color><shift/></series>"
        u"<series><title>Last year</title><formula>[Main.E:delta]</formula><color>00FF00</color><shift>-1y</shift>"
        u"</series></chart>"_s);
    auto chartCopy = RoundTrip(chart);
    EXPECT_EQ(CardXml(*chartCopy), CardXml(chart));
    EXPECT_EQ(CardXml(*chartCopy->GetClone()), CardXml(chart));
    EXPECT_EQ(chartCopy->layer, 1);

    ZWCardTable table;
    zwtest::Place(table, 1.0, 2.0, 30.0, 20.0);
    std::tie(table.id, table.unit, table.labelFormat, table.labelTitle)
        = std::tuple(u"t1"_s, u"hour"_s, u"hh"_s, u"Hour"_s);
    std::tie(table.stripeColor, table.total, table.totalTitle)
        = std::tuple(ZW_NO_COLOR, ZWCardTable::Total::Max, u"Peak"_s);
    table.columns = {{u"Power"_s, u"[M.P]"_s, u"5.01"_s, true, QString(), QString()},
        {u"Yesterday"_s, u"[M.P]"_s, u".0"_s, false, u"-1"_s, u"mean"_s}};
    EXPECT_EQ(CardXml(table),
        u"<table><x>1.00</x><y>2.00</y><width>30.00</width><height>20.00</height><color>000000</color><id>t1</id>"
        u"<unit>hour</unit><labelFormat>hh</labelFormat><labelTitle>Hour</labelTitle><font>Arial</font>"
        u"<size>8.00</size><headerColor>EAE3DD</headerColor><stripeColor>FFFFFFFF</stripeColor>"
        u"<gridColor>AAAAAA</gridColor><total>max</total><totalTitle>Peak</totalTitle>"
        u"<column><title>Power</title><formula>[M.P]</formula><format>5.01</format>"
        u"<thousandSeparator>T</thousandSeparator><shift/></column>"
        u"<column><title>Yesterday</title><formula>[M.P]</formula><format>.0</format>"
        u"<thousandSeparator>F</thousandSeparator><shift>-1</shift><total>mean</total></column></table>"_s);
    auto tableCopy = RoundTrip(table);
    EXPECT_EQ(CardXml(*tableCopy), CardXml(table));
    const auto& typed = static_cast<const ZWCardTable&>(*tableCopy);
    EXPECT_EQ(std::tuple(typed.ColumnTotal(0), typed.ColumnTotal(1)),
        std::tuple(ZWCardTable::Total::Max, ZWCardTable::Total::Mean));
}

TEST_F(DataCards, BadFieldsKeepTheirDefaults)
{
    // expected: a part of the element as written again
    const QString series25 = u"<series><title>A</title></series>"_s.repeated(25);
    const QString columns25 = u"<column><title>A</title></column>"_s.repeated(25);
    const std::tuple<const char*, const char*, QString, QString> cases[] = {
        {"an unknown chart type", "chart", u"<type>pie</type>"_s, u"<type>bar</type>"_s},
        {"a type with blanks", "chart", u"<type> line </type>"_s, u"<type>line</type>"_s},
        {"an unknown unit", "chart", u"<unit>year</unit>"_s, u"<unit>day</unit>"_s},
        {"a negative size", "chart", u"<size>-3</size>"_s, u"<size>8.00</size>"_s},
        {"a huge size", "chart", u"<size>1e9</size>"_s, u"<size>8.00</size>"_s},
        {"a format without a point", "chart", u"<format>abc</format>"_s, u"<format>.1</format>"_s},
        {"a long decimal part", "chart", u"<format>.123</format>"_s, u"<format>.3</format>"_s},
        {"a legend that is not T", "chart", u"<legend>yes</legend>"_s, u"<legend>F</legend>"_s},
        {"a series colour beyond 24 bits", "chart", u"<series><color>7F0000FF</color></series>"_s,
            u"<color>0000FF</color>"_s},
        {"an unknown field of a series", "chart", u"<series><pie>1</pie><title>A</title></series>"_s,
            u"<series><title>A</title><formula/><color>B4771F</color><shift/></series>"_s},
        {"an unknown total", "table", u"<total>avg</total>"_s, u"<total>sum</total>"_s},
        {"no stripes", "table", u"<stripeColor>FFFFFFFF</stripeColor>"_s, u"<stripeColor>FFFFFFFF</stripeColor>"_s},
        {"a header colour beyond 24 bits", "table", u"<headerColor>10000FF</headerColor>"_s,
            u"<headerColor>0000FF</headerColor>"_s},
        {"an unknown column total", "table", u"<column><total>bogus</total></column>"_s,
            u"<shift/></column></table>"_s},
        {"a column format without a point", "table", u"<column><format>x</format></column>"_s,
            u"<format>.2</format>"_s},
    };
    for (const auto& [what, element, inner, expected] : cases) {
        XmlDocument doc;
        ASSERT_TRUE(doc.Parse((u"<%1>%2</%1>"_s.arg(QLatin1String(element), inner)).toUtf8())) << what;
        auto card = ZWCardControl::CreateFromElement(QLatin1String(element));
        ASSERT_TRUE(card) << what;
        card->GetFromXml(doc.Root());
        EXPECT_TRUE(CardXml(*card).contains(expected)) << what << ": " << CardXml(*card).toStdString();
    }
    // At most 20 series and 20 columns are kept.
    XmlDocument doc;
    ASSERT_TRUE(doc.Parse((u"<chart>"_s + series25 + u"</chart>"_s).toUtf8()));
    ZWCardChart chart;
    chart.GetFromXml(doc.Root());
    ASSERT_TRUE(doc.Parse((u"<table>"_s + columns25 + u"</table>"_s).toUtf8()));
    ZWCardTable table;
    table.GetFromXml(doc.Root());
    EXPECT_EQ(std::tuple(chart.series.size(), table.columns.size()), std::tuple(20u, 20u));
}

// ---------------------------------------------------------------- helpers

TEST_F(DataCards, ValueAxesTakeNiceSteps)
{
    struct Case
    {
        double low, high;
        int maxTicks;
        std::vector<double> ticks;
        int decimals = -1; // the axis format's; -1 any step
    };
    const Case cases[] = {
        {0, 100, 5, {0, 20, 40, 60, 80, 100}},
        {0, 97, 4, {0, 25, 50, 75, 100}},
        {-50, 100, 6, {-50, -25, 0, 25, 50, 75, 100}},
        {0, 0.7, 4, {0, 0.2, 0.4, 0.6, 0.8}},
        {0, 0, 4, {0, 0.25, 0.5, 0.75, 1}},        // nothing: one unit
        {42, 42, 2, {0, 25, 50}},                  // one value: from zero
        {-3, -3, 3, {-3, -2, -1, 0}},              // one negative value: up to zero
        {1200, 1800, 3, {1200, 1400, 1600, 1800}}, // a line's own range
        {0, 1e6, 1, {0, 1e6}},
        {2.8, 18.4, 8, {0, 5, 10, 15, 20}, 0}, // no decimals: 2.5 apart would print 3, 5, 8
        {2.8, 18.4, 8, {2.5, 5, 7.5, 10, 12.5, 15, 17.5, 20}, 1},
        {0, 0.7, 4, {0, 1}, 0},
    };
    for (const Case& c : cases) {
        const std::vector<double> ticks = ZWDataCardDrawing::NiceTicks(c.low, c.high, c.maxTicks, c.decimals);
        ASSERT_EQ(ticks.size(), c.ticks.size()) << c.low << ".." << c.high;
        for (size_t i = 0; i < ticks.size(); ++i)
            EXPECT_NEAR(ticks[i], c.ticks[i], 1e-9) << c.low << ".." << c.high << " tick " << i;
    }
    // The largest doubles still give a finite, rising axis.
    const std::vector<double> extreme = ZWDataCardDrawing::NiceTicks(-1.7e308, 1.7e308, 4);
    ASSERT_GE(extreme.size(), 2u);
    EXPECT_TRUE(std::is_sorted(extreme.begin(), extreme.end()));
    EXPECT_TRUE(std::isfinite(extreme.front()) && std::isfinite(extreme.back()));
    EXPECT_LT(extreme.front(), extreme.back());

    int total = 0, malformed = 0;
    const auto values = ZWDataCardDrawing::ParseValues(u"12.5;13;; 14.25 ;x;inf;-1e3"_s, 5, total, malformed);
    EXPECT_EQ(std::tuple(total, malformed), std::tuple(7, 1)); // "x"; "inf" and "-1e3" are past the five kept
    ASSERT_EQ(values.size(), 5u);
    EXPECT_EQ(std::tuple(values[0], values[1], IsNoValue(values[2]), values[3], IsNoValue(values[4])),
        std::tuple(12.5, 13.0, true, 14.25, true));
}

// ---------------------------------------------------------------- drawing

TEST_F(DataCards, NothingIsPaintedOutsideTheCard)
{
    const auto add = [](const char* what, ZWCardControl& card) {
        const QRect ink = zwtest::InkBounds(Picture(card));
        const QRect inside
            = zwtest::PageDraw(PxPerMm, 100.0, 80.0).CardRect(card.x, card.y, card.width, card.height).ToQRect();
        EXPECT_TRUE(!ink.isNull() && inside.contains(ink))
            << what << ": ink " << ink.left() << "," << ink.top() << " to " << ink.right() << "," << ink.bottom();
    };
    for (auto type : {ZWCardChart::Type::Bar, ZWCardChart::Type::Stacked, ZWCardChart::Type::Line}) {
        ZWCardChart sample = Chart(type, 3);
        std::tie(sample.title, sample.xTitle, sample.yTitle, sample.backcolor)
            = std::tuple(u"A title far longer than the card is wide, so that it has to be cut"_s, u"Days"_s, u"kWh"_s,
                ZWRGB(250, 250, 200));
        add("a sample chart", sample);
        ZWCardChart big = Chart(type, 2);
        std::vector<double> values(1000, 1e12);
        values[3] = -1e12;
        big.SetValues(QStringList(1000, u"2024-01-01 00:00"_s), {values, values});
        add("a chart of 1000 huge points", big);
    }
    ZWCardChart error = Chart(ZWCardChart::Type::Bar);
    error.SetValues({}, {}, u"Too many points: 2000 (at most 1000); the rest are left out."_s);
    add("a chart with an error", error);
    ZWCardChart tiny = Chart(ZWCardChart::Type::Line);
    zwtest::Place(tiny, 50.0, 40.0, 3.0, 2.0);
    tiny.title = u"Title"_s;
    tiny.backcolor = ZWRGB(200, 200, 200);
    add("a chart too small for its plot", tiny);
    ZWCardChart turned = Chart(ZWCardChart::Type::Bar, 2);
    turned.turn = 1;
    add("a chart turned with its page", turned);
    ZWCardTable table;
    zwtest::Place(table, 10.0, 10.0, 60.0, 30.0);
    table.columns = {{u"A very long column title"_s, u"1"_s, u".2"_s, false, QString(), QString()}};
    std::vector<ZWCardTable::Row> rows;
    for (int r = 0; r < 100; ++r)
        rows.push_back({u"R%1"_s.arg(r, 3, 10, QLatin1Char('0')), {u"123456789012345678901234567890"_s}});
    table.SetRows(rows, true, {u"Total"_s, {u"1"_s}});
    add("a table of 100 rows in a small card", table);
    ZWCardTable sampleTable;
    zwtest::Place(sampleTable, 20.0, 30.0, 50.0, 8.0);
    add("a sample table cut to two rows", sampleTable);
}

TEST_F(DataCards, BarsAreToScaleAndStandOnZero)
{
    // top, bottom: the values at the top and the bottom of the blue
    const std::tuple<const char*, ZWCardChart::Type, std::vector<std::vector<double>>, double, double> cases[] = {
        {"bars", ZWCardChart::Type::Bar, {{10, 20, 30, 40, 50, 60, 70, 80, 90, 100}}, 100, 0},
        {"bars below zero", ZWCardChart::Type::Bar, {{-50, 20, 100}}, 100, -50},
        {"stacked bars", ZWCardChart::Type::Stacked, {{50, 20}, {50, 10}}, 100, 0},
        {"stacked bars either side of zero", ZWCardChart::Type::Stacked, {{50, -40}, {50, -10}}, 100, -50},
    };
    for (const auto& [what, type, values, top, bottom] : cases) {
        ZWCardChart chart = Chart(type, int(values.size()));
        chart.legend = false;
        chart.SetValues(QStringList(int(values[0].size()), u"x"_s), values);
        const QImage image = Picture(chart);
        const QRectF plot = chart.PlotRect();
        ASSERT_FALSE(plot.isEmpty()) << what;
        int blueTop = image.height(), blueBottom = -1, zero = -1;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                if ((image.pixel(x, y) & 0xFFFFFF) == (Blue & 0xFFFFFF)) {
                    blueTop = std::min(blueTop, y);
                    blueBottom = std::max(blueBottom, y);
                }
            // The zero line runs in ink through the margin right of the last bar.
            if (zero < 0 && (image.pixel(int(plot.right()) - 2, y) & 0xFFFFFF) == 0)
                zero = y;
        }
        ASSERT_GT(blueBottom - blueTop, 10) << what;
        ASSERT_GE(zero, 0) << what;
        // The largest value is a tick, so its bar reaches the plot's top.
        EXPECT_NEAR(blueTop, plot.top(), 1.5) << what;
        const double pxPerValue = (zero - blueTop) / top;
        EXPECT_NEAR(blueBottom + 1, zero - bottom * pxPerValue, 2.0) << what;
        EXPECT_LT(blueBottom, plot.bottom() + 1) << what;
    }
}

TEST_F(DataCards, ComparisonsAreLighterAndGapsBreakLines)
{
    ZWCardChart bars = Chart(ZWCardChart::Type::Bar, 2);
    bars.series[1].shift = u"-1y"_s;
    bars.SetValues(QStringList(4, u"x"_s), {{10, 20, 30, 40}, {15, 25, 35, 45}});
    const QImage barImage = Picture(bars);
    const QRgb tint = qRgb(140, 140, 255);
    EXPECT_EQ(ZWDataCardDrawing::Tint(QColor(Blue), 0.55), QColor(tint));
    EXPECT_GT(zwtest::CountColour(barImage, tint), 100);
    EXPECT_GT(zwtest::CountColour(barImage, Blue), 100);

    // Points 0, 1, 3, 4, 5 of six: nothing blue between points 1 and 3.
    ZWCardChart line = Chart(ZWCardChart::Type::Line);
    line.legend = false;
    line.SetValues(QStringList(6, u"x"_s), {{10, 20, ZW_NO_VALUE, 40, 50, 60}});
    const QImage lineImage = Picture(line);
    const QRectF plot = line.PlotRect();
    const double slot = plot.width() / 6;
    const auto centre = [&](int i) { return int(plot.left() + (i + 0.5) * slot); };
    EXPECT_GT(BluePixels(lineImage, centre(0), centre(1)), 10);
    EXPECT_EQ(BluePixels(lineImage, centre(1) + 4, centre(3) - 4), 0);
    EXPECT_GT(BluePixels(lineImage, centre(3), centre(5)), 10);
    // A point alone between gaps is still seen.
    line.SetValues(QStringList(5, u"x"_s), {{ZW_NO_VALUE, ZW_NO_VALUE, 30, ZW_NO_VALUE, ZW_NO_VALUE}});
    const QImage alone = Picture(line);
    const double middle = line.PlotRect().left() + 2.5 * line.PlotRect().width() / 5;
    EXPECT_GT(BluePixels(alone, int(middle) - 3, int(middle) + 3), 0);
    EXPECT_EQ(BluePixels(alone, 0, int(middle) - 6) + BluePixels(alone, int(middle) + 6, alone.width() - 1), 0);
}

TEST_F(DataCards, PdfTextShowsFormattedTicksThinnedLabelsCutRowsAndWithoutValuesSamples)
{
    // Ticks in the card's format with thousands grouped.
    ZWCardChart chart = Chart(ZWCardChart::Type::Bar);
    chart.format = u".0"_s;
    chart.thousandSeparator = true;
    QStringList labels;
    for (int i = 0; i < 60; ++i)
        labels << u"L%1"_s.arg(i, 2, 10, QLatin1Char('0'));
    std::vector<double> values(60, 1000.0);
    values[7] = 2000.0;
    chart.SetValues(labels, {values});
    const QString text = PdfText(chart);
    EXPECT_TRUE(text.contains(u"2,000"_s)) << text.toStdString();
    EXPECT_FALSE(text.contains(u"2000"_s));
    // 60 labels do not fit 80 mm: every k-th is shown, the first among them.
    std::vector<int> shown;
    static const QRegularExpression label(u"\\bL(\\d\\d)\\b"_s);
    for (auto it = label.globalMatch(text); it.hasNext();)
        shown.push_back(it.next().captured(1).toInt());
    ASSERT_GE(shown.size(), 3u) << text.toStdString();
    EXPECT_LT(shown.size(), 60u);
    EXPECT_EQ(shown.front(), 0);
    const int step = shown[1] - shown[0];
    EXPECT_GT(step, 1);
    for (size_t i = 1; i < shown.size(); ++i)
        EXPECT_EQ(shown[i] - shown[i - 1], step);

    // A table of 100 rows in a 30 mm high card: the first rows, the mark
    // with how many are left out, the totals row.
    ZWCardTable table;
    zwtest::Place(table, 5.0, 5.0, 80.0, 30.0);
    table.labelTitle = u"Day"_s;
    table.columns = {{u"Energy"_s, u"1"_s, u".2"_s, false, QString(), QString()}};
    std::vector<ZWCardTable::Row> rows;
    for (int r = 0; r < 100; ++r)
        rows.push_back({u"R%1"_s.arg(r, 3, 10, QLatin1Char('0')), {u"%1.50"_s.arg(r)}});
    table.SetRows(rows, true, {u"Total"_s, {u"4999.50"_s}});
    const QString tableText = PdfText(table);
    const int drawn = table.DrawnRows();
    ASSERT_GT(drawn, 2);
    ASSERT_LT(drawn, 100);
    const auto row = [](int r) { return u"R%1"_s.arg(r, 3, 10, QLatin1Char('0')); };
    for (const QString& part :
        {u"Day"_s, u"Energy"_s, row(0), row(drawn - 1), u"%1 more rows"_s.arg(100 - drawn), u"4999.50"_s})
        EXPECT_TRUE(tableText.contains(part)) << part.toStdString() << " in " << tableText.toStdString();
    EXPECT_FALSE(tableText.contains(row(drawn)));

    // An error is drawn in place of the data.
    table.SetRows({}, false, {}, u"The data cannot be read"_s);
    const QString errorText = PdfText(table);
    EXPECT_TRUE(errorText.contains(u"The data cannot be read"_s));
    EXPECT_FALSE(errorText.contains(u"Energy"_s));

    // Without values the cards show samples: twelve days from a fixed date,
    // by the card's pattern, and seven months.
    ZWCardChart sampleChart = Chart(ZWCardChart::Type::Bar);
    sampleChart.labelFormat = u"dd/MM"_s;
    EXPECT_TRUE(PdfText(sampleChart).contains(u"01/01"_s));
    EXPECT_GT(zwtest::CountColour(Picture(sampleChart), Blue), 200);
    ZWCardTable sampleTable;
    zwtest::Place(sampleTable, 5.0, 5.0, 80.0, 60.0);
    std::tie(sampleTable.unit, sampleTable.labelFormat) = std::tuple(u"month"_s, u"MM/yyyy"_s);
    sampleTable.columns = {{u"Cost"_s, u"1"_s, u"03.03"_s, false, QString(), QString()}};
    const QString sample = PdfText(sampleTable);
    EXPECT_TRUE(sample.contains(u"07/2024"_s)) << sample.toStdString();
    EXPECT_FALSE(sample.contains(u"08/2024"_s));
    EXPECT_TRUE(sample.contains(QRegularExpression(u"\\b\\d{3}\\.000\\b"_s)) && sample.contains(u"Total"_s))
        << sample.toStdString();
    EXPECT_EQ(sampleTable.DrawnRows(), 7);
}

} // namespace
