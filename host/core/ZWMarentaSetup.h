#pragma once

#include <QSettings>
#include <QString>
#include <memory>
#include <mutex>

// The host's setup: where reports and data files live, where per-user
// settings are kept and which logger database to read.
//
// Each value comes from, in this order: an explicit Set… (the command line),
// an environment variable (ZWINFORMES_REPORT_DIR, ZWINFORMES_DATA_DIR,
// ZWINFORMES_DB, ZWINFORMES_TARIFF, ZWINFORMES_SETTINGS), the settings
// ("ReportDirectory", "LoggerDatabase", "TariffCalendar"), and a default
// under the user's XDG data folder.
class ZWMarentaSetup
{
public:
    static ZWMarentaSetup& instance();

    // Folder of the ".XRPT" files, ending with "/" so a name can be appended.
    QString GetReportDirectory() const;
    // Folder of the ".XSTY" style files and of pictures referred to by a
    // relative path, ending with "/".
    QString GetDataDirectory() const;
    // The logger database: "sqlite:PATH" or "postgresql://user@host:port/db".
    QString GetLoggerDatabase() const;
    // The tariff calendar's name ("" for the first of the file).
    QString GetTariffCalendar() const;
    // The group under which the per-user values are kept.
    QString GetSettingsKey() const { return QStringLiteral("ZWInformes"); }
    // Per-user settings, opened on the settings key (created when missing).
    // Never null; the object may be unwritable (QSettings::status tells).
    std::unique_ptr<QSettings> OpenSettings() const;

    void SetReportDirectory(const QString& path);
    void SetDataDirectory(const QString& path);
    void SetLoggerDatabase(const QString& url);
    void SetTariffCalendar(const QString& name);
    // Keep the settings in this INI file instead of the user's (tests, portable use).
    void SetSettingsFile(const QString& path);

private:
    ZWMarentaSetup() = default;
    QString SettingsFile() const;

    mutable std::mutex m_mutex;
    QString m_reportDir;
    QString m_dataDir;
    QString m_database;
    QString m_tariff;
    QString m_settingsFile;
};
