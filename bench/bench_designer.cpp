// The editor dialog on the offscreen platform: opening the example monthly
// report and showing it, selecting a card and filling its property panel,
// and saving a report of 20 pages × 100 cards. The baseline, measured in the
// same run, is loading the same file into the template model alone.
//
//   bench_designer    Google Benchmark figures
#include "editor/widgets/CDlgEditor.h"
#include "editor/widgets/ZWEditTemplateWnd.h"
#include "editor/widgets/ZWEditorFrame.h"
#include "editor/widgets/ZWPropertyPanel.h"
#include "host/core/ZWMarentaSetup.h"
#include "template/ZWCardLabel.h"
#include "template/ZWTemplate.h"

#include <QApplication>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <cstdio>

namespace {

QTemporaryDir* g_dir = nullptr;

QString Example()
{
    return QStringLiteral(ZW_SOURCE_DIR "/examples/reports/MonthlyEnergy.XRPT");
}

// 20 pages of 100 labels each, written once.
QString BigReport()
{
    static QString path;
    if (!path.isEmpty())
        return path;
    ZWTemplate report;
    report.name = QStringLiteral("Big");
    for (int p = 0; p < 20; ++p) {
        ZWTemplatePage& page = report.AddPage();
        for (int c = 0; c < 100; ++c) {
            auto card = std::make_unique<ZWCardLabel>();
            card->InitializeId();
            card->x = (c % 10) * 20.0;
            card->y = (c / 10) * 28.0;
            card->width = 18;
            card->height = 8;
            card->value = QStringLiteral("Card %1").arg(c);
            page.cards.push_back(std::move(card));
        }
    }
    path = g_dir->filePath(QStringLiteral("Big.XRPT"));
    report.Save(path);
    return path;
}

void BM_LoadTemplateModelBaseline(benchmark::State& state)
{
    const QString path = state.range(0) ? BigReport() : Example();
    for (auto _ : state) {
        ZWTemplate report;
        benchmark::DoNotOptimize(report.Load(path));
    }
}
BENCHMARK(BM_LoadTemplateModelBaseline)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_OpenAndShowInEditor(benchmark::State& state)
{
    for (auto _ : state) {
        CDlgEditor editor;
        editor.resize(1600, 1000);
        editor.Setup(Example());
        editor.show();
        QApplication::processEvents();
        editor.Frame()->SetModified(false);
    }
}
BENCHMARK(BM_OpenAndShowInEditor)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_SelectCardAndFillPanel(benchmark::State& state)
{
    CDlgEditor editor;
    editor.resize(1600, 1000);
    editor.Setup(Example());
    editor.show();
    QApplication::processEvents();
    ZWEditTemplateWnd* page = editor.Frame()->CurrentPage();
    const auto& cards = page->Page().cards;
    size_t next = 0;
    for (auto _ : state) {
        page->SelectControlById(cards[next % cards.size()]->id);
        QApplication::processEvents();
        ++next;
    }
    editor.Frame()->SetModified(false);
}
BENCHMARK(BM_SelectCardAndFillPanel)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_SaveBigReport(benchmark::State& state)
{
    CDlgEditor editor;
    editor.Setup(BigReport());
    for (auto _ : state)
        benchmark::DoNotOptimize(editor.Frame()->SaveReport());
}
BENCHMARK(BM_SaveBigReport)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    QTemporaryDir dir;
    g_dir = &dir;
    ZWMarentaSetup::instance().SetSettingsFile(dir.filePath(QStringLiteral("settings.ini")));
    ZWMarentaSetup::instance().SetReportDirectory(dir.path());
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    ZWMarentaSetup::instance().SetSettingsFile(QString());
    ZWMarentaSetup::instance().SetReportDirectory(QString());
    return 0;
}
