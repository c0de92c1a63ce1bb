#include "editor/ZWEditPage.h"

#include "host/core/ZWLoadString.h"
#include "host/core/ZWMath.h"
#include "host/core/ZWTextId.h"
#include "template/ZWCardKinds.h"
#include "template/ZWCardLabel.h"
#include "template/ZWTemplatePage.h"

#include <algorithm>
#include <cmath>

using Cursor = ZWHandleZones::Cursor;

namespace {

bool IsResizeStyle(int style)
{
    return style != ZWHandleZones::None && style != ZWHandleZones::Move;
}

} // namespace

ZWEditPage::ZWEditPage(ZWTemplatePage& page) : m_page(page), m_mapping(page.properties)
{}

ZWEditPage::~ZWEditPage() = default;

ZWCardControl* ZWEditPage::GetOverControl(const QPoint& point, ZWRect& rect)
{
    ZWPageMapping::Dimensions d;
    if (!m_mapping.GetTemplateDimensions(d))
        return nullptr;
    d.offsetX = std::round(d.offsetX);
    d.offsetY = std::round(d.offsetY);
    for (const auto& card : m_page.cards) {
        rect = m_mapping.CardRect(*card, d);
        if (point.x() >= rect.left && point.x() < rect.right && point.y() >= rect.top && point.y() < rect.bottom)
            return card.get();
    }
    return nullptr;
}

int ZWEditPage::MovedValue(int operation)
{
    switch (operation) {
    case NewCard:
        return DrawNewCard;
    case NewCardCtrl:
        return DrawNewCardCtrl;
    case PressUnselected:
        return MoveUnselected;
    case PressUnselectedCtrl:
        return MoveUnselectedCtrl;
    case PressUnselectedShift:
        return MoveUnselectedShift;
    case PressSelected:
        return MoveSelected;
    case PressSelectedCtrl:
        return MoveSelectedCtrl;
    case PressSelectedShift:
        return MoveSelectedShift;
    case Band:
        return DrawBand;
    case BandCtrl:
        return DrawBandCtrl;
    case BandShift:
        return DrawBandShift;
    default:
        return operation;
    }
}

void ZWEditPage::ButtonDown(const QPoint& point, bool ctrl, bool shift)
{
    m_lastMouse = point;
    ZWRect rect;
    ZWCardControl* card = GetOverControl(point, rect);
    m_overCard = card;
    bool added = false;
    if (card && m_selection.Find(card) < 0) {
        if (!ctrl && !shift)
            m_selection.Clear();
        m_selection.AddSelection(rect, QPoint(rect.left, rect.top), card);
        added = true;
    }
    if (!card) {
        if (m_activeState != SelectTool && !ctrl && !shift)
            m_selection.Clear();
        if (m_activeState == SelectTool)
            m_operation = ctrl ? BandCtrl : (shift ? BandShift : Band);
        else
            m_operation = ctrl ? NewCardCtrl : NewCard;
        ZWPageMapping::Dimensions d;
        if (!m_mapping.GetTemplateDimensions(d)) {
            m_operation = NoOperation;
            return;
        }
        const ZWRect page = m_mapping.PageRect(d);
        if (point.x() < page.left || point.x() >= page.right || point.y() < page.top || point.y() >= page.bottom) {
            m_operation = NoOperation;
            return;
        }
        const QPoint p = m_mapping.SnapPointToGrid(point, d);
        m_selection.startPoint = p;
        m_selection.band = ZWRect{p.x(), p.y(), p.x(), p.y()};
        m_selection.bandAnchor = p;
        m_selection.draggingStyle = ZWHandleZones::BottomRight;
        m_dragCursor = Cursor::SizeAll;
        // Drawing a card starts refused until it reaches the minimum size.
        m_shownCursor = m_activeState == SelectTool ? Cursor::SizeAll : Cursor::NoEntry;
        return;
    }
    if (added)
        m_operation = ctrl ? PressUnselectedCtrl : (shift ? PressUnselectedShift : PressUnselected);
    else
        m_operation = ctrl ? PressSelectedCtrl : (shift ? PressSelectedShift : PressSelected);
    const int style = ZWHandleZones::GetDraggingStyle(card, point, rect);
    m_selection.draggingStyle = style;
    m_dragCursor = ZWHandleZones::DragCursor(style);
    for (int i = 0; i < m_selection.GetNumberOfSelectedControls(); ++i)
        ZWHandleZones::AnchorFor(style, m_selection.GetDraggingRect(i), m_selection.GetAnclePoint(i));
    m_selection.startPoint = point;
    m_shownCursor = m_dragCursor;
}

void ZWEditPage::MouseMove(const QPoint& point)
{
    if (point == m_lastMouse)
        return;
    m_lastMouse = point;
    if (m_operation == NoOperation) {
        ZWRect rect;
        m_overCard = GetOverControl(point, rect);
        m_shownCursor = m_overCard
            ? ZWHandleZones::HoverCursor(ZWHandleZones::GetDraggingStyle(m_overCard, point, rect))
            : Cursor::Arrow;
        return;
    }
    m_operation = MovedValue(m_operation);
    switch (m_selection.draggingStyle) {
    case ZWHandleZones::Left:
    case ZWHandleZones::Right:
        ResizeDraggingRect(point, true, false);
        break;
    case ZWHandleZones::Bottom:
    case ZWHandleZones::Top:
        ResizeDraggingRect(point, false, true);
        break;
    case ZWHandleZones::BottomLeft:
    case ZWHandleZones::BottomRight:
    case ZWHandleZones::TopLeft:
    case ZWHandleZones::TopRight:
        ResizeDraggingRect(point, true, true);
        break;
    default:
        MoveDraggingRect(point);
        break;
    }
    SetNewCursor();
}

unsigned long ZWEditPage::ButtonUp()
{
    unsigned long clickOnly = 0;
    switch (m_operation) {
    case NoOperation:
    case NewCard:
    case PressUnselected:
    case PressSelected:
        clickOnly = 1;
        break;
    default:
        clickOnly = (m_operation >= Band && m_operation <= DrawBandShift) ? 1 : 0;
        break;
    }
    if (m_operation != NoOperation) {
        RepositioningControl(clickOnly);
        m_shownCursor = m_overCard ? Cursor::OverCard : Cursor::Arrow;
        m_selection.draggingStyle = 0;
        m_selection.SetRectUndefined();
    }
    m_operation = NoOperation;
    return clickOnly;
}

void ZWEditPage::CancelDrag()
{
    if (m_operation == NoOperation)
        return;
    m_selection.Clear();
    m_operation = NoOperation;
}

void ZWEditPage::MoveDraggingRect(const QPoint& point)
{
    ZWPageMapping::Dimensions d;
    if (!m_mapping.GetTemplateDimensions(d))
        return;
    double zoom = 1.0;
    m_mapping.GetMode(zoom);
    const ZWGlobalProperties& props = m_page.properties;
    ZWRect g;
    m_selection.CalculateGlobalRect(g);
    // One direction: the step that keeps the group's near edge on the page
    // (on a grid line) and its far edge before the page's last pixel.
    const auto step = [](int delta, int nearEdge, int farEdge, double grid, double s, double offset, double extent) {
        if (grid > 0.0) {
            double k = std::round(std::max(0.0, (nearEdge + delta - offset) / s) / grid);
            const auto at = [&](double steps) { return roundi(steps * grid * s + offset) - nearEdge; };
            delta = at(k);
            // n whole steps back bring the far edge clear of the page's end:
            // roundi(n × step) > m. Start from a count known to fall short,
            // so that a huge group on a fine grid takes few turns; once n
            // reaches k the group is at the page's edge and going on would
            // change nothing.
            const double m = double(farEdge) + delta + 1 - roundi(offset + extent);
            const double stepPx = grid * s;
            double n = m >= 1.0 ? std::clamp(std::floor((m - 1.0) / stepPx), 0.0, k) : 0.0;
            while (n < k && roundi(n * stepPx) <= m)
                ++n;
            if (n > 0) {
                k = std::max(0.0, k - n);
                delta = at(k);
            }
            return delta;
        }
        const int start = roundi(offset);
        if (nearEdge + delta < start)
            return start - nearEdge;
        if (start + roundi(extent) <= farEdge + delta)
            return roundi(extent) - 1 + start - farEdge;
        return delta;
    };
    const double z = std::fabs(zoom);
    const int dx = step(point.x() - m_selection.startPoint.x(), g.left, g.right, props.xgrid, z * d.pixelsPerMmX,
        d.offsetX, d.pageWidthPx);
    const int dy = step(point.y() - m_selection.startPoint.y(), g.top, g.bottom, props.ygrid, z * d.pixelsPerMmY,
        d.offsetY, d.pageHeightPx);
    for (int i = 0; i < m_selection.GetNumberOfSelectedControls(); ++i) {
        ZWRect& r = m_selection.GetDraggingRect(i);
        r.left += dx;
        r.right += dx;
        r.top += dy;
        r.bottom += dy;
    }
    m_selection.startPoint += QPoint(dx, dy);
}

void ZWEditPage::ResizeDraggingRect(const QPoint& point, bool horizontal, bool vertical)
{
    ZWPageMapping::Dimensions d;
    if (!m_mapping.GetTemplateDimensions(d))
        return;
    double zoom = 1.0;
    m_mapping.GetMode(zoom);
    const double z = std::fabs(zoom);
    const ZWGlobalProperties& props = m_page.properties;
    const auto step = [](int delta, int target, double grid, double s, double offset, double extent) {
        if (grid > 0.0) {
            double g = std::round(std::max(0.0, (target + delta - offset) / s) / grid) * grid;
            delta = roundi(g * s + offset) - target;
            while (g > 0.0 && roundi(offset + extent) <= target + delta) {
                g -= grid;
                delta = roundi(g * s + offset) - target;
            }
            return delta;
        }
        const int low = roundi(offset);
        const int high = low + roundi(extent) - 1;
        return std::clamp(target + delta, low, std::max(low, high)) - target;
    };
    int dx = 0, dy = 0;
    if (horizontal)
        dx = step(point.x() - m_selection.startPoint.x(), m_selection.GetTargetX(), props.xgrid, z * d.pixelsPerMmX,
            d.offsetX, d.pageWidthPx);
    if (vertical)
        dy = step(point.y() - m_selection.startPoint.y(), m_selection.GetTargetY(), props.ygrid, z * d.pixelsPerMmY,
            d.offsetY, d.pageHeightPx);
    m_selection.ActualizeResizeDraggingRect(QPoint(dx, dy));
    m_selection.startPoint += QPoint(dx, dy);
}

void ZWEditPage::SetNewCursor()
{
    const bool sized
        = m_operation >= MoveUnselected && m_operation <= DrawNewCardCtrl && m_dragCursor != Cursor::Moving;
    bool refused = false;
    if (sized) {
        for (int i = 0; i < m_selection.GetNumberOfSelectedControls(); ++i) {
            const ZWRect& r = m_selection.GetDraggingRect(i);
            if (r.Width() < 10 || r.Height() < 10)
                refused = true;
        }
        if (!m_selection.IsRectUndefined() && (m_selection.band.Width() < 10 || m_selection.band.Height() < 10))
            refused = true;
    }
    m_shownCursor = refused ? Cursor::NoEntry : m_dragCursor;
}

void ZWEditPage::RepositioningControl(unsigned long& clickOnly)
{
    ZWPageMapping::Dimensions d;
    if (!m_mapping.GetTemplateDimensions(d))
        return;
    if (m_selection.GetNumberOfSelectedControls() == 0 && m_selection.IsRectUndefined())
        return;
    const ZWGlobalProperties& props = m_page.properties;
    const auto onGrid = [](double v, double grid) { return std::round(v / grid) * grid; };
    switch (m_operation) {
    case Band:
    case BandCtrl:
    case DrawBand:
    case DrawBandCtrl:
    case BandShift:
    case DrawBandShift: {
        const ZWRect& band = m_selection.band;
        for (const auto& card : m_page.cards) {
            const ZWRect r = m_mapping.CardRect(*card, d);
            const ZWRect inter{std::max(r.left, band.left), std::max(r.top, band.top), std::min(r.right, band.right),
                std::min(r.bottom, band.bottom)};
            const int index = m_selection.Find(card.get());
            if (inter == r) {
                if (index < 0)
                    m_selection.AddSelection(r, QPoint(r.left, r.top), card.get());
                else if (m_operation == BandCtrl || m_operation == DrawBandCtrl)
                    m_selection.Delete(index);
            } else if (index >= 0 && (m_operation == Band || m_operation == DrawBand)) {
                m_selection.Delete(index);
            }
        }
        break;
    }
    case NewCard:
    case NewCardCtrl:
    case DrawNewCard:
    case DrawNewCardCtrl: {
        const ZWRect& band = m_selection.band;
        if (band.Width() < 10 || band.Height() < 10) {
            clickOnly = 1;
            break;
        }
        double x = m_mapping.PixelToMmX(band.left, d);
        double y = m_mapping.PixelToMmY(band.top, d);
        double w = band.Width() * props.width / d.pageWidthPx;
        double h = band.Height() * props.height / d.pageHeightPx;
        if (props.xgrid > 0.0) {
            x = onGrid(x, props.xgrid);
            w = onGrid(x + w, props.xgrid) - x;
        }
        if (props.ygrid > 0.0) {
            y = onGrid(y, props.ygrid);
            h = onGrid(y + h, props.ygrid) - y;
        }
        AddControl(x, y, w, h);
        break;
    }
    case MoveUnselected:
    case MoveUnselectedCtrl:
    case MoveSelected:
    case MoveSelectedCtrl:
    case MoveUnselectedShift:
    case MoveSelectedShift: {
        if (m_shownCursor == Cursor::NoEntry) {
            clickOnly = 1;
            break;
        }
        const int style = m_selection.draggingStyle;
        for (int i = 0; i < m_selection.GetNumberOfSelectedControls(); ++i) {
            ZWCardControl* card = m_selection.GetSelectedControl(i);
            const ZWRect& r = m_selection.GetDraggingRect(i);
            card->x = m_mapping.PixelToMmX(r.left, d);
            card->y = m_mapping.PixelToMmY(r.top, d);
            card->width = r.Width() * props.width / d.pageWidthPx;
            card->height = r.Height() * props.height / d.pageHeightPx;
            if (IsResizeStyle(style) && card->Resizable()) {
                // The dragged edge lands on the grid; the opposite one stays.
                if ((style & ZWHandleZones::Left) && props.xgrid > 0.0) {
                    const double right = card->x + card->width;
                    card->x = onGrid(card->x, props.xgrid);
                    card->width = right - card->x;
                }
                if ((style & ZWHandleZones::Right) && props.xgrid > 0.0)
                    card->width = onGrid(card->x + card->width, props.xgrid) - card->x;
                if ((style & ZWHandleZones::Top) && props.ygrid > 0.0) {
                    const double bottom = card->y + card->height;
                    card->y = onGrid(card->y, props.ygrid);
                    card->height = bottom - card->y;
                }
                if ((style & ZWHandleZones::Bottom) && props.ygrid > 0.0)
                    card->height = onGrid(card->y + card->height, props.ygrid) - card->y;
            }
            m_mapping.IntelligentAdjustToGrid(*card, d);
        }
        break;
    }
    case PressSelected: {
        const int index = m_selection.Find(m_overCard);
        if (index >= 0) {
            const ZWRect r = m_selection.GetDraggingRect(index);
            const QPoint a = m_selection.GetAnclePoint(index);
            m_selection.Clear();
            m_selection.AddSelection(r, a, m_overCard);
        }
        break;
    }
    case PressSelectedCtrl:
        m_selection.Delete(m_selection.Find(m_overCard));
        break;
    default:
        // Shift-click on a selected card keeps it; a press on an unselected
        // card added it already.
        break;
    }
}

ZWCardControl* ZWEditPage::AddControl(double x, double y, double w, double h)
{
    const char* className = nullptr;
    quint32 color = 0;
    switch (m_activeState) {
    case LabelTool:
        className = "ZWCardLabel";
        color = labelColor;
        break;
    case ImageTool:
        className = "ZWCardImage";
        color = imageColor;
        break;
    case DateTool:
        className = "ZWCardDate";
        color = dateColor;
        break;
    case FormuleTool:
        className = "ZWCardFormule";
        color = formuleColor;
        break;
    case ConditionedTool:
        className = "ZWCardConditioned";
        color = conditionedColor;
        break;
    // Charts and tables draw their texts and axes in the card's colour.
    case ChartTool:
        className = "ZWCardChart";
        color = labelColor;
        break;
    case TableTool:
        className = "ZWCardTable";
        color = labelColor;
        break;
    default:
        return nullptr;
    }
    const ZWCardKinds::Kind* kind = ZWCardKinds::ByClass(QLatin1StringView(className));
    if (!kind)
        return nullptr;
    std::unique_ptr<ZWCardControl> card = kind->create();
    card->x = x;
    card->y = y;
    card->width = w;
    card->height = h;
    card->color = color;
    if (m_activeState == LabelTool) {
        auto* label = static_cast<ZWCardLabel*>(card.get());
        label->value = ZWLoadString(ZWTextId::NewLabelText);
        label->font = QStringLiteral("Arial");
        label->size = 10.0;
    }
    card->InitializeId();
    if (m_operation != DrawNewCardCtrl) {
        // Clearing would forget the band the card was drawn with.
        const ZWRect band = m_selection.band;
        const QPoint anchor = m_selection.bandAnchor;
        m_selection.Clear();
        m_selection.band = band;
        m_selection.bandAnchor = anchor;
    }
    m_selection.AddSelection(m_selection.band, m_selection.bandAnchor, card.get());
    m_page.cards.push_back(std::move(card));
    return m_page.cards.back().get();
}

ZWCardControl* ZWEditPage::NewControl(int tool)
{
    double x = 0, y = 0, w = 0, h = 0;
    m_mapping.GetInitialControlDimensions(m_lastMouse, x, y, w, h);
    const int active = m_activeState;
    m_activeState = tool;
    ZWCardControl* card = AddControl(x, y, w, h);
    m_activeState = active;
    return card;
}

void ZWEditPage::UpdateRect(const ZWCardControl* card, const ZWRect& rect)
{
    const int index = m_selection.Find(card);
    if (index < 0)
        return;
    ZWRect& drag = m_selection.GetDraggingRect(index);
    QPoint& anchor = m_selection.GetAnclePoint(index);
    // The anchor keeps the corner it sat on.
    const bool right = anchor.x() == drag.right && anchor.x() != drag.left;
    const bool bottom = anchor.y() == drag.bottom && anchor.y() != drag.top;
    anchor = QPoint(right ? rect.right : rect.left, bottom ? rect.bottom : rect.top);
    drag = rect;
}

std::vector<int> ZWEditPage::SelectedIndices() const
{
    std::vector<int> indices;
    for (int i = 0; i < m_selection.GetNumberOfSelectedControls(); ++i) {
        const ZWCardControl* card = m_selection.GetSelectedControl(i);
        const auto it = std::find_if(m_page.cards.begin(), m_page.cards.end(),
            [card](const std::unique_ptr<ZWCardControl>& c) { return c.get() == card; });
        if (it != m_page.cards.end())
            indices.push_back(int(it - m_page.cards.begin()));
    }
    return indices;
}

void ZWEditPage::SelectIndices(const std::vector<int>& indices)
{
    m_selection.Clear();
    ZWPageMapping::Dimensions d;
    const bool mapped = m_mapping.GetTemplateDimensions(d);
    for (int index : indices) {
        if (index < 0 || index >= int(m_page.cards.size()))
            continue;
        ZWCardControl* card = m_page.cards[size_t(index)].get();
        const ZWRect r = mapped ? m_mapping.CardRect(*card, d) : ZWRect();
        m_selection.AddSelection(r, QPoint(r.left, r.top), card);
    }
}
