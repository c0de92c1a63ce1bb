#include "app/commands/ZWCommand.h"
#include "app/commands/ZWCommandLine.h"
#include "template/ZWPageRenderer.h"
#include "template/ZWTemplate.h"

#include <QDir>
#include <QFileInfo>

namespace {

int Run(const QStringList& args)
{
    ZWCommandLine cl(QStringLiteral("render-template"),
        QStringLiteral("Draws every page of a report, without data (formula cards show their formula),\n"
                       "at real size to PNG files DIR/NAME-1.png, DIR/NAME-2.png..."),
        QStringLiteral("IN.XRPT"));
    const QCommandLineOption png(
        QStringLiteral("png"), QStringLiteral("folder of the pictures"), QStringLiteral("DIR"));
    const QCommandLineOption dpi(
        QStringLiteral("dpi"), QStringLiteral("resolution (default 150)"), QStringLiteral("N"), QStringLiteral("150"));
    cl.Parser().addOption(png);
    cl.Parser().addOption(dpi);
    if (const int status = cl.Parse(args); status >= 0)
        return status;
    const QStringList positional = cl.Parser().positionalArguments();
    if (positional.size() != 1)
        return cl.UsageError(QStringLiteral("expected one IN.XRPT"));
    if (!cl.Parser().isSet(png))
        return cl.UsageError(QStringLiteral("--png DIR is required"));
    bool ok = false;
    const double resolution = cl.Parser().value(dpi).toDouble(&ok);
    if (!ok || !(resolution >= 10.0 && resolution <= 1200.0))
        return cl.UsageError(QStringLiteral("--dpi must be a number from 10 to 1200"));

    ZWTemplate report;
    QString error;
    if (!report.Load(positional[0], &error)) {
        Err() << "zwinformes render-template: " << error << "\n";
        return ExitFailed;
    }
    const QString folder = cl.Parser().value(png);
    if (!QDir().mkpath(folder)) {
        Err() << "zwinformes render-template: cannot create " << folder << "\n";
        return ExitFailed;
    }
    const QString base = QFileInfo(positional[0]).completeBaseName();
    int status = ExitOk;
    int number = 0;
    for (ZWTemplatePage& page : report.pages) {
        ++number;
        page.UpdateStylesFromFile();
        const QString path = QDir(folder).filePath(QStringLiteral("%1-%2.png").arg(base).arg(number));
        const QImage image = ZWPageRenderer::RenderPage(page, resolution);
        if (image.isNull()) {
            Err() << "zwinformes render-template: page " << number
                  << " cannot be drawn: " << ZWPageRenderer::SizeProblem(page.properties, resolution) << "\n";
            status = ExitFailed;
            continue;
        }
        if (!image.save(path, "PNG")) {
            Err() << "zwinformes render-template: cannot write " << path << "\n";
            status = ExitFailed;
            continue;
        }
        Out() << path << "\n";
        for (const QString& problem : page.PictureProblems())
            Err() << "zwinformes render-template: page " << number << ", " << problem << "\n";
    }
    return status;
}

const ZWCommandRegistration registration({QStringLiteral("render-template"),
    QStringLiteral("draw the pages of a report, without data, to PNG files"), ZWCommand::Needs::Gui, Run});

} // namespace
