#include "viewer/ZWViewZoom.h"
#include "host/core/ZWNoValue.h"

#include "tests/support/ZWTestSupport.h"

#include <gtest/gtest.h>
#include <string>

namespace {

using zwtest::PrintTo;

TEST(ZWViewZoom, StepsTheirButtonsAndTheSelector)
{
    struct Case
    {
        double factor;
        std::optional<double> in, out;
        int selectorIndex;
    } cases[] = {
        {-0.73, 1.0, 0.5, 0},         // fit mode: to the next multiple of 0.5 beyond
        {-1.0, 1.5, 0.5, 0},          // a fit exactly on a step moves past it
        {-0.4, 0.5, std::nullopt, 0}, // nothing below 0.5
        {-12.0, std::nullopt, 10.0, 0},
        {ZW_NO_VALUE, 0.5, std::nullopt, 0},
        {1.0, 1.5, 0.5, 2},
        {0.5, 1.0, std::nullopt, 1},
        {10.0, std::nullopt, 9.5, 20},
        {9.5, 10.0, 9.0, 19},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(ZWViewZoom::ZoomIn(c.factor), c.in) << c.factor;
        EXPECT_EQ(ZWViewZoom::ZoomOut(c.factor), c.out) << c.factor;
        // A button is enabled exactly when it has a step to go to.
        EXPECT_EQ(ZWViewZoom::CanZoomIn(c.factor), c.in.has_value()) << c.factor;
        EXPECT_EQ(ZWViewZoom::CanZoomOut(c.factor), c.out.has_value()) << c.factor;
        EXPECT_EQ(ZWViewZoom::SelectorIndex(c.factor), c.selectorIndex) << c.factor;
    }
    EXPECT_DOUBLE_EQ(ZWViewZoom::FactorOfIndex(3), 1.5);
}

TEST(ZWViewZoom, FitTakesTheLimitingSide)
{
    // A window twice as wide as the page's aspect: the height limits.
    const double pxPerMm = 96.0 / 25.4;
    const double f = ZWViewZoom::FitFactor(2 * 210 * pxPerMm, 297 * pxPerMm, pxPerMm, pxPerMm, 210, 297);
    EXPECT_DOUBLE_EQ(f, 1.0);
    EXPECT_DOUBLE_EQ(ZWViewZoom::FitFactor(105 * pxPerMm, 297 * pxPerMm, pxPerMm, pxPerMm, 210, 297), 0.5);
    EXPECT_EQ(ZWViewZoom::FitFactor(100, 100, pxPerMm, pxPerMm, 0, 297), ZW_NO_VALUE);
}

TEST(ZWViewZoom, ScrollStepsAreATwentiethAndAWholeView)
{
    // 30.5 rounds up; never less than a pixel.
    EXPECT_EQ(std::tuple(ZWViewZoom::LineStep(800), ZWViewZoom::LineStep(610), ZWViewZoom::LineStep(10),
                  ZWViewZoom::LineStep(0), ZWViewZoom::PageStep(613), ZWViewZoom::PageStep(0)),
        std::tuple(40, 31, 1, 1, 613, 1));
}

// A zoom from one page size to another with a point of the view held: the
// page point under it before, and the scroll position that keeps it there.
struct KeepCase
{
    const char* what;
    double pageBefore;
    int scrollBefore;
    double pageAfter;
    int view;
    double anchor;
    double fraction;
    int scrollAfter;
};

class ZoomAnchor : public testing::TestWithParam<KeepCase>
{};

TEST_P(ZoomAnchor, KeepsThePointWhereThePageAllows)
{
    const KeepCase& c = GetParam();
    const double fraction = ZWViewZoom::PageFraction(c.anchor, c.pageBefore, c.view, c.scrollBefore);
    EXPECT_DOUBLE_EQ(fraction, c.fraction);
    EXPECT_EQ(ZWViewZoom::ScrollToKeep(fraction, c.anchor, c.pageAfter, c.view), c.scrollAfter);
}

// 1000 px page in a 500 px view scrolled by 100: view 250 is page 350.
INSTANTIATE_TEST_SUITE_P(Zoom, ZoomAnchor,
    testing::ValuesIn(
        std::vector<KeepCase>{{"a scrolled page doubled keeps its point", 1000, 100, 2000, 500, 250, 0.35, 450},
            // A 400 px page centred in 500 px starts at 50.
            {"a centred page grown keeps the point under the mouse", 400, 0, 1000, 500, 150, 0.25, 100},
            {"a point near the top cannot scroll above the page", 1000, 0, 800, 500, 100, 0.1, 0},
            {"a point near the end stops at the last position", 1000, 500, 800, 500, 100, 0.6, 300},
            {"a page that fits after the zoom does not scroll", 1000, 300, 400, 500, 250, 0.55, 0}}),
    [](const testing::TestParamInfo<KeepCase>& info) { return zwtest::CaseName(info.param.what); });

} // namespace
