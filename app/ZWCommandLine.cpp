#include "app/ZWCommandLine.h"

#include "app/ZWCommand.h"

ZWCommandLine::ZWCommandLine(const QString& command, const QString& description, const QString& positionalSyntax)
    : m_command(command)
{
    m_parser.setApplicationDescription(description);
    m_parser.addHelpOption();
    m_parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    if (!positionalSyntax.isEmpty())
        m_parser.addPositionalArgument(QStringLiteral("arguments"), QString(), positionalSyntax);
}

int ZWCommandLine::Parse(const QStringList& args)
{
    QStringList full = args;
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
