// Number formats of formula cards, date patterns of date cards, and the
// host's number formatting beneath them.
#include "host/core/ZWLocale.h"
#include "host/core/ZWNumberFormat.h"
#include "template/ZWCardFormule.h"
#include "template/ZWFormat.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

// Tests run in the "C" locale: "." decimal and "," thousands separators.
class FormatTest : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(ZWSetLocaleOverride(u"C"_s)); }
    void TearDown() override { ZWSetLocaleOverride(u"C"_s); } // for the files after this one
};

TEST_F(FormatTest, NumbersRoundTiesAwayFromZeroAndIntegersAreZeroFilled)
{
    const std::tuple<double, int, bool, const char*> cases[]
        = {{2.5, 0, false, "3"}, {-2.5, 0, false, "-3"}, {0.125, 2, false, "0.13"}, {-0.125, 2, false, "-0.13"},
            {9.995, 2, false, "9.99"},                         // 9.995 is 9.99499... in binary: no tie
            {9.5, 0, false, "10"}, {99.95, 1, false, "100.0"}, // 99.95 is 99.9500000000000028...
            {1.0, 3, false, "1.000"}, {-0.0, 2, false, "0.00"}, {-0.001, 2, false, "-0.00"},
            {1234567.891, 2, true, "1,234,567.89"}, {-1234.5, 1, true, "-1,234.5"}, {123.0, 0, true, "123"},
            {1e21, 0, false, "1000000000000000000000"}};
    for (const auto& [value, places, grouping, expected] : cases) {
        QString out;
        FormatNumber(out, value, places, grouping);
        EXPECT_EQ(out, QString::fromLatin1(expected)) << value << " places " << places;
    }
    // Integers are zero-filled to their width and never shortened.
    const std::tuple<qint64, int, const char*> integers[]
        = {{5, 2, "05"}, {5, 1, "5"}, {2024, 2, "2024"}, {2024, 4, "2024"}, {7, 0, "7"}, {-7, 3, "-07"}, {0, 3, "000"},
            {std::numeric_limits<qint64>::min(), 1, "-9223372036854775808"}};
    for (const auto& [value, width, expected] : integers) {
        QString out;
        FormatInteger(out, value, width);
        EXPECT_EQ(out, QString::fromLatin1(expected)) << value << " width " << width;
    }
}

TEST_F(FormatTest, ParseFormat)
{
    const std::tuple<const char*, int, int, bool, bool> cases[] = {
        {"", -1, 3, false, false}, {"3", -1, 3, false, false}, {".", -1, -1, false, false}, {"03.02", 3, 2, true, true},
        {"3.2", 3, 2, false, false}, {"123.4", -1, 4, false, false}, {".12", -1, 2, false, false},
        {".05", -1, 5, false, true}, {".3", -1, 3, false, false}, {".1234", -1, 3, false, false},
        {":.", 10, -1, false, false}, {"0<.0;", 12, 9, true, true},    // ";" is 11 decimals, cut to 9
        {"Z.Z", 12, 9, false, false}, {"0/.0/", -1, -1, false, false}, // "/" is −1: the fill flags go
        {"00.00", 0, 0, true, true}, {"3.2.1", 3, 3, false, false},    // the first "." splits: "2.1" is too long
    };
    for (const auto& [format, digits, places, fillInteger, fillDecimal] : cases) {
        int integerDigits = 99, decimals = 99;
        bool fillIntegerZeros = true, fillDecimalZeros = true;
        ZWCardFormule::ParseFormat(
            QString::fromLatin1(format), integerDigits, decimals, fillIntegerZeros, fillDecimalZeros);
        EXPECT_EQ(std::tuple(integerDigits, decimals, fillIntegerZeros, fillDecimalZeros),
            std::tuple(digits, places, fillInteger, fillDecimal))
            << format;
    }
}

TEST_F(FormatTest, BuildFormatWritesTheCharactersPastNine)
{
    const std::tuple<int, int, bool, bool, const char*> cases[]
        = {{3, 2, true, true, "03.02"}, {-1, 3, false, false, ".3"}, {-1, -1, false, false, "."},
            {0, 2, true, false, ".2"}, // no width: no fill mark either
            {10, 0, false, false, ":.0"}, {11, 9, true, true, "0;.09"}, {12, 5, false, false, "<.5"}};
    for (const auto& [digits, places, fillInteger, fillDecimal, expected] : cases) {
        const QString format = ZWCardFormule::BuildFormat(digits, places, fillInteger, fillDecimal);
        EXPECT_EQ(format, QString::fromLatin1(expected));
        int integerDigits = 0, decimals = 0;
        bool fi = false, fd = false;
        ZWCardFormule::ParseFormat(format, integerDigits, decimals, fi, fd);
        const bool width = digits > 0;
        EXPECT_EQ(std::tuple(integerDigits, decimals, fi, fd),
            std::tuple(width ? digits : -1, places, width && fillInteger, fillDecimal))
            << expected;
    }
}

TEST_F(FormatTest, FormatDouble)
{
    const std::tuple<double, int, int, bool, bool, bool, const char*> cases[] = {
        {1234.5, 3, 2, false, false, false, "***.**"}, {1234.5, 3, 0, false, false, false, "***"},
        {1234.0, 3, -1, false, false, false, "***"}, {-12.5, 3, 2, false, true, true, "-012.50"},
        {-12.5, 3, 1, false, true, false, "-012.5"},
        {-123.5, 3, 1, false, true, false, "***.*"}, // the minus counts in the overflow test
        {12.5, 3, 1, false, true, false, "012.5"}, {123.0, 3, 0, false, false, false, "123"},
        {2.5, -1, 3, false, false, false, "2.5"}, {2.0, -1, 3, false, false, false, "2"},
        {2.0, -1, 3, false, false, true, "2.000"}, {2.0, -1, 0, false, false, true, "2"},
        {1234567.0, -1, -1, true, false, false, "1,234,567"}, {1234567.891, -1, 2, true, false, true, "1,234,567.89"},
        {-1234567.0, -1, 0, true, false, false, "-1,234,567"}, {123456.0, -1, 0, true, false, false, "123,456"},
        {-123.0, -1, 0, true, false, false, "-123"}, {0.000001, -1, -1, false, false, false, "0"},
        {3.14159265, -1, -1, false, false, false, "3.14159"}, {0.5, -1, 0, false, false, false, "1"},
        {7.0, 5, 2, true, true, true, "00,007.00"},
        {100.0, -1, 2, false, false, false, "100"}, // "100.00": only decimal zeros go
    };
    for (const auto& [value, integerDigits, decimals, thousands, fillIntegerZeros, fillDecimalZeros, expected] :
        cases) {
        const QString out
            = ZWFormat::FormatDouble(value, integerDigits, decimals, thousands, fillIntegerZeros, fillDecimalZeros);
        EXPECT_EQ(out, QString::fromLatin1(expected))
            << value << " " << integerDigits << "/" << decimals << " t" << thousands << " fi" << fillIntegerZeros
            << " fd" << fillDecimalZeros;
    }
}

TEST_F(FormatTest, NumbersTakeTheLocaleSeparators)
{
    ASSERT_TRUE(ZWSetLocaleOverride(u"de_DE"_s));
    QString out;
    FormatNumber(out, 1234567.5, 2, true);
    EXPECT_EQ(out, u"1.234.567,50"_s);
    ASSERT_TRUE(ZWSetLocaleOverride(u"es_ES"_s));
    EXPECT_EQ(ZWFormat::FormatDouble(1234567.5, -1, 2, true, false, true), u"1.234.567,50"_s);
    EXPECT_EQ(ZWFormat::FormatDouble(1234.5, 3, 2, false, false, false), u"***,**"_s);
}

TEST_F(FormatTest, ParseDate)
{
    const ZWDateTime date = ZWDateTime::FromDMY(2024, 3, 5, 9, 5, 7);
    const std::tuple<const char*, const char*> cases[]
        = {{"dd/MM/yyyy", "05/03/2024"}, {"d/M/yy", "5/3/2024"}, {"hh:mm:ss", "09:05:07"}, {"h", "9"}, {"MMm", "035"},
            {"dd/MM/yyyy hh:mm:ss", "05/03/2024 09:05:07"}, {"yyyyMMdd", "20240305"}, {"\"day\" d", "day 5"},
            {"\"unclosed d M y", "unclosed d M y"}, {"\"say \\\"hi\\\"\" d", "say \"hi\" 5"}, {"\"a\\\\b\"", "a\\b"},
            {"\"x\\", "x\\"}, {"d\\M", "5\\3"}, {"dM", "53"}, {"ddd", "005"}, {"", ""}, {"Y-D", "Y-D"}};
    for (const auto& [pattern, expected] : cases)
        EXPECT_EQ(ZWFormat::ParseDate(QString::fromUtf8(pattern), date), QString::fromUtf8(expected)) << pattern;
    EXPECT_EQ(ZWFormat::ParseDate(u"dd/MM/yyyy"_s, ZWDateTime()), u"00/00/0000"_s); // an invalid date
}

} // namespace
