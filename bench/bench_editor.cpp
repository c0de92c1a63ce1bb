// The designer's page window with 1,000 cards (labels, formula and date
// cards with text, a few images) on an A4 landscape page at 100 % in a
// 1920 × 1080 window on the offscreen platform, 50 of them selected:
//
// - one step of a mouse drag of the 50 cards: the move event (the drag
//   step) and the repaint that takes the old outline away and draws the new
//   one over the cached page;
// - the full repaint after the release: the page drawn again with every
//   card, then the outlines; and the release itself with that repaint
//   (cards moved, the undo command recorded);
// - the repaint of the animated outline (a timer tick);
// - hit testing the card under the mouse.
//
// Baseline, measured in the same run: a window of the same size that only
// fills itself with one colour (the cost of a repaint as such).
#include "editor/widgets/ZWEditTemplateWnd.h"
#include "template/ZWCardLabel.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QUndoStack>
#include <QWidget>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <memory>
#include <random>

namespace {

constexpr QSize kWindow(1920, 1080);
constexpr int kCards = 1000;
constexpr int kSelected = 50;

class SolidWindow : public QWidget
{
public:
    int paints = 0;

protected:
    void paintEvent(QPaintEvent*) override
    {
        ++paints;
        QPainter p(this);
        p.fillRect(rect(), QColor(0xF0, 0xF0, 0xF0));
    }
};

class PaintCounter : public QObject
{
public:
    int paints = 0;

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Paint)
            ++paints;
        return false;
    }
};

struct Setup
{
    QUndoStack stack;
    std::unique_ptr<ZWEditTemplateWnd> wnd;
    std::unique_ptr<SolidWindow> solid;
    // A point on a selected card, where drags start.
    QPoint grip;
};

Setup* g_setup = nullptr;

void Mouse(QEvent::Type type, const QPoint& p, Qt::MouseButtons buttons)
{
    QWidget* area = g_setup->wnd->viewport();
    const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, QPointF(p), area->mapToGlobal(QPointF(p)), button, buttons, Qt::NoModifier);
    QApplication::sendEvent(area, &event);
}

void Prepare(Setup& s)
{
    ZWTemplatePage page;
    page.properties.width = 297;
    page.properties.height = 210;
    page.properties.xgrid = 0;
    page.properties.ygrid = 0;
    // 40 columns × 25 rows of 7 × 7.5 mm cards.
    const char* kinds[] = {"label", "formule", "date", "label", "image"};
    for (int i = 0; i < kCards; ++i) {
        auto card = ZWCardControl::CreateFromElement(QString::fromLatin1(kinds[i % 5]));
        card->x = 2.0 + (i % 40) * 7.3;
        card->y = 2.0 + (i / 40) * 8.2;
        card->width = 7.0;
        card->height = 7.5;
        card->color = 0x000000;
        if (auto* label = dynamic_cast<ZWCardLabel*>(card.get())) {
            label->value = QStringLiteral("%1 kWh").arg(i);
            label->font = QStringLiteral("Arial");
            label->size = 8.0;
        }
        page.cards.push_back(std::move(card));
    }
    s.wnd = std::make_unique<ZWEditTemplateWnd>();
    s.wnd->SetUndoStack(&s.stack);
    s.wnd->SetPixelsPerMm(96.0 / 25.4, 96.0 / 25.4);
    s.wnd->SetPage(std::move(page));
    s.wnd->SetActiveState(ZWEditPage::SelectTool);
    s.wnd->resize(kWindow);
    s.wnd->show();
    s.solid = std::make_unique<SolidWindow>();
    s.solid->resize(kWindow);
    s.solid->show();
    QApplication::processEvents();
    // 50 cards spread over the page.
    std::vector<int> indices;
    for (int i = 0; i < kSelected; ++i)
        indices.push_back(i * (kCards / kSelected) + 7);
    s.wnd->Edit().SelectIndices(indices);
    ZWPageMapping::Dimensions d;
    s.wnd->GetTemplateDimensions(d);
    const ZWRect r = s.wnd->Edit().Mapping().CardRect(*s.wnd->Page().cards[size_t(indices[0])], d);
    s.grip = QPoint((r.left + r.right) / 2, (r.top + r.bottom) / 2);
    s.wnd->viewport()->repaint();
}

void BM_RepaintBaselineSolidWindow(benchmark::State& state)
{
    const int before = g_setup->solid->paints;
    for (auto _ : state)
        g_setup->solid->repaint();
    if (g_setup->solid->paints - before != int(state.iterations()))
        state.SkipWithError("the window did not repaint");
}
BENCHMARK(BM_RepaintBaselineSolidWindow)->Unit(benchmark::kMillisecond)->UseRealTime();

// One mouse move of the drag and its repaint; the drag goes 20 pixels right
// and back, so that every step moves the outline.
void BM_DragStep(benchmark::State& state)
{
    const QPoint grip = g_setup->grip;
    Mouse(QEvent::MouseButtonPress, grip, Qt::LeftButton);
    PaintCounter counter;
    QWidget* area = g_setup->wnd->viewport();
    area->installEventFilter(&counter);
    bool right = true;
    for (auto _ : state) {
        Mouse(QEvent::MouseMove, grip + QPoint(right ? 20 : 0, right ? 10 : 0), Qt::LeftButton);
        right = !right;
        area->repaint();
    }
    area->removeEventFilter(&counter);
    // Back where it started: the release moves nothing.
    Mouse(QEvent::MouseMove, grip, Qt::LeftButton);
    Mouse(QEvent::MouseButtonRelease, grip, Qt::NoButton);
    if (counter.paints != int(state.iterations()))
        state.SkipWithError("the page did not repaint");
    if (g_setup->wnd->GetNumberOfSelectedControls() != kSelected)
        state.SkipWithError("the selection was lost");
}
BENCHMARK(BM_DragStep)->Unit(benchmark::kMillisecond)->UseRealTime();

// The repaint after the release: every card drawn again, then the outlines
// (Arg 1), or without the outlines (Arg 0: the page as such).
void BM_FullRepaint(benchmark::State& state)
{
    QWidget* area = g_setup->wnd->viewport();
    g_setup->wnd->SetViewBoundingRectangles(state.range(0) != 0);
    for (auto _ : state) {
        g_setup->wnd->SetRedrawAll(true);
        area->repaint();
    }
    g_setup->wnd->SetViewBoundingRectangles(true);
}
BENCHMARK(BM_FullRepaint)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime();

// The release of a drag of the 50 cards (cards moved, undo command recorded)
// with its full repaint; the drags go right and back.
void BM_DropAndRepaint(benchmark::State& state)
{
    const QPoint grip = g_setup->grip;
    QWidget* area = g_setup->wnd->viewport();
    bool right = true;
    for (auto _ : state) {
        state.PauseTiming();
        const QPoint from = right ? grip : grip + QPoint(20, 0);
        const QPoint to = right ? grip + QPoint(20, 0) : grip;
        Mouse(QEvent::MouseButtonPress, from, Qt::LeftButton);
        Mouse(QEvent::MouseMove, to, Qt::LeftButton);
        area->repaint();
        state.ResumeTiming();
        Mouse(QEvent::MouseButtonRelease, to, Qt::NoButton);
        area->repaint();
        right = !right;
    }
    if (g_setup->stack.count() == 0)
        state.SkipWithError("nothing was moved");
    g_setup->stack.clear();
}
BENCHMARK(BM_DropAndRepaint)->Unit(benchmark::kMillisecond)->UseRealTime();

// A tick of the selection's animation: the cached page and the outlines of
// the unselected cards are copied, the selected outlines drawn again.
void BM_OutlineRepaint(benchmark::State& state)
{
    QWidget* area = g_setup->wnd->viewport();
    for (auto _ : state)
        area->repaint();
}
BENCHMARK(BM_OutlineRepaint)->Unit(benchmark::kMillisecond)->UseRealTime();

// The card under the mouse at spread points of the page (the first card in
// list order that holds the point).
void BM_HitTest(benchmark::State& state)
{
    std::mt19937 random(5);
    std::uniform_int_distribution<int> x(0, kWindow.width() - 1), y(0, kWindow.height() - 1);
    std::vector<QPoint> points;
    for (int i = 0; i < 1024; ++i)
        points.emplace_back(x(random), y(random));
    size_t i = 0;
    int hits = 0;
    for (auto _ : state) {
        ZWRect rect;
        hits += g_setup->wnd->Edit().GetOverControl(points[i++ & 1023], rect) ? 1 : 0;
    }
    benchmark::DoNotOptimize(hits);
    state.counters["hitRate"] = double(hits) / double(state.iterations());
}
BENCHMARK(BM_HitTest)->Unit(benchmark::kMicrosecond)->UseRealTime();

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    Setup setup;
    g_setup = &setup;
    Prepare(setup);
    std::printf("Window %dx%d, page window %dx%d, %d cards, %d selected\n", kWindow.width(), kWindow.height(),
        setup.wnd->viewport()->width(), setup.wnd->viewport()->height(), int(setup.wnd->Page().cards.size()),
        setup.wnd->GetNumberOfSelectedControls());
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    setup.wnd.reset();
    setup.solid.reset();
    return 0;
}
