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
    void TearDown() override { ZWSetLocaleOverride(u"C"_s); }
};

TEST_F(FormatTest, FormatNumberRoundsTiesAwayFromZero)
{
    struct Case
    {
        double value;
        int places;
        bool grouping;
        const char* expected;
    };
    const Case cases[] = {{2.5, 0, false, "3"}, {-2.5, 0, false, "-3"}, {0.125, 2, false, "0.13"},
        {-0.125, 2, false, "-0.13"}, {9.995, 2, false, "9.99"}, // 9.995 is 9.99499... in binary: no tie
        {9.5, 0, false, "10"}, {99.95, 1, false, "100.0"},      // 99.95 is 99.9500000000000028...
        {1.0, 3, false, "1.000"}, {-0.0, 2, false, "0.00"}, {-0.001, 2, false, "-0.00"},
        {1234567.891, 2, true, "1,234,567.89"}, {-1234.5, 1, true, "-1,234.5"}, {123.0, 0, true, "123"},
        {1e21, 0, false, "1000000000000000000000"}};
    for (const Case& c : cases) {
        QString out;
        FormatNumber(out, c.value, c.places, c.grouping);
        EXPECT_EQ(out, QString::fromLatin1(c.expected)) << c.value << " places " << c.places;
    }
}

TEST_F(FormatTest, FormatIntegerZeroFillsAndNeverShortens)
{
    struct Case
    {
        qint64 value;
        int width;
        const char* expected;
    };
    const Case cases[] = {{5, 2, "05"}, {5, 1, "5"}, {2024, 2, "2024"}, {2024, 4, "2024"}, {7, 0, "7"}, {-7, 3, "-07"},
        {0, 3, "000"}, {std::numeric_limits<qint64>::min(), 1, "-9223372036854775808"}};
    for (const Case& c : cases) {
        QString out;
        FormatInteger(out, c.value, c.width);
        EXPECT_EQ(out, QString::fromLatin1(c.expected)) << c.value << " width " << c.width;
    }
}

TEST_F(FormatTest, ParseFormat)
{
    struct Case
    {
        const char* format;
        int integerDigits, decimals;
        bool fillIntegerZeros, fillDecimalZeros;
    };
    const Case cases[] = {
        {"", -1, 3, false, false}, {"3", -1, 3, false, false}, {".", -1, -1, false, false}, {"03.02", 3, 2, true, true},
        {"3.2", 3, 2, false, false}, {"123.4", -1, 4, false, false}, {".12", -1, 2, false, false},
        {".05", -1, 5, false, true}, {".3", -1, 3, false, false}, {".1234", -1, 3, false, false},
        {":.", 10, -1, false, false}, {"0<.0;", 12, 9, true, true},    // ";" is 11 decimals, cut to 9
        {"Z.Z", 12, 9, false, false}, {"0/.0/", -1, -1, false, false}, // "/" is −1: the fill flags go
        {"00.00", 0, 0, true, true}, {"3.2.1", 3, 3, false, false},    // the first "." splits: "2.1" is too long
    };
    for (const Case& c : cases) {
        int integerDigits = 99, decimals = 99;
        bool fillIntegerZeros = true, fillDecimalZeros = true;
        ZWCardFormule::ParseFormat(
            QString::fromLatin1(c.format), integerDigits, decimals, fillIntegerZeros, fillDecimalZeros);
        EXPECT_EQ(std::tuple(integerDigits, decimals, fillIntegerZeros, fillDecimalZeros),
            std::tuple(c.integerDigits, c.decimals, c.fillIntegerZeros, c.fillDecimalZeros))
            << c.format;
    }
}

TEST_F(FormatTest, BuildFormatWritesTheCharactersPastNine)
{
    struct Case
    {
        int integerDigits, decimals;
        bool fillIntegerZeros, fillDecimalZeros;
        const char* expected;
    };
    const Case cases[] = {{3, 2, true, true, "03.02"}, {-1, 3, false, false, ".3"}, {-1, -1, false, false, "."},
        {0, 2, true, false, ".2"}, // no width: no fill mark either
        {10, 0, false, false, ":.0"}, {11, 9, true, true, "0;.09"}, {12, 5, false, false, "<.5"}};
    for (const Case& c : cases) {
        const QString format
            = ZWCardFormule::BuildFormat(c.integerDigits, c.decimals, c.fillIntegerZeros, c.fillDecimalZeros);
        EXPECT_EQ(format, QString::fromLatin1(c.expected));
        int integerDigits = 0, decimals = 0;
        bool fi = false, fd = false;
        ZWCardFormule::ParseFormat(format, integerDigits, decimals, fi, fd);
        const bool width = c.integerDigits > 0;
        EXPECT_EQ(std::tuple(integerDigits, decimals, fi, fd),
            std::tuple(width ? c.integerDigits : -1, c.decimals, width && c.fillIntegerZeros, c.fillDecimalZeros))
            << c.expected;
    }
}

TEST_F(FormatTest, FormatDouble)
{
    struct Case
    {
        double value;
        int integerDigits, decimals;
        bool thousands, fillIntegerZeros, fillDecimalZeros;
        const char* expected;
    };
    const Case cases[] = {
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
    for (const Case& c : cases) {
        const QString out = ZWFormat::FormatDouble(
            c.value, c.integerDigits, c.decimals, c.thousands, c.fillIntegerZeros, c.fillDecimalZeros);
        EXPECT_EQ(out, QString::fromLatin1(c.expected))
            << c.value << " " << c.integerDigits << "/" << c.decimals << " t" << c.thousands << " fi"
            << c.fillIntegerZeros << " fd" << c.fillDecimalZeros;
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
    struct Case
    {
        const char* pattern;
        const char* expected;
    };
    const Case cases[]
        = {{"dd/MM/yyyy", "05/03/2024"}, {"d/M/yy", "5/3/2024"}, {"hh:mm:ss", "09:05:07"}, {"h", "9"}, {"MMm", "035"},
            {"dd/MM/yyyy hh:mm:ss", "05/03/2024 09:05:07"}, {"yyyyMMdd", "20240305"}, {"\"day\" d", "day 5"},
            {"\"unclosed d M y", "unclosed d M y"}, {"\"say \\\"hi\\\"\" d", "say \"hi\" 5"}, {"\"a\\\\b\"", "a\\b"},
            {"\"x\\", "x\\"}, {"d\\M", "5\\3"}, {"dM", "53"}, {"ddd", "005"}, {"", ""}, {"Y-D", "Y-D"}};
    for (const Case& c : cases)
        EXPECT_EQ(ZWFormat::ParseDate(QString::fromUtf8(c.pattern), date), QString::fromUtf8(c.expected)) << c.pattern;
    EXPECT_EQ(ZWFormat::ParseDate(u"dd/MM/yyyy"_s, ZWDateTime()), u"00/00/0000"_s); // an invalid date
}

} // namespace
