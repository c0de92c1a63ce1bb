#include "app/commands/ZWReportJob.h"

#include "app/commands/ZWCommand.h"
#include "app/commands/ZWCommandLine.h"
#include "app/commands/ZWTerminalProgress.h"
#include "host/core/ZWLoadString.h"
#include "host/core/ZWMarentaSetup.h"
#include "host/drivers/ZWDriverSupport.h"
#include "host/store/ZWLoggerDatabase.h"
#include "host/store/ZWLoggerUrl.h"
#include "host/store/ZWSqlLoggerStore.h"
#include "viewer/ZWUserInterval.h"

#include <QFileInfo>
#include <QThread>

void ZWReportJob::AddOptions(QCommandLineParser& p)
{
    p.addOption({QStringLiteral("unit"), QStringLiteral("day, week, month, 3month, year or user (default day)."),
        QStringLiteral("U"), QStringLiteral("day")});
    p.addOption({QStringLiteral("date"),
        QStringLiteral("A date in the period (default: now, the period that contains the present)."),
        QStringLiteral("DATETIME")});
    p.addOption(
        {QStringLiteral("now"), QStringLiteral("The present (default: the clock)."), QStringLiteral("DATETIME")});
    p.addOption({QStringLiteral("from"), QStringLiteral("Start of a user interval."), QStringLiteral("DATETIME")});
    p.addOption({QStringLiteral("to"), QStringLiteral("End of a user interval."), QStringLiteral("DATETIME")});
}

namespace {

bool ReadDate(QCommandLineParser& p, const QString& option, ZWDateTime& out, QString& error)
{
    if (!String2DateTime(out, p.value(option))) {
        error = QStringLiteral("--%1: '%2' is not a date-time (use 2024-03-05T09:05:07)").arg(option, p.value(option));
        return false;
    }
    return true;
}

} // namespace

int ZWReportJob::ReadPeriod(ZWCommandLine& cl, ZWReportPeriod& period, ZWDateTime& now)
{
    QCommandLineParser& p = cl.Parser();
    const std::optional<int> unit = ZWReportPeriod::UnitFromName(p.value(QStringLiteral("unit")));
    if (!unit)
        return cl.UsageError(QStringLiteral("unknown unit '%1'").arg(p.value(QStringLiteral("unit"))));
    QString error;
    now = ZWDateTime::LTC();
    if (p.isSet(QStringLiteral("now")) && !ReadDate(p, QStringLiteral("now"), now, error))
        return cl.UsageError(error);
    ZWDateTime date = now;
    if (p.isSet(QStringLiteral("date")) && !ReadDate(p, QStringLiteral("date"), date, error))
        return cl.UsageError(error);
    period.Reset(*unit);
    if (*unit == ID_GROUPBY_USER) {
        if (!p.isSet(QStringLiteral("from")) || !p.isSet(QStringLiteral("to")))
            return cl.UsageError(QStringLiteral("--unit user needs --from and --to"));
        ZWDateTime from, to;
        if (!ReadDate(p, QStringLiteral("from"), from, error) || !ReadDate(p, QStringLiteral("to"), to, error))
            return cl.UsageError(error);
        const ZWUserInterval::Check check = ZWUserInterval::Validate(from, to, now);
        if (check != ZWUserInterval::Accepted) {
            Err() << "zwinformes: " << ZWLoadString(check) << "\n";
            return ExitFailed;
        }
        period.SetupUserInterval(from, to);
    } else if (p.isSet(QStringLiteral("from")) || p.isSet(QStringLiteral("to"))) {
        return cl.UsageError(QStringLiteral("--from and --to go with --unit user"));
    }
    period.SetupData(date, *unit, true, now);
    return -1;
}

int ZWReportJob::Prepare(ZWCommandLine& cl, const QString& report)
{
    ZWDateTime now;
    ZWReportPeriod period;
    if (const int status = ReadPeriod(cl, period, now); status >= 0)
        return status;
    if (const int status = Open(cl, report); status >= 0)
        return status;
    m_data.SetNow(now);
    m_data.Period() = period;
    return -1;
}

int ZWReportJob::Open(ZWCommandLine& cl, const QString& report)
{
    ZWLoggerDatabase::Opened opened = ZWLoggerDatabase::OpenConfigured();
    if (opened.badAddress)
        return cl.UsageError(QStringLiteral("--db: %1").arg(opened.error));
    if (!opened) {
        // The store's message names the database already.
        Err() << "zwinformes: " << opened.error << "\n";
        return ExitFailed;
    }
    ZWDriverSupport::SetStore(opened.store);

    m_path = report;
    if (!m_data.Setup(m_path)) {
        Err() << "zwinformes: cannot read the report: " << m_data.DesignError() << "\n";
        return ExitFailed;
    }
    return -1;
}

bool ZWReportJob::GatherQuietly(ZWProgress* progress)
{
    StartGathering(progress);
    return FinishGathering();
}

void ZWReportJob::StartGathering(ZWProgress* progress)
{
    // The gathering runs on a worker thread of its own, as in the viewer.
    FinishGathering();
    m_gathered = false;
    m_worker.reset(QThread::create([this, progress] { m_gathered = m_data.SetupDataWork(true, progress); }));
    m_worker->start();
}

bool ZWReportJob::FinishGathering()
{
    if (!m_worker)
        return m_gathered;
    m_worker->wait();
    m_worker.reset();
    return m_gathered;
}

bool ZWReportJob::Gather()
{
    ZWTerminalProgress progress;
    const bool ok = GatherQuietly(&progress);
    progress.End(ok);
    if (!ok)
        Err() << "zwinformes: the logged data could not be read: " << m_data.LastError() << "\n";
    else if (!m_data.Notice().isEmpty())
        Err() << "zwinformes: " << m_data.Notice() << "\n";
    return ok;
}
