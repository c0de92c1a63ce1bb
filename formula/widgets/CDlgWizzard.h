#pragma once

#include "host/core/XmlDocument.h"
#include "host/core/ZWBasicString.h"

#include <QDialog>
#include <vector>

class QButtonGroup;
class QLabel;
class QLineEdit;
class ZWLoggerStore;

// The formula wizard: inserts one element at the cursor of a formula text,
// in place of the selection. The user picks the kind of element (device
// variable, formula, function, other) and sees the formula with its
// placeholder; OK opens the kind's page, and the element chosen there
// replaces the placeholder.
class CDlgWizzard : public QDialog
{
    Q_OBJECT

public:
    // `library`: the formulas that may be inserted; `store`: the variables
    // offered (null: the installed store).
    explicit CDlgWizzard(const XmlDocument& library, ZWLoggerStore* store = nullptr, QWidget* parent = nullptr);

    // The formula text and the selection in it (start and end in either
    // order; both at the cursor when nothing is selected).
    void SetExpression(const ZWBasicString& text, int start, int end);
    // After OK: the formula with the element in place, and the cursor
    // after it (between a function's parentheses).
    const ZWBasicString& GetExpression() const { return m_text; }
    int GetCursor() const { return m_cursor; }

    void SetKind(int kind);
    int GetKind() const { return m_kind; }
    // The formula with the placeholder, as shown.
    QString Preview() const;

    QButtonGroup* Kinds() const { return m_kinds; }

public slots:
    void accept() override;

protected:
    // Runs the page of `kind`; true with the chosen element's text ("Total",
    // "Main meter.Active energy", "sqrt", "<=").
    virtual bool ChooseElement(int kind, ZWBasicString& chosen);

private:
    void ActualizeExpression();

    ZWLoggerStore* m_store;
    std::vector<ZWBasicString> m_names;
    std::vector<ZWBasicString> m_texts;
    ZWBasicString m_text;
    int m_start = 0;
    int m_end = 0;
    int m_kind = 0;
    int m_cursor = 0;
    QButtonGroup* m_kinds;
    QLineEdit* m_formula;
    QLineEdit* m_preview;
};
