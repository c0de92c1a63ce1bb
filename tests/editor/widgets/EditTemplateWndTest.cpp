// The designer's page window driven by real mouse and key events: drags,
// drawing, the band, the keys, the context menu, undo across pages, and what
// the window paints.
#include "editor/widgets/ZWEditTemplateWnd.h"
#include "template/ZWTemplatePage.h"
#include "tests/support/ZWTestSupport.h"

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QUndoStack>
#include <array>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <random>

using namespace Qt::StringLiterals;

namespace {

using Geometry = std::array<double, 4>;

// A 200 × 100 mm page at 4 pixels per mm in a 1000 × 600 window: the page
// covers pixels 100..899 across and 100..499 down. Card "a" at (10, 20, 30,
// 40) mm is pixels (140, 180)–(260, 340); card "b" at (50, 20, 10, 10) mm is
// (300, 180)–(340, 220).
struct Window
{
    QUndoStack stack;
    std::unique_ptr<ZWEditTemplateWnd> wnd = std::make_unique<ZWEditTemplateWnd>();

    explicit Window(double grid = 0.0, int tool = ZWEditPage::SelectTool)
    {
        ZWTemplatePage page;
        page.properties.width = 200;
        page.properties.height = 100;
        page.properties.xgrid = grid;
        page.properties.ygrid = grid;
        page.properties.outColor = 0x808080;
        AddCard(page, u"label"_s, {10, 20, 30, 40}, u"a"_s);
        AddCard(page, u"image"_s, {50, 20, 10, 10}, u"b"_s);
        wnd->SetUndoStack(&stack);
        wnd->SetPixelsPerMm(4, 4);
        wnd->SetPage(std::move(page));
        wnd->SetActiveState(tool);
        wnd->resize(1000, 600);
        wnd->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(wnd.get()));
    }

    static void AddCard(ZWTemplatePage& page, const QString& element, Geometry g, const QString& id)
    {
        auto card = ZWCardControl::CreateFromElement(element);
        card->x = g[0];
        card->y = g[1];
        card->width = g[2];
        card->height = g[3];
        card->color = 0x0000FF;
        card->id = id;
        page.cards.push_back(std::move(card));
    }

    QWidget* Area() const { return wnd->viewport(); }

    void Drag(QPoint from, QPoint to, Qt::KeyboardModifiers mods = Qt::NoModifier)
    {
        QTest::mousePress(Area(), Qt::LeftButton, mods, from);
        // Two steps, as a hand moves.
        QTest::mouseMove(Area(), (from + to) / 2);
        QTest::mouseMove(Area(), to);
        QTest::mouseRelease(Area(), Qt::LeftButton, mods, to);
    }

    void Key(int key, Qt::KeyboardModifiers mods = Qt::NoModifier) { QTest::keyClick(wnd.get(), Qt::Key(key), mods); }

    Geometry Card(int index) const
    {
        const ZWCardControl& c = *wnd->Page().cards.at(size_t(index));
        return {c.x, c.y, c.width, c.height};
    }

    QImage Picture() const { return Area()->grab().toImage(); }
};

struct DragCase
{
    const char* name;
    double grid;
    int tool;
    QPoint from, to;
    Qt::KeyboardModifiers mods;
    // The card that changes (its list position) and where it ends.
    int card;
    Geometry expected;
    QStringList selection;
};

class WindowDragTest : public ::testing::TestWithParam<DragCase>
{};

TEST_P(WindowDragTest, EndsWhereExpectedAndUndoesAndRedoesExactly)
{
    const DragCase& c = GetParam();
    Window w(c.grid, c.tool);
    const size_t cardsBefore = w.wnd->Page().cards.size();
    const Geometry before = c.card < int(cardsBefore) ? w.Card(c.card) : Geometry{};
    QSignalSpy selections(w.wnd.get(), &ZWEditTemplateWnd::selectionChanged);
    w.Drag(c.from, c.to, c.mods);

    ASSERT_GT(int(w.wnd->Page().cards.size()), c.card);
    const Geometry after = w.Card(c.card);
    for (int i = 0; i < 4; ++i)
        EXPECT_NEAR(after[size_t(i)], c.expected[size_t(i)], 1e-9) << "coordinate " << i;
    EXPECT_EQ(w.wnd->SelectedIds().size(), c.selection.size());
    if (c.selection.size() == 1 && c.selection[0] == u"new"_s)
        EXPECT_EQ(w.wnd->SelectedIds(), QStringList{w.wnd->Page().cards.back()->id});
    else
        EXPECT_EQ(w.wnd->SelectedIds(), c.selection);
    EXPECT_EQ(selections.count(), 1);
    EXPECT_TRUE(w.wnd->IsTimerRunning());

    // One drag is one undo step that gives back the page as it was.
    ASSERT_EQ(w.stack.count(), 1);
    w.Key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(w.wnd->Page().cards.size(), cardsBefore);
    if (c.card < int(cardsBefore)) {
        EXPECT_EQ(w.Card(c.card), before);
    }
    w.Key(Qt::Key_Y, Qt::ControlModifier);
    ASSERT_GT(int(w.wnd->Page().cards.size()), c.card);
    EXPECT_EQ(w.Card(c.card), after);
}

const DragCase dragCases[] = {
    {"a card moves by the mouse's way in millimetres", 0, ZWEditPage::SelectTool, {200, 260}, {240, 300}, {}, 0,
        {20, 30, 30, 40}, {u"a"_s}},
    {"a card dragged past the left edge stops on it", 0, ZWEditPage::SelectTool, {200, 260}, {20, 260}, {}, 0,
        {0, 20, 30, 40}, {u"a"_s}},
    {"a card moved on a grid lands on a grid line", 5, ZWEditPage::SelectTool, {200, 260}, {231, 275}, {}, 0,
        {20, 25, 30, 40}, {u"a"_s}},
    {"the bottom right corner resizes the card", 0, ZWEditPage::SelectTool, {258, 338}, {298, 358}, {}, 0,
        {10, 20, 40, 45}, {u"a"_s}},
    {"the left edge resized on a grid keeps the right edge", 5, ZWEditPage::SelectTool, {141, 260}, {118, 260}, {}, 0,
        {5, 20, 35, 40}, {u"a"_s}},
    {"the label tool draws a new label", 0, ZWEditPage::LabelTool, {500, 300}, {580, 340}, {}, 2, {100, 50, 20, 10},
        {u"new"_s}},
    {"the date tool draws on the grid", 5, ZWEditPage::DateTool, {502, 301}, {583, 342}, {}, 2, {100, 50, 20, 10},
        {u"new"_s}},
};

INSTANTIATE_TEST_SUITE_P(Window, WindowDragTest, ::testing::ValuesIn(dragCases),
    [](const auto& info) { return zwtest::CaseName(info.param.name); });

TEST(EditTemplateWndTest, BandSelectsTheCardsInsideAndCtrlBandTogglesThem)
{
    Window w;
    w.Drag({120, 150}, {400, 400});
    EXPECT_EQ(w.wnd->SelectedIds(), (QStringList{u"a"_s, u"b"_s}));
    // A band selects without recording anything.
    EXPECT_EQ(w.stack.count(), 0);
    w.Drag({290, 170}, {350, 230}, Qt::ControlModifier);
    EXPECT_EQ(w.wnd->SelectedIds(), QStringList{u"a"_s});
    w.Drag({290, 170}, {350, 230}, Qt::ShiftModifier);
    EXPECT_EQ(w.wnd->SelectedIds(), (QStringList{u"a"_s, u"b"_s}));
    // Both move as one block.
    w.Drag({320, 200}, {360, 200});
    EXPECT_EQ(w.Card(0), (Geometry{20, 20, 30, 40}));
    EXPECT_EQ(w.Card(1), (Geometry{60, 20, 10, 10}));
    EXPECT_EQ(w.stack.count(), 1);
}

TEST(EditTemplateWndTest, DrawingThatIsTooSmallMakesNoCardAndNoUndoStep)
{
    Window w(0, ZWEditPage::LabelTool);
    QSignalSpy created(w.wnd.get(), &ZWEditTemplateWnd::cardCreated);
    w.Drag({500, 300}, {505, 340});
    EXPECT_EQ(w.wnd->Page().cards.size(), 2u);
    EXPECT_EQ(w.stack.count(), 0);
    EXPECT_EQ(created.count(), 0);
    w.Drag({500, 300}, {540, 340});
    EXPECT_EQ(w.wnd->Page().cards.size(), 3u);
    EXPECT_EQ(created.count(), 1);
    EXPECT_EQ(created.at(0).at(0).value<ZWCardControl*>(), w.wnd->Page().cards.back().get());
}

struct KeyCase
{
    const char* name;
    double grid;
    std::vector<std::pair<int, Qt::KeyboardModifiers>> keys;
    Geometry expected;
    // Undo steps on the stack afterwards.
    int steps;
};

class WindowKeyTest : public ::testing::TestWithParam<KeyCase>
{};

TEST_P(WindowKeyTest, ArrowsMoveTheSelectionAndMergeIntoOneStep)
{
    const KeyCase& c = GetParam();
    Window w(c.grid);
    w.Drag({200, 260}, {200, 260}); // selects a
    for (const auto& [key, mods] : c.keys)
        w.Key(key, mods);
    const Geometry after = w.Card(0);
    for (int i = 0; i < 4; ++i)
        EXPECT_NEAR(after[size_t(i)], c.expected[size_t(i)], 1e-9) << "coordinate " << i;
    EXPECT_EQ(w.stack.count(), c.steps);
    if (c.steps > 0) {
        w.wnd->Undo();
        EXPECT_EQ(w.Card(0), (Geometry{10, 20, 30, 40}));
        EXPECT_EQ(w.wnd->SelectedIds(), QStringList{u"a"_s});
    }
}

const KeyCase keyCases[] = {
    {"right three times is three pixels in one step", 0,
        {{Qt::Key_Right, {}}, {Qt::Key_Right, {}}, {Qt::Key_Right, {}}}, {10.75, 20, 30, 40}, 1},
    {"shift down is one grid step", 5, {{Qt::Key_Down, Qt::ShiftModifier}}, {10, 25, 30, 40}, 1},
    {"shift without a grid is ten pixels", 0, {{Qt::Key_Left, Qt::ShiftModifier}}, {7.5, 20, 30, 40}, 1},
    {"left and right again leave no step", 0, {{Qt::Key_Left, {}}, {Qt::Key_Right, {}}}, {10, 20, 30, 40}, 0},
    {"the page's top edge stops the card", 5,
        {{Qt::Key_Up, Qt::ShiftModifier}, {Qt::Key_Up, Qt::ShiftModifier}, {Qt::Key_Up, Qt::ShiftModifier},
            {Qt::Key_Up, Qt::ShiftModifier}, {Qt::Key_Up, Qt::ShiftModifier}},
        {10, 0, 30, 40}, 1},
    {"up then left is still one step", 0, {{Qt::Key_Up, {}}, {Qt::Key_Left, {}}}, {9.75, 19.75, 30, 40}, 1},
};

INSTANTIATE_TEST_SUITE_P(Window, WindowKeyTest, ::testing::ValuesIn(keyCases),
    [](const auto& info) { return zwtest::CaseName(info.param.name); });

TEST(EditTemplateWndTest, ClipboardAndDeleteKeysAreUndoneInOrder)
{
    Window w(5);
    w.Drag({200, 260}, {200, 260});
    w.Key(Qt::Key_C, Qt::ControlModifier);
    w.Key(Qt::Key_V, Qt::ControlModifier);
    w.Key(Qt::Key_V, Qt::ControlModifier);
    ASSERT_EQ(w.wnd->Page().cards.size(), 4u);
    // Each paste one grid step further.
    EXPECT_EQ(w.Card(2), (Geometry{15, 25, 30, 40}));
    EXPECT_EQ(w.Card(3), (Geometry{20, 30, 30, 40}));
    EXPECT_EQ(w.wnd->SelectedIds(), QStringList{w.wnd->Page().cards[3]->id});
    const QString pastedId = w.wnd->Page().cards[2]->id;
    EXPECT_NE(pastedId, u"a"_s);
    w.Key(Qt::Key_Delete);
    EXPECT_EQ(w.wnd->Page().cards.size(), 3u);
    EXPECT_TRUE(w.wnd->SelectedIds().isEmpty());
    w.Drag({200, 260}, {200, 260});
    w.Key(Qt::Key_X, Qt::ControlModifier);
    EXPECT_EQ(w.wnd->Page().cards.size(), 2u);
    EXPECT_EQ(w.wnd->Page().cards[0]->id, u"b"_s);
    EXPECT_EQ(w.stack.count(), 4);

    // Back through cut, delete and the two pastes; then forward again.
    w.Key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(w.wnd->Page().cards[0]->id, u"a"_s);
    EXPECT_EQ(w.wnd->SelectedIds(), QStringList{u"a"_s});
    w.Key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(w.wnd->Page().cards.size(), 4u);
    w.Key(Qt::Key_Z, Qt::ControlModifier);
    w.Key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(w.wnd->Page().cards.size(), 2u);
    EXPECT_FALSE(w.stack.canUndo());
    w.Key(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    ASSERT_EQ(w.wnd->Page().cards.size(), 3u);
    EXPECT_EQ(w.wnd->Page().cards[2]->id, pastedId);
    EXPECT_EQ(w.Card(2), (Geometry{15, 25, 30, 40}));
}

TEST(EditTemplateWndTest, OtherKeysGoOnToTheParent)
{
    Window w;
    QKeyEvent tab(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier, u"a"_s);
    QApplication::sendEvent(w.wnd.get(), &tab);
    EXPECT_FALSE(tab.isAccepted());
    QKeyEvent del(QEvent::KeyPress, Qt::Key_Delete, Qt::NoModifier);
    QApplication::sendEvent(w.wnd.get(), &del);
    EXPECT_TRUE(del.isAccepted());
}

TEST(EditTemplateWndTest, LostCaptureInADragLeavesTheCardsAndDropsTheSelection)
{
    Window w;
    QTest::mousePress(w.Area(), Qt::LeftButton, {}, {200, 260});
    QTest::mouseMove(w.Area(), {300, 300});
    w.wnd->OnCaptureChanged();
    QTest::mouseRelease(w.Area(), Qt::LeftButton, {}, {300, 300});
    EXPECT_EQ(w.Card(0), (Geometry{10, 20, 30, 40}));
    EXPECT_TRUE(w.wnd->SelectedIds().isEmpty());
    EXPECT_EQ(w.stack.count(), 0);
}

TEST(EditTemplateWndTest, ContextMenuOffersTheSupportedKindsAndMakesOneAtTheClick)
{
    Window w(5);
    w.wnd->SetDateSupport(false);
    EXPECT_EQ(w.wnd->CreateContextMenu({50, 50}), nullptr);
    std::unique_ptr<QMenu> menu(w.wnd->CreateContextMenu({600, 300}));
    ASSERT_NE(menu, nullptr);
    QList<int> commands;
    for (QAction* a : menu->actions())
        commands << (a->isSeparator() ? 0 : a->data().toInt());
    // Six kinds (not the date), the separator and the tool-bar sub-menu (no
    // data).
    EXPECT_EQ(commands, (QList<int>{420, 421, 423, 424, 425, 426, 0, 0}));
    // The right click leaves the mouse where the new card goes.
    QTest::mousePress(w.Area(), Qt::RightButton, {}, {600, 300});
    QTest::mouseRelease(w.Area(), Qt::RightButton, {}, {600, 300});
    if (QWidget* popup = QApplication::activePopupWidget())
        popup->close();
    menu->actions().at(0)->trigger();
    ASSERT_EQ(w.wnd->Page().cards.size(), 3u);
    EXPECT_EQ(w.wnd->Page().cards[2]->ElementName(), u"label"_s);
    EXPECT_EQ(w.Card(2), (Geometry{125, 50, 5, 5}));
    EXPECT_EQ(w.stack.count(), 1);
}

TEST(EditTemplateWndTest, UndoOnOnePageShowsThatPage)
{
    Window one;
    ZWEditTemplateWnd two;
    two.SetUndoStack(&one.stack);
    two.SetPixelsPerMm(4, 4);
    two.resize(1000, 600);
    ZWTemplatePage page = one.wnd->Page();
    two.SetPage(std::move(page));
    two.SelectControlById(u"b"_s);
    two.MoveSelectedControls(1, 0, false);
    one.Drag({200, 260}, {240, 260});
    QSignalSpy showOne(one.wnd.get(), &ZWEditTemplateWnd::pageShowRequested);
    QSignalSpy showTwo(&two, &ZWEditTemplateWnd::pageShowRequested);
    one.stack.undo();
    one.stack.undo();
    EXPECT_EQ(showOne.count(), 1);
    EXPECT_EQ(showTwo.count(), 1);
    EXPECT_EQ(two.Page().cards[1]->x, 50);
    EXPECT_EQ(two.SelectedIds(), QStringList{u"b"_s});
}

TEST(EditTemplateWndTest, WiderPageScrollsByExactlyItsOverflow)
{
    Window w;
    w.wnd->SetMode(2.0);
    // 1600 × 800 pixels of page in a 1000 × 600 window less the bars.
    QScrollBar* h = w.wnd->horizontalScrollBar();
    QScrollBar* v = w.wnd->verticalScrollBar();
    EXPECT_EQ(h->maximum(), 1600 - w.Area()->width());
    EXPECT_EQ(v->maximum(), 800 - w.Area()->height());
    h->setValue(h->maximum());
    // The page's right edge is now the window's right edge: a card at the
    // page's right end is hit there.
    Window::AddCard(w.wnd->Page(), u"label"_s, {190, 0, 10, 10}, u"c"_s);
    w.Drag({w.Area()->width() - 5, 5}, {w.Area()->width() - 5, 5});
    EXPECT_EQ(w.wnd->SelectedIds(), QStringList{u"c"_s});
    w.wnd->SetMode(0);
    EXPECT_EQ(w.wnd->horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
    double zoom = 0;
    w.wnd->GetMode(zoom);
    EXPECT_DOUBLE_EQ(zoom, -1.25);
}

TEST(EditTemplateWndTest, PaintsTheGridTheOutlinesAndTheDrag)
{
    Window w(5);
    const QColor white(Qt::white);
    const QColor red(Qt::red);
    QImage picture = w.Picture();
    // Grid dots every 20 pixels from the page's corner; white between them.
    EXPECT_EQ(picture.pixelColor(120, 120), QColor(Qt::black));
    EXPECT_EQ(picture.pixelColor(130, 120), white);
    // Outside the page the out colour.
    EXPECT_EQ(picture.pixelColor(50, 50), QColor(128, 128, 128));
    // An unselected card's outline is thin and dotted in its colour.
    EXPECT_EQ(picture.pixelColor(141, 180), red);
    EXPECT_EQ(picture.pixelColor(144, 180), white);
    const auto redRun = [&](int y) {
        int n = 0;
        while (n < 6 && picture.pixelColor(140 + n, y) == red)
            ++n;
        return n;
    };
    // The first row of the left edge where the outline is on.
    const auto onRow = [&] {
        for (int y = 250; y < 262; ++y)
            if (picture.pixelColor(140, y) == red)
                return y;
        return -1;
    };
    ASSERT_GE(onRow(), 0);
    EXPECT_EQ(redRun(onRow()), 1);

    // Selected: three pixels thick.
    w.Drag({200, 260}, {200, 260});
    picture = w.Picture();
    ASSERT_GE(onRow(), 0);
    EXPECT_EQ(redRun(onRow()), 3);

    // During a drag the dotted outline of where the card would go: its top
    // edge at y 220 from x 240.
    QTest::mousePress(w.Area(), Qt::LeftButton, {}, {200, 260});
    QTest::mouseMove(w.Area(), {300, 300});
    picture = w.Picture();
    int black = 0, whites = 0;
    for (int x = 345; x < 348; ++x) {
        black += picture.pixelColor(x, 220) == QColor(Qt::black) ? 1 : 0;
        whites += picture.pixelColor(x, 220) == white ? 1 : 0;
    }
    EXPECT_GE(black, 1);
    EXPECT_GE(whites, 1);
    EXPECT_EQ(picture.pixelColor(346, 219), white);
    QTest::mouseRelease(w.Area(), Qt::LeftButton, {}, {300, 300});
    EXPECT_EQ(w.Card(0), (Geometry{35, 30, 30, 40}));
}

// The page as a test compares it: its XML and every card's identity and
// exact geometry, in list order.
struct PageState
{
    QByteArray xml;
    std::vector<std::pair<QString, Geometry>> cards;
    bool operator==(const PageState&) const = default;
};

PageState StateOf(const ZWEditTemplateWnd& wnd)
{
    PageState s;
    XmlDocument doc;
    doc.Create(u"design"_s);
    wnd.SaveTemplate(doc.Root());
    s.xml = doc.ToXml();
    for (const auto& c : wnd.Page().cards)
        s.cards.push_back({c->id, {c->x, c->y, c->width, c->height}});
    return s;
}

TEST(EditTemplateWndTest, ARandomSessionIsUndoneToTheStartAndRedoneToItsEnd)
{
    Window w(5);
    const PageState start = StateOf(*w.wnd);
    std::mt19937 random(20261123);
    const auto pick = [&](int n) { return std::uniform_int_distribution<int>(0, n - 1)(random); };
    const auto pagePoint = [&] { return QPoint(100 + pick(800), 100 + pick(400)); };
    const auto onCard = [&]() -> QPoint {
        const auto& cards = w.wnd->Page().cards;
        if (cards.empty())
            return pagePoint();
        const ZWCardControl& c = *cards[size_t(pick(int(cards.size())))];
        return QPoint(100 + int(4 * (c.x + c.width / 2)), 100 + int(4 * (c.y + c.height / 2)));
    };
    const Qt::KeyboardModifiers mods[] = {Qt::NoModifier, Qt::ControlModifier, Qt::ShiftModifier};
    const int keys[] = {Qt::Key_Left, Qt::Key_Right, Qt::Key_Up, Qt::Key_Down};
    for (int step = 0; step < 300; ++step) {
        switch (pick(12)) {
        case 0:
        case 1:
            w.Drag(onCard(), pagePoint(), mods[pick(3)]);
            break;
        case 2:
            w.Drag(pagePoint(), pagePoint(), mods[pick(3)]);
            break;
        case 3:
            w.Key(keys[pick(4)], pick(2) ? Qt::ShiftModifier : Qt::NoModifier);
            break;
        case 4:
            w.Key(Qt::Key_C, Qt::ControlModifier);
            w.Key(Qt::Key_V, Qt::ControlModifier);
            break;
        case 5:
            w.Key(pick(2) ? Qt::Key_Delete : Qt::Key_X, pick(2) ? Qt::NoModifier : Qt::ControlModifier);
            break;
        case 6:
            w.wnd->AlignSelectedControls(1 << pick(4));
            break;
        case 7:
            w.wnd->DistributeSelectedControls(pick(2));
            w.wnd->JustifySelectedControls(pick(2), pick(2));
            break;
        case 8:
            w.wnd->ResizeSelectedControls(pick(2), pick(2));
            break;
        case 9:
            w.wnd->SetActiveState(pick(2) ? ZWEditPage::LabelTool : ZWEditPage::DateTool);
            w.Drag(pagePoint(), pagePoint(), pick(2) ? Qt::ControlModifier : Qt::NoModifier);
            w.wnd->SetActiveState(ZWEditPage::SelectTool);
            break;
        case 10:
            QTest::mouseClick(w.Area(), Qt::RightButton, {}, pagePoint());
            if (QWidget* popup = QApplication::activePopupWidget())
                popup->close();
            w.wnd->OnNewImage();
            break;
        default:
            w.Key(Qt::Key_Z, Qt::ControlModifier);
            break;
        }
    }
    const PageState end = StateOf(*w.wnd);
    const int index = w.stack.index();
    ASSERT_GT(index, 20);
    w.stack.setIndex(0);
    EXPECT_TRUE(StateOf(*w.wnd) == start);
    w.stack.setIndex(index);
    EXPECT_TRUE(StateOf(*w.wnd) == end);
}

} // namespace
