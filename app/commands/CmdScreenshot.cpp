#include "app/commands/ZWCommand.h"
#include "app/commands/ZWCommandLine.h"
#include "app/commands/ZWViewerLaunch.h"
#include "editor/widgets/CDlgEditor.h"
#include "editor/widgets/ZWEditTemplateWnd.h"
#include "editor/widgets/ZWEditorFrame.h"
#include "viewer/ZWReportFiles.h"
#include "viewer/ZWViewZoom.h"
#include "viewer/widgets/CDlgViewer.h"
#include "viewer/widgets/ZWViewReportFrame.h"

#include <QApplication>
#include <QComboBox>
#include <QCursor>
#include <QImage>
#include <QRegularExpression>

namespace {

int Run(const QStringList& args)
{
    ZWCommandLine cl(QStringLiteral("screenshot"),
        QStringLiteral("Opens the viewer on a report as 'view' does (or, with --editor, the editor dialog)\n"
                       "and saves a picture of its window\n"
                       "(for the documentation; run it with QT_QPA_PLATFORM=offscreen on a machine\n"
                       "without a display)."),
        QStringLiteral("REPORT"));
    ZWViewerLaunch::AddOptions(cl.Parser());
    const QCommandLineOption out(QStringList{QStringLiteral("o"), QStringLiteral("output")},
        QStringLiteral("The PNG file to write."), QStringLiteral("FILE"));
    const QCommandLineOption size(QStringLiteral("size"), QStringLiteral("Window size (default 1280x900)."),
        QStringLiteral("WxH"), QStringLiteral("1280x900"));
    const QCommandLineOption zoom(QStringLiteral("zoom"),
        QStringLiteral("fit, or a percentage 50..1000 (default fit)."), QStringLiteral("Z"), QStringLiteral("fit"));
    const QCommandLineOption page(QStringLiteral("page"), QStringLiteral("The page to show (default 1)."),
        QStringLiteral("N"), QStringLiteral("1"));
    const QCommandLineOption editor(
        QStringLiteral("editor"), QStringLiteral("Show the report in the editor dialog instead of the viewer."));
    const QCommandLineOption card(QStringLiteral("card"),
        QStringLiteral("With --editor: select card N of the page (from 1), so its properties show."),
        QStringLiteral("N"), QStringLiteral("0"));
    for (const QCommandLineOption& option : {out, size, zoom, page, editor, card})
        cl.Parser().addOption(option);
    if (const int status = cl.Parse(args); status >= 0)
        return status;
    const QStringList positional = cl.Parser().positionalArguments();
    if (positional.size() != 1)
        return cl.UsageError(QStringLiteral("expected one REPORT"));
    if (!cl.Parser().isSet(out))
        return cl.UsageError(QStringLiteral("-o FILE is required"));
    const QRegularExpressionMatch wxh
        = QRegularExpression(QStringLiteral("^(\\d{2,4})x(\\d{2,4})$")).match(cl.Parser().value(size));
    if (!wxh.hasMatch())
        return cl.UsageError(QStringLiteral("--size must be WIDTHxHEIGHT, such as 1280x900"));
    int zoomIndex = 0;
    if (cl.Parser().value(zoom) != QLatin1String("fit")) {
        bool ok = false;
        const int percent = cl.Parser().value(zoom).toInt(&ok);
        if (!ok || percent < 50 || percent > 1000 || percent % 50 != 0)
            return cl.UsageError(QStringLiteral("--zoom must be fit or a multiple of 50 from 50 to 1000"));
        zoomIndex = percent / 50;
    }
    bool pageOk = false;
    const int pageNumber = cl.Parser().value(page).toInt(&pageOk);
    if (!pageOk || pageNumber < 1)
        return cl.UsageError(QStringLiteral("--page must be a page number"));

    // The pointer away from the window, so that no button shows it hovering.
    QCursor::setPos(10000, 10000);
    if (cl.Parser().isSet(editor)) {
        CDlgEditor dialog;
        dialog.resize(wxh.captured(1).toInt(), wxh.captured(2).toInt());
        if (!dialog.Setup(ZWReportFiles::ReportPath(positional[0]))) {
            Err() << "zwinformes screenshot: cannot read " << positional[0] << "\n";
            return ExitFailed;
        }
        dialog.show();
        ZWEditorFrame* frame = dialog.Frame();
        if (pageNumber > frame->PageCount()) {
            Err() << "zwinformes screenshot: the report has " << frame->PageCount() << " page(s)\n";
            return ExitFailed;
        }
        frame->SetCurrentPage(pageNumber - 1);
        frame->OnZoomSelector(zoomIndex);
        const int cardNumber = cl.Parser().value(card).toInt();
        const auto& cards = frame->CurrentPage()->Page().cards;
        if (cardNumber >= 1 && size_t(cardNumber) <= cards.size())
            frame->CurrentPage()->SelectControlById(cards[size_t(cardNumber - 1)]->id);
        QApplication::processEvents();
        const QImage picture = dialog.grab().toImage();
        // Nothing was changed: closing asks nothing.
        frame->SetModified(false);
        if (picture.isNull() || !picture.save(cl.Parser().value(out), "PNG")) {
            Err() << "zwinformes screenshot: cannot write " << cl.Parser().value(out) << "\n";
            return ExitFailed;
        }
        Out() << cl.Parser().value(out) << "\n";
        return ExitOk;
    }
    ZWViewerLaunch launch;
    if (const int status = launch.Prepare(cl, positional[0]); status >= 0)
        return status;
    CDlgViewer viewer;
    viewer.resize(wxh.captured(1).toInt(), wxh.captured(2).toInt());
    viewer.show();
    if (!launch.Open(viewer))
        return ExitFailed;
    ZWViewReportFrame* frame = viewer.Frame();
    if (pageNumber > frame->PageCount()) {
        Err() << "zwinformes screenshot: the report has " << frame->PageCount() << " page(s)\n";
        return ExitFailed;
    }
    frame->OnPageSelector(pageNumber - 1);
    frame->OnZoomSelector(zoomIndex);
    QApplication::processEvents();
    const QImage picture = viewer.grab().toImage();
    if (picture.isNull() || !picture.save(cl.Parser().value(out), "PNG")) {
        Err() << "zwinformes screenshot: cannot write " << cl.Parser().value(out) << "\n";
        return ExitFailed;
    }
    const ZWReportPeriod& period = viewer.Data().Period();
    Out() << cl.Parser().value(out) << "\n"
          << "period " << period.Start().ToIso() << " " << period.End().ToIso() << "\n";
    return ExitOk;
}

ZWCommand Command()
{
    ZWCommand command{QStringLiteral("screenshot"), QStringLiteral("a picture of the viewer on a report"),
        ZWCommand::Needs::Widgets, Run};
    command.hidden = true;
    return command;
}

const ZWCommandRegistration registration(Command());

} // namespace
