#include "tests/host/store/ZWStoreTestSupport.h"

#include "host/store/ZWLoggerWriter.h"
#include "host/store/ZWSqlLoggerConnection.h"
#include "tests/support/ZWTestPostgres.h"

#include "host/core/ZWNoValue.h"

#include <QSqlError>
#include <QSqlQuery>
#include <algorithm>
#include <cmath>
#include <ctime>
#include <map>
#include <numeric>

using namespace Qt::StringLiterals;

namespace zwtest {

namespace {

// The store tests share one PostgreSQL server, stopped at the end of the
// run; the DST cases need Madrid's time.
class StoreEnvironment : public testing::Environment
{
public:
    void SetUp() override
    {
        qputenv("TZ", "Europe/Madrid");
        tzset();
    }
    void TearDown() override { ZWTestPostgres::Shutdown(); }
};

const testing::Environment* const g_environment = testing::AddGlobalTestEnvironment(new StoreEnvironment);

} // namespace

std::string BackendName(const testing::TestParamInfo<Backend>& info)
{
    return info.param == Backend::SQLite ? "SQLite" : "PostgreSQL";
}

void StoreTest::SetUp()
{
    if (GetParam() == Backend::PostgreSQL) {
        if (ZWTestPostgres::OptedOut())
            GTEST_SKIP() << "ZW_TEST_SKIP_POSTGRES=1";
        ZWTestPostgres* server = ZWTestPostgres::Instance();
        ASSERT_NE(server, nullptr) << ZWTestPostgres::Error().toStdString();
        m_url = server->NewDatabaseUrl();
    } else {
        ASSERT_TRUE(m_dir.isValid());
        m_url = u"sqlite:"_s + m_dir.path() + u"/logger.sqlite"_s;
    }
    QString error;
    ASSERT_TRUE(m_parsed.Parse(m_url, &error)) << error.toStdString();
    m_store = std::make_unique<ZWSqlLoggerStore>(m_parsed, ZWSqlLoggerStore::Creation::CreateMissing);
    ASSERT_TRUE(m_store->Open(&error)) << error.toStdString();
}

void WriteSamples(ZWSqlLoggerStore& store, const QString& name, ZWSqlLoggerStore::Kind kind, const Samples& samples)
{
    ZWLoggerWriter writer(store);
    QString error;
    qint64 id = 0;
    bool created = false;
    ASSERT_TRUE(writer.Begin(&error)) << error.toStdString();
    ASSERT_TRUE(writer.EnsureVariable(name, kind, QString(), false, id, created, &error)) << error.toStdString();
    for (const auto& [t, v] : samples)
        ASSERT_TRUE(writer.Add(id, t, v, &error)) << error.toStdString();
    ASSERT_TRUE(writer.Commit(&error)) << error.toStdString();
}

std::vector<double> StoreTest::Values(
    const QStringList& names, qint64 start, qint64 end, ZWSqlLoggerStore::Method method)
{
    std::vector<double> values;
    QString error;
    EXPECT_TRUE(m_store->PeriodValuesUtc(names, start, end, values, &error, method)) << error.toStdString();
    return values;
}

double StoreTest::Value(const QString& name, qint64 start, qint64 end, ZWSqlLoggerStore::Method method)
{
    const std::vector<double> values = Values({name}, start, end, method);
    return values.empty() ? -12345.0 : values[0];
}

Reference::Reference(Samples s) : samples(std::move(s))
{
    std::sort(samples.begin(), samples.end());
}

double Reference::Reduce(const QString& reduction, qint64 start, qint64 end) const
{
    if (reduction == QLatin1String("delta"))
        return Increase(start, end);
    std::vector<double> in;
    for (const auto& [t, v] : samples)
        if (t >= start && t < end)
            in.push_back(v);
    if (in.empty())
        return ZW_NO_VALUE;
    const double sum = std::accumulate(in.begin(), in.end(), 0.0);
    const std::map<QString, double> values = {{u"avg"_s, sum / double(in.size())}, {u"sum"_s, sum},
        {u"min"_s, *std::min_element(in.begin(), in.end())}, {u"max"_s, *std::max_element(in.begin(), in.end())},
        {u"count"_s, double(in.size())}, {u"first"_s, in.front()}, {u"last"_s, in.back()}};
    return values.at(reduction);
}

double Reference::Increase(qint64 start, qint64 end) const
{
    int first = -1, last = -1;
    for (int i = 0; i < int(samples.size()); ++i) {
        if (samples[size_t(i)].first <= start)
            first = i;
        if (samples[size_t(i)].first <= end)
            last = i;
    }
    if (first < 0 && !samples.empty() && samples[0].first <= end)
        first = 0;
    if (first < 0 || last <= first)
        return ZW_NO_VALUE;
    double sum = 0.0;
    for (int i = first + 1; i <= last; ++i) {
        const double d = samples[size_t(i)].second - samples[size_t(i - 1)].second;
        sum += d >= 0 ? d : samples[size_t(i)].second;
    }
    return sum;
}

ZWDateTime At(const char* iso)
{
    ZWDateTime t;
    EXPECT_TRUE(String2DateTime(t, QString::fromLatin1(iso))) << iso;
    return t;
}

bool Close(double a, double b, double relative)
{
    if (IsNoValue(a) || IsNoValue(b))
        return a == b;
    return std::fabs(a - b) <= relative * std::max({1.0, std::fabs(a), std::fabs(b)});
}

qint64 StoreTest::CountRows(const QString& table)
{
    QSqlQuery q(m_store->Connection().Database());
    EXPECT_TRUE(q.exec(u"SELECT COUNT(*) FROM "_s + table)) << q.lastError().text().toStdString();
    return q.next() ? q.value(0).toLongLong() : -1;
}

} // namespace zwtest
