#include "host/core/ZWPath.h"

#include "host/core/ZWMarentaSetup.h"

#include <QDir>

QString RelativePathToFullPath(const QString& path)
{
    QString p = path.trimmed();
    p.replace(QLatin1Char('\\'), QLatin1Char('/'));
    if (p.isEmpty())
        return QString();
    // "C:/pictures/logo.png" written on Windows is absolute there too.
    const bool drive = p.size() > 2 && p.at(1) == QLatin1Char(':') && p.at(2) == QLatin1Char('/');
    if (QDir::isAbsolutePath(p) || drive)
        return QDir::cleanPath(p);
    return QDir::cleanPath(ZWMarentaSetup::instance().GetDataDirectory() + p);
}
