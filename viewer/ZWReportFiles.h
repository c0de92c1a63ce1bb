#pragma once

#include <QString>
#include <QStringList>

// The reports of the report folder and what the user chose last: the report
// ("LastInforme") and the unit ("LastReportGroup") a viewer opens with.
class ZWReportFiles
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
};
