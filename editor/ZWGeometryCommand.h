#pragma once

#include <QUndoCommand>
#include <vector>

class ZWEditPage;

// Undo of a change of the cards' places and sizes (a mouse move or resize,
// a layout command, an arrow-key nudge). Made before the change, completed
// by CaptureAfter once it is done; the first redo is the change itself.
// Cards are kept by their position in the page's list, which only the undo
// stack changes.
class ZWGeometryCommand : public QUndoCommand
{
public:
    // Merging id of the arrow-key nudges.
    static constexpr int NudgeId = 0x5a57;

    ZWGeometryCommand(ZWEditPage& edit, const QString& text, bool nudge = false);

    // Records the cards that changed; false when none did (the command then
    // need not be pushed).
    bool CaptureAfter();

    void undo() override;
    void redo() override;
    int id() const override { return m_nudge ? NudgeId : -1; }
    // Nudges of the same cards merge into one step; one that ends where it
    // started disappears.
    bool mergeWith(const QUndoCommand* other) override;

private:
    struct Geometry
    {
        double x, y, width, height;
        bool operator==(const Geometry&) const = default;
    };
    void Apply(bool after);
    static std::vector<Geometry> Snapshot(const ZWEditPage& edit);

    ZWEditPage& m_edit;
    bool m_nudge = false;
    bool m_done = true;
    std::vector<Geometry> m_beforeAll;
    std::vector<int> m_indices;
    std::vector<Geometry> m_before;
    std::vector<Geometry> m_after;
    std::vector<int> m_selectionBefore;
    std::vector<int> m_selectionAfter;
};
