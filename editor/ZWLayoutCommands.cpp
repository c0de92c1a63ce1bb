#include "editor/ZWLayoutCommands.h"

#include "editor/ZWEditPage.h"
#include "host/core/ZWMath.h"
#include "template/ZWTemplatePage.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <vector>

namespace {

std::vector<ZWCardControl*> Selected(ZWEditPage& edit)
{
    std::vector<ZWCardControl*> cards;
    for (int i = 0; i < edit.Selection().GetNumberOfSelectedControls(); ++i)
        cards.push_back(edit.Selection().GetSelectedControl(i));
    return cards;
}

// A card that would touch or cross the right or bottom edge ends one pixel
// inside it; one left of or above the page goes onto its edge.
void ClampToPage(ZWCardControl& card, const ZWGlobalProperties& page, const ZWPageMapping::Dimensions& d)
{
    if (card.x < 0.0)
        card.x = 0.0;
    else if (card.x + card.width >= page.width)
        card.x -= (card.x + card.width - page.width) + d.MmPerPixelX(page.width);
    if (card.y < 0.0)
        card.y = 0.0;
    else if (card.y + card.height >= page.height)
        card.y -= (card.y + card.height - page.height) + d.MmPerPixelY(page.height);
}

} // namespace

void ZWLayoutCommands::AlignSelectedControls(ZWEditPage& edit, int mode)
{
    ZWPageMapping::Dimensions d;
    const std::vector<ZWCardControl*> cards = Selected(edit);
    if (cards.empty() || !edit.Mapping().GetTemplateDimensions(d))
        return;
    const ZWCardControl& ref = *cards.back();
    for (ZWCardControl* card : cards) {
        if (card == &ref)
            continue;
        switch (mode) {
        case AlignLeft:
            card->x = ref.x;
            break;
        case AlignRight:
            card->x = ref.x + ref.width - card->width;
            break;
        case AlignTop:
            card->y = ref.y;
            break;
        case AlignBottom:
            card->y = ref.y + ref.height - card->height;
            break;
        default:
            break;
        }
        ClampToPage(*card, edit.Page().properties, d);
    }
}

void ZWLayoutCommands::DistributeSelectedControls(ZWEditPage& edit, int mode)
{
    ZWPageMapping::Dimensions d;
    std::vector<ZWCardControl*> cards = Selected(edit);
    // One card has no gap to share.
    if (cards.size() < 2 || !edit.Mapping().GetTemplateDimensions(d))
        return;
    const ZWGlobalProperties& page = edit.Page().properties;
    std::stable_sort(cards.begin(), cards.end(),
        [mode](const ZWCardControl* l, const ZWCardControl* r) { return mode == 0 ? l->x < r->x : l->y < r->y; });
    double sumW = 0, sumH = 0, minX = page.width, minY = page.height, maxRight = 0, maxBottom = 0;
    for (const ZWCardControl* c : cards) {
        sumW += c->width;
        sumH += c->height;
        minX = std::min(minX, c->x);
        minY = std::min(minY, c->y);
        maxRight = std::max(maxRight, c->x + c->width);
        maxBottom = std::max(maxBottom, c->y + c->height);
    }
    const double n = double(cards.size());
    const double gapX = (maxRight - minX - sumW) / (n - 1);
    const double gapY = (maxBottom - minY - sumH) / (n - 1);
    for (size_t i = 1; i < cards.size(); ++i) {
        const ZWCardControl& prev = *cards[i - 1];
        if (mode == 0)
            cards[i]->x = prev.x + prev.width + gapX;
        else
            cards[i]->y = prev.y + prev.height + gapY;
        ClampToPage(*cards[i], page, d);
    }
}

void ZWLayoutCommands::JustifySelectedControls(ZWEditPage& edit, int mode, bool asGroup)
{
    if (mode != 0 && mode != 1)
        return;
    const std::vector<ZWCardControl*> cards = Selected(edit);
    const ZWGlobalProperties& page = edit.Page().properties;
    if (!asGroup) {
        for (ZWCardControl* c : cards) {
            if (mode == 0)
                c->x = (page.width - c->width) * 0.5;
            else
                c->y = (page.height - c->height) * 0.5;
        }
        return;
    }
    double minX = DBL_MAX, minY = DBL_MAX, maxRight = -DBL_MIN, maxBottom = -DBL_MIN;
    for (const ZWCardControl* c : cards) {
        minX = std::min(minX, c->x);
        minY = std::min(minY, c->y);
        maxRight = std::max(maxRight, c->x + c->width);
        maxBottom = std::max(maxBottom, c->y + c->height);
    }
    for (ZWCardControl* c : cards) {
        if (mode == 0)
            c->x += (page.width - (maxRight - minX)) * 0.5 - minX;
        else
            c->y += (page.height - (maxBottom - minY)) * 0.5 - minY;
    }
}

void ZWLayoutCommands::ResizeSelectedControls(ZWEditPage& edit, bool width, bool height)
{
    ZWPageMapping::Dimensions d;
    const std::vector<ZWCardControl*> cards = Selected(edit);
    if (cards.empty() || !edit.Mapping().GetTemplateDimensions(d))
        return;
    const ZWGlobalProperties& page = edit.Page().properties;
    const ZWCardControl& ref = *cards.back();
    for (ZWCardControl* c : cards) {
        if (c == &ref || !c->Resizable())
            continue;
        if (width && c->width != ref.width)
            c->width = ref.width;
        if (height && c->height != ref.height)
            c->height = ref.height;
        if (c->x + c->width > page.width)
            c->x -= (c->x + c->width - page.width) + d.MmPerPixelX(page.width);
        if (c->y + c->height > page.height)
            c->y -= (c->y + c->height - page.height) + d.MmPerPixelY(page.height);
    }
}

bool ZWLayoutCommands::NudgeSelectedControls(ZWEditPage& edit, int dx, int dy, bool gridStep)
{
    ZWPageMapping::Dimensions d;
    const std::vector<ZWCardControl*> cards = Selected(edit);
    if (cards.empty() || !edit.Mapping().GetTemplateDimensions(d))
        return false;
    const ZWGlobalProperties& page = edit.Page().properties;
    const auto stepMm = [&](double grid, double mmPerPixel) {
        return gridStep && grid > 0.0 ? grid : (gridStep ? 10.0 : 1.0) * mmPerPixel;
    };
    double minX = DBL_MAX, minY = DBL_MAX, maxRight = -DBL_MAX, maxBottom = -DBL_MAX;
    for (const ZWCardControl* c : cards) {
        minX = std::min(minX, c->x);
        minY = std::min(minY, c->y);
        maxRight = std::max(maxRight, c->x + c->width);
        maxBottom = std::max(maxBottom, c->y + c->height);
    }
    // The block moves as far as the page lets it, never further out than it
    // already is.
    const auto limit = [](double move, double nearEdge, double farEdge, double extent) {
        return std::clamp(move, std::min(0.0, -nearEdge), std::max(0.0, extent - farEdge));
    };
    const double mx = limit(dx * stepMm(page.xgrid, d.MmPerPixelX(page.width)), minX, maxRight, page.width);
    const double my = limit(dy * stepMm(page.ygrid, d.MmPerPixelY(page.height)), minY, maxBottom, page.height);
    if (mx == 0.0 && my == 0.0)
        return false;
    for (ZWCardControl* c : cards) {
        c->x += mx;
        c->y += my;
    }
    // The dragging rectangles follow the cards.
    edit.SelectIndices(edit.SelectedIndices());
    return true;
}

void ZWLayoutCommands::ControlCopy(ZWEditPage& edit)
{
    edit.clipboard.clear();
    for (const ZWCardControl* c : Selected(edit))
        edit.clipboard.push_back(c->GetClone());
}

void ZWLayoutCommands::ControlCut(ZWEditPage& edit)
{
    ControlCopy(edit);
    DeleteSelectedControls(edit);
}

bool ZWLayoutCommands::ControlPaste(ZWEditPage& edit)
{
    ZWPageMapping::Dimensions d;
    if (!edit.Mapping().GetTemplateDimensions(d))
        return false;
    const ZWGlobalProperties& page = edit.Page().properties;
    double zoom = 1.0;
    edit.Mapping().GetMode(zoom);
    const int offsetXPx = page.xgrid > 0.0 ? roundi(std::fabs(zoom) * page.xgrid * d.pixelsPerMmX) : 30;
    const int offsetYPx = page.ygrid > 0.0 ? roundi(std::fabs(zoom) * page.ygrid * d.pixelsPerMmY) : 30;
    const double offsetX = offsetXPx * page.width / d.pageWidthPx;
    const double offsetY = offsetYPx * page.height / d.pageHeightPx;
    edit.Selection().Clear();
    for (const auto& held : edit.clipboard) {
        std::unique_ptr<ZWCardControl> card = held->GetClone();
        card->InitializeId();
        card->x += offsetX;
        if (card->x + card->width > page.width)
            card->x = 0.0;
        card->y += offsetY;
        if (card->y + card->height > page.height)
            card->y = 0.0;
        // The next paste lands one offset further.
        held->x = card->x;
        held->y = card->y;
        const ZWRect r = edit.Mapping().CardRect(*card, d);
        edit.Selection().AddSelection(r, QPoint(r.left, r.top), card.get());
        edit.Page().cards.push_back(std::move(card));
    }
    return !edit.clipboard.empty();
}

bool ZWLayoutCommands::DeleteSelectedControls(ZWEditPage& edit)
{
    ZWSelection& selection = edit.Selection();
    if (selection.GetNumberOfSelectedControls() == 0)
        return false;
    auto& cards = edit.Page().cards;
    std::erase_if(cards, [&](const std::unique_ptr<ZWCardControl>& c) { return selection.Find(c.get()) >= 0; });
    selection.Clear();
    return true;
}

bool ZWLayoutCommands::SelectControlById(ZWEditPage& edit, const QString& id)
{
    ZWCardControl* card = edit.Page().FindCard(id);
    if (!card)
        return false;
    ZWSelection& selection = edit.Selection();
    const ZWRect band = selection.band;
    const QPoint anchor = selection.bandAnchor;
    selection.Clear();
    selection.band = band;
    selection.bandAnchor = anchor;
    selection.AddSelection(band, anchor, card);
    return true;
}

ZWCardControl* ZWLayoutCommands::GetSelectedControl(ZWEditPage& edit)
{
    return edit.Selection().GetNumberOfSelectedControls() == 1 ? edit.Selection().GetSelectedControl(0) : nullptr;
}
