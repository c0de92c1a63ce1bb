#include "editor/ZWGeometryCommand.h"

#include "editor/ZWEditPage.h"
#include "template/ZWTemplatePage.h"

ZWGeometryCommand::ZWGeometryCommand(ZWEditPage& edit, const QString& text, bool nudge)
    : QUndoCommand(text), m_edit(edit), m_nudge(nudge), m_beforeAll(Snapshot(edit)),
      m_selectionBefore(edit.SelectedIndices())
{}

std::vector<ZWGeometryCommand::Geometry> ZWGeometryCommand::Snapshot(const ZWEditPage& edit)
{
    std::vector<Geometry> out;
    for (const auto& c : edit.Page().cards)
        out.push_back({c->x, c->y, c->width, c->height});
    return out;
}

bool ZWGeometryCommand::CaptureAfter()
{
    const std::vector<Geometry> now = Snapshot(m_edit);
    m_indices.clear();
    m_before.clear();
    m_after.clear();
    // A geometry command never adds or removes cards; compare what both have.
    for (size_t i = 0; i < now.size() && i < m_beforeAll.size(); ++i) {
        if (now[i] == m_beforeAll[i])
            continue;
        m_indices.push_back(int(i));
        m_before.push_back(m_beforeAll[i]);
        m_after.push_back(now[i]);
    }
    m_beforeAll.clear();
    m_selectionAfter = m_edit.SelectedIndices();
    return !m_indices.empty();
}

void ZWGeometryCommand::Apply(bool after)
{
    auto& cards = m_edit.Page().cards;
    const std::vector<Geometry>& values = after ? m_after : m_before;
    for (size_t i = 0; i < m_indices.size(); ++i) {
        const size_t index = size_t(m_indices[i]);
        if (index >= cards.size())
            continue;
        ZWCardControl& card = *cards[index];
        card.x = values[i].x;
        card.y = values[i].y;
        card.width = values[i].width;
        card.height = values[i].height;
    }
    m_edit.SelectIndices(after ? m_selectionAfter : m_selectionBefore);
    if (m_edit.commandApplied)
        m_edit.commandApplied();
}

void ZWGeometryCommand::undo()
{
    Apply(false);
}

void ZWGeometryCommand::redo()
{
    // The change was made before the command was pushed.
    if (m_done) {
        m_done = false;
        return;
    }
    Apply(true);
}

bool ZWGeometryCommand::mergeWith(const QUndoCommand* other)
{
    const auto* next = dynamic_cast<const ZWGeometryCommand*>(other);
    if (!next || !m_nudge || !next->m_nudge || next->m_indices != m_indices)
        return false;
    m_after = next->m_after;
    m_selectionAfter = next->m_selectionAfter;
    setObsolete(m_after == m_before);
    return true;
}
