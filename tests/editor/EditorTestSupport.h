#pragma once

// The designer's test page: 200 × 100 mm at 4 pixels per mm in a 1000 × 600
// window, so the page covers pixels 100..899 across and 100..499 down and one
// pixel is 0.25 mm. Card "a" at (10, 20, 30, 40) mm is pixels (140, 180)–(260,
// 340); card "b" at (50, 20, 10, 10) mm is (300, 180)–(340, 220).
#include "editor/ZWEditPage.h"
#include "host/core/XmlDocument.h"
#include "template/ZWTemplatePage.h"

#include <array>
#include <gmock/gmock.h>
#include <memory>
#include <tuple>
#include <vector>

namespace zwtest {

using Geometry = std::array<double, 4>;

inline Geometry GeometryOf(const ZWCardControl& c)
{
    return {c.x, c.y, c.width, c.height};
}

inline std::unique_ptr<ZWCardControl> MakeCard(const QString& element, Geometry g, const QString& id)
{
    auto card = element.isEmpty() ? std::make_unique<ZWCardControl>() : ZWCardControl::CreateFromElement(element);
    std::tie(card->x, card->y, card->width, card->height, card->id) = std::tuple(g[0], g[1], g[2], g[3], id);
    return card;
}

inline void SizePage(ZWTemplatePage& page, double grid)
{
    ZWGlobalProperties& p = page.properties;
    std::tie(p.width, p.height, p.xgrid, p.ygrid) = std::tuple(200.0, 100.0, grid, grid);
}

// The page as its file would hold it.
inline QByteArray PageXml(const ZWTemplatePage& page)
{
    XmlDocument doc;
    doc.Create(QStringLiteral("design"));
    page.SaveTemplate(doc.Root());
    return doc.ToXml();
}

// The test page with its editing state and no window.
struct EditFixture
{
    ZWTemplatePage page;
    ZWEditPage edit{page};

    explicit EditFixture(double grid = 0.0)
    {
        SizePage(page, grid);
        edit.Mapping().SetDevice(4, 4);
        edit.Mapping().SetClientSize(1000, 600);
        edit.SetActiveState(ZWEditPage::SelectTool);
    }
    ZWCardControl* Add(Geometry g, const QString& id, const QString& element = {})
    {
        page.cards.push_back(MakeCard(element, g, id));
        return page.cards.back().get();
    }
    unsigned long Drag(QPoint from, QPoint to, bool ctrl = false, bool shift = false)
    {
        edit.ButtonDown(from, ctrl, shift);
        edit.MouseMove(to);
        return edit.ButtonUp();
    }
    int Selected() const { return edit.Selection().GetNumberOfSelectedControls(); }
    std::vector<Geometry> Cards() const
    {
        std::vector<Geometry> out;
        for (const auto& c : page.cards)
            out.push_back(GeometryOf(*c));
        return out;
    }
    std::vector<QString> Ids() const
    {
        std::vector<QString> out;
        for (const auto& c : page.cards)
            out.push_back(c->id);
        return out;
    }
    std::vector<QString> SelectedIds() const
    {
        std::vector<QString> ids;
        for (int i = 0; i < edit.Selection().GetNumberOfSelectedControls(); ++i)
            ids.push_back(edit.Selection().GetSelectedControl(i)->id);
        return ids;
    }
};

} // namespace zwtest

// Geometry equal to the last few bits, as EXPECT_DOUBLE_EQ.
#define EXPECT_GEOMETRY(actual, ...)                                                                                   \
    EXPECT_THAT(actual, ::testing::Pointwise(::testing::DoubleEq(), zwtest::Geometry{__VA_ARGS__}))
