#include "host/drivers/ZWTariffCalendar.h"

#include "host/core/ZWLoadString.h"
#include "host/core/ZWTextId.h"

#include <QLocale>
#include <QRegularExpression>
#include <algorithm>

namespace {

constexpr quint32 AllMonths = 0x1FFE; // bits 1..12
constexpr quint32 AllDays = 0xF;
constexpr quint32 AllHours = 0xFFFFFF;

// A value of the file as a message quotes it: at most 80 characters.
QString Quote(const QString& text)
{
    return text.size() > 80 ? text.left(80) + QChar(0x2026) : text;
}

QString MonthName(int month)
{
    return QLocale::c().monthName(month);
}

// A number of one or two digits, or -1.
int SmallNumber(const QString& text)
{
    static const QRegularExpression digits(QStringLiteral("^[0-9]{1,2}$"));
    return digits.match(text).hasMatch() ? text.toInt() : -1;
}

// "1-2,12" or "11-2" (months, inclusive, wrapping past December) or
// "8-14,22-6" (hours [from, to), wrapping past midnight) as a bit set.
bool ParseRanges(const QString& text, bool hours, quint32& bits)
{
    const int first = hours ? 0 : 1;
    const int last = hours ? 23 : 12;
    bits = 0;
    static const QRegularExpression dash(QStringLiteral("[-\u2013]"));
    for (const QString& item : text.split(QLatin1Char(','))) {
        const QStringList ends = item.split(dash);
        const int a = SmallNumber(ends.first().trimmed());
        if (a < first || a > last || ends.size() > 2)
            return false;
        if (ends.size() == 1) {
            bits |= 1u << a;
            continue;
        }
        const int b = SmallNumber(ends.last().trimmed());
        if (hours) {
            if (b < 0 || b > 24 || b == a)
                return false;
            for (int h = a; h != b; h = (h + 1) % 24) {
                bits |= 1u << h;
                if (b == 24 && h == 23)
                    break;
            }
        } else {
            if (b < first || b > last)
                return false;
            for (int m = a;; m = m % 12 + 1) {
                bits |= 1u << m;
                if (m == b)
                    break;
            }
        }
    }
    return true;
}

bool ParseDays(const QString& text, quint32& bits)
{
    bits = 0;
    for (const QString& item : text.split(QLatin1Char(','))) {
        const QString word = item.trimmed().toLower();
        int type = 0;
        while (type < ZWTariffCalendar::DayTypes
            && word != ZWTariffCalendar::DayTypeKeyword(ZWTariffCalendar::DayType(type)))
            ++type;
        if (type == ZWTariffCalendar::DayTypes)
            return false;
        bits |= 1u << type;
    }
    return true;
}

} // namespace

QString ZWTariffCalendar::DayTypeKeyword(DayType type)
{
    switch (type) {
    case Working:
        return QStringLiteral("working");
    case Saturday:
        return QStringLiteral("saturday");
    case Sunday:
        return QStringLiteral("sunday");
    case Holiday:
        break;
    }
    return QStringLiteral("holiday");
}

QString ZWTariffCalendar::DayTypeName(DayType type)
{
    static constexpr int ids[DayTypes] = {
        ZWTextId::TariffDayWorking, ZWTextId::TariffDaySaturday, ZWTextId::TariffDaySunday, ZWTextId::TariffDayHoliday};
    return ZWLoadString(ids[type]);
}

bool ZWTariffCalendar::Read(const XmlDocument::XmlNode& calendar, int position, QString& error)
{
    *this = ZWTariffCalendar();
    const std::vector<XmlDocument::XmlNode> names = calendar.Nodes(QStringLiteral("name"));
    if (!names.empty())
        m_name = names.front().Text().trimmed();
    if (m_name.isEmpty()) {
        error = ZWLoadString(ZWTextId::TariffUnnamedCalendar).arg(position);
        return false;
    }
    const auto fail = [&](const QString& message) {
        error = ZWLoadString(ZWTextId::TariffInCalendar).arg(Quote(m_name), message);
        m_periods.clear();
        return false;
    };
    if (names.size() > 1)
        return fail(ZWLoadString(ZWTextId::TariffElementTwice).arg(QStringLiteral("name"), calendar.Name()));
    QString message;
    if (!ReadPeriods(calendar, message))
        return fail(message);

    static const QRegularExpression isoDate(QStringLiteral("^([0-9]{4})-([0-9]{2})-([0-9]{2})$"));
    std::vector<XmlDocument::XmlNode> rules;
    for (const XmlDocument::XmlNode& child : calendar.Children()) {
        const QString tag = child.Name();
        if (tag == QLatin1String("rule")) {
            rules.push_back(child);
        } else if (tag == QLatin1String("holiday")) {
            const QString text = child.Text().trimmed();
            const QRegularExpressionMatch m = isoDate.match(text);
            const QDate date
                = m.hasMatch() ? QDate(m.captured(1).toInt(), m.captured(2).toInt(), m.captured(3).toInt()) : QDate();
            if (!date.isValid())
                return fail(ZWLoadString(ZWTextId::TariffBadHoliday).arg(Quote(text)));
            m_holidays.push_back(date);
        } else if (tag != QLatin1String("name") && tag != QLatin1String("period")) {
            return fail(ZWLoadString(ZWTextId::TariffUnknownElement).arg(Quote(tag), calendar.Name()));
        }
    }
    std::sort(m_holidays.begin(), m_holidays.end());
    m_holidays.erase(std::unique(m_holidays.begin(), m_holidays.end()), m_holidays.end());

    for (auto& hours : m_table)
        hours.fill(Unset);
    for (size_t i = 0; i < rules.size(); ++i) {
        Rule rule;
        if (!ReadRule(rules[i], rule, message)) {
            error = ZWLoadString(ZWTextId::TariffInRule).arg(Quote(m_name), QString::number(i + 1), message);
            m_periods.clear();
            return false;
        }
        if (!Apply(rule, message))
            return fail(message);
    }
    if (!CheckComplete(message))
        return fail(message);
    return true;
}

bool ZWTariffCalendar::ReadPeriods(const XmlDocument::XmlNode& calendar, QString& error)
{
    static const QRegularExpression valid(QStringLiteral("^[\\p{L}\\p{N}_]{1,32}$"));
    for (const XmlDocument::XmlNode& node : calendar.Nodes(QStringLiteral("period"))) {
        const QString name = node.Text().trimmed();
        if (!valid.match(name).hasMatch()) {
            error = ZWLoadString(ZWTextId::TariffBadPeriodName).arg(Quote(name));
            return false;
        }
        if (PeriodIndex(name) >= 0) {
            error = ZWLoadString(ZWTextId::TariffDuplicatePeriod).arg(name);
            return false;
        }
        if (m_periods.size() == MaxPeriods) {
            error = ZWLoadString(ZWTextId::TariffTooManyPeriods).arg(MaxPeriods);
            return false;
        }
        m_periods.append(name);
    }
    if (m_periods.isEmpty()) {
        error = ZWLoadString(ZWTextId::TariffNoPeriods);
        return false;
    }
    return true;
}

bool ZWTariffCalendar::ReadRule(const XmlDocument::XmlNode& node, Rule& rule, QString& error) const
{
    rule = Rule{AllMonths, AllDays, AllHours, -1};
    QStringList seen;
    for (const XmlDocument::XmlNode& child : node.Children()) {
        const QString tag = child.Name();
        const QString text = child.Text().trimmed();
        if (seen.contains(tag)) {
            error = ZWLoadString(ZWTextId::TariffElementTwice).arg(tag, node.Name());
            return false;
        }
        seen.append(tag);
        if (tag == QLatin1String("months")) {
            if (!ParseRanges(text, false, rule.months)) {
                error = ZWLoadString(ZWTextId::TariffBadMonths).arg(Quote(text));
                return false;
            }
        } else if (tag == QLatin1String("hours")) {
            if (!ParseRanges(text, true, rule.hours)) {
                error = ZWLoadString(ZWTextId::TariffBadHours).arg(Quote(text));
                return false;
            }
        } else if (tag == QLatin1String("days")) {
            if (!ParseDays(text, rule.days)) {
                error = ZWLoadString(ZWTextId::TariffBadDays).arg(Quote(text));
                return false;
            }
        } else if (tag == QLatin1String("period")) {
            rule.period = PeriodIndex(text);
            if (rule.period < 0) {
                error = ZWLoadString(ZWTextId::TariffUnknownPeriod).arg(Quote(text), m_periods.join(QLatin1Char(' ')));
                return false;
            }
        } else {
            error = ZWLoadString(ZWTextId::TariffUnknownElement).arg(Quote(tag), node.Name());
            return false;
        }
    }
    if (rule.period < 0) {
        error = ZWLoadString(ZWTextId::TariffRuleNoPeriod);
        return false;
    }
    return true;
}

bool ZWTariffCalendar::Apply(const Rule& rule, QString& error)
{
    const auto inRule = [&](int hour) { return hour < 24 && (rule.hours >> hour & 1u); };
    for (int month = 1; month <= 12; ++month) {
        if (!(rule.months >> month & 1u))
            continue;
        for (int day = 0; day < DayTypes; ++day) {
            if (!(rule.days >> day & 1u))
                continue;
            for (int hour = 0; hour < 24; ++hour) {
                const quint8 earlier = Cell(month, day, hour);
                // Two rules may give an hour the same period.
                if (!inRule(hour) || earlier == Unset || earlier == rule.period)
                    continue;
                int last = hour;
                while (inRule(last + 1) && Cell(month, day, last + 1) == earlier)
                    ++last;
                const QString where = MonthName(month);
                const QString dayName = DayTypeName(DayType(day));
                const QString a = m_periods[earlier], b = m_periods[rule.period];
                error = last == hour
                    ? ZWLoadString(ZWTextId::TariffOverlap).arg(where, dayName, QString::number(hour), a, b)
                    : ZWLoadString(ZWTextId::TariffOverlapRun)
                          .arg(where, dayName, QString::number(hour), QString::number(last), a, b);
                return false;
            }
            for (int hour = 0; hour < 24; ++hour)
                if (inRule(hour))
                    Cell(month, day, hour) = quint8(rule.period);
        }
    }
    return true;
}

bool ZWTariffCalendar::CheckComplete(QString& error) const
{
    for (int month = 1; month <= 12; ++month) {
        for (int day = 0; day < DayTypes; ++day) {
            const Hours& hours = HourMap(month, DayType(day));
            const auto gap = std::find(hours.begin(), hours.end(), Unset);
            if (gap == hours.end())
                continue;
            const int first = int(gap - hours.begin());
            const int last
                = int(std::find_if(gap, hours.end(), [](quint8 p) { return p != Unset; }) - hours.begin()) - 1;
            const QString dayName = DayTypeName(DayType(day));
            error = first == last
                ? ZWLoadString(ZWTextId::TariffGap).arg(MonthName(month), dayName, QString::number(first))
                : ZWLoadString(ZWTextId::TariffGapRun)
                      .arg(MonthName(month), dayName, QString::number(first), QString::number(last));
            return false;
        }
    }
    return true;
}

int ZWTariffCalendar::PeriodIndex(const QString& name) const
{
    for (int i = 0; i < m_periods.size(); ++i)
        if (m_periods[i].compare(name, Qt::CaseInsensitive) == 0)
            return i;
    return -1;
}

bool ZWTariffCalendar::IsHoliday(const QDate& date) const
{
    return std::binary_search(m_holidays.begin(), m_holidays.end(), date);
}

ZWTariffCalendar::DayType ZWTariffCalendar::DayTypeOf(const QDate& date) const
{
    if (IsHoliday(date))
        return Holiday;
    switch (date.dayOfWeek()) {
    case Qt::Saturday:
        return Saturday;
    case Qt::Sunday:
        return Sunday;
    default:
        return Working;
    }
}

int ZWTariffCalendar::PeriodAt(const ZWDateTime& localHourStart) const
{
    if (!localHourStart.IsValid() || m_periods.isEmpty())
        return -1;
    int year = 0, month = 0, day = 0;
    localHourStart.DateTime2DMY(year, month, day);
    return HourMap(month, DayTypeOf(QDate(year, month, day)))[size_t(localHourStart.Hour())];
}

const ZWTariffCalendar::Hours& ZWTariffCalendar::HourMap(int month, DayType type) const
{
    static const Hours none = [] {
        Hours h;
        h.fill(Unset);
        return h;
    }();
    if (month < 1 || month > 12 || type < Working || type > Holiday || m_periods.isEmpty())
        return none;
    return m_table[size_t((month - 1) * DayTypes + type)];
}
