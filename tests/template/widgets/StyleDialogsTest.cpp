// The styles dialogs driven with real keys and clicks: refusals keep the
// editor open on the field at fault, and every change of the folder reaches
// the pages through stylesModified.
#include "host/core/ZWMarentaSetup.h"
#include "host/core/ZWTextId.h"
#include "template/widgets/CDlgAddRemoveStyle.h"
#include "template/widgets/CDlgEditStyle.h"

#include <QtTest>
#include <QtWidgets>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

class Editor : public CDlgEditStyle
{
public:
    using CDlgEditStyle::CDlgEditStyle;
    std::vector<int> messages;
    bool answer = false;

protected:
    void ShowMessage(const QString&, int textId) override { messages.push_back(textId); }
    bool Ask(const QString&, int textId) override
    {
        messages.push_back(textId);
        return answer;
    }
};

// The list, with an editor that types the given name and size and presses OK.
class ListUnderTest : public CDlgAddRemoveStyle
{
public:
    QString typedName;
    double typedSize = 11.0;
    bool answer = true;

protected:
    std::unique_ptr<CDlgEditStyle> MakeEditor(std::optional<ZWTextStyle> opened, bool mayOverwrite) override
    {
        return std::make_unique<Editor>(std::move(opened), mayOverwrite, this);
    }
    bool RunEditor(CDlgEditStyle& editor) override
    {
        editor.NameEdit()->setText(typedName);
        editor.SizeEdit()->setValue(typedSize);
        editor.accept();
        return editor.result() == QDialog::Accepted;
    }
    bool Ask(const QString&) override { return answer; }
};

class StyleDialogs : public testing::Test
{
protected:
    StyleDialogs() { ZWMarentaSetup::instance().SetDataDirectory(m_dir.path()); }
    ~StyleDialogs() override { ZWMarentaSetup::instance().SetDataDirectory(QString()); }
    void Save(const QString& name, double size)
    {
        ZWTextStyle style;
        style.name = name;
        style.size = size;
        ASSERT_TRUE(style.SaveByName());
    }
    QTemporaryDir m_dir;
};

TEST_F(StyleDialogs, TheEditorStaysOpenOnTheFieldAtFaultAndAsksBeforeReplacing)
{
    Save(u"Taken"_s, 10);
    Save(u"Mine"_s, 10);
    ZWTextStyle mine;
    mine.LoadByName(u"Mine"_s);
    Editor editor(mine, true);
    editor.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&editor));
    const auto takenSize = [] {
        ZWTextStyle taken;
        taken.LoadByName(u"Taken"_s);
        return taken.size;
    };

    editor.NameEdit()->clear();
    QTest::keyClick(&editor, Qt::Key_Return);
    EXPECT_EQ(editor.messages, std::vector<int>{ZWTextId::StyleNameMissing});
    EXPECT_TRUE(editor.isVisible() && editor.NameEdit()->hasFocus());

    QTest::keyClicks(editor.NameEdit(), u"Mine"_s);
    editor.SizeEdit()->setValue(0);
    QTest::keyClick(&editor, Qt::Key_Return);
    EXPECT_EQ(editor.messages.back(), ZWTextId::StyleSizeNotPositive);
    EXPECT_TRUE(editor.SizeEdit()->hasFocus());

    editor.SizeEdit()->setValue(13);
    editor.NameEdit()->setText(u"Taken"_s);
    QTest::keyClick(&editor, Qt::Key_Return);
    EXPECT_EQ(editor.messages.back(), ZWTextId::StyleReplaceQuestion);
    EXPECT_TRUE(editor.isVisible()) << "no keeps the editor open";
    EXPECT_EQ(takenSize(), 10.0);

    editor.answer = true;
    QTest::keyClick(&editor, Qt::Key_Return);
    EXPECT_EQ(editor.result(), QDialog::Accepted);
    EXPECT_EQ(std::tuple(ZWTextStyle::List(), takenSize()), std::tuple(QStringList{u"Taken"_s}, 13.0));
}

TEST_F(StyleDialogs, InsertAndDeleteKeysChangeTheFolderAndSignalThePages)
{
    Save(u"Body"_s, 10);
    ListUnderTest list;
    QSignalSpy modified(&list, &CDlgAddRemoveStyle::stylesModified);
    list.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&list));
    ASSERT_EQ(list.List()->topLevelItemCount(), 1);

    list.typedName = u"Heading"_s;
    list.typedSize = 18.0;
    QTest::keyClick(&list, Qt::Key_Insert);
    EXPECT_EQ(ZWTextStyle::List(), (QStringList{u"Body"_s, u"Heading"_s}));
    EXPECT_EQ(std::tuple(list.SelectedName(), list.List()->topLevelItem(1)->text(2), modified.count()),
        std::tuple(u"Heading"_s, u"18.0"_s, 1));

    // A new style named like an existing one is refused, nothing signalled.
    list.typedName = u"Body"_s;
    QTest::keyClick(&list, Qt::Key_Insert);
    EXPECT_EQ(modified.count(), 1);

    list.answer = false;
    QTest::keyClick(&list, Qt::Key_Delete);
    EXPECT_EQ(ZWTextStyle::List().size(), 2);
    list.answer = true;
    QTest::keyClick(&list, Qt::Key_Delete);
    EXPECT_EQ(std::tuple(ZWTextStyle::List(), modified.count()), std::tuple(QStringList{u"Body"_s}, 2));
}

} // namespace
