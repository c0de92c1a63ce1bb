#pragma once

#include <QCommandLineParser>
#include <QString>

class CDlgViewer;
class ZWCommandLine;

// What the view and screenshot commands share: the options of the period
// (--unit, --date, --from, --to), the logger database, and a viewer opened
// on the report for that period.
class ZWViewerLaunch
{
public:
    static void AddOptions(QCommandLineParser& parser);
    // Reads the options and opens the logger database. Returns -1 to go on,
    // or the exit status to return at once.
    int Prepare(ZWCommandLine& cl, const QString& report);
    // Loads the report into `viewer` and shows the period asked for. False
    // (with a message on stderr) when the report cannot be read.
    bool Open(CDlgViewer& viewer);

private:
    QString m_report;
    int m_unit = 0;
    bool m_hasDate = false;
    QString m_dateText;
    QString m_fromText;
    QString m_toText;
};
