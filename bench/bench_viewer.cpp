// The viewer on the demo report (examples/reports/MonthlyEnergy.XRPT filled
// with two months of the demo site's data) in a 1920 × 1080 report frame on
// the offscreen platform: repainting the page at fit, 100 % and 400 %,
// switching pages and zooming, each with its repaint. Baselines measured in
// the same run: repainting a window of the same size that only fills itself
// with one colour (the cost of a repaint as such), and drawing the same page
// into a picture of the window's resolution (ZWPageRenderer::RenderPage).
//
//   bench_viewer    Google Benchmark figures; "fps" is repaints per second
#include "app/demo/ZWDemoData.h"
#include "host/core/ZWMarentaSetup.h"
#include "host/drivers/ZWDriverSupport.h"
#include "host/store/ZWLoggerUrl.h"
#include "host/store/ZWSqlLoggerStore.h"
#include "template/ZWPageRenderer.h"
#include "viewer/ZWReportData.h"
#include "viewer/ZWViewZoom.h"
#include "viewer/widgets/ZWViewReportFrame.h"
#include "viewer/widgets/ZWViewTemplateWnd.h"

#include <QApplication>
#include <QPainter>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QWidget>
#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdio>
#include <memory>

namespace {

constexpr QSize kWindow(1920, 1080);

// A window that paints nothing but one colour.
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

// Counts the paint events a widget receives, so that a figure is known to
// come from real repaints.
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
    QTemporaryDir dir;
    std::unique_ptr<ZWReportData> data;
    std::unique_ptr<ZWViewReportFrame> frame;
    std::unique_ptr<SolidWindow> solid;
    ZWTemplatePage page; // page 1 with its values, for the picture baseline
    double pixelsPerMm = 0.0;
    bool ok = false;
};

Setup* g_setup = nullptr;

bool Prepare(Setup& s)
{
    if (!s.dir.isValid())
        return false;
    ZWMarentaSetup::instance().SetSettingsFile(s.dir.filePath(QStringLiteral("settings.ini")));
    ZWLoggerUrl url;
    QString error;
    if (!url.Parse(QStringLiteral("sqlite:") + s.dir.filePath(QStringLiteral("demo.sqlite")), &error))
        return false;
    auto store = std::make_shared<ZWSqlLoggerStore>(url, ZWSqlLoggerStore::Creation::CreateMissing);
    if (!store->Open(&error)) {
        std::fprintf(stderr, "%s\n", qPrintable(error));
        return false;
    }
    ZWDemoData demo;
    ZWDemoData::Options options;
    options.months = 2;
    if (!demo.Generate(*store, options, nullptr, &error)) {
        std::fprintf(stderr, "%s\n", qPrintable(error));
        return false;
    }
    ZWDriverSupport::SetStore(store);

    s.data = std::make_unique<ZWReportData>();
    QString report = QStringLiteral(ZW_SOURCE_DIR "/examples/reports/MonthlyEnergy.XRPT");
    if (!s.data->Setup(report))
        return false;
    // The last complete month.
    const ZWDateTime now = ZWDateTime::LTC();
    ZWReportPeriod& period = s.data->Period();
    period.Reset(ID_GROUPBY_MONTH);
    period.SetupData(ZWReportPeriod::AdjustToGroupBy(now, ID_GROUPBY_MONTH), ID_GROUPBY_MONTH, false, now);
    if (!s.data->SetupDataWork(true, nullptr))
        return false;

    s.frame = std::make_unique<ZWViewReportFrame>();
    s.frame->SetTemplate(s.data->Design());
    s.frame->SetUserData(s.data->ValueDocument());
    s.frame->resize(kWindow);
    s.frame->show();
    s.solid = std::make_unique<SolidWindow>();
    s.solid->resize(kWindow);
    s.solid->show();
    QApplication::processEvents();
    s.frame->Refresh();

    s.page = s.frame->PageWnd(0)->Page().Page();
    s.pixelsPerMm = s.frame->PageWnd(0)->PixelsPerMm().x();
    s.ok = s.frame->PageCount() == 2;
    return s.ok;
}

void BM_RepaintBaselineSolidWindow(benchmark::State& state)
{
    const int before = g_setup->solid->paints;
    for (auto _ : state)
        g_setup->solid->repaint();
    if (g_setup->solid->paints - before != int(state.iterations()))
        state.SkipWithError("the window did not repaint");
    state.counters["fps"] = benchmark::Counter(double(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_RepaintBaselineSolidWindow)->Unit(benchmark::kMillisecond)->UseRealTime();

// The page drawn into a picture at the window's resolution at 100 %.
void BM_RenderPageBaseline(benchmark::State& state)
{
    const double dpi = g_setup->pixelsPerMm * 25.4;
    for (auto _ : state) {
        QImage image = ZWPageRenderer::RenderPage(g_setup->page, dpi);
        benchmark::DoNotOptimize(image);
    }
    state.counters["fps"] = benchmark::Counter(double(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_RenderPageBaseline)->Unit(benchmark::kMillisecond)->UseRealTime();

// Arg: the zoom in percent, 0 = fit to window.
void BM_RepaintPage(benchmark::State& state)
{
    ZWViewReportFrame& frame = *g_setup->frame;
    frame.OnPageSelector(0);
    frame.OnZoomSelector(int(state.range(0)) / 50);
    ZWViewTemplateWnd* page = frame.CurrentPageWnd();
    // Scrolled into the middle of the page, where most cards are.
    page->horizontalScrollBar()->setValue(page->horizontalScrollBar()->maximum() / 2);
    page->verticalScrollBar()->setValue(page->verticalScrollBar()->maximum() / 3);
    PaintCounter counter;
    page->viewport()->installEventFilter(&counter);
    for (auto _ : state)
        page->viewport()->repaint();
    page->viewport()->removeEventFilter(&counter);
    if (counter.paints != int(state.iterations()))
        state.SkipWithError("the page did not repaint");
    double factor = 0.0;
    page->GetMode(factor);
    state.counters["fps"] = benchmark::Counter(double(state.iterations()), benchmark::Counter::kIsRate);
    state.counters["factor"] = std::fabs(factor);
}
BENCHMARK(BM_RepaintPage)->Arg(0)->Arg(100)->Arg(400)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_SwitchPage(benchmark::State& state)
{
    ZWViewReportFrame& frame = *g_setup->frame;
    frame.OnPageSelector(0);
    frame.OnZoomSelector(2);
    frame.OnPageSelector(1);
    frame.OnZoomSelector(2);
    bool forward = false;
    for (auto _ : state) {
        forward ? frame.OnNextPage() : frame.OnPreviousPage();
        forward = !forward;
        frame.CurrentPageWnd()->viewport()->repaint();
    }
    state.counters["fps"] = benchmark::Counter(double(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_SwitchPage)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_ZoomStep(benchmark::State& state)
{
    ZWViewReportFrame& frame = *g_setup->frame;
    frame.OnPageSelector(0);
    frame.OnZoomSelector(2); // 100 %
    bool in = true;
    for (auto _ : state) {
        in ? frame.OnZoomIn() : frame.OnZoomOut();
        in = !in;
        frame.CurrentPageWnd()->viewport()->repaint();
    }
    state.counters["fps"] = benchmark::Counter(double(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_ZoomStep)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    Setup setup;
    g_setup = &setup;
    if (!Prepare(setup)) {
        std::fprintf(stderr, "bench_viewer: the demo report could not be set up\n");
        return 1;
    }
    std::printf("Window %dx%d, page window %dx%d, %.3f px/mm\n", kWindow.width(), kWindow.height(),
        setup.frame->CurrentPageWnd()->viewport()->width(), setup.frame->CurrentPageWnd()->viewport()->height(),
        setup.pixelsPerMm);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    setup.frame.reset();
    setup.solid.reset();
    ZWDriverSupport::SetStore(nullptr);
    ZWMarentaSetup::instance().SetSettingsFile(QString());
    return 0;
}
