#include "host/store/ZWLoggerImport.h"
#include "tests/host/store/ZWStoreTestSupport.h"
#include "tests/support/ZWTestSupport.h"

using namespace Qt::StringLiterals;

using namespace zwtest;

namespace {

class LoggerImport : public StoreTest
{
protected:
    bool Import(const QByteArray& csv, QString* error, const QStringList& counters = {})
    {
        const QString path = m_dir.path() + u"/in%1.csv"_s.arg(++m_files);
        EXPECT_TRUE(WriteFile(path, csv));
        ZWLoggerImport import(*m_store);
        import.SetCounters(counters);
        return import.ImportFile(path, nullptr, error);
    }
    int m_files = 0;
};

// A header of `count` distinct variables, all in one line.
QByteArray ManyColumns(int count)
{
    QByteArray header = "time";
    for (int i = 0; i < count; ++i)
        header += ",Bay." + QByteArray::number(i);
    return header + "\n";
}

INSTANTIATE_TEST_SUITE_P(Backends, LoggerImport, testing::Values(Backend::SQLite, Backend::PostgreSQL), BackendName);

} // namespace

TEST_P(LoggerImport, ReadsInstantsLocalTimesQuotedNamesLineEndsAndSkipsEmptyCells)
{
    QString error;
    ASSERT_TRUE(Import("\xEF\xBB\xBFtime,Main meter.Active energy,\"Room \"\"A\"\", north.Temp, \xC2\xB0"
                       "C\"\r\n"
                       "2025-01-06T00:00:00Z,100.5,20\r\n"
                       "2025-01-06 01:00:00+01:00,101.5,\r\n" // the same instant: replaces
                       "2025-01-06T00:30:00.750Z,102,21\r\n"
                       "\r\n"
                       "2025-01-06T02:00:00,103,-1e1\r\n", // local (Madrid, UTC+1): 01:00Z
        &error, {u"Main meter.Active energy"_s}))
        << error.toStdString();
    const QString room = u"Room \"A\", north.Temp, \u00B0C"_s;
    const auto energy = m_store->FindVariable(u"Main meter.Active energy"_s);
    const auto temp = m_store->FindVariable(room);
    ASSERT_TRUE(energy && temp);
    EXPECT_EQ(energy->kind, ZWSqlLoggerStore::Kind::Counter);
    EXPECT_EQ(temp->kind, ZWSqlLoggerStore::Kind::Gauge);
    EXPECT_EQ(CountRows(u"samples"_s), 3 + 3);
    const std::vector<double> v
        = Values({u"Main meter.Active energy"_s, room, u"Main meter.Active energy:first"_s, room + u":count"_s}, T0,
            T0 + 2 * 3600);
    EXPECT_EQ(v, (std::vector<double>{103.0 - 101.5, (20.0 + 21.0 - 10.0) / 3.0, 101.5, 3.0}));

    // Lines may end with a carriage return alone.
    ASSERT_TRUE(Import("time,A.x\r2025-01-06T00:00:00Z,1\r\r2025-01-06T01:00:00Z,2\r\n2025-01-06T02:00:00Z,3\n"
                       "2025-01-06T03:00:00Z,4",
        &error))
        << error.toStdString();
    EXPECT_EQ(CountRows(u"samples"_s), 6 + 4);
    EXPECT_EQ(Value(u"A.x:sum"_s, T0, T0 + 86400), 10.0);
    // A bad row after CR line ends is named by its line.
    EXPECT_FALSE(Import("time,A.x\r2025-01-06T00:00:00Z,1\rbad,2\r", &error));
    EXPECT_TRUE(error.contains(u"line 3: 'bad'"_s)) << error.toStdString();
}

TEST_P(LoggerImport, ABadRowStopsTheImportAndKeepsNothing)
{
    QString error;
    ASSERT_TRUE(Import("time,A.x\n2025-01-06T00:00:00Z,1\n", &error)) << error.toStdString();
    const std::pair<QByteArray, QByteArray> cases[] = {
        {"time,A.x,B.y\n2025-01-06T01:00:00Z,5,6\n2025-01-06T02:00:00Z,7,8\n2025-01-06T03:00:00Z,abc,9\n",
            "line 4: 'abc' is not a number"},
        {"time,A.x,B.y\n2025-01-06T01:00:00Z,5,6\n2025-01-06T02:00:00Z,7\n",
            "line 3: the row has 2 cells, the header 3"},
        {"time,A.x,B.y\n2025-01-06T01:00:00Z,5,6\n2025-13-06T02:00:00Z,7,8\n",
            "line 3: '2025-13-06T02:00:00Z' is not a date"},
        {"time,A.x,B.y\n\n2025-01-06T01:00:00Z,5,6\nyesterday,7,8\n", "line 4: 'yesterday'"},
        {"time,A.x,B.y\n2025-01-06T01:00:00Z,nan,6\n", "line 2: 'nan' is not a number"},
        {"time,A.x,B.y\n2025-01-06T01:00:00Z,\"5,6\n", "line 2: a quoted cell is not closed"},
        {"when,A.x\n", "line 1: the header must begin with the column 'time'"},
        {"time,A.x,Nodot\n", "line 1: 'Nodot' is not a device variable name"},
        {"time,A.x,A.x\n", "line 1: variable 'A.x' appears twice"},
        {"", "line 0: the file is empty"},
        {"time,A.x\n1969-12-31T23:59:59Z,1\n", "line 2: the time lies before 1970"},
        // A long cell is quoted in part.
        {"time,A.x\n2025-01-06T01:00:00Z," + QByteArray(1000, '7') + "e\n",
            "line 2: '" + QByteArray(80, '7') + "… (1001 characters)' is not a number"},
        {"time,A.x\n" + QByteArray(300, 'T') + ",1\n", "line 2: '" + QByteArray(80, 'T') + "… (300 characters)'"},
        {QByteArray("time,A.x,B\0.y\n", 14),
            "line 1: the variable name 'B\\u0000.y' holds a control character (U+0000)"},
        {"time,A.x,B.y\tz\n", "holds a control character (U+0009)"},
        // Bounds: columns and line length.
        {ManyColumns(ZWLoggerImport::MaxColumns + 1),
            "line 1: the header has 10001 variable columns; a file may have at most 10000"},
        {"time,A.x\n2025-01-06T01:00:00Z," + QByteArray(ZWLoggerImport::MaxLineChars, '1') + "\n",
            "line 2: the line is longer than 4194304 characters"},
    };
    for (const auto& [csv, message] : cases) {
        EXPECT_FALSE(Import(csv, &error)) << message.toStdString();
        EXPECT_TRUE(error.contains(QString::fromUtf8(message)))
            << error.left(300).toStdString() << " / " << message.toStdString();
        // Nothing of the file: not B.y, not the good rows before the bad one.
        EXPECT_EQ(std::tuple(CountRows(u"samples"_s), CountRows(u"variables"_s), CountRows(u"rollup_hour"_s)),
            std::tuple(1, 1, 1))
            << message.toStdString();
    }
}

TEST_P(LoggerImport, ImportingAgainReplacesValuesAndRollupsFollow)
{
    QByteArray csv = "time,Meter.E,Room.T\n";
    for (int i = 0; i < 200; ++i)
        csv += u"2025-01-06T%1:%2:00Z,%3,%4\n"_s.arg(i / 60, 2, 10, QLatin1Char('0'))
                   .arg(i % 60, 2, 10, QLatin1Char('0'))
                   .arg(1000 + i)
                   .arg(i % 7)
                   .toUtf8();
    QString error;
    ASSERT_TRUE(Import(csv, &error, {u"Meter.E"_s})) << error.toStdString();
    const qint64 s = T0 - 3600, e = T0 + 86400;
    EXPECT_EQ(Value(u"Meter.E"_s, s, e), 199.0);
    // Two readings rewritten at 01:40 and 01:41 as if a new meter had been
    // fitted: a reset, then the old meter's readings again, which count as a
    // rise from the new meter's.
    ASSERT_TRUE(Import("time,Meter.E,Room.T\n2025-01-06T01:40:00Z,0.5,100\n2025-01-06T01:41:00Z,1.5,\n", &error))
        << error.toStdString();
    EXPECT_EQ(CountRows(u"samples"_s), 400);
    EXPECT_EQ(Value(u"Meter.E"_s, s, e), (1099.0 - 1000.0) + 0.5 + 1.0 + (1102.0 - 1.5) + (1199.0 - 1102.0));
    EXPECT_EQ(Value(u"Room.T:max"_s, s, e), 100.0);
    // Still a counter: the import names no kind for known variables.
    EXPECT_EQ(m_store->FindVariable(u"Meter.E"_s)->kind, ZWSqlLoggerStore::Kind::Counter);
}

TEST(LoggerImportText, TimesAndCells)
{
    // -1: not a time
    const std::pair<const char*, qint64> times[] = {
        {"2025-01-06T00:00:00Z", T0},
        {"2025-01-06T00:00Z", T0},
        {"2025-01-06 00:00:00z", T0},
        {"2025-01-06T01:30:00+01:30", T0},
        {"2025-01-05T22:00:00-0200", T0},
        {"2025-01-06T02:00:00+02", T0},
        {"2025-01-06T00:00:00.999Z", T0},
        {"2025-01-06", T0 - 3600}, // local midnight in Madrid
        {"2025-01-06T25:00:00Z", -1},
        {"2025-02-30T00:00:00Z", -1},
        {"2025-01-06T00:00:00+24:00", -1},
        {"06/01/2025 00:00", -1},
        {"", -1},
    };
    for (const auto& [text, expected] : times) {
        qint64 utc = -1;
        const bool ok = ZWLoggerImport::ParseTime(QString::fromUtf8(text), utc);
        EXPECT_EQ(ok ? utc : -1, expected) << text;
    }
    QStringList cells;
    ASSERT_TRUE(ZWLoggerImport::SplitCsvLine(u" a , \"b,\"\"c\"\"\" ,,\"\" "_s, cells));
    EXPECT_EQ(cells, (QStringList{u"a"_s, u"b,\"c\""_s, QString(), QString()}));
    EXPECT_FALSE(ZWLoggerImport::SplitCsvLine(u"a,\"b"_s, cells));
}
