#pragma once

#include "template/ZWRect.h"

#include <QPoint>
#include <vector>

class ZWCardControl;

// The selected cards of a designer page, in the order they were selected
// (the last one is the reference of align and resize), with the pixel
// rectangle each one is dragged as and the corner of it that stays fixed
// during a resize; plus the rubber band. The cards are not owned.
class ZWSelection
{
public:
    ZWSelection();
    ZWSelection(const ZWSelection&) = default;
    ZWSelection& operator=(const ZWSelection&) = default;
    virtual ~ZWSelection();

    // Empties the selection and the band; style, anchor and start go to 0.
    void Clear();
    int GetNumberOfSelectedControls() const { return int(m_cards.size()); }
    // Null when out of range.
    ZWCardControl* GetSelectedControl(int index) const;
    // Out of range gives a scratch rectangle (point) that nothing reads.
    ZWRect& GetDraggingRect(int index);
    QPoint& GetAnclePoint(int index);

    void AddSelection(const ZWRect& rect, const QPoint& anchor, ZWCardControl* card);
    // Index of the card, −1 when not selected.
    int Find(const ZWCardControl* card) const;
    bool Delete(int index);
    bool IsLastSelected(const ZWCardControl* card) const;

    // The band when defined, else the union of the dragging rectangles
    // (all-zero rectangles skipped).
    void CalculateGlobalRect(ZWRect& rect) const;
    // The x (y) of the edge being dragged in a resize.
    int GetTargetX() const;
    int GetTargetY() const;
    // Moves the free edges of every resizable dragging rectangle, or of the
    // band when it is defined, by `delta`.
    void ActualizeResizeDraggingRect(const QPoint& delta);

    void SetRectUndefined();
    bool IsRectUndefined() const;

    int draggingStyle = 0;
    QPoint startPoint;
    ZWRect band{-1, -1, -1, -1};
    QPoint bandAnchor;

private:
    static void ResizeDraggingRect(ZWRect& rect, const QPoint& anchor, const QPoint& delta);

    std::vector<ZWRect> m_rects;
    std::vector<QPoint> m_anchors;
    std::vector<ZWCardControl*> m_cards;
    ZWRect m_scratchRect;
    QPoint m_scratchPoint;
};
