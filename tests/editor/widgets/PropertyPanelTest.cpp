// The property panel driven with real keys and clicks: each edit is one undo
// step that gives back the cards' exact fields, a multi-selection edit sets
// every card, and refreshing the panel never records a step.
#include "editor/ZWPropertyEdit.h"
#include "editor/widgets/ZWColorButton.h"
#include "editor/widgets/ZWPropertyPanel.h"
#include "host/core/ZWMarentaSetup.h"
#include "template/ZWCardConditioned.h"
#include "template/ZWCardDate.h"
#include "template/ZWCardFormule.h"
#include "template/ZWCardImage.h"
#include "tests/support/ZWTestSupport.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

class RecordingPanel : public ZWPropertyPanel
{
public:
    QStringList messages;

protected:
    void ShowMessage(const QString& text) override { messages << text; }
};

class Panel : public testing::Test
{
protected:
    Panel()
    {
        for (const char* element : {"label", "formule", "formule", "date", "image", "conditioned"}) {
            auto card = ZWCardControl::CreateFromElement(QString::fromLatin1(element));
            card->id = u"c"_s + QString::number(page.cards.size());
            card->x = 10.0 * double(page.cards.size());
            card->y = 20;
            card->width = 30;
            card->height = 10;
            page.cards.push_back(std::move(card));
        }
        panel.formulaCheck = [](const QString& formula) { return u"checked "_s + formula; };
        panel.SetEdit(&edit);
        panel.resize(400, 900);
        panel.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&panel));
        QObject::connect(&stack, &QUndoStack::indexChanged, &panel, &ZWPropertyPanel::Refresh);
    }
    QByteArray Xml() const
    {
        XmlDocument doc;
        doc.Create(u"design"_s);
        page.SaveTemplate(doc.Root());
        return doc.ToXml();
    }
    void Select(std::vector<int> indices)
    {
        edit.SetSelection(std::move(indices));
        panel.Refresh();
    }
    template <class Card> Card& At(int index) { return static_cast<Card&>(*page.cards[size_t(index)]); }
    static void Type(QAbstractSpinBox* spin, const QString& text)
    {
        spin->setFocus();
        spin->selectAll();
        QTest::keyClicks(spin, text);
        QTest::keyClick(spin, Qt::Key_Return);
    }
    static void Type(QLineEdit* line, const QString& text)
    {
        line->setFocus();
        line->selectAll();
        QTest::keyClicks(line, text);
    }

    ZWTemplatePage page;
    QUndoStack stack;
    ZWPropertyEdit edit{page, stack};
    RecordingPanel panel;
};

TEST_F(Panel, TypingInFieldsIsOneStepPerFieldAndUndoGivesBackTheExactCard)
{
    Select({0});
    const QByteArray original = Xml();
    QSignalSpy edited(&panel, &ZWPropertyPanel::edited);
    Type(panel.TextEdit(), u"Energy"_s);
    EXPECT_EQ(At<ZWCardLabel>(0).value, u"Energy"_s);
    EXPECT_EQ(stack.count(), 1) << "six keys, one step";
    EXPECT_EQ(edited.count(), 6) << "the page is redrawn at each key";
    Type(panel.SizeEdit(), u"14"_s);
    Type(panel.XEdit(), u"195"_s);
    EXPECT_EQ(stack.count(), 3);
    EXPECT_EQ(At<ZWCardLabel>(0).size, 14.0);
    EXPECT_EQ(At<ZWCardLabel>(0).x, 180.0) << "a card is kept on the 210 mm page";
    QTest::mouseClick(panel.BoldEdit(), Qt::LeftButton, {}, QPoint(8, panel.BoldEdit()->height() / 2));
    EXPECT_EQ(At<ZWCardLabel>(0).style, 1);
    while (stack.canUndo())
        stack.undo();
    EXPECT_EQ(Xml(), original);
    EXPECT_EQ(panel.TextEdit()->text(), QString()) << "the panel shows the state undone";
    EXPECT_EQ(panel.SizeEdit()->value(), 10.0);
    EXPECT_EQ(stack.count(), 4) << "refreshing after undo recorded nothing";
}

TEST_F(Panel, AMultiSelectionShowsWhatItSharesAndAnEditSetsItOnAll)
{
    At<ZWCardFormule>(1).decimals = 2;
    At<ZWCardFormule>(2).decimals = 4;
    Select({1, 2});
    EXPECT_TRUE(panel.Group("number")->isVisible());
    EXPECT_FALSE(panel.Group("date")->isVisible());
    EXPECT_EQ(panel.DecimalsEdit()->text(), QString()) << "differing values show empty";
    EXPECT_EQ(panel.XEdit()->text(), QString());
    EXPECT_EQ(panel.HeightEdit()->value(), 10.0);
    Type(panel.DecimalsEdit(), u"1"_s);
    QTest::mouseClick(panel.ThousandsEdit(), Qt::LeftButton, {}, QPoint(8, panel.ThousandsEdit()->height() / 2));
    EXPECT_EQ(At<ZWCardFormule>(1).decimals, 1);
    EXPECT_EQ(At<ZWCardFormule>(2).decimals, 1);
    EXPECT_TRUE(At<ZWCardFormule>(2).thousandSeparator);
    EXPECT_EQ(panel.NumberSample()->text(),
        At<ZWCardFormule>(1).FormatValue(1234567.891) + u"   "_s + At<ZWCardFormule>(1).FormatValue(-0.5));
    stack.undo();
    stack.undo();
    EXPECT_EQ(At<ZWCardFormule>(1).decimals, 2);
    EXPECT_EQ(At<ZWCardFormule>(2).decimals, 4);

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
    EXPECT_EQ(At<ZWCardDate>(3).format, u"dd.MM.yyyy"_s);
    EXPECT_EQ(panel.DateSample()->text(), u"03.02.2024"_s);
    EXPECT_EQ(stack.count(), 1);
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
    EXPECT_TRUE(panel.Group("text")->isVisible());
    EXPECT_FALSE(panel.Group("conditions")->isVisible());
    EXPECT_FALSE(panel.XEdit()->isEnabled()) << "an alternative takes its card's rectangle";
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
    EXPECT_EQ(page.properties.width, 297.0) << "A4 landscape";
    EXPECT_EQ(page.properties.height, 210.0);
    Type(panel.PageWidthEdit(), u"100"_s);
    EXPECT_EQ(panel.PagePresetEdit()->currentIndex(), 0) << "no paper is 100 × 210 mm";
    QTemporaryDir dir;
    const QString junk = dir.filePath(u"junk.png"_s);
    ASSERT_TRUE(zwtest::WriteFile(junk, "not a picture"));
    EXPECT_FALSE(panel.ChooseBackground(junk));
    EXPECT_EQ(panel.messages.size(), 1);
    EXPECT_EQ(stack.count(), 2);
    stack.undo();
    stack.undo();
    EXPECT_EQ(page.properties.width, 210.0);
    EXPECT_EQ(panel.PagePresetEdit()->currentText(), u"A4"_s);
}

} // namespace
