#include "app/commands/ZWCommand.h"
#include "app/commands/ZWCommandLine.h"
#include "formula/ZWFormulaLibrary.h"
#include "formula/widgets/CDlgFormules.h"
#include "host/core/XmlDocument.h"
#include "host/core/ZWMarentaSetup.h"
#include "host/drivers/ZWDriverSupport.h"
#include "host/store/ZWLoggerDatabase.h"
#include "template/ZWTemplate.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace {

// The previous library file is kept beside it, as a report's is.
bool SaveLibrary(const QString& path, const XmlDocument& library, QString& error)
{
    if (QFileInfo(path).isFile()) {
        QFile previous(path);
        QSaveFile backup(ZWTemplate::BackupPath(path));
        QByteArray old;
        if (!previous.open(QIODevice::ReadOnly) || (old = previous.readAll(), previous.error() != QFile::NoError)
            || !backup.open(QIODevice::WriteOnly) || backup.write(old) != old.size() || !backup.commit()) {
            error = QStringLiteral("cannot keep the previous file as %1").arg(ZWTemplate::BackupPath(path));
            return false;
        }
    }
    if (!library.SaveAs(path)) {
        error = QStringLiteral("cannot write %1").arg(path);
        return false;
    }
    return true;
}

int Count(const XmlDocument& library)
{
    return library.IsEmpty() ? 0 : int(library.Root().Nodes(QStringLiteral("formule")).size());
}

bool SameFormulas(const XmlDocument& a, const XmlDocument& b)
{
    std::vector<QString> an, at, bn, bt;
    ZWFormulaLibrary::Read(a, an, at);
    ZWFormulaLibrary::Read(b, bn, bt);
    return an == bn && at == bt;
}

int Run(const QStringList& args)
{
    ZWCommandLine cl(QStringLiteral("formulas"),
        QStringLiteral("Opens the formula library dialog on FILE: a report (.XRPT), whose own library is edited,\n"
                       "or a \"formules\" library file (a missing file starts an empty library). OK writes the\n"
                       "file back atomically, the previous one kept as FILE.bak; a report is written as resave\n"
                       "writes it. The device variables of the logger database (--db) are offered and give the\n"
                       "formulas their present values."),
        QStringLiteral("FILE"));
    if (const int status = cl.Parse(args); status >= 0)
        return status;
    const QStringList positional = cl.Parser().positionalArguments();
    if (positional.size() != 1)
        return cl.UsageError(QStringLiteral("expected one FILE"));
    const QString path = positional[0];

    ZWTemplate report;
    bool isReport = false;
    XmlDocument library;
    QString error;
    if (QFileInfo(path).exists()) {
        XmlDocument file;
        if (!file.Load(path)) {
            Err() << "zwinformes formulas: cannot read " << path << ": " << file.ErrorString() << "\n";
            return ExitFailed;
        }
        isReport = file.Root().Name() == QLatin1String("design");
        if (isReport) {
            report.Read(file);
            library = report.formules;
        } else if (!ZWFormulaLibrary::Load(path, library, error)) {
            Err() << "zwinformes formulas: " << error << "\n";
            return ExitFailed;
        }
    }
    if (library.IsEmpty())
        library.Create(QStringLiteral("formules"));

    // Without a database the formulas are still edited; device variables
    // are then unknown to the checks.
    if (!ZWLoggerDatabase::Install(ZWMarentaSetup::instance().GetLoggerDatabase(), &error))
        Err() << "zwinformes formulas: " << error << "\n";

    CDlgFormules dialog(library);
    dialog.setWindowTitle(dialog.windowTitle() + QStringLiteral(" - ") + QFileInfo(path).fileName());
    const bool accepted = dialog.exec() == QDialog::Accepted;
    ZWDriverSupport::SetStore(nullptr);
    if (!accepted || SameFormulas(dialog.GetFormules(), library)) {
        Out() << path << ": not changed\n";
        return ExitOk;
    }

    const XmlDocument& edited = dialog.GetFormules();
    if (isReport) {
        // A report carries a library only when it holds formulas.
        report.SetFormules(Count(edited) > 0 ? edited.Root() : XmlDocument::XmlNode());
        if (!report.Save(path, &error)) {
            Err() << "zwinformes formulas: " << error << "\n";
            return ExitFailed;
        }
    } else if (!SaveLibrary(path, edited, error)) {
        Err() << "zwinformes formulas: " << error << "\n";
        return ExitFailed;
    }
    Out() << path << ": " << Count(edited) << " formula(s)\n";
    return ExitOk;
}

const ZWCommandRegistration registration({QStringLiteral("formulas"),
    QStringLiteral("edit the formula library of a report or a library file"), ZWCommand::Needs::Widgets, Run});

} // namespace
