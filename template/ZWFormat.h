#pragma once

#include "host/core/ZWDateTime.h"

#include <QString>

// The number and date formats of formula and date cards. The editor window
// (ZWEditTemplateWnd) offers these two under the same names.
class ZWFormat
{
public:
    // `value` as a formula card shows it: `integerDigits` the width of the
    // integer part (−1 free; a number that does not fit shows as "*"),
    // `decimals` the places (−1: up to 5), trailing decimal zeros stripped
    // unless `fillDecimalZeros`, the integer part zero-filled to its width
    // when `fillIntegerZeros`, and grouped in threes with the locale's
    // thousands separator when `thousandSeparator`. What is no finite number
    // shows as "inf", "-inf" or "nan" under any format.
    static void FormatDouble(QString& out, double value, int integerDigits, int decimals, bool thousandSeparator,
        bool fillIntegerZeros, bool fillDecimalZeros);
    static QString FormatDouble(double value, int integerDigits, int decimals, bool thousandSeparator,
        bool fillIntegerZeros, bool fillDecimalZeros);

    // `date` written by the pattern `format`: y year, M month, d day, h hour,
    // m minute, s second, each run zero-filled to its length; text in double
    // quotes is copied as it stands (a backslash inside makes the next
    // character literal); any other character is copied. An invalid date
    // writes its numbers as 0.
    static void ParseDate(QString& out, const QString& format, const ZWDateTime& date);
    static QString ParseDate(const QString& format, const ZWDateTime& date);
};
