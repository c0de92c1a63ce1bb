#pragma once

#include "host/store/ZWSqlLoggerStore.h"

#include <QString>
#include <memory>

// The one way to open the logger database a report reads: from an address
// text (the --db option, ZWINFORMES_DB, the "LoggerDatabase" setting or the
// default, as ZWMarentaSetup resolves them). Used by every command and by
// the desktop application.
class ZWLoggerDatabase
{
public:
    struct Opened
    {
        std::shared_ptr<ZWSqlLoggerStore> store;
        // Why it did not open; `badAddress` when the text is no database
        // address at all (a usage error on the command line).
        QString error;
        bool badAddress = false;
        explicit operator bool() const { return store != nullptr; }
    };

    // Readers open an existing database only: a missing SQLite file, or a
    // database without the logger's tables, is refused with a message that
    // says so. Only import and the demo data pass CreateMissing.
    static Opened Open(
        const QString& address, ZWSqlLoggerStore::Creation creation = ZWSqlLoggerStore::Creation::OpenExisting);
    // The configured database (ZWMarentaSetup::GetLoggerDatabase), with the
    // configured tariff calendar (LoadTariffCalendar; a calendar that cannot
    // be loaded is logged, and tariff filters are then unknown names).
    static Opened OpenConfigured(ZWSqlLoggerStore::Creation creation = ZWSqlLoggerStore::Creation::OpenExisting);
    // Sets the calendar `name` (empty: the configured one, or else the first)
    // of the data folder's tariff file on `store`. Without the file and
    // without a name configured there is none, and that is no fault.
    static bool LoadTariffCalendar(ZWSqlLoggerStore& store, const QString& name, QString* error);
    // Opens `address` and makes it the database every device variable reads
    // (ZWDriverSupport). False, with a message for the user in `error`,
    // leaving the database in use as it was.
    static bool Install(const QString& address, QString* error);
    // Keeps `address` as the user's choice ("LoggerDatabase") and uses it
    // from now on, also over an address given at start-up.
    static void Remember(const QString& address);
    // The configured address for display (without its password).
    static QString Display();
};
