#include "app/demo/ZWDemoData.h"
#include "host/core/ZWNoValue.h"
#include "host/store/ZWLoggerSchema.h"
#include "host/store/ZWSqlLoggerConnection.h"
#include "host/store/ZWSqlLoggerStore.h"
#include "tests/support/ZWTestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

using Creation = ZWSqlLoggerStore::Creation;

std::unique_ptr<ZWSqlLoggerStore> Store(const QString& url, Creation creation = Creation::CreateMissing)
{
    ZWLoggerUrl parsed;
    QString error;
    EXPECT_TRUE(parsed.Parse(url, &error)) << error.toStdString();
    return std::make_unique<ZWSqlLoggerStore>(parsed, creation);
}

TEST(SqliteStore, AWriterCreatesAMissingFileAndFolder)
{
    QTemporaryDir dir;
    const QString path = dir.path() + QStringLiteral("/not/yet/logger.sqlite");
    auto store = Store(QStringLiteral("sqlite:") + path);
    QString error;
    ASSERT_TRUE(store->Open(&error)) << error.toStdString();
    EXPECT_TRUE(QFile::exists(path));
    EXPECT_TRUE(store->Variables().isEmpty());
    // Once made, readers open it.
    EXPECT_TRUE(Store(QStringLiteral("sqlite:") + path, Creation::OpenExisting)->Open(&error)) << error.toStdString();
}

TEST(SqliteStore, AReaderRefusesWhatIsNoLoggerDatabaseAndCreatesNothing)
{
    QTemporaryDir dir;
    ASSERT_TRUE(QDir(dir.path()).mkdir(QStringLiteral("folder.sqlite")));
    {
        // An SQLite database of something else.
        auto other = Store(QStringLiteral("sqlite:") + dir.filePath(QStringLiteral("other.sqlite")));
        QString error;
        ASSERT_TRUE(other->Connection().Open(&error));
        ASSERT_TRUE(other->Connection().Exec(QStringLiteral("CREATE TABLE t(x)"), &error)) << error.toStdString();
    }
    struct Case
    {
        const char* path;
        const char* message;
    } cases[] = {
        {"missing.sqlite", "the file does not exist"},
        {"no/such/folder/x.sqlite", "the file does not exist"},
        {"folder.sqlite", "it is not a file"},
        {"other.sqlite", "holds no logged data tables"},
    };
    for (const Case& c : cases) {
        const QString path = dir.filePath(QString::fromLatin1(c.path));
        const bool existed = QFileInfo::exists(path);
        QString error;
        EXPECT_FALSE(Store(QStringLiteral("sqlite:") + path, Creation::OpenExisting)->Open(&error)) << c.path;
        EXPECT_TRUE(error.contains(QString::fromLatin1(c.message))) << c.path << ": " << error.toStdString();
        EXPECT_TRUE(error.contains(path)) << error.toStdString();
        EXPECT_EQ(QFileInfo::exists(path), existed) << c.path;
    }
    EXPECT_FALSE(QFileInfo::exists(dir.filePath(QStringLiteral("no"))));
    // The other database was left as it was: no logger tables added.
    auto other
        = Store(QStringLiteral("sqlite:") + dir.filePath(QStringLiteral("other.sqlite")), Creation::OpenExisting);
    QString error;
    ASSERT_TRUE(other->Connection().Open(&error));
    QSqlQuery tables(other->Connection().Database());
    ASSERT_TRUE(tables.exec(QStringLiteral("SELECT COUNT(*) FROM sqlite_master WHERE type = 'table'")));
    ASSERT_TRUE(tables.next());
    EXPECT_EQ(tables.value(0).toInt(), 1);
}

TEST(SqliteStore, NotADatabaseOrANewerSchemaIsAClearError)
{
    QTemporaryDir dir;
    const QString junk = dir.path() + QStringLiteral("/junk.sqlite");
    ASSERT_TRUE(zwtest::WriteFile(junk, QByteArray(4096, 'x')));
    QString error;
    EXPECT_FALSE(Store(QStringLiteral("sqlite:") + junk, Creation::OpenExisting)->Open(&error));
    EXPECT_TRUE(error.contains(QStringLiteral("Cannot open the logger database sqlite:") + junk))
        << error.toStdString();

    const QString newer = dir.path() + QStringLiteral("/newer.sqlite");
    {
        auto store = Store(QStringLiteral("sqlite:") + newer);
        ASSERT_TRUE(store->Open(&error)) << error.toStdString();
        ASSERT_TRUE(store->Connection().Exec(QStringLiteral("UPDATE zw_schema SET version = 99"), &error));
    }
    EXPECT_FALSE(Store(QStringLiteral("sqlite:") + newer, Creation::OpenExisting)->Open(&error));
    EXPECT_TRUE(error.contains(QStringLiteral("schema is version 99"))) << error.toStdString();
}

TEST(SqliteStore, DemoDataIsPlausibleAndRollupsMatchRawSamples)
{
    QTemporaryDir dir;
    auto store = Store(QStringLiteral("sqlite:") + dir.path() + QStringLiteral("/demo.sqlite"));
    QString error;
    ASSERT_TRUE(store->Open(&error));
    ZWDemoData demo;
    ZWDemoData::Options options;
    options.months = 3;
    options.variables = 9;
    options.endUtc = 1767225600; // 2026-01-01T00:00:00Z
    ASSERT_TRUE(demo.Generate(*store, options, nullptr, &error)) << error.toStdString();
    EXPECT_EQ(demo.LastUtc(), 1767225600);
    EXPECT_EQ(demo.FirstUtc(), 1759276800); // 2025-10-01T00:00:00Z
    EXPECT_EQ(demo.SamplesWritten(), 9 * ((1767225600 - 1759276800) / 900 + 1));
    QStringList names;
    for (const auto& v : store->Variables())
        names << v.name;
    EXPECT_EQ(names,
        (QStringList{QStringLiteral("Boiler room.Temperature"), QStringLiteral("Circuit 001.Active power"),
            QStringLiteral("Circuit 002.Active energy"), QStringLiteral("Gas meter.Volume"),
            QStringLiteral("Main meter.Active energy"), QStringLiteral("Main meter.Active power"),
            QStringLiteral("Office.Temperature"), QStringLiteral("PV inverter.Energy"),
            QStringLiteral("Water meter.Volume")}));
    EXPECT_EQ(store->FindVariable(QStringLiteral("Main meter.Active energy"))->unit, QStringLiteral("kWh"));
    // The main meter, the water meter and every fourth synthetic counter
    // were each replaced once.
    QSqlQuery q(store->Connection().Database());
    ASSERT_TRUE(q.exec(QStringLiteral("SELECT v.name FROM counter_resets r JOIN variables v ON v.id = r.variable_id "
                                      "ORDER BY v.name")));
    QStringList reset;
    while (q.next())
        reset << q.value(0).toString();
    EXPECT_EQ(reset,
        (QStringList{QStringLiteral("Circuit 002.Active energy"), QStringLiteral("Main meter.Active energy"),
            QStringLiteral("Water meter.Volume")}));

    // November 2025 in Madrid, by rollups and by raw samples.
    const qint64 s = 1761951600, e = 1764543600;
    std::vector<double> rolled, raw;
    ASSERT_TRUE(store->PeriodValuesUtc(names, s, e, rolled, &error)) << error.toStdString();
    ASSERT_TRUE(store->PeriodValuesUtc(names, s, e, raw, &error, ZWSqlLoggerStore::Method::Raw));
    for (int i = 0; i < names.size(); ++i) {
        ASSERT_FALSE(IsNoValue(rolled[size_t(i)])) << names[i].toStdString();
        EXPECT_NEAR(rolled[size_t(i)], raw[size_t(i)], 1e-9 * std::max(1.0, std::fabs(raw[size_t(i)])))
            << names[i].toStdString();
    }
    // A month of an office: electricity in the thousands of kWh, a
    // temperature indoors, power well below 100 kW.
    const auto at = [&](const char* n) { return rolled[size_t(names.indexOf(QString::fromUtf8(n)))]; };
    EXPECT_GT(at("Main meter.Active energy"), 1000.0);
    EXPECT_LT(at("Main meter.Active energy"), 20000.0);
    EXPECT_GT(at("Office.Temperature"), 15.0);
    EXPECT_LT(at("Office.Temperature"), 28.0);
    EXPECT_GT(at("Main meter.Active power"), 1.0);
    EXPECT_LT(at("Main meter.Active power"), 100.0);
    EXPECT_GT(at("Gas meter.Volume"), 0.0);
}

} // namespace
