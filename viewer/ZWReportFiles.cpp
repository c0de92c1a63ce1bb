#include "viewer/ZWReportFiles.h"

#include "host/core/ZWMarentaSetup.h"
#include "host/core/ZWSettingsKeys.h"
#include "viewer/ZWReportPeriod.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>

namespace {

const QString kExtension = QStringLiteral(".XRPT");

// The report files of `dir`, the extension matched without regard to case.
QFileInfoList ReportFiles(const QDir& folder)
{
    QDir dir(folder);
    dir.setNameFilters({QLatin1Char('*') + kExtension});
    dir.setFilter(QDir::Files);
    dir.setSorting(QDir::Name | QDir::LocaleAware);
    return dir.entryInfoList();
}

} // namespace

QStringList ZWReportFiles::ReportNames()
{
    QStringList names;
    for (const QFileInfo& info : ReportFiles(QDir(ZWMarentaSetup::instance().GetReportDirectory()))) {
        // "x.XRPT" and "x.xrpt" side by side are one name in the list.
        const QString name = info.completeBaseName();
        if (!names.contains(name))
            names << name;
    }
    return names;
}

QString ZWReportFiles::ReportPath(const QString& name)
{
    if (name.isEmpty())
        return QString();
    const QString folder = ZWMarentaSetup::instance().GetReportDirectory();
    const QString portable = QDir::fromNativeSeparators(name);
    if (portable.contains(QLatin1Char('/')) || name.contains(QLatin1Char('\\')) || QDir::isAbsolutePath(name))
        return name;
    if (name.endsWith(kExtension, Qt::CaseInsensitive)) {
        if (QFileInfo(name).isFile() || !QFileInfo(folder + name).isFile())
            return name;
        return folder + name;
    }
    // The exact spelling first, then the extension in another case.
    const QString exact = folder + name + kExtension;
    if (QFileInfo(exact).isFile())
        return exact;
    for (const QFileInfo& info : ReportFiles(QDir(folder)))
        if (info.completeBaseName() == name)
            return info.filePath();
    return exact;
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
