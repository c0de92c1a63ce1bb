// How cards draw themselves, pixel by pixel: the device mapping, the editor's
// outline, labels and pictures placed and clipped, the resampling cache, pages.
#include "host/core/ZWFont.h"
#include "host/core/ZWMath.h"
#include "host/core/ZWRemote.h"
#include "host/images/ZWImageSupport.h"
#include "template/ZWCardConditioned.h"
#include "template/ZWCardImage.h"
#include "template/ZWCardLabel.h"
#include "template/ZWPageRenderer.h"
#include "template/ZWTemplate.h"
#include "tests/support/ZWTestSupport.h"
#include "tests/template/TemplateTestSupport.h"

#include <QFontInfo>
#include <QPainter>
#include <cmath>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

using zwtest::InkBounds;
using zwtest::PageDraw;
using zwtest::WhiteImage;

constexpr QRgb White = 0xFFFFFFFF;

// ---------------------------------------------------------------- mapping

TEST(DrawMapping, CardRectanglesAndTheirVisibility)
{
    // A 210 × 297 mm page at 2 pixels per mm.
    const std::tuple<double, double, int, int, double, double, double, double, ZWRect> cases[] = {
        {10.4, 20.6, 0, 0, 10.0, 20.0, 30.0, 40.0, {30, 61, 90, 141}},
        {10.4, 20.6, 5, 7, 10.0, 20.0, 30.0, 40.0, {25, 54, 85, 134}},
        {10.0, 20.0, 0, 0, 0.25, 0.25, 0.75, 0.25, {11, 21, 13, 22}}, // halves round away from zero
        {10.0, 20.0, 0, 0, -1.25, -1.25, 1.0, 1.0, {8, 18, 10, 20}},
        {0.0, 0.0, 0, 0, 0.0, 0.0, 210.0, 297.0, {0, 0, 420, 594}},
        {-0.5, -0.5, 0, 0, 0.0, 0.0, 1.0, 1.0, {-1, -1, 1, 1}},
    };
    tagDraw draw = PageDraw(2.0);
    for (const auto& [left, top, scrollX, scrollY, x, y, w, h, expected] : cases) {
        std::tie(draw.left, draw.top, draw.scrollX, draw.scrollY) = std::tuple(left, top, scrollX, scrollY);
        EXPECT_EQ(draw.CardRect(x, y, w, h), expected) << x << "," << y;
    }
    // The page's own rectangle is one pixel larger.
    std::tie(draw.left, draw.top, draw.scrollX, draw.scrollY) = std::tuple(10.4, 20.6, 3, 0);
    EXPECT_EQ(draw.PageRect(), (ZWRect{7, 21, 428, 616}));

    // Visibility counts touching edges.
    const ZWRect area{10, 10, 20, 20};
    const std::tuple<ZWRect, bool> visibility[]
        = {{{0, 0, 9, 9}, false}, {{0, 0, 10, 10}, true}, {{20, 20, 30, 30}, true}, {{21, 0, 30, 30}, false},
            {{0, 21, 30, 30}, false}, {{12, 12, 14, 14}, true}, {{0, 0, 100, 100}, true}};
    for (const auto& [rect, visible] : visibility)
        EXPECT_EQ(tagDraw::IsVisible(area, rect), visible)
            << rect.left << "," << rect.top << "," << rect.right << "," << rect.bottom;
    EXPECT_TRUE(tagDraw().IsVisible(ZWRect{1000, 1000, 1001, 1001})); // no area: everything
}

TEST(DrawMapping, PagePlacementCentresOrScrolls)
{
    QImage device = WhiteImage(10, 10, 4000); // 4 px/mm
    ZWGlobalProperties page;
    std::tie(page.width, page.height, page.rounded) = std::tuple(100.0, 50.0, 5.0);
    tagDraw d = ZWPageRenderer::MakeDraw(&device, page, 0.5, QRect(0, 0, 300, 300));
    EXPECT_EQ(std::tuple(d.pageWidthPx, d.pageHeightPx, d.roundWidthPx, d.left, d.top, d.fontScale),
        std::tuple(200.0, 100.0, 10.0, 50.0, 100.0, 0.5));
    // Wider than the target: starts at the scroll position (400 high in 300:
    // at the vertical one, 0).
    d = ZWPageRenderer::MakeDraw(&device, page, -2.0, QRect(0, 0, 300, 300), 40, 0);
    EXPECT_EQ(std::tuple(d.pageWidthPx, d.left, d.top), std::tuple(800.0, -40.0, 0.0));
}

// ---------------------------------------------------------------- border

// `n` pixels from (x, y) along a row or a column, '1' where drawn.
QString Pixels(const QImage& image, int x, int y, int n, bool down = false)
{
    QString run;
    for (int i = 0; i < n; ++i)
        run += image.pixel(x + (down ? 0 : i), y + (down ? i : 0)) == White ? QLatin1Char('0') : QLatin1Char('1');
    return run;
}

QImage Border(const ZWRect& rect, bool thick, bool dashed, bool dense, int phase)
{
    QImage image = WhiteImage(40, 40);
    ZWCardControl card;
    card.color = 0x0000FF;
    QPainter painter(&image);
    card.DrawBorder(painter, rect, thick, dashed, dense, phase);
    return image;
}

TEST(DrawBorder, SolidThinAndThickIncludeBothEndsAndThickDashesAreThreeLinesDeep)
{
    const ZWRect rect{5, 6, 16, 14}; // 12 × 9 pixels, ends included
    const QImage thin = Border(rect, false, false, false, 0);
    EXPECT_EQ(InkBounds(thin), QRect(QPoint(5, 6), QPoint(16, 14)));
    EXPECT_EQ(std::tuple(zwtest::CountColour(thin, qRgb(255, 0, 0)), thin.pixel(16, 14), thin.pixel(6, 7)),
        std::tuple(2 * 12 + 2 * 7, qRgb(255, 0, 0), White));

    const QImage thick = Border(rect, true, false, false, 0);
    EXPECT_EQ(InkBounds(thick), QRect(QPoint(5, 6), QPoint(16, 14)));
    EXPECT_EQ(Pixels(thick, 10, 6, 9, true), u"111000111"_s);
    EXPECT_EQ(Pixels(thick, 5, 10, 12), u"111000000111"_s);
    // Thick dashes set all three lines (top row pattern 011000011000).
    const QImage dashed = Border(ZWRect{4, 4, 15, 15}, true, true, false, 0);
    for (int k = 0; k < 3; ++k)
        EXPECT_EQ(Pixels(dashed, 4, 4 + k, 12).mid(3, 6), u"000011"_s) << k;
    EXPECT_EQ(std::tuple(dashed.pixel(5, 4), dashed.pixel(5, 6)), std::tuple(qRgb(255, 0, 0), qRgb(255, 0, 0)));
}

TEST(DrawBorder, DashedPatternsForEveryPhase)
{
    // topRow: the first 12 steps of the pattern
    const std::tuple<bool, int, const char*> cases[] = {{false, 0, "011000011000"}, {false, 1, "001100001100"},
        {false, 2, "000110000110"}, {false, 3, "000011000011"}, {false, 4, "100001100001"}, {false, 5, "110000110000"},
        {false, 6, "011000011000"}, {false, -1, "110000110000"}, {true, 0, "011111011111"}, {true, 3, "111011111011"},
        {true, 5, "111110111110"}};
    // 12 wide (x 4..15) and 8 high (y 4..11). The top row and then the right
    // column share one running index; the left column and then the bottom
    // row share another. Each corner pixel is visited by two edges.
    const ZWRect rect{4, 4, 15, 11};
    for (const auto& [dense, phase, topRow] : cases) {
        const QString pattern = QString::fromLatin1(topRow).repeated(2);
        const QImage image = Border(rect, false, true, dense, phase);
        SCOPED_TRACE(testing::Message() << "phase " << phase << " dense " << dense);
        EXPECT_EQ(Pixels(image, 4, 4, 11), pattern.left(11));         // steps 0..10
        EXPECT_EQ(Pixels(image, 15, 5, 7, true), pattern.mid(13, 7)); // steps 13..19
        EXPECT_EQ(Pixels(image, 4, 4, 7, true), pattern.left(7));     // steps 0..6
        EXPECT_EQ(Pixels(image, 5, 11, 11), pattern.mid(9, 11));      // steps 9..19
        const auto on = [&pattern](int step) { return pattern.at(step) == QLatin1Char('1'); };
        EXPECT_EQ(image.pixel(15, 4) != White, on(11) || on(12)); // top-right
        EXPECT_EQ(image.pixel(4, 11) != White, on(7) || on(8));   // bottom-left
        EXPECT_EQ(image.pixel(15, 11) != White, on(19));          // bottom-right
    }
}

// ---------------------------------------------------------------- labels

class LabelDrawing : public ::testing::Test
{
protected:
    void SetUp() override { ZWInstallFontSubstitutions(); }

    // Draws `label` on a 400 × 300 picture at 5 px/mm and returns it.
    QImage Draw(ZWCardLabel& label, const tagDraw& draw)
    {
        QImage image = WhiteImage(400, 300);
        QPainter painter(&image);
        label.Draw(painter, draw);
        painter.end();
        return image;
    }

    static ZWCardLabel Label(const QString& text, double size)
    {
        ZWCardLabel label;
        label.value = text;
        label.size = size;
        return label;
    }

    // The extent the label measures for its text on such a picture.
    QSizeF Extent(const ZWCardLabel& label, const tagDraw& draw)
    {
        QImage device = WhiteImage(1, 1);
        const QFont font = label.CreateFont(&device, draw);
        const QFontMetricsF metrics(font, &device);
        return QSizeF(metrics.horizontalAdvance(label.GetDrawText()), metrics.height());
    }
};

TEST_F(LabelDrawing, FontsFollowTheStyleBitsTheScaleAndArialIsTheMetricCompatibleLiberationSans)
{
    QImage device = WhiteImage(1, 1);
    const QFont font = EzCreateFont(&device, u"Arial"_s, 100, 0, 3, true);
    EXPECT_EQ(QFontInfo(font).family(), u"Liberation Sans"_s);
    EXPECT_EQ(std::tuple(font.bold(), font.italic(), font.pointSizeF()), std::tuple(true, true, 10.0));
    const QFont plain = EzCreateFont(&device, u"Arial"_s, 125, 0, 4, true); // bit 2 means nothing
    EXPECT_EQ(std::tuple(plain.bold(), plain.italic(), plain.pointSizeF()), std::tuple(false, false, 12.5));

    ZWCardLabel label;
    label.size = 10.0;
    label.style = 7;
    tagDraw draw = PageDraw(5.0);
    draw.fontScale = -1.5;
    const QFont scaled = label.CreateFont(&device, draw);
    EXPECT_EQ(std::tuple(scaled.bold(), scaled.italic(), scaled.pointSizeF()), std::tuple(true, true, 15.0));
    // The escapement is the angle in whole tenths of a degree.
    const std::pair<double, int> escapements[] = {{12.37, 123}, {-12.37, -123}, {90.0, 900}};
    for (const auto& [orientation, escapement] : escapements) {
        label.orientation = orientation;
        EXPECT_EQ(label.Escapement(), escapement) << orientation;
    }
}

TEST(LabelPlacement, TextStartForEachAlignmentAndAngle)
{
    // Card 200 × 60 pixels at (100, 200); text 80 × 20 pixels.
    const std::tuple<double, int, int, double, double> cases[]
        = {{0, 1, 4, 100, 200}, {0, 2, 4, 220, 200}, {0, 16, 4, 160, 200}, {0, 0, 4, 100, 200}, // any other value: left
            {0, 1, 8, 100, 240}, {0, 1, 16, 100, 220}, {0, 1, 0, 100, 200},                     // any other value: top
            {90, 1, 4, 100, 280}, {90, 16, 16, 190, 270}, // the box is cy wide and cx high, centred
            {180, 1, 4, 180, 220}, {270, 1, 4, 120, 200}, {12.37, 1, 4, 100, 217.1379},
            {12.37, 16, 16, 158.7864, 228.8011}};
    const ZWRect card{100, 200, 300, 260};
    for (const auto& [orientation, horizontal, vertical, x, y] : cases) {
        const QPointF start = ZWCardLabel::TextStart(card, 80.0, 20.0, orientation, horizontal, vertical);
        EXPECT_NEAR(QLineF(start, QPointF(x, y)).length(), 0.0, 1e-3)
            << orientation << " " << horizontal << "/" << vertical << ": " << start.x() << "," << start.y();
    }
    EXPECT_EQ(ZWCardLabel::RotatedExtent(80.0, 20.0, 90.0), QSizeF(20.0, 80.0)); // fuzzy: cos 90° is not 0
}

// Where each alignment puts the text is TextStart's table; the drawing follows it.
TEST_F(LabelDrawing, InkLiesWhereTheAlignmentPutsIt)
{
    const tagDraw draw = PageDraw(5.0);
    const ZWRect card = draw.CardRect(10, 10, 50, 30); // 50,50 – 300,200
    for (const auto& [horizontal, vertical] : {std::pair(2, 8), std::pair(16, 16)}) {
        SCOPED_TRACE(testing::Message() << horizontal << "/" << vertical);
        ZWCardLabel label = Label(u"HHHH"_s, 20.0);
        zwtest::Place(label, 10.0, 10.0, 50.0, 30.0);
        std::tie(label.horizontalAlign, label.verticalAlign) = std::tuple(horizontal, vertical);
        const QRect ink = InkBounds(Draw(label, draw));
        ASSERT_FALSE(ink.isNull());
        const QSizeF extent = Extent(label, draw);
        EXPECT_NEAR(ink.width(), extent.width(), 9.0);
        // Capital H: the ink ends a side bearing before the pen's end and lies
        // within the text cell.
        if (horizontal == 2)
            EXPECT_LT(card.right - (ink.right() + 1), 5);
        else
            EXPECT_NEAR((ink.left() + ink.right() + 1) / 2.0, (card.left + card.right) / 2.0, 2.0);
        const double cellTop
            = vertical == 8 ? card.bottom - extent.height() : (card.top + card.bottom - extent.height()) / 2;
        EXPECT_GE(ink.top(), std::round(cellTop));
        EXPECT_LE(ink.bottom(), std::round(cellTop + extent.height()));
    }
}

TEST_F(LabelDrawing, TurnedTextKeepsItsAngleAndAQuarterTurnCentredSitsInTheMiddleOfTheCard)
{
    ZWCardLabel label = Label(u"________________"_s, 14.0);
    zwtest::Place(label, 5.0, 5.0, 70.0, 40.0);
    label.orientation = 12.37;
    const QImage image = Draw(label, PageDraw(5.0));
    // The underscores make one line: its slope is the angle drawn.
    const QRect ink = InkBounds(image);
    ASSERT_FALSE(ink.isNull());
    const auto lowest = [&image](int x) {
        for (int y = image.height() - 1; y >= 0; --y)
            if (image.pixel(x, y) != White)
                return y;
        return -1;
    };
    const int x0 = ink.left() + 10, x1 = ink.right() - 10;
    const double slope = double(lowest(x0) - lowest(x1)) / (x1 - x0);
    EXPECT_NEAR(std::atan(slope) * 180.0 / M_PI, 12.3, 0.6);

    label = Label(u"HHHHHH"_s, 16.0);
    zwtest::Place(label, 10.0, 5.0, 20.0, 50.0);
    label.orientation = 90.0;
    const tagDraw draw = PageDraw(5.0);
    const QRect turned = InkBounds(Draw(label, draw));
    // Turned a quarter counter-clockwise: as tall as the text is long.
    EXPECT_NEAR(turned.height(), Extent(label, draw).width(), 6.0);
    EXPECT_GT(turned.height(), 2 * turned.width());
    const QPointF centre = draw.CardRect(10, 5, 20, 50).ToQRect().toRectF().center();
    EXPECT_NEAR((turned.left() + turned.right() + 1) / 2.0, centre.x(), 3.0);
    EXPECT_NEAR((turned.top() + turned.bottom() + 1) / 2.0, centre.y(), 3.0);
}

TEST_F(LabelDrawing, TextIsClippedToTheCardTheVisibleAreaAndTheRoundedPage)
{
    ZWCardLabel label = Label(u"A text much wider than its card"_s, 20.0);
    zwtest::Place(label, 20.0, 20.0, 20.0, 4.0);
    tagDraw draw = PageDraw(5.0);
    const QRect ink = InkBounds(Draw(label, draw));
    ASSERT_FALSE(ink.isNull());
    EXPECT_TRUE(draw.CardRect(20, 20, 20, 4).ToQRect().contains(ink));
    const ZWRect area{200, 200, 300, 300};
    draw.visibleArea = &area;
    EXPECT_TRUE(InkBounds(Draw(label, draw)).isNull());

    label = Label(u"█████"_s, 30.0);
    zwtest::Place(label, 0.0, 0.0, 40.0, 20.0);
    label.horizontalAlign = 1;
    label.verticalAlign = 4;
    draw = PageDraw(5.0, 80.0, 60.0);
    draw.roundWidthPx = draw.roundHeightPx = 100.0;
    const QImage open = Draw(label, draw);
    draw.clipToPage = true;
    const QImage clipped = Draw(label, draw);
    EXPECT_NE(open.pixel(2, 6), White);
    EXPECT_EQ(clipped.pixel(2, 6), White);
    EXPECT_NE(clipped.pixel(60, 30), White);
}

// ---------------------------------------------------------------- pictures

class ImageDrawing : public ::testing::Test
{
protected:
    ZWCardImage Card(QColor colour, int w, int h)
    {
        ZWCardImage card;
        zwtest::Place(card, 10.0, 20.0, 40.0, 30.0);
        EXPECT_TRUE(card.SetPictureBytes(zwtest::SolidPng(w, h, colour)));
        return card;
    }
    QImage Draw(ZWCardImage& card, const tagDraw& draw)
    {
        QImage image = WhiteImage(400, 400); // 5 px/mm: 0.2 mm pixels
        QPainter painter(&image);
        card.Draw(painter, draw);
        return image;
    }
};

TEST_F(ImageDrawing, PicturesLandOnTheirTargetRectanglesInEachMode)
{
    // Card 40 × 30 mm at (10, 20); a 100 × 50 pixel picture, drawn at 5 px/mm
    // where a picture pixel at real size is a device pixel (20 × 10 mm).
    const std::tuple<bool, bool, int, int, QRectF> cases[] = {{false, false, 1, 4, {10, 20, 40, 30}},
        {false, false, 16, 16, {10, 20, 40, 30}}, {false, true, 1, 4, {10, 20, 20, 10}},
        {false, true, 2, 8, {30, 40, 20, 10}}, {false, true, 16, 16, {20, 30, 20, 10}},
        {false, true, 0, 0, {20, 30, 20, 10}}, // only 1, 2, 4 and 8 are special
        {true, true, 1, 4, {10, 20, 20, 10}},  // real size wins
        {true, false, 16, 16, {10, 25, 40, 20}}, {true, false, 1, 4, {10, 20, 40, 20}},
        {true, false, 2, 8, {10, 30, 40, 20}}, {true, false, 3, 5, {10, 25, 40, 20}},
        {true, false, 16, 8, {10, 30, 40, 20}}};
    for (const auto& [aspect, real, horizontal, vertical, expected] : cases) {
        SCOPED_TRACE(testing::Message() << aspect << real << " " << horizontal << "/" << vertical);
        const QRectF target = ZWCardImage::TargetRectMm(
            QRectF(10, 20, 40, 30), QSize(100, 50), QPointF(0.2, 0.2), horizontal, vertical, aspect, real);
        EXPECT_NEAR((target.topLeft() - expected.topLeft()).manhattanLength()
                + (target.bottomRight() - expected.bottomRight()).manhattanLength(),
            0.0, 1e-9);
        ZWCardImage card = Card(Qt::red, 100, 50);
        std::tie(card.maintainAspectRatio, card.maintainRealSize, card.horizontalAlign, card.verticalAlign)
            = std::tuple(aspect, real, horizontal, vertical);
        const QImage image = Draw(card, PageDraw(5.0));
        const QRect pixels = QRectF(expected.topLeft() * 5, expected.size() * 5).toRect();
        EXPECT_EQ(InkBounds(image), pixels);
        EXPECT_EQ(zwtest::CountColour(image, qRgb(255, 0, 0)), pixels.width() * pixels.height());
    }
}

TEST_F(ImageDrawing, RepaintingAtOneZoomResamplesOnce)
{
    ZWCardImage card = Card(Qt::blue, 64, 48);
    card.maintainAspectRatio = false;
    const quint64 before = ZWImageSupport::ResampleCount();
    tagDraw draw = PageDraw(5.0);
    for (int i = 0; i < 5; ++i)
        Draw(card, draw);
    EXPECT_EQ(ZWImageSupport::ResampleCount() - before, 1u);
    // Another zoom: once more, then cached again.
    draw = PageDraw(2.5);
    Draw(card, draw);
    Draw(card, draw);
    EXPECT_EQ(ZWImageSupport::ResampleCount() - before, 2u);
    // Drawn at its own size the picture is never resampled.
    card.maintainRealSize = true;
    Draw(card, PageDraw(5.0));
    Draw(card, PageDraw(5.0));
    EXPECT_EQ(ZWImageSupport::ResampleCount() - before, 2u);
}

TEST_F(ImageDrawing, BackgroundColourOnlyWithoutPictureAndWhenAllowed)
{
    ZWCardImage empty;
    zwtest::Place(empty, 10.0, 20.0, 40.0, 30.0);
    empty.backcolor = ZWRGB(0, 255, 0);
    tagDraw draw = PageDraw(5.0);
    EXPECT_EQ(zwtest::CountColour(Draw(empty, draw), qRgb(0, 255, 0)), 200 * 150);
    draw.noBackground = true;
    EXPECT_TRUE(InkBounds(Draw(empty, draw)).isNull());

    // A picture is drawn whatever the flag; its card's colour is not.
    ZWCardImage picture = Card(Qt::red, 10, 10);
    picture.backcolor = ZWRGB(0, 255, 0);
    picture.maintainRealSize = true;
    const QImage drawn = Draw(picture, draw);
    EXPECT_EQ(zwtest::CountColour(drawn, qRgb(255, 0, 0)), 100);
    EXPECT_EQ(zwtest::CountColour(drawn, qRgb(0, 255, 0)), 0);

    ZWCardImage transparent;
    transparent.backcolor = ZW_NO_COLOR;
    EXPECT_TRUE(InkBounds(Draw(transparent, PageDraw(5.0))).isNull());
}

TEST_F(ImageDrawing, PicturesAreClippedToTheRoundedPageAndInTheEditorToTheirCard)
{
    ZWCardImage fill;
    zwtest::Place(fill, 0.0, 0.0, 80.0, 60.0);
    fill.backcolor = ZWRGB(0, 0, 255);
    tagDraw draw = PageDraw(5.0, 80.0, 60.0);
    draw.roundWidthPx = draw.roundHeightPx = 100.0;
    EXPECT_EQ(Draw(fill, draw).pixel(1, 1), qRgb(0, 0, 255));
    draw.clipToPage = true;
    const QImage clipped = Draw(fill, draw);
    EXPECT_EQ(clipped.pixel(1, 1), White);
    EXPECT_EQ(clipped.pixel(398, 1), White); // beyond the page
    EXPECT_EQ(clipped.pixel(200, 150), qRgb(0, 0, 255));
    EXPECT_EQ(clipped.pixel(50, 2), qRgb(0, 0, 255)); // past the corner's curve

    ZWCardImage card = Card(Qt::red, 300, 300); // 60 × 60 mm, larger than the card
    card.maintainRealSize = true;
    draw = PageDraw(5.0);
    const QRect open = InkBounds(Draw(card, draw));
    EXPECT_TRUE(open.contains(QRect(50, 100, 200, 150)));
    EXPECT_GT(open.width(), 200);
    draw.clipToCard = true;
    EXPECT_EQ(InkBounds(Draw(card, draw)), QRect(50, 100, 200, 150));
}

// ---------------------------------------------------------------- conditioned

TEST(ConditionedDrawing, DrawsOnlyTheCurrentAlternativeInItsOwnRectangle)
{
    ZWCardConditioned card;
    zwtest::Place(card, 10.0, 10.0, 20.0, 10.0);
    auto red = std::make_unique<ZWCardImage>();
    red->backcolor = ZWRGB(255, 0, 0);
    red->x = 100.0; // moved with the conditioned card when drawn
    auto picture = std::make_unique<ZWCardImage>();
    picture->maintainAspectRatio = false;
    picture->SetPictureBytes(zwtest::SolidPng(4, 4, Qt::blue));
    card.AddCondition(u"a"_s, std::move(red));
    card.AddCondition(u"b"_s, std::move(picture));

    // The card drawn with alternative `level` current.
    const auto draw = [&card](int level, bool actualize = true) {
        card.level = level;
        if (actualize)
            card.ActualizeLevel();
        QImage image = WhiteImage(200, 200);
        QPainter painter(&image);
        card.Draw(painter, PageDraw(5.0));
        return image;
    };
    EXPECT_TRUE(InkBounds(draw(card.level, false)).isNull()); // no level yet
    QImage image = draw(0);
    EXPECT_EQ(InkBounds(image), QRect(50, 50, 100, 50));
    EXPECT_EQ(zwtest::CountColour(image, qRgb(255, 0, 0)), 100 * 50);
    image = draw(1);
    EXPECT_EQ(std::tuple(
                  zwtest::CountColour(image, qRgb(0, 0, 255)), zwtest::CountColour(image, qRgb(255, 0, 0)), card.layer),
        std::tuple(100 * 50, 0, 0));
    EXPECT_TRUE(InkBounds(draw(2, false)).isNull());
}

// ---------------------------------------------------------------- pages

// A 40 × 20 mm page: 200 × 100 pixels at 127 dpi (5 px/mm).
TEST(PageRendering, LayersPutTextOverPicturesAndRoundedCornersAreDrawn)
{
    ZWTemplatePage page;
    std::tie(page.properties.width, page.properties.height) = std::tuple(40.0, 20.0);
    auto label = std::make_unique<ZWCardLabel>();
    std::tie(label->value, label->size, label->color) = std::tuple(u"█████████"_s, 40.0, ZWRGB(255, 0, 0));
    zwtest::Place(*label, 0.0, 0.0, 40.0, 20.0);
    auto fill = std::make_unique<ZWCardImage>();
    zwtest::Place(*fill, 0.0, 0.0, 40.0, 20.0);
    fill->backcolor = ZWRGB(0, 0, 255);
    // The label comes first in the list, yet lies over the picture card.
    page.cards.push_back(std::move(label));
    page.cards.push_back(std::move(fill));
    const QImage image = ZWPageRenderer::RenderPage(page, 127.0);
    ASSERT_EQ(image.size(), QSize(200, 100));
    EXPECT_EQ(image.pixel(100, 50), qRgb(255, 0, 0));
    EXPECT_GT(zwtest::CountColour(image, qRgb(0, 0, 255)), 0);

    // Corners of 6 mm: an ellipse of 30 px, so the corner's arc crosses the
    // diagonal about 4.4 px in.
    page.cards.clear();
    page.properties.rounded = 6.0;
    const QImage picture = ZWPageRenderer::RenderPage(page, 127.0);
    int outlined = 0;
    for (int d = 2; d <= 7; ++d)
        outlined += picture.pixel(d, d) != White;
    EXPECT_GT(outlined, 0) << "the rounded corner's outline";
    EXPECT_EQ(picture.pixel(100, 50), White);

    // On a window the out colour shows beyond the corners, and the
    // background picture stays inside them.
    page.properties.InitializeBackground(EncodeBase64(zwtest::SolidPng(8, 4, Qt::blue)));
    page.properties.background->maintainAspectRatio = false;
    // The pixel at `offset` from the page's corner in a window.
    const auto windowPixel = [&page](QPoint offset) {
        QImage window = WhiteImage(260, 160, 5000);
        QPainter painter(&window);
        const QRect all(0, 0, 260, 160);
        const tagDraw draw = ZWPageRenderer::MakeDraw(&window, page.properties, 1.0, all);
        ZWPageRenderer::DrawBackground(painter, draw, page.properties, ZWRGB(0, 255, 0), all);
        painter.end();
        return window.pixel(QPoint(roundi(draw.left), roundi(draw.top)) + offset);
    };
    EXPECT_EQ(windowPixel({1, 1}), qRgb(0, 255, 0));
    EXPECT_EQ(windowPixel({100, 50}), qRgb(0, 0, 255));
    // Square corners keep the page's own colour to the corner.
    page.properties.rounded = 0.0;
    EXPECT_EQ(windowPixel({1, 1}), qRgb(0, 0, 255));
}

TEST(PageRendering, ExamplePageAtRealSize)
{
    ZWTemplate report;
    ASSERT_TRUE(report.Load(zwtest::SourcePath(u"examples/reports/MonthlyEnergy.XRPT"_s)));
    const QImage image = ZWPageRenderer::RenderPage(report.pages[0], 150.0);
    EXPECT_EQ(image.size(), QSize(1240, 1754));
    EXPECT_EQ(image.dotsPerMeterX(), 5906);
    // The page background's blue band at the top; the budget verdict in green.
    const QRgb band = image.pixel(1200, 20);
    EXPECT_GT(qBlue(band), qRed(band) + 60);
    bool green = false;
    for (int y = roundi(186 * 5.906); y < roundi(196 * 5.906) && !green; ++y)
        for (int x = roundi(112 * 5.906); x < roundi(190 * 5.906) && !green; ++x)
            green = image.pixel(x, y) == qRgb(0, 130, 60);
    EXPECT_TRUE(green);
    EXPECT_TRUE(ZWPageRenderer::RenderPage(report.pages[0], 0.0).isNull()
        && ZWPageRenderer::PageSize(report.pages[0].properties, 100000.0).isEmpty());
}

} // namespace
