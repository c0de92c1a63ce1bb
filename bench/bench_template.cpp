// The report template at scale: loading, drawing one page at 150 dpi and
// saving a template of 20 pages × 100 cards of every kind with an embedded
// 1 MB picture. Each figure has a baseline measured in the same run:
// parsing the same file as bare XML, filling a page-sized picture, and
// writing the same bytes to disk.
//
//   bench_template              Google Benchmark figures
//   bench_template --once       one load, draw and save (for /usr/bin/time -v)
#include "host/core/ZWSimpleXml.h"
#include "host/images/ZWImageSupport.h"
#include "template/ZWCardConditioned.h"
#include "template/ZWCardDate.h"
#include "template/ZWCardFormule.h"
#include "template/ZWCardImage.h"
#include "template/ZWCardLabel.h"
#include "template/ZWPageRenderer.h"
#include "template/ZWTemplate.h"

#include <QBuffer>
#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QRandomGenerator>
#include <QSaveFile>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstring>

namespace {

QByteArray Png(const QImage& image)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

// About 1 MB of PNG: a photograph-like noisy picture compresses badly.
QByteArray LargePicture()
{
    QImage image(620, 560, QImage::Format_RGB32);
    QRandomGenerator random(42);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y,
                qRgb((x + int(random.bounded(64))) & 0xFF, (y + int(random.bounded(64))) & 0xFF,
                    int(random.bounded(256))));
    return Png(image);
}

QByteArray SmallPicture()
{
    QImage image(48, 32, QImage::Format_RGB32);
    QPainter p(&image);
    p.fillRect(image.rect(), QColor(0, 130, 60));
    p.fillRect(QRect(8, 8, 32, 16), QColor(255, 215, 0));
    p.end();
    return Png(image);
}

template <typename Card> Card& Place(std::unique_ptr<Card>& card, int index)
{
    card->x = 5.0 + (index % 10) * 20.0;
    card->y = 5.0 + (index / 10) * 28.0;
    card->width = 18.0;
    card->height = 8.0;
    return *card;
}

// 20 pages of 100 cards: 30 labels, 25 formula cards, 15 date cards, 20
// image cards and 10 conditioned cards of two alternatives; the 1 MB
// picture on the first page.
ZWTemplate LargeTemplate()
{
    const QByteArray large = LargePicture();
    const QByteArray small = SmallPicture();
    ZWTemplate report;
    report.name = QStringLiteral("Benchmark");
    ZWSimpleXml library;
    library.Open(QStringLiteral("formules"));
    for (int i = 0; i < 50; ++i) {
        library.Open(QStringLiteral("formule"));
        library.Add(QStringLiteral("name"), QStringLiteral("F%1").arg(i));
        library.Add(QStringLiteral("text"), QStringLiteral("[Main meter.Active energy] * %1").arg(i));
        library.Close(QStringLiteral("formule"));
    }
    library.Close(QStringLiteral("formules"));
    XmlDocument formules;
    formules.Parse(library.GetXml());
    report.SetFormules(formules.Root());

    for (int p = 0; p < 20; ++p) {
        ZWTemplatePage& page = report.AddPage();
        int index = 0;
        for (int i = 0; i < 30; ++i, ++index) {
            auto label = std::make_unique<ZWCardLabel>();
            Place(label, index).value = QStringLiteral("Label %1 of page %2").arg(i).arg(p + 1);
            label->orientation = (i % 5 == 0) ? 90.0 : 0.0;
            page.cards.push_back(std::move(label));
        }
        for (int i = 0; i < 25; ++i, ++index) {
            auto formule = std::make_unique<ZWCardFormule>();
            Place(formule, index).value = QStringLiteral("[Main meter.Active energy] * F%1").arg(i);
            formule->SetFormat(QStringLiteral("06.02"));
            formule->thousandSeparator = true;
            page.cards.push_back(std::move(formule));
        }
        for (int i = 0; i < 15; ++i, ++index) {
            auto date = std::make_unique<ZWCardDate>();
            Place(date, index).value = QStringLiteral("2024-03-05T09:05:07");
            date->field = i % 2 ? QStringLiteral("BEGIN_DATE") : QString();
            page.cards.push_back(std::move(date));
        }
        for (int i = 0; i < 20; ++i, ++index) {
            auto image = std::make_unique<ZWCardImage>();
            Place(image, index);
            image->SetPictureBytes(p == 0 && i == 0 ? large : small);
            if (p == 0 && i == 0) {
                image->width = 120.0;
                image->height = 100.0;
            }
            page.cards.push_back(std::move(image));
        }
        for (int i = 0; i < 10; ++i, ++index) {
            auto conditioned = std::make_unique<ZWCardConditioned>();
            Place(conditioned, index);
            auto good = std::make_unique<ZWCardLabel>();
            good->value = QStringLiteral("Good");
            auto bad = std::make_unique<ZWCardImage>();
            bad->SetPictureBytes(small);
            conditioned->AddCondition(QStringLiteral("F%1 < 100").arg(i), std::move(good));
            conditioned->AddCondition(QStringLiteral("F%1 >= 100").arg(i), std::move(bad));
            conditioned->level = i % 2;
            conditioned->ActualizeLevel();
            page.cards.push_back(std::move(conditioned));
        }
    }
    return report;
}

struct Fixture
{
    QTemporaryDir dir;
    QString path;
    QByteArray bytes;
    Fixture()
    {
        path = dir.filePath(QStringLiteral("Benchmark.XRPT"));
        const ZWTemplate report = LargeTemplate();
        report.Save(path);
        QFile file(path);
        file.open(QIODevice::ReadOnly);
        bytes = file.readAll();
    }
};

Fixture& TheFixture()
{
    static Fixture fixture;
    return fixture;
}

void BM_LoadBaselineXmlOnly(benchmark::State& state)
{
    for (auto _ : state) {
        XmlDocument document;
        benchmark::DoNotOptimize(document.Load(TheFixture().path));
    }
    state.SetBytesProcessed(state.iterations() * TheFixture().bytes.size());
}
BENCHMARK(BM_LoadBaselineXmlOnly)->Unit(benchmark::kMillisecond);

void BM_LoadTemplate(benchmark::State& state)
{
    for (auto _ : state) {
        ZWImageSupport::ClearCache(); // every load decodes its pictures
        ZWTemplate report;
        benchmark::DoNotOptimize(report.Load(TheFixture().path));
    }
    state.SetBytesProcessed(state.iterations() * TheFixture().bytes.size());
}
BENCHMARK(BM_LoadTemplate)->Unit(benchmark::kMillisecond);

void BM_DrawBaselineFill(benchmark::State& state)
{
    for (auto _ : state) {
        QImage image(1240, 1754, QImage::Format_RGB32);
        image.fill(Qt::white);
        benchmark::DoNotOptimize(image.bits());
    }
}
BENCHMARK(BM_DrawBaselineFill)->Unit(benchmark::kMillisecond);

// The first page (with the 1 MB picture) at 150 dpi, as a freshly loaded
// page draws it: every picture decoded and resampled once.
void BM_DrawPageFirstTime(benchmark::State& state)
{
    ZWTemplate report;
    report.Load(TheFixture().path);
    for (auto _ : state) {
        state.PauseTiming();
        ZWTemplatePage page = report.pages[0];
        ZWImageSupport::ClearCache();
        state.ResumeTiming();
        benchmark::DoNotOptimize(ZWPageRenderer::RenderPage(page, 150.0));
    }
}
BENCHMARK(BM_DrawPageFirstTime)->Unit(benchmark::kMillisecond);

// Repainting the same page: the display copies are reused.
void BM_DrawPageRepaint(benchmark::State& state)
{
    ZWTemplate report;
    report.Load(TheFixture().path);
    ZWPageRenderer::RenderPage(report.pages[0], 150.0);
    const quint64 resamples = ZWImageSupport::ResampleCount();
    for (auto _ : state)
        benchmark::DoNotOptimize(ZWPageRenderer::RenderPage(report.pages[0], 150.0));
    state.counters["resamples"] = double(ZWImageSupport::ResampleCount() - resamples);
}
BENCHMARK(BM_DrawPageRepaint)->Unit(benchmark::kMillisecond);

void BM_SaveBaselineWriteBytes(benchmark::State& state)
{
    const QString path = TheFixture().dir.filePath(QStringLiteral("Baseline.XRPT"));
    for (auto _ : state) {
        QSaveFile file(path);
        file.open(QIODevice::WriteOnly);
        file.write(TheFixture().bytes);
        benchmark::DoNotOptimize(file.commit());
    }
}
BENCHMARK(BM_SaveBaselineWriteBytes)->Unit(benchmark::kMillisecond);

// Building the document, keeping the backup and writing atomically.
void BM_SaveTemplate(benchmark::State& state)
{
    ZWTemplate report;
    report.Load(TheFixture().path);
    const QString path = TheFixture().dir.filePath(QStringLiteral("Saved.XRPT"));
    for (auto _ : state)
        benchmark::DoNotOptimize(report.Save(path));
}
BENCHMARK(BM_SaveTemplate)->Unit(benchmark::kMillisecond);

int Once(int argc, char** argv)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("Benchmark.XRPT"));
    if (!LargeTemplate().Save(path))
        return 1;
    ZWImageSupport::ClearCache();
    ZWTemplate report;
    if (!report.Load(path))
        return 1;
    const QImage page = ZWPageRenderer::RenderPage(report.pages[0], 150.0);
    if (argc > 2)
        page.save(QString::fromLocal8Bit(argv[2]));
    const bool saved = report.Save(dir.filePath(QStringLiteral("Saved.XRPT")));
    std::printf("%d pages, %d cards, %lld bytes (largest picture %lld bytes), page %dx%d, saved %d\n",
        int(report.pages.size()), report.CountCards(), QFileInfo(path).size(),
        qint64(static_cast<ZWCardImage&>(*report.pages[0].cards[70]).bytes.size()), page.width(), page.height(), saved);
    return saved ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    if (argc > 1 && std::strcmp(argv[1], "--once") == 0)
        return Once(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
