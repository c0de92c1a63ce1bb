// zwinformes tokens: the tokens of a formula, as the tokenizer reads them.
#include "app/commands/ZWCommand.h"
#include "app/commands/ZWCommandLine.h"
#include "app/commands/ZWJsonWriter.h"
#include "formula/ZWTokenProducer.h"

namespace {

QString KindName(int type)
{
    static const char* const names[] = {"end", "constant", "variable", "addition", "subtraction", "multiplication",
        "division", "power", "unary minus", "left parenthesis", "right parenthesis", "sqrt", "log", "exp", "sin", "cos",
        "tan", "asin", "acos", "atan", "log10", "device variable", "less than", "greater than", "less or equal",
        "greater or equal", "equal", "not equal", "logical and", "logical or", "logical not", "atan2", "separator",
        "doubled sign", "doubled sign", "doubled sign", "doubled sign"};
    if (type == ZWToken::Error)
        return QStringLiteral("error");
    if (type < 0 || type >= int(std::size(names)))
        return QStringLiteral("?");
    return QString::fromLatin1(names[type]);
}

int Run(const QStringList& args)
{
    ZWCommandLine cl(QStringLiteral("tokens"),
        QStringLiteral("Lists the tokens of FORMULA as the tokenizer reads them, up to and including the end of "
                       "the text or the first token it cannot read (type -2). Types: 1 number, 2 name of a formula, "
                       "21 device variable, 3-10 and 22-36 operators and punctuation, 11-20 and 31 functions. "
                       "The exit status is 0 whatever the tokens are: use 'eval' to check a formula."),
        QStringLiteral("FORMULA"));
    cl.AddOption(QCommandLineOption(QStringLiteral("json"),
        QStringLiteral("Print one JSON array: [{\"type\",\"text\",\"number\",\"position\",\"valueType\"}, ...]; "
                       "number is null for tokens that carry none.")));
    cl.SetDashPositionals(true);
    if (const int status = cl.Parse(args); status >= 0)
        return status;
    const QStringList positional = cl.Parser().positionalArguments();
    if (positional.size() != 1)
        return cl.UsageError(QStringLiteral("expected exactly one FORMULA (quote it)"));

    ZWTokenProducer producer(positional.front());
    std::vector<ZWToken> tokens;
    for (;;) {
        ZWToken token;
        producer.GetToken(token);
        tokens.push_back(token);
        if (token.GetType() <= ZWToken::End)
            break;
    }

    if (cl.Parser().isSet(QStringLiteral("json"))) {
        ZWJsonWriter json;
        json.BeginArray();
        for (const ZWToken& token : tokens) {
            json.BeginObject();
            json.Key("type").Int(token.GetType());
            json.Key("text").String(token.Text());
            if (IsNoValue(token.GetDoubleValue()))
                json.Key("number").Null();
            else
                json.Key("number").Number(token.GetDoubleValue());
            json.Key("position").Int(token.GetPosition());
            json.Key("valueType").Int(token.GetValueType());
            json.EndObject();
        }
        json.EndArray();
        Out() << QString::fromUtf8(json.Json()) << "\n";
        return ExitOk;
    }

    Out() << QStringLiteral("%1  %2  %3  %4\n")
                 .arg(QStringLiteral("pos"), 5)
                 .arg(QStringLiteral("type"), 4)
                 .arg(QStringLiteral("kind"), -17)
                 .arg(QStringLiteral("text / number"));
    for (const ZWToken& token : tokens) {
        QString shown = token.Text();
        if (token.GetType() == ZWToken::Constant)
            shown = QString::fromLatin1(ZWJsonWriter::FormatNumber(token.GetDoubleValue()));
        else if (token.GetType() == ZWToken::DeviceVariable)
            shown = QLatin1Char('[') + shown + QLatin1Char(']');
        Out() << QStringLiteral("%1  %2  %3  %4\n")
                     .arg(token.GetPosition(), 5)
                     .arg(token.GetType(), 4)
                     .arg(KindName(token.GetType()), -17)
                     .arg(shown);
    }
    return ExitOk;
}

const ZWCommandRegistration registration(
    ZWCommand{QStringLiteral("tokens"), QStringLiteral("list the tokens of a formula"), ZWCommand::Needs::Core, Run});

} // namespace
