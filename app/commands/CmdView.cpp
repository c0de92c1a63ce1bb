#include "app/commands/ZWCommand.h"
#include "app/commands/ZWCommandLine.h"
#include "app/commands/ZWViewerLaunch.h"
#include "viewer/widgets/CDlgViewer.h"

#include <QApplication>

namespace {

int Run(const QStringList& args)
{
    ZWCommandLine cl(QStringLiteral("view"),
        QStringLiteral("Opens the viewer on a report (a .XRPT file, or the name of a report of the report\n"
                       "folder) filled with the logged data of the present day, week, month... or of --date."),
        QStringLiteral("REPORT"));
    ZWViewerLaunch launch;
    ZWViewerLaunch::AddOptions(cl.Parser());
    if (const int status = cl.Parse(args); status >= 0)
        return status;
    const QStringList positional = cl.Parser().positionalArguments();
    if (positional.size() != 1)
        return cl.UsageError(QStringLiteral("expected one REPORT"));
    if (const int status = launch.Prepare(cl, positional[0]); status >= 0)
        return status;
    CDlgViewer viewer;
    viewer.show();
    if (!launch.Open(viewer))
        return ExitFailed;
    return QApplication::exec();
}

const ZWCommandRegistration registration(
    {QStringLiteral("view"), QStringLiteral("open the viewer on a report"), ZWCommand::Needs::Widgets, Run});

} // namespace
