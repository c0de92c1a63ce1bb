#include "formula/widgets/ZWFormulaEdit.h"

#include "host/drivers/ZWLoggerStore.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QKeyEvent>
#include <QScrollBar>
#include <QStringListModel>

ZWFormulaEdit::ZWFormulaEdit(QWidget* parent) : QLineEdit(parent)
{
    m_model = new QStringListModel(this);
    m_completer = new QCompleter(m_model, this);
    m_completer->setWidget(this);
    // The candidates are filtered here, so the completer shows them all.
    m_completer->setCompletionMode(QCompleter::UnfilteredPopupCompletion);
    m_completer->setCaseSensitivity(Qt::CaseInsensitive);
    m_completer->setMaxVisibleItems(12);
    connect(m_completer, qOverload<const QString&>(&QCompleter::activated), this, &ZWFormulaEdit::InsertCompletion);
    connect(this, &QLineEdit::textEdited, this, &ZWFormulaEdit::UpdateCompletion);
    // A text set from outside makes a kept selection meaningless.
    connect(this, &QLineEdit::textChanged, this, [this] {
        if (!hasFocus())
            m_savedStart = m_savedEnd = -1;
    });
}

void ZWFormulaEdit::SetStore(ZWLoggerStore* store)
{
    m_completion.SetVariables(store ? store->VariableNames() : QStringList());
    m_completion.SetFilters(store ? store->FilterNames() : QStringList());
}

void ZWFormulaEdit::SetFormulas(const QStringList& names)
{
    m_completion.SetFormulas(names);
}

QStringList ZWFormulaEdit::Offered() const
{
    return m_completer->popup()->isVisible() ? m_model->stringList() : QStringList();
}

void ZWFormulaEdit::UpdateCompletion()
{
    m_word = ZWFormulaCompletion::WordAt(text(), cursorPosition());
    const QStringList candidates = m_completion.Candidates(m_word);
    // Nothing to offer, or only what is already written.
    if (candidates.isEmpty()
        || (candidates.size() == 1 && candidates.front().compare(m_word.prefix, Qt::CaseInsensitive) == 0
            && m_word.end == cursorPosition())) {
        m_completer->popup()->hide();
        return;
    }
    m_model->setStringList(candidates);
    m_completer->setCompletionPrefix(QString());
    QRect rect = cursorRect();
    rect.setWidth(
        m_completer->popup()->sizeHintForColumn(0) + m_completer->popup()->verticalScrollBar()->sizeHint().width());
    m_completer->complete(rect);
    m_completer->popup()->setCurrentIndex(m_completer->completionModel()->index(0, 0));
}

void ZWFormulaEdit::InsertCompletion(const QString& candidate)
{
    int cursor = 0;
    const QString completed = m_completion.Complete(text(), m_word, candidate, &cursor);
    // As if typed: one undo step.
    selectAll();
    insert(completed);
    setCursorPosition(cursor);
    m_completer->popup()->hide();
}

void ZWFormulaEdit::keyPressEvent(QKeyEvent* event)
{
    if (m_completer->popup()->isVisible()) {
        switch (event->key()) {
        case Qt::Key_Enter:
        case Qt::Key_Return:
        case Qt::Key_Tab:
        case Qt::Key_Escape:
        case Qt::Key_Backtab:
            // The completer's popup takes these.
            event->ignore();
            return;
        default:
            break;
        }
    }
    QLineEdit::keyPressEvent(event);
    // Moving the cursor changes the word without an edit.
    if (event->key() == Qt::Key_Left || event->key() == Qt::Key_Right || event->key() == Qt::Key_Home
        || event->key() == Qt::Key_End) {
        if (m_completer->popup()->isVisible())
            UpdateCompletion();
    }
}

void ZWFormulaEdit::LastSelection(int& start, int& end) const
{
    if (!hasFocus() && m_savedStart >= 0 && m_savedEnd <= int(text().size())) {
        start = m_savedStart;
        end = m_savedEnd;
        return;
    }
    start = hasSelectedText() ? selectionStart() : cursorPosition();
    end = hasSelectedText() ? selectionEnd() : cursorPosition();
}

void ZWFormulaEdit::focusOutEvent(QFocusEvent* event)
{
    m_savedStart = hasSelectedText() ? selectionStart() : cursorPosition();
    m_savedEnd = hasSelectedText() ? selectionEnd() : cursorPosition();
    QLineEdit::focusOutEvent(event);
}
