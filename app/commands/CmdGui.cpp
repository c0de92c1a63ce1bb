#include "app/commands/ZWCommand.h"
#include "app/commands/ZWCommandLine.h"
#include "app/desktop/ZWMainWindow.h"

#include <QApplication>
#include <QTimer>

namespace {

int Run(const QStringList& args)
{
    ZWCommandLine cl(QStringLiteral("gui"),
        QStringLiteral("The desktop application: the reports of the report folder, each opened in a viewer.\n"
                       "It is also what zwinformes opens without a command."),
        QString());
    if (const int status = cl.Parse(args); status >= 0)
        return status;
    if (!cl.Parser().positionalArguments().isEmpty())
        return cl.UsageError(QStringLiteral("the desktop application takes no arguments"));
    ZWMainWindow window;
    window.show();
    // The database is opened once the window is up, so that a message about
    // it has a window to stand on.
    QTimer::singleShot(0, &window, [&window] {
        window.OpenDatabase();
        // What a crash left unsaved is offered before anything else.
        window.OfferRecovery();
    });
    return QApplication::exec();
}

const ZWCommandRegistration registration({QStringLiteral("gui"),
    QStringLiteral("the desktop application (also without a command)"), ZWCommand::Needs::Widgets, Run});

} // namespace
