// zwinformes check-loops: the loop check of a formula library.
#include "app/commands/ZWCommand.h"
#include "app/commands/ZWCommandLine.h"
#include "app/commands/ZWJsonWriter.h"
#include "formula/ZWEvaluator.h"
#include "formula/ZWFormulaLibrary.h"
#include "host/core/XmlDocument.h"

namespace {

QString Meaning(int result)
{
    switch (result) {
    case 0:
        return QStringLiteral("no reference loop");
    case 1:
        return QStringLiteral("a formula refers back to itself through the formulas it uses "
                              "(or the chain of references is deeper than %1)")
            .arg(ZWPolaca::MaxReferenceDepth);
    case 2:
        return QStringLiteral("a formula refers to a name that is not in the library");
    case 3:
        return QStringLiteral("a formula of the library is not a valid formula");
    default:
        return QStringLiteral("the check could not be completed");
    }
}

int Run(const QStringList& args)
{
    ZWCommandLine cl(QStringLiteral("check-loops"),
        QStringLiteral("Runs the loop check over the formula library of FILE: its formulas' names and texts in "
                       "document order. Result: 0 no problem, 1 a reference loop, 2 a reference to a formula "
                       "that is not in the library, 3 a formula that is not valid. Exit status 0 when the "
                       "result is 0, else 1."),
        QString());
    cl.AddOption(QCommandLineOption(QStringLiteral("formules"),
        QStringLiteral("The library: a \"formules\" XML file, or a report (.XRPT) whose \"formules\" is used."),
        QStringLiteral("FILE")));
    cl.AddOption(QCommandLineOption(QStringLiteral("count"),
        QStringLiteral("Check only the first N formulas (-1, the default: all)."), QStringLiteral("N"),
        QStringLiteral("-1")));
    cl.AddOption(QCommandLineOption(QStringLiteral("json"), QStringLiteral("Print one JSON object: {\"result\":R}.")));
    if (const int status = cl.Parse(args); status >= 0)
        return status;
    QCommandLineParser& parser = cl.Parser();
    if (!parser.positionalArguments().isEmpty())
        return cl.UsageError(QStringLiteral("unexpected argument '%1'").arg(parser.positionalArguments().front()));
    if (!parser.isSet(QStringLiteral("formules")))
        return cl.UsageError(QStringLiteral("--formules FILE is required"));
    bool ok = false;
    const int count = parser.value(QStringLiteral("count")).trimmed().toInt(&ok);
    if (!ok || count < -1)
        return cl.UsageError(QStringLiteral("--count must be -1 or a number of formulas, not '%1'")
                                 .arg(parser.value(QStringLiteral("count"))));

    XmlDocument library;
    QString error;
    if (!ZWFormulaLibrary::Load(parser.value(QStringLiteral("formules")), library, error)) {
        Err() << "zwinformes check-loops: " << error << "\n";
        return ExitFailed;
    }
    std::vector<ZWBasicString> names, texts;
    ZWFormulaLibrary::Read(library, names, texts);
    const int result = ZWEvaluator::CheckBucles(names, texts, count);

    if (parser.isSet(QStringLiteral("json"))) {
        ZWJsonWriter json;
        json.BeginObject().Key("result").Int(result).EndObject();
        Out() << QString::fromUtf8(json.Json()) << "\n";
    } else {
        Out() << result << ": " << Meaning(result) << " (" << names.size() << " formulas)\n";
    }
    return result == 0 ? ExitOk : ExitFailed;
}

const ZWCommandRegistration registration(ZWCommand{QStringLiteral("check-loops"),
    QStringLiteral("check a formula library for reference loops"), ZWCommand::Needs::Core, Run});

} // namespace
