// The designer's page window driven by real mouse and key events: drags,
// drawing, the band, the keys, the context menu, undo across pages, and what
// the window paints.
#include "editor/widgets/ZWEditTemplateWnd.h"
#include "tests/editor/EditorTestSupport.h"
#include "tests/support/ZWTestSupport.h"

#include <QtTest>
#include <QtWidgets>
#include <array>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <random>

using namespace Qt::StringLiterals;

namespace {

using zwtest::Geometry;

// The test page (EditorTestSupport.h) with a label "a" and a picture "b".
struct Window
{
    QUndoStack stack;
    std::unique_ptr<ZWEditTemplateWnd> wnd = std::make_unique<ZWEditTemplateWnd>();

    explicit Window(double grid = 0.0, int tool = ZWEditPage::SelectTool)
    {
        ZWTemplatePage page;
        zwtest::SizePage(page, grid);
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
        page.cards.push_back(zwtest::MakeCard(element, g, id));
        page.cards.back()->color = 0x0000FF;
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

    Geometry Card(int index) const { return zwtest::GeometryOf(*wnd->Page().cards.at(size_t(index))); }

    QImage Picture() const { return Area()->grab().toImage(); }
    size_t Count() const { return wnd->Page().cards.size(); }
    QString Id(int index) const { return wnd->Page().cards.at(size_t(index))->id; }
};

TEST(EditTemplateWndTest, AMoveAndADrawingAreOneUndoStepEachAndATooSmallDrawingNone)
{
    // tool, from, to, the card that changes (its list position) and where it ends
    const std::tuple<int, QPoint, QPoint, int, Geometry> cases[] = {
        {ZWEditPage::SelectTool, {200, 260}, {240, 300}, 0, {20, 30, 30, 40}},
        {ZWEditPage::LabelTool, {500, 300}, {580, 340}, 2, {100, 50, 20, 10}},
    };
    for (const auto& [tool, from, to, card, expected] : cases) {
        SCOPED_TRACE(testing::Message() << "tool " << tool);
        Window w(0, tool);
        QSignalSpy created(w.wnd.get(), &ZWEditTemplateWnd::cardCreated);
        if (tool == ZWEditPage::LabelTool) {
            w.Drag(from, from + QPoint(5, 40));
            EXPECT_EQ(std::tuple(w.Count(), w.stack.count(), created.count()), std::tuple(size_t(2), 0, 0));
        }
        const Geometry before = card < 2 ? w.Card(card) : Geometry{};
        QSignalSpy selections(w.wnd.get(), &ZWEditTemplateWnd::selectionChanged);
        w.Drag(from, to);
        ASSERT_GT(int(w.Count()), card);
        const Geometry after = w.Card(card);
        EXPECT_GEOMETRY(after, expected);
        EXPECT_EQ(w.wnd->SelectedIds(), QStringList{w.Id(card)});
        EXPECT_EQ(std::tuple(selections.count(), w.wnd->IsTimerRunning(), created.count()),
            std::tuple(1, true, card < 2 ? 0 : 1));
        if (created.count() == 1) {
            EXPECT_EQ(created.at(0).at(0).value<ZWCardControl*>(), w.wnd->Page().cards.back().get());
        }

        ASSERT_EQ(w.stack.count(), 1);
        w.Key(Qt::Key_Z, Qt::ControlModifier);
        EXPECT_EQ(w.Count(), 2u);
        if (card < 2) {
            EXPECT_EQ(w.Card(card), before);
        }
        w.Key(Qt::Key_Y, Qt::ControlModifier);
        ASSERT_GT(int(w.Count()), card);
        EXPECT_EQ(w.Card(card), after);
    }
}

TEST(EditTemplateWndTest, BandSelectsTheCardsInsideAndCtrlBandTogglesThem)
{
    Window w;
    w.Drag({120, 150}, {400, 400});
    // A band selects without recording anything.
    EXPECT_EQ(std::tuple(w.wnd->SelectedIds(), w.stack.count()), std::tuple(QStringList{u"a"_s, u"b"_s}, 0));
    w.Drag({290, 170}, {350, 230}, Qt::ControlModifier);
    EXPECT_EQ(w.wnd->SelectedIds(), QStringList{u"a"_s});
    w.Drag({290, 170}, {350, 230}, Qt::ShiftModifier);
    EXPECT_EQ(w.wnd->SelectedIds(), (QStringList{u"a"_s, u"b"_s}));
    // Both move as one block.
    w.Drag({320, 200}, {360, 200});
    EXPECT_EQ(std::tuple(w.Card(0), w.Card(1), w.stack.count()),
        std::tuple(Geometry{20, 20, 30, 40}, Geometry{60, 20, 10, 10}, 1));
}

TEST(EditTemplateWndTest, ArrowsMoveTheSelectionAndMergeIntoOneStep)
{
    using Keys = std::vector<std::pair<int, Qt::KeyboardModifiers>>;
    // grid, keys, where card a ends, undo steps afterwards
    const std::tuple<double, Keys, Geometry, int> cases[] = {
        {0, {{Qt::Key_Right, {}}, {Qt::Key_Right, {}}, {Qt::Key_Right, {}}}, {10.75, 20, 30, 40}, 1},
        {5, {{Qt::Key_Down, Qt::ShiftModifier}}, {10, 25, 30, 40}, 1},  // a grid step
        {0, {{Qt::Key_Left, Qt::ShiftModifier}}, {7.5, 20, 30, 40}, 1}, // ten pixels without grid
        {0, {{Qt::Key_Left, {}}, {Qt::Key_Right, {}}}, {10, 20, 30, 40}, 0},
        {5, Keys(5, {Qt::Key_Up, Qt::ShiftModifier}), {10, 0, 30, 40}, 1}, // the page's top edge stops it
        {0, {{Qt::Key_Up, {}}, {Qt::Key_Left, {}}}, {9.75, 19.75, 30, 40}, 1},
    };
    for (const auto& [grid, keys, expected, steps] : cases) {
        SCOPED_TRACE(testing::Message() << "grid " << grid << ", " << keys.size() << " key(s) ending on " << expected[0]
                                        << "," << expected[1]);
        Window w(grid);
        w.Drag({200, 260}, {200, 260}); // selects a
        for (const auto& [key, mods] : keys)
            w.Key(key, mods);
        EXPECT_GEOMETRY(w.Card(0), expected);
        EXPECT_EQ(w.stack.count(), steps);
        if (steps > 0) {
            w.wnd->Undo();
            EXPECT_EQ(
                std::tuple(w.Card(0), w.wnd->SelectedIds()), std::tuple(Geometry{10, 20, 30, 40}, QStringList{u"a"_s}));
        }
    }
}

// Where pastes land and what each command leaves is the layout commands'
// test; here the keys reach them and are undone in order.
TEST(EditTemplateWndTest, ClipboardAndDeleteKeysAreUndoneInOrder)
{
    Window w(5);
    w.Drag({200, 260}, {200, 260});
    w.Key(Qt::Key_C, Qt::ControlModifier);
    w.Key(Qt::Key_V, Qt::ControlModifier);
    ASSERT_EQ(w.Count(), 3u);
    const QString pastedId = w.Id(2);
    EXPECT_EQ(std::tuple(w.Card(2), w.wnd->SelectedIds()), std::tuple(Geometry{15, 25, 30, 40}, QStringList{pastedId}));
    w.Key(Qt::Key_Delete);
    EXPECT_EQ(std::tuple(w.Count(), w.wnd->SelectedIds()), std::tuple(size_t(2), QStringList()));
    w.Drag({200, 260}, {200, 260});
    w.Key(Qt::Key_X, Qt::ControlModifier);
    EXPECT_EQ(std::tuple(w.Count(), w.Id(0), w.stack.count()), std::tuple(size_t(1), u"b"_s, 3));

    // Back through cut, delete and paste; then forward again.
    w.Key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(std::tuple(w.Id(0), w.wnd->SelectedIds()), std::tuple(u"a"_s, QStringList{u"a"_s}));
    w.Key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(w.Count(), 3u);
    w.Key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(std::tuple(w.Count(), w.stack.canUndo()), std::tuple(size_t(2), false));
    w.Key(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    ASSERT_EQ(w.Count(), 3u);
    EXPECT_EQ(w.Id(2), pastedId);
}

TEST(EditTemplateWndTest, OtherKeysGoOnToTheParentAndALostCaptureDropsTheDrag)
{
    Window w;
    QKeyEvent tab(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier, u"a"_s);
    QApplication::sendEvent(w.wnd.get(), &tab);
    EXPECT_FALSE(tab.isAccepted());
    QKeyEvent del(QEvent::KeyPress, Qt::Key_Delete, Qt::NoModifier);
    QApplication::sendEvent(w.wnd.get(), &del);
    EXPECT_TRUE(del.isAccepted());

    // A capture lost in a drag leaves the cards and drops the selection.
    QTest::mousePress(w.Area(), Qt::LeftButton, {}, {200, 260});
    QTest::mouseMove(w.Area(), {300, 300});
    w.wnd->OnCaptureChanged();
    QTest::mouseRelease(w.Area(), Qt::LeftButton, {}, {300, 300});
    EXPECT_EQ(std::tuple(w.Card(0), w.wnd->SelectedIds(), w.stack.count()),
        std::tuple(Geometry{10, 20, 30, 40}, QStringList(), 0));
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
    ASSERT_EQ(w.Count(), 3u);
    EXPECT_EQ(std::tuple(w.wnd->Page().cards[2]->ElementName(), w.Card(2), w.stack.count()),
        std::tuple(u"label"_s, Geometry{125, 50, 5, 5}, 1));
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
    EXPECT_EQ(std::tuple(showOne.count(), showTwo.count(), two.Page().cards[1]->x, two.SelectedIds()),
        std::tuple(1, 1, 50.0, QStringList{u"b"_s}));
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
}

TEST(EditTemplateWndTest, PaintsTheGridTheOutlinesAndTheDrag)
{
    Window w(5);
    const QColor white(Qt::white), red(Qt::red), black(Qt::black);
    QImage picture = w.Picture();
    const auto at = [&picture](int x, int y) { return picture.pixelColor(x, y); };
    // Grid dots every 20 pixels from the page's corner, white between them;
    // outside the page the out colour; an unselected card's outline dotted
    // in its colour.
    EXPECT_EQ(std::tuple(at(120, 120), at(130, 120), at(50, 50), at(141, 180), at(144, 180)),
        std::tuple(black, white, QColor(128, 128, 128), red, white));
    // How thick the left edge is on the first row where its outline is on.
    const auto thickness = [&] {
        int y = 250;
        while (y < 262 && at(140, y) != red)
            ++y;
        int n = y == 262 ? -1 : 0;
        while (n >= 0 && n < 6 && at(140 + n, y) == red)
            ++n;
        return n;
    };
    EXPECT_EQ(thickness(), 1);
    w.Drag({200, 260}, {200, 260});
    picture = w.Picture();
    EXPECT_EQ(thickness(), 3) << "selected";

    // During a drag the dotted outline of where the card would go: its top
    // edge at y 220 from x 240.
    QTest::mousePress(w.Area(), Qt::LeftButton, {}, {200, 260});
    QTest::mouseMove(w.Area(), {300, 300});
    picture = w.Picture();
    const QList<QColor> edge{at(345, 220), at(346, 220), at(347, 220)};
    EXPECT_TRUE(edge.contains(black) && edge.contains(white));
    EXPECT_EQ(at(346, 219), white);
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
    PageState s{zwtest::PageXml(wnd.Page()), {}};
    for (const auto& c : wnd.Page().cards)
        s.cards.push_back({c->id, zwtest::GeometryOf(*c)});
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
    const auto dragCard = [&] { w.Drag(onCard(), pagePoint(), mods[pick(3)]); };
    const auto undo = [&] { w.Key(Qt::Key_Z, Qt::ControlModifier); };
    const std::function<void()> actions[]
        = {dragCard, dragCard, [&] { w.Drag(pagePoint(), pagePoint(), mods[pick(3)]); },
            [&] { w.Key(keys[pick(4)], pick(2) ? Qt::ShiftModifier : Qt::NoModifier); },
            [&] {
                w.Key(Qt::Key_C, Qt::ControlModifier);
                w.Key(Qt::Key_V, Qt::ControlModifier);
            },
            [&] { w.Key(pick(2) ? Qt::Key_Delete : Qt::Key_X, pick(2) ? Qt::NoModifier : Qt::ControlModifier); },
            [&] { w.wnd->AlignSelectedControls(1 << pick(4)); },
            [&] {
                w.wnd->DistributeSelectedControls(pick(2));
                w.wnd->JustifySelectedControls(pick(2), pick(2));
            },
            [&] { w.wnd->ResizeSelectedControls(pick(2), pick(2)); },
            [&] {
                w.wnd->SetActiveState(pick(2) ? ZWEditPage::LabelTool : ZWEditPage::DateTool);
                w.Drag(pagePoint(), pagePoint(), pick(2) ? Qt::ControlModifier : Qt::NoModifier);
                w.wnd->SetActiveState(ZWEditPage::SelectTool);
            },
            [&] {
                QTest::mouseClick(w.Area(), Qt::RightButton, {}, pagePoint());
                if (QWidget* popup = QApplication::activePopupWidget())
                    popup->close();
                w.wnd->OnNewImage();
            },
            undo};
    for (int step = 0; step < 300; ++step)
        actions[pick(12)]();
    const PageState end = StateOf(*w.wnd);
    const int index = w.stack.index();
    ASSERT_GT(index, 20);
    w.stack.setIndex(0);
    EXPECT_TRUE(StateOf(*w.wnd) == start);
    w.stack.setIndex(index);
    EXPECT_TRUE(StateOf(*w.wnd) == end);
}

} // namespace
