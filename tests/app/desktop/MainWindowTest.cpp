#include "app/desktop/CDlgLoggerDatabase.h"
#include "app/desktop/ZWMainWindow.h"
#include "editor/ZWRecovery.h"
#include "editor/widgets/CDlgEditor.h"
#include "editor/widgets/ZWEditTemplateWnd.h"
#include "editor/widgets/ZWEditorFrame.h"
#include "host/core/ZWMarentaSetup.h"
#include "host/drivers/ZWDriverSupport.h"
#include "host/store/ZWLoggerDatabase.h"
#include "template/ZWTemplate.h"
#include "tests/support/ZWTestSupport.h"
#include "viewer/ZWReportFiles.h"
#include "viewer/widgets/CDlgViewer.h"
#include "viewer/widgets/ZWViewReportFrame.h"

#include <QDialogButtonBox>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

class TestDatabaseDialog : public CDlgLoggerDatabase
{
public:
    using CDlgLoggerDatabase::CDlgLoggerDatabase;
    std::vector<QString> messages;
    QString chosenFile;
    int fileChoosers = 0;

protected:
    void ShowMessage(const QString& text) override { messages.push_back(text); }
    QString ChooseFile() override
    {
        ++fileChoosers;
        return chosenFile;
    }
};

class TestMainWindow : public ZWMainWindow
{
public:
    std::vector<QString> messages;
    std::function<int(QDialog&)> onDialog;
    QString chosenFolder;
    QString folderShown;
    int viewersMade = 0;
    bool answer = true;
    QString newName;

protected:
    bool Ask(const QString&) override { return answer; }
    QString ChooseNewName(const QString&) override { return newName; }
    CDlgViewer* CreateViewer() override
    {
        ++viewersMade;
        return ZWMainWindow::CreateViewer();
    }
    int ExecDialog(QDialog& dialog) override { return onDialog ? onDialog(dialog) : int(QDialog::Rejected); }
    void ShowMessage(const QString& text) override { messages.push_back(text); }
    QString ChooseFolder(const QString& current) override
    {
        folderShown = current;
        return chosenFolder;
    }
};

QStringList Items(const QListWidget* list)
{
    QStringList out;
    for (int i = 0; i < list->count(); ++i)
        out << list->item(i)->text();
    return out;
}

const char* kReport = "<design><name>%1</name><page><width>210</width><height>297</height>"
                      "<formule><x>10</x><y>10</y><width>50</width><height>10</height><id>E</id>"
                      "<value>[Main meter.Active energy]</value></formule></page></design>";

class MainWindow : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        ZWMarentaSetup::instance().SetSettingsFile(m_dir.filePath(u"settings.ini"_s));
        ZWMarentaSetup::instance().SetReportDirectory(m_dir.filePath(u"reports"_s));
        ZWMarentaSetup::instance().SetLoggerDatabase(QString());
        QDir().mkpath(m_dir.filePath(u"reports"_s));
        for (const char* name : {"Boiler", "Annual", "Zeta"})
            AddReport(QString::fromLatin1(name));
        ASSERT_TRUE(zwtest::WriteFile(m_dir.filePath(u"reports/Old.XRPT.bak"_s), "<design/>"));
    }
    void TearDown() override
    {
        ZWDriverSupport::SetStore(nullptr);
        ZWMarentaSetup::instance().SetReportDirectory(QString());
        ZWMarentaSetup::instance().SetLoggerDatabase(QString());
        ZWMarentaSetup::instance().SetSettingsFile(QString());
    }
    void AddReport(const QString& name)
    {
        ASSERT_TRUE(zwtest::WriteFile(
            m_dir.filePath(u"reports/%1.XRPT"_s.arg(name)), QString::fromLatin1(kReport).arg(name).toUtf8()));
    }
    QString SqliteUrl(const QString& file) const { return u"sqlite:"_s + m_dir.filePath(file); }
    // A new logger database, as import or demo-db make one.
    QString NewDatabase(const QString& file) const
    {
        const QString url = SqliteUrl(file);
        EXPECT_TRUE(ZWLoggerDatabase::Open(url, ZWSqlLoggerStore::Creation::CreateMissing)) << url.toStdString();
        return url;
    }

    QTemporaryDir m_dir;
};

TEST_F(MainWindow, ListsReportsAndOpensTheChosenOneWithTheLastUnit)
{
    ZWMarentaSetup::instance().OpenSettings()->setValue(u"LastInforme"_s, u"Boiler"_s);
    ZWMarentaSetup::instance().OpenSettings()->setValue(u"LastReportGroup"_s, u"WEEK"_s);
    ASSERT_TRUE(ZWLoggerDatabase::Install(NewDatabase(u"logger.sqlite"_s), nullptr));

    TestMainWindow window;
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    QListWidget* list = window.List();
    EXPECT_EQ(Items(list), (QStringList{u"Annual"_s, u"Boiler"_s, u"Zeta"_s}));
    ASSERT_NE(list->currentItem(), nullptr);
    EXPECT_EQ(list->currentItem()->text(), u"Boiler"_s);

    // A report added meanwhile shows after a refresh; the selection stays.
    AddReport(u"Chiller"_s);
    window.Refresh();
    EXPECT_EQ(Items(list).size(), 4);
    EXPECT_EQ(list->currentItem()->text(), u"Boiler"_s);

    // Enter on a report opens it in a viewer with the unit last chosen.
    list->setCurrentRow(3);
    QTest::keyClick(list, Qt::Key_Return);
    ASSERT_EQ(window.Viewers().size(), 1);
    CDlgViewer* viewer = window.Viewers().front();
    EXPECT_TRUE(viewer->isVisible());
    EXPECT_EQ(viewer->Frame()->Title(), u"Zeta"_s);
    EXPECT_EQ(viewer->Data().Period().Unit(), ID_GROUPBY_WEEK);
    EXPECT_EQ(viewer->GatheringCount(), 1);
    EXPECT_EQ(ZWReportFiles::LastReport(), u"Zeta"_s);
    EXPECT_TRUE(window.messages.empty());
    viewer->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(window.Viewers().isEmpty());

    // A report that went away, one cut short, one that is no report: a
    // message each before any viewer is made, the last report kept.
    ASSERT_TRUE(QFile::remove(m_dir.filePath(u"reports/Annual.XRPT"_s)));
    list->setCurrentRow(0);
    window.OnOpen();
    const QByteArray report = QString::fromLatin1(kReport).arg(u"Cut"_s).toUtf8();
    ASSERT_TRUE(zwtest::WriteFile(m_dir.filePath(u"reports/Cut.XRPT"_s), report.left(report.size() - 20)));
    ASSERT_TRUE(zwtest::WriteFile(m_dir.filePath(u"reports/Style.XRPT"_s), "<style><size>10</size></style>"));
    EXPECT_EQ(window.OpenReport(u"Cut"_s), nullptr);
    EXPECT_EQ(window.OpenReport(u"Style"_s), nullptr);
    ASSERT_EQ(window.messages.size(), 3u);
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(window.messages[size_t(i)].startsWith(
            u"The report \"%1\" could not be read"_s.arg(QStringList{u"Annual"_s, u"Cut"_s, u"Style"_s}[i])))
            << window.messages[size_t(i)].toStdString();
    EXPECT_TRUE(window.messages[2].contains(u"not \"design\""_s)) << window.messages[2].toStdString();
    EXPECT_EQ(window.viewersMade, 1);
    EXPECT_EQ(ZWReportFiles::LastReport(), u"Zeta"_s);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(window.Viewers().isEmpty());
}

TEST_F(MainWindow, ChoosingTheLoggerDatabase)
{
    NewDatabase(u"chosen.sqlite"_s);
    // a part of the refusal; null: accepted
    const std::pair<QString, const char*> cases[] = {
        {u"mysql://host/db"_s, "The logger database 'mysql://host/db' is not valid"},
        // A mistyped path is not made into a new, empty database.
        {SqliteUrl(u"nowhere/typo.sqlite"_s), "the file does not exist"},
        {SqliteUrl(u"chosen.sqlite"_s), nullptr},
    };
    for (const auto& [url, message] : cases) {
        TestDatabaseDialog dialog;
        dialog.show();
        dialog.Address()->clear();
        QTest::keyClicks(dialog.Address(), url);
        QTest::mouseClick(dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok), Qt::LeftButton);
        if (message) {
            ASSERT_EQ(dialog.messages.size(), 1u) << url.toStdString();
            EXPECT_TRUE(dialog.messages[0].contains(QString::fromUtf8(message))) << dialog.messages[0].toStdString();
            EXPECT_TRUE(dialog.isVisible());
            EXPECT_EQ(ZWDriverSupport::Store(), nullptr);
        } else {
            EXPECT_TRUE(dialog.messages.empty());
            EXPECT_EQ(dialog.result(), QDialog::Accepted);
        }
    }
    EXPECT_FALSE(QFileInfo::exists(m_dir.filePath(u"nowhere"_s)));
    // The accepted database is in use and remembered.
    EXPECT_NE(ZWDriverSupport::Store(), nullptr);
    EXPECT_EQ(ZWMarentaSetup::instance().OpenSettings()->value(u"LoggerDatabase"_s).toString(),
        SqliteUrl(u"chosen.sqlite"_s));
    EXPECT_EQ(ZWMarentaSetup::instance().GetLoggerDatabase(), SqliteUrl(u"chosen.sqlite"_s));

    // The main window opens the remembered database and shows it; a broken
    // one is reported.
    ZWDriverSupport::SetStore(nullptr);
    ZWMarentaSetup::instance().SetLoggerDatabase(QString());
    TestMainWindow window;
    EXPECT_TRUE(window.OpenDatabase());
    EXPECT_NE(ZWDriverSupport::Store(), nullptr);
    EXPECT_TRUE(window.messages.empty());
    ZWMarentaSetup::instance().SetLoggerDatabase(u"postgresql://host:99999/db"_s);
    EXPECT_FALSE(window.OpenDatabase());
    ASSERT_EQ(window.messages.size(), 1u);
    EXPECT_TRUE(window.messages[0].contains(u"port"_s)) << window.messages[0].toStdString();
}

TEST_F(MainWindow, TheReportFolderIsChosenFromTheKeyboardKeptAndShownWhole)
{
    const QString other = m_dir.filePath(QStringLiteral("a-rather-long-folder-name/with/several/levels/"
                                                        "of/sub-folders/that/keep/going/reports-of-the-site"));
    QDir().mkpath(other);
    ASSERT_TRUE(zwtest::WriteFile(other + u"/Heating.XRPT"_s, "<design/>"));
    ZWMarentaSetup::instance().SetLoggerDatabase(u"sqlite:"_s + other + u"/logger.sqlite"_s);
    TestMainWindow window;
    window.resize(360, 400);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    EXPECT_EQ(window.ReportFolderAction()->toolTip(), u"Report folder (Ctrl+Shift+O)"_s);

    // Cancelled: nothing changes.
    QTest::keyClick(window.List(), Qt::Key_O, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(window.folderShown, m_dir.filePath(u"reports/"_s));
    EXPECT_EQ(Items(window.List()).size(), 3);

    window.chosenFolder = other;
    QTest::keyClick(window.List(), Qt::Key_O, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(Items(window.List()), QStringList{u"Heating"_s});
    EXPECT_TRUE(window.FolderLabel()->toolTip().contains(other)) << window.FolderLabel()->toolTip().toStdString();
    EXPECT_EQ(ZWMarentaSetup::instance().OpenSettings()->value(u"ReportDirectory"_s).toString(), other);
    // The next session, without a folder given, takes the one kept.
    ZWMarentaSetup::instance().SetReportDirectory(QString());
    EXPECT_EQ(ZWMarentaSetup::instance().GetReportDirectory(), other + QLatin1Char('/'));

    // The long folder and database texts are in their labels, which have the
    // room to show them.
    QApplication::processEvents();
    for (QLabel* label : {window.FolderLabel(), window.DatabaseLabel()}) {
        QString shown = label->text();
        shown.remove(QChar(0x200B));
        EXPECT_TRUE(shown.contains(other)) << shown.toStdString();
        EXPECT_LE(label->width(), window.width());
        EXPECT_GE(label->height(), label->heightForWidth(label->width())) << shown.toStdString();
        EXPECT_LE(label->minimumSizeHint().width(), label->width()) << shown.toStdString();
    }

    // The database dialog is reached from the keyboard as well.
    int dialogs = 0;
    window.onDialog = [&](QDialog& dialog) {
        dialogs += qobject_cast<CDlgLoggerDatabase*>(&dialog) != nullptr;
        return int(QDialog::Rejected);
    };
    QTest::keyClick(window.List(), Qt::Key_D, Qt::ControlModifier);
    EXPECT_EQ(dialogs, 1);
}

TEST_F(MainWindow, EnterInTheDatabaseDialogMeansOkEvenAfterChoosingAFile)
{
    TestDatabaseDialog dialog;
    dialog.chosenFile = m_dir.filePath(u"picked.sqlite"_s);
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
    QPushButton* browse = nullptr;
    for (QPushButton* button : dialog.findChildren<QPushButton*>())
        if (button->text() == u"SQLite file…"_s)
            browse = button;
    ASSERT_NE(browse, nullptr);
    QTest::mouseClick(browse, Qt::LeftButton);
    EXPECT_EQ(dialog.fileChoosers, 1);
    EXPECT_EQ(dialog.Url(), u"sqlite:"_s + dialog.chosenFile);

    // Enter accepts the chosen file (a new SQLite file is refused with a
    // message or accepted: either way no file chooser opens again).
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_EQ(dialog.fileChoosers, 1);
    EXPECT_TRUE(dialog.result() == QDialog::Accepted || !dialog.messages.empty());
}

TEST_F(MainWindow, ReportsAreDuplicatedDeletedEditedAndRestoredFromTheList)
{
    TestMainWindow window;
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    QListWidget* list = window.List();
    list->setCurrentRow(1);
    ASSERT_EQ(list->currentItem()->text(), u"Boiler"_s);

    window.newName = u"Copy"_s;
    ASSERT_TRUE(window.OnDuplicate());
    EXPECT_EQ(list->currentItem()->text(), u"Copy"_s);
    ZWTemplate copy;
    ASSERT_TRUE(copy.Load(m_dir.filePath(u"reports/Copy.XRPT"_s)));
    EXPECT_EQ(copy.name, u"Copy"_s);
    EXPECT_FALSE(copy.id.isEmpty()) << "a copy is a report of its own";
    EXPECT_EQ(copy.CountCards(), 1);

    window.answer = false;
    EXPECT_FALSE(window.OnDelete());
    window.answer = true;
    ASSERT_TRUE(window.OnDelete());
    EXPECT_EQ(Items(list), (QStringList{u"Annual"_s, u"Boiler"_s, u"Zeta"_s}));
    EXPECT_TRUE(QFileInfo::exists(m_dir.filePath(u"reports/Copy.XRPT.bak"_s)))
        << "a deleted report stays as its backup";

    list->setCurrentRow(1);
    CDlgEditor* editor = window.OnEdit();
    ASSERT_NE(editor, nullptr);
    EXPECT_EQ(editor->Frame()->CurrentPage()->Page().cards.size(), 1u);
    EXPECT_TRUE(editor->Frame()->IsModified()) << "a report without an identity is modified";
    editor->Frame()->SetModified(false);
    delete editor;

    // What a crash left is offered and opens in an editor.
    const ZWRecovery recovery(ZWRecovery::FolderBeside(m_dir.filePath(u"settings.ini"_s)));
    ASSERT_TRUE(recovery.Write(u"new:x"_s, QString(), "<design><id>x</id><name>Lost</name><page/><page/></design>"));
    ASSERT_EQ(window.OfferRecovery(), 1);
    ASSERT_EQ(window.Editors().size(), 1);
    CDlgEditor* restored = window.Editors().front();
    EXPECT_EQ(restored->Frame()->ReportName(), u"Lost"_s);
    EXPECT_EQ(restored->Frame()->PageCount(), 2);
    EXPECT_TRUE(restored->Frame()->IsModified());
    restored->Frame()->SetModified(false);
    restored->Frame()->WriteRecovery();
    EXPECT_TRUE(recovery.Pending().empty());
    delete restored;
}

} // namespace
