#pragma once

#include <QString>
#include <QtGlobal>

// Number formatting of the host's tools library.

// `value` in fixed-point notation with `places` decimals (clamped to 0..30),
// the locale's decimal separator and, when `grouping` is set, the locale's
// thousands separator between groups of three integer digits. Rounding is to
// the nearest, exact ties (2.5, 0.125) away from zero. Negative zero is
// written as zero; a negative value that rounds to zero keeps its sign
// ("-0.00"), as C's fixed-point formatting does. Infinities and NaN are
// written "inf", "-inf" and "nan".
void FormatNumber(QString& out, double value, int places, bool grouping);

// `value` in decimal, zero-filled on the left to `width` characters (a minus
// sign counts in the width, as with "%0*d"). A number longer than `width` is
// never shortened: 2024 with width 2 gives "2024".
void FormatInteger(QString& out, qint64 value, int width);
