#include "host/core/ZWLocale.h"

#include <QReadWriteLock>

namespace {

QReadWriteLock g_lock;
bool g_initialised = false;
QLocale g_locale;

QLocale InitialLocale()
{
    const QByteArray env = qgetenv("ZWINFORMES_LOCALE");
    if (!env.isEmpty()) {
        const QLocale l(QString::fromLocal8Bit(env));
        if (l.name() != QLatin1String("C") || env == "C")
            return l;
    }
    return QLocale::system();
}

} // namespace

ZWLocaleInfo LocaleInformationWide()
{
    {
        QReadLocker read(&g_lock);
        if (g_initialised) {
            ZWLocaleInfo info;
            info.locale = g_locale;
            info.decimalSeparator = g_locale.decimalPoint();
            info.thousandSeparator = g_locale.groupSeparator();
            info.firstDayOfWeek = g_locale.firstDayOfWeek();
            return info;
        }
    }
    {
        QWriteLocker write(&g_lock);
        if (!g_initialised) {
            g_locale = InitialLocale();
            g_initialised = true;
        }
    }
    return LocaleInformationWide();
}

bool ZWSetLocaleOverride(const QString& name)
{
    QLocale locale = QLocale::system();
    if (!name.isEmpty()) {
        locale = QLocale(name);
        // QLocale falls back to "C" for names it does not know.
        if (locale.name() == QLatin1String("C") && name != QLatin1String("C") && name != QLatin1String("POSIX"))
            return false;
    }
    QWriteLocker write(&g_lock);
    g_locale = locale;
    g_initialised = true;
    return true;
}
