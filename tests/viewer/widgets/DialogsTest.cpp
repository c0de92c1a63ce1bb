#include "host/core/ZWTextId.h"
#include "host/widgets/CGoToDateDlg.h"
#include "tests/support/ZWTestSupport.h"
#include "tests/viewer/widgets/ViewerTestSupport.h"
#include "viewer/widgets/CDlgInformesList.h"
#include "viewer/widgets/CDlgUserInterval.h"

#include <QCalendarWidget>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QTimeEdit>
#include <QTreeWidget>

using namespace Qt::StringLiterals;

namespace {

template <class Dialog> class Recording : public Dialog
{
public:
    using Dialog::Dialog;
    std::vector<int> messages;

protected:
    void ShowMessage(int textId) override { messages.push_back(textId); }
};

void ClickOk(QDialog& dialog)
{
    auto* box = dialog.findChild<QDialogButtonBox*>();
    ASSERT_NE(box, nullptr);
    QTest::mouseClick(box->button(QDialogButtonBox::Ok), Qt::LeftButton);
}

class ReportFolder : public zwtest::WindowTest
{
protected:
    void SetUp() override
    {
        WindowTest::SetUp();
        for (const char* name : {"Boiler.XRPT", "Annual2024.XRPT", "Report1.XRPT", "Report1.XRPT.bak", "lower.xrpt"})
            ASSERT_TRUE(zwtest::WriteFile(m_dir.filePath(QString::fromLatin1(name)), "<design/>"));
    }

    static QStringList Items(const CDlgInformesList& dialog)
    {
        QStringList out;
        for (int i = 0; i < dialog.List()->topLevelItemCount(); ++i)
            out << dialog.List()->topLevelItem(i)->text(0);
        return out;
    }
};

TEST(CDlgInformesList, IsValidName)
{
    // Letters beyond ASCII count.
    const std::pair<const char*, bool> cases[]
        = {{"Report1", true}, {"Informe2024", true}, {"Ñoño", true}, {"", false}, {" Report", false},
            {"My report", false}, {"my_report", false}, {"my-report", false}, {"report.v2", false}, {"a/b", false}};
    for (const auto& [name, valid] : cases)
        EXPECT_EQ(CDlgInformesList::IsValidName(QString::fromUtf8(name)), valid) << name;
}

void DoubleClick(QTreeWidget* list, int row)
{
    const QRect r = list->visualItemRect(list->topLevelItem(row));
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, r.center());
    QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, r.center());
}

TEST_F(ReportFolder, ListsOnlyReportsPreselectsAndGivesTheChosenOnes)
{
    Recording<CDlgInformesList> dialog;
    dialog.SetType(CDlgInformesList::NewName);
    dialog.SetName(u"Boiler"_s);
    dialog.show();
    // Backups are not reports; the extension counts in any letter case.
    EXPECT_EQ(Items(dialog), (QStringList{u"Annual2024"_s, u"Boiler"_s, u"Report1"_s, u"lower"_s}));
    ASSERT_EQ(dialog.List()->selectedItems().size(), 1);
    EXPECT_EQ(dialog.List()->selectedItems().first()->text(0), u"Boiler"_s);
    // A new report starts from the selected name; a double click does not
    // close the dialog that names a new report.
    EXPECT_EQ(dialog.NameEdit()->text(), u"Boiler"_s);
    DoubleClick(dialog.List(), 2);
    EXPECT_TRUE(dialog.isVisible());

    // A name not in the list selects the first; a double click chooses.
    Recording<CDlgInformesList> one;
    one.SetType(CDlgInformesList::One);
    one.SetName(u"Gone"_s);
    one.show();
    EXPECT_EQ(one.List()->selectedItems().first()->text(0), u"Annual2024"_s);
    DoubleClick(one.List(), 2);
    EXPECT_EQ(one.result(), QDialog::Accepted);
    EXPECT_EQ(one.Names(), QStringList{u"Report1"_s});

    // Selected bottom-up with Ctrl: the result still follows the list.
    Recording<CDlgInformesList> several;
    several.SetType(CDlgInformesList::Several);
    several.show();
    several.List()->clearSelection();
    for (int row : {2, 0, 1}) {
        const QRect r = several.List()->visualItemRect(several.List()->topLevelItem(row));
        QTest::mouseClick(several.List()->viewport(), Qt::LeftButton, Qt::ControlModifier, r.center());
    }
    ClickOk(several);
    EXPECT_EQ(several.Names(), (QStringList{u"Annual2024"_s, u"Boiler"_s, u"Report1"_s}));
}

TEST_F(ReportFolder, NewNameChecks)
{
    struct Case
    {
        const char* typed;
        std::vector<int> messages;
        bool accepted;
    } cases[] = {
        {"Report1", {ZWTextId::ReportNameTaken}, false},
        {"report1", {}, true}, // the list compares case-sensitively
        {"New report", {ZWTextId::ReportNameInvalid}, false},
    };
    for (const Case& c : cases) {
        Recording<CDlgInformesList> dialog;
        dialog.SetType(CDlgInformesList::NewName);
        dialog.show();
        dialog.NameEdit()->clear();
        QTest::keyClicks(dialog.NameEdit(), QString::fromUtf8(c.typed));
        ClickOk(dialog);
        EXPECT_EQ(dialog.messages, c.messages) << c.typed;
        EXPECT_EQ(dialog.isVisible(), !c.accepted) << c.typed;
        EXPECT_EQ(dialog.result() == QDialog::Accepted, c.accepted) << c.typed;
        if (c.accepted) {
            ASSERT_EQ(dialog.GetNumberOfNames(), 1);
            QString name = u"unchanged"_s;
            dialog.GetName(name, 1);
            EXPECT_EQ(name, u"unchanged"_s);
            dialog.GetName(name, 0);
            EXPECT_EQ(name, QString::fromUtf8(c.typed));
        }
    }
}

using IntervalDialog = zwtest::WindowTest;

TEST_F(IntervalDialog, RefusalsKeepWhatWasTypedAndAcceptanceIsRemembered)
{
    const ZWDateTime now = ZWDateTime::FromDMY(2026, 11, 21, 12);
    struct Case
    {
        ZWDateTime from, to;
        int message; // 0: accepted
    } cases[] = {
        {ZWDateTime::FromDMY(2026, 11, 20, 8), ZWDateTime::FromDMY(2026, 11, 20, 8, 59, 59),
            ZWTextId::UserIntervalTooShort},
        {ZWDateTime::FromDMY(2026, 11, 20, 9), ZWDateTime::FromDMY(2026, 11, 20, 8),
            ZWTextId::UserIntervalStartAfterEnd},
        {ZWDateTime::FromDMY(2026, 11, 21, 8), ZWDateTime::FromDMY(2026, 11, 21, 13), ZWTextId::UserIntervalInFuture},
        {ZWDateTime::FromDMY(2026, 11, 20, 8), ZWDateTime::FromDMY(2026, 11, 20, 9), 0},
    };
    for (const Case& c : cases) {
        Recording<CDlgUserInterval> dialog(nullptr, now);
        dialog.show();
        dialog.SetInterval(c.from, c.to);
        ClickOk(dialog);
        EXPECT_EQ(dialog.messages, c.message ? std::vector<int>{c.message} : std::vector<int>{})
            << c.to.ToIso().toStdString();
        EXPECT_EQ(dialog.result() == QDialog::Accepted, !c.message);
        EXPECT_EQ(dialog.isVisible(), bool(c.message));
        // What was typed stays, to the minute the dialog shows.
        EXPECT_EQ(dialog.To().ToIso().left(16), c.to.ToIso().left(16));
        // Nothing refused reaches the settings.
        EXPECT_EQ(ZWMarentaSetup::instance().OpenSettings()->contains(u"ZWIToHour"_s), !c.message);
    }
    // A new dialog opens on the accepted interval.
    Recording<CDlgUserInterval> again(nullptr, now);
    EXPECT_EQ(again.From(), ZWDateTime::FromDMY(2026, 11, 20, 8));
    EXPECT_EQ(again.To(), ZWDateTime::FromDMY(2026, 11, 20, 9));
    EXPECT_EQ(again.FromTime()->time(), QTime(8, 0, 0));
}

TEST(CGoToDateDlg, OkGivesTheChosenDateCancelAnInvalidOne)
{
    CGoToDateDlg dialog;
    dialog.SetDate(ZWDateTime::FromDMY(2025, 7, 9, 13, 14, 15));
    dialog.show();
    EXPECT_EQ(dialog.Calendar()->selectedDate(), QDate(2025, 7, 9));
    QTest::keyClick(dialog.Calendar()->findChild<QWidget*>(u"qt_calendar_calendarview"_s), Qt::Key_Right);
    ClickOk(dialog);
    EXPECT_EQ(dialog.GetDate(), ZWDateTime::FromDMY(2025, 7, 10, 13, 14, 15));

    CGoToDateDlg cancelled;
    cancelled.SetDate(ZWDateTime::FromDMY(2025, 7, 9));
    cancelled.show();
    QTest::keyClick(&cancelled, Qt::Key_Escape);
    EXPECT_FALSE(cancelled.GetDate().IsValid());
}

} // namespace
