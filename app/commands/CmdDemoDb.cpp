// zwinformes demo-db: a logger database with made-up data of a small site.
#include "app/commands/ZWCommand.h"
#include "app/commands/ZWCommandLine.h"
#include "app/commands/ZWTerminalProgress.h"
#include "app/demo/ZWDemoData.h"
#include "host/core/ZWLoadString.h"
#include "host/core/ZWMarentaSetup.h"
#include "host/core/ZWTextId.h"
#include "host/store/ZWLoggerDatabase.h"
#include "host/store/ZWLoggerWriter.h"
#include "host/store/ZWSqlLoggerConnection.h"
#include "host/store/ZWSqlLoggerStore.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QSqlError>
#include <QSqlQuery>
#include <QTimeZone>

namespace {

bool HoldsSamples(ZWSqlLoggerStore& store, bool& holds, QString* error)
{
    QSqlQuery q(store.Connection().Database());
    if (!q.exec(QStringLiteral("SELECT 1 FROM samples LIMIT 1"))) {
        if (error)
            *error = ZWSqlLoggerConnection::ErrorText(q.lastError());
        return false;
    }
    holds = q.next();
    return true;
}

int RunDemoDb(const QStringList& args)
{
    ZWCommandLine cl(QStringLiteral("demo-db"),
        QStringLiteral("Fills the logger database (--db) with made-up but plausible data of a small site\n"
                       "up to now: electricity, PV, gas and water counters, power and temperatures."),
        QString());
    QCommandLineParser& p = cl.Parser();
    p.addOption({QStringLiteral("months"), QStringLiteral("Months of data (default 14)."), QStringLiteral("N"),
        QStringLiteral("14")});
    p.addOption({QStringLiteral("step"), QStringLiteral("Time between samples: 1m or 15m (default 15m)."),
        QStringLiteral("STEP"), QStringLiteral("15m")});
    p.addOption({QStringLiteral("variables"),
        QStringLiteral("Variables in all (default 7, the site's); more adds synthetic circuits."), QStringLiteral("N"),
        QStringLiteral("7")});
    p.addOption({QStringLiteral("until"), QStringLiteral("End at this UTC time instead of now (ISO 8601)."),
        QStringLiteral("TIME")});
    p.addOption({QStringLiteral("replace"), QStringLiteral("Delete all data of the database first.")});
    const int parsed = cl.Parse(args);
    if (parsed >= 0)
        return parsed;
    if (!p.positionalArguments().isEmpty())
        return cl.UsageError(QStringLiteral("unexpected argument '%1'").arg(p.positionalArguments().first()));

    ZWDemoData::Options options;
    bool ok = false;
    options.months = p.value(QStringLiteral("months")).toInt(&ok);
    if (!ok || options.months < 1 || options.months > 240)
        return cl.UsageError(QStringLiteral("--months must be a number from 1 to 240"));
    const QString step = p.value(QStringLiteral("step"));
    if (step == QLatin1String("1m"))
        options.stepSeconds = 60;
    else if (step == QLatin1String("15m"))
        options.stepSeconds = 900;
    else
        return cl.UsageError(QStringLiteral("--step must be 1m or 15m"));
    options.variables = p.value(QStringLiteral("variables")).toInt(&ok);
    if (!ok || options.variables < 1 || options.variables > 10000)
        return cl.UsageError(QStringLiteral("--variables must be a number from 1 to 10000"));
    if (p.isSet(QStringLiteral("until"))) {
        QDateTime until = QDateTime::fromString(p.value(QStringLiteral("until")), Qt::ISODate);
        if (!until.isValid())
            return cl.UsageError(QStringLiteral("--until is not an ISO 8601 time"));
        if (until.timeSpec() == Qt::LocalTime)
            until.setTimeZone(QTimeZone::utc());
        options.endUtc = until.toSecsSinceEpoch();
    }

    ZWLoggerDatabase::Opened opened = ZWLoggerDatabase::OpenConfigured(ZWSqlLoggerStore::Creation::CreateMissing);
    if (opened.badAddress)
        return cl.UsageError(opened.error);
    QString error = opened.error;
    bool holds = false;
    if (!opened || !HoldsSamples(*opened.store, holds, &error)) {
        Err() << "zwinformes demo-db: " << error << "\n";
        return ExitFailed;
    }
    if (holds) {
        if (!p.isSet(QStringLiteral("replace"))) {
            Err() << "zwinformes demo-db: "
                  << ZWLoadString(ZWTextId::DemoDatabaseNotEmpty).arg(opened.store->Url().Display()) << "\n";
            return ExitFailed;
        }
        ZWLoggerWriter writer(*opened.store);
        if (!writer.Begin(&error) || !writer.DeleteAll(&error) || !writer.Commit(&error)) {
            Err() << "zwinformes demo-db: " << error << "\n";
            return ExitFailed;
        }
    }
    QElapsedTimer timer;
    timer.start();
    ZWTerminalProgress progress;
    ZWDemoData demo;
    if (!demo.Generate(*opened.store, options, &progress, &error)) {
        progress.End(false);
        Err() << "zwinformes demo-db: " << error << "\n";
        return ExitFailed;
    }
    progress.End(true);
    const auto iso = [](qint64 t) {
        return QDateTime::fromSecsSinceEpoch(t, QTimeZone::utc()).toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss'Z'"));
    };
    Out() << ZWLoadString(ZWTextId::DemoDone)
                 .arg(demo.SamplesWritten())
                 .arg(options.variables)
                 .arg(iso(demo.FirstUtc()), iso(demo.LastUtc()), opened.store->Url().Display())
                 .arg(double(timer.elapsed()) / 1000.0, 0, 'f', 1)
          << "\n";
    return ExitOk;
}

ZWCommandRegistration g_demoDb({QStringLiteral("demo-db"),
    QStringLiteral("fill the logger database with demo data of a small site"), ZWCommand::Needs::Core, RunDemoDb});

} // namespace
