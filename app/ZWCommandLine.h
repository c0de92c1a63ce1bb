#pragma once

#include <QCommandLineParser>
#include <QString>
#include <QStringList>

// QCommandLineParser set up the way every subcommand uses it: --help
// prints the usage and exits 0; an unknown option or a missing value is a
// usage error (exit status 2) with a message on standard error.
class ZWCommandLine
{
public:
    ZWCommandLine(const QString& command, const QString& description, const QString& positionalSyntax);
    QCommandLineParser& Parser() { return m_parser; }
    // Parses `args` (those after the subcommand). Returns -1 to go on, or the
    // exit status to return at once (0 after --help, 2 on a usage error).
    int Parse(const QStringList& args);
    // Reports a usage error and returns 2.
    int UsageError(const QString& message);

private:
    QString m_command;
    QCommandLineParser m_parser;
};
