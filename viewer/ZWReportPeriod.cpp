#include "viewer/ZWReportPeriod.h"

#include "host/core/ZWLocale.h"
#include "host/core/ZWSettingsKeys.h"

#include <QSettings>
#include <cstdlib>

namespace {

ZWDateTime FirstOfMonth(int year, int month)
{
    return ZWDateTime::FromDMY(year, month, 1);
}

// Month m (may be 0 or 13 and beyond by a quarter) of year y, wrapped into
// the calendar, day 1 at 00:00:00.
ZWDateTime WrappedMonthStart(int year, int month)
{
    if (month < 1) {
        month += 12;
        --year;
    } else if (month > 12) {
        month -= 12;
        ++year;
    }
    return FirstOfMonth(year, month);
}

} // namespace

ZWDateTime ZWReportPeriod::AdjustToGroupBy(const ZWDateTime& date, int unit)
{
    if (!date.IsValid())
        return date;
    int y, m, d;
    date.DateTime2DMY(y, m, d);
    switch (unit) {
    case ID_GROUPBY_DAY:
        return date.Date();
    case ID_GROUPBY_WEEK:
    case ID_GROUPBY_USER: {
        int k = date.DayOfWeek() - LocaleInformationWide().firstDayOfWeek;
        if (k < 0)
            k += 7;
        return date.Date() - ZWDateTimeSpan(k, 0, 0, 0);
    }
    case ID_GROUPBY_MONTH:
        return FirstOfMonth(y, m);
    case ID_GROUPBY_3MONTH:
        return FirstOfMonth(y, ((m - 1) / 3) * 3 + 1);
    case ID_GROUPBY_YEAR:
        return FirstOfMonth(y, 1);
    default:
        return date;
    }
}

ZWDateTime ZWReportPeriod::AddGroupByUnit(const ZWDateTime& date, int signedUnit)
{
    if (!date.IsValid())
        return date;
    const int unit = std::abs(signedUnit);
    const ZWDateTime boundary = AdjustToGroupBy(date, unit);
    if (boundary != date)
        return boundary;
    // On a boundary: the step of the go-to rule, snapped to its unit (a
    // no-op for quarters and years, whose steps land on boundaries).
    return AdjustToGroupBy(AdjustToGoTo(date, signedUnit), unit);
}

ZWDateTime ZWReportPeriod::AdjustToGoTo(const ZWDateTime& date, int signedUnit)
{
    if (!date.IsValid())
        return date;
    const int unit = std::abs(signedUnit);
    const int direction = signedUnit < 0 ? -1 : 1;
    int y, m, d;
    date.DateTime2DMY(y, m, d);
    switch (unit) {
    case ID_GROUPBY_WEEK:
    case ID_GROUPBY_USER:
        return date + ZWDateTimeSpan(7 * direction, 0, 0, 0);
    case ID_GROUPBY_DAY:
        return date + ZWDateTimeSpan(direction, 0, 0, 0);
    case ID_GROUPBY_MONTH:
        return WrappedMonthStart(y, m + direction);
    case ID_GROUPBY_3MONTH:
        return WrappedMonthStart(y, m + 3 * direction);
    case ID_GROUPBY_YEAR:
        return FirstOfMonth(y + direction, 1);
    default:
        return date;
    }
}

ZWDateTimeSpan ZWReportPeriod::FixedLength(int unit)
{
    switch (unit) {
    case ID_GROUPBY_DAY:
        return ZWDateTimeSpan(1, 0, 0, 0);
    case ID_GROUPBY_WEEK:
        return ZWDateTimeSpan(7, 0, 0, 0);
    case ID_GROUPBY_MONTH:
        return ZWDateTimeSpan(31, 0, 0, 0);
    case ID_GROUPBY_3MONTH:
        return ZWDateTimeSpan(91, 0, 0, 0);
    case ID_GROUPBY_YEAR:
        return ZWDateTimeSpan(365, 0, 0, 0);
    default:
        return ZWDateTimeSpan();
    }
}

QString ZWReportPeriod::UnitName(int unit)
{
    switch (unit) {
    case ID_GROUPBY_DAY:
        return QStringLiteral("DAY");
    case ID_GROUPBY_WEEK:
        return QStringLiteral("WEEK");
    case ID_GROUPBY_MONTH:
        return QStringLiteral("MONTH");
    case ID_GROUPBY_3MONTH:
        return QStringLiteral("3MONTH");
    case ID_GROUPBY_YEAR:
        return QStringLiteral("YEAR");
    default:
        return QString();
    }
}

std::optional<int> ZWReportPeriod::UnitFromName(const QString& name)
{
    const QString n = name.trimmed().toUpper();
    if (n == QLatin1String("USER"))
        return ID_GROUPBY_USER;
    if (n == QLatin1String("QUARTER"))
        return ID_GROUPBY_3MONTH;
    for (int unit = ID_GROUPBY_DAY; unit <= ID_GROUPBY_YEAR; ++unit)
        if (UnitName(unit) == n)
            return unit;
    return std::nullopt;
}

ZWReportPeriod::ZWReportPeriod()
{
    Reset(ID_GROUPBY_DAY);
}

void ZWReportPeriod::Reset(int unit)
{
    m_unit = unit;
    m_length = ZWDateTimeSpan(7, 0, 0, 0);
    m_end = ZWDateTime::FromDMY(2000, 1, 1);
    m_start = m_end;
}

bool ZWReportPeriod::SetupData(const ZWDateTime& requestedEnd, int unit, bool force, const ZWDateTime& now)
{
    if (requestedEnd == m_end && unit == m_unit && !force)
        return false;
    m_end = requestedEnd;
    m_unit = unit;
    if (unit == ID_GROUPBY_USER) {
        m_start = m_userFrom;
        m_end = m_userTo;
        m_length = m_end - m_start;
        return true;
    }
    ZWDateTime start = AdjustToGroupBy(m_end, unit);
    if (start == m_end)
        start = AddGroupByUnit(m_end, -unit);
    // A period never begins in the future.
    if (start > now)
        start = AddGroupByUnit(now, -unit);
    m_start = start;
    m_end = AddGroupByUnit(start, unit);
    m_length = FixedLength(unit);
    return true;
}

bool ZWReportPeriod::Previous(const ZWDateTime& now)
{
    return SetupData(AddGroupByUnit(m_end, -m_unit), m_unit, false, now);
}

bool ZWReportPeriod::Next(const ZWDateTime& now)
{
    ZWDateTime t = AdjustToGroupBy(m_end, m_unit);
    if (m_end > t)
        t = AddGroupByUnit(t, m_unit);
    t = AddGroupByUnit(t, m_unit);
    return SetupData(t, m_unit, false, now);
}

bool ZWReportPeriod::CanNext(const ZWDateTime& now) const
{
    return m_unit != ID_GROUPBY_USER && m_end < now;
}

bool ZWReportPeriod::CanGoTo() const
{
    return m_unit != ID_GROUPBY_USER;
}

ZWDateTime ZWReportPeriod::GoToInitialDate() const
{
    return AdjustToGoTo(m_end, -m_unit);
}

bool ZWReportPeriod::GoTo(const ZWDateTime& chosen, const ZWDateTime& now)
{
    if (!chosen.IsValid())
        return false;
    const ZWDateTime t = AdjustToGroupBy(chosen, m_unit);
    return SetupData(AdjustToGoTo(t, m_unit), m_unit, false, now);
}

bool ZWReportPeriod::ChooseUnit(int unit, const ZWDateTime& now)
{
    return SetupData(m_end, unit, false, now);
}

bool ZWReportPeriod::ChooseUserInterval(const ZWDateTime& from, const ZWDateTime& to, const ZWDateTime& now)
{
    SetupUserInterval(from, to);
    return SetupData(m_end, ID_GROUPBY_USER, true, now);
}

void ZWReportPeriod::SetupUserInterval(const ZWDateTime& from, const ZWDateTime& to)
{
    m_userFrom = from;
    m_userTo = to;
}

void ZWReportPeriod::WriteLastReportGroup(QSettings& settings, int unit)
{
    const QString name = UnitName(unit);
    if (!name.isEmpty())
        settings.setValue(ZWSettingsKeys::LastReportGroup, name);
}

std::optional<int> ZWReportPeriod::ReadLastReportGroup(QSettings& settings)
{
    const QString name = settings.value(ZWSettingsKeys::LastReportGroup).toString();
    const std::optional<int> unit = UnitFromName(name);
    if (!unit || *unit == ID_GROUPBY_USER)
        return std::nullopt;
    return unit;
}
