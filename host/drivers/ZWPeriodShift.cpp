#include "host/drivers/ZWPeriodShift.h"

#include "host/drivers/ZWDriverSupport.h"

#include <QDate>

namespace {

constexpr qint64 DaySeconds = 86400;

bool IsLocalMidnight(const ZWDateTime& t)
{
    return t.SecondsOfDay() == 0;
}

// The same wall-clock time `months` months later (negative: earlier), the day
// clamped to the target month's length.
ZWDateTime AddMonths(const ZWDateTime& t, qint64 months)
{
    int y, m, d;
    t.DateTime2DMY(y, m, d);
    const QDate moved = QDate(y, m, d).addMonths(int(months));
    if (!moved.isValid())
        return ZWDateTime();
    return ZWDateTime::FromDMY(moved.year(), moved.month(), moved.day(), t.Hour(), t.Minute(), t.Second());
}

ZWDateTime AddYears(const ZWDateTime& t, int years)
{
    int y, m, d;
    t.DateTime2DMY(y, m, d);
    const QDate moved = QDate(y, m, d).addYears(years);
    if (!moved.isValid())
        return ZWDateTime();
    return ZWDateTime::FromDMY(moved.year(), moved.month(), moved.day(), t.Hour(), t.Minute(), t.Second());
}

} // namespace

bool ZWPeriodShift::Parse(const QString& filter, QString& reduction, ZWPeriodShift& shift)
{
    const qsizetype at = filter.indexOf(QLatin1Char('@'));
    if (at < 0) {
        reduction = filter;
        shift = ZWPeriodShift();
        return true;
    }
    const QString text = filter.mid(at + 1);
    // "x@" names no shift: it is malformed, not unshifted.
    if (text.isEmpty() || !ParseShift(text, shift))
        return false;
    reduction = filter.left(at);
    return true;
}

bool ZWPeriodShift::ParseShift(const QString& text, ZWPeriodShift& shift)
{
    shift = ZWPeriodShift();
    if (text.isEmpty())
        return true;
    if (text.size() < 2 || text[0] != QLatin1Char('-'))
        return false;
    qsizetype i = 1;
    int count = 0;
    // No leading zero, no sign, no blank: one way to write each shift.
    if (text[i] < QLatin1Char('1') || text[i] > QLatin1Char('9'))
        return false;
    while (i < text.size() && text[i] >= QLatin1Char('0') && text[i] <= QLatin1Char('9')) {
        count = count * 10 + (text[i].unicode() - '0');
        if (count > MaxCount)
            return false;
        ++i;
    }
    Unit unit = Unit::Periods;
    if (i < text.size()) {
        switch (text[i].toLower().unicode()) {
        case 'd':
            unit = Unit::Days;
            break;
        case 'w':
            unit = Unit::Weeks;
            break;
        case 'm':
            unit = Unit::Months;
            break;
        case 'y':
            unit = Unit::Years;
            break;
        default:
            return false;
        }
        if (++i != text.size())
            return false;
    }
    shift.m_unit = unit;
    shift.m_count = count;
    return true;
}

bool ZWPeriodShift::SplitName(const QString& name, QString& unshifted, ZWPeriodShift& shift)
{
    shift = ZWPeriodShift();
    unshifted = name;
    QString device, variable, filter, reduction;
    if (!SplitFilterDriverVariable(name, device, variable, filter) || !filter.contains(QLatin1Char('@')))
        return true;
    if (!Parse(filter, reduction, shift))
        return false;
    unshifted = device + QLatin1Char('.') + variable;
    if (!reduction.isEmpty())
        unshifted += QLatin1Char(':') + reduction;
    return true;
}

QString ZWPeriodShift::ToText() const
{
    static const char* const suffix[] = {"", "", "d", "w", "m", "y"};
    if (IsNone())
        return QString();
    return QLatin1Char('-') + QString::number(m_count) + QLatin1String(suffix[int(m_unit)]);
}

void ZWPeriodShift::Apply(ZWDateTime& start, ZWDateTime& end) const
{
    if (IsNone() || !start.IsValid() || !end.IsValid())
        return;
    const qint64 n = m_count;
    const auto moveSeconds = [&](qint64 seconds) {
        start = ZWDateTime::FromSeconds(start.Seconds() - seconds);
        end = ZWDateTime::FromSeconds(end.Seconds() - seconds);
    };
    switch (m_unit) {
    case Unit::None:
        return;
    case Unit::Days:
        moveSeconds(n * DaySeconds);
        return;
    case Unit::Weeks:
        moveSeconds(n * 7 * DaySeconds);
        return;
    case Unit::Months:
        start = AddMonths(start, -n);
        end = AddMonths(end, -n);
        return;
    case Unit::Years:
        start = AddYears(start, -m_count);
        end = AddYears(end, -m_count);
        return;
    case Unit::Periods:
        break;
    }
    // Wall-clock arithmetic: a period between local midnights moves by whole
    // days of the calendar, whatever their hours in UTC.
    const qint64 length = end.Seconds() - start.Seconds();
    if (length > 0 && IsLocalMidnight(start) && IsLocalMidnight(end)) {
        int y0, m0, d0, y1, m1, d1;
        start.DateTime2DMY(y0, m0, d0);
        end.DateTime2DMY(y1, m1, d1);
        if (d0 == 1 && d1 == 1) {
            const qint64 months = qint64(y1 - y0) * 12 + (m1 - m0);
            start = AddMonths(start, -n * months);
            end = AddMonths(end, -n * months);
            return;
        }
    }
    moveSeconds(n * length);
}
