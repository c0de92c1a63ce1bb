#include "host/core/ZWNumberFormat.h"

#include "host/core/ZWLocale.h"

#include <array>
#include <charconv>
#include <cmath>
#include <string>

namespace {

constexpr int MaxPlaces = 30;

// Whether |value| lies exactly half-way between two multiples of 10^-places.
// value = m * 2^e; it is a tie when value * 10^places * 2 is an odd integer,
// which is decided exactly on the 53-bit mantissa with 128-bit arithmetic.
bool IsTie(double value, int places)
{
    if (places > 20 || value == 0.0 || !std::isfinite(value))
        return false;
    int exponent = 0;
    const double fraction = std::frexp(std::fabs(value), &exponent);
    const auto mantissa = static_cast<unsigned long long>(std::ldexp(fraction, 53));
    const int e = exponent - 53; // |value| = mantissa * 2^e
    if (e + 1 >= 0)
        return false; // an integer times 2: even
    const int shift = -(e + 1);
    unsigned __int128 n = mantissa;
    for (int i = 0; i < places; ++i)
        n *= 10u;
    if (shift >= 127)
        return false;
    const unsigned __int128 mask = (static_cast<unsigned __int128>(1) << shift) - 1;
    if ((n & mask) != 0)
        return false;
    return ((n >> shift) & 1u) == 1u;
}

std::string Fixed(double value, int places)
{
    std::array<char, 400> buffer{};
    auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed, places);
    if (result.ec != std::errc()) {
        // Only absurd magnitudes with many places get here; use the
        // scientific form rather than fail.
        result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    }
    return std::string(buffer.data(), result.ptr);
}

// Adds one unit in the last place to a string of digits and at most one '.'
// (no sign), e.g. "9.99" -> "10.00".
void IncrementLastDigit(std::string& digits)
{
    for (auto i = static_cast<qsizetype>(digits.size()) - 1; i >= 0; --i) {
        char& c = digits[size_t(i)];
        if (c == '.')
            continue;
        if (c == '9') {
            c = '0';
            continue;
        }
        ++c;
        return;
    }
    digits.insert(digits.begin(), '1');
}

} // namespace

void FormatNumber(QString& out, double value, int places, bool grouping)
{
    places = std::clamp(places, 0, MaxPlaces);
    if (value == 0.0)
        value = 0.0; // no "-0"
    std::string text;
    if (!std::isfinite(value)) {
        text = std::isnan(value) ? "nan" : (value < 0 ? "-inf" : "inf");
        out = QString::fromLatin1(text.data(), qsizetype(text.size()));
        return;
    }
    if (IsTie(value, places)) {
        // Exact with one more place, ending in 5: drop it and round away.
        std::string longer = Fixed(std::fabs(value), places + 1);
        longer.pop_back();
        if (!longer.empty() && longer.back() == '.')
            longer.pop_back();
        IncrementLastDigit(longer);
        text = (value < 0 ? "-" : "") + longer;
    } else {
        text = Fixed(value, places);
    }

    const ZWLocaleInfo locale = LocaleInformationWide();
    const QString number = QString::fromLatin1(text.data(), qsizetype(text.size()));
    const qsizetype dot = number.indexOf(QLatin1Char('.'));
    QString integer = dot < 0 ? number : number.left(dot);
    const QString decimals = dot < 0 ? QString() : number.mid(dot + 1);

    if (grouping && !locale.thousandSeparator.isEmpty()) {
        const bool negative = integer.startsWith(QLatin1Char('-'));
        const QString digits = negative ? integer.mid(1) : integer;
        QString grouped;
        for (qsizetype i = 0; i < digits.size(); ++i) {
            if (i > 0 && (digits.size() - i) % 3 == 0)
                grouped += locale.thousandSeparator;
            grouped += digits.at(i);
        }
        integer = negative ? QLatin1Char('-') + grouped : grouped;
    }
    out = decimals.isEmpty() && dot < 0 ? integer : integer + locale.decimalSeparator + decimals;
}

void FormatInteger(QString& out, qint64 value, int width)
{
    const bool negative = value < 0;
    // The magnitude as unsigned, so that the smallest qint64 stays defined.
    const quint64 magnitude = negative ? quint64(0) - quint64(value) : quint64(value);
    QString digits = QString::number(magnitude);
    const qsizetype room = qsizetype(width) - digits.size() - (negative ? 1 : 0);
    if (room > 0)
        digits.prepend(QString(room, QLatin1Char('0')));
    out = negative ? QLatin1Char('-') + digits : digits;
}
