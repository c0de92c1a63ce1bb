#include "app/commands/ZWCommand.h"
#include "app/commands/ZWCommandLine.h"
#include "app/commands/ZWOutputPattern.h"
#include "app/commands/ZWReportJob.h"
#include "app/commands/ZWTerminalProgress.h"
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
#include <QSet>

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

// Every page is checked before anything is written.
bool CheckPages(const std::vector<std::unique_ptr<ZWViewPage>>& pages, bool pdf, bool png, double dpi)
{
    for (size_t i = 0; i < pages.size(); ++i) {
        QString problem;
        if (pdf)
            problem = ZWPageRenderer::SizeProblem(pages[i]->Page().properties);
        if (problem.isEmpty() && png)
            problem = ZWPageRenderer::SizeProblem(pages[i]->Page().properties, dpi);
        if (!problem.isEmpty()) {
            Err() << "zwinformes render: page " << i + 1 << " cannot be drawn: " << problem << "\n";
            return false;
        }
    }
    return true;
}

// Writes the filled pages to the PDF (its folder made first) and/or the PNG
// folder (empty: none), naming what it wrote on stdout. False (with `error`)
// at the first file that cannot be written.
bool WriteOutputs(const QString& title, const QString& base, std::vector<std::unique_ptr<ZWViewPage>>& pages,
    const QString& pdf, const QString& pngDir, double dpi, QString& error)
{
    if (!pdf.isEmpty()) {
        const QString folder = QFileInfo(pdf).path();
        if (!QDir().mkpath(folder)) {
            error = QStringLiteral("%1: cannot create the folder %2").arg(pdf, folder);
            return false;
        }
        if (!WritePdf(pdf, title, pages, error)) {
            error = QStringLiteral("%1: %2").arg(pdf, error);
            return false;
        }
        Out() << pdf << "\n";
    }
    if (!pngDir.isEmpty()) {
        QStringList written;
        if (!WritePngs(pngDir, base, pages, dpi, written, error))
            return false;
        for (const QString& path : written)
            Out() << path << "\n";
    }
    return true;
}

void NamePictureProblems(const std::vector<std::unique_ptr<ZWViewPage>>& pages, const QString& prefix)
{
    // Pictures that could not be drawn are named, though the report is made.
    for (size_t i = 0; i < pages.size(); ++i)
        for (const QString& problem : pages[i]->Page().PictureProblems())
            Err() << "zwinformes render: " << prefix << "page " << i + 1 << ", " << problem << "\n";
}

// The most periods one batch renders (over 27 years of days).
constexpr int kMaxPeriods = 10000;

// Every whole period of `unit` in [from, to): one gathering each, the store
// opened and the report loaded once; a period that fails is named and the
// others go on.
int RunBatch(ZWCommandLine& cl, const QString& report, double dpi)
{
    QCommandLineParser& p = cl.Parser();
    const QString unitName = p.value(QStringLiteral("each")).toLower();
    const std::optional<int> unit = ZWReportPeriod::UnitFromName(unitName);
    if (!unit || *unit == ID_GROUPBY_USER)
        return cl.UsageError(QStringLiteral("--each is day, week, month, 3month or year"));
    if (p.isSet(QStringLiteral("unit")) || p.isSet(QStringLiteral("date")))
        return cl.UsageError(QStringLiteral("--each takes its periods from --from and --to, not --unit or --date"));
    if (!p.isSet(QStringLiteral("from")) || !p.isSet(QStringLiteral("to")))
        return cl.UsageError(QStringLiteral("--each needs --from and --to"));
    ZWDateTime from, to, now = ZWDateTime::LTC();
    const std::initializer_list<std::pair<QString, ZWDateTime*>> dates
        = {{QStringLiteral("from"), &from}, {QStringLiteral("to"), &to}, {QStringLiteral("now"), &now}};
    for (const auto& [option, date] : dates) {
        if (p.isSet(option) && !String2DateTime(*date, p.value(option)))
            return cl.UsageError(
                QStringLiteral("--%1: '%2' is not a date-time (use 2024-03-05T09:05:07)").arg(option, p.value(option)));
    }

    // Whole periods only: one that begins before --from is left out.
    std::vector<std::pair<ZWDateTime, ZWDateTime>> periods;
    ZWDateTime start = ZWReportPeriod::AdjustToGroupBy(from, *unit);
    if (start < from)
        start = ZWReportPeriod::AddGroupByUnit(start, *unit);
    for (ZWDateTime end = ZWReportPeriod::AddGroupByUnit(start, *unit); end <= to;
         start = end, end = ZWReportPeriod::AddGroupByUnit(start, *unit)) {
        if (periods.size() >= size_t(kMaxPeriods))
            return cl.UsageError(QStringLiteral("more than %1 periods between --from and --to").arg(kMaxPeriods));
        periods.emplace_back(start, end);
    }
    if (periods.empty())
        return cl.UsageError(QStringLiteral("no whole %1 between --from and --to").arg(unitName));

    // The file names of every period, checked before anything is opened:
    // two periods may not write the same file. The report's name is the same
    // for all, so the name as given serves for the check.
    ZWOutputPattern pdfPattern, pngPattern;
    for (const auto& [option, pattern] :
        {std::pair{QStringLiteral("output"), &pdfPattern}, std::pair{QStringLiteral("png"), &pngPattern}}) {
        if (!p.isSet(option))
            continue;
        QString error;
        if (!pattern->Parse(p.value(option), error))
            return cl.UsageError(QStringLiteral("--%1: %2").arg(option, error));
        QSet<QString> seen;
        for (const auto& [periodStart, periodEnd] : periods) {
            const QString path
                = pattern->Expand(QFileInfo(report).completeBaseName(), unitName, periodStart, periodEnd);
            if (seen.contains(path))
                return cl.UsageError(
                    QStringLiteral("--%1 '%2' names %3 for more than one period: put {start:PATTERN} in it")
                        .arg(option, p.value(option), path));
            seen.insert(path);
        }
    }

    ZWReportJob job;
    if (const int status = job.Open(cl, report); status >= 0)
        return status;
    // The report's file name, now that a name is found in the report folder.
    const QString name = QFileInfo(job.ReportPath()).completeBaseName();
    job.Data().SetNow(now);
    const bool pdf = p.isSet(QStringLiteral("output")), png = p.isSet(QStringLiteral("png"));
    if (!CheckPages(BuildPages(job.Data()), pdf, png, dpi))
        return ExitFailed;

    const QString title = job.Data().Design().Value(QStringLiteral("/name"));
    const QString base = QFileInfo(job.ReportPath()).completeBaseName();
    // The next period is gathered on the worker thread while this one is
    // drawn: the pages hold their own copy of the values.
    const auto startGathering = [&](size_t i) {
        // The period is set by its end; it is placed in the calendar as it
        // stands, whatever the present.
        ZWReportPeriod& period = job.Data().Period();
        period.Reset(*unit);
        period.SetupData(periods[i].second, *unit, true, periods[i].second);
        job.StartGathering(nullptr);
    };
    ZWTerminalProgress bar;
    bar.SetRange(0, int(periods.size()));
    int failed = 0;
    startGathering(0);
    for (size_t i = 0; i < periods.size(); ++i) {
        const auto& [periodStart, periodEnd] = periods[i];
        const QString label = QStringLiteral("%1 - %2").arg(periodStart.ToIso(), periodEnd.ToIso());
        bar.SetText(label);
        bar.SetPos(int(i));
        const bool gathered = job.FinishGathering();
        bar.End(gathered);
        QString error;
        bool ok = gathered;
        std::vector<std::unique_ptr<ZWViewPage>> pages;
        if (!gathered) {
            error = QStringLiteral("the logged data could not be read: %1").arg(job.Data().LastError());
        } else {
            if (!job.Data().Notice().isEmpty())
                Err() << "zwinformes render: " << label << ": " << job.Data().Notice() << "\n";
            pages = BuildPages(job.Data());
        }
        if (i + 1 < periods.size())
            startGathering(i + 1);
        if (gathered) {
            const QString pdfPath = pdf ? pdfPattern.Expand(name, unitName, periodStart, periodEnd) : QString();
            const QString pngPath = png ? pngPattern.Expand(name, unitName, periodStart, periodEnd) : QString();
            ok = WriteOutputs(title, base, pages, pdfPath, pngPath, dpi, error);
            NamePictureProblems(pages, label + QStringLiteral(", "));
        }
        if (!ok) {
            ++failed;
            Err() << "zwinformes render: " << label << ": " << error << "\n";
        }
        Out().flush();
        Err().flush();
    }
    bar.SetPos(int(periods.size()));
    bar.End(failed == 0);
    Out() << periods.size() << (periods.size() == 1 ? " period: " : " periods: ") << periods.size() - size_t(failed)
          << " written, " << failed << " failed\n";
    return failed > 0 ? ExitFailed : ExitOk;
}

int Run(const QStringList& args)
{
    ZWCommandLine cl(QStringLiteral("render"),
        QStringLiteral("Renders a report filled with the logged data of a period: every page at real size "
                       "(1 mm of template = 1 mm of paper) to a PDF with searchable text and embedded fonts, "
                       "and/or to PNG pictures. With --each, every whole period of a unit between --from and "
                       "--to, -o and --png then naming each period's files with {name}, {unit}, "
                       "{start:PATTERN} and {end:PATTERN} (Qt date patterns: yyyy-MM)."),
        QStringLiteral("REPORT"));
    QCommandLineParser& p = cl.Parser();
    ZWReportJob::AddOptions(p);
    p.addOption({{QStringLiteral("o"), QStringLiteral("output")}, QStringLiteral("The PDF to write."),
        QStringLiteral("OUT.pdf")});
    p.addOption(
        {QStringLiteral("png"), QStringLiteral("Also write one PNG per page into DIR."), QStringLiteral("DIR")});
    p.addOption({QStringLiteral("dpi"), QStringLiteral("Resolution of the PNG pages (default 150)."),
        QStringLiteral("N"), QStringLiteral("150")});
    p.addOption({QStringLiteral("each"),
        QStringLiteral("Render every whole day, week, month, 3month or year between --from and --to."),
        QStringLiteral("U")});
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
    if (p.isSet(QStringLiteral("each")))
        return RunBatch(cl, positional.first(), dpi);

    ZWReportJob job;
    if (const int status = job.Prepare(cl, positional.first()); status >= 0)
        return status;
    if (!job.Gather())
        return ExitFailed;
    std::vector<std::unique_ptr<ZWViewPage>> pages = BuildPages(job.Data());
    const bool pdf = p.isSet(QStringLiteral("output")), png = p.isSet(QStringLiteral("png"));
    if (!CheckPages(pages, pdf, png, dpi))
        return ExitFailed;
    QString error;
    if (!WriteOutputs(job.Data().Design().Value(QStringLiteral("/name")),
            QFileInfo(job.ReportPath()).completeBaseName(), pages, pdf ? p.value(QStringLiteral("output")) : QString(),
            png ? p.value(QStringLiteral("png")) : QString(), dpi, error)) {
        Err() << "zwinformes render: " << error << "\n";
        return ExitFailed;
    }
    NamePictureProblems(pages, QString());
    return ExitOk;
}

const ZWCommandRegistration registration({QStringLiteral("render"),
    QStringLiteral("a report filled for a period, to PDF and PNG"), ZWCommand::Needs::Gui, Run});

} // namespace
