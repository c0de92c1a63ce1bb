#include "app/commands/ZWCommand.h"
#include "app/commands/ZWCommandLine.h"
#include "editor/ZWRecovery.h"
#include "editor/widgets/CDlgEditor.h"
#include "editor/widgets/ZWEditorFrame.h"
#include "host/core/ZWMarentaSetup.h"
#include "host/store/ZWLoggerDatabase.h"
#include "viewer/ZWReportFiles.h"

#include <QApplication>
#include <QFileInfo>
#include <QSettings>

namespace {

int Run(const QStringList& args)
{
    ZWCommandLine cl(QStringLiteral("edit"),
        QStringLiteral("Opens a report (a .XRPT file, or the name of a report of the report folder) in the\n"
                       "editor dialog: draw cards with a card tool, select, move and resize them with the\n"
                       "mouse, lay them out, set their properties, copy, paste, delete, undo and redo.\n"
                       "Save writes the report back, the previous file kept as NAME.XRPT.bak. A REPORT\n"
                       "that does not exist is a new report saved under that file."),
        QStringLiteral("REPORT"));
    if (const int status = cl.Parse(args); status >= 0)
        return status;
    const QStringList positional = cl.Parser().positionalArguments();
    if (positional.size() != 1)
        return cl.UsageError(QStringLiteral("expected one REPORT"));
    const QString path = ZWReportFiles::ReportPath(positional[0]);
    if (QFileInfo(path).isDir()) {
        Err() << "zwinformes edit: " << path << " is a folder, not a report\n";
        return ExitFailed;
    }
    // The logged data's variables are offered while formulas are written
    // and the preview shows values; editing goes on without them.
    QString error;
    if (!ZWLoggerDatabase::Install(ZWMarentaSetup::instance().GetLoggerDatabase(), &error))
        Err() << "zwinformes edit: " << error << "\n";
    CDlgEditor editor;
    editor.Setup(path);
    editor.Frame()->SetRecovery(
        std::make_shared<ZWRecovery>(ZWRecovery::FolderBeside(ZWMarentaSetup::instance().OpenSettings()->fileName())));
    editor.show();
    editor.exec();
    return ExitOk;
}

const ZWCommandRegistration registration(
    {QStringLiteral("edit"), QStringLiteral("open a report in the editor dialog"), ZWCommand::Needs::Widgets, Run});

} // namespace
