#include "tests/app/commands/ProgramRun.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <gtest/gtest.h>
#include <sys/resource.h>

namespace zwtest {

std::ostream& operator<<(std::ostream& os, const ProgramResult& r)
{
    return os << "status " << r.status << "\nout: " << r.out.toStdString() << "\nerr: " << r.err.toStdString();
}

QStringList Args(const QString& commandLine)
{
    return QProcess::splitCommand(commandLine);
}

QJsonValue ProgramResult::Json() const
{
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(raw, &error);
    EXPECT_EQ(error.error, QJsonParseError::NoError) << raw.toStdString();
    return doc.isArray() ? QJsonValue(doc.array()) : QJsonValue(doc.object());
}

ProgramResult RunProgram(const QStringList& args, const RunOptions& options, const QString& program)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const auto& [name, value] : options.environment) {
        if (value.isEmpty())
            environment.remove(name);
        else
            environment.insert(name, value);
    }
    process.setProcessEnvironment(environment);
    if (options.addressSpaceMb > 0) {
        const rlim_t bytes = rlim_t(options.addressSpaceMb) * 1024 * 1024;
        process.setChildProcessModifier([bytes] {
            const struct rlimit limit = {bytes, bytes};
            ::setrlimit(RLIMIT_AS, &limit);
        });
    }
    process.start(program.isEmpty() ? QStringLiteral(ZW_PROGRAM) : program, args);
    if (!options.input.isNull()) {
        process.write(options.input);
        process.closeWriteChannel();
    }
    const bool finished = process.waitForFinished(options.timeoutMs);
    EXPECT_TRUE(finished) << args.join(QLatin1Char(' ')).toStdString();
    if (!finished)
        process.kill();
    ProgramResult r;
    r.status = finished && process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    r.raw = process.readAllStandardOutput();
    r.out = QString::fromUtf8(r.raw);
    r.err = QString::fromUtf8(process.readAllStandardError());
    return r;
}

ProgramResult RunUtc(const QString& commandLine)
{
    RunOptions options;
    options.environment
        = {{QStringLiteral("ZWINFORMES_DB"), QString()}, {QStringLiteral("ZWINFORMES_DATA_DIR"), QString()}};
    return RunProgram(Args(QStringLiteral("--tz UTC --locale en_US ") + commandLine), options);
}

RunOptions Offscreen()
{
    RunOptions options;
    options.environment = {{QStringLiteral("ZWINFORMES_LOCALE"), QStringLiteral("C")},
        {QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen")}};
    return options;
}

} // namespace zwtest
