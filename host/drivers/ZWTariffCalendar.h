#pragma once

#include "host/core/XmlDocument.h"
#include "host/core/ZWDateTime.h"

#include <QDate>
#include <QString>
#include <QStringList>
#include <array>
#include <vector>

// One time-of-use tariff calendar: its named periods ("P1"…"P6", "Peak"…),
// its public holidays and, for every month, day type and local hour, the
// one period that hour is billed in.
//
// The rules of a "calendar" element are compiled on reading into a lookup
// table of month × day type × hour → period index, so that a query is an
// array access and the logged-data store can turn a month's hour maps into
// one grouped query. The hour is the local clock's hour number: on the day
// the clock goes back, hour 2 happens twice and both are mapped by hour 2;
// on the day it goes forward, hour 2 does not happen at all.
class ZWTariffCalendar
{
public:
    // In the order of the table and of the messages; holidays take
    // precedence over the day of the week.
    enum DayType { Working, Saturday, Sunday, Holiday };
    static constexpr int DayTypes = 4;
    static constexpr int MaxPeriods = 64;
    // The period index of every local hour 0..23 of one month and day type.
    using Hours = std::array<quint8, 24>;

    // Reads and checks a "calendar" element. False, with the first fault in
    // `error` ("calendar "6P": July, working day, hour 14 has no period"),
    // when some hour of some month and day type has no period or two, or
    // when anything in it is malformed; the calendar is then unusable.
    bool Read(const XmlDocument::XmlNode& calendar, int position, QString& error);

    const QString& Name() const { return m_name; }
    const QStringList& PeriodNames() const { return m_periods; }
    // The index of a period name (any letter case), or -1.
    int PeriodIndex(const QString& name) const;
    // Sorted, without repeats.
    const std::vector<QDate>& Holidays() const { return m_holidays; }
    bool IsHoliday(const QDate& date) const;
    DayType DayTypeOf(const QDate& date) const;

    // The period of the local hour that starts at (or contains)
    // `localHourStart`; -1 for an invalid time.
    int PeriodAt(const ZWDateTime& localHourStart) const;
    // The hour map of a month (1..12) and day type.
    const Hours& HourMap(int month, DayType type) const;

    // "working", "saturday", "sunday", "holiday": the words of the file.
    static QString DayTypeKeyword(DayType type);
    // "working day", "Saturday"…: the words of messages.
    static QString DayTypeName(DayType type);

private:
    static constexpr quint8 Unset = 0xFF;
    // One rule of the file, parsed: the months, day types and hours it
    // covers (bit sets) and its period.
    struct Rule
    {
        quint32 months = 0;
        quint32 days = 0;
        quint32 hours = 0;
        int period = -1;
    };

    bool ReadPeriods(const XmlDocument::XmlNode& calendar, QString& error);
    bool ReadRule(const XmlDocument::XmlNode& node, Rule& rule, QString& error) const;
    // Puts a rule into the table; false with the first hour it shares with
    // an earlier rule.
    bool Apply(const Rule& rule, QString& error);
    // False with the first hour no rule covers.
    bool CheckComplete(QString& error) const;
    quint8& Cell(int month, int day, int hour) { return m_table[size_t((month - 1) * DayTypes + day)][size_t(hour)]; }

    QString m_name;
    QStringList m_periods;
    std::vector<QDate> m_holidays;
    std::array<Hours, 12 * DayTypes> m_table{};
};
