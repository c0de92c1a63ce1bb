#include "formula/ZWTokenProducer.h"
#include "tests/support/ZWTestSupport.h"

#include <QStringList>
#include <charconv>
#include <cmath>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

QString Show(const ZWToken& token)
{
    QString s = QString::number(token.GetType());
    if (token.GetType() == ZWToken::Constant) {
        char buffer[32];
        const auto r = std::to_chars(buffer, buffer + sizeof buffer, token.GetDoubleValue());
        s += QLatin1Char('(') + QString::fromLatin1(buffer, r.ptr - buffer) + QLatin1Char(')');
    } else if (!token.Text().isEmpty()) {
        s += QLatin1Char('"') + token.Text() + QLatin1Char('"');
    }
    return s + QLatin1Char('@') + QString::number(token.GetPosition());
}

// Every token up to the end of the text (errors do not stop the listing),
// at most `limit` of them: an unreadable character is not skipped.
QString Tokens(const QString& text, int limit = 40)
{
    ZWTokenProducer producer(text);
    QStringList out;
    for (int i = 0; i < limit; ++i) {
        ZWToken token;
        producer.GetToken(token);
        out << Show(token);
        if (token.GetType() == ZWToken::End)
            break;
    }
    return out.join(QLatin1Char(' '));
}

struct TokenCase
{
    const char16_t* text;
    const char* expected;
    int limit = 40;
};

class TokenTable : public testing::TestWithParam<TokenCase>
{};

TEST_P(TokenTable, ReadsTheTokens)
{
    const TokenCase& c = GetParam();
    EXPECT_EQ(Tokens(QString::fromUtf16(c.text), c.limit).toStdString(), c.expected)
        << QString::fromUtf16(c.text).toStdString();
}

std::string TextName(const testing::TestParamInfo<TokenCase>& info)
{
    return zwtest::SpelledName(QString::fromUtf16(info.param.text));
}

// Every operator and punctuation token, with its text and where it starts.
INSTANTIATE_TEST_SUITE_P(Operators, TokenTable,
    testing::ValuesIn(std::vector<TokenCase>{
        {u"+ - * / ^ ( ) ,", R"x(3"+"@0 4"-"@2 5"*"@4 6"/"@6 7"^"@8 9"("@10 10")"@12 32","@14 0@15)x"},
        {u"< > <= >= == != && || !",
            R"x(22"<"@0 23">"@2 24"<="@4 25">="@7 26"=="@10 27"!="@13 28"&&"@16 29"||"@19 30"!"@22 0@23)x"},
        // Two signs without a blank are one doubled-sign token.
        {u"++ +- -+ --", R"x(33"++"@0 34"+-"@3 35"-+"@6 36"--"@9 0@11)x"}, {u"2+-3", R"x(1(2)@0 34"+-"@1 1(3)@3 0@4)x"},
        {u"2 + -3", R"x(1(2)@0 3"+"@2 4"-"@4 1(3)@5 0@6)x"}, {u"---", R"x(36"--"@0 4"-"@2 0@3)x"},
        {u"a<=b", R"x(2"a"@0 24"<="@1 2"b"@3 0@4)x"},
        // "=" alone is unreadable (and skipped), so is a single "&" or "|".
        {u"a< =b", R"x(2"a"@0 22"<"@1 -2@3 2"b"@4 0@5)x"}, {u"& | =", R"x(-2@0 -2@2 -2@4 0@5)x"},
        {u"!a", R"x(30"!"@0 2"a"@1 0@2)x"}, {u"a!=b", R"x(2"a"@0 27"!="@1 2"b"@3 0@4)x"}, {u"!", R"x(30"!"@0 0@1)x"},
        {u"<", R"x(22"<"@0 0@1)x"}}),
    TextName);

// Function names are case-insensitive and keep their text as typed.
INSTANTIATE_TEST_SUITE_P(NamesAndFunctions, TokenTable,
    testing::ValuesIn(std::vector<TokenCase>{{u"SQRT(4)", R"x(11"SQRT"@0 9"("@4 1(4)@5 10")"@6 0@7)x"},
        {u"sqrt log exp sin cos tan asin acos atan atan2 log10",
            R"x(11"sqrt"@0 12"log"@5 13"exp"@9 14"sin"@13 15"cos"@17 16"tan"@21 17"asin"@25 18"acos"@30 19"atan"@35 31"atan2"@40 20"log10"@46 0@51)x"},
        {u"Atan2 LOG10 Log", R"x(31"Atan2"@0 20"LOG10"@6 12"Log"@12 0@15)x"},
        // Letters and digits make one name; a variable keeps its case.
        {u"sqrt2 Total x1y", R"x(2"sqrt2"@0 2"Total"@6 2"x1y"@12 0@15)x"},
        {u"\u00f1and\u00fa1", R"x(2"ñandú1"@0 0@6)x"},
        // The underscore is no part of a name and cannot be read.
        {u"a_b", R"x(2"a"@0 -2@1 -2@1)x", 3},
        // "." after a name starts a number that is not there.
        {u"x.y", R"x(2"x"@0 -2@1 2"y"@2 0@3)x"}}),
    TextName);

// The position is the first character after "["; everything up to the
// next "]" is the name, blanks and brackets included.
INSTANTIATE_TEST_SUITE_P(DeviceVariables, TokenTable,
    testing::ValuesIn(std::vector<TokenCase>{{u"[Meter 1.Power]", R"x(21"Meter 1.Power"@1 0@15)x"},
        {u"2*[a.b:max]", R"x(1(2)@0 5"*"@1 21"a.b:max"@3 0@11)x"}, {u"[[x]]", R"x(21"[x"@1 -2@4 -2@4)x", 3},
        {u"[a.b]c", R"x(21"a.b"@1 2"c"@5 0@6)x"},
        // A missing "]" or an empty name: an error, the characters consumed.
        {u"[abc", R"x(-2@0 0@4)x"}, {u"[]+1", R"x(-2@0 3"+"@2 1(1)@3 0@4)x"}}),
    TextName);

INSTANTIATE_TEST_SUITE_P(Blanks, TokenTable,
    testing::ValuesIn(std::vector<TokenCase>{{u"", "0@0"},
        // Only the space is a blank: a tab is an error that does not advance.
        {u"\t1", "-2@0 -2@0 -2@0", 3}, {u"1\n", R"x(1(1)@0 -2@1 -2@1)x", 3}, {u"  7", R"x(1(7)@2 0@3)x"},
        {u"#", "-2@0 -2@0", 2}}),
    TextName);

INSTANTIATE_TEST_SUITE_P(Numbers, TokenTable,
    testing::ValuesIn(
        std::vector<TokenCase>{{u"12", "1(12)@0 0@2"}, {u"3.25", "1(3.25)@0 0@4"}, {u".5", "1(0.5)@0 0@2"},
            {u"5.", "1(5)@0 0@2"}, {u"1e3", "1(1000)@0 0@3"}, {u"1.5E-2", "1(0.015)@0 0@6"}, {u"2e+3", "1(2000)@0 0@4"},
            {u"5.e3", "1(5000)@0 0@4"}, {u"007", "1(7)@0 0@3"}, {u"1.2.3", "1(1.2)@0 1(0.3)@3 0@5"},
            // An exponent without digits is dropped, and what it read stays read:
            // "2e+x" is the number 2 and the name x.
            {u"2e+x", R"x(1(2)@0 2"x"@3 0@4)x"}, {u"2ex", R"x(1(2)@0 2"x"@2 0@3)x"}, {u"1e", "1(1)@0 0@2"},
            {u"2e+", "1(2)@0 0@3"}, {u"2E-y1", R"x(1(2)@0 2"y1"@3 0@5)x"},
            // A lone "." is no number.
            {u".", "-2@0 0@1"}, {u". 5", "-2@0 1(5)@2 0@3"},
            // After a leading "." without digits the exponent still counts: the
            // text "e5" converts to 0.
            {u".e5", "1(0)@0 0@3"},
            // Out of range: what the conversion gives.
            {u"1e400", "1(inf)@0 0@5"}, {u"1e-400", "1(0)@0 0@6"},
            {u"2.2250738585072014e-308", "1(2.2250738585072014e-308)@0 0@23"}}),
    TextName);

TEST(ZWTokenProducer, AddedFunctionsSetResetClearAndTheEndTokenAgainAndAgain)
{
    ZWTokenProducer producer(u"Cube(2)"_s);
    producer.AddFunction(u"cube"_s, 77);
    ZWToken token;
    producer.GetToken(token);
    EXPECT_EQ(std::pair(token.GetType(), token.GetValue()), std::pair(77, u"Cube"_s));
    // Set rebuilds the table from the built-in functions only, and keeps
    // the position; Reset rewinds.
    producer.Set(u"cube*cd"_s);
    producer.GetToken(token);
    EXPECT_EQ(token.GetType(), ZWToken::Multiply);
    producer.Reset();
    producer.GetToken(token);
    EXPECT_EQ(std::pair(token.GetType(), token.GetValue()), std::pair(int(ZWToken::Variable), u"cube"_s));
    producer.Clear();
    EXPECT_EQ(producer.NumberOfFunctions(), 0);
    for (int i = 0; i < 3; ++i) {
        producer.GetToken(token);
        EXPECT_EQ(std::tuple(token.GetType(), token.GetDoubleValue(), token.GetValueType()),
            std::tuple(int(ZWToken::End), ZW_NO_VALUE, -1));
    }
}

} // namespace
