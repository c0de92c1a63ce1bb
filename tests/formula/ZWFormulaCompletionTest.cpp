#include "formula/ZWFormulaCompletion.h"
#include "tests/support/ZWTestSupport.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

using C = ZWFormulaCompletion::Context;

struct WordCase
{
    const char* what;
    const char* text;
    int cursor;
    C context;
    int start;
    int end;
    const char* prefix;
};

class FormulaWord : public testing::TestWithParam<WordCase>
{};

TEST_P(FormulaWord, AtTheCursor)
{
    const WordCase& c = GetParam();
    const auto w = ZWFormulaCompletion::WordAt(QString::fromUtf8(c.text), c.cursor);
    EXPECT_EQ(int(w.context), int(c.context));
    EXPECT_EQ(w.start, c.start);
    EXPECT_EQ(w.end, c.end);
    EXPECT_EQ(w.prefix, QString::fromUtf8(c.prefix));
}

INSTANTIATE_TEST_SUITE_P(Texts, FormulaWord,
    testing::ValuesIn(std::vector<WordCase>{{"name at the end", "1 + Tot", 7, C::Name, 4, 7, "Tot"},
        {"middle of a name", "1 + Total * 2", 6, C::Name, 4, 9, "To"},
        {"after an operator", "1 +", 3, C::Name, 3, 3, ""}, {"empty text", "", 0, C::Name, 0, 0, ""},
        {"cursor beyond the text", "ab", 9, C::Name, 0, 2, "ab"},
        {"open bracket", "2 * [Main me", 12, C::DeviceVariable, 5, 12, "Main me"},
        {"inside a closed bracket", "[Main meter.Power] + 1", 8, C::DeviceVariable, 1, 17, "Main me"},
        {"before the filter", "[Main meter.Power:max]", 3, C::DeviceVariable, 1, 17, "Ma"},
        {"filter", "[Main meter.Power:ma", 20, C::Filter, 18, 20, "ma"},
        {"filter in a closed bracket", "[a.b:m] * 2", 6, C::Filter, 5, 6, "m"},
        {"after a closed bracket", "[a.b]x", 6, C::Name, 5, 6, "x"},
        {"bracket whose ] belongs to a later one", "[a.b + [c.d]", 4, C::DeviceVariable, 1, 4, "a.b"}}),
    [](const testing::TestParamInfo<WordCase>& info) { return zwtest::CaseName(info.param.what); });

ZWFormulaCompletion Completion()
{
    ZWFormulaCompletion c;
    c.SetFormulas({u"Total"_s, u"Tariff"_s, u"Sqrt"_s});
    c.SetVariables(
        {u"Boiler.Temperature"_s, u"Main meter.Active energy"_s, u"Main meter.Active power"_s, u"Tank.Level"_s});
    c.SetFilters({u"avg"_s, u"max"_s, u"min"_s, u"sum"_s});
    return c;
}

struct CandidateCase
{
    const char* what;
    const char* text;
    int cursor;
    const char* candidates;
};

class FormulaCandidates : public testing::TestWithParam<CandidateCase>
{};

TEST_P(FormulaCandidates, Offered)
{
    const CandidateCase& c = GetParam();
    const ZWFormulaCompletion completion = Completion();
    const QStringList got = completion.Candidates(ZWFormulaCompletion::WordAt(QString::fromUtf8(c.text), c.cursor));
    EXPECT_EQ(got.join(QLatin1Char('|')), QString::fromUtf8(c.candidates));
}

INSTANTIATE_TEST_SUITE_P(Texts, FormulaCandidates,
    testing::ValuesIn(std::vector<CandidateCase>{{"formulas, then device variables by their parts", "1 + t", 5,
                                                     "Total|Tariff|tan|[Boiler.Temperature]|[Tank.Level]"},
        {"functions ignore case", "AS", 2, "asin"},
        {"a formula named like a function is read as the function", "sq", 2, "sqrt"},
        {"nothing for an empty word", "1 + ", 4, ""},
        {"variables containing the text, starts first", "[m", 2,
            "Main meter.Active energy|Main meter.Active power|Boiler.Temperature"},
        {"search in the middle", "[power", 6, "Main meter.Active power"},
        {"every variable after the bracket", "[", 1,
            "Boiler.Temperature|Main meter.Active energy|Main meter.Active power|Tank.Level"},
        {"filters", "[Tank.Level:m", 13, "max|min"}}),
    [](const testing::TestParamInfo<CandidateCase>& info) { return zwtest::CaseName(info.param.what); });

struct CompleteCase
{
    const char* what;
    const char* text;
    int cursor;
    const char* candidate;
    const char* result;
    int newCursor;
};

class FormulaComplete : public testing::TestWithParam<CompleteCase>
{};

TEST_P(FormulaComplete, ReplacesTheWord)
{
    const CompleteCase& c = GetParam();
    const ZWFormulaCompletion completion = Completion();
    const QString text = QString::fromUtf8(c.text);
    int cursor = -1;
    EXPECT_EQ(
        completion.Complete(text, ZWFormulaCompletion::WordAt(text, c.cursor), QString::fromUtf8(c.candidate), &cursor),
        QString::fromUtf8(c.result));
    EXPECT_EQ(cursor, c.newCursor);
}

INSTANTIATE_TEST_SUITE_P(Texts, FormulaComplete,
    testing::ValuesIn(std::vector<CompleteCase>{{"formula name", "1 + To", 6, "Total", "1 + Total", 9},
        {"the whole word is replaced", "1 + To * 2", 5, "Total", "1 + Total * 2", 9},
        {"function gets its parentheses", "2*sq", 4, "sqrt", "2*sqrt()", 7},
        {"function before a parenthesis", "sq(4)", 2, "sqrt", "sqrt(4)", 4},
        {"device variable from a name", "1 + tank", 8, "[Tank.Level]", "1 + [Tank.Level]", 16},
        {"device variable gets its bracket", "[Tan", 4, "Tank.Level", "[Tank.Level]", 12},
        {"closing bracket kept", "[Tan] * 2", 2, "Tank.Level", "[Tank.Level] * 2", 12},
        {"filter kept", "[Ta:max]", 3, "Tank.Level", "[Tank.Level:max]", 11},
        {"filter", "[Tank.Level:m", 13, "max", "[Tank.Level:max]", 16}}),
    [](const testing::TestParamInfo<CompleteCase>& info) { return zwtest::CaseName(info.param.what); });

} // namespace
