// Undo and redo of every change of a designer page's cards: the page saved
// after undo is byte for byte the page before the change, and after redo the
// page after it, with the same geometry to the last bit, list order,
// identifiers and selection.
#include "editor/ZWCardListCommand.h"
#include "editor/ZWEditPage.h"
#include "editor/ZWGeometryCommand.h"
#include "editor/ZWLayoutCommands.h"
#include "template/ZWTemplatePage.h"

#include <QUndoStack>
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <string>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

struct State
{
    QByteArray xml;
    std::vector<QString> ids;
    std::vector<std::array<double, 4>> geometry;
    std::vector<int> selection;

    bool operator==(const State&) const = default;
};

// A 200 × 100 mm page at 4 pixels per mm in a 1000 × 600 window (page
// pixels 100..899 × 100..499) with a label, an image, a date and a formula
// card.
struct Fixture
{
    ZWTemplatePage page;
    ZWEditPage edit{page};
    QUndoStack stack;

    Fixture()
    {
        page.properties.width = 200;
        page.properties.height = 100;
        page.properties.xgrid = 0;
        page.properties.ygrid = 0;
        edit.Mapping().SetDevice(4, 4);
        edit.Mapping().SetClientSize(1000, 600);
        const char* elements[] = {"label", "image", "date", "formule"};
        const double geometry[][4] = {{10, 20, 30, 40}, {50, 20, 10, 10}, {100, 50, 20, 20}, {150, 10, 33.3, 7.7}};
        for (int i = 0; i < 4; ++i) {
            auto card = ZWCardControl::CreateFromElement(QString::fromLatin1(elements[i]));
            card->x = geometry[i][0];
            card->y = geometry[i][1];
            card->width = geometry[i][2];
            card->height = geometry[i][3];
            card->id = u"card"_s + QString::number(i);
            page.cards.push_back(std::move(card));
        }
        edit.SetActiveState(ZWEditPage::SelectTool);
    }

    State Snapshot() const
    {
        State s;
        XmlDocument doc;
        doc.Create(u"design"_s);
        page.SaveTemplate(doc.Root());
        s.xml = doc.ToXml();
        for (const auto& c : page.cards) {
            s.ids.push_back(c->id);
            s.geometry.push_back({c->x, c->y, c->width, c->height});
        }
        s.selection = edit.SelectedIndices();
        return s;
    }

    void Drag(QPoint from, QPoint to)
    {
        edit.ButtonDown(from, false, false);
        edit.MouseMove(to);
        edit.ButtonUp();
    }

    // A change of places and sizes as the window records it.
    void Geometry(const std::function<void()>& change, bool nudge = false)
    {
        auto* command = new ZWGeometryCommand(edit, u"change"_s, nudge);
        change();
        if (command->CaptureAfter())
            stack.push(command);
        else
            delete command;
    }

    void List(ZWCardListCommand::Kind kind, const std::function<void()>& change)
    {
        auto* command = new ZWCardListCommand(edit, kind, u"change"_s);
        change();
        if (command->CaptureAfter())
            stack.push(command);
        else
            delete command;
    }

    void SelectBoth() { Drag({120, 150}, {400, 400}); } // the label and the image
};

struct UndoCase
{
    const char* name;
    std::function<void(Fixture&)> act;
    // The selection the change starts from, as list positions.
    std::vector<int> selection = {0, 1};
};

class UndoRoundTripTest : public ::testing::TestWithParam<UndoCase>
{};

TEST_P(UndoRoundTripTest, UndoRestoresAndRedoReappliesExactly)
{
    Fixture f;
    f.edit.SelectIndices(GetParam().selection);
    const State before = f.Snapshot();
    GetParam().act(f);
    const State after = f.Snapshot();
    ASSERT_NE(after, before) << "the change did nothing";
    ASSERT_EQ(f.stack.count(), 1);
    f.stack.undo();
    EXPECT_EQ(f.Snapshot(), before);
    EXPECT_EQ(f.Snapshot().xml, before.xml);
    f.stack.redo();
    EXPECT_EQ(f.Snapshot(), after);
    f.stack.undo();
    EXPECT_EQ(f.Snapshot(), before);
}

const UndoCase undoCases[] = {
    {"MouseMoveOfTwoCards", [](Fixture& f) { f.Geometry([&] {
                                                 f.Drag({200, 250}, {263, 271});
                                             }); }},
    {"MouseResizeOfTheRightEdge", [](Fixture& f) { f.Geometry([&] {
                                                       f.Drag({259, 250}, {301, 250});
                                                   }); }},
    {"AlignLeft", [](Fixture& f) { f.Geometry([&] { ZWLayoutCommands::AlignSelectedControls(f.edit, 1); }); }},
    {"JustifyAsGroup",
        [](Fixture& f) { f.Geometry([&] { ZWLayoutCommands::JustifySelectedControls(f.edit, 1, true); }); }},
    {"SameSize", [](Fixture& f) { f.Geometry([&] { ZWLayoutCommands::ResizeSelectedControls(f.edit, true, true); }); }},
    {"DrawANewLabel",
        [](Fixture& f) {
            f.edit.SetActiveState(ZWEditPage::LabelTool);
            f.List(ZWCardListCommand::Insert, [&] { f.Drag({600, 400}, {720, 480}); });
        }},
    {"PasteTwoCards",
        [](Fixture& f) {
            ZWLayoutCommands::ControlCopy(f.edit);
            f.List(ZWCardListCommand::Insert, [&] { ZWLayoutCommands::ControlPaste(f.edit); });
        }},
    {"DeleteTwoCards",
        [](Fixture& f) {
            f.List(ZWCardListCommand::Remove, [&] { ZWLayoutCommands::DeleteSelectedControls(f.edit); });
        }},
    {"DeleteCardsSelectedInReverseOrder",
        [](Fixture& f) {
            f.List(ZWCardListCommand::Remove, [&] { ZWLayoutCommands::DeleteSelectedControls(f.edit); });
        },
        {3, 0}},
    {"CutTwoCards",
        [](Fixture& f) { f.List(ZWCardListCommand::Remove, [&] { ZWLayoutCommands::ControlCut(f.edit); }); }},
};

INSTANTIATE_TEST_SUITE_P(Undo, UndoRoundTripTest, ::testing::ValuesIn(undoCases),
    [](const auto& info) { return std::string(info.param.name); });

TEST(UndoTest, ArrowNudgesOfTheSameCardsMergeIntoOneStep)
{
    Fixture f;
    f.SelectBoth();
    const State before = f.Snapshot();
    for (int i = 0; i < 3; ++i)
        f.Geometry(
            [&] {
                for (int s = 0; s < f.edit.Selection().GetNumberOfSelectedControls(); ++s)
                    f.edit.Selection().GetSelectedControl(s)->x += 0.25;
            },
            true);
    EXPECT_EQ(f.stack.count(), 1);
    EXPECT_DOUBLE_EQ(f.page.cards[0]->x, 10.75);
    f.stack.undo();
    EXPECT_EQ(f.Snapshot(), before);
    f.stack.redo();
    EXPECT_DOUBLE_EQ(f.page.cards[1]->x, 50.75);
}

TEST(UndoTest, NudgesThatReturnToTheStartLeaveNothingToUndo)
{
    Fixture f;
    f.edit.SelectIndices({2});
    f.Geometry([&] { f.page.cards[2]->y += 0.25; }, true);
    f.Geometry([&] { f.page.cards[2]->y -= 0.25; }, true);
    EXPECT_EQ(f.stack.count(), 0);
    EXPECT_EQ(f.page.cards[2]->y, 50.0);
}

TEST(UndoTest, NudgesOfOtherCardsAndMouseMovesDoNotMerge)
{
    Fixture f;
    f.edit.SelectIndices({0});
    f.Geometry([&] { f.page.cards[0]->x += 0.25; }, true);
    f.edit.SelectIndices({1});
    f.Geometry([&] { f.page.cards[1]->x += 0.25; }, true);
    f.Geometry([&] { f.Drag({320, 200}, {330, 200}); });
    EXPECT_EQ(f.stack.count(), 3);
}

TEST(UndoTest, ASequenceUndoneAndRedoneEndsWhereItStarted)
{
    Fixture f;
    const State original = f.Snapshot();
    f.SelectBoth();
    f.Geometry([&] { f.Drag({200, 250}, {263, 271}); });
    ZWLayoutCommands::ControlCopy(f.edit);
    f.List(ZWCardListCommand::Insert, [&] { ZWLayoutCommands::ControlPaste(f.edit); });
    f.edit.SelectIndices({0, 2, 4, 5});
    f.Geometry([&] { ZWLayoutCommands::DistributeSelectedControls(f.edit, 0); });
    f.edit.SelectIndices({1, 4});
    f.List(ZWCardListCommand::Remove, [&] { ZWLayoutCommands::DeleteSelectedControls(f.edit); });
    f.edit.SelectIndices({0, 2});
    f.Geometry([&] { ZWLayoutCommands::AlignSelectedControls(f.edit, 8); });
    f.edit.SetActiveState(ZWEditPage::FormuleTool);
    f.List(ZWCardListCommand::Insert, [&] { f.Drag({110, 460}, {150, 490}); });
    const State final = f.Snapshot();
    ASSERT_EQ(f.stack.count(), 6);
    while (f.stack.canUndo())
        f.stack.undo();
    EXPECT_EQ(f.Snapshot().xml, original.xml);
    EXPECT_EQ(f.Snapshot().geometry, original.geometry);
    EXPECT_EQ(f.Snapshot().ids, original.ids);
    while (f.stack.canRedo())
        f.stack.redo();
    EXPECT_EQ(f.Snapshot(), final);
}

} // namespace
