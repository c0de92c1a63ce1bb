#include "viewer/ZWViewerHost.h"

#include "host/ZWDriverSupport.h"
#include "host/ZWLoggerUrl.h"
#include "host/ZWMarentaSetup.h"
#include "host/ZWSqlLoggerStore.h"
#include "viewer/ZWReportPeriod.h"

#include <QDir>
#include <QSettings>

namespace {

const QString kLastInforme = QStringLiteral("LastInforme");
const QString kLoggerDatabase = QStringLiteral("LoggerDatabase");

} // namespace

QStringList ZWViewerHost::ReportNames()
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

int ZWViewerHost::StartUnit()
{
    return ZWReportPeriod::ReadLastReportGroup(*ZWMarentaSetup::instance().OpenSettings()).value_or(ID_GROUPBY_DAY);
}

QString ZWViewerHost::LastReport()
{
    return ZWMarentaSetup::instance().OpenSettings()->value(kLastInforme).toString();
}

void ZWViewerHost::RememberReport(const QString& name)
{
    ZWMarentaSetup::instance().OpenSettings()->setValue(kLastInforme, name);
}

bool ZWViewerHost::OpenLoggerDatabase(const QString& text, QString* error)
{
    ZWLoggerUrl url;
    if (!url.Parse(text, error))
        return false;
    auto store = std::make_shared<ZWSqlLoggerStore>(url);
    if (!store->Open(error))
        return false;
    ZWDriverSupport::SetStore(store);
    return true;
}

void ZWViewerHost::StoreLoggerDatabase(const QString& url)
{
    ZWMarentaSetup::instance().OpenSettings()->setValue(kLoggerDatabase, url);
    ZWMarentaSetup::instance().SetLoggerDatabase(url);
}

QString ZWViewerHost::LoggerDatabaseDisplay()
{
    const QString text = ZWMarentaSetup::instance().GetLoggerDatabase();
    ZWLoggerUrl url;
    return url.Parse(text, nullptr) ? url.Display() : text;
}
