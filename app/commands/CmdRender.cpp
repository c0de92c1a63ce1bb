#include "app/commands/ZWCommand.h"
#include "app/commands/ZWCommandLine.h"
#include "app/commands/ZWReportJob.h"
#include "host/core/ZWNoValue.h"
#include "template/ZWColorRef.h"
#include "template/ZWPageRenderer.h"
#include "viewer/ZWViewPage.h"

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QPainter>
#include <QPdfWriter>
#include <QSaveFile>

namespace {

std::vector<std::unique_ptr<ZWViewPage>> BuildPages(ZWReportData& data)
{
    std::vector<std::unique_ptr<ZWViewPage>> pages;
    for (const XmlDocument::XmlNode& element : data.Design().Root().Nodes(QStringLiteral("page"))) {
        auto page = std::make_unique<ZWViewPage>();
        page->SetTemplate(element);
        page->SetUserData(data.ValueDocument());
        page->SetOutColor(ZW_NO_COLOR);
        page->SetMode(1);
        pages.push_back(std::move(page));
    }
    return pages;
}

QPageLayout LayoutOf(const ZWViewPage& page)
{
    const double w = page.GetWidth();
    const double h = page.GetHeight();
    // Page sizes are given upright; the orientation turns them.
    const QPageSize size(
        QSizeF(std::min(w, h), std::max(w, h)), QPageSize::Millimeter, QString(), QPageSize::ExactMatch);
    return QPageLayout(size, w > h ? QPageLayout::Landscape : QPageLayout::Portrait, QMarginsF(0, 0, 0, 0));
}

bool WritePdf(
    const QString& path, const QString& title, std::vector<std::unique_ptr<ZWViewPage>>& pages, QString& error)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        error = file.errorString();
        return false;
    }
    {
        QPdfWriter writer(&file);
        writer.setTitle(title);
        writer.setCreator(QStringLiteral("ZWInformes"));
        writer.setResolution(600);
        if (!pages.empty())
            writer.setPageLayout(LayoutOf(*pages.front()));
        QPainter painter;
        if (!painter.begin(&writer)) {
            error = QStringLiteral("cannot start the PDF");
            file.cancelWriting();
            return false;
        }
        for (size_t i = 0; i < pages.size(); ++i) {
            if (i > 0) {
                writer.setPageLayout(LayoutOf(*pages[i]));
                writer.newPage();
            }
            const QRect area(0, 0, writer.width(), writer.height());
            pages[i]->Draw(painter, area, true, false, area);
        }
        painter.end();
    }
    if (!file.commit()) {
        error = file.errorString();
        return false;
    }
    return true;
}

bool WritePngs(const QString& dir, const QString& base, std::vector<std::unique_ptr<ZWViewPage>>& pages, double dpi,
    QStringList& written, QString& error)
{
    if (!QDir().mkpath(dir)) {
        error = QStringLiteral("cannot create the folder %1").arg(dir);
        return false;
    }
    for (size_t i = 0; i < pages.size(); ++i) {
        QImage image = ZWPageRenderer::PageImage(pages[i]->Page().properties, dpi);
        if (image.isNull()) {
            error = QStringLiteral("page %1 cannot be drawn: %2")
                        .arg(i + 1)
                        .arg(ZWPageRenderer::SizeProblem(pages[i]->Page().properties, dpi));
            return false;
        }
        const QSize size = image.size();
        {
            QPainter painter(&image);
            painter.setRenderHint(QPainter::TextAntialiasing, true);
            const QRect area(QPoint(0, 0), size);
            pages[i]->Draw(painter, area, true, false, area);
        }
        const QString path = QDir(dir).filePath(QStringLiteral("%1-page%2.png").arg(base).arg(i + 1));
        QSaveFile file(path);
        if (!file.open(QIODevice::WriteOnly) || !image.save(&file, "PNG") || !file.commit()) {
            error = QStringLiteral("cannot write %1").arg(path);
            return false;
        }
        written << path;
    }
    return true;
}

int Run(const QStringList& args)
{
    ZWCommandLine cl(QStringLiteral("render"),
        QStringLiteral("Renders a report filled with the logged data of a period: every page at real size "
                       "(1 mm of template = 1 mm of paper) to a PDF with searchable text and embedded fonts, "
                       "and/or to PNG pictures."),
        QStringLiteral("REPORT"));
    QCommandLineParser& p = cl.Parser();
    ZWReportJob::AddOptions(p);
    p.addOption({{QStringLiteral("o"), QStringLiteral("output")}, QStringLiteral("The PDF to write."),
        QStringLiteral("OUT.pdf")});
    p.addOption(
        {QStringLiteral("png"), QStringLiteral("Also write one PNG per page into DIR."), QStringLiteral("DIR")});
    p.addOption({QStringLiteral("dpi"), QStringLiteral("Resolution of the PNG pages (default 150)."),
        QStringLiteral("N"), QStringLiteral("150")});
    if (const int status = cl.Parse(args); status >= 0)
        return status;
    const QStringList positional = p.positionalArguments();
    if (positional.size() != 1)
        return cl.UsageError(QStringLiteral("give one report (a .XRPT path or a report name)"));
    if (!p.isSet(QStringLiteral("output")) && !p.isSet(QStringLiteral("png")))
        return cl.UsageError(QStringLiteral("give -o OUT.pdf and/or --png DIR"));
    bool dpiOk = false;
    const double dpi = p.value(QStringLiteral("dpi")).toDouble(&dpiOk);
    if (!dpiOk || !(dpi >= 10 && dpi <= 2400))
        return cl.UsageError(QStringLiteral("--dpi must be a number from 10 to 2400"));

    ZWReportJob job;
    if (const int status = job.Prepare(cl, positional.first()); status >= 0)
        return status;
    if (!job.Gather())
        return ExitFailed;
    std::vector<std::unique_ptr<ZWViewPage>> pages = BuildPages(job.Data());
    // Every page is checked before anything is written.
    for (size_t i = 0; i < pages.size(); ++i) {
        QString problem;
        if (p.isSet(QStringLiteral("output")))
            problem = ZWPageRenderer::SizeProblem(pages[i]->Page().properties);
        if (problem.isEmpty() && p.isSet(QStringLiteral("png")))
            problem = ZWPageRenderer::SizeProblem(pages[i]->Page().properties, dpi);
        if (!problem.isEmpty()) {
            Err() << "zwinformes render: page " << i + 1 << " cannot be drawn: " << problem << "\n";
            return ExitFailed;
        }
    }
    const QString title = job.Data().Design().Value(QStringLiteral("/name"));
    QString error;
    if (p.isSet(QStringLiteral("output"))) {
        const QString out = p.value(QStringLiteral("output"));
        if (!WritePdf(out, title, pages, error)) {
            Err() << "zwinformes render: " << out << ": " << error << "\n";
            return ExitFailed;
        }
        Out() << out << "\n";
    }
    if (p.isSet(QStringLiteral("png"))) {
        QStringList written;
        const QString base = QFileInfo(job.ReportPath()).completeBaseName();
        if (!WritePngs(p.value(QStringLiteral("png")), base, pages, dpi, written, error)) {
            Err() << "zwinformes render: " << error << "\n";
            return ExitFailed;
        }
        for (const QString& path : written)
            Out() << path << "\n";
    }
    // Pictures that could not be drawn are named, though the report is made.
    for (size_t i = 0; i < pages.size(); ++i)
        for (const QString& problem : pages[i]->Page().PictureProblems())
            Err() << "zwinformes render: page " << i + 1 << ", " << problem << "\n";
    return ExitOk;
}

const ZWCommandRegistration registration({QStringLiteral("render"),
    QStringLiteral("a report filled for a period, to PDF and PNG"), ZWCommand::Needs::Gui, Run});

} // namespace
