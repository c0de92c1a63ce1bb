#include "app/commands/ZWCommand.h"
#include "app/commands/ZWCommandLine.h"
#include "host/core/ZWMarentaSetup.h"
#include "template/widgets/CDlgAddRemoveStyle.h"

namespace {

int Run(const QStringList& args)
{
    ZWCommandLine cl(QStringLiteral("styles"),
        QStringLiteral("The text styles of the data folder (--data-dir): list, create, modify and remove them."),
        QString());
    if (const int status = cl.Parse(args); status >= 0)
        return status;
    if (!cl.Parser().positionalArguments().isEmpty())
        return cl.UsageError(QStringLiteral("the styles dialog takes no arguments"));
    CDlgAddRemoveStyle dialog;
    dialog.exec();
    return ExitOk;
}

const ZWCommandRegistration registration(
    {QStringLiteral("styles"), QStringLiteral("list, create, modify and remove the text styles of the data folder"),
        ZWCommand::Needs::Widgets, Run});

} // namespace
