#pragma once

#include <QUndoCommand>
#include <memory>
#include <vector>

class ZWCardControl;
class ZWEditPage;

// Undo of cards added to a page (drawn, made by a command, pasted) or
// removed from it (deleted, cut). The command keeps whole clones of those
// cards, identifiers included, with their positions in the list, so that
// undo and redo give back exactly the same list. Made before the change,
// completed by CaptureAfter; the first redo is the change itself.
class ZWCardListCommand : public QUndoCommand
{
public:
    enum Kind {
        // Cards appended at the end of the list.
        Insert,
        // The selected cards removed.
        Remove,
    };

    ZWCardListCommand(ZWEditPage& edit, Kind kind, const QString& text);
    ~ZWCardListCommand() override;

    // Records the cards added or removed; false when there were none.
    bool CaptureAfter();

    void undo() override;
    void redo() override;

private:
    void InsertCards();
    void RemoveCards();

    ZWEditPage& m_edit;
    Kind m_kind;
    bool m_done = true;
    size_t m_countBefore = 0;
    // Ascending positions and the cards that are (or were) there.
    std::vector<int> m_indices;
    std::vector<std::unique_ptr<ZWCardControl>> m_cards;
    std::vector<int> m_selectionBefore;
    std::vector<int> m_selectionAfter;
};
