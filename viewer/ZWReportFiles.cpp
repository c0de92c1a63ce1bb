#include "viewer/ZWReportFiles.h"

#include "host/core/ZWMarentaSetup.h"
#include "host/core/ZWSettingsKeys.h"
#include "viewer/ZWReportPeriod.h"

#include <QDir>
#include <QSettings>

QStringList ZWReportFiles::ReportNames()
{
    QDir dir(ZWMarentaSetup::instance().GetReportDirectory());
    dir.setNameFilters({QStringLiteral("*.XRPT")});
    dir.setFilter(QDir::Files | QDir::CaseSensitive);
    dir.setSorting(QDir::Name | QDir::LocaleAware);
    QStringList names;
    for (const QFileInfo& info : dir.entryInfoList())
        names << info.completeBaseName();
    return names;
}

int ZWReportFiles::StartUnit()
{
    return ZWReportPeriod::ReadLastReportGroup(*ZWMarentaSetup::instance().OpenSettings()).value_or(ID_GROUPBY_DAY);
}

QString ZWReportFiles::LastReport()
{
    return ZWMarentaSetup::instance().OpenSettings()->value(ZWSettingsKeys::LastInforme).toString();
}

void ZWReportFiles::RememberReport(const QString& name)
{
    ZWMarentaSetup::instance().OpenSettings()->setValue(ZWSettingsKeys::LastInforme, name);
}
