// zwinformes eval: checks a formula and evaluates it.
#include "app/commands/ZWCommand.h"
#include "app/commands/ZWCommandLine.h"
#include "app/commands/ZWJsonWriter.h"
#include "formula/ZWEvaluator.h"
#include "formula/ZWFormulaLibrary.h"
#include "host/core/XmlDocument.h"
#include "host/drivers/ZWDriverSupport.h"
#include "host/drivers/ZWLiveValues.h"

#include <cmath>
#include <optional>

namespace {

// How a result that is no finite number is written, in text and in JSON.
QString NonFiniteText(double value)
{
    return std::isnan(value) ? QStringLiteral("nan") : value > 0 ? QStringLiteral("inf") : QStringLiteral("-inf");
}

QString TokenShown(const ZWToken& token)
{
    if (token.GetType() == ZWToken::DeviceVariable)
        return QLatin1Char('[') + token.Text() + QLatin1Char(']');
    return token.Text();
}

int Run(const QStringList& args)
{
    ZWCommandLine cl(QStringLiteral("eval"),
        QStringLiteral("Checks FORMULA against the formula grammar and evaluates it. Device variables are "
                       "written in square brackets and take their current values from --set; names of other "
                       "formulas are looked up in the library of --formules. Exit status 0 when the formula is "
                       "valid and its evaluation gives a value, 1 when it is invalid or the evaluation returns "
                       "a result code (see 'zwinformes message CODE'), 2 for a usage error. A formula that "
                       "begins with '-' may be given as it is."),
        QStringLiteral("FORMULA"));
    cl.AddOption(QCommandLineOption(QStringLiteral("formules"),
        QStringLiteral("The formula library: a \"formules\" XML file, or a report (.XRPT) whose \"formules\" is "
                       "used."),
        QStringLiteral("FILE")));
    cl.AddOption(QCommandLineOption(QStringLiteral("set"),
        QStringLiteral("Gives device variable NAME (\"device.variable\") the current value VALUE; NAME= makes it "
                       "known without a value. Repeatable. Other device variables are unknown."),
        QStringLiteral("NAME=VALUE")));
    cl.AddOption(QCommandLineOption(QStringLiteral("no-discriminators"),
        QStringLiteral("Accept only plain device.variable names (no filter part).")));
    cl.AddOption(QCommandLineOption(QStringLiteral("json"),
        QStringLiteral("Print one JSON object: {\"analyze\":A,\"code\":C,\"value\":V,\"valueType\":T,"
                       "\"undefined\":[...],\"message\":M}.")));
    cl.SetDashPositionals(true);
    if (const int status = cl.Parse(args); status >= 0)
        return status;
    QCommandLineParser& parser = cl.Parser();
    const QStringList positional = parser.positionalArguments();
    if (positional.size() != 1)
        return cl.UsageError(QStringLiteral("expected exactly one FORMULA (quote it)"));
    const QString formula = positional.front();

    auto live = std::make_shared<ZWLiveValues>();
    for (const QString& assignment : parser.values(QStringLiteral("set"))) {
        const qsizetype eq = assignment.lastIndexOf(QLatin1Char('='));
        if (eq <= 0)
            return cl.UsageError(QStringLiteral("--set expects NAME=VALUE, not '%1'").arg(assignment));
        const QString name = assignment.left(eq);
        const QString text = assignment.mid(eq + 1).trimmed();
        std::optional<double> value;
        if (!text.isEmpty()) {
            bool ok = false;
            value = text.toDouble(&ok);
            if (!ok)
                return cl.UsageError(QStringLiteral("--set %1: '%2' is not a number").arg(name, text));
        }
        live->Set(name, value);
    }

    XmlDocument library;
    const bool hasLibrary = parser.isSet(QStringLiteral("formules"));
    if (hasLibrary) {
        QString error;
        if (!ZWFormulaLibrary::Load(parser.value(QStringLiteral("formules")), library, error)) {
            Err() << "zwinformes eval: " << error << "\n";
            return ExitFailed;
        }
    }
    ZWDriverSupport::SetStore(live);

    ZWEvaluator evaluator(formula);
    const int analyze = evaluator.AnalizeExpression();
    std::optional<int> code;
    double value = ZW_NO_VALUE;
    int valueType = ZWToken::NoValueType;
    if (analyze != -1) {
        if (hasLibrary)
            evaluator.SetFormules(&library);
        evaluator.EnableDiscriminators(!parser.isSet(QStringLiteral("no-discriminators")));
        code = evaluator.Evaluate(value, valueType);
    }
    std::vector<ZWToken> undefined;
    if (code)
        undefined = *evaluator.GetUndefinedTokens();
    QString message;
    if (code)
        ZWEvaluator::ErrorMsg(*code, message);
    ZWDriverSupport::SetStore(nullptr);

    const int status = (analyze == -1 || *code != 0) ? ExitFailed : ExitOk;

    if (parser.isSet(QStringLiteral("json"))) {
        ZWJsonWriter json;
        json.BeginObject();
        json.Key("analyze").Int(analyze);
        if (code)
            json.Key("code").Int(*code);
        else
            json.Key("code").Null();
        // JSON has no infinite numbers: such a value is written as the text
        // eval prints for it ("inf", "-inf", "nan").
        if (code && *code == 0 && !std::isfinite(value))
            json.Key("value").String(NonFiniteText(value));
        else if (code && *code == 0)
            json.Key("value").Number(value);
        else
            json.Key("value").Null();
        if (code)
            json.Key("valueType").Int(valueType);
        else
            json.Key("valueType").Null();
        json.Key("undefined").BeginArray();
        for (const ZWToken& token : undefined)
            json.String(token.Text());
        json.EndArray();
        if (code)
            json.Key("message").String(message);
        else
            json.Key("message").Null();
        json.EndObject();
        Out() << QString::fromUtf8(json.Json()) << "\n";
        return status;
    }

    if (analyze == -1) {
        Out() << "invalid formula: the text does not follow the formula grammar\n";
        // The check stops at the first token it cannot accept.
        const int at = std::max(0, std::min(evaluator.ErrorPosition(), int(formula.size())));
        Out() << "  " << formula << "\n  " << QString(at, QLatin1Char(' ')) << "^\n";
        return status;
    }
    if (*code == 0) {
        if (std::isfinite(value))
            Out() << QString::fromLatin1(ZWJsonWriter::FormatNumber(value));
        else
            Out() << NonFiniteText(value);
        if (valueType == ZWToken::Boolean)
            Out() << (value == 1.0 ? " (true)" : " (false)");
        Out() << "\n";
        return status;
    }
    Out() << "error " << *code << ": " << message << "\n";
    if (!undefined.empty()) {
        QStringList names;
        for (const ZWToken& token : undefined)
            names << TokenShown(token);
        Out() << "undefined: " << names.join(QStringLiteral(", ")) << "\n";
    }
    return status;
}

const ZWCommandRegistration registration(
    ZWCommand{QStringLiteral("eval"), QStringLiteral("check and evaluate a formula"), ZWCommand::Needs::Core, Run});

} // namespace
