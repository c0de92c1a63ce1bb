#pragma once

#include <QCommandLineOption>
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
    // Adds an option and remembers its names (see SetDashPositionals).
    bool AddOption(const QCommandLineOption& option);
    // Takes an argument that begins with a single "-" but names none of the
    // options added with AddOption as a positional argument, so that a
    // formula such as "-2^2" needs no "--" before it. Such arguments come
    // after the other positional arguments.
    void SetDashPositionals(bool enable) { m_dashPositionals = enable; }
    // Parses `args` (those after the subcommand). Returns -1 to go on, or the
    // exit status to return at once (0 after --help, 2 on a usage error).
    int Parse(const QStringList& args);
    // Reports a usage error and returns 2.
    int UsageError(const QString& message);

private:
    QString m_command;
    QCommandLineParser m_parser;
    QStringList m_flagNames;
    QStringList m_valueNames;
    bool m_dashPositionals = false;
};
