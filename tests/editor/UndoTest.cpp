// Undo and redo of every change of a designer page's cards: the page comes back
// byte for byte, with its geometry to the last bit, order, ids and selection.
#include "editor/ZWCardListCommand.h"
#include "editor/ZWGeometryCommand.h"
#include "editor/ZWLayoutCommands.h"
#include "tests/editor/EditorTestSupport.h"

#include <QUndoStack>
#include <gtest/gtest.h>

#include <functional>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

struct State
{
    QByteArray xml;
    std::vector<QString> ids;
    std::vector<zwtest::Geometry> geometry;
    std::vector<int> selection;

    bool operator==(const State&) const = default;
};

// The test page (EditorTestSupport.h) with a label, an image, a date and a
// formula card.
struct Fixture : zwtest::EditFixture
{
    QUndoStack stack;

    Fixture()
    {
        const char* elements[] = {"label", "image", "date", "formule"};
        const zwtest::Geometry geometry[]
            = {{10, 20, 30, 40}, {50, 20, 10, 10}, {100, 50, 20, 20}, {150, 10, 33.3, 7.7}};
        for (int i = 0; i < 4; ++i)
            Add(geometry[i], u"card"_s + QString::number(i), QString::fromLatin1(elements[i]));
    }

    State Snapshot() const { return {zwtest::PageXml(page), Ids(), Cards(), edit.SelectedIndices()}; }

    // A change as the window records it: pushed when it changed something.
    template <class Command, class... Args> void Record(const std::function<void()>& change, Args... args)
    {
        auto* command = new Command(edit, args...);
        change();
        if (command->CaptureAfter())
            stack.push(command);
        else
            delete command;
    }
    void Geometry(const std::function<void()>& change, bool nudge = false)
    {
        Record<ZWGeometryCommand>(change, u"change"_s, nudge);
    }
    void List(ZWCardListCommand::Kind kind, const std::function<void()>& change)
    {
        Record<ZWCardListCommand>(change, kind, u"change"_s);
    }
};

enum class Step { Geometry, Insert, Remove };

TEST(UndoTest, UndoRestoresAndRedoReappliesEveryChangeExactly)
{
    using Change = std::function<void(Fixture&)>;
    const auto drag = [](QPoint from, QPoint to) { return [=](Fixture& f) { f.Drag(from, to); }; };
    // the kind of step, the change, the selection it starts from (list positions)
    const std::tuple<const char*, Step, Change, std::vector<int>> cases[] = {
        {"a mouse move of two cards", Step::Geometry, drag({200, 250}, {263, 271}), {0, 1}},
        {"a mouse resize of the right edge", Step::Geometry, drag({259, 250}, {301, 250}), {0, 1}},
        {"align left", Step::Geometry, [](Fixture& f) { ZWLayoutCommands::AlignSelectedControls(f.edit, 1); }, {0, 1}},
        {"justify as a group", Step::Geometry,
            [](Fixture& f) { ZWLayoutCommands::JustifySelectedControls(f.edit, 1, true); }, {0, 1}},
        {"same size", Step::Geometry, [](Fixture& f) { ZWLayoutCommands::ResizeSelectedControls(f.edit, true, true); },
            {0, 1}},
        {"drawing a new label", Step::Insert,
            [](Fixture& f) {
                f.edit.SetActiveState(ZWEditPage::LabelTool);
                f.Drag({600, 400}, {720, 480});
            },
            {0, 1}},
        {"pasting two cards", Step::Insert,
            [](Fixture& f) {
                ZWLayoutCommands::ControlCopy(f.edit);
                ZWLayoutCommands::ControlPaste(f.edit);
            },
            {0, 1}},
        {"deleting two cards", Step::Remove, [](Fixture& f) { ZWLayoutCommands::DeleteSelectedControls(f.edit); },
            {0, 1}},
        {"deleting cards selected in reverse order", Step::Remove,
            [](Fixture& f) { ZWLayoutCommands::DeleteSelectedControls(f.edit); }, {3, 0}},
        {"cutting two cards", Step::Remove, [](Fixture& f) { ZWLayoutCommands::ControlCut(f.edit); }, {0, 1}},
    };
    for (const auto& [name, step, change, selection] : cases) {
        SCOPED_TRACE(name);
        Fixture f;
        f.edit.SelectIndices(selection);
        const State before = f.Snapshot();
        if (step == Step::Geometry)
            f.Geometry([&] { change(f); });
        else
            f.List(step == Step::Insert ? ZWCardListCommand::Insert : ZWCardListCommand::Remove, [&] { change(f); });
        const State after = f.Snapshot();
        ASSERT_NE(after, before) << "the change did nothing";
        ASSERT_EQ(f.stack.count(), 1);
        f.stack.undo();
        EXPECT_EQ(f.Snapshot(), before);
        f.stack.redo();
        EXPECT_EQ(f.Snapshot(), after);
        f.stack.undo();
        EXPECT_EQ(f.Snapshot(), before);
    }
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

} // namespace
