// The selection and a card's handle zones: which zone a point is in, each
// zone's cursors and fixed corner, and how a resize step moves the free edges.
#include "editor/ZWHandleZones.h"
#include "editor/ZWSelection.h"
#include "template/ZWCardControl.h"

#include <gtest/gtest.h>

namespace {

using Cursor = ZWHandleZones::Cursor;

// The card spans x 100..199 and y 100..159 (right and bottom excluded).
TEST(HandleZonesTest, EachPointFallsInItsZone)
{
    const std::tuple<const char*, QPoint, int> cases[] = {
        {"TopLeftCorner", {100, 100}, 9},
        {"TopLeftArmEndsAtTenPixels", {109, 102}, 9},
        {"PastTheTopLeftArmIsTheTopEdge", {110, 100}, 8},
        {"TopLeftDownArmEndsAtSixPixels", {102, 105}, 9},
        {"BelowTheTopLeftDownArmIsTheLeftEdge", {102, 106}, 1},
        {"BottomLeftCorner", {100, 159}, 5},
        {"BottomLeftArm", {109, 157}, 5},
        {"BottomLeftUpArm", {102, 154}, 5},
        {"AboveTheBottomLeftUpArmIsTheLeftEdge", {102, 153}, 1},
        {"TopRightCorner", {199, 100}, 10},
        {"TopRightArm", {190, 102}, 10},
        {"LeftOfTheTopRightArmIsTheTopEdge", {189, 100}, 8},
        {"TopRightDownArm", {197, 105}, 10},
        {"BelowTheTopRightDownArmIsTheRightEdge", {197, 106}, 2},
        {"BottomRightCorner", {199, 159}, 6},
        {"BottomEdge", {150, 157}, 4},
        {"JustAboveTheBottomEdgeMoves", {150, 156}, 15},
        {"JustBelowTheTopEdgeMoves", {150, 103}, 15},
        {"JustRightOfTheLeftEdgeMoves", {103, 130}, 15},
        {"JustLeftOfTheRightEdgeMoves", {196, 130}, 15},
        {"RightEdge", {197, 130}, 2},
    };
    ZWCardControl card;
    const ZWRect rect{100, 100, 200, 160};
    for (const auto& [name, point, style] : cases) {
        EXPECT_EQ(ZWHandleZones::GetDraggingStyle(&card, point, rect), style) << name;
        EXPECT_EQ(ZWHandleZones::GetDraggingStyle(nullptr, point, rect), 0) << name << ": no card has no zone";
    }
}

TEST(HandleZonesTest, EachZoneHasItsCursorsAndFixedCorner)
{
    // zone, cursor while dragging and hovering, fixed corner of ZWRect{10, 20, 30, 40} (none: (-7, -7))
    const std::tuple<int, Cursor, Cursor, QPoint> cases[] = {
        {1, Cursor::SizeWestEast, Cursor::SizeWestEast, {30, 20}},     // left edge: top right
        {2, Cursor::SizeWestEast, Cursor::SizeWestEast, {10, 20}},     // right edge: top left
        {4, Cursor::SizeNorthSouth, Cursor::SizeNorthSouth, {10, 20}}, // bottom edge: top left
        {8, Cursor::SizeNorthSouth, Cursor::SizeNorthSouth, {10, 40}}, // top edge: bottom left
        {5, Cursor::SizeNorthEastSouthWest, Cursor::SizeNorthEastSouthWest, {30, 20}},
        {10, Cursor::SizeNorthEastSouthWest, Cursor::SizeNorthEastSouthWest, {10, 40}},
        {6, Cursor::SizeNorthWestSouthEast, Cursor::SizeNorthWestSouthEast, {10, 20}},
        {9, Cursor::SizeNorthWestSouthEast, Cursor::SizeNorthWestSouthEast, {30, 40}},
        {15, Cursor::Moving, Cursor::OverCard, {-7, -7}}, // a move has no fixed corner
        {0, Cursor::Moving, Cursor::OverCard, {-7, -7}},  // nor has a card that cannot be resized
    };
    for (const auto& [style, drag, hover, expected] : cases) {
        QPoint anchor(-7, -7);
        EXPECT_EQ(std::tuple(ZWHandleZones::DragCursor(style), ZWHandleZones::HoverCursor(style),
                      ZWHandleZones::AnchorFor(style, ZWRect{10, 20, 30, 40}, anchor), anchor),
            std::tuple(drag, hover, expected != QPoint(-7, -7), expected))
            << "zone " << style;
    }
}

TEST(SelectionTest, AResizeStepMovesTheFreeEdgesAndNormalises)
{
    // zone, mouse step, dragging rectangle of the card at {100, 100, 200, 160}
    const std::tuple<int, QPoint, ZWRect> cases[] = {
        {2, {15, 0}, {100, 100, 215, 160}}, {1, {15, 0}, {115, 100, 200, 160}}, {8, {0, -20}, {100, 80, 200, 160}},
        {6, {5, 7}, {100, 100, 205, 167}}, {9, {5, 7}, {105, 107, 200, 160}},
        {2, {-130, 0}, {70, 100, 100, 160}}, // the right edge dragged past the left flips
    };
    for (const auto& [style, delta, expected] : cases) {
        ZWCardControl card;
        ZWSelection selection;
        const ZWRect rect{100, 100, 200, 160};
        QPoint anchor;
        ZWHandleZones::AnchorFor(style, rect, anchor);
        selection.AddSelection(rect, anchor, &card);
        selection.ActualizeResizeDraggingRect(delta);
        EXPECT_EQ(selection.GetDraggingRect(0), expected)
            << "zone " << style << " by " << delta.x() << "," << delta.y();
    }
}

TEST(SelectionTest, TargetEdgeIsTheOneAwayFromTheAnchorAndTheGlobalRectSkipsEmptyRectanglesAndPrefersTheBand)
{
    ZWCardControl a, b, c;
    ZWSelection selection;
    EXPECT_EQ(selection.GetTargetX(), 0);
    selection.AddSelection({100, 100, 200, 160}, {200, 160}, &a); // top-left handle
    selection.AddSelection({300, 50, 350, 120}, {350, 120}, &b);
    EXPECT_EQ(std::tuple(selection.GetTargetX(), selection.GetTargetY()), std::tuple(100, 50));
    selection.GetAnclePoint(0) = QPoint(100, 100); // bottom-right handle
    EXPECT_EQ(std::tuple(selection.GetTargetX(), selection.GetTargetY()), std::tuple(350, 160));

    selection.Clear();
    selection.AddSelection({}, {}, &a);
    selection.AddSelection({100, 100, 200, 160}, {}, &b);
    selection.AddSelection({50, 120, 150, 300}, {}, &c);
    ZWRect g;
    selection.CalculateGlobalRect(g);
    EXPECT_EQ(g, (ZWRect{50, 100, 200, 300}));
    selection.band = {1, 2, 3, 4};
    selection.CalculateGlobalRect(g);
    EXPECT_EQ(g, (ZWRect{1, 2, 3, 4}));
    selection.band.top = -1;
    EXPECT_TRUE(selection.IsRectUndefined());
}

TEST(SelectionTest, OutOfRangeAccessIsHarmless)
{
    ZWCardControl a, b;
    ZWSelection selection;
    EXPECT_FALSE(selection.IsLastSelected(&a) || selection.IsLastSelected(nullptr));
    selection.AddSelection({1, 1, 5, 5}, {1, 1}, &a);
    selection.AddSelection({2, 2, 6, 6}, {2, 2}, &b);
    EXPECT_FALSE(selection.GetSelectedControl(2) || selection.GetSelectedControl(-1));
    EXPECT_FALSE(selection.Delete(2));
    EXPECT_TRUE(selection.IsLastSelected(&b));
    EXPECT_TRUE(selection.Delete(0));
    EXPECT_EQ(selection.Find(&b), 0);
    EXPECT_EQ(std::tuple(selection.GetDraggingRect(0), selection.GetDraggingRect(5)),
        std::tuple(ZWRect{2, 2, 6, 6}, ZWRect()));
    selection.Clear();
    EXPECT_EQ(selection.GetNumberOfSelectedControls(), 0);
    EXPECT_TRUE(selection.IsRectUndefined());
}

} // namespace
