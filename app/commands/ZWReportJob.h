#pragma once

#include "viewer/ZWReportData.h"

#include <QCommandLineParser>
#include <QString>
#include <QThread>
#include <memory>

class ZWCommandLine;

// What the values and render commands share: the report, the logger
// database, the unit and date of the period, and a gathering run on a
// worker thread with a progress bar on the terminal.
class ZWReportJob
{
public:
    ZWReportJob() = default;
    ZWReportJob(const ZWReportJob&) = delete;
    ZWReportJob& operator=(const ZWReportJob&) = delete;
    ~ZWReportJob() { FinishGathering(); }
    // Adds --unit, --date, --now, --from, --to to the parser (--db and the
    // other global options are taken before any command).
    static void AddOptions(QCommandLineParser& parser);
    // Sets `period` from --unit, --date, --now, --from and --to, and `now`
    // from --now (default the clock). Returns -1 to go on or the exit
    // status to return (2 for a malformed option, 1 for a user interval
    // that its checks refuse).
    static int ReadPeriod(ZWCommandLine& cl, ZWReportPeriod& period, ZWDateTime& now);
    // Reads the options, opens the database and the report and sets the
    // period. Returns -1 to go on or the exit status to return.
    int Prepare(ZWCommandLine& cl, const QString& report);
    // Opens the database and the report, leaving the period to the caller.
    // Returns -1 to go on or the exit status to return.
    int Open(ZWCommandLine& cl, const QString& report);
    // Gathers the period's data and computes the value document. False (with
    // a message on stderr) when the logged data could not be read.
    bool Gather();
    // The gathering alone, on a worker thread, reporting to `progress` (may
    // be null); says nothing. False when the logged data could not be read
    // (Data().LastError() says why).
    bool GatherQuietly(ZWProgress* progress);
    // The same in two steps, so that the caller can work meanwhile (on
    // anything but Data()): Start begins the gathering of the period set,
    // Finish waits for it and says whether it read the logged data.
    void StartGathering(ZWProgress* progress);
    bool FinishGathering();

    ZWReportData& Data() { return m_data; }
    const QString& ReportPath() const { return m_path; }

private:
    ZWReportData m_data;
    QString m_path;
    std::unique_ptr<QThread> m_worker;
    bool m_gathered = false;
};
