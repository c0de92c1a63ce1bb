#include "host/core/ZWNoValue.h"
#include "host/core/ZWProgress.h"
#include "host/store/ZWSqlLoggerConnection.h"
#include "tests/host/store/ZWStoreTestSupport.h"
#include "tests/support/ZWTestPostgres.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QThread>
#include <csignal>
#include <future>
#include <thread>

using namespace Qt::StringLiterals;

using namespace zwtest;
using Kind = ZWSqlLoggerStore::Kind;
using Method = ZWSqlLoggerStore::Method;

namespace {
constexpr qint64 H = 3600;
constexpr qint64 D = 86400;
} // namespace

class SqlLoggerStore : public StoreTest
{};

INSTANTIATE_TEST_SUITE_P(Backends, SqlLoggerStore, testing::Values(Backend::SQLite, Backend::PostgreSQL), BackendName);

TEST_P(SqlLoggerStore, CounterIncreaseCountsResetsAndEdgeSamples)
{
    // Readings; at T0+3H the meter was replaced and restarted from zero.
    Write(u"Main meter.Active energy"_s, Kind::Counter,
        {{T0, 1000.0}, {T0 + H, 1010.0}, {T0 + 2 * H, 1025.0}, {T0 + 3 * H, 4.0}, {T0 + 4 * H, 9.0},
            {T0 + 5 * H, 15.0}});
    const QString name = u"Main meter.Active energy"_s;
    const std::tuple<qint64, qint64, double> cases[] = {
        {T0, T0 + H, 10.0},                                    // samples exactly at both bounds
        {T0, T0 + 2 * H, 25.0}, {T0 + 2 * H, T0 + 3 * H, 4.0}, // only the reset: its reading is the increase
        {T0 + H, T0 + 5 * H, 15.0 + 4.0 + 5.0 + 6.0},
        {T0 + 30 * 60, T0 + 90 * 60, 10.0},            // from the last sample at or before the start
        {T0 + 3 * H + 1, T0 + 4 * H - 1, ZW_NO_VALUE}, // no sample after the start's in reach
        {T0 - D, T0 + H, 10.0},                        // data begins inside the period
        {T0 + 5 * H, T0 + 6 * H, ZW_NO_VALUE},         // nothing after the last sample
    };
    for (const auto& [start, end, increase] : cases)
        for (const Method m : {Method::Rollups, Method::Raw})
            EXPECT_EQ(Value(name, start, end, m), increase)
                << "period " << start - T0 << ".." << end - T0 << " method " << int(m);
    EXPECT_EQ(CountRows(u"counter_resets"_s), 1);
}

TEST_P(SqlLoggerStore, EveryReductionFilter)
{
    Write(u"Pump.Pressure"_s, Kind::Gauge,
        {{T0 - 10, 9.0}, {T0, 3.0}, {T0 + 100, 7.0}, {T0 + H + 5, 1.0}, {T0 + 2 * H, 6.0}, {T0 + 3 * H, 2.0}});
    Write(u"Pump.Energy"_s, Kind::Counter, {{T0, 50.0}, {T0 + H, 55.0}, {T0 + 2 * H, 1.5}, {T0 + 3 * H, 2.0}});
    const std::pair<const char*, double> cases[] = {
        {"Pump.Pressure", (3.0 + 7.0 + 1.0 + 6.0) / 4.0},
        {"Pump.Pressure:avg", (3.0 + 7.0 + 1.0 + 6.0) / 4.0},
        {"Pump.Pressure:min", 1.0},
        {"Pump.Pressure:max", 7.0},
        {"Pump.Pressure:sum", 17.0},
        {"Pump.Pressure:first", 3.0},
        {"Pump.Pressure:last", 6.0},
        {"Pump.Pressure:count", 4.0},
        // A gauge's delta: its falls count as resets, read from raw samples.
        {"Pump.Pressure:delta", 4.0 + 1.0 + 5.0 + 2.0},
        {"Pump.Energy", 5.0 + 1.5 + 0.5},
        {"Pump.Energy:delta", 7.0},
        {"Pump.Energy:avg", (50.0 + 55.0 + 1.5) / 3.0},
        {"Pump.Energy:first", 50.0},
        {"Pump.Energy:last", 1.5},
        {"Pump.Energy:Max", 55.0},
        // The time the increase spans: from the last sample at or before the
        // start to the last one at or before the end.
        {"Pump.Energy:hours", 3.0},
        {"Pump.Energy:HOURS", 3.0},
        {"Nowhere.Nothing", ZW_NO_VALUE},
        {"Pump.Pressure:median", ZW_NO_VALUE},
        {"NoDot", ZW_NO_VALUE},
    };
    QStringList names;
    for (const auto& c : cases)
        names << QString::fromUtf8(c.first);
    for (const Method m : {Method::Rollups, Method::Raw}) {
        const std::vector<double> v = Values(names, T0, T0 + 3 * H, m);
        ASSERT_EQ(v.size(), names.size());
        for (int i = 0; i < names.size(); ++i)
            EXPECT_DOUBLE_EQ(v[size_t(i)], cases[i].second) << cases[i].first << " method " << int(m);
    }
    EXPECT_FALSE(m_store->HasVariable(u"Pump.Pressure:median"_s));
    EXPECT_TRUE(m_store->HasVariable(u"Pump.Pressure:MAX"_s));
    // A period after the data, and a reversed one, have no value.
    EXPECT_EQ(Values({u"Pump.Pressure"_s, u"Pump.Energy"_s}, T0 + 3 * H + 1, T0 + D),
        (std::vector<double>{ZW_NO_VALUE, ZW_NO_VALUE}));
    EXPECT_TRUE(IsNoValue(Value(u"Pump.Pressure"_s, T0 + 60, T0)));
}

TEST_P(SqlLoggerStore, NamesAreValuesNeverSql)
{
    const QString quoted = u"O'Brien's meter.Active \"energy\""_s;
    const QString bracketed = u"[Bay 1].Power [kW]"_s;
    const QString colon = u"Pump.State:on"_s;
    const QString hostile = u"x.y'); DROP TABLE samples; --"_s;
    Write(quoted, Kind::Counter, {{T0, 1.0}, {T0 + 60, 3.5}});
    Write(bracketed, Kind::Gauge, {{T0, 2.0}, {T0 + 60, 4.0}});
    Write(colon, Kind::Gauge, {{T0, 7.0}, {T0 + 60, 9.0}});
    Write(hostile, Kind::Gauge, {{T0, 1.0}});
    const std::vector<double> v
        = Values({quoted, bracketed, colon, colon + u":max"_s, hostile, bracketed + u":min"_s, quoted + u":first"_s},
            T0, T0 + H);
    // The stored name "Pump.State:on" is taken whole, not as "Pump.State" with a
    // filter.
    EXPECT_EQ(v, (std::vector<double>{2.5, 3.0, 8.0, 9.0, 1.0, 2.0, 1.0}));
    EXPECT_EQ(CountRows(u"samples"_s), 7);
    double live = 0.0;
    EXPECT_TRUE(m_store->LiveValue(quoted, live));
    EXPECT_EQ(live, 3.5);
    // The names a chooser offers are the stored names, sorted, and the
    // filters every reduction.
    QStringList names{quoted, bracketed, colon, hostile};
    names.sort();
    EXPECT_EQ(m_store->VariableNames(), names);
    EXPECT_EQ(
        m_store->FilterNames().join(QLatin1Char(',')), QStringLiteral("avg,min,max,sum,first,last,count,delta,hours"));
}

TEST_P(SqlLoggerStore, RewritingSamplesKeepsRollupsAndResetsRight)
{
    const QString name = u"Main meter.Active energy"_s;
    Samples first;
    for (qint64 i = 0; i < 300; ++i)
        first.push_back({T0 + i * 600, 100.0 + double(i)});
    Write(name, Kind::Counter, first);
    EXPECT_EQ(CountRows(u"counter_resets"_s), 0);
    // A dip in the middle makes a reset; the sample after it is a plain rise
    // again.
    Write(name, Kind::Counter, {{T0 + 100 * 600, 3.0}});
    EXPECT_EQ(CountRows(u"counter_resets"_s), 1);
    EXPECT_EQ(Value(name, T0, T0 + 299 * 600), (199.0 - 100.0) + 3.0 + (399.0 - 3.0));
    EXPECT_EQ(Value(name + u":min"_s, T0, T0 + 2 * D), 3.0);
    // Put right again: no reset, and the rollups forget the dip.
    Write(name, Kind::Counter, {{T0 + 100 * 600, 200.0}});
    EXPECT_EQ(CountRows(u"counter_resets"_s), 0);
    EXPECT_EQ(Value(name, T0, T0 + 299 * 600), 299.0);
    EXPECT_EQ(Value(name + u":min"_s, T0, T0 + 2 * D), 100.0);
    EXPECT_EQ(Value(name + u":count"_s, T0, T0 + 2 * D), 288.0);
    EXPECT_EQ(Value(name + u":sum"_s, T0, T0 + 2 * D), Value(name + u":sum"_s, T0, T0 + 2 * D, Method::Raw));
}

TEST_P(SqlLoggerStore, WorkerThreadUsesItsOwnConnectionAndDropsIt)
{
    Write(u"Office.Temperature"_s, Kind::Gauge, {{T0, 20.0}, {T0 + H, 22.0}});
    const int namesBefore = int(QSqlDatabase::connectionNames().size());
    std::vector<double> inThread;
    bool ok = false;
    QString error;
    int connectionsInThread = 0;
    for (int round = 0; round < 3; ++round) {
        // As the viewer does: a new thread for every gathering.
        std::unique_ptr<QThread> thread(QThread::create([&] {
            ok = m_store->PeriodValuesUtc({u"Office.Temperature"_s}, T0, T0 + 2 * H, inThread, &error);
            connectionsInThread = ZWSqlLoggerConnection::ThreadConnectionCount();
        }));
        thread->start();
        ASSERT_TRUE(thread->wait(60000));
        ASSERT_TRUE(ok) << error.toStdString();
        EXPECT_EQ(inThread, std::vector<double>{21.0});
        EXPECT_EQ(connectionsInThread, 1);
        EXPECT_EQ(int(QSqlDatabase::connectionNames().size()), namesBefore);
    }
    EXPECT_EQ(Value(u"Office.Temperature"_s, T0, T0 + 2 * H), 21.0);
}

// A store in a new database of the test process's PostgreSQL server, with
// `options` added to its URL, holding the gauge "A.g".
std::unique_ptr<ZWSqlLoggerStore> PostgresStore(const Samples& samples, const QString& options = QString())
{
    ZWTestPostgres* server = ZWTestPostgres::Instance();
    EXPECT_NE(server, nullptr) << ZWTestPostgres::Error().toStdString();
    ZWLoggerUrl url;
    QString error;
    if (!server || !url.Parse(server->NewDatabaseUrl() + options, &error))
        return nullptr;
    auto store = std::make_unique<ZWSqlLoggerStore>(url, ZWSqlLoggerStore::Creation::CreateMissing);
    EXPECT_TRUE(store->Open(&error)) << error.toStdString();
    WriteSamples(*store, u"A.g"_s, Kind::Gauge, samples);
    return store;
}

TEST(SqlLoggerStorePostgres, ReconnectsAfterAServerRestart)
{
    if (ZWTestPostgres::OptedOut())
        GTEST_SKIP() << "ZW_TEST_SKIP_POSTGRES=1";
    const auto store = PostgresStore({{T0, 4.0}, {T0 + 60, 6.0}});
    ASSERT_TRUE(store);
    ZWTestPostgres* server = ZWTestPostgres::Instance();
    QString error;
    std::vector<double> v;
    for (int round = 0; round < 6; ++round) {
        if (round == 3) {
            ASSERT_TRUE(server->Restart(&error)) << error.toStdString();
        }
        ASSERT_TRUE(store->PeriodValuesUtc({u"A.g"_s}, T0, T0 + H, v, &error))
            << "round " << round << ": " << error.toStdString();
        EXPECT_EQ(v, std::vector<double>{5.0}) << "round " << round;
    }
    // A server that is gone: a clear message, no hang, no crash; back again:
    // values again.
    ASSERT_TRUE(server->Stop(&error)) << error.toStdString();
    EXPECT_FALSE(store->PeriodValuesUtc({u"A.g"_s}, T0, T0 + H, v, &error));
    EXPECT_TRUE(error.contains(u"Cannot reach the logger database"_s)) << error.toStdString();
    EXPECT_TRUE(error.contains(u"127.0.0.1"_s)) << error.toStdString();
    ASSERT_TRUE(server->Start(&error)) << error.toStdString();
    ASSERT_TRUE(store->PeriodValuesUtc({u"A.g"_s}, T0, T0 + H, v, &error)) << error.toStdString();
    EXPECT_EQ(v, std::vector<double>{5.0});
}

namespace {

struct CancelledProgress : ZWProgress
{
    void SetText(const QString&) override {}
    void SetRange(int, int) override {}
    void SetPos(int) override {}
    void End(bool) override {}
    bool IsCancelled() const override { return true; }
};

} // namespace

// The server's process stopped: the connection stays up (its kernel still
// answers) but no answer comes, as behind a network that went silent.
TEST(SqlLoggerStorePostgres, AServerThatStopsAnsweringIsGivenUpOnAndAReadingCanBeCancelled)
{
    if (ZWTestPostgres::OptedOut())
        GTEST_SKIP() << "ZW_TEST_SKIP_POSTGRES=1";
    const auto store = PostgresStore({{T0, 4.0}}, u"&statement_timeout=1"_s);
    ASSERT_TRUE(store);
    const std::pair<bool, const char*> cases[]
        = {{false, "the server did not answer within 1 s"}, {true, "the reading was cancelled"}};
    for (const auto& [cancel, message] : cases) {
        SCOPED_TRACE(message);
        std::vector<double> v;
        QString error;
        ASSERT_TRUE(store->PeriodValuesUtc({u"A.g"_s}, T0, T0 + H, v, &error)) << error.toStdString();
        QSqlQuery pid(store->Connection().Database());
        ASSERT_TRUE(pid.exec(u"SELECT pg_backend_pid()"_s) && pid.next());
        const pid_t backend = pid_t(pid.value(0).toLongLong());
        ASSERT_GE(store->Connection().Socket(), 0);
        ASSERT_EQ(::kill(backend, SIGSTOP), 0);
        // Should the reading wait for ever, the server goes on after 60 s
        // and the test fails instead of hanging.
        std::promise<void> finished;
        std::thread resume([backend, done = finished.get_future()] {
            done.wait_for(std::chrono::seconds(60));
            ::kill(backend, SIGCONT);
        });
        CancelledProgress cancelled;
        const bool read
            = store->PeriodValuesUtc({u"A.g"_s}, T0, T0 + H, v, &error, Method::Rollups, cancel ? &cancelled : nullptr);
        finished.set_value();
        resume.join();
        EXPECT_FALSE(read);
        EXPECT_TRUE(error.contains(QString::fromLatin1(message))) << error.toStdString();
        // The next reading opens a new connection and works.
        ASSERT_TRUE(store->PeriodValuesUtc({u"A.g"_s}, T0, T0 + H, v, &error)) << error.toStdString();
        EXPECT_EQ(v, std::vector<double>{4.0});
    }
}
