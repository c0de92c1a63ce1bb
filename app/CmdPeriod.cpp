#include "app/ZWCommand.h"
#include "app/ZWCommandLine.h"
#include "host/ZWLoadString.h"
#include "viewer/ZWReportPeriod.h"
#include "viewer/ZWUserInterval.h"


namespace {

bool ReadDate(ZWCommandLine& cl, const QString& option, ZWDateTime& out, int& status)
{
    const QString text = cl.Parser().value(option);
    if (!String2DateTime(out, text)) {
        status = cl.UsageError(QStringLiteral("--%1: '%2' is not a date-time (use 2024-03-05T09:05:07)").arg(option, text));
        return false;
    }
    return true;
}

int Run(const QStringList& args)
{
    ZWCommandLine cl(QStringLiteral("period"),
        QStringLiteral("Prints the report period that a unit and a date select: the whole unit that "
                       "contains the date (the unit before it when the date is on a boundary), never "
                       "starting in the future."),
        QString());
    QCommandLineParser& p = cl.Parser();
    p.addOption({QStringLiteral("unit"), QStringLiteral("day, week, month, 3month, year or user."), QStringLiteral("U")});
    p.addOption({QStringLiteral("date"), QStringLiteral("The requested date (default: now)."), QStringLiteral("DATETIME")});
    p.addOption({QStringLiteral("now"), QStringLiteral("The present (default: the clock)."), QStringLiteral("DATETIME")});
    p.addOption({QStringLiteral("from"), QStringLiteral("Start of a user interval."), QStringLiteral("DATETIME")});
    p.addOption({QStringLiteral("to"), QStringLiteral("End of a user interval."), QStringLiteral("DATETIME")});
    p.addOption({QStringLiteral("json"), QStringLiteral("Print one JSON object.")});
    if (const int status = cl.Parse(args); status >= 0)
        return status;
    if (!p.positionalArguments().isEmpty())
        return cl.UsageError(QStringLiteral("unexpected argument '%1'").arg(p.positionalArguments().first()));
    if (!p.isSet(QStringLiteral("unit")))
        return cl.UsageError(QStringLiteral("--unit is required"));
    const std::optional<int> unit = ZWReportPeriod::UnitFromName(p.value(QStringLiteral("unit")));
    if (!unit)
        return cl.UsageError(QStringLiteral("unknown unit '%1'").arg(p.value(QStringLiteral("unit"))));

    int status = ExitOk;
    ZWDateTime now = ZWDateTime::LTC();
    if (p.isSet(QStringLiteral("now")) && !ReadDate(cl, QStringLiteral("now"), now, status))
        return status;
    ZWDateTime date = now;
    if (p.isSet(QStringLiteral("date")) && !ReadDate(cl, QStringLiteral("date"), date, status))
        return status;

    ZWReportPeriod period;
    period.Reset(*unit);
    if (*unit == ID_GROUPBY_USER) {
        if (!p.isSet(QStringLiteral("from")) || !p.isSet(QStringLiteral("to")))
            return cl.UsageError(QStringLiteral("--unit user needs --from and --to"));
        ZWDateTime from, to;
        if (!ReadDate(cl, QStringLiteral("from"), from, status) || !ReadDate(cl, QStringLiteral("to"), to, status))
            return status;
        const ZWUserInterval::Check check = ZWUserInterval::Validate(from, to, now);
        if (check != ZWUserInterval::Accepted) {
            Err() << "zwinformes period: " << ZWLoadString(check) << "\n";
            return ExitFailed;
        }
        period.SetupUserInterval(from, to);
    } else if (p.isSet(QStringLiteral("from")) || p.isSet(QStringLiteral("to"))) {
        return cl.UsageError(QStringLiteral("--from and --to go with --unit user"));
    }
    period.SetupData(date, *unit, true, now);

    const qint64 seconds = period.Length().GetTotalSeconds();
    if (p.isSet(QStringLiteral("json"))) {
        const QString length = seconds % 86400 == 0 ? QString::number(seconds / 86400)
                                                    : QString::number(double(seconds) / 86400.0, 'g', 17);
        Out() << "{\"start\":\"" << period.Start().ToIso() << "\",\"end\":\"" << period.End().ToIso()
              << "\",\"lengthDays\":" << length << "}\n";
    } else {
        Out() << "start  " << period.Start().ToIso() << "\n"
              << "end    " << period.End().ToIso() << " (exclusive)\n"
              << "length " << period.Length().GetTotalDays() << " days\n";
    }
    return ExitOk;
}

const ZWCommandRegistration registration({QStringLiteral("period"),
    QStringLiteral("the report period of a unit and a date"), ZWCommand::Needs::Core, Run});

} // namespace
