#include "formula/ZWFormulaLibrary.h"
#include "formula/widgets/CDlgAddFormuleWizzard.h"
#include "formula/widgets/CDlgAddFunctionWizzard.h"
#include "formula/widgets/CDlgAddOtherWizzard.h"
#include "formula/widgets/CDlgFormules.h"
#include "formula/widgets/CDlgNewFormule.h"
#include "formula/widgets/CDlgWizzard.h"
#include "formula/widgets/ZWFormulaEdit.h"
#include "host/core/ZWTextId.h"
#include "host/drivers/ZWDriverSupport.h"
#include "host/widgets/ZWSelectDriver.h"
#include "tests/formula/FormulaTestSupport.h"
#include "tests/host/store/ZWStoreTestSupport.h"
#include "tests/support/ZWTestSupport.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QButtonGroup>
#include <QComboBox>
#include <QCompleter>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>
#include <functional>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

const std::vector<std::pair<QString, QString>> kLibrary
    = {{u"Price"_s, u"0.25"_s}, {u"Total"_s, u"[Main meter.Active energy] * Price"_s}, {u"Cost"_s, u"Total + 1"_s}};

XmlDocument Library()
{
    return *zwtest::Library(kLibrary);
}

std::string Entries(const XmlDocument& doc)
{
    std::vector<QString> names, texts;
    ZWFormulaLibrary::Read(doc, names, texts);
    std::string out;
    for (size_t i = 0; i < names.size(); ++i)
        out += (names[i] + u'=' + texts[i] + u';').toStdString();
    return out;
}

bool Shown(QWidget* widget)
{
    widget->show();
    return QTest::qWaitForWindowExposed(widget);
}

// Types `text` over the whole line, as a user does.
void Retype(QLineEdit* edit, const QString& text)
{
    edit->selectAll();
    QTest::keyClicks(edit, text);
}

struct LiveStore : zwtest::LiveValuesScope
{
    LiveStore()
    {
        Set(u"Main meter.Active energy"_s, 1520.5);
        Set(u"Main meter.Active power"_s, std::nullopt);
        Set(u"Boiler.Temperature"_s, 61.0);
    }
};

void ClickOk(QDialog* dialog)
{
    auto* box = dialog->findChild<QDialogButtonBox*>();
    ASSERT_NE(box, nullptr);
    QTest::mouseClick(box->button(QDialogButtonBox::Ok), Qt::LeftButton);
}

// Runs `act` on the next modal dialog of type T once it is shown (the
// dialogs open with exec(), which returns only when `act` closes them). A
// dialog of another type still open after a few seconds is closed, so that
// a test fails instead of hanging.
template <class T> void WhenShown(std::function<void(T*)> act)
{
    auto* timer = new QTimer;
    timer->setInterval(10);
    auto waited = std::make_shared<int>(0);
    QObject::connect(timer, &QTimer::timeout, [timer, act, waited] {
        QWidget* modal = QApplication::activeModalWidget();
        auto* dialog = qobject_cast<T*>(modal);
        if (!dialog && ++*waited <= 300)
            return;
        timer->stop();
        timer->deleteLater();
        if (dialog)
            return act(dialog);
        ADD_FAILURE() << "the expected dialog did not open";
        if (auto* other = qobject_cast<QDialog*>(modal))
            other->reject();
    });
    timer->start();
}

// Clicks a radio button on its indicator: a click on the middle of a wide
// button misses it.
void ClickOption(QAbstractButton* option)
{
    QTest::mouseClick(option, Qt::LeftButton, {}, QPoint(6, option->height() / 2));
}

void SelectRow(QTreeWidget* list, const QString& text)
{
    const QList<QTreeWidgetItem*> found = list->findItems(text, Qt::MatchExactly, 0);
    ASSERT_EQ(found.size(), 1) << text.toStdString();
    list->setCurrentItem(found.front());
}

// The rules are checked without the dialog; one case per kind of result
// shows that the typed name, the formula being edited and the live values
// reach them, and that OK follows the result.
TEST(NewFormule, ChecksWhatIsTypedOverTheFormulaBeingEdited)
{
    LiveStore live;
    CDlgNewFormule dialog(Library());
    dialog.SetFormule(u"Cost"_s, u"Total + 1"_s);
    ASSERT_TRUE(Shown(&dialog));
    const std::tuple<QString, QString, int, bool, QString> steps[] = {
        {u"Price"_s, u"Total + 1"_s, ZWTextId::FormulaNameTaken, false, QString()},
        {u"Cost"_s, u"Total + 2"_s, ZWTextId::FormulaValue, true, u"382.12500"_s},
        {u"A"_s, u"[Main meter.Active power] / 2"_s, ZWTextId::FormulaNoCurrentValue, true,
            u"[Main meter.Active power]"_s},
    };
    for (const auto& [name, text, textId, ok, shows] : steps) {
        SCOPED_TRACE(name.toStdString() + " = " + text.toStdString());
        Retype(dialog.NameEdit(), name);
        Retype(dialog.TextEdit(), text);
        // The completion popup may be open over the text: close it first.
        QTest::keyClick(dialog.TextEdit(), Qt::Key_End);
        dialog.TextEdit()->Completer()->popup()->hide();
        QTest::mouseClick(dialog.CheckButton(), Qt::LeftButton);
        const QString line = dialog.ResultLine()->text();
        EXPECT_EQ(dialog.LastResult().textId, textId) << line.toStdString();
        EXPECT_EQ(dialog.OkButton()->isEnabled(), ok);
        EXPECT_TRUE(line.contains(shows)) << line.toStdString();
        // OK runs the same check: it closes the dialog exactly when allowed.
        dialog.accept();
        EXPECT_EQ(dialog.isVisible(), !ok);
        EXPECT_EQ(dialog.result() == QDialog::Accepted, ok);
        dialog.show();
    }
}

TEST(NewFormule, ChecksWhileTypingAndWhenShown)
{
    LiveStore live;
    CDlgNewFormule dialog(Library());
    dialog.SetFormule(QString(), QString());
    ASSERT_TRUE(Shown(&dialog));
    EXPECT_EQ(dialog.LastResult().textId, ZWTextId::FormulaEmpty);
    EXPECT_FALSE(dialog.OkButton()->isEnabled());
    QTest::keyClicks(dialog.NameEdit(), u"Half"_s);
    QTest::keyClicks(dialog.TextEdit(), u"1/2"_s);
    // The check follows the typing once it pauses.
    EXPECT_TRUE(QTest::qWaitFor([&] { return dialog.OkButton()->isEnabled(); }, 2000));
    EXPECT_EQ(dialog.ResultLine()->text(), u"Value: 0.50000"_s);
    QTest::keyClick(dialog.TextEdit(), Qt::Key_Return);
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    QString name, text;
    dialog.GetFormule(name, text);
    EXPECT_EQ(name + u'=' + text, u"Half=1/2"_s);
}

// The library dialog with its formula dialog scripted: each Add or Modify
// takes the next (name, text) and every question is answered by `answer`.
class ScriptedFormules : public CDlgFormules
{
public:
    using CDlgFormules::CDlgFormules;
    std::vector<std::pair<QString, QString>> edits;
    std::vector<std::pair<QString, QString>> opened;
    QStringList shown;
    bool answer = true;

protected:
    bool EditFormule(ZWBasicString& name, ZWBasicString& text) override
    {
        opened.emplace_back(name, text);
        if (edits.empty())
            return false;
        std::tie(name, text) = edits.front();
        edits.erase(edits.begin());
        return true;
    }
    void ShowMessage(const QString& text) override { shown << text; }
    bool Ask(const QString& text) override
    {
        shown << text;
        return answer;
    }
};

TEST(Formules, AddModifyDeleteKeepLibraryOrderAndOkRefusesALoop)
{
    ScriptedFormules dialog(Library());
    ASSERT_TRUE(Shown(&dialog));
    ASSERT_EQ(dialog.List()->topLevelItemCount(), 3);
    const auto edit = [&](const QString& row, QAbstractButton* button, const QString& name, const QString& text) {
        SelectRow(dialog.List(), row);
        dialog.edits = {{name, text}};
        if (button)
            QTest::mouseClick(button, Qt::LeftButton);
    };

    // A new formula goes after the selected one.
    edit(u"Price"_s, dialog.AddButton(), u"Tax"_s, u"0.21"_s);
    // Double-clicking a row modifies it, starting from its name and text.
    edit(u"Cost"_s, nullptr, u"Cost"_s, u"Total * (1 + Tax)"_s);
    const QRect row = dialog.List()->visualItemRect(dialog.List()->currentItem());
    QTest::mouseClick(dialog.List()->viewport(), Qt::LeftButton, {}, row.center());
    QTest::mouseDClick(dialog.List()->viewport(), Qt::LeftButton, {}, row.center());
    EXPECT_EQ(
        dialog.opened, (std::vector<std::pair<QString, QString>>{{QString(), QString()}, {u"Cost"_s, u"Total + 1"_s}}));
    // Deleting asks; No keeps the formula.
    SelectRow(dialog.List(), u"Price"_s);
    dialog.answer = false;
    QTest::mouseClick(dialog.DeleteButton(), Qt::LeftButton);
    EXPECT_EQ(dialog.List()->topLevelItemCount(), 4);
    EXPECT_EQ(dialog.shown.back(), u"Delete the formula \"Price\"?"_s);

    // Tax made to refer to Cost closes a loop: OK refuses the library, the
    // dialog stays open and still gives the library it was given.
    edit(u"Tax"_s, dialog.ModifyButton(), u"Tax"_s, u"Cost / 100"_s);
    ClickOk(&dialog);
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_TRUE(dialog.shown.back().contains(u"refers to itself"_s));
    EXPECT_EQ(Entries(dialog.GetFormules()), "Price=0.25;Total=[Main meter.Active energy] * Price;Cost=Total + 1;");

    SelectRow(dialog.List(), u"Tax"_s);
    dialog.answer = true;
    QTest::mouseClick(dialog.DeleteButton(), Qt::LeftButton);
    ClickOk(&dialog);
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    // Missing references ("Tax") do not refuse a library, only loops do.
    EXPECT_EQ(
        Entries(dialog.GetFormules()), "Price=0.25;Total=[Main meter.Active energy] * Price;Cost=Total * (1 + Tax);");
}

TEST(Formules, TheRealFormulaDialogOpensOnTheSelectedFormula)
{
    LiveStore live;
    CDlgFormules dialog(Library());
    ASSERT_TRUE(Shown(&dialog));
    SelectRow(dialog.List(), u"Cost"_s);
    bool seen = false;
    WhenShown<CDlgNewFormule>([&](CDlgNewFormule* edit) {
        seen = true;
        EXPECT_EQ(edit->NameEdit()->text(), u"Cost"_s);
        EXPECT_EQ(edit->LastResult().textId, ZWTextId::FormulaValue);
        Retype(edit->TextEdit(), u"Total * 2"_s);
        edit->TextEdit()->Completer()->popup()->hide();
        ClickOk(edit);
    });
    QTest::mouseClick(dialog.ModifyButton(), Qt::LeftButton);
    EXPECT_TRUE(seen);
    EXPECT_EQ(dialog.List()->topLevelItem(2)->text(1), u"Total * 2"_s);
}

struct WizardCase
{
    const char* what;
    const char* text;
    int start;
    int end;
    int kind;
    const char* preview;
    const char* result;
    int cursor;
};

class Wizzard : public testing::TestWithParam<WizardCase>
{};

// Each kind through its real page, driven by clicks (the device variable page:
// NewFormule.WizardReplacesTheSelectedTextOfTheFormula).
TEST_P(Wizzard, PlaceholderThenElementAtTheSelection)
{
    LiveStore live;
    const WizardCase& c = GetParam();
    CDlgWizzard wizard(Library());
    wizard.SetExpression(QString::fromUtf8(c.text), c.start, c.end);
    ASSERT_TRUE(Shown(&wizard));
    ClickOption(wizard.Kinds()->button(c.kind));
    EXPECT_EQ(wizard.GetKind(), c.kind);
    EXPECT_EQ(wizard.Preview(), QString::fromUtf8(c.preview));

    if (c.kind == 1) {
        WhenShown<CDlgAddFormuleWizzard>([](CDlgAddFormuleWizzard* page) {
            SelectRow(page->List(), u"Cost"_s);
            ClickOk(page);
        });
    } else if (c.kind == 2) {
        WhenShown<CDlgAddFunctionWizzard>([](CDlgAddFunctionWizzard* page) {
            SelectRow(page->List(), u"log10"_s);
            EXPECT_EQ(page->Preview()->text(), u"Preview: log10()"_s);
            ClickOk(page);
        });
    } else {
        WhenShown<CDlgAddOtherWizzard>([](CDlgAddOtherWizzard* page) {
            ClickOption(page->Options()->button(CDlgAddOtherWizzard::OptionPi));
            page->Decimals()->setValue(3);
            ClickOk(page);
        });
    }
    ClickOk(&wizard);
    EXPECT_EQ(wizard.result(), QDialog::Accepted);
    EXPECT_EQ(wizard.GetExpression(), QString::fromUtf8(c.result));
    EXPECT_EQ(wizard.GetCursor(), c.cursor);
}

INSTANTIATE_TEST_SUITE_P(Kinds, Wizzard,
    testing::ValuesIn(
        std::vector<WizardCase>{{"formula over a selection", "2 * Price + 1", 4, 9, 1, "2 * Fx + 1", "2 * Cost + 1", 8},
            {"function over a backwards selection", "2 * Price + 1", 9, 4, 2, "2 * F(x) + 1", "2 * log10() + 1", 10},
            {"constant at the start", "* 2", 0, 0, 3, "x* 2", "3.142* 2", 5}}),
    [](const testing::TestParamInfo<WizardCase>& info) { return zwtest::CaseName(info.param.what); });

TEST(Wizzard, CancelOnThePageReturnsToTheChoice)
{
    CDlgWizzard wizard(Library());
    wizard.SetExpression(u"1 + 2"_s, 2, 3);
    ASSERT_TRUE(Shown(&wizard));
    ClickOption(wizard.Kinds()->button(2));
    WhenShown<CDlgAddFunctionWizzard>([](CDlgAddFunctionWizzard* page) { page->reject(); });
    ClickOk(&wizard);
    EXPECT_TRUE(wizard.isVisible());
    EXPECT_EQ(wizard.GetExpression(), u"1 + 2"_s);
    EXPECT_EQ(wizard.Preview(), u"1 F(x) 2"_s);
}

TEST(NewFormule, WizardReplacesTheSelectedTextOfTheFormula)
{
    LiveStore live;
    CDlgNewFormule dialog(Library());
    dialog.SetFormule(u"Cost"_s, u"Total + 1"_s);
    ASSERT_TRUE(Shown(&dialog));
    // "Total" selected with the keyboard.
    QTest::keyClick(dialog.TextEdit(), Qt::Key_Home);
    for (int i = 0; i < 5; ++i)
        QTest::keyClick(dialog.TextEdit(), Qt::Key_Right, Qt::ShiftModifier);
    WhenShown<CDlgWizzard>([](CDlgWizzard* wizard) {
        EXPECT_EQ(wizard->Preview(), u"[Vx] + 1"_s);
        WhenShown<ZWSelectDriver>([](ZWSelectDriver* page) {
            QTest::keyClicks(page->Search(), u"boiler"_s);
            ClickOk(page);
        });
        ClickOk(wizard);
    });
    QTest::mouseClick(dialog.WizardButton(), Qt::LeftButton);
    EXPECT_EQ(dialog.TextEdit()->text(), u"[Boiler.Temperature] + 1"_s);
    EXPECT_EQ(dialog.TextEdit()->cursorPosition(), 20);
    EXPECT_EQ(dialog.ResultLine()->text(), u"Value: 62.00000"_s);
    EXPECT_TRUE(dialog.OkButton()->isEnabled());
}

TEST(FormulaEdit, CompletesNamesAndVariablesAsTheUserTypes)
{
    LiveStore live;
    ZWFormulaEdit edit;
    edit.SetStore(ZWDriverSupport::Store().get());
    edit.SetFormulas({u"Total"_s, u"Tariff"_s});
    ASSERT_TRUE(Shown(&edit));
    QAbstractItemView* popup = edit.Completer()->popup();

    QTest::keyClicks(&edit, u"2 * to"_s);
    EXPECT_EQ(edit.Offered(), QStringList{u"Total"_s});
    QTest::keyClick(popup, Qt::Key_Return);
    EXPECT_EQ(edit.text(), u"2 * Total"_s);
    EXPECT_FALSE(popup->isVisible());

    QTest::keyClicks(&edit, u" + [act"_s);
    EXPECT_EQ(edit.Offered(), (QStringList{u"Main meter.Active energy"_s, u"Main meter.Active power"_s}));
    QTest::keyClick(popup, Qt::Key_Down);
    QTest::keyClick(popup, Qt::Key_Return);
    EXPECT_EQ(edit.text(), u"2 * Total + [Main meter.Active power]"_s);
    EXPECT_EQ(edit.cursorPosition(), int(edit.text().size()));

    QTest::keyClicks(&edit, u" / sq"_s);
    EXPECT_EQ(edit.Offered(), QStringList{u"sqrt"_s});
    QTest::keyClick(popup, Qt::Key_Tab);
    QTest::keyClicks(&edit, u"4"_s);
    EXPECT_EQ(edit.text(), u"2 * Total + [Main meter.Active power] / sqrt(4)"_s);
    // Escape closes the popup and keeps what was typed.
    QTest::keyClick(&edit, Qt::Key_End);
    QTest::keyClicks(&edit, u" + Ta"_s);
    EXPECT_EQ(edit.Offered(), (QStringList{u"Tariff"_s, u"tan"_s}));
    QTest::keyClick(popup, Qt::Key_Escape);
    EXPECT_FALSE(popup->isVisible());
    EXPECT_TRUE(edit.text().endsWith(u"+ Ta"_s));
}

TEST(SelectDriver, OffersTheDatabaseVariablesSearchableWithTheirFilters)
{
    QTemporaryDir dir;
    ZWLoggerUrl url;
    QString error;
    ASSERT_TRUE(url.Parse(u"sqlite:"_s + dir.filePath(u"logger.sqlite"_s), &error));
    ZWSqlLoggerStore store(url, ZWSqlLoggerStore::Creation::CreateMissing);
    ASSERT_TRUE(store.Open(&error)) << error.toStdString();
    for (const QString& name :
        {u"Main meter.Active energy"_s, u"Main meter.Active power"_s, u"Boiler.Temperature"_s, u"Bay 2.Power [kW]"_s})
        zwtest::WriteSamples(store, name, ZWSqlLoggerStore::Kind::Gauge, {{1700000000, 1.0}});

    ZWSelectDriver dialog(&store);
    dialog.SetName(u"Boiler.Temperature:min"_s);
    ASSERT_TRUE(Shown(&dialog));
    EXPECT_EQ(dialog.List()->topLevelItemCount(), 4);
    EXPECT_EQ(dialog.List()->currentItem()->text(1), u"Temperature"_s);
    EXPECT_EQ(dialog.Filter()->currentText(), u"min"_s);

    // Every word of the search counts, in any order and letter case.
    QTest::keyClicks(dialog.Search(), u"POWER"_s);
    EXPECT_EQ(dialog.VisibleCount(), 2);
    QTest::keyClicks(dialog.Search(), u" kw"_s);
    EXPECT_EQ(dialog.VisibleCount(), 1);
    EXPECT_EQ(dialog.List()->currentItem()->text(0), u"Bay 2"_s);
    dialog.Filter()->setCurrentIndex(dialog.Filter()->findText(u"max"_s));
    EXPECT_EQ(dialog.GetName(), u"Bay 2.Power [kW]:max"_s);
    // Back to every variable; the arrow keys in the search move in the list.
    dialog.Search()->clear();
    QTest::keyClick(dialog.Search(), Qt::Key_Down);
    EXPECT_EQ(dialog.VisibleCount(), 4);
    ClickOk(&dialog);
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    EXPECT_TRUE(dialog.GetName().endsWith(u":max"_s));
    EXPECT_EQ(store.FilterNames().size() + 1, dialog.Filter()->count());
}

} // namespace
