#pragma once

#include "formula/ZWFormuleCheck.h"
#include "host/core/XmlDocument.h"
#include "host/core/ZWBasicString.h"

#include <QDialog>
#include <vector>

class QLabel;
class QLineEdit;
class QPushButton;
class QTimer;
class ZWFormulaEdit;
class ZWLoggerStore;

// Edits one formula of the library: its name and text. The check (name,
// text, references, value) runs on request, shortly after each edit and
// before OK; its result line says what is wrong or shows the value, and OK
// is enabled only when the formula may be stored.
class CDlgNewFormule : public QDialog
{
    Q_OBJECT

public:
    // `library`: the whole library, the formula being edited included (it
    // is left out of the name and loop checks); `store`: the variables the
    // completion offers (null: the installed store).
    explicit CDlgNewFormule(const XmlDocument& library, ZWLoggerStore* store = nullptr, QWidget* parent = nullptr);

    // The formula to edit; its library entry is the first with this name
    // (none for an empty name: a new formula).
    void SetFormule(const ZWBasicString& name, const ZWBasicString& text);
    void GetFormule(ZWBasicString& name, ZWBasicString& text) const;

    // The library without the formula being edited.
    bool BuildFormulesDoc(XmlDocument& doc) const;
    // Runs the checks and shows their result; true when OK may be pressed.
    bool Evaluate();
    const ZWFormuleCheck::Result& LastResult() const { return m_result; }

    QLineEdit* NameEdit() const { return m_name; }
    ZWFormulaEdit* TextEdit() const { return m_text; }
    QLabel* ResultLine() const { return m_resultLine; }
    QPushButton* OkButton() const { return m_ok; }
    QPushButton* CheckButton() const { return m_check; }
    QPushButton* WizardButton() const { return m_wizard; }

public slots:
    void accept() override;

protected:
    void showEvent(QShowEvent* event) override;
    // Runs the wizard over the text and its selection; tests drive it.
    virtual void OnWizzard();

private:
    void OnEdited();

    ZWLoggerStore* m_store;
    XmlDocument m_library;
    std::vector<ZWBasicString> m_names;
    std::vector<ZWBasicString> m_texts;
    int m_edited = -1;
    ZWFormuleCheck::Result m_result;
    QLineEdit* m_name;
    ZWFormulaEdit* m_text;
    QLabel* m_resultLine;
    QPushButton* m_ok;
    QPushButton* m_check;
    QPushButton* m_wizard;
    QTimer* m_checkTimer;
};
