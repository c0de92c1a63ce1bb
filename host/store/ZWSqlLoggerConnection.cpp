#include "host/store/ZWSqlLoggerConnection.h"

#include "host/core/ZWLoadString.h"
#include "host/core/ZWProgress.h"
#include "host/core/ZWTextId.h"
#include "host/store/ZWSqliteTariffHours.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QSqlDriver>
#include <QSqlError>
#include <QThread>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <libpq-fe.h>
#include <mutex>
#include <sys/socket.h>
#include <thread>

namespace {

// The calling thread's connections, by store. Destroyed at the thread's
// exit; a QThread empties it earlier, when it emits finished, so that the
// connections are gone by the time QThread::wait returns.
struct ThreadConnections;
// Plain flag, readable even after the map below is destroyed: Qt emits an
// adopted thread's finished after the thread-local destructors have run.
thread_local bool t_alive = false;

struct ThreadConnections
{
    ThreadConnections() { t_alive = true; }
    ~ThreadConnections()
    {
        byStore.clear();
        t_alive = false;
    }
    std::unordered_map<quint64, std::unique_ptr<ZWSqlLoggerConnection>> byStore;
    bool hooked = false;
};

thread_local ThreadConnections t_connections;

void DropThreadConnections()
{
    if (t_alive)
        t_connections.byStore.clear();
}

std::atomic<quint64> g_connectionSerial{0};

} // namespace

ZWSqlLoggerConnection::ZWSqlLoggerConnection(const ZWLoggerUrl& url, bool mayCreate)
    : m_url(url), m_mayCreate(mayCreate), m_name(QStringLiteral("zwlogger-%1").arg(++g_connectionSerial))
{
    const QString driver = IsPostgres() ? QStringLiteral("QPSQL") : QStringLiteral("QSQLITE");
    m_db = QSqlDatabase::addDatabase(driver, m_name);
}

ZWSqlLoggerConnection::~ZWSqlLoggerConnection()
{
    m_queries.clear();
    m_db.close();
    m_db = QSqlDatabase();
    QSqlDatabase::removeDatabase(m_name);
}

ZWSqlLoggerConnection& ZWSqlLoggerConnection::ForThread(quint64 storeId, const ZWLoggerUrl& url, bool mayCreate)
{
    ThreadConnections& mine = t_connections;
    auto it = mine.byStore.find(storeId);
    if (it != mine.byStore.end())
        return *it->second;
    if (!mine.hooked) {
        mine.hooked = true;
        QThread* thread = QThread::currentThread();
        const QCoreApplication* app = QCoreApplication::instance();
        // The main thread relies on the thread-local destructor.
        if (thread && !(app && app->thread() == thread))
            QObject::connect(thread, &QThread::finished, thread, &DropThreadConnections, Qt::DirectConnection);
    }
    auto made = std::make_unique<ZWSqlLoggerConnection>(url, mayCreate);
    ZWSqlLoggerConnection& ref = *made;
    mine.byStore.emplace(storeId, std::move(made));
    return ref;
}

void ZWSqlLoggerConnection::DropForThread(quint64 storeId)
{
    t_connections.byStore.erase(storeId);
}

int ZWSqlLoggerConnection::ThreadConnectionCount()
{
    return int(t_connections.byStore.size());
}

QString ZWSqlLoggerConnection::ErrorText(const QSqlError& error)
{
    // The server's or SQLite's own words; the driver's line ("QPSQL: Unable
    // to connect") says nothing more, so it is kept only when alone.
    QString text = error.databaseText().simplified();
    if (text.isEmpty())
        text = error.driverText().simplified();
    if (!error.nativeErrorCode().isEmpty() && !text.contains(error.nativeErrorCode()))
        text += QStringLiteral(" [%1]").arg(error.nativeErrorCode());
    return text;
}

bool ZWSqlLoggerConnection::Open(QString* error)
{
    if (m_db.isOpen())
        return true;
    if (!m_db.isValid()) {
        if (error)
            *error = ZWLoadString(ZWTextId::StoreDriverMissing).arg(m_url.Display(), m_db.driverName());
        return false;
    }
    if (IsPostgres()) {
        m_db.setHostName(m_url.host());
        m_db.setPort(m_url.port());
        m_db.setDatabaseName(m_url.database());
        m_db.setUserName(m_url.user());
        m_db.setPassword(m_url.password());
        // Keep-alives find a dead peer; the statement timeout ends a long
        // statement on the server (ExecBounded bounds the wait for one).
        const int statementMs = m_url.statementTimeout() * 1000;
        QStringList options{QStringLiteral("connect_timeout=%1").arg(m_url.connectTimeout()),
            QStringLiteral("keepalives=1"), QStringLiteral("keepalives_idle=10"),
            QStringLiteral("keepalives_interval=5"), QStringLiteral("keepalives_count=3"),
            QStringLiteral("tcp_user_timeout=%1").arg(statementMs),
            QStringLiteral("options='-c statement_timeout=%1'").arg(statementMs)};
        for (const auto& [key, value] : m_url.options())
            options << key + QLatin1Char('=') + value;
        m_db.setConnectOptions(options.join(QLatin1Char(';')));
    } else {
        // Only the writers that make a database (import, demo data) create
        // a missing file, with its folder; a mistyped path for reading is
        // said to be one instead of opening as an empty database.
        const QFileInfo file(m_url.path());
        if (m_mayCreate && !file.exists()) {
            QDir().mkpath(file.absolutePath());
        } else if (!file.exists()) {
            if (error)
                *error = ZWLoadString(ZWTextId::StoreFileMissing).arg(m_url.Display());
            return false;
        } else if (!file.isFile()) {
            if (error)
                *error = ZWLoadString(ZWTextId::StoreNotAFile).arg(m_url.Display());
            return false;
        }
        m_db.setDatabaseName(m_url.path());
        m_db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=10000"));
    }
    if (!m_db.open()) {
        if (error)
            *error = ZWLoadString(ZWTextId::StoreCannotOpen).arg(m_url.Display(), ErrorText(m_db.lastError()));
        return false;
    }
    if (!IsPostgres()) {
        // A missing file opens as an empty database; a file that is not a
        // database only shows when it is read, so read it now.
        QSqlQuery probe(m_db);
        if (!probe.exec(QStringLiteral("PRAGMA schema_version"))) {
            if (error)
                *error = ZWLoadString(ZWTextId::StoreCannotOpen).arg(m_url.Display(), ErrorText(probe.lastError()));
            m_db.close();
            return false;
        }
        m_tariffHours = ZWSqliteTariffHours::Register(m_db);
    }
    return true;
}

int ZWSqlLoggerConnection::Socket() const
{
    if (!IsPostgres() || !m_db.isOpen() || !m_db.driver())
        return -1;
    // QtSql's PostgreSQL driver hands out its PGconn* (typed "pg_conn*",
    // libpq's own name of the struct).
    const QVariant handle = m_db.driver()->handle();
    if (qstrcmp(handle.typeName(), "pg_conn*") != 0 && qstrcmp(handle.typeName(), "PGconn*") != 0)
        return -1;
    PGconn* connection = *static_cast<PGconn* const*>(handle.constData());
    return connection ? PQsocket(connection) : -1;
}

bool ZWSqlLoggerConnection::ExecBounded(QSqlQuery& query, const ZWProgress* progress, QString* error)
{
    m_interrupted = false;
    if (!IsPostgres()) {
        if (query.exec())
            return true;
        if (error)
            *error = ErrorText(query.lastError());
        return false;
    }
    // A watchdog beside the blocked query: a server that keeps a statement
    // past its timeout (stopped, or behind a network that dropped the
    // packets) or a user who cancels gets the connection cut, which ends
    // the wait; libpq has no timeout of its own for reading an answer.
    enum Reason { None, TimedOut, Cancelled };
    const int socket = Socket();
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(m_url.statementTimeout() + 2);
    std::mutex mutex;
    std::condition_variable wake;
    bool done = false;
    Reason reason = None;
    std::thread watchdog([&] {
        std::unique_lock lock(mutex);
        while (!done) {
            wake.wait_for(lock, std::chrono::milliseconds(100));
            if (done)
                break;
            if (progress && progress->IsCancelled())
                reason = Cancelled;
            else if (std::chrono::steady_clock::now() >= deadline)
                reason = TimedOut;
            else
                continue;
            if (socket >= 0)
                ::shutdown(socket, SHUT_RDWR);
            break;
        }
    });
    const bool ok = query.exec();
    {
        std::lock_guard lock(mutex);
        done = true;
    }
    wake.notify_all();
    watchdog.join();
    if (reason != None) {
        m_interrupted = true;
        if (error)
            *error = reason == Cancelled ? ZWLoadString(ZWTextId::StoreReadingCancelled)
                                         : ZWLoadString(ZWTextId::StoreServerSilent).arg(m_url.statementTimeout());
        return false;
    }
    if (!ok && error)
        *error = ErrorText(query.lastError());
    return ok;
}

void ZWSqlLoggerConnection::Close()
{
    m_queries.clear();
    m_db.close();
}

bool ZWSqlLoggerConnection::Reopen(QString* error)
{
    Close();
    return Open(error);
}

QSqlQuery* ZWSqlLoggerConnection::Prepared(const QString& sql, QString* error)
{
    if (!Open(error))
        return nullptr;
    auto it = m_queries.find(sql);
    if (it != m_queries.end())
        return it->second.get();
    // Statement texts depend on how many names and ranges a reading has: a
    // long-lived connection starts afresh rather than keep every shape.
    if (m_queries.size() >= MaxPrepared)
        m_queries.clear();
    auto query = std::make_unique<QSqlQuery>(m_db);
    query->setForwardOnly(true);
    if (!query->prepare(sql)) {
        if (error)
            *error = ErrorText(query->lastError());
        return nullptr;
    }
    QSqlQuery* raw = query.get();
    m_queries.emplace(sql, std::move(query));
    return raw;
}

bool ZWSqlLoggerConnection::Exec(const QString& sql, QString* error)
{
    if (!Open(error))
        return false;
    QSqlQuery query(m_db);
    if (!query.exec(sql)) {
        if (error)
            *error = ErrorText(query.lastError());
        return false;
    }
    return true;
}
