#pragma once

#include <QByteArray>
#include <QJsonValue>
#include <QString>
#include <QStringList>
#include <ostream>
#include <utility>
#include <vector>

namespace zwtest {

// What one run of a program left: the exit status (-1 when it crashed or
// did not finish), its output as bytes and as text, its error output.
struct ProgramResult
{
    int status = -1;
    QByteArray raw;
    QString out;
    QString err;

    // The output read as one JSON document (a failed test when it is not).
    QJsonValue Json() const;
};

// A failed expectation about a run shows its status and both outputs.
std::ostream& operator<<(std::ostream& os, const ProgramResult& r);

struct RunOptions
{
    // Environment entries to set; an empty value removes the entry.
    std::vector<std::pair<QString, QString>> environment;
    // Given on standard input, which is then closed.
    QByteArray input;
    int timeoutMs = 120000;
    // The program's address space limit, in MiB (0: none).
    int addressSpaceMb = 0;
};

// Runs `program` (the zwinformes program when empty) with `args`.
ProgramResult RunProgram(const QStringList& args, const RunOptions& options = {}, const QString& program = QString());

// A command line split into arguments as a shell splits it: at spaces,
// with double quotes around an argument that holds spaces.
QStringList Args(const QString& commandLine);

// The program in UTC and the US English conventions, without a database or
// data folder named by the environment.
ProgramResult RunUtc(const QString& commandLine);
// Options for the program in the C locale under the offscreen platform.
RunOptions Offscreen();

} // namespace zwtest
