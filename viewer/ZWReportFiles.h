#pragma once

#include <QString>
#include <QStringList>

// The reports of the report folder and what the user chose last: the report
// ("LastInforme") and the unit ("LastReportGroup") a viewer opens with.
class ZWReportFiles
{
public:
    // The names (file titles) of the ".XRPT" files of the report folder, in
    // the locale's order; the extension in any letter case ("x.xrpt" too).
    // "Name.XRPT.bak" is a backup, not a report.
    static QStringList ReportNames();
    // The file of a report named on the command line, in the list or in
    // "LastInforme": a name with a folder part ("reports/x.XRPT",
    // "/srv/x", "..\x.xrpt") is a path as it stands; a file name with the
    // extension is the file of the present folder when it exists there,
    // else that file of the report folder; a plain name is the report of
    // the report folder whose title it is, its extension in any case.
    static QString ReportPath(const QString& name);
    // The unit last chosen in a viewer, or the day.
    static int StartUnit();
    // The report last opened ("LastInforme"), empty when none.
    static QString LastReport();
    static void RememberReport(const QString& name);
};
