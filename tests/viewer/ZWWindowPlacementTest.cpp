#include "viewer/ZWWindowPlacement.h"

#include "tests/support/ZWTestSupport.h"

#include <gtest/gtest.h>
#include <string>

// Failed comparisons show the rectangles.
static void PrintTo(const QRect& r, std::ostream* os)
{
    *os << r.x() << ',' << r.y() << ' ' << r.width() << 'x' << r.height();
}

namespace {

using zwtest::PrintTo;

struct PlaceCase
{
    const char* what;
    QRect wanted;
    QRect available;
    QMargins frame;
    QRect expected;
};

class WindowPlacement : public testing::TestWithParam<PlaceCase>
{};

TEST_P(WindowPlacement, StaysWholeOnTheScreen)
{
    const PlaceCase& c = GetParam();
    const QRect placed = ZWWindowPlacement::Place(c.wanted, QSize(1000, 860), c.available, c.frame);
    EXPECT_EQ(placed, c.expected);
    EXPECT_TRUE(c.available.marginsRemoved(c.frame).contains(placed));
}

INSTANTIATE_TEST_SUITE_P(Viewer, WindowPlacement,
    testing::ValuesIn(std::vector<PlaceCase>{{"the first time in the middle at the default size", QRect(),
                                                 QRect(0, 0, 1920, 1040), QMargins(), QRect(460, 90, 1000, 860)},
        {"the default size cut to a small screen", QRect(), QRect(0, 0, 1024, 738), QMargins(),
            QRect(12, 0, 1000, 738)},
        {"larger than the screen now: cut and moved in", QRect(-200, -100, 3000, 2000), QRect(0, 0, 1280, 800),
            QMargins(), QRect(0, 0, 1280, 800)},
        {"past the right and bottom edges: moved back", QRect(1500, 900, 700, 500), QRect(0, 0, 1920, 1040), QMargins(),
            QRect(1220, 540, 700, 500)},
        {"on a second screen to the right", QRect(2000, 100, 800, 600), QRect(1920, 0, 1280, 1024), QMargins(),
            QRect(2000, 100, 800, 600)},
        {"a title bar and a full-height window", QRect(), QRect(0, 0, 1280, 800), QMargins(4, 30, 4, 4),
            QRect(140, 30, 1000, 766)}}),
    [](const testing::TestParamInfo<PlaceCase>& info) { return zwtest::CaseName(info.param.what); });

} // namespace
