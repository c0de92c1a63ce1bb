// The property panel driven with real keys and clicks: each edit is one undo
// step that gives back the cards' exact fields, a multi-selection edit sets
// every card, and refreshing the panel never records a step.
#include "template/ZWCardConditioned.h"
#include "template/ZWCardDate.h"
#include "template/ZWCardFormule.h"
#include "template/ZWCardImage.h"
#include "tests/editor/widgets/PanelTestSupport.h"
#include "tests/support/ZWTestSupport.h"

using namespace Qt::StringLiterals;

namespace {

class Panel : public zwtest::PanelTest
{
protected:
    Panel() : PanelTest({"label", "formule", "formule", "date", "image", "conditioned"}, {400, 900})
    {
        panel.formulaCheck = [](const QString& formula) { return u"checked "_s + formula; };
    }
    using PanelTest::Type;
    static void Type(QAbstractSpinBox* spin, const QString& text)
    {
        spin->setFocus();
        spin->selectAll();
        QTest::keyClicks(spin, text);
        QTest::keyClick(spin, Qt::Key_Return);
    }
};

TEST_F(Panel, TypingInFieldsIsOneStepPerFieldAndUndoGivesBackTheExactCard)
{
    Select({0});
    const QByteArray original = Xml();
    QSignalSpy edited(&panel, &ZWPropertyPanel::edited);
    Type(panel.TextEdit(), u"Energy"_s);
    // Six keys, one step; the page is redrawn at each key.
    EXPECT_EQ(std::tuple(At<ZWCardLabel>(0).value, stack.count(), edited.count()), std::tuple(u"Energy"_s, 1, 6));
    Type(panel.SizeEdit(), u"14"_s);
    Type(panel.XEdit(), u"195"_s);
    // A card is kept on the 210 mm page.
    EXPECT_EQ(std::tuple(stack.count(), At<ZWCardLabel>(0).size, At<ZWCardLabel>(0).x), std::tuple(3, 14.0, 180.0));
    QTest::mouseClick(panel.BoldEdit(), Qt::LeftButton, {}, QPoint(8, panel.BoldEdit()->height() / 2));
    EXPECT_EQ(At<ZWCardLabel>(0).style, 1);
    while (stack.canUndo())
        stack.undo();
    EXPECT_EQ(Xml(), original);
    // The panel shows the state undone, and refreshing recorded nothing.
    EXPECT_EQ(
        std::tuple(panel.TextEdit()->text(), panel.SizeEdit()->value(), stack.count()), std::tuple(QString(), 10.0, 4));
}

TEST_F(Panel, AMultiSelectionShowsWhatItSharesAndAnEditSetsItOnAll)
{
    At<ZWCardFormule>(1).decimals = 2;
    At<ZWCardFormule>(2).decimals = 4;
    Select({1, 2});
    EXPECT_EQ(
        std::tuple(panel.Group("number")->isVisible(), panel.Group("date")->isVisible()), std::tuple(true, false));
    // Differing values show empty.
    EXPECT_EQ(std::tuple(panel.DecimalsEdit()->text(), panel.XEdit()->text(), panel.HeightEdit()->value()),
        std::tuple(QString(), QString(), 10.0));
    Type(panel.DecimalsEdit(), u"1"_s);
    QTest::mouseClick(panel.ThousandsEdit(), Qt::LeftButton, {}, QPoint(8, panel.ThousandsEdit()->height() / 2));
    EXPECT_EQ(std::tuple(
                  At<ZWCardFormule>(1).decimals, At<ZWCardFormule>(2).decimals, At<ZWCardFormule>(2).thousandSeparator),
        std::tuple(1, 1, true));
    EXPECT_EQ(panel.NumberSample()->text(),
        At<ZWCardFormule>(1).FormatValue(1234567.891) + u"   "_s + At<ZWCardFormule>(1).FormatValue(-0.5));
    stack.undo();
    stack.undo();
    EXPECT_EQ(std::tuple(At<ZWCardFormule>(1).decimals, At<ZWCardFormule>(2).decimals), std::tuple(2, 4));

    Select({0, 4});
    EXPECT_FALSE(panel.Group("text")->isVisible()) << "a label and a picture share only the card's fields";
    EXPECT_TRUE(panel.Group("card")->isVisible());
}

TEST_F(Panel, DatesOfferThePeriodsDatesAndPreviewThePattern)
{
    At<ZWCardDate>(3).value = u"2024-02-03T04:05:06"_s;
    Select({3});
    ASSERT_EQ(panel.FieldEdit()->count(), 4);
    Type(panel.PatternEdit(), u"dd.MM.yyyy"_s);
    EXPECT_EQ(std::tuple(At<ZWCardDate>(3).format, panel.DateSample()->text(), stack.count()),
        std::tuple(u"dd.MM.yyyy"_s, u"03.02.2024"_s, 1));
    panel.FieldEdit()->setFocus();
    QTest::keyClick(panel.FieldEdit(), Qt::Key_Down);
    QTest::keyClick(panel.FieldEdit(), Qt::Key_Down);
    EXPECT_TRUE(At<ZWCardDate>(3).field == u"BEGIN_DATE"_s || At<ZWCardDate>(3).field == u"END_DATE"_s);
}

TEST_F(Panel, ConditionsAreAddedReorderedAndTheirCardsEditedWithTheSamePanels)
{
    Select({5});
    ASSERT_TRUE(panel.Group("conditions")->isVisible());
    const QByteArray original = Xml();
    panel.AddCondition(u"label"_s);
    panel.AddCondition(u"image"_s);
    auto& conditioned = At<ZWCardConditioned>(5);
    ASSERT_EQ(conditioned.GetNumberOfConditions(), 2);
    EXPECT_EQ(panel.ConditionList()->count(), 2);
    EXPECT_NE(conditioned.controls[0]->id, conditioned.controls[1]->id);
    panel.ConditionList()->setCurrentRow(1);
    panel.MoveCondition(-1);
    EXPECT_STREQ(conditioned.controls[0]->GetRuntimeClass(), "ZWCardImage");

    panel.ConditionList()->setCurrentRow(1);
    panel.EditAlternative();
    // An alternative takes its card's rectangle.
    EXPECT_EQ(std::tuple(
                  panel.Group("text")->isVisible(), panel.Group("conditions")->isVisible(), panel.XEdit()->isEnabled()),
        std::tuple(true, false, false));
    Type(panel.TextEdit(), u"Off"_s);
    EXPECT_EQ(static_cast<ZWCardLabel&>(*conditioned.controls[1]).value, u"Off"_s);
    panel.BackToConditioned();
    EXPECT_TRUE(panel.Group("conditions")->isVisible());

    while (stack.canUndo())
        stack.undo();
    EXPECT_EQ(Xml(), original);
    EXPECT_EQ(panel.ConditionList()->count(), 0);
}

TEST_F(Panel, ThePageTakesPresetsGridAndRefusesABackgroundThatIsNoPicture)
{
    Select({});
    ASSERT_TRUE(panel.Group("page")->isVisible());
    EXPECT_EQ(panel.PagePresetEdit()->currentText(), u"A4"_s);
    panel.PagePresetEdit()->setFocus();
    QTest::keyClick(panel.PagePresetEdit(), Qt::Key_Down);
    EXPECT_EQ(std::tuple(page.properties.width, page.properties.height), std::tuple(297.0, 210.0)) << "A4 landscape";
    Type(panel.PageWidthEdit(), u"100"_s);
    EXPECT_EQ(panel.PagePresetEdit()->currentIndex(), 0) << "no paper is 100 × 210 mm";
    QTemporaryDir dir;
    const QString junk = dir.filePath(u"junk.png"_s);
    ASSERT_TRUE(zwtest::WriteFile(junk, "not a picture"));
    EXPECT_FALSE(panel.ChooseBackground(junk));
    EXPECT_EQ(std::tuple(panel.messages.size(), stack.count()), std::tuple(qsizetype(1), 2));
    stack.undo();
    stack.undo();
    EXPECT_EQ(std::tuple(page.properties.width, panel.PagePresetEdit()->currentText()), std::tuple(210.0, u"A4"_s));
}

} // namespace
