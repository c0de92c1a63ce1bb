// The commands on the selected cards: align, distribute, centre, one size,
// copy, cut, paste with its cascade, delete and select by id.
#include "editor/ZWLayoutCommands.h"
#include "tests/editor/EditorTestSupport.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

using zwtest::Geometry;

// The test page (EditorTestSupport.h) with cards of the given places, named
// by their list position.
struct Fixture : zwtest::EditFixture
{
    explicit Fixture(const std::vector<Geometry>& cards, double grid = 0.0) : EditFixture(grid)
    {
        for (const Geometry& g : cards)
            Add(g, QString::number(page.cards.size()));
    }
    // Selects cards by list index, in the order given.
    void Select(const std::vector<int>& order)
    {
        edit.Selection().Clear();
        for (int i : order)
            edit.Selection().AddSelection({}, {}, page.cards[size_t(i)].get());
    }
};

void ExpectCards(const std::vector<Geometry>& actual, const std::vector<Geometry>& expected)
{
    ASSERT_EQ(actual.size(), expected.size());
    for (size_t i = 0; i < actual.size(); ++i)
        EXPECT_GEOMETRY(actual[i], expected[i]) << "card " << i;
}

enum class Command { Align, Distribute, Justify, JustifyGroup, SameWidth, SameSize };

const std::vector<Geometry> threeCards = {{10, 20, 30, 40}, {50, 20, 10, 10}, {100, 50, 20, 20}};

TEST(LayoutCommandsTest, CardsEndWhereEachCommandPutsThem)
{
    // cards, selection order, command, mode, cards afterwards
    const std::tuple<const char*, std::vector<Geometry>, std::vector<int>, Command, int, std::vector<Geometry>> cases[]
        = {
            {"AlignLeftOnTheLastSelected", threeCards, {0, 1, 2}, Command::Align, 1,
                {{100, 20, 30, 40}, {100, 20, 10, 10}, {100, 50, 20, 20}}},
            {"AlignRightEdges", threeCards, {0, 1, 2}, Command::Align, 2,
                {{90, 20, 30, 40}, {110, 20, 10, 10}, {100, 50, 20, 20}}},
            {"AlignTop", threeCards, {0, 1, 2}, Command::Align, 4,
                {{10, 50, 30, 40}, {50, 50, 10, 10}, {100, 50, 20, 20}}},
            {"AlignBottomEdges", threeCards, {0, 1, 2}, Command::Align, 8,
                {{10, 30, 30, 40}, {50, 60, 10, 10}, {100, 50, 20, 20}}},
            {"AlignOnTheReferenceOnlyTouchingTheBottomEndsOnePixelInside",
                {{10, 20, 30, 40}, {50, 20, 10, 10}, {100, 80, 20, 20}}, {0, 1, 2}, Command::Align, 8,
                {{10, 59.75, 30, 40}, {50, 89.75, 10, 10}, {100, 80, 20, 20}}},
            {"AlignWithOneCardChangesNothing", {{-5, 0, 30, 40}}, {0}, Command::Align, 1, {{-5, 0, 30, 40}}},
            {"UnknownAlignStillClampsToThePage", {{-5, 70, 30, 30}, {170, 20, 30, 10}, {0, 0, 1, 1}}, {0, 1, 2},
                Command::Align, 3, {{0, 69.75, 30, 30}, {169.75, 20, 30, 10}, {0, 0, 1, 1}}},
            {"DistributeAcrossEqualGapsInOrderOfX", {{10, 0, 20, 10}, {100, 0, 10, 10}, {40, 0, 30, 10}}, {0, 1, 2},
                Command::Distribute, 0, {{10, 0, 20, 10}, {100, 0, 10, 10}, {50, 0, 30, 10}}},
            {"DistributeDownEqualGapsInOrderOfY", {{0, 10, 10, 20}, {0, 60, 10, 5}, {0, 35, 10, 10}}, {0, 1, 2},
                Command::Distribute, 1, {{0, 10, 10, 20}, {0, 60, 10, 5}, {0, 40, 10, 10}}},
            {"DistributeTwoCardsLeavesThem", {{10, 0, 20, 10}, {100, 0, 10, 10}}, {1, 0}, Command::Distribute, 0,
                {{10, 0, 20, 10}, {100, 0, 10, 10}}},
            {"DistributeEqualXKeepsSelectionOrder", {{10, 0, 20, 10}, {10, 0, 40, 10}, {100, 0, 10, 10}}, {1, 0, 2},
                Command::Distribute, 0, {{65, 0, 20, 10}, {10, 0, 40, 10}, {100, 0, 10, 10}}},
            {"CentreEachAcross", threeCards, {0, 1}, Command::Justify, 0,
                {{85, 20, 30, 40}, {95, 20, 10, 10}, {100, 50, 20, 20}}},
            {"CentreEachDown", threeCards, {0}, Command::Justify, 1,
                {{10, 30, 30, 40}, {50, 20, 10, 10}, {100, 50, 20, 20}}},
            {"CentreGroupAcrossKeepsDistances", threeCards, {0, 1}, Command::JustifyGroup, 0,
                {{75, 20, 30, 40}, {115, 20, 10, 10}, {100, 50, 20, 20}}},
            {"CentreGroupDownKeepsDistances", threeCards, {0, 1}, Command::JustifyGroup, 1,
                {{10, 30, 30, 40}, {50, 30, 10, 10}, {100, 50, 20, 20}}},
            {"CentreWithUnknownModeDoesNothing", threeCards, {0, 1}, Command::Justify, 2, threeCards},
            {"SameWidthOnly", {{10, 20, 30, 40}, {100, 10, 20, 80}}, {0, 1}, Command::SameWidth, 0,
                {{10, 20, 20, 40}, {100, 10, 20, 80}}},
            // Reaching the bottom edge exactly is allowed here; crossing the right
            // one pulls the card back one pixel inside.
            {"SameSizeKeepsCardsOnThePage", {{10, 20, 30, 40}, {190, 20, 5, 5}, {100, 10, 20, 80}}, {0, 1, 2},
                Command::SameSize, 0, {{10, 20, 20, 80}, {179.75, 20, 20, 80}, {100, 10, 20, 80}}},
        };
    using L = ZWLayoutCommands;
    for (const auto& [name, cards, selection, command, mode, expected] : cases) {
        SCOPED_TRACE(name);
        Fixture f(cards);
        f.Select(selection);
        const std::function<void()> commands[]
            = {[&] { L::AlignSelectedControls(f.edit, mode); }, [&] { L::DistributeSelectedControls(f.edit, mode); },
                [&] { L::JustifySelectedControls(f.edit, mode, false); },
                [&] { L::JustifySelectedControls(f.edit, mode, true); },
                [&] { L::ResizeSelectedControls(f.edit, true, false); },
                [&] { L::ResizeSelectedControls(f.edit, true, true); }};
        commands[int(command)]();
        ExpectCards(f.Cards(), expected);
    }
}

TEST(LayoutCommandsTest, EachPasteLandsOneOffsetFurtherAndIsSelected)
{
    // grid, copied card, pastes, where the last lands
    const std::tuple<double, Geometry, int, Geometry> cases[] = {
        {0, {10, 20, 30, 40}, 1, {17.5, 27.5, 30, 40}}, // thirty pixels without grid
        {0, {10, 20, 30, 40}, 2, {25, 35, 30, 40}}, {5, {10, 20, 30, 40}, 2, {20, 30, 30, 40}}, // a grid step with grid
        {0, {165, 20, 30, 10}, 1, {0, 27.5, 30, 10}},     // crossing the right edge restarts at zero
        {0, {162.5, 20, 30, 10}, 1, {170, 27.5, 30, 10}}, // ending on it stays
        {0, {10, 70, 30, 25}, 1, {17.5, 0, 30, 25}},      // crossing the bottom restarts at the top
    };
    for (const auto& [grid, copied, pastes, expected] : cases) {
        SCOPED_TRACE(testing::Message() << "grid " << grid << ", " << pastes << " paste(s) of x " << copied[0]);
        Fixture f({copied}, grid);
        f.Select({0});
        ZWLayoutCommands::ControlCopy(f.edit);
        for (int i = 0; i < pastes; ++i)
            ASSERT_TRUE(ZWLayoutCommands::ControlPaste(f.edit));
        ASSERT_EQ(f.page.cards.size(), size_t(1 + pastes));
        EXPECT_GEOMETRY(f.Cards().back(), expected);
        EXPECT_EQ(f.SelectedIds(), std::vector<QString>{f.page.cards.back()->id});
    }
}

TEST(LayoutCommandsTest, PasteAppendsFreshIdentitiesInSelectionOrder)
{
    Fixture f({{10, 20, 30, 40}, {50, 20, 10, 10}});
    f.Select({1, 0});
    ZWLayoutCommands::ControlCopy(f.edit);
    ASSERT_TRUE(ZWLayoutCommands::ControlPaste(f.edit));
    ASSERT_EQ(f.page.cards.size(), 4u);
    EXPECT_EQ(std::tuple(f.page.cards[2]->x, f.page.cards[3]->x, f.Selected()), std::tuple(57.5, 17.5, 2));
    const std::vector<QString> ids = f.Ids();
    EXPECT_TRUE(!ids[2].isEmpty() && ids[2] != u"1"_s && ids[2] != ids[3]) << ids[2].toStdString();
}

TEST(LayoutCommandsTest, CutRemovesTheCardsAndPasteBringsThemBackButACutOfNothingEmptiesTheClipboard)
{
    Fixture f({{10, 20, 30, 40}, {50, 20, 10, 10}, {100, 50, 20, 20}});
    f.Select({1});
    ZWLayoutCommands::ControlCut(f.edit);
    EXPECT_EQ(std::tuple(f.Ids(), f.Selected()), std::tuple(std::vector<QString>{u"0"_s, u"2"_s}, 0));
    ASSERT_TRUE(ZWLayoutCommands::ControlPaste(f.edit));
    ExpectCards(f.Cards(), {{10, 20, 30, 40}, {100, 50, 20, 20}, {57.5, 27.5, 10, 10}});

    f.Select({});
    ZWLayoutCommands::ControlCut(f.edit);
    EXPECT_TRUE(f.edit.clipboard.empty());
    EXPECT_FALSE(ZWLayoutCommands::ControlPaste(f.edit));
    EXPECT_EQ(f.page.cards.size(), 3u);
}

TEST(LayoutCommandsTest, DeleteKeepsTheOrderOfTheRest)
{
    Fixture f({{0, 0, 1, 1}, {1, 1, 1, 1}, {2, 2, 1, 1}, {3, 3, 1, 1}});
    EXPECT_FALSE(ZWLayoutCommands::DeleteSelectedControls(f.edit));
    f.Select({2, 0});
    EXPECT_TRUE(ZWLayoutCommands::DeleteSelectedControls(f.edit));
    EXPECT_EQ(std::tuple(f.Ids(), f.Selected()), std::tuple(std::vector<QString>{u"1"_s, u"3"_s}, 0));
}

TEST(LayoutCommandsTest, SelectByIdTakesTheFirstMatchAndIgnoresUnknownIds)
{
    Fixture f({{0, 0, 1, 1}, {1, 1, 1, 1}, {2, 2, 1, 1}});
    f.page.cards[2]->id = u"1"_s;
    f.Select({0, 2});
    EXPECT_FALSE(ZWLayoutCommands::SelectControlById(f.edit, u"nope"_s));
    EXPECT_EQ(f.Selected(), 2);
    EXPECT_EQ(ZWLayoutCommands::GetSelectedControl(f.edit), nullptr); // not one card
    EXPECT_TRUE(ZWLayoutCommands::SelectControlById(f.edit, u"1"_s));
    EXPECT_EQ(ZWLayoutCommands::GetSelectedControl(f.edit), f.page.cards[1].get());
}

} // namespace
