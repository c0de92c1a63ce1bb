#include "editor/ZWSelection.h"

#include "template/ZWCardControl.h"

#include <algorithm>
#include <utility>

ZWSelection::ZWSelection() = default;
ZWSelection::~ZWSelection() = default;

void ZWSelection::Clear()
{
    m_rects.clear();
    m_anchors.clear();
    m_cards.clear();
    SetRectUndefined();
    bandAnchor = QPoint();
    startPoint = QPoint();
    draggingStyle = 0;
}

ZWCardControl* ZWSelection::GetSelectedControl(int index) const
{
    if (index < 0 || index >= int(m_cards.size()))
        return nullptr;
    return m_cards[size_t(index)];
}

ZWRect& ZWSelection::GetDraggingRect(int index)
{
    if (index < 0 || index >= int(m_rects.size()))
        return m_scratchRect = ZWRect();
    return m_rects[size_t(index)];
}

QPoint& ZWSelection::GetAnclePoint(int index)
{
    if (index < 0 || index >= int(m_anchors.size()))
        return m_scratchPoint = QPoint();
    return m_anchors[size_t(index)];
}

void ZWSelection::AddSelection(const ZWRect& rect, const QPoint& anchor, ZWCardControl* card)
{
    m_rects.push_back(rect);
    m_anchors.push_back(anchor);
    m_cards.push_back(card);
}

int ZWSelection::Find(const ZWCardControl* card) const
{
    const auto it = std::find(m_cards.begin(), m_cards.end(), card);
    return it == m_cards.end() ? -1 : int(it - m_cards.begin());
}

bool ZWSelection::Delete(int index)
{
    if (index < 0 || index >= int(m_cards.size()))
        return false;
    m_rects.erase(m_rects.begin() + index);
    m_anchors.erase(m_anchors.begin() + index);
    m_cards.erase(m_cards.begin() + index);
    return true;
}

bool ZWSelection::IsLastSelected(const ZWCardControl* card) const
{
    return !m_cards.empty() && m_cards.back() == card;
}

void ZWSelection::CalculateGlobalRect(ZWRect& rect) const
{
    if (!IsRectUndefined()) {
        rect = band;
        return;
    }
    bool seeded = false;
    for (const ZWRect& r : m_rects) {
        if (r == ZWRect())
            continue;
        if (!seeded) {
            rect = r;
            seeded = true;
            continue;
        }
        rect.left = std::min(rect.left, r.left);
        rect.top = std::min(rect.top, r.top);
        rect.right = std::max(rect.right, r.right);
        rect.bottom = std::max(rect.bottom, r.bottom);
    }
    if (!seeded)
        rect = ZWRect();
}

int ZWSelection::GetTargetX() const
{
    ZWRect g;
    CalculateGlobalRect(g);
    if (IsRectUndefined()) {
        if (m_rects.empty())
            return 0;
        return m_rects.front().left == m_anchors.front().x() ? g.right : g.left;
    }
    return band.left == bandAnchor.x() ? g.right : g.left;
}

int ZWSelection::GetTargetY() const
{
    ZWRect g;
    CalculateGlobalRect(g);
    if (IsRectUndefined()) {
        if (m_rects.empty())
            return 0;
        return m_rects.front().top == m_anchors.front().y() ? g.bottom : g.top;
    }
    return band.top == bandAnchor.y() ? g.bottom : g.top;
}

void ZWSelection::ActualizeResizeDraggingRect(const QPoint& delta)
{
    if (!IsRectUndefined()) {
        ResizeDraggingRect(band, bandAnchor, delta);
        return;
    }
    for (size_t i = 0; i < m_rects.size(); ++i) {
        if (m_cards[i] && m_cards[i]->Resizable())
            ResizeDraggingRect(m_rects[i], m_anchors[i], delta);
    }
}

void ZWSelection::SetRectUndefined()
{
    band = ZWRect{-1, -1, -1, -1};
}

bool ZWSelection::IsRectUndefined() const
{
    return band.left == -1 || band.top == -1 || band.right == -1 || band.bottom == -1;
}

void ZWSelection::ResizeDraggingRect(ZWRect& rect, const QPoint& anchor, const QPoint& delta)
{
    if (rect.left == anchor.x())
        rect.right += delta.x();
    else
        rect.left += delta.x();
    if (rect.top != anchor.y())
        rect.top += delta.y();
    else
        rect.bottom += delta.y();
    if (rect.left > rect.right)
        std::swap(rect.left, rect.right);
    if (rect.top > rect.bottom)
        std::swap(rect.top, rect.bottom);
}
