#include "app/demo/ZWDemoData.h"
#include "host/core/ZWNoValue.h"
#include "host/store/ZWSqlLoggerConnection.h"
#include "host/store/ZWSqlLoggerStore.h"
#include "tests/support/ZWTestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

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
    const QString path = dir.path() + u"/not/yet/logger.sqlite"_s;
    auto store = Store(u"sqlite:"_s + path);
    QString error;
    ASSERT_TRUE(store->Open(&error)) << error.toStdString();
    EXPECT_TRUE(QFile::exists(path));
    EXPECT_TRUE(store->Variables().isEmpty());
    // Once made, readers open it.
    EXPECT_TRUE(Store(u"sqlite:"_s + path, Creation::OpenExisting)->Open(&error)) << error.toStdString();
}

TEST(SqliteStore, AReaderRefusesWhatIsNoLoggerDatabaseAndCreatesNothing)
{
    QTemporaryDir dir;
    ASSERT_TRUE(QDir(dir.path()).mkdir(u"folder.sqlite"_s));
    ASSERT_TRUE(zwtest::WriteFile(dir.filePath(u"junk.sqlite"_s), QByteArray(4096, 'x')));
    QString error;
    {
        // An SQLite database of something else, and a logger database of a
        // newer schema.
        auto other = Store(u"sqlite:"_s + dir.filePath(u"other.sqlite"_s));
        ASSERT_TRUE(other->Connection().Open(&error));
        ASSERT_TRUE(other->Connection().Exec(u"CREATE TABLE t(x)"_s, &error)) << error.toStdString();
        auto newer = Store(u"sqlite:"_s + dir.filePath(u"newer.sqlite"_s));
        ASSERT_TRUE(newer->Open(&error)) << error.toStdString();
        ASSERT_TRUE(newer->Connection().Exec(u"UPDATE zw_schema SET version = 99"_s, &error));
    }
    const std::pair<const char*, const char*> cases[]
        = {{"missing.sqlite", "the file does not exist"}, {"no/such/folder/x.sqlite", "the file does not exist"},
            {"folder.sqlite", "it is not a file"}, {"other.sqlite", "holds no logged data tables"},
            {"junk.sqlite", "Cannot open the logger database sqlite:"}, {"newer.sqlite", "schema is version 99"}};
    for (const auto& [file, message] : cases) {
        const QString path = dir.filePath(QString::fromLatin1(file));
        const bool existed = QFileInfo::exists(path);
        EXPECT_FALSE(Store(u"sqlite:"_s + path, Creation::OpenExisting)->Open(&error)) << file;
        EXPECT_TRUE(error.contains(QString::fromLatin1(message))) << file << ": " << error.toStdString();
        EXPECT_TRUE(error.contains(path)) << error.toStdString();
        EXPECT_EQ(QFileInfo::exists(path), existed) << file;
    }
    EXPECT_FALSE(QFileInfo::exists(dir.filePath(u"no"_s)));
    // The other database was left as it was: no logger tables added.
    auto other = Store(u"sqlite:"_s + dir.filePath(u"other.sqlite"_s), Creation::OpenExisting);
    ASSERT_TRUE(other->Connection().Open(&error));
    QSqlQuery tables(other->Connection().Database());
    ASSERT_TRUE(tables.exec(u"SELECT COUNT(*) FROM sqlite_master WHERE type = 'table'"_s) && tables.next());
    EXPECT_EQ(tables.value(0).toInt(), 1);
}

TEST(SqliteStore, DemoDataIsPlausible)
{
    QTemporaryDir dir;
    auto store = Store(u"sqlite:"_s + dir.path() + u"/demo.sqlite"_s);
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
    QStringList names = store->VariableNames();
    EXPECT_EQ(names,
        (QStringList{u"Boiler room.Temperature"_s, u"Circuit 001.Active power"_s, u"Circuit 002.Active energy"_s,
            u"Gas meter.Volume"_s, u"Main meter.Active energy"_s, u"Main meter.Active power"_s, u"Office.Temperature"_s,
            u"PV inverter.Energy"_s, u"Water meter.Volume"_s}));
    EXPECT_EQ(store->FindVariable(u"Main meter.Active energy"_s)->unit, u"kWh"_s);
    // The main meter, the water meter and every fourth synthetic counter
    // were each replaced once.
    QSqlQuery q(store->Connection().Database());
    ASSERT_TRUE(q.exec(QStringLiteral("SELECT v.name FROM counter_resets r JOIN variables v ON v.id = r.variable_id "
                                      "ORDER BY v.name")));
    QStringList reset;
    while (q.next())
        reset << q.value(0).toString();
    EXPECT_EQ(
        reset, (QStringList{u"Circuit 002.Active energy"_s, u"Main meter.Active energy"_s, u"Water meter.Volume"_s}));

    // November 2025 in Madrid, a month of an office: electricity in the
    // thousands of kWh, a temperature indoors, power well below 100 kW.
    std::vector<double> rolled;
    ASSERT_TRUE(store->PeriodValuesUtc(names, 1761951600, 1764543600, rolled, &error)) << error.toStdString();
    for (int i = 0; i < names.size(); ++i)
        EXPECT_FALSE(IsNoValue(rolled[size_t(i)])) << names[i].toStdString();
    const std::tuple<const char*, double, double> ranges[] = {{"Main meter.Active energy", 1000.0, 20000.0},
        {"Office.Temperature", 15.0, 28.0}, {"Main meter.Active power", 1.0, 100.0}, {"Gas meter.Volume", 0.0, 1e9}};
    for (const auto& [name, low, high] : ranges) {
        const double value = rolled[size_t(names.indexOf(QString::fromUtf8(name)))];
        EXPECT_GT(value, low) << name;
        EXPECT_LT(value, high) << name;
    }
}

} // namespace
