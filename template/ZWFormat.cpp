#include "template/ZWFormat.h"

#include "host/core/ZWLocale.h"
#include "host/core/ZWNumberFormat.h"

#include <cmath>

void ZWFormat::FormatDouble(QString& out, double value, int integerDigits, int decimals, bool thousandSeparator,
    bool fillIntegerZeros, bool fillDecimalZeros)
{
    // No width, zeros or grouping apply to what is no finite number: it is
    // "inf", "-inf" or "nan" under every format, never stars.
    if (!std::isfinite(value)) {
        out = std::isnan(value) ? QStringLiteral("nan") : value < 0 ? QStringLiteral("-inf") : QStringLiteral("inf");
        return;
    }
    const ZWLocaleInfo locale = LocaleInformationWide();
    const QString& separator = locale.decimalSeparator;
    const int places = decimals < 0 ? 5 : decimals;
    FormatNumber(out, value, places, false);

    const qsizetype p = out.indexOf(separator);
    const qsizetype n = p >= 0 ? p : out.size();

    // A number that does not fit its width shows as stars.
    if (integerDigits >= 1 && ((p >= 1 && p > integerDigits) || (p < 0 && out.size() > integerDigits))) {
        out = QString(integerDigits, QLatin1Char('*'));
        if (decimals >= 1)
            out += separator + QString(decimals, QLatin1Char('*'));
        return;
    }

    // The sign is not counted in the filled width (it is in the test above).
    if (fillIntegerZeros) {
        if (value < 0 && integerDigits > n - 1)
            out = QLatin1Char('-') + QString(integerDigits - (n - 1), QLatin1Char('0')) + out.mid(1);
        else if (value >= 0 && integerDigits > n)
            out = QString(integerDigits - n, QLatin1Char('0')) + out;
    }

    if (fillDecimalZeros && decimals >= 1) {
        if (!out.contains(separator))
            out += separator + QString(places, QLatin1Char('0'));
    } else if (p > 0) {
        qsizetype end = out.size();
        while (end > 0 && out.at(end - 1) == QLatin1Char('0'))
            --end;
        out.truncate(end);
        if (out.endsWith(separator))
            out.chop(separator.size());
    }

    if (thousandSeparator) {
        qsizetype q = out.indexOf(separator);
        if (q < 0)
            q = out.size();
        const QString integer = out.left(q);
        const QString rest = out.mid(q);
        QString grouped;
        qsizetype i = 0;
        qsizetype digits = q;
        if (integer.startsWith(QLatin1Char('-'))) {
            grouped += QLatin1Char('-');
            i = 1;
            digits = q - 1;
        }
        qsizetype group = digits % 3;
        if (group == 0)
            group = 3;
        qsizetype count = 0;
        for (; i < q; ++i) {
            grouped += integer.at(i);
            if (++count == group) {
                if (i + 1 < q)
                    grouped += locale.thousandSeparator;
                count = 0;
                group = 3;
            }
        }
        out = grouped + rest;
    }
}

QString ZWFormat::FormatDouble(
    double value, int integerDigits, int decimals, bool thousandSeparator, bool fillIntegerZeros, bool fillDecimalZeros)
{
    QString out;
    FormatDouble(out, value, integerDigits, decimals, thousandSeparator, fillIntegerZeros, fillDecimalZeros);
    return out;
}

void ZWFormat::ParseDate(QString& out, const QString& format, const ZWDateTime& date)
{
    out.clear();
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    if (date.IsValid()) {
        date.DateTime2DMY(year, month, day);
        const int seconds = date.SecondsOfDay();
        hour = (seconds / 3600) % 24;
        minute = (seconds / 60) % 60;
        second = seconds % 60;
    }
    const auto fieldValue = [&](char16_t letter) -> int {
        switch (letter) {
        case u'y':
            return year;
        case u'M':
            return month;
        case u'd':
            return day;
        case u'h':
            return hour;
        case u'm':
            return minute;
        default:
            return second;
        }
    };
    const auto isField
        = [](char16_t c) { return c == u'y' || c == u'M' || c == u'd' || c == u'h' || c == u'm' || c == u's'; };

    char16_t pending = 0;
    int run = 0;
    const auto emitPending = [&] {
        if (pending) {
            QString number;
            FormatInteger(number, fieldValue(pending), run);
            out += number;
            pending = 0;
            run = 0;
        }
    };

    bool literal = false;
    bool escaped = false;
    for (const QChar qc : format) {
        const char16_t c = qc.unicode();
        if (literal) {
            if (escaped) {
                out += qc;
                escaped = false;
            } else if (c == u'\\') {
                escaped = true;
            } else if (c == u'"') {
                literal = false;
            } else {
                out += qc;
            }
            continue;
        }
        if (isField(c)) {
            if (c == pending) {
                ++run;
            } else {
                emitPending();
                pending = c;
                run = 1;
            }
            continue;
        }
        emitPending();
        if (c == u'"')
            literal = true;
        else
            out += qc;
    }
    emitPending();
    if (escaped)
        out += QLatin1Char('\\');
}

QString ZWFormat::ParseDate(const QString& format, const ZWDateTime& date)
{
    QString out;
    ParseDate(out, format, date);
    return out;
}
