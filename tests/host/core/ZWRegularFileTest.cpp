// Files named by templates and users are read only when they are regular
// files: a FIFO or a device never blocks or floods the reader.
#include "host/core/ZWRegularFile.h"
#include "host/core/XmlDocument.h"
#include "tests/support/ZWTestSupport.h"

#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

using Result = ZWRegularFile::Result;

struct FileCase
{
    const char* label;
    const char* path; // in the test's folder, or absolute
    Result result;
};

class RegularFileRead : public testing::TestWithParam<FileCase>
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        ASSERT_TRUE(zwtest::WriteFile(m_dir.filePath(u"plain.xml"_s), "<design/>"));
        ASSERT_TRUE(zwtest::WriteFile(m_dir.filePath(u"big.xml"_s), QByteArray(2000, ' ')));
        ASSERT_TRUE(QDir(m_dir.path()).mkdir(u"folder.xml"_s));
        // Nobody ever writes into this FIFO: opening it for reading the
        // usual way would wait for ever.
        ASSERT_EQ(::mkfifo(QFile::encodeName(m_dir.filePath(u"fifo.xml"_s)).constData(), 0600), 0);
    }
    QString Path(const char* name) const
    {
        const QString text = QString::fromLatin1(name);
        return text.startsWith(QLatin1Char('/')) ? text : m_dir.filePath(text);
    }
    QTemporaryDir m_dir;
};

TEST_P(RegularFileRead, Path)
{
    QByteArray bytes = "old";
    QString error;
    EXPECT_EQ(ZWRegularFile::Read(Path(GetParam().path), 1000, bytes, &error), GetParam().result)
        << error.toStdString();
    EXPECT_EQ(bytes.isEmpty(), GetParam().result != Result::Ok);
    // The XML reader refuses them as well, without waiting.
    XmlDocument doc;
    EXPECT_EQ(doc.Load(Path(GetParam().path)), GetParam().result == Result::Ok);
}

const FileCase kFileCases[]
    = {{"ARegularFileIsRead", "plain.xml", Result::Ok}, {"AFifoIsRefusedAtOnce", "fifo.xml", Result::NotRegular},
        {"AFolderIsRefused", "folder.xml", Result::NotRegular}, {"ADeviceIsRefused", "/dev/zero", Result::NotRegular},
        {"AMissingFileCannotBeOpened", "missing.xml", Result::CannotOpen},
        {"AFileOverTheBoundIsRefused", "big.xml", Result::TooLarge}};

INSTANTIATE_TEST_SUITE_P(Files, RegularFileRead, testing::ValuesIn(kFileCases),
    [](const testing::TestParamInfo<FileCase>& info) { return std::string(info.param.label); });

} // namespace
