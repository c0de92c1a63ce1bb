#include "app/commands/ZWViewerLaunch.h"

#include "app/commands/ZWCommand.h"
#include "app/commands/ZWCommandLine.h"
#include "host/core/ZWLoadString.h"
#include "host/core/ZWMarentaSetup.h"
#include "host/store/ZWLoggerDatabase.h"
#include "viewer/ZWReportData.h"
#include "viewer/ZWReportFiles.h"
#include "viewer/ZWUserInterval.h"
#include "viewer/widgets/CDlgViewer.h"

#include <QFileInfo>

void ZWViewerLaunch::AddOptions(QCommandLineParser& p)
{
    p.addOption({QStringLiteral("unit"),
        QStringLiteral("day, week, month, 3month, year or user (default: the unit last chosen in a viewer, else day)."),
        QStringLiteral("U")});
    p.addOption({QStringLiteral("date"),
        QStringLiteral("A date in the period to show (default: now, the period that contains the present); "
                       "a date on a boundary shows the unit before it."),
        QStringLiteral("DATETIME")});
    p.addOption({QStringLiteral("from"), QStringLiteral("Start of a user interval."), QStringLiteral("DATETIME")});
    p.addOption({QStringLiteral("to"), QStringLiteral("End of a user interval."), QStringLiteral("DATETIME")});
}

int ZWViewerLaunch::Prepare(ZWCommandLine& cl, const QString& report)
{
    QCommandLineParser& p = cl.Parser();
    m_unit = ZWReportFiles::StartUnit();
    if (p.isSet(QStringLiteral("unit"))) {
        const std::optional<int> unit = ZWReportPeriod::UnitFromName(p.value(QStringLiteral("unit")));
        if (!unit)
            return cl.UsageError(QStringLiteral("unknown unit '%1'").arg(p.value(QStringLiteral("unit"))));
        m_unit = *unit;
    }
    for (const char* name : {"date", "from", "to"}) {
        const QString option = QString::fromLatin1(name);
        ZWDateTime t;
        if (p.isSet(option) && !String2DateTime(t, p.value(option)))
            return cl.UsageError(
                QStringLiteral("--%1: '%2' is not a date-time (use 2024-03-05T09:05:07)").arg(option, p.value(option)));
    }
    m_hasDate = p.isSet(QStringLiteral("date"));
    m_dateText = p.value(QStringLiteral("date"));
    m_fromText = p.value(QStringLiteral("from"));
    m_toText = p.value(QStringLiteral("to"));
    if (m_unit == ID_GROUPBY_USER) {
        if (m_fromText.isEmpty() || m_toText.isEmpty())
            return cl.UsageError(QStringLiteral("--unit user needs --from and --to"));
        ZWDateTime from, to;
        String2DateTime(from, m_fromText);
        String2DateTime(to, m_toText);
        const ZWUserInterval::Check check = ZWUserInterval::Validate(from, to, ZWDateTime::LTC());
        if (check != ZWUserInterval::Accepted) {
            Err() << "zwinformes: " << ZWLoadString(check) << "\n";
            return ExitFailed;
        }
    }
    // A file that exists is opened by its path; another name is a report
    // of the report folder.
    const QFileInfo file(report);
    m_report = file.isFile() ? file.absoluteFilePath() : report;
    // A report that cannot be read is refused before any window opens or
    // any data is gathered.
    ZWReportData probe;
    QString path = m_report;
    if (!probe.GetDesign(path)) {
        Err() << "zwinformes: cannot read the report: " << probe.DesignError() << "\n";
        return ExitFailed;
    }

    QString error;
    if (!ZWLoggerDatabase::Install(ZWMarentaSetup::instance().GetLoggerDatabase(), &error)) {
        Err() << "zwinformes: " << error << "\n";
        return ExitFailed;
    }
    return -1;
}

bool ZWViewerLaunch::Open(CDlgViewer& viewer)
{
    if (m_unit == ID_GROUPBY_USER) {
        ZWDateTime from, to;
        String2DateTime(from, m_fromText);
        String2DateTime(to, m_toText);
        viewer.SetupUserInterval(from, to);
    }
    QString name = m_report;
    if (!viewer.Setup(name, m_unit)) {
        Err() << "zwinformes: cannot read the report: " << viewer.Data().DesignError() << "\n";
        return false;
    }
    // The same rule as values, render and period: the whole unit that
    // contains the date, the unit before it for a date on a boundary.
    ZWDateTime date;
    if (m_hasDate && m_unit != ID_GROUPBY_USER && String2DateTime(date, m_dateText))
        viewer.SetupData(date, m_unit, false);
    return true;
}
