#include "host/core/ZWMarentaSetup.h"
#include "host/core/ZWSettingsKeys.h"

#include <QDir>
#include <QStandardPaths>

namespace {

QString WithSlash(QString path)
{
    if (!path.isEmpty() && !path.endsWith(QLatin1Char('/')))
        path += QLatin1Char('/');
    return path;
}

QString Env(const char* name)
{
    return QString::fromLocal8Bit(qgetenv(name));
}

QString BaseFolder()
{
    QString base = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    if (base.isEmpty())
        base = QDir::homePath() + QStringLiteral("/.local/share");
    return base + QStringLiteral("/zwinformes/");
}

} // namespace

ZWMarentaSetup& ZWMarentaSetup::instance()
{
    static ZWMarentaSetup setup;
    return setup;
}

QString ZWMarentaSetup::GetReportDirectory() const
{
    {
        std::lock_guard lock(m_mutex);
        if (!m_reportDir.isEmpty())
            return m_reportDir;
    }
    const QString env = Env("ZWINFORMES_REPORT_DIR");
    if (!env.isEmpty())
        return WithSlash(env);
    const QString stored = OpenSettings()->value(ZWSettingsKeys::ReportDirectory).toString();
    if (!stored.isEmpty())
        return WithSlash(stored);
    return BaseFolder() + QStringLiteral("reports/");
}

QString ZWMarentaSetup::GetDataDirectory() const
{
    std::lock_guard lock(m_mutex);
    if (!m_dataDir.isEmpty())
        return m_dataDir;
    const QString env = Env("ZWINFORMES_DATA_DIR");
    return env.isEmpty() ? BaseFolder() + QStringLiteral("data/") : WithSlash(env);
}

QString ZWMarentaSetup::GetLoggerDatabase() const
{
    {
        std::lock_guard lock(m_mutex);
        if (!m_database.isEmpty())
            return m_database;
    }
    const QString env = Env("ZWINFORMES_DB");
    if (!env.isEmpty())
        return env;
    const QString stored = OpenSettings()->value(ZWSettingsKeys::LoggerDatabase).toString();
    if (!stored.isEmpty())
        return stored;
    return QStringLiteral("sqlite:") + BaseFolder() + QStringLiteral("logger.sqlite");
}

QString ZWMarentaSetup::GetTariffCalendar() const
{
    {
        std::lock_guard lock(m_mutex);
        if (!m_tariff.isEmpty())
            return m_tariff;
    }
    const QString env = Env("ZWINFORMES_TARIFF");
    if (!env.isEmpty())
        return env;
    return OpenSettings()->value(ZWSettingsKeys::TariffCalendar).toString();
}

void ZWMarentaSetup::SetTariffCalendar(const QString& name)
{
    std::lock_guard lock(m_mutex);
    m_tariff = name;
}

QString ZWMarentaSetup::SettingsFile() const
{
    std::lock_guard lock(m_mutex);
    if (!m_settingsFile.isEmpty())
        return m_settingsFile;
    return Env("ZWINFORMES_SETTINGS");
}

std::unique_ptr<QSettings> ZWMarentaSetup::OpenSettings() const
{
    const QString file = SettingsFile();
    std::unique_ptr<QSettings> settings = file.isEmpty()
        ? std::make_unique<QSettings>(
            QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("ZWInformes"), QStringLiteral("zwinformes"))
        : std::make_unique<QSettings>(file, QSettings::IniFormat);
    settings->beginGroup(GetSettingsKey());
    return settings;
}

void ZWMarentaSetup::SetReportDirectory(const QString& path)
{
    std::lock_guard lock(m_mutex);
    m_reportDir = WithSlash(path);
}

void ZWMarentaSetup::SetDataDirectory(const QString& path)
{
    std::lock_guard lock(m_mutex);
    m_dataDir = WithSlash(path);
}

void ZWMarentaSetup::SetLoggerDatabase(const QString& url)
{
    std::lock_guard lock(m_mutex);
    m_database = url;
}

void ZWMarentaSetup::SetSettingsFile(const QString& path)
{
    std::lock_guard lock(m_mutex);
    m_settingsFile = path;
}
