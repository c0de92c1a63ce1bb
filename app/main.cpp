#include "app/commands/ZWCommand.h"
#include "host/core/ZWLocale.h"
#include "host/core/ZWMarentaSetup.h"
#include "host/images/ZWImageSupport.h"

#include <QApplication>
#include <QCoreApplication>
#include <QDir>
#include <QGuiApplication>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

std::vector<ZWCommand>& ZWCommandRegistry::Commands()
{
    static std::vector<ZWCommand> commands;
    return commands;
}

const ZWCommand* ZWCommandRegistry::Find(const QString& name)
{
    for (const ZWCommand& c : Commands())
        if (c.name == name)
            return &c;
    return nullptr;
}

QTextStream& Out()
{
    static QTextStream stream(stdout);
    return stream;
}

QTextStream& Err()
{
    static QTextStream stream(stderr);
    return stream;
}

namespace {

void PrintUsage(QTextStream& s)
{
    s << "Usage: zwinformes [GLOBAL OPTIONS] [COMMAND] [ARGS...]\n"
         "\n"
         "Without a command, opens the desktop application.\n"
         "\n"
         "Commands:\n";
    std::vector<const ZWCommand*> sorted;
    for (const ZWCommand& c : ZWCommandRegistry::Commands())
        if (!c.hidden)
            sorted.push_back(&c);
    std::sort(sorted.begin(), sorted.end(), [](auto a, auto b) { return a->name < b->name; });
    for (const ZWCommand* c : sorted)
        s << "  " << c->name.leftJustified(18) << c->summary << "\n";
    s << "\n"
         "Global options (before or after the command):\n"
         "  --locale L        number and date conventions (en_US, es_ES, C...)\n"
         "  --tz ZONE         time zone of report periods (Europe/Madrid, UTC...)\n"
         "  --report-dir DIR  folder of the .XRPT reports\n"
         "  --data-dir DIR    folder of styles and relative pictures\n"
         "  --db URL          logger database: sqlite:PATH or postgresql://user@host:port/db\n"
         "                    (an existing one; only import and demo-db create one)\n"
         "  --tariff-calendar NAME\n"
         "                    calendar of DATA/tariffs.xml whose periods filters name\n"
         "                    ([Meter.Energy:P1]; default: the file's first calendar)\n"
         "\n"
         "'zwinformes COMMAND --help' describes a command.\n";
    s.flush();
}

// Takes the global options out of the argument list and applies them.
// Returns false (with a message) when one is malformed.
bool TakeGlobalOptions(QStringList& args, QString& error)
{
    static const QStringList names
        = {QStringLiteral("--locale"), QStringLiteral("--tz"), QStringLiteral("--report-dir"),
            QStringLiteral("--data-dir"), QStringLiteral("--db"), QStringLiteral("--tariff-calendar")};
    for (int i = 0; i < args.size();) {
        QString name = args[i];
        QString value;
        bool hasValue = false;
        const qsizetype eq = name.indexOf(QLatin1Char('='));
        if (name.startsWith(QLatin1String("--")) && eq > 0) {
            value = name.mid(eq + 1);
            name = name.left(eq);
            hasValue = true;
        }
        if (!names.contains(name) || args[i] == QLatin1String("--")) {
            if (args[i] == QLatin1String("--"))
                break;
            ++i;
            continue;
        }
        args.removeAt(i);
        if (!hasValue) {
            if (i >= args.size()) {
                error = QStringLiteral("option %1 needs a value").arg(name);
                return false;
            }
            value = args.takeAt(i);
        }
        if (name == QLatin1String("--locale")) {
            if (!ZWSetLocaleOverride(value)) {
                error = QStringLiteral("unknown locale '%1'").arg(value);
                return false;
            }
        } else if (name == QLatin1String("--tz")) {
            qputenv("TZ", value.toLocal8Bit());
            tzset();
        } else if (name == QLatin1String("--report-dir")) {
            ZWMarentaSetup::instance().SetReportDirectory(value);
        } else if (name == QLatin1String("--data-dir")) {
            ZWMarentaSetup::instance().SetDataDirectory(value);
        } else if (name == QLatin1String("--db")) {
            ZWMarentaSetup::instance().SetLoggerDatabase(value);
        } else if (name == QLatin1String("--tariff-calendar")) {
            ZWMarentaSetup::instance().SetTariffCalendar(value);
        }
    }
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    QStringList args;
    for (int i = 1; i < argc; ++i)
        args << QString::fromLocal8Bit(argv[i]);

    QString error;
    if (!TakeGlobalOptions(args, error)) {
        Err() << "zwinformes: " << error << "\n";
        Err().flush();
        return ExitUsage;
    }

    if (!args.isEmpty()
        && (args[0] == QLatin1String("--help") || args[0] == QLatin1String("-h") || args[0] == QLatin1String("help"))) {
        PrintUsage(Out());
        return ExitOk;
    }

    const ZWCommand* command = nullptr;
    if (!args.isEmpty()) {
        command = ZWCommandRegistry::Find(args[0]);
        if (!command) {
            Err() << "zwinformes: unknown command '" << args[0] << "'\n\n";
            PrintUsage(Err());
            return ExitUsage;
        }
        args.removeFirst();
    } else {
        command = ZWCommandRegistry::Find(QStringLiteral("gui"));
        if (!command) {
            PrintUsage(Err());
            return ExitUsage;
        }
    }

    QCoreApplication::setOrganizationName(QStringLiteral("ZWInformes"));
    QCoreApplication::setApplicationName(QStringLiteral("zwinformes"));
    // Headless commands that draw need fonts, hence a GUI application, but
    // never a display.
    if ((command->needs == ZWCommand::Needs::Gui || command->needs == ZWCommand::Needs::HeadlessWidgets)
        && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
#if defined(Q_OS_UNIX) && !defined(Q_OS_MACOS)
    // Windows need a display; without one Qt would abort. Help texts need none.
    if (command->needs == ZWCommand::Needs::Widgets && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        const bool help = args.contains(QStringLiteral("--help")) || args.contains(QStringLiteral("-h"))
            || args.contains(QStringLiteral("--help-all"));
        if (help) {
            qputenv("QT_QPA_PLATFORM", "offscreen");
        } else if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) {
            Err() << "zwinformes: " << command->name
                  << " opens windows and there is no display (DISPLAY and WAYLAND_DISPLAY are not set);"
                     " QT_QPA_PLATFORM=offscreen runs it without one\n";
            Err().flush();
            return ExitFailed;
        }
    }
#endif
    // Without a login session (a service, a container) Qt falls back to a
    // runtime folder of its own and says so on every run; make that folder
    // quietly, as Qt would.
    if (command->needs != ZWCommand::Needs::Core && qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR")) {
        const QByteArray dir = QDir::tempPath().toLocal8Bit() + "/runtime-" + QByteArray::number(getuid());
        if (::mkdir(dir.constData(), 0700) == 0 || errno == EEXIST)
            qputenv("XDG_RUNTIME_DIR", dir);
    }
    std::unique_ptr<QCoreApplication> app;
    switch (command->needs) {
    case ZWCommand::Needs::Core:
        app = std::make_unique<QCoreApplication>(argc, argv);
        break;
    case ZWCommand::Needs::Gui:
        app = std::make_unique<QGuiApplication>(argc, argv);
        break;
    case ZWCommand::Needs::Widgets:
    case ZWCommand::Needs::HeadlessWidgets:
        app = std::make_unique<QApplication>(argc, argv);
        break;
    }
    // Risky picture formats are decoded by this same program, in a child
    // process with limits.
    ZWImageSupport::SetDecoderPath(QCoreApplication::applicationFilePath());
    const int status = command->run(args);
    Out().flush();
    Err().flush();
    return status;
}
