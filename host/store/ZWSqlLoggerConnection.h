#pragma once

#include "host/store/ZWLoggerUrl.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <memory>
#include <unordered_map>

// One thread's connection to a logger database. QtSql connections may only
// be used by the thread that made them, and the viewer gathers on a new
// worker thread each time, so every thread gets its own: ForThread() finds or
// makes the calling thread's connection for a store, and the connection is
// closed and removed when that thread finishes (QThread::finished, or the
// thread's exit for threads that Qt did not start).
class ZWProgress;

class ZWSqlLoggerConnection
{
public:
    // `mayCreate`: a missing SQLite file (and its folder) is created;
    // otherwise it is refused.
    ZWSqlLoggerConnection(const ZWLoggerUrl& url, bool mayCreate);
    ~ZWSqlLoggerConnection();
    ZWSqlLoggerConnection(const ZWSqlLoggerConnection&) = delete;
    ZWSqlLoggerConnection& operator=(const ZWSqlLoggerConnection&) = delete;

    // The calling thread's connection for the store `storeId` (made on first use).
    static ZWSqlLoggerConnection& ForThread(quint64 storeId, const ZWLoggerUrl& url, bool mayCreate);
    // Closes and removes the calling thread's connection for `storeId`.
    static void DropForThread(quint64 storeId);
    // How many connections the calling thread holds (tests).
    static int ThreadConnectionCount();

    // Opens the connection unless it is open; false with a message otherwise.
    bool Open(QString* error);
    // Closes and opens again: after a lost server connection. Prepared
    // statements are dropped and prepared again on next use.
    bool Reopen(QString* error);
    void Close();
    // The socket of the connection to the server (-1 when unknown).
    int Socket() const;
    bool IsOpen() const { return m_db.isOpen(); }

    // A statement prepared once per connection and kept (bound values are
    // replaced at each use; at most MaxPrepared are kept, the pointer is
    // valid until the next call). Null with a message when it cannot be
    // prepared.
    QSqlQuery* Prepared(const QString& sql, QString* error);
    static constexpr size_t MaxPrepared = 64;
    // Runs a statement without values.
    bool Exec(const QString& sql, QString* error);
    // Runs a prepared query; on PostgreSQL within the URL's statement
    // timeout (and 2 s of grace) and until `progress` is cancelled: the
    // connection is then cut (the blocked read returns), the query fails
    // with the reason and Interrupted() says so until the next query.
    bool ExecBounded(QSqlQuery& query, const ZWProgress* progress, QString* error);
    bool Interrupted() const { return m_interrupted; }

    QSqlDatabase& Database() { return m_db; }
    const ZWLoggerUrl& Url() const { return m_url; }
    bool IsPostgres() const { return m_url.backend() == ZWLoggerUrl::Backend::PostgreSQL; }
    bool MayCreate() const { return m_mayCreate; }
    // Whether the SQLite connection has zw_tariff_hours (ZWSqliteTariffHours).
    bool HasTariffHours() const { return m_tariffHours; }
    // The last error of a query or of the connection, as one line.
    static QString ErrorText(const QSqlError& error);

private:
    ZWLoggerUrl m_url;
    bool m_mayCreate = false;
    bool m_interrupted = false;
    bool m_tariffHours = false;
    QString m_name;
    QSqlDatabase m_db;
    std::unordered_map<QString, std::unique_ptr<QSqlQuery>> m_queries;
};
