#include "app/commands/ZWCommand.h"
#include "app/commands/ZWCommandLine.h"
#include "app/commands/ZWPageEditWindow.h"
#include "viewer/ZWReportFiles.h"

#include <QApplication>

namespace {

int Run(const QStringList& args)
{
    ZWCommandLine cl(QStringLiteral("edit"),
        QStringLiteral("Opens the pages of a report (a .XRPT file, or the name of a report of the report\n"
                       "folder) in the designer: draw cards with a card tool, select, move and resize them\n"
                       "with the mouse, lay them out, copy, paste, delete, undo and redo. Save writes the\n"
                       "report back, the previous file kept as NAME.XRPT.bak."),
        QStringLiteral("REPORT"));
    if (const int status = cl.Parse(args); status >= 0)
        return status;
    const QStringList positional = cl.Parser().positionalArguments();
    if (positional.size() != 1)
        return cl.UsageError(QStringLiteral("expected one REPORT"));
    ZWPageEditWindow window;
    QString error;
    if (!window.Open(ZWReportFiles::ReportPath(positional[0]), &error)) {
        Err() << "zwinformes edit: " << error << "\n";
        return ExitFailed;
    }
    window.show();
    return QApplication::exec();
}

const ZWCommandRegistration registration(
    {QStringLiteral("edit"), QStringLiteral("open a report's pages in the designer"), ZWCommand::Needs::Widgets, Run});

} // namespace
