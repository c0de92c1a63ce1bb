#pragma once

#include <QString>
#include <QTemporaryDir>
#include <memory>

namespace zwtest {

// The test process's own PostgreSQL server on loopback, in a temporary
// folder; as root its cluster belongs to the user "postgres". A watchdog
// stops it should the process die. Binaries: $ZW_PG_BIN, else the newest
// /usr/lib/postgresql/*/bin; ZW_TEST_SKIP_POSTGRES=1 skips its tests.
class ZWTestPostgres
{
public:
    // The process's one server, started on first use (null when it could
    // not be; Error() says why).
    static ZWTestPostgres* Instance();
    static QString Error();
    static bool OptedOut();
    // Stops the process's server (at the end of the test run).
    static void Shutdown();

    ~ZWTestPostgres();
    // A URL for a new, empty database of this server.
    QString NewDatabaseUrl();
    // Stops and starts the server (fast shutdown: sessions are cut).
    bool Restart(QString* error);
    bool Stop(QString* error);
    bool Start(QString* error);

private:
    ZWTestPostgres() = default;
    bool Init(QString* error);
    bool Run(const QStringList& command, QString* error, int timeoutMs = 60000);

    QString m_bin;
    std::unique_ptr<QTemporaryDir> m_dir;
    int m_port = 0;
    int m_databases = 0;
    qint64 m_watchdog = 0;
};

} // namespace zwtest
