#include "formula/ZWEvaluator.h"
#include "host/core/ZWLoadString.h"
#include "tests/formula/FormulaTestSupport.h"
#include "tests/support/ZWTestSupport.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

struct GrammarCase
{
    const char16_t* formula;
    int expected; // AnalizeExpression: -1 invalid, 0 numeric, 1 boolean
};

class Grammar : public testing::TestWithParam<GrammarCase>
{};

TEST_P(Grammar, AnalizeExpression)
{
    ZWEvaluator evaluator(QString::fromUtf16(GetParam().formula));
    EXPECT_EQ(evaluator.AnalizeExpression(), GetParam().expected)
        << QString::fromUtf16(GetParam().formula).toStdString();
}

std::string CaseName(const testing::TestParamInfo<GrammarCase>& info)
{
    return zwtest::SpelledName(QString::fromUtf16(info.param.formula));
}

INSTANTIATE_TEST_SUITE_P(Accepted, Grammar,
    testing::ValuesIn(std::vector<GrammarCase>{{u"1", 0}, {u"1 + 2", 0}, {u"1 < 2", 1}, {u"(1 < 2)", 1}, {u"x", 0},
        {u"[a.b]", 0}, {u"-1", 0}, {u"+1", 0}, {u"!(1 < 2)", 1}, {u"- -3", 0}, {u"2+ -3", 0}, {u"1 - -1", 0},
        {u"2*-3", 0}, {u"2^-3", 0}, {u"-(-(1))", 0}, {u"a && (!b)", 1}, {u"sqrt(4)", 0}, {u"SiN(0)", 0},
        {u"sqrt(+4)", 0}, {u"atan2(1, 2)", 0}, {u"atan2(-1, -2)", 0}, {u"atan2(!(1<2), 1)", 0}, {u"(((1)))", 0},
        {u"1 < 2 < 3", 1}, {u"1e3 * .5 + 5.", 0}, {u"  1  ", 0}, {u"[Meter 1.Power] * 0.5 + Cost", 0},
        {u"atan2([a.x], 2) >= 1 && !(Total == 0)", -1}, {u"atan2([a.x], 2) >= 1 && (!(Total == 0))", 1}}),
    CaseName);

INSTANTIATE_TEST_SUITE_P(Refused, Grammar,
    testing::ValuesIn(std::vector<GrammarCase>{{u"", -1}, {u"   ", -1}, {u"2 3", -1}, {u"2+-3", -1}, {u"2++3", -1},
        {u"--1", -1}, {u"a && !b", -1}, {u"2* - -3", -1}, {u"- - -1", -1}, {u"!!(1<2)", -1}, {u"1 + !b", -1},
        {u"1 + +2", -1}, {u"sqrt 4", -1}, {u"sqrt()", -1}, {u"sqrt(4", -1}, {u"atan2(1)", -1}, {u"atan2(1, 2, 3)", -1},
        {u"atan2 (1 2)", -1}, {u"(1, 2)", -1}, {u"1, 2", -1}, {u"f(1)", -1}, {u"(1", -1}, {u"1)", -1}, {u"()", -1},
        {u"1 +", -1}, {u"+", -1}, {u"-", -1}, {u"!", -1}, {u"1 +* 2", -1}, {u"* 2", -1}, {u"1 = 2", -1}, {u"1 & 2", -1},
        {u"[a", -1}, {u"[]", -1}, {u"2e+x", -1}, {u"1.2.3", -1}, {u"\t1", -1}, {u"1\n", -1}, {u"a_b", -1}}),
    CaseName);

QString Repeat(const QString& part, int times)
{
    QString out;
    out.reserve(part.size() * times);
    for (int i = 0; i < times; ++i)
        out += part;
    return out;
}

QString Nested(const QString& open, int depth, const QString& inner = u"1"_s)
{
    return Repeat(open, depth) + inner + Repeat(u")"_s, depth);
}

TEST(NestingLimit, BelowTheLimitEvaluatesNormallyDeeperTextIsRefused)
{
    const int limit = ZWEvaluator::MaxNesting;
    ASSERT_GE(limit, 200);
    for (const auto& [open, inner, value] : {std::tuple(u"("_s, u"1"_s, 1.0), std::tuple(u"sqrt("_s, u"4"_s, 1.0),
             std::tuple(u"-("_s, u"1"_s, 1.0), std::tuple(u"atan2(0, "_s, u"1"_s, 0.0)}) {
        const zwtest::Evaluation e = zwtest::Evaluate(Nested(open, limit, inner));
        EXPECT_EQ(std::pair(e.analyze, e.code), std::pair(0, 0)) << open.toStdString();
        EXPECT_DOUBLE_EQ(e.value, value) << open.toStdString();
    }
    for (const QString& open : {u"("_s, u"sqrt("_s, u"-("_s, u"atan2(0, "_s, u"atan2("_s})
        EXPECT_EQ(ZWEvaluator(Nested(open, limit + 1)).AnalizeExpression(), -1) << open.toStdString();
    // A hundred thousand "(" before "1": refused, not a stack overflow.
    EXPECT_EQ(ZWEvaluator(Repeat(u"("_s, 100000) + u"1"_s).AnalizeExpression(), -1);
    EXPECT_EQ(ZWEvaluator(Repeat(u"sqrt("_s, 100000) + u"1"_s).AnalizeExpression(), -1);
}

TEST(LongFormulas, FlatTextOfAMegabyte)
{
    // 1+1+...: about a megabyte, left-associative, no nesting.
    const int terms = 500000;
    zwtest::Evaluation e = zwtest::Evaluate(u"1"_s + Repeat(u"+1"_s, terms - 1));
    EXPECT_EQ(std::tuple(e.analyze, e.code, e.value), std::tuple(0, 0, double(terms)));
    // Each unary minus applies to the rest of its term; none of them nests.
    e = zwtest::Evaluate(u"2"_s + Repeat(u"*-1"_s, 250001));
    EXPECT_EQ(std::tuple(e.analyze, e.code, e.value), std::tuple(0, 0, -2.0));
    e = zwtest::Evaluate(Repeat(u"(1<2) && "_s, 100000) + u"(1<2)"_s);
    EXPECT_EQ(std::tuple(e.analyze, e.code, e.value), std::tuple(1, 0, 1.0));
}

TEST(LongFormulas, ManyDistinctNames)
{
    // Every name undefined, each listed once, in order.
    QString text = u"v0"_s;
    for (int i = 1; i < 100000; ++i)
        text += u"+v%1"_s.arg(i % 60000);
    ZWEvaluator evaluator(text);
    ASSERT_EQ(evaluator.AnalizeExpression(), 0);
    std::vector<QString> names;
    evaluator.GetFormules(names);
    EXPECT_EQ(names.size(), 60000u);
    double value = 0;
    int valueType = -1;
    EXPECT_EQ(evaluator.Evaluate(value, valueType), 40);
    const std::vector<ZWToken>& undefined = *evaluator.GetUndefinedTokens();
    ASSERT_EQ(undefined.size(), 60000u);
    EXPECT_EQ(undefined[0].GetValue() + u' ' + undefined[59999].GetValue(), u"v0 v59999"_s);
}

TEST(ZWEvaluator, CopiesCarryTheTranslationAndEachEvaluationStartsAfresh)
{
    ZWEvaluator original(u"2^3^2"_s);
    ASSERT_EQ(original.AnalizeExpression(), 0);
    const ZWEvaluator copy = original;
    ZWEvaluator assigned;
    assigned = original;
    for (ZWEvaluator e : {copy, assigned}) {
        double value = 0;
        int valueType = -1;
        EXPECT_EQ(e.Evaluate(value, valueType), 0);
        EXPECT_EQ(value, 64.0);
        EXPECT_EQ(e.Expr(), u"2^3^2"_s);
    }
    ZWEvaluator evaluator(u"Nope + 2"_s);
    ASSERT_EQ(evaluator.AnalizeExpression(), 0);
    for (int i = 0; i < 3; ++i) {
        double value = 0;
        int valueType = -1;
        EXPECT_EQ(evaluator.Evaluate(value, valueType), 40);
        EXPECT_EQ(evaluator.GetUndefinedTokens()->size(), 1u);
    }
}

TEST(ErrorMsg, EveryCodeHasItsOwnText)
{
    QStringList seen;
    for (int code = 0; code <= 65; ++code) {
        const int id = ZWEvaluator::ErrorMsgId(code);
        QString text;
        EXPECT_TRUE(ZWLoadString(id, text)) << "no text for id " << id;
        EXPECT_GT(text.size(), 15) << id;
        if (code >= 1 && code <= 64) {
            EXPECT_FALSE(seen.contains(text)) << "code " << code << " repeats a text";
            seen << text;
        }
    }
    // Codes that are no error share the text for an unknown one.
    for (const int code : {-1, 65, 100, 32556})
        EXPECT_EQ(ZWEvaluator::ErrorMsgId(code), ZWEvaluator::ErrorMsgId(0)) << code;
    QString text;
    EXPECT_TRUE(ZWEvaluator::ErrorMsg(10, text));
    EXPECT_TRUE(text.contains(u"zero"_s, Qt::CaseInsensitive));
    ZWEvaluator::ErrorMsg(2, text);
    EXPECT_TRUE(text.contains(u"\"+\""_s));
}

} // namespace
