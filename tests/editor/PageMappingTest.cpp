// The designer page's geometry: millimetres to pixels at a zoom and scroll
// position, zoom modes, orientation, sizes of new cards and grid snapping.
#include "editor/ZWPageMapping.h"
#include "tests/editor/EditorTestSupport.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using zwtest::Geometry;

// The designer's test page (EditorTestSupport.h).
struct Page
{
    ZWGlobalProperties props;
    ZWPageMapping mapping{props};

    Page(double width = 200.0, double height = 100.0, double grid = 0.0)
    {
        props.width = width;
        props.height = height;
        props.xgrid = props.ygrid = grid;
        mapping.SetDevice(4.0, 4.0);
        mapping.SetClientSize(1000, 600);
    }
    double Zoom() const
    {
        double zoom = 0;
        mapping.GetMode(zoom);
        return zoom;
    }
};

const auto byName = [](const auto& info) { return std::string(info.param.name); };

struct MappingCase
{
    const char* name;
    double ppm, pageW, pageH;
    int clientW, clientH;
    double zoom;
    int scrollX, scrollY;
    Geometry card;
    ZWRect expected;
};

class CardRectTest : public ::testing::TestWithParam<MappingCase>
{};

TEST_P(CardRectTest, CardOccupiesExpectedPixels)
{
    const MappingCase& c = GetParam();
    Page page(c.pageW, c.pageH);
    page.mapping.SetDevice(c.ppm, c.ppm);
    page.mapping.SetClientSize(c.clientW, c.clientH);
    page.mapping.SetScrollPosition(c.scrollX, c.scrollY);
    page.mapping.SetMode(c.zoom);
    ZWPageMapping::Dimensions d;
    ASSERT_TRUE(page.mapping.GetTemplateDimensions(d));
    const ZWRect r = page.mapping.CardRect(*zwtest::MakeCard({}, c.card, {}), d);
    EXPECT_EQ(r, c.expected);
    // Back to millimetres: the left edge within one pixel.
    EXPECT_NEAR(page.mapping.PixelToMmX(r.left, d), c.card[0], c.pageW / d.pageWidthPx);
}

const MappingCase mappingCases[] = {
    {"CentredAtFullSize", 4, 200, 100, 1000, 600, 1.0, 0, 0, {10, 20, 30, 40}, {140, 180, 260, 340}},
    {"CentredAtHalfSize", 4, 200, 100, 1000, 600, 0.5, 0, 0, {10, 20, 30, 40}, {320, 240, 380, 320}},
    {"ScrolledWhenTenTimesLargerThanTheWindow", 4, 200, 100, 1000, 600, 10.0, 500, 300, {10, 20, 30, 40},
        {-100, 500, 1100, 2100}},
    {"ScrollPositionIgnoredWhileThePageFits", 4, 200, 100, 1000, 600, 1.0, 500, 300, {10, 20, 30, 40},
        {140, 180, 260, 340}},
    {"FitModeUsesTheAbsoluteFactor", 4, 200, 100, 1000, 600, -1.25, 0, 0, {10, 20, 30, 40}, {50, 150, 200, 350}},
    // 96 dpi: the right edge is rounded from the unrounded left edge (9), not
    // from the rounded one (10).
    {"RightEdgeRoundedFromTheExactLeftEdge", 3.7795, 210, 297, 800, 600, 1.0, 0, 0, {0.1, 0, 1.5, 1}, {4, 0, 9, 4}},
    {"TallPageStartsAtTheTopScrollPosition", 3.7795, 210, 297, 800, 600, 1.0, 0, 40, {0, 0, 10, 10}, {3, -40, 41, -2}},
};

INSTANTIATE_TEST_SUITE_P(Mapping, CardRectTest, ::testing::ValuesIn(mappingCases), byName);

TEST(PageMappingTest, FitModeKeepsTheSmallerFactorStoresItNegativeAndFollowsTurns)
{
    Page page; // zx = 1000 / 4 / 200 = 1.25, zy = 600 / 4 / 100 = 1.5
    EXPECT_TRUE(page.mapping.SetMode(0));
    EXPECT_DOUBLE_EQ(page.Zoom(), -1.25);
    ZWPageMapping::Dimensions d;
    ASSERT_TRUE(page.mapping.GetTemplateDimensions(d));
    EXPECT_EQ(std::tuple(d.pageWidthPx, d.offsetX, d.offsetY), std::tuple(1000.0, 0.0, 50.0));
    EXPECT_FALSE(page.mapping.SetMode(0));
    EXPECT_TRUE(page.mapping.SetOrientation(1)); // now 100 × 200: zy = 600 / 4 / 200 = 0.75
    EXPECT_DOUBLE_EQ(page.Zoom(), -0.75);
    EXPECT_TRUE(page.mapping.SetOrientation(0));
    // A factor reports only real changes.
    EXPECT_TRUE(page.mapping.SetMode(1.0));
    EXPECT_FALSE(page.mapping.SetMode(1.0));
    EXPECT_TRUE(page.mapping.SetMode(-2.0));
    EXPECT_FALSE(page.mapping.SetMode(-2.0));
    double w = 0, h = 0;
    ASSERT_TRUE(page.mapping.GetMinimumControlDimensions(w, h)); // the page at the zoom
    EXPECT_DOUBLE_EQ(w, 1600.0);
    EXPECT_DOUBLE_EQ(h, 800.0);
}

TEST(PageMappingTest, FitWithoutDeviceWaitsAndBecomesFullSize)
{
    Page page;
    page.mapping.SetDevice(0, 0);
    EXPECT_TRUE(page.mapping.SetMode(0));
    EXPECT_EQ(page.Zoom(), ZWPageMapping::FitPending);
    ZWPageMapping::Dimensions d;
    EXPECT_FALSE(page.mapping.GetTemplateDimensions(d));
    double w = 0, h = 0;
    EXPECT_FALSE(page.mapping.GetMinimumControlDimensions(w, h));
    page.mapping.SetDevice(4, 4);
    ASSERT_TRUE(page.mapping.GetTemplateDimensions(d));
    EXPECT_EQ(page.Zoom(), 1.0);
    EXPECT_DOUBLE_EQ(d.pageWidthPx, 800.0);
}

struct ModeCase
{
    const char* name;
    double start;
    int mode;
    double expected;
    bool changed;
};

class SetModeTest : public ::testing::TestWithParam<ModeCase>
{};

TEST_P(SetModeTest, StoresTheFactorAndSaysWhetherItChanged)
{
    const ModeCase& c = GetParam();
    Page page;
    page.mapping.SetMode(c.start);
    EXPECT_EQ(page.mapping.SetMode(c.mode), c.changed);
    EXPECT_EQ(page.Zoom(), c.expected);
}

const ModeCase modeCases[] = {
    {"TwoDoubles", 1.0, 2, 2.0, true},
    {"FourQuadruples", 1.0, 4, 4.0, true},
    {"ThreeAgainIsNoChange", 3.0, 3, 3.0, false},
    {"HundredKeepsThePercentage", 1.37, 100, 1.37, false},
    {"UnknownModeIsFullSize", 2.0, 7, 1.0, true},
    {"NegativeModeIsFullSize", 1.0, -1, 1.0, false},
};

INSTANTIATE_TEST_SUITE_P(Zoom, SetModeTest, ::testing::ValuesIn(modeCases), byName);

struct OrientationCase
{
    const char* name;
    double width, height;
    int orientation;
    bool swapped;
};

class SetOrientationTest : public ::testing::TestWithParam<OrientationCase>
{};

TEST_P(SetOrientationTest, SwapsSidesOnlyWhenTheyDisagree)
{
    const OrientationCase& c = GetParam();
    Page page(c.width, c.height);
    EXPECT_EQ(page.mapping.SetOrientation(c.orientation), c.swapped);
    EXPECT_EQ(std::tuple(page.mapping.GetOrientation(), page.props.width, page.props.height),
        std::tuple(c.orientation, c.swapped ? c.height : c.width, c.swapped ? c.width : c.height));
}

const OrientationCase orientationCases[] = {
    {"LandscapePageTurnedPortrait", 200, 100, 1, true},
    {"PortraitPageTurnedLandscape", 100, 200, 0, true},
    {"LandscapePageStaysLandscape", 200, 100, 0, false},
    {"SquarePageNeverSwaps", 150, 150, 0, false},
    {"SquarePageNeverSwapsToPortrait", 150, 150, 1, false},
};

INSTANTIATE_TEST_SUITE_P(Orientation, SetOrientationTest, ::testing::ValuesIn(orientationCases), byName);

struct InitialCase
{
    const char* name;
    double grid;
    QPoint mouse;
    Geometry expected;
    double ppm = 4.0;
};

class InitialDimensionsTest : public ::testing::TestWithParam<InitialCase>
{};

TEST_P(InitialDimensionsTest, NewCardLiesOnThePage)
{
    const InitialCase& c = GetParam();
    Page page(200, 100, c.grid);
    page.mapping.SetDevice(c.ppm, c.ppm);
    Geometry g{-1, -1, -1, -1};
    page.mapping.GetInitialControlDimensions(c.mouse, g[0], g[1], g[2], g[3]);
    EXPECT_GEOMETRY(g, c.expected);
}

const InitialCase initialCases[] = {
    {"ThirtyPixelsAtTheMouseWithoutGrid", 0, {140, 180}, {10, 20, 7.5, 7.5}},
    {"PulledBackToEndOnTheLastPixel", 0, {890, 480}, {192.25, 92.25, 7.5, 7.5}},
    {"ExactlyFittingAtTheLastPixelStays", 0, {869, 469}, {192.25, 92.25, 7.5, 7.5}},
    {"PushedOntoThePageFromTheLeft", 0, {50, 50}, {0, 0, 7.5, 7.5}},
    {"OneGridStepSnappedToTheGrid", 5, {143, 181}, {10, 20, 5, 5}},
    {"WithoutDeviceTenMillimetresAtTheOrigin", 0, {300, 300}, {0, 0, 10, 10}, 0.0},
};

INSTANTIATE_TEST_SUITE_P(NewCard, InitialDimensionsTest, ::testing::ValuesIn(initialCases), byName);

struct AdjustCase
{
    const char* name;
    double grid, x, w, expectedX, expectedW;
};

class AdjustToGridTest : public ::testing::TestWithParam<AdjustCase>
{};

// One pixel is 0.25 mm here.
TEST_P(AdjustToGridTest, EdgesWithinOnePixelOfALineGoOnIt)
{
    const AdjustCase& c = GetParam();
    Page page(200, 100, c.grid);
    ZWPageMapping::Dimensions d;
    ASSERT_TRUE(page.mapping.GetTemplateDimensions(d));
    auto card = zwtest::MakeCard({}, {c.x, c.x, c.w, c.w}, {});
    page.mapping.IntelligentAdjustToGrid(*card, d);
    EXPECT_GEOMETRY(zwtest::GeometryOf(*card), c.expectedX, c.expectedX, c.expectedW, c.expectedW);
}

const AdjustCase adjustCases[] = {
    {"BothEdgesPulledOntoTheGrid", 5, 5.2, 10.1, 5, 10},
    {"ExactlyOnePixelAwayStays", 5, 5.25, 9.5, 5.25, 9.5},
    {"NearEdgeFarAwayOnlyFarEdgeSnaps", 5, 5.3, 9.8, 5.3, 9.7},
    {"NoGridNoChange", 0, 5.2, 10.1, 5.2, 10.1},
};

INSTANTIATE_TEST_SUITE_P(Grid, AdjustToGridTest, ::testing::ValuesIn(adjustCases), byName);

TEST(PageMappingTest, PressedPointSnapsToTheNearestDotOnThePage)
{
    Page page(200, 100, 5);
    ZWPageMapping::Dimensions d;
    ASSERT_TRUE(page.mapping.GetTemplateDimensions(d));
    EXPECT_EQ(page.mapping.SnapPointToGrid({143, 181}, d), QPoint(140, 180));
    EXPECT_EQ(page.mapping.SnapPointToGrid({90, 95}, d), QPoint(100, 100));
    EXPECT_EQ(page.mapping.SnapPointToGrid({150, 130}, d), QPoint(160, 140)); // ties away from zero
}

} // namespace
