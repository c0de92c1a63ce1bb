// Undo of property-panel edits: the cards get back exactly their previous
// fields, in the same objects, and typing in a field is one step.
#include "editor/ZWPropertyCommand.h"
#include "editor/ZWPropertyEdit.h"
#include "template/ZWCardConditioned.h"
#include "template/ZWCardFormule.h"
#include "template/ZWCardLabel.h"
#include "tests/editor/EditorTestSupport.h"

#include <QUndoStack>
#include <functional>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

struct Fixture
{
    ZWTemplatePage page;
    QUndoStack stack;

    Fixture()
    {
        for (const char* element : {"label", "formule", "label", "conditioned"}) {
            auto card = ZWCardControl::CreateFromElement(QString::fromLatin1(element));
            card->id = u"card"_s + QString::number(page.cards.size());
            page.cards.push_back(std::move(card));
        }
        Label(0).value = u"Title"_s;
        Label(2).value = u"Other"_s;
        static_cast<ZWCardFormule&>(*page.cards[1]).value = u"[a.b]*2"_s;
    }
    ZWCardLabel& Label(int index) { return static_cast<ZWCardLabel&>(*page.cards[size_t(index)]); }
    QByteArray Xml() const { return zwtest::PageXml(page); }
    // One panel edit: snapshot, change, push when something changed.
    bool Edit(std::vector<int> indices, int field, const std::function<void(ZWCardControl&)>& change)
    {
        auto command = std::make_unique<ZWPropertyCommand>(page, indices, u"edit"_s, field);
        for (int i : indices)
            change(*page.cards[size_t(i)]);
        if (!command->CaptureAfter())
            return false;
        stack.push(command.release());
        return true;
    }
};

TEST(PropertyCommand, UndoAndRedoGiveBackTheExactFieldsInTheSameCardsAndTheAlternativesOfConditionedOnes)
{
    Fixture f;
    const QByteArray original = f.Xml();
    ZWCardControl* first = f.page.cards[0].get();
    ASSERT_TRUE(f.Edit({0, 2}, 1, [](ZWCardControl& card) {
        auto& label = static_cast<ZWCardLabel&>(card);
        std::tie(label.size, label.color, label.layer) = std::tuple(14.5, 0x0000FF, 0);
    }));
    const QByteArray edited = f.Xml();
    EXPECT_NE(edited, original);
    f.stack.undo();
    EXPECT_EQ(f.Xml(), original);
    EXPECT_EQ(f.page.cards[0].get(), first) << "the card object is kept, so pointers to it stay valid";
    EXPECT_EQ(f.page.cards[2]->layer, 1);
    f.stack.redo();
    EXPECT_EQ(std::tuple(f.Xml(), f.Label(2).size, f.page.cards[2]->layer), std::tuple(edited, 14.5, 0));

    f.Edit({3}, -1, [](ZWCardControl& card) {
        auto alternative = ZWCardControl::CreateFromElement(u"label"_s);
        static_cast<ZWCardLabel&>(*alternative).value = u"Alarm"_s;
        static_cast<ZWCardConditioned&>(card).AddCondition(u"[a.b] > 3"_s, std::move(alternative));
    });
    f.stack.undo();
    EXPECT_EQ(f.Xml(), edited);
    f.stack.redo();
    const auto& conditioned = static_cast<ZWCardConditioned&>(*f.page.cards[3]);
    ASSERT_EQ(std::tuple(conditioned.conditions.size(), conditioned.controls.size()), std::tuple(1u, 1u));
    EXPECT_EQ(static_cast<ZWCardLabel&>(*conditioned.controls[0]).value, u"Alarm"_s);
}

// Typing a field to the end is one step: the panel's test.
TEST(PropertyCommand, OtherFieldsAndCardsAreOtherStepsAndTypingBackToTheStartIsNone)
{
    Fixture f;
    const auto text
        = [](QString value) { return [value](ZWCardControl& card) { static_cast<ZWCardLabel&>(card).value = value; }; };
    const auto size = [](ZWCardControl& card) { static_cast<ZWCardLabel&>(card).size = 20; };
    f.Edit({0}, 7, text(u"A"_s));
    f.Edit({0}, 8, size);
    f.Edit({2}, 8, size);
    EXPECT_EQ(f.stack.count(), 3);

    f.stack.clear();
    f.Label(0).value = u"Title"_s;
    f.Edit({0}, 7, text(u"Titl"_s));
    f.Edit({0}, 7, text(u"Title"_s));
    EXPECT_EQ(f.stack.count(), 0) << "an edit that ends where it started leaves no step";
    EXPECT_FALSE(f.Edit({0}, 7, [](ZWCardControl&) {})) << "an edit that changes nothing is not pushed";
}

TEST(PropertyCommand, PageEditsUndoTheSizeGridAndOutColourAndCardsAreAssignedOnlyFromTheirKind)
{
    Fixture f;
    auto command = std::make_unique<ZWPropertyCommand>(f.page, u"page"_s, 3);
    f.page.properties.width = 420;
    f.page.properties.xgrid = 5;
    f.page.properties.outColor = 0x123456;
    ASSERT_TRUE(command->CaptureAfter());
    const quint32 outBefore = ZWGlobalProperties().outColor;
    f.stack.push(command.release());
    f.stack.undo();
    const ZWGlobalProperties& p = f.page.properties;
    EXPECT_EQ(std::tuple(p.width, p.xgrid, p.outColor), std::tuple(210.0, -3.0, outBefore));
    f.stack.redo();
    EXPECT_EQ(std::tuple(p.width, p.outColor), std::tuple(420.0, 0x123456u));

    // A card is assigned only from one of its own kind.
    EXPECT_FALSE(ZWPropertyCommand::Assign(*f.page.cards[0], *f.page.cards[1]));
    EXPECT_EQ(f.Label(0).value, u"Title"_s);
    EXPECT_TRUE(ZWPropertyCommand::Assign(*f.page.cards[0], *f.page.cards[2]));
    EXPECT_EQ(f.Label(0).value, u"Other"_s);
}

TEST(PropertyEdit, AMultiSelectionShowsWhatItSharesAndSetsItOnAll)
{
    Fixture f;
    ZWPropertyEdit edit(f.page, f.stack);
    edit.SetSelection({0, 1, 2});
    EXPECT_STREQ(edit.SharedKind(), "ZWCardLabel") << "a formula card is a label";
    const auto size = [&] { return edit.Shared<ZWCardLabel, double>([](const ZWCardLabel& l) { return l.size; }); };
    const auto text = [&] { return edit.Shared<ZWCardLabel, QString>([](const ZWCardLabel& l) { return l.value; }); };
    EXPECT_EQ(size(), 10.0);
    EXPECT_EQ(text(), std::nullopt) << "the texts differ";

    edit.SetSelection({0, 3, 99});
    EXPECT_EQ(edit.Indices(), (std::vector<int>{0, 3})) << "positions off the list are dropped";
    EXPECT_STREQ(edit.SharedKind(), "ZWCardControl");
    EXPECT_EQ((edit.Shared<ZWCardLabel, double>([](const ZWCardLabel& l) { return l.size; })), std::nullopt);
}

TEST(PropertyEdit, EditingAnAlternativeIsOneStepOfItsConditionedCard)
{
    Fixture f;
    auto& conditioned = static_cast<ZWCardConditioned&>(*f.page.cards[3]);
    conditioned.AddCondition(u"1"_s, ZWCardControl::CreateFromElement(u"image"_s));
    conditioned.AddCondition(u"0"_s, ZWCardControl::CreateFromElement(u"label"_s));
    const QByteArray original = f.Xml();
    ZWPropertyEdit edit(f.page, f.stack);
    edit.SetSelection({3});
    edit.SetAlternative(1);
    EXPECT_STREQ(edit.SharedKind(), "ZWCardLabel");
    ASSERT_TRUE(edit.Apply<ZWCardLabel>(ZWPropertyEdit::Text, u"text"_s, [](ZWCardLabel& l) { l.value = u"Off"_s; }));
    EXPECT_EQ(static_cast<ZWCardLabel&>(*conditioned.controls[1]).value, u"Off"_s);
    f.stack.undo();
    EXPECT_EQ(f.Xml(), original);

    edit.SetAlternative(5);
    EXPECT_EQ(edit.Alternative(), -1) << "an alternative that does not exist edits the card itself";
    edit.SetSelection({});
    EXPECT_FALSE(edit.Apply<ZWCardLabel>(ZWPropertyEdit::Text, u"text"_s, [](ZWCardLabel& l) { l.value = u"x"_s; }));
    EXPECT_TRUE(
        edit.ApplyPage(ZWPropertyEdit::PageRounded, u"corners"_s, [](ZWGlobalProperties& p) { p.rounded = 6; }));
    EXPECT_EQ(f.page.properties.rounded, 6.0);
}

} // namespace
