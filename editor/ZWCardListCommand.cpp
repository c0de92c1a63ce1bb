#include "editor/ZWCardListCommand.h"

#include "editor/ZWEditPage.h"
#include "template/ZWTemplatePage.h"

#include <algorithm>

ZWCardListCommand::ZWCardListCommand(ZWEditPage& edit, Kind kind, const QString& text)
    : QUndoCommand(text), m_edit(edit), m_kind(kind), m_countBefore(edit.Page().cards.size()),
      m_selectionBefore(edit.SelectedIndices())
{
    if (m_kind == Remove) {
        // The cards that are about to go, whole, while they still exist.
        m_indices = m_selectionBefore;
        std::sort(m_indices.begin(), m_indices.end());
        m_indices.erase(std::unique(m_indices.begin(), m_indices.end()), m_indices.end());
        for (int index : m_indices)
            m_cards.push_back(edit.Page().cards[size_t(index)]->GetClone());
    }
}

ZWCardListCommand::~ZWCardListCommand() = default;

bool ZWCardListCommand::CaptureAfter()
{
    const auto& cards = m_edit.Page().cards;
    if (m_kind == Insert) {
        m_indices.clear();
        m_cards.clear();
        for (size_t i = m_countBefore; i < cards.size(); ++i) {
            m_indices.push_back(int(i));
            m_cards.push_back(cards[i]->GetClone());
        }
    } else if (cards.size() + m_indices.size() != m_countBefore) {
        // Not the selected cards that went: nothing this command can restore.
        m_indices.clear();
        m_cards.clear();
    }
    m_selectionAfter = m_edit.SelectedIndices();
    return !m_indices.empty();
}

void ZWCardListCommand::InsertCards()
{
    auto& cards = m_edit.Page().cards;
    for (size_t i = 0; i < m_indices.size(); ++i) {
        const size_t at = std::min(size_t(m_indices[i]), cards.size());
        cards.insert(cards.begin() + std::ptrdiff_t(at), m_cards[i]->GetClone());
    }
}

void ZWCardListCommand::RemoveCards()
{
    auto& cards = m_edit.Page().cards;
    for (auto it = m_indices.rbegin(); it != m_indices.rend(); ++it) {
        if (size_t(*it) < cards.size())
            cards.erase(cards.begin() + *it);
    }
}

void ZWCardListCommand::undo()
{
    // The selection points into the list: drop it before the list changes.
    m_edit.Selection().Clear();
    if (m_kind == Insert)
        RemoveCards();
    else
        InsertCards();
    m_edit.SelectIndices(m_selectionBefore);
    if (m_edit.commandApplied)
        m_edit.commandApplied();
}

void ZWCardListCommand::redo()
{
    if (m_done) {
        m_done = false;
        return;
    }
    m_edit.Selection().Clear();
    if (m_kind == Insert)
        InsertCards();
    else
        RemoveCards();
    m_edit.SelectIndices(m_selectionAfter);
    if (m_edit.commandApplied)
        m_edit.commandApplied();
}
