#include "formula/ZWPolaca.h"
#include "formula/ZWEvaluator.h"
#include "formula/ZWFormulaLibrary.h"
#include "formula/ZWResultCode.h"
#include "host/drivers/ZWDriverSupport.h"
#include "host/drivers/ZWLoggerData.h"
#include "tests/formula/FormulaTestSupport.h"
#include "tests/support/ZWTestSupport.h"

#include <charconv>
#include <cmath>
#include <gtest/gtest.h>
#include <numbers>

using namespace Qt::StringLiterals;

using zwtest::Evaluate;
using R = ZWResultCode;

namespace {

// The postfix translation as text: numbers in shortest form, the unary
// minus as "neg", other tokens by their text.
QString Postfix(const QString& formula)
{
    ZWEvaluator evaluator(formula);
    if (evaluator.AnalizeExpression() == -1)
        return u"<invalid>"_s;
    QStringList parts;
    for (const ZWToken& token : evaluator.GetPolaca().GetTranslation()) {
        if (token.GetType() == ZWToken::Constant) {
            char buffer[32];
            const auto r = std::to_chars(buffer, buffer + sizeof buffer, token.GetDoubleValue());
            parts << QString::fromLatin1(buffer, r.ptr - buffer);
        } else if (token.GetType() == ZWToken::UnaryMinus) {
            parts << u"neg"_s;
        } else if (token.GetType() == ZWToken::DeviceVariable) {
            parts << QLatin1Char('[') + token.Text() + QLatin1Char(']');
        } else {
            parts << token.Text();
        }
    }
    return parts.join(QLatin1Char(' '));
}

// Translation: precedence comes from the priority table, every binary
// operator is left-associative, a unary minus binds tighter than "^".

template <class Case> std::string FormulaName(const testing::TestParamInfo<Case>& info)
{
    return zwtest::SpelledName(QString::fromUtf8(info.param.formula));
}

struct PostfixCase
{
    const char* formula;
    const char* postfix;
};

class Translation : public testing::TestWithParam<PostfixCase>
{};

TEST_P(Translation, FollowsThePriorityTable)
{
    EXPECT_EQ(Postfix(QString::fromUtf8(GetParam().formula)).toStdString(), GetParam().postfix);
}

INSTANTIATE_TEST_SUITE_P(Priorities, Translation,
    testing::ValuesIn(std::vector<PostfixCase>{{"1+2*3", "1 2 3 * +"}, {"1*2+3", "1 2 * 3 +"}, {"2*3^2", "2 3 2 ^ *"},
        {"2^3^2", "2 3 ^ 2 ^"}, {"1-2-3", "1 2 - 3 -"}, {"-2^2", "2 neg 2 ^"}, {"2*-3", "2 3 neg *"},
        {"2^-3^2", "2 3 neg ^ 2 ^"}, {"-sqrt(4)", "4 sqrt neg"}, {"sqrt(4)^2", "4 sqrt 2 ^"},
        {"1+2<3*4", "1 2 + 3 4 * <"}, {"1<2 || 3<4 && 5<6", "1 2 < 3 4 < || 5 6 < &&"}, {"1 < 2 == 3", "1 2 < 3 =="},
        {"!(1<2) || 0<1", "1 2 < ! 0 1 < ||"}, {"(1+2)*3", "1 2 + 3 *"}, {"atan2(1+2, 3*4)", "1 2 + 3 4 * atan2"},
        {"- -3", "neg 3 neg"}, {"!-1", "! 1 neg"}, {"[a.b]*Total", "[a.b] Total *"}}),
    FormulaName<PostfixCase>);

// Evaluation: values and result codes.

struct EvalCase
{
    const char* formula;
    int code;
    double value = 0.0;
    int valueType = 0;
};

class Evaluation : public testing::TestWithParam<EvalCase>
{};

TEST_P(Evaluation, GivesTheValueOrTheCode)
{
    const EvalCase& c = GetParam();
    const zwtest::Evaluation e = Evaluate(QString::fromUtf8(c.formula));
    ASSERT_NE(e.analyze, -1) << c.formula;
    EXPECT_EQ(zwtest::CodeName(e.code), zwtest::CodeName(c.code)) << c.formula;
    if (c.code == R::Ok) {
        EXPECT_DOUBLE_EQ(e.value, c.value) << c.formula;
        EXPECT_EQ(e.valueType, c.valueType) << c.formula;
    } else {
        EXPECT_EQ(e.value, ZW_NO_VALUE) << c.formula;
    }
}

INSTANTIATE_TEST_SUITE_P(Values, Evaluation,
    testing::ValuesIn(std::vector<EvalCase>{{"2^3^2", R::Ok, 64}, {"-2^2", R::Ok, 4}, {"-(1+2)*3", R::Ok, -9},
        {"2^-1", R::Ok, 0.5}, {"10-2-3", R::Ok, 5}, {"+5", R::Ok, 5}, {"0.1+0.2", R::Ok, 0.1 + 0.2},
        {"atan2(1, 0)", R::Ok, std::numbers::pi / 2}, {"atan2(-1, -1)", R::Ok, -3 * std::numbers::pi / 4},
        {"SQRT(16) + Log(1) + exp(0)", R::Ok, 5}, {"log10(1000)", R::Ok, 3},
        {"sqrt(0) + asin(1) - acos(-1)/2", R::Ok, 0}, {"sin(0) + cos(0) + tan(0) + atan(0)", R::Ok, 1},
        {"1 < 2", R::Ok, 1, 1}, {"2 <= 2", R::Ok, 1, 1}, {"2 > 3", R::Ok, 0, 1}, {"3 >= 3", R::Ok, 1, 1},
        {"1 == 1", R::Ok, 1, 1}, {"1 != 1", R::Ok, 0, 1}, {"(1<2) == (3<4)", R::Ok, 1, 1},
        {"(1<2) != (3>4)", R::Ok, 1, 1}, {"!(1 < 2)", R::Ok, 0, 1}, {"!(1<2) == (2<1)", R::Ok, 1, 1},
        {"(1<2) && (2<3)", R::Ok, 1, 1}, {"(1<2) && (3<2)", R::Ok, 0, 1}, {"(1>2) || (2<3)", R::Ok, 1, 1},
        // "&&" and "||" share a priority and group from the left.
        {"1<2 || 1<2 && 2<1", R::Ok, 0, 1}}),
    FormulaName<EvalCase>);

// An operand of the wrong value type: the code of the operator's Type column.
INSTANTIATE_TEST_SUITE_P(TypeCodes, Evaluation,
    testing::ValuesIn(std::vector<EvalCase>{{"(1<2)+1", R::AddType}, {"1+(1<2)", R::AddType},
        {"(1<2)-1", R::SubtractType}, {"(1<2)*1", R::MultiplyType}, {"(1<2)/1", R::DivideType},
        {"(1<2)^1", R::PowerType}, {"-(1<2)", R::NegateType}, {"sqrt(1<2)", R::SqrtType}, {"log(1<2)", R::LogType},
        {"exp(1<2)", R::ExpType}, {"sin(1<2)", R::SinType}, {"cos(1<2)", R::CosType}, {"tan(1<2)", R::TanType},
        {"asin(1<2)", R::AsinType}, {"acos(1<2)", R::AcosType}, {"atan(1<2)", R::AtanType},
        {"log10(1<2)", R::Log10Type}, {"!1", R::NotType}, {"(1<2)<1", R::LessType}, {"(1<2)>1", R::GreaterType},
        {"(1<2)<=1", R::LessEqualType}, {"(1<2)>=1", R::GreaterEqualType}, {"(1<2) == 1", R::EqualType},
        {"1 != (1<2)", R::NotEqualType}, {"1 && (1<2)", R::AndType}, {"(1<2) || 1", R::OrType},
        {"atan2(1<2, 1)", R::Atan2Type}, {"atan2(1, 1<2)", R::Atan2Type},
        // Comparisons of the same priority group from the left.
        {"1 < 2 < 3", R::LessType}}),
    FormulaName<EvalCase>);

// Division and the functions with a domain.
INSTANTIATE_TEST_SUITE_P(DomainCodes, Evaluation,
    testing::ValuesIn(std::vector<EvalCase>{{"1/0", R::DivideByZero}, {"sqrt(-1)", R::SqrtDomain},
        {"log(0)", R::LogDomain}, {"log(-1)", R::LogDomain},
        // log10 shares the natural logarithm's code.
        {"log10(0)", R::LogDomain}, {"asin(2)", R::AsinDomain}, {"asin(-1.5)", R::AsinDomain},
        {"acos(1.0001)", R::AcosDomain}, {"acos(-2)", R::AcosDomain}}),
    FormulaName<EvalCase>);

// A sign that the translator moves out before its operand exists: the
// Stack column is reachable from valid text for the unary operators.
INSTANTIATE_TEST_SUITE_P(ReachableStackCodes, Evaluation,
    testing::ValuesIn(std::vector<EvalCase>{{"- -3", R::NegateStack}, {"(- -3)", R::NegateStack}, {"!-1", R::NotStack},
        {"(!-1 < 2)", R::NotStack},
        // The sign moved out early negates the value below it: (-1) + (-3).
        {"1 + (- -3)", R::Ok, -4}}),
    FormulaName<EvalCase>);

TEST(ZWPolaca, NoChecksForOverflowOrNaN)
{
    const zwtest::Evaluation big = Evaluate(u"exp(1000)"_s), nan = Evaluate(u"(-8)^0.5"_s);
    EXPECT_EQ(std::tuple(big.code, std::isinf(big.value), nan.code, std::isnan(nan.value)),
        std::tuple(R::Ok, true, R::Ok, true));
}

// Each operator alone, fed straight to the translator: the Stack column.
// A binary operator with one operand is still one short.
TEST(ZWPolaca, MissingOperandCodes)
{
    const struct
    {
        int type, code;
        bool binary;
    } table[] = {{ZWToken::Add, R::AddStack, true}, {ZWToken::Subtract, R::SubtractStack, true},
        {ZWToken::Multiply, R::MultiplyStack, true}, {ZWToken::Divide, R::DivideStack, true},
        {ZWToken::Power, R::PowerStack, true}, {ZWToken::UnaryMinus, R::NegateStack, false},
        {ZWToken::Sqrt, R::SqrtStack, false}, {ZWToken::Log, R::LogStack, false}, {ZWToken::Exp, R::ExpStack, false},
        {ZWToken::Sin, R::SinStack, false}, {ZWToken::Cos, R::CosStack, false}, {ZWToken::Tan, R::TanStack, false},
        {ZWToken::Asin, R::AsinStack, false}, {ZWToken::Acos, R::AcosStack, false},
        {ZWToken::Atan, R::AtanStack, false}, {ZWToken::Log10, R::Log10Stack, false},
        {ZWToken::Less, R::LessStack, true}, {ZWToken::Greater, R::GreaterStack, true},
        {ZWToken::LessEqual, R::LessEqualStack, true}, {ZWToken::GreaterEqual, R::GreaterEqualStack, true},
        {ZWToken::Equal, R::EqualStack, true}, {ZWToken::NotEqual, R::NotEqualStack, true},
        {ZWToken::And, R::AndStack, true}, {ZWToken::Or, R::OrStack, true}, {ZWToken::Not, R::NotStack, false},
        {ZWToken::Atan2, R::Atan2Stack, true}};
    ZWToken one, end;
    one.Set(1.0, ZWToken::Constant, 0, ZWToken::Numeric);
    end.Set(QString(), ZWToken::End, 0, -1);
    for (const auto& [type, code, binary] : table) {
        ZWToken op;
        op.Set(u"op"_s, type, 0, -1);
        for (const int operands : {0, binary ? 1 : 0}) {
            ZWPolaca polaca;
            if (operands)
                polaca.AddToken(one);
            polaca.AddToken(op);
            polaca.AddToken(end);
            double value = 0;
            int valueType = -1;
            EXPECT_EQ(zwtest::CodeName(polaca.Evaluate(value, valueType)), zwtest::CodeName(code))
                << "type " << type << " with " << operands << " operands";
            EXPECT_EQ(value, ZW_NO_VALUE);
        }
    }
}

TEST(ZWPolaca, EmptyTranslationIsAnEmptyFormula)
{
    ZWPolaca empty;
    double value = 0;
    int valueType = -1;
    EXPECT_EQ((std::pair{empty.Evaluate(value, valueType), empty.GetType()}), std::pair(int(R::EmptyFormula), -1));
}

TEST(ZWPolaca, ListsDeviceVariablesAndFormulasInPostfixOrder)
{
    ZWEvaluator evaluator(u"B + A * B + [x.y] * [c.d] + C + [x.y]"_s);
    ASSERT_EQ(evaluator.AnalizeExpression(), 0);
    std::vector<QString> names;
    names.push_back(u"stale"_s);
    evaluator.GetFormules(names);
    EXPECT_EQ(names, (std::vector<QString>{u"B"_s, u"A"_s, u"C"_s}));
    std::vector<ZWToken> devices;
    evaluator.GetDeviceVariables(devices);
    evaluator.GetDeviceVariables(devices); // appends
    QStringList texts;
    for (const ZWToken& t : devices)
        texts << t.GetValue();
    EXPECT_EQ(texts.join(QLatin1Char(',')), u"x.y,c.d,x.y,x.y,c.d,x.y"_s);
    EXPECT_FALSE(evaluator.IsOnlyOneDeviceVariable());

    for (const auto& [formula, only] : std::vector<std::pair<const char*, bool>>{
             {"[a.b]", true}, {"(([a.b]))", true}, {"-[a.b]", false}, {"[a.b]+0", false}, {"A", false}}) {
        ZWEvaluator e(QString::fromUtf8(formula));
        ASSERT_NE(e.AnalizeExpression(), -1);
        EXPECT_EQ(e.IsOnlyOneDeviceVariable(), only) << formula;
    }
}

// Live device values and a library of formulas.
class FormulaInputs : public testing::Test
{
protected:
    void SetUp() override
    {
        for (const auto& [name, value] : std::initializer_list<std::pair<QString, std::optional<double>>>{
                 {u"m.e"_s, 5.0}, {u"m.f"_s, 2.0}, {u"m.none"_s, std::nullopt}, {u"m.none2"_s, std::nullopt},
                 {u"nodot"_s, 3.0}, {u"Meter 1.Power"_s, 7.5}})
            m_live.Set(name, value);
        m_library = zwtest::Library(
            {{u"A"_s, u"1+2"_s}, {u"B"_s, u"A*2"_s}, {u"C"_s, u"B+A"_s}, {u"Bool"_s, u"1<2"_s}, {u"Bad"_s, u"2 +"_s},
                {u"Missing"_s, u"Nope+1"_s}, {u"Dev"_s, u"[m.e] * 2"_s}, {u"NoData"_s, u"[m.none] + 1"_s},
                {u"Unknown"_s, u"[zz.q] + 1"_s}, {u"Filtered"_s, u"[m.e:max]"_s}, {u"Zero"_s, u"1/0"_s},
                {u"Loop"_s, u"Loop+1"_s}, {u"P"_s, u"Q*2"_s}, {u"Q"_s, u"1+P"_s}, {u"UsesLoop"_s, u"A + P"_s}});
        m_options.formulas = m_library.get();
    }
    zwtest::LiveValuesScope m_live;
    std::unique_ptr<XmlDocument> m_library;
    zwtest::EvaluationOptions m_options;
};

TEST_F(FormulaInputs, DeviceVariablesAndReferencesGiveTheirValuesOrCodes)
{
    // Full: the library, filters allowed. Plain: the library, no filters.
    enum Inputs { Full, Plain, NoLibrary, NoStore };
    struct Case
    {
        const char* formula;
        int code;
        double value;
        const char* undefined;
        Inputs inputs = Full;
        int valueType = -1; // -1: not checked
    };
    const Case cases[] = {
        {"[m.e] * [m.f]", R::Ok, 10, ""},
        {"[Meter 1.Power]", R::Ok, 7.5, ""},
        {"[m.e:max] + 1", R::Ok, 6, ""},
        {"[nodot]", R::Ok, 3, ""},
        // The host does not know it: evaluation stops at once.
        {"[zz.q] + [m.none]", R::UnknownDeviceVariable, 0, ""},
        {"[m.none] + [zz.q]", R::UnknownDeviceVariable, 0, "m.none"},
        // Known without a current value; the value type is still reported.
        {"[m.none]", R::NoCurrentValue, 0, "m.none", Full, 0},
        {"[m.none] < 3", R::NoCurrentValue, 0, "m.none", Full, 1},
        // 62 only when the variable without a value was the last one looked up.
        {"[m.e] + [m.none]", R::NoCurrentValue, 0, "m.none"},
        {"[m.none] + [m.e]", R::UndefinedValues, 0, "m.none"},
        {"[m.none] * [m.none2] + [m.none]", R::NoCurrentValue, 0, "m.none,m.none2"},
        // The placeholder 1.0 may be what divides by zero: missing data, 40.
        {"[m.e] / ([m.none] - 1)", R::UndefinedValues, 0, "m.none"},
        {"1 / ([m.none] - 1) + [m.e]", R::UndefinedValues, 0, "m.none"},
        {"sqrt(-[m.none]) + [m.e]", R::UndefinedValues, 0, "m.none"},
        {"log10(0) + [m.none]", R::LogDomain, 0, ""},
        // Without filters only plain names with a dot are known.
        {"[m.e] + 1", R::Ok, 6, "", Plain},
        {"[m.e:max] + 1", R::UnknownDeviceVariable, 0, "", Plain},
        {"[nodot]", R::UnknownDeviceVariable, 0, "", Plain},
        {"[m.e]", R::UnknownDeviceVariable, 0, "", NoStore},
        // References to the library.
        {"C", R::Ok, 9, ""},
        {"Dev + 1", R::Ok, 11, ""},
        // A referenced formula gets an evaluator of its own, filters allowed.
        {"Filtered", R::Ok, 5, "", Plain},
        // A reference counts as numeric even when the formula is boolean.
        {"Bool + 1", R::Ok, 2, ""},
        {"Bool && (1<2)", R::AndType, 0, ""},
        {"Bad + 1", R::ReferenceSyntaxError, 0, ""},
        {"Nope * 2", R::UndefinedValues, 0, "Nope"},
        {"Missing", R::UndefinedValues, 0, "Nope,Missing"},
        {"A + B", R::UndefinedValues, 0, "A,B", NoLibrary, 0},
        // Names are case-sensitive.
        {"a", R::UndefinedValues, 0, "a"},
        // A code other than 1 or 40 ends the evaluation at once.
        {"Zero + Nope", R::DivideByZero, 0, ""},
        {"NoData", R::NoCurrentValue, 0, "m.none"},
        {"Unknown + 1", R::UnknownDeviceVariable, 0, "Unknown"},
        {"Unknown + A", R::UndefinedValues, 0, "Unknown"},
        // A self reference ends with 40.
        {"Loop", R::UndefinedValues, 0, "Loop"},
    };
    const auto live = ZWDriverSupport::Store();
    for (const Case& c : cases) {
        zwtest::EvaluationOptions options = m_options;
        options.discriminators = c.inputs != Plain;
        if (c.inputs == NoLibrary)
            options.formulas = nullptr;
        ZWDriverSupport::SetStore(c.inputs == NoStore ? nullptr : live);
        const zwtest::Evaluation e = Evaluate(QString::fromUtf8(c.formula), options);
        ASSERT_NE(e.analyze, -1) << c.formula;
        EXPECT_EQ(zwtest::CodeName(e.code), zwtest::CodeName(c.code)) << c.formula;
        EXPECT_EQ(e.value, c.code == R::Ok ? c.value : ZW_NO_VALUE) << c.formula;
        EXPECT_EQ(e.undefined.join(QLatin1Char(',')).toStdString(), c.undefined) << c.formula;
        if (c.valueType != -1) {
            EXPECT_EQ(e.valueType, c.valueType) << c.formula;
        }
    }
    const zwtest::Evaluation e = Evaluate(u"2 * UsesLoop"_s, m_options);
    EXPECT_EQ(e.code, R::UndefinedValues);
    EXPECT_TRUE(e.undefined.contains(u"P"_s) && e.undefined.contains(u"UsesLoop"_s));
}

TEST_F(FormulaInputs, LoggedDataTakesPrecedenceOverLiveValues)
{
    const ZWDateTime begin = ZWDateTime::FromDMY(2024, 3, 1);
    const ZWDateTime end = ZWDateTime::FromDMY(2024, 3, 2);
    ZWLoggerInfo info;
    for (const QString& name : {u"m.f"_s, u"m.e"_s, u"m.none"_s})
        info.AddVariable(name);
    ZWLoggerData data;
    data.Setup(info);
    data.SetData(begin, end, ZWDataRecord{begin, {20.0, 100.0, ZW_NO_VALUE}});
    zwtest::EvaluationOptions options;
    options.loggerData = &data;
    zwtest::Evaluation e = Evaluate(u"[m.e] + [m.f]"_s, options);
    EXPECT_EQ(std::pair(e.code, e.value), std::pair(int(R::Ok), 120.0));
    // A loaded variable without data, or one that is not loaded: no value,
    // and with logged data that is 40, never 62.
    e = Evaluate(u"[m.e] + [m.none]"_s, options);
    EXPECT_EQ(std::pair(e.code, e.undefined), std::pair(int(R::UndefinedValues), QStringList{u"m.none"_s}));
    EXPECT_EQ(Evaluate(u"[m.e] + [Meter 1.Power]"_s, options).code, R::UndefinedValues);
    // Unknown to the host stays 1.
    EXPECT_EQ(Evaluate(u"[zz.q]"_s, options).code, R::UnknownDeviceVariable);

    // A record at or after the end of the period has no value.
    data.SetData(begin, end, ZWDataRecord{end, {20.0, 100.0, 1.0}});
    EXPECT_EQ(Evaluate(u"[m.e]"_s, options).code, R::UndefinedValues);
    // No record for the period.
    ZWLoggerData empty;
    empty.Setup(info);
    options.loggerData = &empty;
    EXPECT_EQ(Evaluate(u"[m.e]"_s, options).code, R::UndefinedValues);
}

TEST_F(FormulaInputs, TheLibraryIsReadAgainOnEveryEvaluation)
{
    ZWEvaluator evaluator(u"B"_s);
    ASSERT_EQ(evaluator.AnalizeExpression(), 0);
    evaluator.SetFormules(m_library.get());
    double value = 0;
    int valueType = -1;
    EXPECT_EQ((std::pair{evaluator.Evaluate(value, valueType), value}), std::pair(0, 6.0));
    // The same document, changed: A is now 10.
    ZWFormulaLibrary::Build({u"A"_s, u"B"_s}, {u"10"_s, u"A*2"_s}, *m_library);
    EXPECT_EQ((std::pair{evaluator.Evaluate(value, valueType), value}), std::pair(0, 20.0));
    ZWFormulaLibrary::Build({u"B"_s}, {u"A*2"_s}, *m_library);
    EXPECT_EQ(evaluator.Evaluate(value, valueType), 40);
}

using Formulas = std::vector<std::pair<QString, QString>>;

zwtest::Evaluation EvaluateWith(const QString& formula, const Formulas& formulas)
{
    const auto library = zwtest::Library(formulas);
    zwtest::EvaluationOptions options;
    options.formulas = library.get();
    return Evaluate(formula, options);
}

// F1 = F2+1, F2 = F3+1, ..., the last one 1.
Formulas Chain(int length)
{
    Formulas formulas;
    for (int i = 1; i < length; ++i)
        formulas.emplace_back(u"F%1"_s.arg(i), u"F%1+1"_s.arg(i + 1));
    formulas.emplace_back(u"F%1"_s.arg(length), u"1"_s);
    return formulas;
}

TEST(ReferenceDepth, ChainsUpToTheLimitEvaluate)
{
    const int limit = ZWPolaca::MaxReferenceDepth;
    zwtest::Evaluation e = EvaluateWith(u"F1"_s, Chain(limit));
    EXPECT_EQ(std::pair(e.code, e.value), std::pair(int(R::Ok), double(limit)));
    e = EvaluateWith(u"F1"_s, Chain(limit + 1));
    EXPECT_EQ(e.code, R::UndefinedValues);
    EXPECT_TRUE(e.undefined.contains(u"F%1"_s.arg(limit + 1)));
}

TEST(ReferenceDepth, SharedFormulasAreNotEvaluatedOncePerPath)
{
    // G1 = G2+G2, G2 = G3+G3, ...: 2^59 paths, one value each.
    Formulas formulas;
    for (int i = 1; i < 60; ++i)
        formulas.emplace_back(u"G%1"_s.arg(i), u"G%1+G%1"_s.arg(i + 1));
    formulas.emplace_back(u"G60"_s, u"1"_s);
    const zwtest::Evaluation e = EvaluateWith(u"G1"_s, formulas);
    EXPECT_EQ(std::pair(e.code, e.value), std::pair(int(R::Ok), std::ldexp(1.0, 59)));
}

} // namespace
