// The editor's frame with real pages: loading, the save question, pages, zoom,
// the support mask, saving through the report folder and crash recovery.
#include "editor/ZWRecovery.h"
#include "editor/widgets/ZWEditTemplateWnd.h"
#include "editor/widgets/ZWEditorFrame.h"
#include "editor/widgets/ZWPropertyPanel.h"
#include "host/core/ZWMarentaSetup.h"
#include "template/ZWCardLabel.h"
#include "template/ZWTextStyle.h"
#include "tests/support/ZWTestSupport.h"

#include <QtTest>
#include <QtWidgets>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

class Frame : public ZWEditorFrame
{
public:
    int answer = QMessageBox::No;
    int questions = 0;
    QString name;
    QString chosen;
    QStringList messages;

protected:
    int AskSave(bool) override
    {
        ++questions;
        return answer;
    }
    QString ChooseName() override { return name; }
    QString ChooseReport() override { return chosen; }
    bool Confirm(const QString&) override { return true; }
    void ShowMessage(const QString& text) override { messages << text; }
};

class EditorFrame : public testing::Test
{
protected:
    EditorFrame()
    {
        ZWMarentaSetup::instance().SetReportDirectory(m_dir.path() + u"/reports"_s);
        ZWMarentaSetup::instance().SetSettingsFile(m_dir.filePath(u"settings.ini"_s));
        frame.resize(1000, 700);
        frame.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&frame));
    }
    ~EditorFrame() override
    {
        ZWMarentaSetup::instance().SetReportDirectory(QString());
        ZWMarentaSetup::instance().SetSettingsFile(QString());
    }
    QString Write(const char* name, const QByteArray& xml)
    {
        const QString path = m_dir.filePath(QString::fromLatin1(name));
        EXPECT_TRUE(zwtest::WriteFile(path, xml));
        return path;
    }
    double Factor()
    {
        double factor = 0;
        frame.CurrentPage()->GetMode(factor);
        return factor;
    }

    QTemporaryDir m_dir;
    Frame frame;
};

TEST_F(EditorFrame, AReportWithoutAnIdentityIsModifiedAtOnceAndClosingAsks)
{
    frame.Setup(Write("noid.XRPT",
        "<design><name>x</name><page><width>100</width><height>50</height></page>"
        "<page/></design>"));
    EXPECT_EQ(std::tuple(frame.IsModified(), frame.PageCount(), frame.PageSelector()->count(),
                  frame.CurrentPage()->GetWidth()),
        std::tuple(true, 2, 2, 100.0));
    EXPECT_TRUE(frame.MaybeSave(false)); // no: closes without saving
    EXPECT_EQ(frame.questions, 1);

    frame.Setup(Write("id.XRPT", "<design><id>abc</id><name>x</name><page/></design>"));
    EXPECT_FALSE(frame.IsModified());
    EXPECT_TRUE(frame.MaybeSave(true));
    EXPECT_EQ(frame.questions, 1);

    frame.Setup(m_dir.filePath(u"missing.XRPT"_s));
    // A file that cannot be read is a new report.
    EXPECT_EQ(std::tuple(frame.PageCount(), frame.IsModified()), std::tuple(1, true));
}

TEST_F(EditorFrame, PagesZoomStepsAndTheSupportMaskOfANewReport)
{
    SCOPED_TRACE("the only page is kept; new pages become current");
    EXPECT_FALSE(frame.OnDeletePage());
    EXPECT_EQ(std::tuple(frame.messages.size(), frame.Action(32514)->isEnabled()), std::tuple(1, false));
    frame.OnNewPage();
    EXPECT_EQ(
        std::tuple(frame.PageCount(), frame.CurrentIndex(), frame.PageSelector()->itemText(1), frame.IsModified()),
        std::tuple(2, 1, u"Page 2"_s, true));
    EXPECT_TRUE(frame.OnDeletePage());
    EXPECT_EQ(std::tuple(frame.PageCount(), frame.CurrentIndex()), std::tuple(1, 0));

    SCOPED_TRACE("zoom steps stop at the limits and leave fit mode");
    EXPECT_LT(Factor(), 0.0) << "a page starts fitted";
    frame.OnZoomSelector(20);
    EXPECT_EQ(Factor(), 10.0);
    frame.OnZoomIn();
    EXPECT_EQ(std::tuple(Factor(), frame.ZoomSelector()->currentIndex()), std::tuple(10.0, 20));
    frame.OnZoomSelector(1);
    frame.OnZoomOut();
    EXPECT_EQ(Factor(), 0.5);
    frame.OnZoomSelector(0);
    const double fitted = -Factor();
    frame.OnZoomIn();
    EXPECT_GT(Factor(), fitted);
    EXPECT_LE(Factor(), fitted + 0.5);

    SCOPED_TRACE("the conditioned card alone cannot be made");
    frame.SetSupportMask(16);
    EXPECT_FALSE(frame.Action(32489)->isEnabled());
    EXPECT_EQ(frame.CurrentPage()->GetSupportMask() & 16, 0);
    frame.SetSupportMask(16 | 1);
    EXPECT_TRUE(frame.Action(32489)->isEnabled());
}

TEST_F(EditorFrame, SavingThroughTheReportFolderAndOpeningAgainKeepsEverything)
{
    ZWEditTemplateWnd* page = frame.CurrentPage();
    page->SetActiveState(0);
    page->OnNewLabel();
    ASSERT_EQ(page->GetNumberOfSelectedControls(), 1);
    QLineEdit* text = frame.Panel()->TextEdit();
    text->setFocus();
    text->selectAll();
    QTest::keyClicks(text, u"Monthly energy"_s);
    EXPECT_TRUE(frame.IsModified());

    frame.name = u"Monthly"_s;
    ASSERT_TRUE(frame.SaveReport());
    EXPECT_FALSE(frame.IsModified());
    const QString path = m_dir.path() + u"/reports/Monthly.XRPT"_s;
    ASSERT_TRUE(QFile::exists(path));

    Frame other;
    other.Setup(path);
    EXPECT_FALSE(other.IsModified());
    ASSERT_EQ(other.CurrentPage()->Page().cards.size(), 1u);
    EXPECT_EQ(static_cast<ZWCardLabel&>(*other.CurrentPage()->Page().cards[0]).value, u"Monthly energy"_s);
    EXPECT_EQ(other.ReportId(), frame.ReportId());
}

TEST_F(EditorFrame, ACrashLeavesTheUnsavedStateToRestore)
{
    auto recovery = std::make_shared<ZWRecovery>(m_dir.filePath(u"recovery"_s));
    frame.SetRecovery(recovery);
    frame.CurrentPage()->OnNewDate();
    frame.WriteRecovery();
    const QByteArray unsaved = frame.ToTemplate().ToXml();
    // The frame is never closed: what a crash leaves.
    const auto pending = recovery->Pending();
    ASSERT_EQ(pending.size(), 1u);
    QByteArray content;
    ASSERT_TRUE(ZWRecovery::Read(pending[0], content));
    EXPECT_EQ(content, unsaved);

    Frame restored;
    restored.SetupFromXml(content, pending[0].reportPath);
    EXPECT_EQ(std::tuple(restored.IsModified(), restored.ToTemplate().ToXml()), std::tuple(true, unsaved));

    frame.name = u"Kept"_s;
    ASSERT_TRUE(frame.SaveReport());
    EXPECT_TRUE(recovery->Pending().empty()) << "a clean save removes the state";
}

TEST_F(EditorFrame, AChangedStyleReachesTheLabelsOfEveryPage)
{
    ZWMarentaSetup::instance().SetDataDirectory(m_dir.path());
    frame.OnNewPage();
    for (int p = 0; p < 2; ++p) {
        frame.SetCurrentPage(p);
        frame.CurrentPage()->OnNewLabel();
        static_cast<ZWCardLabel&>(*frame.CurrentPage()->Page().cards.back()).styleFile = u"Heading"_s;
    }
    ZWTextStyle style;
    std::tie(style.name, style.size, style.style) = std::tuple(u"Heading"_s, 30, 1);
    ASSERT_TRUE(style.SaveByName());
    frame.OnStylesModified();
    for (int p = 0; p < 2; ++p) {
        const auto& label = static_cast<const ZWCardLabel&>(*frame.Page(p)->Page().cards.back());
        EXPECT_EQ(std::tuple(label.size, label.style), std::tuple(30.0, 1)) << "page " << p;
    }
    ZWMarentaSetup::instance().SetDataDirectory(QString());
}

TEST_F(EditorFrame, DeletingTheEditedReportKeepsItsFileAsABackupAndItsPagesUnsaved)
{
    frame.CurrentPage()->OnNewDate();
    frame.name = u"Gone"_s;
    ASSERT_TRUE(frame.SaveReport());
    const QString path = m_dir.path() + u"/reports/Gone.XRPT"_s;
    frame.chosen = u"Gone"_s;
    frame.OnDeleteReport();
    EXPECT_EQ(std::tuple(QFile::exists(path), QFile::exists(path + u".bak"_s)), std::tuple(false, true));
    // The pages on screen are no longer saved anywhere.
    EXPECT_EQ(std::tuple(frame.IsModified(), frame.ReportName(), frame.CurrentPage()->Page().cards.size()),
        std::tuple(true, QString(), 1u));

    // A date card is offered the dates of the fields document, in its order.
    frame.CurrentPage()->SelectControlById(frame.CurrentPage()->Page().cards[0]->id);
    QComboBox* field = frame.Panel()->FieldEdit();
    ASSERT_EQ(field->count(), 4);
    EXPECT_EQ(std::tuple(field->itemData(1).toString(), field->itemData(3).toString()),
        std::tuple(u"ACTUAL_DATE"_s, u"END_DATE"_s));
}

} // namespace
