// The recovery folder: what a crash leaves is offered, a clean save leaves
// nothing, and a damaged folder never stops the start.
#include "editor/ZWRecovery.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

TEST(Recovery, StatesLeftBehindAreOfferedNewestFirstAndRemovedAfterASave)
{
    QTemporaryDir dir;
    const ZWRecovery recovery(dir.filePath(u"settings/zwinformes-recovery"_s));
    // The index keeps the time to the millisecond: the writes are kept
    // apart so that "newest" is defined.
    ASSERT_TRUE(recovery.Write(u"/r/a.xrpt"_s, u"/r/a.xrpt"_s, "<design>a1</design>"));
    QThread::msleep(5);
    ASSERT_TRUE(recovery.Write(u"new:1"_s, QString(), "<design>new</design>"));
    QThread::msleep(5);
    ASSERT_TRUE(recovery.Write(u"/r/a.xrpt"_s, u"/r/a.xrpt"_s, "<design>a2</design>"));

    auto pending = recovery.Pending();
    ASSERT_EQ(pending.size(), 2u) << "a second write of the same report replaces the first";
    EXPECT_EQ(std::tuple(pending[0].key, pending[1].reportPath), std::tuple(u"/r/a.xrpt"_s, QString()));
    QByteArray content;
    ASSERT_TRUE(ZWRecovery::Read(pending[0], content));
    EXPECT_EQ(content, "<design>a2</design>");

    recovery.Remove(u"/r/a.xrpt"_s);
    pending = recovery.Pending();
    ASSERT_EQ(pending.size(), 1u);
    EXPECT_EQ(pending[0].key, u"new:1"_s);
    recovery.Remove(u"new:1"_s);
    EXPECT_TRUE(recovery.Pending().empty());
    EXPECT_TRUE(QDir(recovery.Folder()).entryList(QDir::Files).isEmpty()) << "nothing is left in the folder";
}

TEST(Recovery, DamagedIndexesAndMissingContentAreSkipped)
{
    QTemporaryDir dir;
    const ZWRecovery recovery(dir.path());
    ASSERT_TRUE(recovery.Write(u"good"_s, u"/g.xrpt"_s, "<design/>"));
    ASSERT_TRUE(recovery.Write(u"gone"_s, u"/h.xrpt"_s, "<design/>"));
    for (const auto& entry : recovery.Pending())
        if (entry.key == u"gone"_s)
            QFile::remove(entry.file);
    const std::pair<const char*, QByteArray> junk[] = {
        {"garbage.json", "{not json"}, {"array.json", "[1,2,3]"},
        {"foreign.json", R"({"key":"good","report":"/x"})"}, // names another key's file
    };
    for (const auto& [name, bytes] : junk) {
        QFile file(dir.filePath(QString::fromLatin1(name)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    const auto pending = recovery.Pending();
    ASSERT_EQ(pending.size(), 1u);
    EXPECT_EQ(pending[0].reportPath, u"/g.xrpt"_s);
    EXPECT_EQ(ZWRecovery::FolderBeside(u"/home/u/.config/ZWInformes/zwinformes.conf"_s),
        u"/home/u/.config/ZWInformes/zwinformes-recovery"_s);
}
