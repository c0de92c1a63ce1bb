// The reports of the report folder: which files are listed and which file a name leads to.
#include "viewer/ZWReportFiles.h"
#include "host/core/ZWMarentaSetup.h"
#include "tests/support/ZWTestSupport.h"

#include <QDir>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

class ZWReportFilesTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_folder.isValid());
        ASSERT_TRUE(m_cwd.isValid());
        m_oldFolder = ZWMarentaSetup::instance().GetReportDirectory();
        m_oldCwd = QDir::currentPath();
        ZWMarentaSetup::instance().SetReportDirectory(Folder());
        QDir::setCurrent(m_cwd.path());
        for (const char* file : {"Upper.XRPT", "lower.xrpt", "Mixed.Xrpt", "Upper.XRPT.bak", "notes.txt", "Both.XRPT",
                 "Both.xrpt", "Far.XRPT"})
            ASSERT_TRUE(zwtest::WriteFile(Folder() + QString::fromLatin1(file), "<design/>"));
        ASSERT_TRUE(QDir(Folder()).mkdir(u"sub.XRPT"_s));
        ASSERT_TRUE(zwtest::WriteFile(m_cwd.filePath(u"Here.xrpt"_s), "<design/>"));
    }
    void TearDown() override
    {
        ZWMarentaSetup::instance().SetReportDirectory(m_oldFolder);
        QDir::setCurrent(m_oldCwd);
    }
    QString Folder() const { return m_folder.path() + QLatin1Char('/'); }

    QTemporaryDir m_folder;
    QTemporaryDir m_cwd;
    QString m_oldFolder;
    QString m_oldCwd;
};

TEST_F(ZWReportFilesTest, TheExtensionIsMatchedInAnyCaseAndBackupsAreNotReports)
{
    // (The order is the locale's; compared here as a set.)
    QStringList names = ZWReportFiles::ReportNames();
    names.sort();
    EXPECT_EQ(names, (QStringList{u"Both"_s, u"Far"_s, u"Mixed"_s, u"Upper"_s, u"lower"_s}));
}

struct PathCase
{
    const char* label;
    const char* name;
    // "F/..." a file of the report folder, "C/..." of the present folder,
    // anything else the name as it stands.
    const char* path;
};

class ReportPathOf : public ZWReportFilesTest, public testing::WithParamInterface<PathCase>
{};

TEST_P(ReportPathOf, Name)
{
    const QString expected = QString::fromUtf8(GetParam().path);
    QString path = expected;
    if (expected.startsWith(QLatin1String("F/")))
        path = Folder() + expected.mid(2);
    else if (expected.startsWith(QLatin1String("C/")))
        path = expected.mid(2);
    EXPECT_EQ(ZWReportFiles::ReportPath(QString::fromUtf8(GetParam().name)), path);
}

const PathCase kPathCases[] = {
    {"APlainNameIsAReportOfTheFolder", "Upper", "F/Upper.XRPT"},
    {"ALowerCaseExtensionIsFound", "lower", "F/lower.xrpt"},
    {"AMixedCaseExtensionIsFound", "Mixed", "F/Mixed.Xrpt"},
    {"TheExactSpellingComesFirst", "Both", "F/Both.XRPT"},
    {"AMissingReportIsNamedInTheFolder", "Missing", "F/Missing.XRPT"},
    {"AFileNameInThePresentFolderIsThatFile", "Here.xrpt", "C/Here.xrpt"},
    {"AFileNameOnlyInTheReportFolderIsFoundThere", "Far.XRPT", "F/Far.XRPT"},
    {"ARelativePathIsAPath", "reports/Monthly", "reports/Monthly"},
    {"AnAbsolutePathIsAPath", "/srv/reports/Monthly.XRPT", "/srv/reports/Monthly.XRPT"},
    {"ABackslashPathIsAPath", "reports\\Monthly", "reports\\Monthly"},
    {"NoNameIsNoPath", "", ""},
};

INSTANTIATE_TEST_SUITE_P(ReportFiles, ReportPathOf, testing::ValuesIn(kPathCases),
    [](const testing::TestParamInfo<PathCase>& info) { return std::string(info.param.label); });

} // namespace
