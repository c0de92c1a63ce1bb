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

using namespace Qt::StringLiterals;

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
    const QDir root(u"/usr/lib/postgresql"_s);
    for (const QString& v : root.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QVersionNumber version = QVersionNumber::fromString(v);
        if (QFile::exists(root.filePath(v + u"/bin/initdb"_s)) && version > bestVersion) {
            bestVersion = version;
            best = root.filePath(v + u"/bin"_s);
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
        full = QStringList{u"-u"_s, u"postgres"_s, u"--"_s, program} + full;
        program = u"runuser"_s;
    }
    QProcess p;
    p.setProcessChannelMode(QProcess::MergedChannels);
    p.start(program, full);
    if (!p.waitForFinished(timeoutMs) || p.exitStatus() != QProcess::NormalExit || p.exitCode() != 0) {
        if (error)
            *error = u"%1 %2 failed: %3"_s.arg(
                program, full.join(QLatin1Char(' ')), QString::fromLocal8Bit(p.readAll()).trimmed() + p.errorString());
        p.kill();
        p.waitForFinished(1000);
        return false;
    }
    return true;
}

bool ZWTestPostgres::Init(QString* error)
{
    m_bin = FindBin();
    if (m_bin.isEmpty() || !QFile::exists(m_bin + u"/initdb"_s)) {
        *error = QStringLiteral("PostgreSQL server binaries not found (install the Debian package postgresql, "
                                "or set ZW_PG_BIN; ZW_TEST_SKIP_POSTGRES=1 skips these tests)");
        return false;
    }
    m_dir = std::make_unique<QTemporaryDir>(QDir::tempPath() + u"/zwpg-XXXXXX"_s);
    if (!m_dir->isValid()) {
        *error = u"cannot make a temporary folder"_s;
        return false;
    }
    if (IsRoot()) {
        QProcess chown;
        chown.start(u"chown"_s, {u"postgres:"_s, m_dir->path()});
        if (!chown.waitForFinished(10000) || chown.exitCode() != 0) {
            *error = u"cannot give %1 to the user postgres (is PostgreSQL installed?)"_s.arg(m_dir->path());
            return false;
        }
    }
    const QString data = m_dir->path() + u"/data"_s;
    if (!Run({m_bin + u"/initdb"_s, u"-D"_s, data, u"-U"_s, u"zw"_s, u"--auth=trust"_s, u"-E"_s, u"UTF8"_s,
                 u"--locale=C"_s, u"--no-sync"_s},
            error))
        return false;
    {
        QFile conf(data + u"/postgresql.conf"_s);
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
    const QString script = QStringLiteral(
        "while kill -0 %1 2>/dev/null; do sleep 1; done; "
        "if [ -f '%2/postmaster.pid' ]; then %3 '%4/pg_ctl' -D '%2' -m immediate stop >/dev/null 2>&1; fi; "
        "rm -rf '%5'")
                               .arg(QCoreApplication::applicationPid())
                               .arg(data, IsRoot() ? u"runuser -u postgres --"_s : QString(), m_bin, m_dir->path());
    QProcess::startDetached(u"/bin/sh"_s, {u"-c"_s, script}, QString(), &m_watchdog);
    return true;
}

bool ZWTestPostgres::Start(QString* error)
{
    const QString data = m_dir->path() + u"/data"_s;
    return Run({m_bin + u"/pg_ctl"_s, u"-D"_s, data, u"-o"_s, u"-p %1"_s.arg(m_port), u"-l"_s,
                   m_dir->path() + u"/log"_s, u"-w"_s, u"-t"_s, u"60"_s, u"start"_s},
        error, 90000);
}

bool ZWTestPostgres::Stop(QString* error)
{
    return Run(
        {m_bin + u"/pg_ctl"_s, u"-D"_s, m_dir->path() + u"/data"_s, u"-m"_s, u"fast"_s, u"-w"_s, u"stop"_s}, error);
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
    const QString name = u"zwtest%1"_s.arg(++m_databases);
    const QString connection = u"zwtest-admin"_s;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(u"QPSQL"_s, connection);
        db.setHostName(u"127.0.0.1"_s);
        db.setPort(m_port);
        db.setUserName(u"zw"_s);
        db.setDatabaseName(u"postgres"_s);
        if (db.open()) {
            QSqlQuery q(db);
            q.exec(u"CREATE DATABASE %1"_s.arg(name));
        }
        db.close();
    }
    QSqlDatabase::removeDatabase(connection);
    return u"postgresql://zw@127.0.0.1:%1/%2?connect_timeout=5"_s.arg(m_port).arg(name);
}

} // namespace zwtest
