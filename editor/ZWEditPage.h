#pragma once

#include "editor/ZWHandleZones.h"
#include "editor/ZWPageMapping.h"
#include "editor/ZWSelection.h"

#include <QPoint>
#include <functional>
#include <memory>
#include <vector>

class ZWCardControl;
class ZWTemplatePage;

// The designer page without its window: the page's cards, the mapping, the
// selection and the mouse operation in progress. The window passes it the
// button and mouse positions in client pixels and paints what it says; the
// cards change only when the button is released.
class ZWEditPage
{
public:
    // The mouse operation in progress: the value set by the press, then its
    // moved value after the first move with the button held.
    enum Operation {
        NoOperation = 0,
        NewCard = 1,
        NewCardCtrl = 2,
        PressUnselected = 3,
        PressUnselectedCtrl = 4,
        PressSelected = 5,
        PressSelectedCtrl = 6,
        MoveUnselected = 7,
        MoveUnselectedCtrl = 8,
        MoveSelected = 9,
        MoveSelectedCtrl = 10,
        DrawNewCard = 11,
        DrawNewCardCtrl = 12,
        Band = 13,
        BandCtrl = 14,
        DrawBand = 15,
        DrawBandCtrl = 16,
        BandShift = 17,
        DrawBandShift = 18,
        PressUnselectedShift = 19,
        PressSelectedShift = 20,
        MoveUnselectedShift = 21,
        MoveSelectedShift = 22,
    };

    // The tools; any other state creates nothing.
    enum ActiveState {
        LabelTool = 0,
        ImageTool = 1,
        SelectTool = 2,
        DateTool = 3,
        FormuleTool = 4,
        ConditionedTool = 8,
        ChartTool = 9,
        TableTool = 10,
    };

    explicit ZWEditPage(ZWTemplatePage& page);
    virtual ~ZWEditPage();

    ZWTemplatePage& Page() const { return m_page; }
    ZWPageMapping& Mapping() { return m_mapping; }
    const ZWPageMapping& Mapping() const { return m_mapping; }
    ZWSelection& Selection() { return m_selection; }
    const ZWSelection& Selection() const { return m_selection; }

    void SetActiveState(int state) { m_activeState = state; }
    int GetActiveState() const { return m_activeState; }
    int GetOperation() const { return m_operation; }
    ZWCardControl* GetOverCard() const { return m_overCard; }
    // The cursor the window should show now.
    ZWHandleZones::Cursor ShownCursor() const { return m_shownCursor; }
    // The last mouse position over the window (−1, −1 before the first).
    QPoint LastMouse() const { return m_lastMouse; }
    // A right click or a move without the button: the card under the mouse
    // and the last position follow it.
    void SetLastMouse(const QPoint& point)
    {
        if (m_operation == NoOperation)
            MouseMove(point);
    }
    // Forgets the card under the mouse (a menu took the mouse away).
    void ForgetOverCard() { m_overCard = nullptr; }

    // The first card in list order whose pixel rectangle holds the point,
    // with that rectangle; null when none or without a mapping.
    ZWCardControl* GetOverControl(const QPoint& point, ZWRect& rect);

    // Left button pressed, moved (held or not) and released, in client
    // pixels. Release returns the click-only flag (1 when nothing was
    // dragged or the drag was refused).
    void ButtonDown(const QPoint& point, bool ctrl, bool shift);
    void MouseMove(const QPoint& point);
    unsigned long ButtonUp();
    // The capture was lost: the drag and the selection are dropped.
    void CancelDrag();

    // One drag step of the whole selection, kept on the page (on whole grid
    // steps when there is a grid).
    void MoveDraggingRect(const QPoint& point);
    // One resize step of the dragged edges, kept on the page.
    void ResizeDraggingRect(const QPoint& point, bool horizontal, bool vertical);
    // Applies the drag that ends to the cards.
    void RepositioningControl(unsigned long& clickOnly);
    // While drawing: keeps a selected card's dragging rectangle and anchor
    // in step with the card's pixel rectangle `rect` (after a zoom or a
    // scroll); unselected cards are ignored.
    void UpdateRect(const ZWCardControl* card, const ZWRect& rect);

    // The selection as positions in the page's card list, in selection
    // order, and back: undo and redo rebuild the selection from these, never
    // from card pointers that an earlier command may have destroyed.
    std::vector<int> SelectedIndices() const;
    void SelectIndices(const std::vector<int>& indices);

    // Makes a card of the active tool's kind at (x, y, w, h) mm, selects it
    // and appends it to the page; null for the selection tool.
    virtual ZWCardControl* AddControl(double x, double y, double w, double h);
    // The "new card" commands: a card of the kind of creation tool `tool`
    // at the last mouse position, one grid step (or 30 pixels) each way,
    // whatever the active tool. Null for the selection tool.
    ZWCardControl* NewControl(int tool);

    // Called by the undo commands after each undo and each redo that changed
    // this page, so that its window repaints and shows it.
    std::function<void()> commandApplied;

    // Clones of the cards last copied; they outlive pastes and move one
    // paste offset further with each paste.
    std::vector<std::unique_ptr<ZWCardControl>> clipboard;

    // The colours given to new cards, as 0x00BBGGRR.
    quint32 labelColor = 0x000000;
    quint32 dateColor = 0xC000C0;
    quint32 imageColor = 0xC06060;
    quint32 formuleColor = 0x6060C0;
    quint32 conditionedColor = 0x60C060;

private:
    void SetNewCursor();
    static int MovedValue(int operation);

    ZWTemplatePage& m_page;
    ZWPageMapping m_mapping;
    ZWSelection m_selection;
    int m_activeState = LabelTool;
    int m_operation = NoOperation;
    ZWCardControl* m_overCard = nullptr;
    QPoint m_lastMouse{-1, -1};
    ZWHandleZones::Cursor m_dragCursor = ZWHandleZones::Cursor::Arrow;
    ZWHandleZones::Cursor m_shownCursor = ZWHandleZones::Cursor::Arrow;
};
