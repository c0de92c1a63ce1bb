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
#include "host/drivers/ZWLiveValues.h"
#include "host/store/ZWLoggerWriter.h"
#include "host/store/ZWSqlLoggerStore.h"
#include "host/widgets/ZWSelectDriver.h"
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

namespace {

using Lib = std::vector<std::pair<const char*, const char*>>;

XmlDocument Library(const Lib& formulas)
{
    std::vector<QString> names, texts;
    for (const auto& [n, t] : formulas) {
        names.push_back(QString::fromUtf8(n));
        texts.push_back(QString::fromUtf8(t));
    }
    XmlDocument doc;
    ZWFormulaLibrary::Build(names, texts, doc);
    return doc;
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

// Types `text` over the whole line, as a user does; an empty text clears it.
void Retype(QLineEdit* edit, const QString& text)
{
    edit->selectAll();
    QTest::keyClicks(edit, text);
    if (text.isEmpty())
        QTest::keyClick(edit, Qt::Key_Delete);
}

// A live store with a few device variables, installed while a test runs.
class LiveStore
{
public:
    LiveStore() : store(std::make_shared<ZWLiveValues>())
    {
        store->Set(QStringLiteral("Main meter.Active energy"), 1520.5);
        store->Set(QStringLiteral("Main meter.Active power"), std::nullopt);
        store->Set(QStringLiteral("Boiler.Temperature"), 61.0);
        ZWDriverSupport::SetStore(store);
    }
    ~LiveStore() { ZWDriverSupport::SetStore(nullptr); }
    std::shared_ptr<ZWLiveValues> store;
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
        if (auto* dialog = qobject_cast<T*>(modal)) {
            timer->stop();
            timer->deleteLater();
            act(dialog);
        } else if (++*waited > 300) {
            timer->stop();
            timer->deleteLater();
            ADD_FAILURE() << "the expected dialog did not open";
            if (auto* other = qobject_cast<QDialog*>(modal))
                other->reject();
        }
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

const Lib kLibrary = {{"Price", "0.25"}, {"Total", "[Main meter.Active energy] * Price"}, {"Cost", "Total + 1"}};

struct TypedCase
{
    const char* what;
    // The formula opened (empty name: a new one), then what is typed over it.
    const char* openName;
    const char* name;
    const char* text;
    int textId;
    bool ok;
    const char* shows;
};

class NewFormuleTyped : public testing::TestWithParam<TypedCase>
{};

TEST_P(NewFormuleTyped, ChecksWhatIsTyped)
{
    LiveStore live;
    const TypedCase& c = GetParam();
    CDlgNewFormule dialog(Library(kLibrary));
    QString opened;
    for (const auto& [name, text] : kLibrary)
        if (std::string(name) == c.openName)
            opened = QString::fromUtf8(text);
    dialog.SetFormule(QString::fromUtf8(c.openName), opened);
    ASSERT_TRUE(Shown(&dialog));
    Retype(dialog.NameEdit(), QString::fromUtf8(c.name));
    Retype(dialog.TextEdit(), QString::fromUtf8(c.text));
    // The completion popup may be open over the text: close it first.
    QTest::keyClick(dialog.TextEdit(), Qt::Key_End);
    dialog.TextEdit()->Completer()->popup()->hide();
    QTest::mouseClick(dialog.CheckButton(), Qt::LeftButton);

    EXPECT_EQ(dialog.LastResult().textId, c.textId) << dialog.ResultLine()->text().toStdString();
    EXPECT_EQ(dialog.OkButton()->isEnabled(), c.ok);
    EXPECT_TRUE(dialog.ResultLine()->text().contains(QString::fromUtf8(c.shows)))
        << dialog.ResultLine()->text().toStdString();
    // OK runs the same check: it closes the dialog exactly when allowed.
    dialog.accept();
    EXPECT_EQ(dialog.result() == QDialog::Accepted, c.ok);
}

INSTANTIATE_TEST_SUITE_P(Checks, NewFormuleTyped,
    testing::Values(TypedCase{"empty text", "", "A", "", ZWTextId::FormulaEmpty, false, ""},
        TypedCase{"empty name", "", "", "1", ZWTextId::FormulaNameInvalid, false, ""},
        TypedCase{"digit first", "", "2A", "1", ZWTextId::FormulaNameInvalid, false, ""},
        TypedCase{"function name", "", "log10", "1", ZWTextId::FormulaNameInvalid, false, ""},
        TypedCase{"capitalised function name accepted", "", "Sqrt", "Price*4", ZWTextId::FormulaValue, true, "1.00000"},
        TypedCase{"duplicate name", "", "Cost", "1", ZWTextId::FormulaNameTaken, false, ""},
        TypedCase{"renamed onto another formula", "Cost", "Price", "Total + 1", ZWTextId::FormulaNameTaken, false, ""},
        TypedCase{"own name kept", "Cost", "Cost", "Total + 2", ZWTextId::FormulaValue, true, "382.12500"},
        TypedCase{"boolean refused", "", "A", "Total > 100", ZWTextId::FormulaInvalid, false, ""},
        TypedCase{"grammar", "", "A", "Total +* 2", ZWTextId::FormulaInvalid, false, ""},
        TypedCase{"loop", "Price", "Price", "Cost / 100", ZWTextId::FormulaRefersToItself, false, ""},
        TypedCase{
            "unknown device variable", "", "A", "[Main meter.Volume]", ZWTextId::FormulaUnknownVariable, false, ""},
        TypedCase{"code 40 accepted", "", "A", "Missing * 2", ZWTextId::FormulaValueMissing, true, "Missing"},
        TypedCase{"code 62 accepted", "", "A", "[Main meter.Active power] / 2", ZWTextId::FormulaNoCurrentValue, true,
            "[Main meter.Active power]"},
        TypedCase{"evaluation error", "", "A", "log(0)", ZWTextId::FormulaCannotEvaluate, false, ""}),
    [](const testing::TestParamInfo<TypedCase>& info) { return zwtest::CaseName(info.param.what); });

TEST(NewFormule, ChecksWhileTypingAndWhenShown)
{
    LiveStore live;
    CDlgNewFormule dialog(Library(kLibrary));
    dialog.SetFormule(QString(), QString());
    ASSERT_TRUE(Shown(&dialog));
    EXPECT_EQ(dialog.LastResult().textId, ZWTextId::FormulaEmpty);
    EXPECT_FALSE(dialog.OkButton()->isEnabled());
    QTest::keyClicks(dialog.NameEdit(), QStringLiteral("Half"));
    QTest::keyClicks(dialog.TextEdit(), QStringLiteral("1/2"));
    // The check follows the typing once it pauses.
    EXPECT_TRUE(QTest::qWaitFor([&] { return dialog.OkButton()->isEnabled(); }, 2000));
    EXPECT_EQ(dialog.ResultLine()->text(), QStringLiteral("Value: 0.50000"));
    QTest::keyClick(dialog.TextEdit(), Qt::Key_Return);
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    QString name, text;
    dialog.GetFormule(name, text);
    EXPECT_EQ(name, QStringLiteral("Half"));
    EXPECT_EQ(text, QStringLiteral("1/2"));
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
    ScriptedFormules dialog(Library(kLibrary));
    ASSERT_TRUE(Shown(&dialog));
    ASSERT_EQ(dialog.List()->topLevelItemCount(), 3);

    // A new formula goes after the selected one.
    SelectRow(dialog.List(), QStringLiteral("Price"));
    dialog.edits = {{QStringLiteral("Tax"), QStringLiteral("0.21")}};
    QTest::mouseClick(dialog.AddButton(), Qt::LeftButton);
    // Double-clicking a row modifies it, starting from its name and text.
    SelectRow(dialog.List(), QStringLiteral("Cost"));
    dialog.edits = {{QStringLiteral("Cost"), QStringLiteral("Total * (1 + Tax)")}};
    const QRect row = dialog.List()->visualItemRect(dialog.List()->currentItem());
    QTest::mouseClick(dialog.List()->viewport(), Qt::LeftButton, {}, row.center());
    QTest::mouseDClick(dialog.List()->viewport(), Qt::LeftButton, {}, row.center());
    ASSERT_EQ(dialog.opened.size(), 2u);
    EXPECT_EQ(dialog.opened[0], std::make_pair(QString(), QString()));
    EXPECT_EQ(dialog.opened[1], std::make_pair(QStringLiteral("Cost"), QStringLiteral("Total + 1")));
    // Deleting asks; No keeps the formula.
    SelectRow(dialog.List(), QStringLiteral("Price"));
    dialog.answer = false;
    QTest::mouseClick(dialog.DeleteButton(), Qt::LeftButton);
    EXPECT_EQ(dialog.List()->topLevelItemCount(), 4);
    EXPECT_EQ(dialog.shown.back(), QStringLiteral("Delete the formula \"Price\"?"));

    // Tax made to refer to Cost closes a loop: OK refuses the library, the
    // dialog stays open and still gives the library it was given.
    SelectRow(dialog.List(), QStringLiteral("Tax"));
    dialog.edits = {{QStringLiteral("Tax"), QStringLiteral("Cost / 100")}};
    QTest::mouseClick(dialog.ModifyButton(), Qt::LeftButton);
    ClickOk(&dialog);
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_TRUE(dialog.shown.back().contains(QStringLiteral("refers to itself")));
    EXPECT_EQ(Entries(dialog.GetFormules()), "Price=0.25;Total=[Main meter.Active energy] * Price;Cost=Total + 1;");

    SelectRow(dialog.List(), QStringLiteral("Tax"));
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
    CDlgFormules dialog(Library(kLibrary));
    ASSERT_TRUE(Shown(&dialog));
    SelectRow(dialog.List(), QStringLiteral("Cost"));
    bool seen = false;
    WhenShown<CDlgNewFormule>([&](CDlgNewFormule* edit) {
        seen = true;
        EXPECT_EQ(edit->NameEdit()->text(), QStringLiteral("Cost"));
        EXPECT_EQ(edit->LastResult().textId, ZWTextId::FormulaValue);
        Retype(edit->TextEdit(), QStringLiteral("Total * 2"));
        edit->TextEdit()->Completer()->popup()->hide();
        ClickOk(edit);
    });
    QTest::mouseClick(dialog.ModifyButton(), Qt::LeftButton);
    EXPECT_TRUE(seen);
    EXPECT_EQ(dialog.List()->topLevelItem(2)->text(1), QStringLiteral("Total * 2"));
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

// Each kind through its real page, driven by clicks.
TEST_P(Wizzard, PlaceholderThenElementAtTheSelection)
{
    LiveStore live;
    const WizardCase& c = GetParam();
    CDlgWizzard wizard(Library(kLibrary));
    wizard.SetExpression(QString::fromUtf8(c.text), c.start, c.end);
    ASSERT_TRUE(Shown(&wizard));
    ClickOption(wizard.Kinds()->button(c.kind));
    EXPECT_EQ(wizard.GetKind(), c.kind);
    EXPECT_EQ(wizard.Preview(), QString::fromUtf8(c.preview));

    switch (c.kind) {
    case 0:
        WhenShown<ZWSelectDriver>([](ZWSelectDriver* page) {
            QTest::keyClicks(page->Search(), QStringLiteral("meter power"));
            EXPECT_EQ(page->VisibleCount(), 1);
            ClickOk(page);
        });
        break;
    case 1:
        WhenShown<CDlgAddFormuleWizzard>([](CDlgAddFormuleWizzard* page) {
            SelectRow(page->List(), QStringLiteral("Cost"));
            ClickOk(page);
        });
        break;
    case 2:
        WhenShown<CDlgAddFunctionWizzard>([](CDlgAddFunctionWizzard* page) {
            SelectRow(page->List(), QStringLiteral("log10"));
            EXPECT_EQ(page->Preview()->text(), QStringLiteral("Preview: log10()"));
            ClickOk(page);
        });
        break;
    default:
        WhenShown<CDlgAddOtherWizzard>([](CDlgAddOtherWizzard* page) {
            ClickOption(page->Options()->button(CDlgAddOtherWizzard::OptionPi));
            page->Decimals()->setValue(3);
            ClickOk(page);
        });
        break;
    }
    ClickOk(&wizard);
    EXPECT_EQ(wizard.result(), QDialog::Accepted);
    EXPECT_EQ(wizard.GetExpression(), QString::fromUtf8(c.result));
    EXPECT_EQ(wizard.GetCursor(), c.cursor);
}

INSTANTIATE_TEST_SUITE_P(Kinds, Wizzard,
    testing::Values(WizardCase{"device variable found by words", "Total - ", 8, 8, 0, "Total - [Vx]",
                        "Total - [Main meter.Active power]", 33},
        WizardCase{"formula over a selection", "2 * Price + 1", 4, 9, 1, "2 * Fx + 1", "2 * Cost + 1", 8},
        WizardCase{
            "function over a backwards selection", "2 * Price + 1", 9, 4, 2, "2 * F(x) + 1", "2 * log10() + 1", 10},
        WizardCase{"constant at the start", "* 2", 0, 0, 3, "x* 2", "3.142* 2", 5}),
    [](const testing::TestParamInfo<WizardCase>& info) { return zwtest::CaseName(info.param.what); });

TEST(Wizzard, CancelOnThePageReturnsToTheChoice)
{
    CDlgWizzard wizard(Library(kLibrary));
    wizard.SetExpression(QStringLiteral("1 + 2"), 2, 3);
    ASSERT_TRUE(Shown(&wizard));
    ClickOption(wizard.Kinds()->button(2));
    WhenShown<CDlgAddFunctionWizzard>([](CDlgAddFunctionWizzard* page) { page->reject(); });
    ClickOk(&wizard);
    EXPECT_TRUE(wizard.isVisible());
    EXPECT_EQ(wizard.GetExpression(), QStringLiteral("1 + 2"));
    EXPECT_EQ(wizard.Preview(), QStringLiteral("1 F(x) 2"));
}

TEST(NewFormule, WizardReplacesTheSelectedTextOfTheFormula)
{
    LiveStore live;
    CDlgNewFormule dialog(Library(kLibrary));
    dialog.SetFormule(QStringLiteral("Cost"), QStringLiteral("Total + 1"));
    ASSERT_TRUE(Shown(&dialog));
    // "Total" selected with the keyboard.
    QTest::keyClick(dialog.TextEdit(), Qt::Key_Home);
    for (int i = 0; i < 5; ++i)
        QTest::keyClick(dialog.TextEdit(), Qt::Key_Right, Qt::ShiftModifier);
    WhenShown<CDlgWizzard>([](CDlgWizzard* wizard) {
        EXPECT_EQ(wizard->Preview(), QStringLiteral("[Vx] + 1"));
        WhenShown<ZWSelectDriver>([](ZWSelectDriver* page) {
            QTest::keyClicks(page->Search(), QStringLiteral("boiler"));
            ClickOk(page);
        });
        ClickOk(wizard);
    });
    QTest::mouseClick(dialog.WizardButton(), Qt::LeftButton);
    EXPECT_EQ(dialog.TextEdit()->text(), QStringLiteral("[Boiler.Temperature] + 1"));
    EXPECT_EQ(dialog.TextEdit()->cursorPosition(), 20);
    EXPECT_EQ(dialog.ResultLine()->text(), QStringLiteral("Value: 62.00000"));
    EXPECT_TRUE(dialog.OkButton()->isEnabled());
}

TEST(FormulaEdit, CompletesNamesAndVariablesAsTheUserTypes)
{
    LiveStore live;
    ZWFormulaEdit edit;
    edit.SetStore(live.store.get());
    edit.SetFormulas({QStringLiteral("Total"), QStringLiteral("Tariff")});
    ASSERT_TRUE(Shown(&edit));
    QAbstractItemView* popup = edit.Completer()->popup();

    QTest::keyClicks(&edit, QStringLiteral("2 * to"));
    EXPECT_EQ(edit.Offered(), QStringList{QStringLiteral("Total")});
    QTest::keyClick(popup, Qt::Key_Return);
    EXPECT_EQ(edit.text(), QStringLiteral("2 * Total"));
    EXPECT_FALSE(popup->isVisible());

    QTest::keyClicks(&edit, QStringLiteral(" + [act"));
    EXPECT_EQ(edit.Offered(),
        (QStringList{QStringLiteral("Main meter.Active energy"), QStringLiteral("Main meter.Active power")}));
    QTest::keyClick(popup, Qt::Key_Down);
    QTest::keyClick(popup, Qt::Key_Return);
    EXPECT_EQ(edit.text(), QStringLiteral("2 * Total + [Main meter.Active power]"));
    EXPECT_EQ(edit.cursorPosition(), int(edit.text().size()));

    QTest::keyClicks(&edit, QStringLiteral(" / sq"));
    EXPECT_EQ(edit.Offered(), QStringList{QStringLiteral("sqrt")});
    QTest::keyClick(popup, Qt::Key_Tab);
    QTest::keyClicks(&edit, QStringLiteral("4"));
    EXPECT_EQ(edit.text(), QStringLiteral("2 * Total + [Main meter.Active power] / sqrt(4)"));
    // Escape closes the popup and keeps what was typed.
    QTest::keyClick(&edit, Qt::Key_End);
    QTest::keyClicks(&edit, QStringLiteral(" + Ta"));
    EXPECT_EQ(edit.Offered(), (QStringList{QStringLiteral("Tariff"), QStringLiteral("tan")}));
    QTest::keyClick(popup, Qt::Key_Escape);
    EXPECT_FALSE(popup->isVisible());
    EXPECT_TRUE(edit.text().endsWith(QStringLiteral("+ Ta")));
}

TEST(SelectDriver, OffersTheDatabaseVariablesSearchableWithTheirFilters)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    ZWLoggerUrl url;
    QString error;
    ASSERT_TRUE(url.Parse(QStringLiteral("sqlite:") + dir.filePath(QStringLiteral("logger.sqlite")), &error));
    ZWSqlLoggerStore store(url, ZWSqlLoggerStore::Creation::CreateMissing);
    ASSERT_TRUE(store.Open(&error)) << error.toStdString();
    {
        ZWLoggerWriter writer(store);
        ASSERT_TRUE(writer.Begin(&error));
        for (const char* name :
            {"Main meter.Active energy", "Main meter.Active power", "Boiler.Temperature", "Bay 2.Power [kW]"}) {
            qint64 id = 0;
            bool created = false;
            ASSERT_TRUE(writer.EnsureVariable(
                QString::fromUtf8(name), ZWSqlLoggerStore::Kind::Gauge, QString(), false, id, created, &error));
            ASSERT_TRUE(writer.Add(id, 1700000000, 1.0, &error));
        }
        ASSERT_TRUE(writer.Commit(&error)) << error.toStdString();
    }

    ZWSelectDriver dialog(&store);
    dialog.SetName(QStringLiteral("Boiler.Temperature:min"));
    ASSERT_TRUE(Shown(&dialog));
    EXPECT_EQ(dialog.List()->topLevelItemCount(), 4);
    EXPECT_EQ(dialog.List()->currentItem()->text(1), QStringLiteral("Temperature"));
    EXPECT_EQ(dialog.Filter()->currentText(), QStringLiteral("min"));

    // Every word of the search counts, in any order and letter case.
    QTest::keyClicks(dialog.Search(), QStringLiteral("POWER"));
    EXPECT_EQ(dialog.VisibleCount(), 2);
    QTest::keyClicks(dialog.Search(), QStringLiteral(" kw"));
    EXPECT_EQ(dialog.VisibleCount(), 1);
    EXPECT_EQ(dialog.List()->currentItem()->text(0), QStringLiteral("Bay 2"));
    dialog.Filter()->setCurrentIndex(dialog.Filter()->findText(QStringLiteral("max")));
    EXPECT_EQ(dialog.GetName(), QStringLiteral("Bay 2.Power [kW]:max"));
    // Back to every variable; the arrow keys in the search move in the list.
    dialog.Search()->clear();
    QTest::keyClick(dialog.Search(), Qt::Key_Down);
    EXPECT_EQ(dialog.VisibleCount(), 4);
    ClickOk(&dialog);
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    EXPECT_TRUE(dialog.GetName().endsWith(QStringLiteral(":max")));
    EXPECT_EQ(store.FilterNames().size() + 1, dialog.Filter()->count());
}

} // namespace
