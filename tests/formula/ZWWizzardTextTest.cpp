#include "formula/ZWWizzardText.h"
#include "tests/support/ZWTestSupport.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

using W = ZWWizzardText;

struct PreviewCase
{
    const char* what;
    const char* text;
    int start;
    int end;
    int kind;
    const char* preview;
};

class WizzardPreview : public testing::TestWithParam<PreviewCase>
{};

TEST_P(WizzardPreview, PlaceholderReplacesTheSelection)
{
    const PreviewCase& c = GetParam();
    EXPECT_EQ(W::ActualizeExpression(QString::fromUtf8(c.text), c.start, c.end, c.kind), QString::fromUtf8(c.preview));
}

INSTANTIATE_TEST_SUITE_P(Kinds, WizzardPreview,
    testing::ValuesIn(
        std::vector<PreviewCase>{{"device variable at the end", "Price * ", 8, 8, W::DeviceVariable, "Price * [Vx]"},
            {"formula over a selection", "1 + Old * 2", 4, 7, W::Formula, "1 + Fx * 2"},
            {"function at the start", "[a.b]", 0, 0, W::Function, "F(x)[a.b]"},
            {"other element", "A B", 1, 2, W::Other, "AxB"},
            {"selection made backwards", "1 + Old * 2", 7, 4, W::Formula, "1 + Fx * 2"},
            {"selection beyond the text", "12", 1, 99, W::Function, "1F(x)"},
            {"negative selection", "12", -5, -1, W::DeviceVariable, "[Vx]12"},
            {"whole text selected", "old", 0, 3, W::Other, "x"}, {"empty text", "", 0, 0, W::Formula, "Fx"},
            {"unknown kind", "a", 1, 1, 7, "ax"}}),
    [](const testing::TestParamInfo<PreviewCase>& info) { return zwtest::CaseName(info.param.what); });

struct InsertCase
{
    const char* what;
    const char* text;
    int start;
    int end;
    int kind;
    const char* chosen;
    const char* result;
    int cursor;
};

class WizzardInsert : public testing::TestWithParam<InsertCase>
{};

TEST_P(WizzardInsert, ElementReplacesTheSelection)
{
    const InsertCase& c = GetParam();
    int cursor = -1;
    const QString element = W::Element(c.kind, QString::fromUtf8(c.chosen));
    EXPECT_EQ(
        W::Insert(QString::fromUtf8(c.text), c.start, c.end, c.kind, element, &cursor), QString::fromUtf8(c.result));
    EXPECT_EQ(cursor, c.cursor);
}

INSTANTIATE_TEST_SUITE_P(Kinds, WizzardInsert,
    testing::ValuesIn(std::vector<InsertCase>{{"device variable in brackets", "Price * ", 8, 8, W::DeviceVariable,
                                                  "Main meter.Active energy", "Price * [Main meter.Active energy]", 34},
        {"formula over a selection", "1 + Old * 2", 4, 7, W::Formula, "Total", "1 + Total * 2", 9},
        {"function, cursor between its parentheses", "2 * ", 4, 4, W::Function, "sqrt", "2 * sqrt()", 9},
        {"operator between two names", "A B", 1, 2, W::Other, "<=", "A<=B", 3},
        {"backwards selection", "abcdef", 4, 2, W::Other, "+", "ab+ef", 3},
        {"selection beyond the text", "ab", 1, 50, W::Formula, "F", "aF", 2}}),
    [](const testing::TestParamInfo<InsertCase>& info) { return zwtest::CaseName(info.param.what); });

TEST(WizzardConstants, DecimalsTheUserPicks)
{
    EXPECT_EQ(W::ConstantFormat(4), u"%.4f"_s);
    EXPECT_EQ(W::ConstantFormat(0), u"%.0f"_s);
    EXPECT_EQ(W::ConstantFormat(-3), u"%.0f"_s);
    EXPECT_EQ(W::ConstantFormat(40), u"%.15f"_s);
    EXPECT_EQ(W::Constant(W::Pi, 4), u"3.1416"_s);
    EXPECT_EQ(W::Constant(W::E, 2), u"2.72"_s);
    EXPECT_EQ(W::Constant(W::E, 0), u"3"_s);
    EXPECT_EQ(W::Constant(W::Pi, 15), u"3.141592653589793"_s);
    EXPECT_EQ(W::OtherElements().size(), 16);
    EXPECT_EQ(W::OtherElements().front(), u"("_s);
    EXPECT_EQ(W::OtherElements().back(), u"||"_s);
}

} // namespace
