#include "host/core/ZWDateTime.h"

#include "host/core/ZWLocale.h"

#include <QRegularExpression>

#include <chrono>

namespace {

constexpr qint64 DaySeconds = 86400;

qint64 DaysFromCivil(int y, int m, int d)
{
    using namespace std::chrono;
    return sys_days(year(y) / month(unsigned(m)) / day(unsigned(d))).time_since_epoch().count();
}

} // namespace

ZWDateTime ZWDateTime::FromSeconds(qint64 seconds)
{
    ZWDateTime t;
    t.m_seconds = seconds;
    return t;
}

ZWDateTime ZWDateTime::FromDMY(int y, int m, int d, int hour, int minute, int second)
{
    using namespace std::chrono;
    const year_month_day ymd{year(y), month(unsigned(m)), day(unsigned(d))};
    if (!ymd.ok() || y < -30000 || y > 30000 || hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0
        || second > 59)
        return ZWDateTime();
    return FromSeconds(DaysFromCivil(y, m, d) * DaySeconds + hour * 3600 + minute * 60 + second);
}

ZWDateTime ZWDateTime::FromQDateTime(const QDateTime& dt)
{
    if (!dt.isValid())
        return ZWDateTime();
    const QDate date = dt.date();
    const QTime time = dt.time();
    return FromDMY(date.year(), date.month(), date.day(), time.hour(), time.minute(), time.second());
}

ZWDateTime ZWDateTime::LTC()
{
    return FromQDateTime(QDateTime::currentDateTime());
}

void ZWDateTime::DateTime2DMY(int& y, int& m, int& d) const
{
    using namespace std::chrono;
    const year_month_day ymd{sys_days(days(FloorDiv(m_seconds, DaySeconds)))};
    y = int(ymd.year());
    m = int(unsigned(ymd.month()));
    d = int(unsigned(ymd.day()));
}

int ZWDateTime::Year() const
{
    int y, m, d;
    DateTime2DMY(y, m, d);
    return y;
}

int ZWDateTime::Month() const
{
    int y, m, d;
    DateTime2DMY(y, m, d);
    return m;
}

int ZWDateTime::Day() const
{
    int y, m, d;
    DateTime2DMY(y, m, d);
    return d;
}

int ZWDateTime::DayOfWeek() const
{
    // 1970-01-01 was a Thursday (4).
    return int(FloorMod(FloorDiv(m_seconds, DaySeconds) + 3, 7)) + 1;
}

ZWDateTime ZWDateTime::Date() const
{
    if (!IsValid())
        return *this;
    return FromSeconds(FloorDiv(m_seconds, DaySeconds) * DaySeconds);
}

QDateTime ZWDateTime::ToQDateTime(const QTimeZone& zone) const
{
    if (!IsValid())
        return QDateTime();
    int y, m, d;
    DateTime2DMY(y, m, d);
    return QDateTime(QDate(y, m, d), QTime(Hour(), Minute(), Second()), zone);
}

QDateTime ZWDateTime::ToLocalQDateTime() const
{
    if (!IsValid())
        return QDateTime();
    int y, m, d;
    DateTime2DMY(y, m, d);
    return QDateTime(QDate(y, m, d), QTime(Hour(), Minute(), Second()));
}

QString ZWDateTime::ToIso() const
{
    if (!IsValid())
        return QString();
    int y, m, d;
    DateTime2DMY(y, m, d);
    return QStringLiteral("%1-%2-%3T%4:%5:%6")
        .arg(y, 4, 10, QLatin1Char('0'))
        .arg(m, 2, 10, QLatin1Char('0'))
        .arg(d, 2, 10, QLatin1Char('0'))
        .arg(Hour(), 2, 10, QLatin1Char('0'))
        .arg(Minute(), 2, 10, QLatin1Char('0'))
        .arg(Second(), 2, 10, QLatin1Char('0'));
}

ZWDateTime ZWDateTime::operator+(const ZWDateTimeSpan& span) const
{
    return IsValid() ? FromSeconds(m_seconds + span.GetTotalSeconds()) : *this;
}

ZWDateTime ZWDateTime::operator-(const ZWDateTimeSpan& span) const
{
    return IsValid() ? FromSeconds(m_seconds - span.GetTotalSeconds()) : *this;
}

ZWDateTimeSpan ZWDateTime::operator-(const ZWDateTime& other) const
{
    return ZWDateTimeSpan::FromSeconds(m_seconds - other.m_seconds);
}

bool String2DateTime(ZWDateTime& out, const QString& text)
{
    const QString t = text.trimmed();
    if (t.isEmpty())
        return false;
    // Parsed by fields, not through QDateTime, so that a wall-clock time that
    // the system zone skips (a daylight-saving gap) still reads as written.
    static const QRegularExpression iso(
        QStringLiteral("^(\\d{4})-(\\d{2})-(\\d{2})(?:[T ](\\d{2}):(\\d{2})(?::(\\d{2}))?)?$"));
    const QRegularExpressionMatch m = iso.match(t);
    if (m.hasMatch()) {
        const auto part = [&m](int i) { return m.captured(i).isEmpty() ? 0 : m.captured(i).toInt(); };
        const ZWDateTime dt = ZWDateTime::FromDMY(part(1), part(2), part(3), part(4), part(5), part(6));
        if (!dt.IsValid())
            return false;
        out = dt;
        return true;
    }
    const QLocale locale = LocaleInformationWide().locale;
    const QDateTime local = locale.toDateTime(t, QLocale::ShortFormat);
    if (local.isValid()) {
        out = ZWDateTime::FromQDateTime(local);
        return out.IsValid();
    }
    const QDate localDate = locale.toDate(t, QLocale::ShortFormat);
    if (localDate.isValid()) {
        out = ZWDateTime::FromDMY(localDate.year(), localDate.month(), localDate.day());
        return out.IsValid();
    }
    return false;
}
