#include "viewer/ZWViewPage.h"
#include "host/core/ZWNoValue.h"
#include "host/core/ZWRemote.h"
#include "template/ZWCardConditioned.h"
#include "template/ZWCardDate.h"
#include "template/ZWCardFormule.h"
#include "template/ZWCardImage.h"
#include "template/ZWCardLabel.h"
#include "template/ZWColorRef.h"
#include "tests/template/TemplateTestSupport.h"

#include <QPainter>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

template <class Card>
Card& Add(ZWTemplatePage& page, const QString& id, double x = 10, double y = 20, double w = 30, double h = 8)
{
    auto card = std::make_unique<Card>();
    card->id = id;
    zwtest::Place(*card, x, y, w, h);
    Card& ref = *card;
    page.cards.push_back(std::move(card));
    return ref;
}

// A page with a label, a formula card, a date card, an image card and a
// conditioned card (label "ok", label "bad", picture "pic").
XmlDocument MakePage()
{
    ZWTemplatePage page;
    Add<ZWCardLabel>(page, u"L"_s).value = u"Title"_s;
    Add<ZWCardFormule>(page, u"F"_s).value = u"[Main meter.Active energy]"_s;
    Add<ZWCardDate>(page, u"D"_s);
    Add<ZWCardImage>(page, u"I"_s, 100, 100, 20, 20);
    auto& conditioned = Add<ZWCardConditioned>(page, u"C"_s, 50, 50, 40, 10);
    for (const char* id : {"ok", "bad"}) {
        auto label = std::make_unique<ZWCardLabel>();
        label->id = QString::fromLatin1(id);
        label->value = QString::fromLatin1(id).toUpper();
        conditioned.AddCondition(u"1 < 2"_s, std::move(label));
    }
    auto picture = std::make_unique<ZWCardImage>();
    picture->id = u"pic"_s;
    conditioned.AddCondition(u"1 > 2"_s, std::move(picture));
    XmlDocument doc;
    doc.Create(u"design"_s);
    page.SaveTemplate(doc.Root());
    return doc;
}

class ZWViewPageTest : public testing::Test
{
protected:
    void SetUp() override
    {
        m_design = MakePage();
        ASSERT_TRUE(m_view.SetTemplate(m_design.Node(u"/page"_s)));
    }
    template <class Card> Card* Find(const char* id)
    {
        return dynamic_cast<Card*>(m_view.Page().FindCard(QString::fromLatin1(id)));
    }

    XmlDocument m_design;
    ZWViewPage m_view;
};

TEST_F(ZWViewPageTest, ValuesGoToTheCardWithTheirIdAndKindAsTheyStand)
{
    const QByteArray values = "<fields>"
                              "<formule><id>F</id><value>1,234.5</value></formule>"
                              "<date><id>D</id><value>01/03/2026</value></date>"
                              "<label><id>L</id><value>New title</value></label>"
                              "<formule><id>L</id><value>kind does not match</value></formule>"
                              "<formule><id>nobody</id><value>ignored</value></formule>"
                              "<label><value>no id</value></label>"
                              "<conditioned><id>C</id><label><id>bad</id></label></conditioned>"
                              "</fields>";
    ASSERT_TRUE(m_view.SetUserData(values));
    EXPECT_EQ(Find<ZWCardFormule>("F")->value, u"1,234.5"_s);
    EXPECT_EQ(Find<ZWCardDate>("D")->value, u"01/03/2026"_s);
    EXPECT_EQ(Find<ZWCardLabel>("L")->value, u"New title"_s);
    auto* conditioned = Find<ZWCardConditioned>("C");
    EXPECT_EQ(std::pair(conditioned->level, conditioned->layer), std::pair(1, 1));

    // A malformed document is refused and the cards keep their values; a
    // new template gets the values again.
    EXPECT_FALSE(m_view.SetUserData("<fields><formule><id>F</id><value>9</value>"));
    EXPECT_EQ(Find<ZWCardFormule>("F")->value, u"1,234.5"_s);
    ASSERT_TRUE(m_view.SetTemplate(m_design.Node(u"/page"_s)));
    EXPECT_EQ(Find<ZWCardFormule>("F")->value, u"1,234.5"_s);
    conditioned = Find<ZWCardConditioned>("C");

    // No alternative held: none is shown.
    ASSERT_TRUE(m_view.SetUserData("<fields><conditioned><id>C</id></conditioned></fields>"));
    EXPECT_EQ(conditioned->level, -1);
    // An alternative id that the card does not have: none either.
    ASSERT_TRUE(m_view.SetUserData("<fields><conditioned><id>C</id><label><id>zz</id></label></conditioned></fields>"));
    EXPECT_EQ(conditioned->level, -1);

    // The value document holds the date already written by the card's
    // pattern; read back as a date it would come out with day and month
    // swapped (3 February 2024 under "yyyy-dd-MM" is "2024-03-02").
    auto* date = Find<ZWCardDate>("D");
    date->format = u"yyyy-dd-MM"_s;
    ASSERT_TRUE(m_view.SetUserData("<fields><date><id>D</id><value>2024-03-02</value></date></fields>"));
    EXPECT_EQ(date->GetDrawText(), u"2024-03-02"_s);

    // A date alternative of a conditioned card likewise.
    auto alternative = std::make_unique<ZWCardDate>();
    alternative->id = u"when"_s;
    alternative->format = u"yyyy-dd-MM"_s;
    ZWCardDate* when = alternative.get();
    Find<ZWCardConditioned>("C")->AddCondition(u"1 < 2"_s, std::move(alternative));
    ASSERT_TRUE(m_view.SetUserData(
        "<fields><conditioned><id>C</id><date><id>when</id><value>2024-03-02</value></date></conditioned></fields>"));
    EXPECT_EQ(when->GetDrawText(), u"2024-03-02"_s);

    // Unfilled (as the editor shows it), the value is a date for the pattern.
    ZWCardDate fixed;
    fixed.format = u"yyyy-dd-MM"_s;
    fixed.value = u"2024-03-02"_s;
    EXPECT_EQ(fixed.GetDrawText(), u"2024-02-03"_s);

    // Pictures, also of an alternative.
    const QString png = EncodeBase64(zwtest::SolidPng(3, 2, Qt::red));
    const QByteArray pictures = QStringLiteral("<fields><image><id>I</id><value>%1</value></image>"
                                               "<conditioned><id>C</id><image><id>pic</id><value>%1</value></image>"
                                               "</conditioned></fields>")
                                    .arg(png)
                                    .toUtf8();
    ASSERT_TRUE(m_view.SetUserData(pictures));
    EXPECT_EQ(Find<ZWCardImage>("I")->PictureSize(), QSize(3, 2));
    // A picture alternative lies beneath the text cards.
    EXPECT_EQ(std::pair(conditioned->level, conditioned->layer), std::pair(2, 0));
    EXPECT_EQ(dynamic_cast<ZWCardImage*>(conditioned->GetCurrentControl())->PictureSize(), QSize(3, 2));

    // A value that decodes to nothing leaves the card empty.
    ASSERT_TRUE(m_view.SetUserData("<fields><image><id>I</id><value>!!!</value></image></fields>"));
    EXPECT_FALSE(Find<ZWCardImage>("I")->HasPicture());
}

TEST_F(ZWViewPageTest, APictureThatCannotBeDrawnIsMarkedInWindowsNotOnPaper)
{
    const QByteArray values = u"<fields><image><id>I</id><value>%1</value></image></fields>"_s
                                  .arg(EncodeBase64(QByteArray("no picture at all")))
                                  .toUtf8();
    ASSERT_TRUE(m_view.SetUserData(values));
    EXPECT_EQ(Find<ZWCardImage>("I")->PictureProblem(), u"no bmp, jpg, pcx, png, tga or tif picture"_s);
    EXPECT_EQ(m_view.Page().PictureProblems(),
        QStringList{u"card I: the picture is not drawn: no bmp, jpg, pcx, png, tga or tif picture"_s});
    // The red marks on a window that shows problems, or on paper.
    const auto marks = [this](bool markProblems, bool window) {
        m_view.SetMarkProblems(markProblems);
        m_view.SetMode(1);
        QImage image = zwtest::WhiteImage(210 * 4, 297 * 4, 4000);
        QPainter painter(&image);
        const QRect all(0, 0, image.width(), image.height());
        window ? m_view.Draw(painter, all, all) : m_view.Print(painter);
        painter.end();
        return zwtest::CountColour(image, qRgb(200, 0, 0));
    };
    EXPECT_GT(marks(true, true), 0);
    EXPECT_EQ(marks(false, true), 0);
    // Printing leaves the mark out, also from a window that shows it.
    EXPECT_EQ(marks(true, false), 0);
}

TEST_F(ZWViewPageTest, ModesAndQuarterTurns)
{
    EXPECT_TRUE(m_view.SetMode(2));
    EXPECT_FALSE(m_view.SetMode(2));
    EXPECT_DOUBLE_EQ(m_view.Factor(), 2.0);
    EXPECT_FALSE(m_view.SetMode(100));
    EXPECT_TRUE(m_view.SetMode(7));
    EXPECT_DOUBLE_EQ(m_view.Factor(), 1.0);
    // Fit on a window twice as wide as the page's aspect: height-limited, stored negative.
    const QPointF pxPerMm(4.0, 4.0);
    EXPECT_TRUE(m_view.SetMode(0, QSize(2 * 210 * 4, 297 * 2), pxPerMm));
    double factor = 0;
    m_view.GetMode(factor);
    EXPECT_DOUBLE_EQ(factor, -0.5);
    // Without a window to measure: fit is pending.
    EXPECT_TRUE(m_view.SetMode(0));
    EXPECT_EQ(m_view.Factor(), ZW_NO_VALUE);

    // A quarter turn there and back is exact.
    auto* label = Find<ZWCardLabel>("L");
    label->horizontalAlign = 1;
    label->verticalAlign = 8;
    const auto shape = [label] {
        return std::tuple(
            QRectF(label->x, label->y, label->width, label->height), label->horizontalAlign, label->verticalAlign);
    };
    const auto before = shape();
    m_view.FlipCard(true);
    EXPECT_EQ(QSizeF(m_view.GetWidth(), m_view.GetHeight()), QSizeF(297.0, 210.0));
    // Right turn: x = new page width - y - height, y = old x. Left (1) now
    // faces the top (4); bottom (8) now faces the left (1).
    EXPECT_EQ(shape(), std::tuple(QRectF(297.0 - 20.0 - 8.0, 10.0, 8.0, 30.0), 1, 4));
    m_view.FlipCard(false);
    EXPECT_DOUBLE_EQ(m_view.GetWidth(), 210.0);
    EXPECT_EQ(shape(), before);
    EXPECT_DOUBLE_EQ(label->orientation, 0.0);
}

TEST_F(ZWViewPageTest, PrintRestoresFactorAndOutColourAndTurnsOnlyWhenShapesDiffer)
{
    m_view.SetOutColor(0x00FF00);
    m_view.SetMode(0, QSize(400, 300), QPointF(1, 1));
    const double fit = m_view.Factor();
    ASSERT_LT(fit, 0);
    // Landscape paper (4 px per mm) for a portrait page: turned for printing.
    QImage landscape = zwtest::WhiteImage(297 * 4, 210 * 4, 4000);
    {
        QPainter painter(&landscape);
        m_view.Print(painter);
    }
    EXPECT_DOUBLE_EQ(m_view.Factor(), fit);
    EXPECT_EQ(m_view.GetOutColor(), 0x00FF00u);
    EXPECT_DOUBLE_EQ(m_view.GetWidth(), 210.0);
    EXPECT_FALSE(m_view.IsFlipped());
    // The turned title lies at the paper's right edge (x = 297 - 20 - 8 mm),
    // not at its left (x = 10 mm) where the unturned page would put it.
    const QRect ink = zwtest::InkBounds(landscape);
    ASSERT_FALSE(ink.isNull());
    EXPECT_GE(ink.right(), (297 - 28) * 4);
    // No out colour on paper.
    EXPECT_EQ(zwtest::CountColour(landscape, qRgb(0, 255, 0)), 0);
}

} // namespace
