#pragma once

#include "formula/ZWFormulaCompletion.h"

#include <QLineEdit>

class QCompleter;
class QStringListModel;
class ZWLoggerStore;

// The line in which a formula is written. While the user types it offers
// the names that fit the word at the cursor: formulas, functions and device
// variables, and after "[name:" the filters; choosing one replaces the word.
class ZWFormulaEdit : public QLineEdit
{
    Q_OBJECT

public:
    explicit ZWFormulaEdit(QWidget* parent = nullptr);

    // The names offered: the store's variables and filters (none for a null
    // store) and the library's formulas.
    void SetStore(ZWLoggerStore* store);
    void SetFormulas(const QStringList& names);
    const ZWFormulaCompletion& Completion() const { return m_completion; }

    QCompleter* Completer() const { return m_completer; }
    // The candidates on offer, as the popup lists them.
    QStringList Offered() const;
    // The selection (start <= end; both the cursor when nothing is
    // selected), also after the focus went to a button: losing the focus
    // clears a line's selection, and the wizard inserts in place of it.
    void LastSelection(int& start, int& end) const;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void UpdateCompletion();
    void InsertCompletion(const QString& candidate);

    ZWFormulaCompletion m_completion;
    QCompleter* m_completer;
    QStringListModel* m_model;
    // The word the offered candidates replace.
    ZWFormulaCompletion::Word m_word;
    int m_savedStart = -1;
    int m_savedEnd = -1;
};
