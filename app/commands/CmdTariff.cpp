// zwinformes tariff check: validates a tariff calendar file and shows the
// hour map of a week.
#include "app/commands/ZWCommand.h"
#include "app/commands/ZWCommandLine.h"
#include "host/core/ZWLoadString.h"
#include "host/core/ZWTextId.h"
#include "host/drivers/ZWTariffCalendarFile.h"
#include "host/store/ZWPeriodAggregate.h"

#include <QLocale>
#include <algorithm>

namespace {

// Period names up to this long are shown as 24 columns (at most 24 + 24 × 5
// characters a line); longer ones as runs of hours.
constexpr int MaxColumnName = 4;

QString RunsOf(const ZWTariffCalendar& calendar, const ZWTariffCalendar::Hours& hours)
{
    QStringList runs;
    for (int from = 0; from < 24;) {
        int to = from + 1;
        while (to < 24 && hours[size_t(to)] == hours[size_t(from)])
            ++to;
        runs.append(QStringLiteral("%1-%2 %3")
                        .arg(from, 2, 10, QLatin1Char('0'))
                        .arg(to, 2, 10, QLatin1Char('0'))
                        .arg(calendar.PeriodNames().value(hours[size_t(from)])));
        from = to;
    }
    return runs.join(QStringLiteral(", "));
}

void PrintWeek(const ZWTariffCalendar& calendar, const QDate& monday)
{
    const QStringList& names = calendar.PeriodNames();
    Out() << ZWLoadString(ZWTextId::TariffCheckCalendar)
                 .arg(calendar.Name(), QString::number(names.size()), names.join(QLatin1Char(' ')),
                     QString::number(calendar.Holidays().size()))
          << "\n"
          << ZWLoadString(ZWTextId::TariffCheckWeek)
                 .arg(monday.toString(Qt::ISODate), monday.addDays(6).toString(Qt::ISODate))
          << "\n";
    qsizetype width = 0;
    for (const QString& name : names)
        width = std::max(width, name.size());
    const bool columns = width <= MaxColumnName;
    const QString indent(24, QLatin1Char(' '));
    if (columns) {
        QString header = indent;
        for (int hour = 0; hour < 24; ++hour)
            header += QStringLiteral("%1").arg(hour, -int(width + 1));
        Out() << header.trimmed().prepend(indent) << "\n";
    }
    for (int i = 0; i < 7; ++i) {
        const QDate date = monday.addDays(i);
        const ZWTariffCalendar::DayType type = calendar.DayTypeOf(date);
        const ZWTariffCalendar::Hours& hours = calendar.HourMap(date.month(), type);
        QString line = QStringLiteral("%1 %2 %3 ")
                           .arg(QLocale::c().dayName(date.dayOfWeek(), QLocale::ShortFormat),
                               date.toString(Qt::ISODate), ZWTariffCalendar::DayTypeKeyword(type).leftJustified(8));
        if (columns) {
            for (const quint8 period : hours)
                line += names.value(period).leftJustified(width + 1);
        } else {
            line += RunsOf(calendar, hours);
        }
        Out() << line.trimmed() << "\n";
    }
}

int RunCheck(ZWCommandLine& cl, const QStringList& positional)
{
    QCommandLineParser& p = cl.Parser();
    if (positional.size() > 2)
        return cl.UsageError(QStringLiteral("unexpected argument '%1'").arg(positional.at(2)));
    ZWDateTime week = ZWDateTime::LTC();
    if (p.isSet(QStringLiteral("week")) && !String2DateTime(week, p.value(QStringLiteral("week"))))
        return cl.UsageError(
            QStringLiteral("--week: '%1' is not a date (use 2026-01-05)").arg(p.value(QStringLiteral("week"))));

    const QString path = positional.size() == 2 ? positional.at(1) : ZWTariffCalendarFile::DefaultPath();
    ZWTariffCalendarFile file;
    if (!file.Load(path)) {
        Err() << "zwinformes tariff check: " << file.LastError() << "\n";
        return ExitFailed;
    }
    // A period named like a reduction could not be told from it in a filter:
    // the store does not use such a calendar.
    for (const ZWTariffCalendar& calendar : file.Calendars()) {
        for (const QString& period : calendar.PeriodNames()) {
            ZWLoggerReduction reduction;
            if (ZWPeriodAggregate::ParseReduction(period, reduction)) {
                Err() << "zwinformes tariff check: " << path << ": "
                      << ZWLoadString(ZWTextId::StoreTariffPeriodIsReduction).arg(calendar.Name(), period) << "\n";
                return ExitFailed;
            }
        }
    }
    std::vector<const ZWTariffCalendar*> shown;
    if (p.isSet(QStringLiteral("calendar"))) {
        const ZWTariffCalendar* calendar = file.Find(p.value(QStringLiteral("calendar")));
        if (!calendar) {
            Err() << "zwinformes tariff check: " << file.NoSuchCalendar(path, p.value(QStringLiteral("calendar")))
                  << "\n";
            return ExitFailed;
        }
        shown.push_back(calendar);
    } else {
        for (const ZWTariffCalendar& calendar : file.Calendars())
            shown.push_back(&calendar);
    }

    QStringList names;
    for (const ZWTariffCalendar& calendar : file.Calendars())
        names.append(QLatin1Char('"') + calendar.Name() + QLatin1Char('"'));
    Out() << ZWLoadString(ZWTextId::TariffCheckValid).arg(path, names.join(QStringLiteral(", "))) << "\n";
    int year = 0, month = 0, day = 0;
    week.DateTime2DMY(year, month, day);
    const QDate date(year, month, day);
    const QDate monday = date.addDays(1 - date.dayOfWeek());
    for (const ZWTariffCalendar* calendar : shown) {
        Out() << "\n";
        PrintWeek(*calendar, monday);
    }
    return ExitOk;
}

int Run(const QStringList& args)
{
    ZWCommandLine cl(QStringLiteral("tariff"),
        QStringLiteral("Tariff calendars (time-of-use periods by month, day type and local hour).\n"
                       "check [FILE]: validates FILE (default tariffs.xml of the data folder, --data-dir)\n"
                       "and prints each calendar's periods and the hour map of a week, Monday to Sunday."),
        QStringLiteral("check [FILE]"));
    QCommandLineParser& p = cl.Parser();
    p.addOption({QStringLiteral("calendar"), QStringLiteral("Show only the calendar NAME."), QStringLiteral("NAME")});
    p.addOption({QStringLiteral("week"), QStringLiteral("Show the week that contains DATE (default: this week)."),
        QStringLiteral("DATE")});
    if (const int status = cl.Parse(args); status >= 0)
        return status;
    const QStringList positional = p.positionalArguments();
    if (positional.isEmpty())
        return cl.UsageError(QStringLiteral("give a subcommand: check"));
    if (positional.first() != QLatin1String("check"))
        return cl.UsageError(QStringLiteral("unknown subcommand '%1' (use check)").arg(positional.first()));
    return RunCheck(cl, positional);
}

const ZWCommandRegistration registration({QStringLiteral("tariff"),
    QStringLiteral("validate a tariff calendar file and show its hour map"), ZWCommand::Needs::Core, Run});

} // namespace
