#pragma once

#include "host/core/ZWDateTime.h"
#include "host/core/ZWDateTimeSpan.h"

#include <QString>
#include <optional>

class QSettings;

// Command identifiers of the group-by units; the negated id means one unit
// backwards where an operation takes a signed unit.
enum ZWGroupBy : int {
    ID_GROUPBY_USER = 31894,
    ID_GROUPBY_DAY = 31895,
    ID_GROUPBY_WEEK = 31896,
    ID_GROUPBY_MONTH = 31897,
    ID_GROUPBY_3MONTH = 31898,
    ID_GROUPBY_YEAR = 31899,
};

// Viewer commands that act on the period.
enum ZWViewerCommand : int {
    ID_VIEWER_GOTO = 31849,
    ID_VIEWER_GROUPBY = 31851,
    ID_VIEWER_PREVIOUS = 31858,
    ID_VIEWER_NEXT = 31859,
};

// The period a report is shown for: a unit (day, week, month, quarter, year
// or the user's interval) and the dates [start, end). Holds the calendar
// rules of the viewer without any window, so that the dialogs and the
// command line share them. "Now" is passed in wherever the rules need it,
// so the rules are testable at any date.
class ZWReportPeriod
{
public:
    // The start of the unit that contains `date`.
    static ZWDateTime AdjustToGroupBy(const ZWDateTime& date, int unit);
    // One unit forwards (positive id) or backwards (negated id) from a unit
    // boundary; a date inside a unit is only snapped back to its start.
    static ZWDateTime AddGroupByUnit(const ZWDateTime& date, int signedUnit);
    // One unit forwards or backwards, without the boundary test.
    static ZWDateTime AdjustToGoTo(const ZWDateTime& date, int signedUnit);
    // The fixed length that a unit's period is said to have (31 days for any
    // month...); the user unit has no fixed length (zero).
    static ZWDateTimeSpan FixedLength(int unit);
    static bool IsUnit(int id) { return id >= ID_GROUPBY_USER && id <= ID_GROUPBY_YEAR; }

    // "DAY", "WEEK", "MONTH", "3MONTH", "YEAR" (empty for the user unit).
    static QString UnitName(int unit);
    // The unit of a stored name or of the command line's day|week|month|
    // 3month|year|user (case-insensitive); nullopt when unknown.
    static std::optional<int> UnitFromName(const QString& name);

    ZWReportPeriod();

    // The viewer's start: unit given, length 7 days, end 2000-01-01 (a value
    // that never equals the present, so that the first SetupData reloads).
    void Reset(int unit);

    // Sets the period from a requested end and unit. Returns false when
    // nothing changed (same end, same unit, not forced): no reload.
    bool SetupData(const ZWDateTime& requestedEnd, int unit, bool force, const ZWDateTime& now);

    // Navigation; each returns whether the period changed (data to gather).
    bool Previous(const ZWDateTime& now);
    bool Next(const ZWDateTime& now);
    bool CanNext(const ZWDateTime& now) const;
    bool CanGoTo() const;
    // The date the go-to dialog opens on: the current period's start.
    ZWDateTime GoToInitialDate() const;
    // The period containing `chosen` (or the present one if that lies in the
    // future). An invalid date changes nothing.
    bool GoTo(const ZWDateTime& chosen, const ZWDateTime& now);
    // A unit chosen from the group-by menu (not the user unit).
    bool ChooseUnit(int unit, const ZWDateTime& now);
    // A user interval confirmed in its dialog: always reloads.
    bool ChooseUserInterval(const ZWDateTime& from, const ZWDateTime& to, const ZWDateTime& now);

    // Stores the user interval and does nothing else.
    void SetupUserInterval(const ZWDateTime& from, const ZWDateTime& to);

    int Unit() const { return m_unit; }
    const ZWDateTime& Start() const { return m_start; }
    const ZWDateTime& End() const { return m_end; }
    const ZWDateTimeSpan& Length() const { return m_length; }
    const ZWDateTime& UserFrom() const { return m_userFrom; }
    const ZWDateTime& UserTo() const { return m_userTo; }

    // Per-user settings: "LastReportGroup".
    static void WriteLastReportGroup(QSettings& settings, int unit);
    static std::optional<int> ReadLastReportGroup(QSettings& settings);

private:
    int m_unit = ID_GROUPBY_DAY;
    ZWDateTime m_start;
    ZWDateTime m_end;
    ZWDateTimeSpan m_length;
    ZWDateTime m_userFrom;
    ZWDateTime m_userTo;
};
