#pragma once

#include <QString>

class ZWCardControl;
class ZWEditPage;

// The commands on the selected cards of a designer page: align, distribute,
// centre, give one size, copy, cut, paste, delete and select by id. They
// change the cards in millimetres; the window repaints and tells its frame.
// Those that need the mapping do nothing without one.
class ZWLayoutCommands
{
public:
    enum AlignMode {
        AlignLeft = 1,
        AlignRight = 2,
        AlignTop = 4,
        AlignBottom = 8,
    };

    // Lines every selected card up with the last selected one; any other
    // mode moves nothing but still keeps the cards on the page.
    static void AlignSelectedControls(ZWEditPage& edit, int mode);
    // 0 across, 1 down: equal gaps between neighbours, outermost cards stay.
    static void DistributeSelectedControls(ZWEditPage& edit, int mode);
    // 0 across, 1 down: centres each card on the page, or the selection's
    // bounding box with `asGroup`.
    static void JustifySelectedControls(ZWEditPage& edit, int mode, bool asGroup);
    // Gives every resizable selected card the last selected card's width
    // and/or height.
    static void ResizeSelectedControls(ZWEditPage& edit, bool width, bool height);

    // Moves the selected cards together by (dx, dy) steps: a screen pixel
    // each, or a grid step with `gridStep` (10 pixels where there is no
    // grid). The group stays on the page: it stops at the page's edges, and
    // a card already beyond one is not moved further out. False when nothing
    // moved.
    static bool NudgeSelectedControls(ZWEditPage& edit, int dx, int dy, bool gridStep);

    // The clipboard receives clones of the selected cards, in selection order.
    static void ControlCopy(ZWEditPage& edit);
    static void ControlCut(ZWEditPage& edit);
    // Appends a copy of the clipboard one grid step (or 30 pixels) further
    // than the last paste and selects it. False when the clipboard is empty.
    static bool ControlPaste(ZWEditPage& edit);
    // Removes and destroys the selected cards; false when none is selected.
    static bool DeleteSelectedControls(ZWEditPage& edit);
    // Makes the first card with this id the only selected one; false (and no
    // change) for an unknown id.
    static bool SelectControlById(ZWEditPage& edit, const QString& id);
    // The selected card when exactly one is selected, else null.
    static ZWCardControl* GetSelectedControl(ZWEditPage& edit);
};
