#include "viewer/ZWViewZoom.h"
#include "host/core/ZWNoValue.h"

#include <gtest/gtest.h>

namespace {

TEST(ZWViewZoom, Steps)
{
    struct Case
    {
        double factor;
        std::optional<double> in, out;
    } cases[] = {
        {-0.73, 1.0, 0.5},         // fit mode: to the next multiple of 0.5 beyond
        {-1.0, 1.5, 0.5},          // a fit exactly on a step moves past it
        {-0.4, 0.5, std::nullopt}, // nothing below 0.5
        {-12.0, std::nullopt, 10.0},
        {ZW_NO_VALUE, 0.5, std::nullopt},
        {1.0, 1.5, 0.5},
        {0.5, 1.0, std::nullopt},
        {10.0, std::nullopt, 9.5},
        {9.5, 10.0, 9.0},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(ZWViewZoom::ZoomIn(c.factor), c.in) << c.factor;
        EXPECT_EQ(ZWViewZoom::ZoomOut(c.factor), c.out) << c.factor;
    }
}

TEST(ZWViewZoom, EnabledStatesAndSelector)
{
    EXPECT_FALSE(ZWViewZoom::CanZoomOut(0.5));
    EXPECT_TRUE(ZWViewZoom::CanZoomIn(0.5));
    EXPECT_FALSE(ZWViewZoom::CanZoomIn(10.0));
    EXPECT_TRUE(ZWViewZoom::CanZoomOut(10.0));
    EXPECT_TRUE(ZWViewZoom::CanZoomOut(-0.73));
    EXPECT_EQ(ZWViewZoom::SelectorIndex(-0.73), 0);
    EXPECT_EQ(ZWViewZoom::SelectorIndex(ZW_NO_VALUE), 0);
    EXPECT_EQ(ZWViewZoom::SelectorIndex(0.5), 1);
    EXPECT_EQ(ZWViewZoom::SelectorIndex(1.0), 2);
    EXPECT_EQ(ZWViewZoom::SelectorIndex(10.0), 20);
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

} // namespace
