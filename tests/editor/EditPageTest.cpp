// The designer page's mouse work without a window: presses, drags near the
// page's edges with and without grid, resizes, the band and new cards.
#include "template/ZWCardLabel.h"
#include "tests/editor/EditorTestSupport.h"

#include <gtest/gtest.h>

#include <vector>

using namespace Qt::StringLiterals;

namespace {

using zwtest::Geometry;

// The test page (EditorTestSupport.h) with its cards "a" and "b".
struct Fixture : zwtest::EditFixture
{
    ZWCardControl* a;
    ZWCardControl* b;
    explicit Fixture(double grid = 0.0)
        : EditFixture(grid), a(Add({10, 20, 30, 40}, u"a"_s)), b(Add({50, 20, 10, 10}, u"b"_s))
    {}
};

TEST(EditPageTest, ADraggedCardEndsWhereExpected)
{
    // grid, from, to, where card a ends, the button-up's "only a click"
    const std::tuple<const char*, double, QPoint, QPoint, Geometry, unsigned long> cases[] = {
        {"MovedByThePixelsDragged", 0, {200, 250}, {230, 260}, {17.5, 22.5, 30, 40}, 0},
        {"MoveStopsOnePixelInsideTheRightEdge", 0, {200, 250}, {1000, 250}, {169.75, 20, 30, 40}, 0},
        {"MoveStopsOnTheTopLeftCorner", 0, {200, 250}, {0, 0}, {0, 0, 30, 40}, 0},
        {"MoveStopsOnePixelInsideTheBottomEdge", 0, {200, 250}, {200, 900}, {10, 59.75, 30, 40}, 0},
        // 10 mm below 200 would touch the edge; the group is pulled back by
        // whole 5 mm steps until its right edge is clear of it.
        {"GridMovePulledBackFromTheRightEdge", 5, {200, 250}, {1000, 250}, {165, 20, 30, 40}, 0},
        {"GridMoveLandsOnGridLines", 5, {200, 250}, {213, 250}, {15, 20, 30, 40}, 0},
        {"GridMoveStopsAtTheLeftEdge", 5, {200, 250}, {0, 250}, {0, 20, 30, 40}, 0},
        {"RightEdgeResized", 0, {259, 250}, {300, 250}, {10, 20, 40.25, 40}, 0},
        {"RightEdgeResizeStopsAtTheLastPixel", 0, {259, 250}, {2000, 250}, {10, 20, 189.75, 40}, 0},
        {"GridResizeSnapsTheDraggedEdge", 5, {259, 250}, {300, 250}, {10, 20, 40, 40}, 0},
        {"GridResizeOfTheLeftEdgeKeepsTheRightEdge", 5, {141, 260}, {118, 260}, {5, 20, 35, 40}, 0},
        {"TopLeftResizedBothWays", 0, {140, 180}, {120, 170}, {5, 17.5, 35, 42.5}, 0},
        {"ResizeBelowTenPixelsIsRefused", 0, {141, 250}, {255, 250}, {10, 20, 30, 40}, 1},
        {"ClickWithoutMoveChangesNothing", 0, {200, 250}, {200, 250}, {10, 20, 30, 40}, 1},
    };
    for (const auto& [name, grid, from, to, expected, clickOnly] : cases) {
        SCOPED_TRACE(name);
        Fixture f(grid);
        EXPECT_EQ(f.Drag(from, to), clickOnly);
        EXPECT_GEOMETRY(zwtest::GeometryOf(*f.a), expected);
        EXPECT_EQ(f.edit.GetOperation(), 0);
    }
}

TEST(EditPageTest, PressAndFirstMoveSetTheOperation)
{
    // tool, card a selected first, point, Ctrl, Shift, operation on pressing and after the first move
    const std::tuple<const char*, int, bool, QPoint, bool, bool, int, int> cases[] = {
        {"UnselectedCardPlain", 2, false, {200, 250}, false, false, 3, 7},
        {"UnselectedCardCtrl", 2, false, {200, 250}, true, false, 4, 8},
        {"UnselectedCardShift", 2, false, {200, 250}, false, true, 19, 21},
        {"UnselectedCardCtrlBeatsShift", 2, false, {200, 250}, true, true, 4, 8},
        {"SelectedCardPlain", 2, true, {200, 250}, false, false, 5, 9},
        {"SelectedCardCtrl", 2, true, {200, 250}, true, false, 6, 10},
        {"SelectedCardShift", 2, true, {200, 250}, false, true, 20, 22},
        {"EmptyPageBand", 2, false, {600, 400}, false, false, 13, 15},
        {"EmptyPageBandCtrl", 2, false, {600, 400}, true, false, 14, 16},
        {"EmptyPageBandShift", 2, false, {600, 400}, false, true, 17, 18},
        {"EmptyPageNewCard", 0, false, {600, 400}, false, false, 1, 11},
        {"EmptyPageNewCardCtrl", 4, false, {600, 400}, true, false, 2, 12},
        {"OutsideThePageNothing", 2, false, {50, 50}, false, false, 0, 0},
        {"LastPageColumnIsOnThePage", 2, false, {899, 499}, false, false, 13, 15},
        {"FirstColumnPastThePageIsOff", 0, false, {900, 300}, false, false, 0, 0},
    };
    for (const auto& [name, activeState, preselectA, point, ctrl, shift, down, moved] : cases) {
        SCOPED_TRACE(name);
        Fixture f;
        f.edit.SetActiveState(activeState);
        if (preselectA)
            f.Drag({200, 250}, {200, 250});
        f.edit.ButtonDown(point, ctrl, shift);
        EXPECT_EQ(f.edit.GetOperation(), down);
        f.edit.MouseMove(point + QPoint(1, 1));
        EXPECT_EQ(f.edit.GetOperation(), moved);
    }
}

TEST(EditPageTest, ABandSelectsTheCardsWhollyInsideItAndItsModifiersAddOrToggle)
{
    // B selected first, band end, Ctrl, Shift, selection after
    const std::tuple<bool, QPoint, bool, bool, std::vector<QString>> cases[] = {
        {false, {400, 400}, false, false, {u"a"_s, u"b"_s}}, {false, {280, 400}, false, false, {u"a"_s}},
        {false, {260, 340}, false, false, {u"a"_s}}, // ending on the card's last edge includes it
        {false, {259, 340}, false, false, {}},       // one pixel short leaves it out
        {true, {280, 400}, false, false, {u"a"_s}},  // a plain band replaces the selection
        {true, {280, 400}, false, true, {u"b"_s, u"a"_s}},
        {true, {400, 400}, true, false, {u"a"_s}}, // Ctrl toggles selected cards off
    };
    for (const auto& [preselectB, to, ctrl, shift, expected] : cases) {
        Fixture f;
        if (preselectB)
            f.Drag({320, 200}, {320, 200});
        f.Drag({120, 150}, to, ctrl, shift);
        EXPECT_EQ(f.SelectedIds(), expected) << to.x() << "," << to.y() << " ctrl " << ctrl << " shift " << shift;
    }
}

TEST(EditPageTest, DrawingWithTheLabelToolMakesASelectedLabelUnlessTooSmall)
{
    Fixture f;
    f.edit.SetActiveState(ZWEditPage::LabelTool);
    f.edit.ButtonDown({600, 300}, false, false);
    f.edit.MouseMove({609, 340});
    EXPECT_EQ(f.edit.ShownCursor(), ZWHandleZones::Cursor::NoEntry);
    EXPECT_EQ(std::tuple(f.edit.ButtonUp(), f.page.cards.size()), std::tuple(1u, size_t(2)));

    EXPECT_EQ(f.Drag({500, 300}, {620, 460}), 0u);
    ASSERT_EQ(f.page.cards.size(), 3u);
    auto* label = dynamic_cast<ZWCardLabel*>(f.page.cards.back().get());
    ASSERT_NE(label, nullptr);
    EXPECT_GEOMETRY(zwtest::GeometryOf(*label), 100, 50, 30, 40);
    EXPECT_FALSE(label->id.isEmpty());
    EXPECT_EQ(std::tuple(label->font, label->value), std::tuple(u"Arial"_s, u"Text"_s));
    EXPECT_EQ(f.SelectedIds(), std::vector<QString>{label->id});
}

TEST(EditPageTest, DrawnCardSnapsToTheGridAndCtrlKeepsTheSelection)
{
    Fixture f(5);
    f.Drag({200, 250}, {200, 250}); // selects A
    f.edit.SetActiveState(ZWEditPage::DateTool);
    f.Drag({600, 300}, {651, 343}, true);
    ASSERT_EQ(f.page.cards.size(), 3u);
    const ZWCardControl& card = *f.page.cards.back();
    EXPECT_TRUE(card.IsKindOf("ZWCardDate"));
    EXPECT_EQ(card.color, f.edit.dateColor);
    EXPECT_GEOMETRY(zwtest::GeometryOf(card), 125, 50, 15, 10);
    EXPECT_EQ(f.Selected(), 2);
}

TEST(EditPageTest, ClicksNarrowOrToggleTheSelectionAGroupMovesAsOneAndALostCaptureDropsTheDrag)
{
    Fixture f;
    f.edit.ButtonDown({200, 250}, false, false);
    f.edit.MouseMove({260, 250});
    f.edit.CancelDrag();
    EXPECT_EQ(std::tuple(f.edit.GetOperation(), f.Selected(), f.edit.ButtonUp(), f.a->x), std::tuple(0, 0, 1ul, 10.0));

    f.Drag({120, 150}, {400, 400}); // both
    f.Drag({200, 250}, {200, 250}); // plain click on A: A alone
    EXPECT_EQ(f.SelectedIds(), std::vector<QString>{u"a"_s});
    f.Drag({200, 250}, {200, 250}, true); // Ctrl-click on the only one
    EXPECT_TRUE(f.SelectedIds().empty());

    f.Drag({120, 150}, {400, 400});
    f.Drag({200, 250}, {1000, 250});
    // B's right edge (340 px) is the group's: it stops on pixel 899.
    EXPECT_EQ(std::tuple(f.a->x, f.b->x), std::tuple(149.75, 189.75));
}

TEST(EditPageTest, CardWiderThanThePageMovedOnAFineGridStaysAtTheLeftEdge)
{
    Fixture f(0.01);
    f.a->width = 500;
    f.Drag({200, 250}, {300, 250});
    EXPECT_DOUBLE_EQ(f.a->x, 0);
    EXPECT_DOUBLE_EQ(f.a->width, 500);
}

} // namespace
