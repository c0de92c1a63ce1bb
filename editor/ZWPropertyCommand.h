#pragma once

#include "template/ZWGlobalProperties.h"

#include <QUndoCommand>
#include <memory>
#include <vector>

class ZWCardControl;
class ZWTemplatePage;

// Undo of a change made in a property panel: some fields of one or more
// cards, or of the page. Made before the change, completed by CaptureAfter
// once the panel has changed the cards; the first redo is the change itself.
// Undo and redo copy the fields back into the same card objects, so the
// selection and the windows' pointers stay valid. Edits of the same field of
// the same cards that follow each other (typing in a field) merge into one
// step; one that ends where it started disappears.
class ZWPropertyCommand : public QUndoCommand
{
public:
    // The cards at these positions in the page's list; `field` names the
    // edited field for merging (−1: never merges).
    ZWPropertyCommand(ZWTemplatePage& page, std::vector<int> indices, const QString& text, int field = -1);
    // The page's own properties.
    ZWPropertyCommand(ZWTemplatePage& page, const QString& text, int field = -1);
    ~ZWPropertyCommand() override;

    // Records the new state; false when nothing changed (the command then
    // need not be pushed).
    bool CaptureAfter();

    void undo() override;
    void redo() override;
    int id() const override { return m_field < 0 ? -1 : IdBase + m_field; }
    bool mergeWith(const QUndoCommand* other) override;

    // Copies every field of `from` into `to`, which must be of the same kind;
    // false (and nothing copied) otherwise.
    static bool Assign(ZWCardControl& to, const ZWCardControl& from);
    // Whether two cards would be stored the same and draw on the same layer.
    static bool SameCard(const ZWCardControl& a, const ZWCardControl& b);

private:
    static constexpr int IdBase = 0x5a5700;

    void Apply(bool after);
    bool Unchanged() const;

    ZWTemplatePage& m_page;
    bool m_pageEdit = false;
    int m_field = -1;
    bool m_done = true;
    std::vector<int> m_indices;
    std::vector<std::unique_ptr<ZWCardControl>> m_before;
    std::vector<std::unique_ptr<ZWCardControl>> m_after;
    std::unique_ptr<ZWGlobalProperties> m_pageBefore;
    std::unique_ptr<ZWGlobalProperties> m_pageAfter;
};
