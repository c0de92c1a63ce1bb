#pragma once

#include "host/drivers/ZWTariffCalendar.h"

#include <QByteArray>
#include <QString>
#include <vector>

// A tariff calendar file: a "tariffs" element holding one or more named
// "calendar" elements. The file is taken whole or refused whole: one
// faulty calendar refuses the file, with the first fault named.
class ZWTariffCalendarFile
{
public:
    // "tariffs.xml" of the data folder (--data-dir, ZWINFORMES_DATA_DIR).
    static QString DefaultPath();

    // False with LastError() ("FILE: reason") when the file cannot be read
    // or is refused; no calendar is kept then.
    bool Load(const QString& path);
    bool Parse(const QByteArray& utf8);

    const std::vector<ZWTariffCalendar>& Calendars() const { return m_calendars; }
    // The calendar of that name (any letter case), or null.
    const ZWTariffCalendar* Find(const QString& name) const;
    QString LastError() const { return m_error; }
    // "FILE holds no calendar named "X" (it holds: "A", "B")".
    QString NoSuchCalendar(const QString& path, const QString& name) const;

    // The calendar `name` of the data folder's file: false with `error`
    // when the file is refused or holds no calendar of that name.
    static bool LoadNamed(const QString& name, ZWTariffCalendar& calendar, QString& error);

private:
    bool Read(const XmlDocument& doc);

    std::vector<ZWTariffCalendar> m_calendars;
    QString m_error;
};
