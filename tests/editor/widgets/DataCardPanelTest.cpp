// Chart and table cards in the designer, driven with real keys and clicks:
// the tools make them, the panel edits every field and the list of series
// and columns, each edit is one undo step, and undoing everything gives the
// report back byte for byte.
#include "editor/widgets/ZWDataCardGroups.h"
#include "editor/widgets/ZWEditTemplateWnd.h"
#include "editor/widgets/ZWEditorFrame.h"
#include "formula/widgets/ZWFormulaEdit.h"
#include "host/core/ZWLocale.h"
#include "host/core/ZWMarentaSetup.h"
#include "host/core/ZWTextId.h"
#include "template/ZWCardChart.h"
#include "template/ZWCardTable.h"
#include "tests/editor/widgets/PanelTestSupport.h"
#include "tests/support/ZWTestSupport.h"

using namespace Qt::StringLiterals;

namespace {

void Click(QWidget* group, const char* button)
{
    auto* target = group->findChild<QPushButton*>(QString::fromLatin1(button));
    ASSERT_NE(target, nullptr) << button;
    QTest::mouseClick(target, Qt::LeftButton);
}

void Down(QComboBox* combo, int times)
{
    combo->setFocus();
    for (int i = 0; i < times; ++i)
        QTest::keyClick(combo, Qt::Key_Down);
}

class DataCardPanel : public zwtest::PanelTest
{
protected:
    DataCardPanel() : PanelTest({"chart", "table", "chart"}, {450, 1400}) { ZWSetLocaleOverride(u"C"_s); }
    ZWCardChart& Chart(int index) { return static_cast<ZWCardChart&>(*page.cards[size_t(index)]); }
    ZWCardTable& Table() { return static_cast<ZWCardTable&>(*page.cards[1]); }
    // Undo everything, then redo everything: the report is the original,
    // then the edited one again.
    void UndoAndRedoAll(const QByteArray& original)
    {
        const QByteArray edited = Xml();
        while (stack.canUndo())
            stack.undo();
        EXPECT_EQ(Xml(), original);
        while (stack.canRedo())
            stack.redo();
        EXPECT_EQ(Xml(), edited);
    }
};

TEST_F(DataCardPanel, ChartFieldsAndSeriesAreEditedOneStepEach)
{
    Select({0});
    const QByteArray original = Xml();
    const ZWDataCardGroups::Fields& f = panel.DataGroups()->Chart();
    ASSERT_TRUE(f.group->isVisible());
    EXPECT_FALSE(panel.DataGroups()->TableGroup()->isVisible());
    EXPECT_FALSE(panel.Group("text")->isVisible());

    Type(f.title, u"Energy"_s);
    Down(f.type, 1);
    Type(f.format, u".0"_s);
    QTest::mouseClick(f.thousands, Qt::LeftButton, {}, QPoint(8, f.thousands->height() / 2));
    EXPECT_EQ(f.formatSample->text(), u"1,235"_s);
    Type(f.labelFormat, u"MM/yy"_s);
    EXPECT_EQ(stack.count(), 5);
    EXPECT_EQ(std::tuple(Chart(0).title, Chart(0).type, Chart(0).format, Chart(0).labelFormat),
        std::tuple(u"Energy"_s, ZWCardChart::Type::Stacked, u".0"_s, u"MM/yy"_s));

    // Two series, each named in its own step; a year back for the second.
    Click(f.group, "add");
    Click(f.group, "add");
    ASSERT_EQ(Chart(0).series.size(), 2u);
    EXPECT_EQ(f.rows->currentRow(), 1);
    EXPECT_EQ(Chart(0).series[1].title, u"Series 2"_s);
    EXPECT_NE(Chart(0).series[0].color, Chart(0).series[1].color);
    Type(f.rowTitle, u"Last year"_s);
    Down(f.rowShift, 2);
    Type(f.rowFormula, u"[M.E:delta]"_s);
    f.rows->setCurrentRow(0);
    Type(f.rowTitle, u"This year"_s);
    EXPECT_EQ(stack.count(), 5 + 2 + 4) << "a step per field and row";
    EXPECT_EQ(std::tuple(Chart(0).series[1].shift, Chart(0).series[1].formula, f.rows->item(0)->text()),
        std::tuple(u"-1y"_s, u"[M.E:delta]"_s, u"This year"_s));

    // Down, then remove the other.
    Click(f.group, "down");
    EXPECT_EQ(std::tuple(Chart(0).series[1].title, f.rows->currentRow(), f.rowTitle->text()),
        std::tuple(u"This year"_s, 1, u"This year"_s));
    f.rows->setCurrentRow(0);
    Click(f.group, "remove");
    ASSERT_EQ(Chart(0).series.size(), 1u);
    EXPECT_EQ(Chart(0).series[0].title, u"This year"_s);
    EXPECT_EQ(stack.count(), 13);
    UndoAndRedoAll(original);
    EXPECT_EQ(Chart(0).series[0].title, u"This year"_s);
    EXPECT_EQ(f.rows->count(), 1) << "the panel follows undo and redo";

    // Both charts at once; the series list is for one card only.
    Select({0, 2});
    EXPECT_FALSE(f.rowsBox->isVisible());
    EXPECT_TRUE(f.title->text().isEmpty()) << "the charts' titles differ";
    Type(f.yTitle, u"kWh"_s);
    EXPECT_EQ(std::tuple(Chart(0).yTitle, Chart(2).yTitle), std::tuple(u"kWh"_s, u"kWh"_s));
    EXPECT_EQ(stack.count(), 14);
}

TEST_F(DataCardPanel, TableFieldsColumnsAndTotals)
{
    Select({1});
    const QByteArray original = Xml();
    const ZWDataCardGroups::Fields& f = panel.DataGroups()->Table();
    ASSERT_TRUE(f.group->isVisible());
    EXPECT_FALSE(panel.DataGroups()->ChartGroup()->isVisible());
    Type(f.title, u"Day"_s);
    Down(f.total, 3); // sum → mean → min → max
    Down(f.unit, 2);  // day → month
    Click(f.group, "add");
    ASSERT_EQ(Table().columns.size(), 1u);
    Type(f.rowFormat, u"5.01"_s);
    EXPECT_EQ(f.formatSample->text(), u"1234.6"_s);
    Down(f.rowTotal, 1); // the table's rule → none
    Type(f.totalTitle, u"Peak"_s);
    const ZWCardTable& t = Table();
    EXPECT_EQ(std::tuple(t.labelTitle, t.total, t.unit, t.columns[0].format, t.ColumnTotal(0), t.totalTitle),
        std::tuple(u"Day"_s, ZWCardTable::Total::Max, u"month"_s, u"5.01"_s, ZWCardTable::Total::None, u"Peak"_s));
    EXPECT_EQ(stack.count(), 7);
    UndoAndRedoAll(original);
}

TEST(DataCardTools, TheToolBarAndTheContextMenuMakeChartsAndTables)
{
    QTemporaryDir dir;
    ZWMarentaSetup::instance().SetSettingsFile(dir.filePath(u"settings.ini"_s));
    ZWEditorFrame frame;
    frame.resize(1000, 800);
    frame.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&frame));
    auto* tools = frame.findChild<QToolBar*>(u"tools"_s);
    ASSERT_NE(tools, nullptr);
    for (int command : {int(ZWTextId::ToolChart), int(ZWTextId::ToolTable)}) {
        ASSERT_NE(frame.Action(command), nullptr);
        EXPECT_TRUE(tools->actions().contains(frame.Action(command)));
        EXPECT_TRUE(frame.Action(command)->isEnabled());
    }
    ZWEditTemplateWnd* page = frame.CurrentPage();
    QWidget* area = page->viewport();
    const QRect sheet
        = area->rect().adjusted(area->width() / 3, area->height() / 3, -area->width() / 3, -area->height() / 3);
    const auto drag = [&](QPoint from, QPoint to) {
        QTest::mousePress(area, Qt::LeftButton, {}, from);
        QTest::mouseMove(area, to);
        QTest::mouseRelease(area, Qt::LeftButton, {}, to);
    };
    frame.Action(ZWTextId::ToolChart)->trigger();
    drag(sheet.topLeft(), sheet.center());
    frame.Action(ZWTextId::ToolTable)->trigger();
    drag(sheet.center() + QPoint(10, 10), sheet.bottomRight());
    ASSERT_EQ(page->Page().cards.size(), 2u);
    EXPECT_STREQ(page->Page().cards[0]->GetRuntimeClass(), "ZWCardChart");
    EXPECT_STREQ(page->Page().cards[1]->GetRuntimeClass(), "ZWCardTable");
    EXPECT_TRUE(frame.Panel()->DataGroups()->TableGroup()->isVisible()) << "the new card is selected";

    std::unique_ptr<QMenu> menu(page->CreateContextMenu(sheet.center()));
    ASSERT_NE(menu, nullptr);
    for (QAction* action : menu->actions())
        if (action->data().toInt() == ZWEditTemplateWnd::NewChartCommand)
            action->trigger();
    ASSERT_EQ(page->Page().cards.size(), 3u);
    EXPECT_STREQ(page->Page().cards[2]->GetRuntimeClass(), "ZWCardChart");
    frame.Action(37188)->trigger(); // undo
    frame.Action(37188)->trigger();
    EXPECT_EQ(page->Page().cards.size(), 1u);
    ZWMarentaSetup::instance().SetSettingsFile(QString());
}

} // namespace
