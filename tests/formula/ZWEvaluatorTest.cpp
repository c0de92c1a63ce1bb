#include "formula/ZWEvaluator.h"
#include "host/core/ZWLoadString.h"
#include "tests/formula/FormulaTestSupport.h"
#include "tests/support/ZWTestSupport.h"

#include <gtest/gtest.h>

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
    testing::Values(GrammarCase{u"1", 0}, GrammarCase{u"1 + 2", 0}, GrammarCase{u"1 < 2", 1},
        GrammarCase{u"(1 < 2)", 1}, GrammarCase{u"x", 0}, GrammarCase{u"[a.b]", 0}, GrammarCase{u"-1", 0},
        GrammarCase{u"+1", 0}, GrammarCase{u"!(1 < 2)", 1}, GrammarCase{u"- -3", 0}, GrammarCase{u"2+ -3", 0},
        GrammarCase{u"1 - -1", 0}, GrammarCase{u"2*-3", 0}, GrammarCase{u"2^-3", 0}, GrammarCase{u"-(-(1))", 0},
        GrammarCase{u"a && (!b)", 1}, GrammarCase{u"sqrt(4)", 0}, GrammarCase{u"SiN(0)", 0},
        GrammarCase{u"sqrt(+4)", 0}, GrammarCase{u"atan2(1, 2)", 0}, GrammarCase{u"atan2(-1, -2)", 0},
        GrammarCase{u"atan2(!(1<2), 1)", 0}, GrammarCase{u"(((1)))", 0}, GrammarCase{u"1 < 2 < 3", 1},
        GrammarCase{u"1e3 * .5 + 5.", 0}, GrammarCase{u"  1  ", 0}, GrammarCase{u"[Meter 1.Power] * 0.5 + Cost", 0},
        GrammarCase{u"atan2([a.x], 2) >= 1 && !(Total == 0)", -1},
        GrammarCase{u"atan2([a.x], 2) >= 1 && (!(Total == 0))", 1}),
    CaseName);

INSTANTIATE_TEST_SUITE_P(Refused, Grammar,
    testing::Values(GrammarCase{u"", -1}, GrammarCase{u"   ", -1}, GrammarCase{u"2 3", -1}, GrammarCase{u"2+-3", -1},
        GrammarCase{u"2++3", -1}, GrammarCase{u"--1", -1}, GrammarCase{u"a && !b", -1}, GrammarCase{u"2* - -3", -1},
        GrammarCase{u"- - -1", -1}, GrammarCase{u"!!(1<2)", -1}, GrammarCase{u"1 + !b", -1}, GrammarCase{u"1 + +2", -1},
        GrammarCase{u"sqrt 4", -1}, GrammarCase{u"sqrt()", -1}, GrammarCase{u"sqrt(4", -1},
        GrammarCase{u"atan2(1)", -1}, GrammarCase{u"atan2(1, 2, 3)", -1}, GrammarCase{u"atan2 (1 2)", -1},
        GrammarCase{u"(1, 2)", -1}, GrammarCase{u"1, 2", -1}, GrammarCase{u"f(1)", -1}, GrammarCase{u"(1", -1},
        GrammarCase{u"1)", -1}, GrammarCase{u"()", -1}, GrammarCase{u"1 +", -1}, GrammarCase{u"+", -1},
        GrammarCase{u"-", -1}, GrammarCase{u"!", -1}, GrammarCase{u"1 +* 2", -1}, GrammarCase{u"* 2", -1},
        GrammarCase{u"1 = 2", -1}, GrammarCase{u"1 & 2", -1}, GrammarCase{u"[a", -1}, GrammarCase{u"[]", -1},
        GrammarCase{u"2e+x", -1}, GrammarCase{u"1.2.3", -1}, GrammarCase{u"\t1", -1}, GrammarCase{u"1\n", -1},
        GrammarCase{u"a_b", -1}),
    CaseName);

QString Repeat(const QString& part, int times)
{
    QString out;
    out.reserve(part.size() * times);
    for (int i = 0; i < times; ++i)
        out += part;
    return out;
}

QString Nested(const QString& open, int depth, const QString& inner = QStringLiteral("1"))
{
    return Repeat(open, depth) + inner + Repeat(QStringLiteral(")"), depth);
}

TEST(NestingLimit, BelowTheLimitEvaluatesNormally)
{
    const int limit = ZWEvaluator::MaxNesting;
    ASSERT_GE(limit, 200);
    for (const QString& open :
        {QStringLiteral("("), QStringLiteral("sqrt("), QStringLiteral("-("), QStringLiteral("atan2(0, ")}) {
        const zwtest::Evaluation e = zwtest::Evaluate(Nested(open, limit));
        EXPECT_EQ(e.analyze, 0) << open.toStdString();
        EXPECT_EQ(e.code, 0) << open.toStdString();
    }
    EXPECT_EQ(zwtest::Evaluate(Nested(QStringLiteral("("), limit)).value, 1.0);
    EXPECT_EQ(zwtest::Evaluate(Nested(QStringLiteral("-("), limit)).value, 1.0);
    EXPECT_DOUBLE_EQ(zwtest::Evaluate(Nested(QStringLiteral("sqrt("), limit, QStringLiteral("4"))).value, 1.0);
}

TEST(NestingLimit, DeeperTextIsRefused)
{
    const int limit = ZWEvaluator::MaxNesting;
    for (const QString& open : {QStringLiteral("("), QStringLiteral("sqrt("), QStringLiteral("-("),
             QStringLiteral("atan2(0, "), QStringLiteral("atan2(")}) {
        ZWEvaluator one(Nested(open, limit + 1));
        EXPECT_EQ(one.AnalizeExpression(), -1) << open.toStdString();
    }
    // A hundred thousand "(" before "1": refused, not a stack overflow.
    ZWEvaluator deep(Repeat(QStringLiteral("("), 100000) + QStringLiteral("1"));
    EXPECT_EQ(deep.AnalizeExpression(), -1);
    ZWEvaluator deepFunctions(Repeat(QStringLiteral("sqrt("), 100000) + QStringLiteral("1"));
    EXPECT_EQ(deepFunctions.AnalizeExpression(), -1);
}

TEST(LongFormulas, FlatTextOfAMegabyte)
{
    // 1+1+...: about a megabyte, left-associative, no nesting.
    const int terms = 500000;
    zwtest::Evaluation e = zwtest::Evaluate(QStringLiteral("1") + Repeat(QStringLiteral("+1"), terms - 1));
    EXPECT_EQ(e.analyze, 0);
    EXPECT_EQ(e.code, 0);
    EXPECT_EQ(e.value, double(terms));
    // Each unary minus applies to the rest of its term; none of them nests.
    e = zwtest::Evaluate(QStringLiteral("2") + Repeat(QStringLiteral("*-1"), 250001));
    EXPECT_EQ(e.code, 0);
    EXPECT_EQ(e.value, -2.0);
    e = zwtest::Evaluate(Repeat(QStringLiteral("(1<2) && "), 100000) + QStringLiteral("(1<2)"));
    EXPECT_EQ(e.analyze, 1);
    EXPECT_EQ(e.value, 1.0);
}

TEST(LongFormulas, ManyDistinctNames)
{
    // Every name undefined, each listed once, in order.
    QString text = QStringLiteral("v0");
    for (int i = 1; i < 100000; ++i)
        text += QStringLiteral("+v%1").arg(i % 60000);
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
    EXPECT_EQ(undefined[0].GetValue(), QStringLiteral("v0"));
    EXPECT_EQ(undefined[59999].GetValue(), QStringLiteral("v59999"));
}

TEST(ZWEvaluator, CopiesCarryTheTranslation)
{
    ZWEvaluator original(QStringLiteral("2^3^2"));
    ASSERT_EQ(original.AnalizeExpression(), 0);
    const ZWEvaluator copy = original;
    ZWEvaluator assigned;
    assigned = original;
    for (ZWEvaluator e : {copy, assigned}) {
        double value = 0;
        int valueType = -1;
        EXPECT_EQ(e.Evaluate(value, valueType), 0);
        EXPECT_EQ(value, 64.0);
        EXPECT_EQ(e.Expr(), QStringLiteral("2^3^2"));
    }
}

TEST(ZWEvaluator, EvaluatesRepeatedlyFromAFreshStack)
{
    ZWEvaluator evaluator(QStringLiteral("Nope + 2"));
    ASSERT_EQ(evaluator.AnalizeExpression(), 0);
    for (int i = 0; i < 3; ++i) {
        double value = 0;
        int valueType = -1;
        EXPECT_EQ(evaluator.Evaluate(value, valueType), 40);
        EXPECT_EQ(evaluator.GetUndefinedTokens()->size(), 1u);
    }
}

// ---------------------------------------------------------------------------
// Messages

TEST(ErrorMsg, CodesMapToTheirTextIds)
{
    const std::vector<std::pair<int, int>> table
        = {{1, 32556}, {2, 32557}, {10, 32565}, {20, 32575}, {39, 32594}, {40, 32595}, {61, 32616}, {62, 32740},
            {63, 32741}, {64, 32742}, {0, 32617}, {-1, 32617}, {65, 32617}, {100, 32617}, {32556, 32617}};
    for (const auto& [code, id] : table) {
        EXPECT_EQ(ZWEvaluator::ErrorMsgId(code), id) << code;
        QString text;
        EXPECT_TRUE(ZWEvaluator::ErrorMsg(code, text));
        EXPECT_EQ(text, ZWLoadString(id)) << code;
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
    QString text;
    ZWEvaluator::ErrorMsg(10, text);
    EXPECT_TRUE(text.contains(QStringLiteral("zero"), Qt::CaseInsensitive));
    ZWEvaluator::ErrorMsg(2, text);
    EXPECT_TRUE(text.contains(QStringLiteral("\"+\"")));
}

} // namespace
