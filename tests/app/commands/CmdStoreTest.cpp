// The import and demo-db commands as a user runs them: exit codes and messages.
#include "tests/app/commands/ProgramRun.h"
#include "tests/support/ZWTestSupport.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

using Result = zwtest::ProgramResult;

Result Zw(const QStringList& args)
{
    zwtest::RunOptions options;
    options.environment = {{QStringLiteral("TZ"), QStringLiteral("UTC")}, {QStringLiteral("ZWINFORMES_DB"), QString()}};
    return zwtest::RunProgram(args, options);
}

TEST(CmdStore, ImportReportsAndRefusesBadRows)
{
    QTemporaryDir dir;
    const QString db = QStringLiteral("sqlite:") + dir.path() + QStringLiteral("/x.sqlite");
    const QString good = dir.path() + QStringLiteral("/good.csv");
    const QString bad = dir.path() + QStringLiteral("/bad.csv");
    ASSERT_TRUE(zwtest::WriteFile(good, "time,M.E,R.T\n2025-01-06T00:00:00Z,1,20\n2025-01-06T01:00:00Z,3,\n"));
    ASSERT_TRUE(zwtest::WriteFile(bad, "time,M.E\n2025-01-06T02:00:00Z,4\n2025-01-06T03:00:00Z,x\n"));

    Result r = Zw({QStringLiteral("import"), QStringLiteral("--db"), db, QStringLiteral("--counter"),
        QStringLiteral("M.E"), good});
    EXPECT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_TRUE(r.out.startsWith(QStringLiteral("Imported 3 samples of 2 variables (2 new) from 2 rows")))
        << r.out.toStdString();

    r = Zw({QStringLiteral("import"), QStringLiteral("--db"), db, bad});
    EXPECT_EQ(r.status, 1);
    EXPECT_TRUE(r.err.contains(QStringLiteral("bad.csv: line 3: 'x' is not a number"))) << r.err.toStdString();

    r = Zw({QStringLiteral("period-values"), QStringLiteral("--db"), db, QStringLiteral("--from"),
        QStringLiteral("2025-01-06"), QStringLiteral("--to"), QStringLiteral("2025-01-07"), QStringLiteral("M.E"),
        QStringLiteral("R.T:count"), QStringLiteral("No.Such")});
    EXPECT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_EQ(r.out, QStringLiteral("M.E\t2\nR.T:count\t1\nNo.Such\t-\n"));

    EXPECT_EQ(Zw({QStringLiteral("import"), QStringLiteral("--db"), db}).status, 2);
    EXPECT_EQ(Zw({QStringLiteral("import"), QStringLiteral("--db"), QStringLiteral("mysql://x/y"), good}).status, 2);
    r = Zw({QStringLiteral("import"), QStringLiteral("--db"), db, dir.path() + QStringLiteral("/missing.csv")});
    EXPECT_EQ(r.status, 1);
    EXPECT_TRUE(r.err.contains(QStringLiteral("cannot open the file"))) << r.err.toStdString();
}

TEST(CmdStore, DemoDbFillsOnceAndReplacesOnRequest)
{
    QTemporaryDir dir;
    const QString db = QStringLiteral("sqlite:") + dir.path() + QStringLiteral("/demo.sqlite");
    const QStringList args = {QStringLiteral("demo-db"), QStringLiteral("--db"), db, QStringLiteral("--months"),
        QStringLiteral("1"), QStringLiteral("--until"), QStringLiteral("2025-02-01T00:00:00Z")};
    Result r = Zw(args);
    EXPECT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_TRUE(r.out.startsWith(QStringLiteral("Wrote 20839 samples of 7 variables, 2025-01-01T00:00:00Z to "
                                                "2025-02-01T00:00:00Z")))
        << r.out.toStdString();
    r = Zw(args);
    EXPECT_EQ(r.status, 1);
    EXPECT_TRUE(r.err.contains(QStringLiteral("already holds logged data"))) << r.err.toStdString();
    EXPECT_EQ(Zw(args + QStringList{QStringLiteral("--replace")}).status, 0);
    EXPECT_EQ(
        Zw({QStringLiteral("demo-db"), QStringLiteral("--db"), db, QStringLiteral("--step"), QStringLiteral("5m")})
            .status,
        2);
}

} // namespace
