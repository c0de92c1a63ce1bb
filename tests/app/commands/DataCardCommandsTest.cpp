// Reports with chart and table cards through resave and render-template, as
// a user runs them.
#include "tests/app/commands/ProgramRun.h"
#include "tests/support/ZWTestSupport.h"

#include <QImage>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

TEST(DataCardCommands, ResaveKeepsChartsAndTablesAndRenderTemplateDrawsThemInTheirCards)
{
    QTemporaryDir dir;
    const QString in = dir.filePath(u"Cards.XRPT"_s);
    const QString out = dir.filePath(u"Out.XRPT"_s);
    ASSERT_TRUE(zwtest::WriteFile(in,
        "<design><id>r</id><name>Cards</name><page><width>100</width><height>100</height>"
        "<chart><x>10</x><y>10</y><width>80</width><height>35</height><type>stacked</type><size>x</size>"
        "<series><title>E</title><formula>[M.E]</formula><color>FF0000</color><shift>-1y</shift><pie/></series>"
        "</chart>"
        "<table><x>10</x><y>55</y><width>80</width><height>35</height><total>median</total>"
        "<column><title>P</title><formula>[M.P]</formula><format>03.02</format></column></table>"
        "<dial><x>0</x></dial></page></design>"));
    zwtest::RunOptions options;
    options.environment = {{u"ZWINFORMES_LOCALE"_s, u"C"_s}, {u"QT_QPA_PLATFORM"_s, u"offscreen"_s}};
    const zwtest::ProgramResult resave = zwtest::RunProgram({u"resave"_s, in, out}, options);
    ASSERT_EQ(resave.status, 0) << resave;
    EXPECT_TRUE(resave.out.contains(u"2 card(s)"_s)) << resave;
    const QString saved = QString::fromUtf8(zwtest::ReadFile(out));
    for (const QString& part : {u"<type>stacked</type>"_s, u"<size>8.00</size>"_s, u"<shift>-1y</shift>"_s,
             u"<total>sum</total>"_s, u"<format>03.02</format>"_s})
        EXPECT_TRUE(saved.contains(part)) << part.toStdString() << "\n" << saved.toStdString();
    EXPECT_FALSE(saved.contains(u"pie"_s) || saved.contains(u"dial"_s) || saved.contains(u"median"_s));

    // 100 × 100 mm at 127 dpi: 5 pixels a millimetre.
    const zwtest::ProgramResult render = zwtest::RunProgram(
        {u"render-template"_s, out, u"--png"_s, dir.filePath(u"png"_s), u"--dpi"_s, u"127"_s}, options);
    ASSERT_EQ(render.status, 0) << render;
    const QImage page(dir.filePath(u"png/Out-1.png"_s));
    ASSERT_EQ(page.size(), QSize(500, 500));
    int inChart = 0, inTable = 0, outside = 0;
    for (int y = 0; y < 500; ++y)
        for (int x = 0; x < 500; ++x) {
            if ((page.pixel(x, y) & 0xFFFFFF) == 0xFFFFFF)
                continue;
            const bool across = x >= 50 && x < 450;
            if (across && y >= 50 && y < 225)
                ++inChart;
            else if (across && y >= 275 && y < 450)
                ++inTable;
            else
                ++outside;
        }
    EXPECT_GT(inChart, 2000); // sample bars
    EXPECT_GT(inTable, 2000); // sample rows, header and grid
    EXPECT_EQ(outside, 0);
}

} // namespace
