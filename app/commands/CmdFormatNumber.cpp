#include "app/commands/ZWCommand.h"
#include "app/commands/ZWCommandLine.h"
#include "template/ZWCardFormule.h"
#include "template/ZWFormat.h"

#include <QLocale>
#include <QRegularExpression>

namespace {

int Run(const QStringList& args)
{
    ZWCommandLine cl(QStringLiteral("format-number"),
        QStringLiteral("Prints VALUE as a formula card with the number format F shows it.\n"
                       "F is [0]W.[0]D: W digits of integer part (0 first: zero-filled), D decimals\n"
                       "(0 first: trailing zeros kept); \".3\" is free width and 3 decimals."),
        QStringLiteral("VALUE"));
    const QCommandLineOption format(QStringLiteral("format"), QStringLiteral("the number format (default .3)"),
        QStringLiteral("F"), QStringLiteral(".3"));
    const QCommandLineOption thousands(QStringLiteral("thousands"), QStringLiteral("group thousands"));
    cl.Parser().addOption(format);
    cl.Parser().addOption(thousands);

    // A negative VALUE is not an option.
    static const QRegularExpression negative(QStringLiteral("^-[0-9.]"));
    QStringList options, values;
    for (const QString& a : args)
        (negative.match(a).hasMatch() && !args.contains(QStringLiteral("--")) ? values : options) << a;
    if (!values.isEmpty())
        options << QStringLiteral("--") << values;
    if (const int status = cl.Parse(options); status >= 0)
        return status;

    const QStringList positional = cl.Parser().positionalArguments();
    if (positional.size() != 1)
        return cl.UsageError(QStringLiteral("expected one VALUE"));
    bool ok = false;
    const double value = QLocale::c().toDouble(positional[0].trimmed(), &ok);
    if (!ok)
        return cl.UsageError(QStringLiteral("'%1' is not a number").arg(positional[0]));

    int integerDigits = -1, decimals = 3;
    bool fillIntegerZeros = false, fillDecimalZeros = false;
    ZWCardFormule::ParseFormat(cl.Parser().value(format), integerDigits, decimals, fillIntegerZeros, fillDecimalZeros);
    Out() << ZWFormat::FormatDouble(
        value, integerDigits, decimals, cl.Parser().isSet(thousands), fillIntegerZeros, fillDecimalZeros)
          << "\n";
    return ExitOk;
}

const ZWCommandRegistration registration({QStringLiteral("format-number"),
    QStringLiteral("format a number as a formula card does"), ZWCommand::Needs::Core, Run});

} // namespace
