#pragma once

#include <QString>
#include <QTemporaryDir>
#include <memory>

namespace zwtest {

// A PostgreSQL server of the test process's own, on loopback and a free
// port, in a temporary folder. PostgreSQL refuses to run as root: as root
// the cluster belongs to the system user "postgres" (Debian's package makes
// it), otherwise to the current user. The server is stopped when the object
// goes, and also by a watchdog process when the test process dies without
// stopping it.
//
// Binaries: $ZW_PG_BIN, else the newest /usr/lib/postgresql/*/bin.
// ZW_TEST_SKIP_POSTGRES=1 opts out (Available() then says why, and tests
// skip); without it, missing binaries are a failure.
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
    int Port() const { return m_port; }
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
