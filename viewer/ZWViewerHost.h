#pragma once

#include <QString>
#include <QStringList>

// What the host program does around the viewer, apart from any window:
// the reports of the report folder, the unit and report a viewer opens
// with ("LastReportGroup", "LastInforme"), and the logger database the
// reports read ("LoggerDatabase").
class ZWViewerHost
{
public:
    // The names (file titles) of the ".XRPT" files of the report folder, in
    // the locale's order. Only ".XRPT" exactly: "Name.XRPT.bak" is a backup.
    static QStringList ReportNames();
    // The unit last chosen in a viewer, or the day.
    static int StartUnit();
    // The report last opened ("LastInforme"), empty when none.
    static QString LastReport();
    static void RememberReport(const QString& name);

    // Opens the logger database `url` and makes it the one every report
    // reads. False, with a message for the user in `error`, when the text is
    // not a database address or the database cannot be opened; the database
    // in use then stays.
    static bool OpenLoggerDatabase(const QString& url, QString* error);
    // Keeps `url` as the user's logger database ("LoggerDatabase") and uses
    // it from now on, also over an address given at start-up.
    static void StoreLoggerDatabase(const QString& url);
    // The database in use, for display (without its password).
    static QString LoggerDatabaseDisplay();
};
