#pragma once

#include <QtGlobal>

// A span of time with one-second resolution: days, hours, minutes, seconds.
class ZWDateTimeSpan
{
public:
    constexpr ZWDateTimeSpan() = default;
    constexpr ZWDateTimeSpan(qint64 days, int hours, int minutes, int seconds)
        : m_seconds(days * 86400 + qint64(hours) * 3600 + qint64(minutes) * 60 + seconds)
    {}
    static constexpr ZWDateTimeSpan FromSeconds(qint64 seconds)
    {
        ZWDateTimeSpan span;
        span.m_seconds = seconds;
        return span;
    }

    constexpr qint64 GetTotalSeconds() const { return m_seconds; }
    constexpr double GetTotalDays() const { return double(m_seconds) / 86400.0; }
    // Components of the span (as the host reports them: truncated towards zero).
    constexpr qint64 GetDays() const { return m_seconds / 86400; }
    constexpr int GetHours() const { return int((m_seconds / 3600) % 24); }
    constexpr int GetMinutes() const { return int((m_seconds / 60) % 60); }
    constexpr int GetSeconds() const { return int(m_seconds % 60); }

    constexpr ZWDateTimeSpan operator-() const { return FromSeconds(-m_seconds); }
    constexpr auto operator<=>(const ZWDateTimeSpan&) const = default;

private:
    qint64 m_seconds = 0;
};
