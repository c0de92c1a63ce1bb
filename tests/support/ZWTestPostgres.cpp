#include "tests/support/ZWTestPostgres.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVersionNumber>
#include <arpa/inet.h>
#include <mutex>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace zwtest {

namespace {

std::mutex g_mutex;
std::unique_ptr<ZWTestPostgres> g_server;
bool g_tried = false;
QString g_error;

bool IsRoot()
{
    return geteuid() == 0;
}

QString FindBin()
{
    const QString env = qEnvironmentVariable("ZW_PG_BIN");
    if (!env.isEmpty())
        return env;
    QString best;
    QVersionNumber bestVersion;
    const QDir root(QStringLiteral("/usr/lib/postgresql"));
    for (const QString& v : root.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QVersionNumber version = QVersionNumber::fromString(v);
        if (QFile::exists(root.filePath(v + QStringLiteral("/bin/initdb"))) && version > bestVersion) {
            bestVersion = version;
            best = root.filePath(v + QStringLiteral("/bin"));
        }
    }
    return best;
}

int FreePort()
{
    const int fd = socket(AF_INET, SOCK_STREAM, 0);
    if (fd < 0)
        return 0;
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    addr.sin_port = 0;
    socklen_t len = sizeof(addr);
    int port = 0;
    if (bind(fd, reinterpret_cast<sockaddr*>(&addr), sizeof(addr)) == 0
        && getsockname(fd, reinterpret_cast<sockaddr*>(&addr), &len) == 0)
        port = ntohs(addr.sin_port);
    close(fd);
    return port;
}

} // namespace

bool ZWTestPostgres::OptedOut()
{
    return qEnvironmentVariable("ZW_TEST_SKIP_POSTGRES") == QLatin1String("1");
}

ZWTestPostgres* ZWTestPostgres::Instance()
{
    std::lock_guard lock(g_mutex);
    if (!g_tried) {
        g_tried = true;
        std::unique_ptr<ZWTestPostgres> server(new ZWTestPostgres);
        if (server->Init(&g_error))
            g_server = std::move(server);
    }
    return g_server.get();
}

QString ZWTestPostgres::Error()
{
    std::lock_guard lock(g_mutex);
    return g_error;
}

void ZWTestPostgres::Shutdown()
{
    std::lock_guard lock(g_mutex);
    g_server.reset();
}

bool ZWTestPostgres::Run(const QStringList& command, QString* error, int timeoutMs)
{
    QStringList full = command;
    QString program = full.takeFirst();
    if (IsRoot()) {
        full = QStringList{QStringLiteral("-u"), QStringLiteral("postgres"), QStringLiteral("--"), program} + full;
        program = QStringLiteral("runuser");
    }
    QProcess p;
    p.setProcessChannelMode(QProcess::MergedChannels);
    p.start(program, full);
    if (!p.waitForFinished(timeoutMs) || p.exitStatus() != QProcess::NormalExit || p.exitCode() != 0) {
        if (error)
            *error = QStringLiteral("%1 %2 failed: %3")
                         .arg(program, full.join(QLatin1Char(' ')),
                             QString::fromLocal8Bit(p.readAll()).trimmed() + p.errorString());
        p.kill();
        p.waitForFinished(1000);
        return false;
    }
    return true;
}

bool ZWTestPostgres::Init(QString* error)
{
    m_bin = FindBin();
    if (m_bin.isEmpty() || !QFile::exists(m_bin + QStringLiteral("/initdb"))) {
        *error = QStringLiteral("PostgreSQL server binaries not found (install the Debian package postgresql, "
                                "or set ZW_PG_BIN; ZW_TEST_SKIP_POSTGRES=1 skips these tests)");
        return false;
    }
    m_dir = std::make_unique<QTemporaryDir>(QDir::tempPath() + QStringLiteral("/zwpg-XXXXXX"));
    if (!m_dir->isValid()) {
        *error = QStringLiteral("cannot make a temporary folder");
        return false;
    }
    if (IsRoot()) {
        QProcess chown;
        chown.start(QStringLiteral("chown"), {QStringLiteral("postgres:"), m_dir->path()});
        if (!chown.waitForFinished(10000) || chown.exitCode() != 0) {
            *error
                = QStringLiteral("cannot give %1 to the user postgres (is PostgreSQL installed?)").arg(m_dir->path());
            return false;
        }
    }
    const QString data = m_dir->path() + QStringLiteral("/data");
    if (!Run({m_bin + QStringLiteral("/initdb"), QStringLiteral("-D"), data, QStringLiteral("-U"), QStringLiteral("zw"),
                 QStringLiteral("--auth=trust"), QStringLiteral("-E"), QStringLiteral("UTF8"),
                 QStringLiteral("--locale=C"), QStringLiteral("--no-sync")},
            error))
        return false;
    {
        QFile conf(data + QStringLiteral("/postgresql.conf"));
        if (!conf.open(QIODevice::Append)) {
            *error = conf.errorString();
            return false;
        }
        conf.write(QStringLiteral("listen_addresses = '127.0.0.1'\nunix_socket_directories = '%1'\n"
                                  "fsync = off\nsynchronous_commit = off\nfull_page_writes = off\n"
                                  "shared_buffers = 32MB\nmax_connections = 40\n")
                       .arg(m_dir->path())
                       .toUtf8());
    }
    // Ports may be taken between the look and the start: try a few.
    for (int attempt = 0; attempt < 5; ++attempt) {
        m_port = FreePort();
        if (m_port && Start(error))
            break;
        m_port = 0;
    }
    if (!m_port)
        return false;
    // Stops the server if this process dies without doing it.
    const QString script
        = QStringLiteral(
            "while kill -0 %1 2>/dev/null; do sleep 1; done; "
            "if [ -f '%2/postmaster.pid' ]; then %3 '%4/pg_ctl' -D '%2' -m immediate stop >/dev/null 2>&1; fi; "
            "rm -rf '%5'")
              .arg(QCoreApplication::applicationPid())
              .arg(data, IsRoot() ? QStringLiteral("runuser -u postgres --") : QString(), m_bin, m_dir->path());
    QProcess::startDetached(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), script}, QString(), &m_watchdog);
    return true;
}

bool ZWTestPostgres::Start(QString* error)
{
    const QString data = m_dir->path() + QStringLiteral("/data");
    return Run({m_bin + QStringLiteral("/pg_ctl"), QStringLiteral("-D"), data, QStringLiteral("-o"),
                   QStringLiteral("-p %1").arg(m_port), QStringLiteral("-l"), m_dir->path() + QStringLiteral("/log"),
                   QStringLiteral("-w"), QStringLiteral("-t"), QStringLiteral("60"), QStringLiteral("start")},
        error, 90000);
}

bool ZWTestPostgres::Stop(QString* error)
{
    return Run({m_bin + QStringLiteral("/pg_ctl"), QStringLiteral("-D"), m_dir->path() + QStringLiteral("/data"),
                   QStringLiteral("-m"), QStringLiteral("fast"), QStringLiteral("-w"), QStringLiteral("stop")},
        error);
}

bool ZWTestPostgres::Restart(QString* error)
{
    return Stop(error) && Start(error);
}

ZWTestPostgres::~ZWTestPostgres()
{
    if (m_port)
        Stop(nullptr);
    m_dir.reset();
}

QString ZWTestPostgres::NewDatabaseUrl()
{
    const QString name = QStringLiteral("zwtest%1").arg(++m_databases);
    const QString connection = QStringLiteral("zwtest-admin");
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QPSQL"), connection);
        db.setHostName(QStringLiteral("127.0.0.1"));
        db.setPort(m_port);
        db.setUserName(QStringLiteral("zw"));
        db.setDatabaseName(QStringLiteral("postgres"));
        if (db.open()) {
            QSqlQuery q(db);
            q.exec(QStringLiteral("CREATE DATABASE %1").arg(name));
        }
        db.close();
    }
    QSqlDatabase::removeDatabase(connection);
    return QStringLiteral("postgresql://zw@127.0.0.1:%1/%2?connect_timeout=5").arg(m_port).arg(name);
}

} // namespace zwtest
