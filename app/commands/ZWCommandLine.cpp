#include "app/commands/ZWCommandLine.h"

#include "app/commands/ZWCommand.h"

ZWCommandLine::ZWCommandLine(const QString& command, const QString& description, const QString& positionalSyntax)
    : m_command(command)
{
    m_parser.setApplicationDescription(description);
    m_parser.addHelpOption();
    m_parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    if (!positionalSyntax.isEmpty())
        m_parser.addPositionalArgument(QStringLiteral("arguments"), QString(), positionalSyntax);
}

bool ZWCommandLine::AddOption(const QCommandLineOption& option)
{
    (option.valueName().isEmpty() ? m_flagNames : m_valueNames) << option.names();
    return m_parser.addOption(option);
}

int ZWCommandLine::Parse(const QStringList& args)
{
    QStringList full;
    QStringList dashed;
    if (m_dashPositionals) {
        static const QStringList help
            = {QStringLiteral("h"), QStringLiteral("?"), QStringLiteral("help"), QStringLiteral("help-all")};
        bool afterSeparator = false;
        for (qsizetype i = 0; i < args.size(); ++i) {
            const QString& arg = args[i];
            if (afterSeparator || arg == QLatin1String("--")) {
                afterSeparator = true;
                full << arg;
                continue;
            }
            if (arg.size() < 2 || !arg.startsWith(QLatin1Char('-'))) {
                full << arg;
                continue;
            }
            const bool isLong = arg.startsWith(QLatin1String("--"));
            const QString name = arg.mid(isLong ? 2 : 1).section(QLatin1Char('='), 0, 0);
            if (m_valueNames.contains(name) && !arg.contains(QLatin1Char('=')) && i + 1 < args.size()) {
                // The option's value, whatever it looks like.
                full << arg << args[i + 1];
                ++i;
                continue;
            }
            const bool known = m_flagNames.contains(name) || m_valueNames.contains(name) || help.contains(name);
            if (!isLong && !known)
                dashed << arg;
            else
                full << arg;
        }
        if (!dashed.isEmpty()) {
            if (!full.contains(QStringLiteral("--")))
                full << QStringLiteral("--");
            full << dashed;
        }
    } else {
        full = args;
    }
    full.prepend(QStringLiteral("zwinformes ") + m_command);
    if (!m_parser.parse(full))
        return UsageError(m_parser.errorText());
    if (m_parser.isSet(QStringLiteral("help"))) {
        QString help = m_parser.helpText();
        // The parser names the program by its path; name the command instead.
        const qsizetype eol = help.indexOf(QLatin1Char('\n'));
        const QString first = help.left(eol);
        const qsizetype options = first.indexOf(QLatin1String(" [options]"));
        if (first.startsWith(QLatin1String("Usage: ")) && options > 0)
            help = QStringLiteral("Usage: zwinformes ") + m_command + first.mid(options) + help.mid(eol);
        Out() << help;
        Out().flush();
        return ExitOk;
    }
    return -1;
}

int ZWCommandLine::UsageError(const QString& message)
{
    Err() << "zwinformes " << m_command << ": " << message << "\n"
          << "Try 'zwinformes " << m_command << " --help'.\n";
    Err().flush();
    return ExitUsage;
}
