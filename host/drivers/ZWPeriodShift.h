#pragma once

#include "host/core/ZWDateTime.h"

#include <QString>

// A move of a report period back in time, written after "@" in a device
// variable's filter: "[Main meter.Active energy:delta@-1]" is the increase
// over the period before the report's, "[...:@-1y]" the default reduction a
// year back.
//
// SHIFT is "-N" followed by nothing, "d", "w", "m" or "y" (either case), N in
// 1..1000 without leading zeros:
// - "-Nd", "-Nw", "-Nm", "-Ny": start and end each moved N days, weeks,
//   months or years back on the local calendar, wall-clock times kept (a
//   29 February a year back is 28 February; 31 May a month back 30 April);
// - "-N": N periods of the period's own shape back. A period from local
//   midnight of a first of month to another (a month, a quarter, a year) moves
//   by N times its months; one from local midnight to local midnight (a day,
//   a week) by N times its days; any other by N times its length.
// Shifts work on local wall-clock times; the store converts the shifted
// bounds to UTC afterwards, so a shifted day with a daylight-saving change
// has 23 or 25 hours too.
class ZWPeriodShift
{
public:
    enum class Unit { None, Periods, Days, Weeks, Months, Years };

    static constexpr int MaxCount = 1000;

    // Splits a filter "[REDUCTION][@SHIFT]" into the reduction text (possibly
    // empty; not checked here) and the shift (None without "@"). False when
    // the text after "@" is not a SHIFT.
    static bool Parse(const QString& filter, QString& reduction, ZWPeriodShift& shift);
    // Reads a SHIFT alone ("-1y"); an empty text is no shift.
    static bool ParseShift(const QString& text, ZWPeriodShift& shift);
    // A device variable name without its shift, and the shift:
    // "A.b:delta@-1" gives "A.b:delta", "A.b:@-1y" gives "A.b", "A.b:max"
    // itself. False when the name's filter holds a malformed shift.
    static bool SplitName(const QString& name, QString& unshifted, ZWPeriodShift& shift);

    bool IsNone() const { return m_unit == Unit::None; }
    Unit GetUnit() const { return m_unit; }
    int Count() const { return m_count; }
    // "-1y", "-2"; empty for no shift.
    QString ToText() const;

    // Moves the local period [start, end) back; invalid bounds stay as they
    // are.
    void Apply(ZWDateTime& start, ZWDateTime& end) const;

    bool operator==(const ZWPeriodShift& other) const = default;

private:
    Unit m_unit = Unit::None;
    int m_count = 0;
};
