// zwinformes message: the message text of a formula engine result code.
#include "app/commands/ZWCommand.h"
#include "app/commands/ZWCommandLine.h"
#include "app/commands/ZWJsonWriter.h"
#include "formula/ZWEvaluator.h"

namespace {

int Run(const QStringList& args)
{
    ZWCommandLine cl(QStringLiteral("message"),
        QStringLiteral("Prints the message that the formula engine shows for the result code CODE "
                       "(1 to 64; any other code gives the text for an unknown code)."),
        QStringLiteral("CODE"));
    cl.AddOption(QCommandLineOption(QStringLiteral("json"),
        QStringLiteral("Print one JSON object: {\"code\":C,\"id\":TEXT_ID,\"message\":\"...\"}.")));
    cl.SetDashPositionals(true);
    if (const int status = cl.Parse(args); status >= 0)
        return status;
    const QStringList positional = cl.Parser().positionalArguments();
    if (positional.size() != 1)
        return cl.UsageError(QStringLiteral("expected exactly one CODE"));
    bool ok = false;
    const int code = positional.front().trimmed().toInt(&ok);
    if (!ok)
        return cl.UsageError(QStringLiteral("CODE must be an integer, not '%1'").arg(positional.front()));

    ZWBasicString text;
    ZWEvaluator::ErrorMsg(code, text);
    if (cl.Parser().isSet(QStringLiteral("json"))) {
        ZWJsonWriter json;
        json.BeginObject();
        json.Key("code").Int(code);
        json.Key("id").Int(ZWEvaluator::ErrorMsgId(code));
        json.Key("message").String(text);
        json.EndObject();
        Out() << QString::fromUtf8(json.Json()) << "\n";
    } else {
        Out() << text << "\n";
    }
    return ExitOk;
}

const ZWCommandRegistration registration(ZWCommand{QStringLiteral("message"),
    QStringLiteral("the message text of a formula result code"), ZWCommand::Needs::Core, Run});

} // namespace
