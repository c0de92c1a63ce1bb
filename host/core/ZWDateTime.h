#pragma once

#include "host/core/ZWDateTimeSpan.h"

#include <QDateTime>
#include <QString>
#include <QTimeZone>
#include <compare>

// The host's calendar date-time: local wall-clock time with one-second
// resolution, counted in seconds from 1970-01-01 00:00:00 on the proleptic
// Gregorian calendar. It carries no time zone: conversion to an instant
// (for the logged data) is done with the system time zone or an explicit one.
class ZWDateTime
{
public:
    // An invalid date-time (what a cancelled date dialog returns).
    constexpr ZWDateTime() = default;
    static ZWDateTime FromSeconds(qint64 seconds);
    // Normalises out-of-range parts is NOT done: an impossible date gives an
    // invalid value.
    static ZWDateTime FromDMY(int year, int month, int day, int hour = 0, int minute = 0, int second = 0);
    // The local present (the host's LTC).
    static ZWDateTime LTC();
    static ZWDateTime FromQDateTime(const QDateTime& dt);

    bool IsValid() const { return m_seconds != Invalid; }
    qint64 Seconds() const { return m_seconds; }

    void DateTime2DMY(int& year, int& month, int& day) const;
    int Year() const;
    int Month() const;
    int Day() const;
    int Hour() const { return int(FloorMod(m_seconds, 86400) / 3600); }
    int Minute() const { return int(FloorMod(m_seconds, 3600) / 60); }
    int Second() const { return int(FloorMod(m_seconds, 60)); }
    int SecondsOfDay() const { return int(FloorMod(m_seconds, 86400)); }
    // Qt::Monday (1) .. Qt::Sunday (7), as the locale's first day of the week.
    int DayOfWeek() const;
    // The same calendar day at 00:00:00.
    ZWDateTime Date() const;

    // Wall-clock time in `zone` (local when omitted) to a QDateTime there.
    QDateTime ToQDateTime(const QTimeZone& zone = QTimeZone::systemTimeZone()) const;
    QDateTime ToLocalQDateTime() const;
    // ISO 8601 "yyyy-MM-ddTHH:mm:ss".
    QString ToIso() const;

    ZWDateTime operator+(const ZWDateTimeSpan& span) const;
    ZWDateTime operator-(const ZWDateTimeSpan& span) const;
    ZWDateTimeSpan operator-(const ZWDateTime& other) const;
    bool operator==(const ZWDateTime& other) const = default;
    std::strong_ordering operator<=>(const ZWDateTime& other) const = default;

    static qint64 FloorMod(qint64 a, qint64 b) { return ((a % b) + b) % b; }
    static qint64 FloorDiv(qint64 a, qint64 b) { return (a - FloorMod(a, b)) / b; }

private:
    static constexpr qint64 Invalid = std::numeric_limits<qint64>::min();
    qint64 m_seconds = Invalid;
};

// Reads a date-time from text: ISO 8601 ("2024-03-05T09:05:07", with a blank
// instead of "T", or a date alone) or the locale's short date-time form.
bool String2DateTime(ZWDateTime& out, const QString& text);
