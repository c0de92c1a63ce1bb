#pragma once

#include <QString>

// The names of the per-user settings values (ZWMarentaSetup::OpenSettings),
// shared by the viewer, the editor and the desktop application.
namespace ZWSettingsKeys {

// The report last opened or saved, by name.
inline const QString LastInforme = QStringLiteral("LastInforme");
// The grouping unit last chosen in a viewer ("DAY", "WEEK", "MONTH", "3MONTH", "YEAR", "USER").
inline const QString LastReportGroup = QStringLiteral("LastReportGroup");
// The logger database address chosen in the desktop application.
inline const QString LoggerDatabase = QStringLiteral("LoggerDatabase");
// The tariff calendar (by name, in the data folder's "tariffs.xml") whose
// periods filters name; unset: the file's first calendar.
inline const QString TariffCalendar = QStringLiteral("TariffCalendar");
// The report folder chosen in the desktop application.
inline const QString ReportDirectory = QStringLiteral("ReportDirectory");
// The user interval's bounds: a prefix followed by Year, Month, Day, Hour, Minute or Second.
inline const QString UserIntervalFrom = QStringLiteral("ZWIFrom");
inline const QString UserIntervalTo = QStringLiteral("ZWITo");
// Tool bar layout of the viewer's and the editor's frames.
inline const QString ViewReportBars = QStringLiteral("ViewReportBars");
inline const QString ReportBars = QStringLiteral("ReportBars");
// Where the viewer was last: its inner rectangle when not maximized, and
// whether it was maximized.
inline const QString ViewerGeometry = QStringLiteral("ViewerGeometry");
inline const QString ViewerMaximized = QStringLiteral("ViewerMaximized");

} // namespace ZWSettingsKeys
