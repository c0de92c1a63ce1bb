// The designer page's geometry: millimetres to pixels at a zoom and scroll
// position, zoom modes, orientation, sizes of new cards and grid snapping.
#include "editor/ZWPageMapping.h"
#include "tests/editor/EditorTestSupport.h"

#include <gtest/gtest.h>

namespace {

using zwtest::Geometry;

// The designer's test page (EditorTestSupport.h).
struct Page
{
    ZWGlobalProperties props;
    ZWPageMapping mapping{props};

    Page(double width = 200.0, double height = 100.0, double grid = 0.0)
    {
        std::tie(props.width, props.height, props.xgrid, props.ygrid) = std::tuple(width, height, grid, grid);
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

TEST(PageMappingTest, CardsOccupyTheirPixelsAtEachZoomAndScrollPosition)
{
    // pixels per mm, page, window, zoom, scroll position, card, its pixels
    const std::tuple<const char*, double, QSizeF, QSize, double, QPoint, Geometry, ZWRect> cases[] = {
        {"centred at full size", 4, {200, 100}, {1000, 600}, 1.0, {0, 0}, {10, 20, 30, 40}, {140, 180, 260, 340}},
        {"centred at half size", 4, {200, 100}, {1000, 600}, 0.5, {0, 0}, {10, 20, 30, 40}, {320, 240, 380, 320}},
        {"scrolled when ten times larger than the window", 4, {200, 100}, {1000, 600}, 10.0, {500, 300},
            {10, 20, 30, 40}, {-100, 500, 1100, 2100}},
        {"the scroll position is ignored while the page fits", 4, {200, 100}, {1000, 600}, 1.0, {500, 300},
            {10, 20, 30, 40}, {140, 180, 260, 340}},
        {"fit mode uses the absolute factor", 4, {200, 100}, {1000, 600}, -1.25, {0, 0}, {10, 20, 30, 40},
            {50, 150, 200, 350}},
        // 96 dpi: the right edge is rounded from the unrounded left edge (9),
        // not from the rounded one (10).
        {"the right edge is rounded from the exact left edge", 3.7795, {210, 297}, {800, 600}, 1.0, {0, 0},
            {0.1, 0, 1.5, 1}, {4, 0, 9, 4}},
        {"a tall page starts at the top scroll position", 3.7795, {210, 297}, {800, 600}, 1.0, {0, 40}, {0, 0, 10, 10},
            {3, -40, 41, -2}},
    };
    for (const auto& [name, ppm, size, client, zoom, scroll, card, expected] : cases) {
        SCOPED_TRACE(name);
        Page page(size.width(), size.height());
        page.mapping.SetDevice(ppm, ppm);
        page.mapping.SetClientSize(client.width(), client.height());
        page.mapping.SetScrollPosition(scroll.x(), scroll.y());
        page.mapping.SetMode(zoom);
        ZWPageMapping::Dimensions d;
        ASSERT_TRUE(page.mapping.GetTemplateDimensions(d));
        const ZWRect r = page.mapping.CardRect(*zwtest::MakeCard({}, card, {}), d);
        EXPECT_EQ(r, expected);
        // Back to millimetres: the left edge within one pixel.
        EXPECT_NEAR(page.mapping.PixelToMmX(r.left, d), card[0], size.width() / d.pageWidthPx);
    }
}

TEST(PageMappingTest, FitModeKeepsTheSmallerFactorStoresItNegativeFollowsTurnsAndWaitsForADevice)
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
    EXPECT_EQ(std::tuple(w, h), std::tuple(1600.0, 800.0));

    // Without a device fit waits, and becomes full size.
    page.mapping.SetDevice(0, 0);
    EXPECT_TRUE(page.mapping.SetMode(0));
    EXPECT_EQ(page.Zoom(), ZWPageMapping::FitPending);
    EXPECT_FALSE(page.mapping.GetTemplateDimensions(d) || page.mapping.GetMinimumControlDimensions(w, h));
    page.mapping.SetDevice(4, 4);
    ASSERT_TRUE(page.mapping.GetTemplateDimensions(d));
    EXPECT_EQ(std::tuple(page.Zoom(), d.pageWidthPx), std::tuple(1.0, 800.0));
}

TEST(PageMappingTest, ZoomModesStoreTheirFactorAndSayWhetherItChanged)
{
    // start, mode, factor after, changed
    const std::tuple<double, int, double, bool> cases[]
        = {{1.0, 2, 2.0, true}, {1.0, 4, 4.0, true}, {3.0, 3, 3.0, false}, // the same again is no change
            {1.37, 100, 1.37, false},                                      // 100 keeps the percentage
            {2.0, 7, 1.0, true}, {1.0, -1, 1.0, false}};                   // unknown and negative modes are full size
    for (const auto& [start, mode, factor, changed] : cases) {
        Page page;
        page.mapping.SetMode(start);
        EXPECT_EQ(page.mapping.SetMode(mode), changed) << start << " mode " << mode;
        EXPECT_EQ(page.Zoom(), factor) << start << " mode " << mode;
    }
}

TEST(PageMappingTest, OrientationSwapsTheSidesOnlyWhenTheyDisagree)
{
    // width, height, orientation, swapped
    const std::tuple<double, double, int, bool> cases[]
        = {{200, 100, 1, true}, {100, 200, 0, true}, {200, 100, 0, false}, {150, 150, 0, false}, {150, 150, 1, false}};
    for (const auto& [width, height, orientation, swapped] : cases) {
        Page page(width, height);
        EXPECT_EQ(page.mapping.SetOrientation(orientation), swapped) << width << "x" << height << " " << orientation;
        EXPECT_EQ(std::tuple(page.mapping.GetOrientation(), page.props.width, page.props.height),
            std::tuple(orientation, swapped ? height : width, swapped ? width : height));
    }
}

TEST(PageMappingTest, ANewCardIsThirtyPixelsOrOneGridStepAtTheMouseAndLiesOnThePage)
{
    // grid, pixels per mm, mouse, expected
    const std::tuple<double, double, QPoint, Geometry> cases[] = {
        {0, 4, {140, 180}, {10, 20, 7.5, 7.5}},
        {0, 4, {890, 480}, {192.25, 92.25, 7.5, 7.5}}, // pulled back to end on the last pixel
        {0, 4, {869, 469}, {192.25, 92.25, 7.5, 7.5}}, // fits exactly there
        {0, 4, {50, 50}, {0, 0, 7.5, 7.5}},            // pushed onto the page
        {5, 4, {143, 181}, {10, 20, 5, 5}},            // snapped to the grid
        {0, 0, {300, 300}, {0, 0, 10, 10}},            // no device: 10 mm at the origin
    };
    for (const auto& [grid, ppm, mouse, expected] : cases) {
        Page page(200, 100, grid);
        page.mapping.SetDevice(ppm, ppm);
        Geometry g{-1, -1, -1, -1};
        page.mapping.GetInitialControlDimensions(mouse, g[0], g[1], g[2], g[3]);
        EXPECT_GEOMETRY(g, expected) << mouse.x() << "," << mouse.y();
    }
}

// One pixel is 0.25 mm here: edges within one pixel of a grid line go on it.
TEST(PageMappingTest, CardEdgesNearAGridLineAreAdjustedOntoIt)
{
    // grid, x and y, width and height, expected position, expected size
    const std::tuple<double, double, double, double, double> cases[]
        = {{5, 5.2, 10.1, 5, 10}, {5, 5.25, 9.5, 5.25, 9.5}, // exactly one pixel away stays
            {5, 5.3, 9.8, 5.3, 9.7},                         // only the far edge is near a line
            {0, 5.2, 10.1, 5.2, 10.1}};
    for (const auto& [grid, x, w, expectedX, expectedW] : cases) {
        Page page(200, 100, grid);
        ZWPageMapping::Dimensions d;
        ASSERT_TRUE(page.mapping.GetTemplateDimensions(d));
        auto card = zwtest::MakeCard({}, {x, x, w, w}, {});
        page.mapping.IntelligentAdjustToGrid(*card, d);
        EXPECT_GEOMETRY(zwtest::GeometryOf(*card), expectedX, expectedX, expectedW, expectedW) << x << " " << w;
    }
}

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
