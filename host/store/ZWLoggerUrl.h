#pragma once

#include <QList>
#include <QPair>
#include <QString>

// Where the logged data lives, from one URL-like text:
//   sqlite:PATH                 a SQLite file (made only by the writers that
//                               fill a database: import, demo data); also
//                               sqlite:///abs/path, or a bare PATH
//   postgresql://[user[:password]@]host[:port]/dbname[?option=value&...]
//                               a PostgreSQL database ("postgres://" too);
//                               without a password libpq's usual sources
//                               apply (PGPASSWORD, ~/.pgpass)
// Options passed on to libpq: connect_timeout (seconds, default 10),
// sslmode, application_name; statement_timeout (seconds, default 120)
// bounds every query: the server ends a statement that runs longer, and the
// client gives up on a server that has not answered that long (and 2 s
// more), whether it is busy, stopped or cut off by a silent network; TCP
// keep-alives find a dead connection meanwhile. Percent-encoding applies in
// user, password and database names.
class ZWLoggerUrl
{
public:
    enum class Backend { None, SQLite, PostgreSQL };

    // Parses `text`; false with a message in `error` when it is malformed.
    bool Parse(const QString& text, QString* error);

    Backend backend() const { return m_backend; }
    QString path() const { return m_path; }
    QString host() const { return m_host; }
    int port() const { return m_port; }
    QString user() const { return m_user; }
    QString password() const { return m_password; }
    QString database() const { return m_database; }
    int connectTimeout() const { return m_connectTimeout; }
    int statementTimeout() const { return m_statementTimeout; }
    // libpq options besides the connect timeout, as key/value pairs.
    const QList<QPair<QString, QString>>& options() const { return m_options; }
    // The URL without its password, for messages.
    QString Display() const;

private:
    Backend m_backend = Backend::None;
    QString m_path;
    QString m_host;
    int m_port = 5432;
    QString m_user;
    QString m_password;
    QString m_database;
    int m_connectTimeout = 10;
    int m_statementTimeout = 120;
    QList<QPair<QString, QString>> m_options;
};
