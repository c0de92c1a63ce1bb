#include "host/core/ZWMath.h"
#include "host/core/ZWNoValue.h"
#include "template/ZWColorRef.h"
#include "tests/template/TemplateTestSupport.h"
#include "tests/viewer/widgets/ViewerTestSupport.h"
#include "viewer/ZWViewZoom.h"

#include <QAction>
#include <QComboBox>
#include <QMenu>
#include <QPrinter>
#include <QProcess>
#include <QRegularExpression>
#include <QScrollBar>
#include <QToolBar>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace {

using zwtest::Factor;
using zwtest::ThreePages;

struct Label
{
    const char* id;
    double x, y, w, h;
    const char* text;
};

QString PageXml(double width, double height, const std::vector<Label>& labels)
{
    QString xml = u"<page><width>%1</width><height>%2</height><rounded>0.00</rounded>"_s.arg(width, 0, 'f', 2)
                      .arg(height, 0, 'f', 2);
    for (const Label& l : labels)
        xml += QStringLiteral("<label><x>%1</x><y>%2</y><width>%3</width><height>%4</height><id>%5</id>"
                              "<font>Arial</font><size>12.00</size><color>FFFFFF</color><value>%6</value></label>")
                   .arg(l.x, 0, 'f', 2)
                   .arg(l.y, 0, 'f', 2)
                   .arg(l.w, 0, 'f', 2)
                   .arg(l.h, 0, 'f', 2)
                   .arg(QString::fromLatin1(l.id), QString::fromLatin1(l.text));
    return xml + u"</page>"_s;
}

XmlDocument Design(const QStringList& pages, const QString& name = u"Frame test"_s)
{
    XmlDocument doc;
    const QString xml = u"<design><id>{0}</id><name>%1</name>%2</design>"_s.arg(name, pages.join(QString()));
    EXPECT_TRUE(doc.Parse(xml));
    return doc;
}

void Click(const ZWViewReportFrame& frame, int command)
{
    QToolButton* button = nullptr;
    for (QToolBar* bar : {frame.PagesBar(), frame.ZoomBar()})
        if (auto* b = qobject_cast<QToolButton*>(bar->widgetForAction(frame.Action(command))))
            button = b;
    ASSERT_NE(button, nullptr) << command;
    QTest::mouseClick(button, Qt::LeftButton);
}

class ViewerFrame : public zwtest::WindowTest
{
protected:
    void Show(ZWViewReportFrame& frame, const XmlDocument& design, QSize size = QSize(900, 700))
    {
        frame.SetTemplate(design);
        frame.resize(size);
        frame.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&frame));
        frame.Refresh();
    }
};

TEST_F(ViewerFrame, FitZoomButtonsAndScrollBars)
{
    ZWViewReportFrame frame;
    Show(frame, ThreePages());
    ZWViewTemplateWnd* wnd = frame.CurrentPageWnd();
    QScrollBar* hbar = wnd->horizontalScrollBar();
    QScrollBar* vbar = wnd->verticalScrollBar();
    const QSize client = wnd->viewport()->size();
    const QPointF px = wnd->PixelsPerMm();
    const double fit = std::min(client.width() / px.x() / 210.0, client.height() / px.y() / 297.0);
    EXPECT_DOUBLE_EQ(Factor(wnd), -fit);
    EXPECT_EQ(frame.ZoomSelector()->currentIndex(), 0);
    EXPECT_FALSE(hbar->isVisible() || vbar->isVisible());

    // The page is white on the out colour, centred, at the fitted size.
    wnd->SetOutColor(ZWRGB(0x40, 0x80, 0xC0));
    QImage shot = wnd->viewport()->grab().toImage();
    const QRect page = zwtest::InkBounds(shot, qRgb(0x40, 0x80, 0xC0));
    const int width = roundi(fit * 210.0 * px.x());
    const int height = roundi(fit * 297.0 * px.y());
    EXPECT_NEAR(page.width(), width, 1);
    EXPECT_NEAR(page.height(), height, 1);
    EXPECT_NEAR(page.left(), (client.width() - width) / 2, 1);
    EXPECT_NEAR(page.top(), (client.height() - height) / 2, 1);
    EXPECT_EQ(shot.pixel(0, 0) & 0xFFFFFF, 0x4080C0u);

    // From fit the buttons step to the multiples of 50 % around the fitted
    // factor (the steps themselves are ZWViewZoom's), and the selector follows.
    const double up = *ZWViewZoom::ZoomIn(-fit);
    Click(frame, ZWViewReportFrame::ID_ZOOM_IN);
    EXPECT_DOUBLE_EQ(Factor(wnd), up);
    EXPECT_EQ(frame.ZoomSelector()->currentIndex(), int(up * 2));
    Click(frame, ZWViewReportFrame::ID_ZOOM_OUT);
    EXPECT_DOUBLE_EQ(Factor(wnd), up - 0.5);
    // At 1000 % Zoom in is disabled and does nothing, even called; Zoom out is enabled.
    QTest::keyClick(frame.ZoomSelector(), Qt::Key_End);
    EXPECT_EQ(frame.ZoomSelector()->currentText(), u"1000%"_s);
    EXPECT_FALSE(frame.Action(ZWViewReportFrame::ID_ZOOM_IN)->isEnabled());
    Click(frame, ZWViewReportFrame::ID_ZOOM_IN);
    frame.OnZoomIn();
    EXPECT_DOUBLE_EQ(Factor(wnd), 10.0);
    Click(frame, ZWViewReportFrame::ID_ZOOM_OUT);
    EXPECT_DOUBLE_EQ(Factor(wnd), 9.5);
    EXPECT_TRUE(frame.Action(ZWViewReportFrame::ID_ZOOM_IN)->isEnabled());

    // At 200 % the scroll bars cover exactly the overhang: the last position
    // shows the page's far edge at the window's edge.
    QTest::keyClick(frame.ZoomSelector(), Qt::Key_Home);
    for (int i = 0; i < 4; ++i)
        QTest::keyClick(frame.ZoomSelector(), Qt::Key_Down);
    ASSERT_DOUBLE_EQ(Factor(wnd), 2.0);
    double w = 0, h = 0;
    ASSERT_TRUE(wnd->GetMinimumControlDimensions(w, h));
    ASSERT_TRUE(hbar->isVisible() && vbar->isVisible());
    const QSize view = wnd->viewport()->size();
    EXPECT_EQ(QSize(hbar->maximum(), vbar->maximum()), QSize(roundi(w), roundi(h)) - view);
    hbar->setValue(hbar->maximum() + 10);
    vbar->setValue(vbar->maximum());
    EXPECT_EQ(hbar->value(), hbar->maximum());
    shot = wnd->viewport()->grab().toImage();
    // At most the last column and row show the out colour: the page's edge falls inside them.
    EXPECT_LE(zwtest::CountColour(shot, qRgb(0x40, 0x80, 0xC0)), view.width() + view.height());
    EXPECT_EQ(shot.pixel(view.width() - 2, view.height() - 2) & 0xFFFFFF, 0xFFFFFFu);

    // Back to fit: no scroll bars; a larger window fits again.
    QTest::keyClick(frame.ZoomSelector(), Qt::Key_Home);
    EXPECT_DOUBLE_EQ(Factor(wnd), -fit);
    EXPECT_FALSE(hbar->isVisible() || vbar->isVisible());
    EXPECT_EQ(hbar->value(), 0);
    frame.resize(1200, 1000);
    QApplication::processEvents();
    EXPECT_LT(Factor(wnd), -fit);
}

// The page shown, the page selector, which of Previous and Next are
// enabled, the zoom selector and the shown page's factor.
QString Pages(const ZWViewReportFrame& frame)
{
    const double factor = Factor(frame.CurrentPageWnd());
    return u"page %1 (selector %2)%3%4, zoom %5: %6"_s.arg(frame.CurrentPage())
        .arg(frame.PageSelector()->currentIndex())
        .arg(frame.Action(ZWViewReportFrame::ID_PREVIOUS_PAGE)->isEnabled() ? u" previous"_s : QString(),
            frame.Action(ZWViewReportFrame::ID_NEXT_PAGE)->isEnabled() ? u" next"_s : QString())
        .arg(frame.ZoomSelector()->currentIndex())
        .arg(factor < 0 ? u"fit"_s : QString::number(factor));
}

TEST_F(ViewerFrame, PageNavigationAndSelector)
{
    ZWViewReportFrame frame;
    Show(frame, ThreePages());
    ASSERT_EQ(frame.PageCount(), 3);
    QComboBox* selector = frame.PageSelector();
    EXPECT_EQ(selector->count(), 3);
    EXPECT_EQ(selector->itemText(2), u"Page 3"_s);
    EXPECT_EQ(Pages(frame), u"page 0 (selector 0) next, zoom 0: fit"_s);
    const double up = *ZWViewZoom::ZoomIn(Factor(frame.PageWnd(0)));

    // The zoom the reader chose goes with them from page to page, and so
    // does fit to window; only the shown page is visible.
    Click(frame, ZWViewReportFrame::ID_ZOOM_IN);
    Click(frame, ZWViewReportFrame::ID_NEXT_PAGE);
    EXPECT_EQ(Pages(frame), u"page 1 (selector 1) previous next, zoom %1: %2"_s.arg(int(up * 2)).arg(up));
    EXPECT_TRUE(frame.PageWnd(1)->isVisible());
    EXPECT_FALSE(frame.PageWnd(0)->isVisible());
    QTest::keyClick(frame.ZoomSelector(), Qt::Key_Home);
    Click(frame, ZWViewReportFrame::ID_NEXT_PAGE);
    frame.OnNextPage(); // nothing past the last page
    EXPECT_EQ(Pages(frame), u"page 2 (selector 2) previous, zoom 0: fit"_s);

    // The selector leads straight to a page, in the zoom of the page left.
    QTest::keyClick(selector, Qt::Key_Home);
    frame.OnPreviousPage(); // nothing before the first
    EXPECT_EQ(Pages(frame), u"page 0 (selector 0) next, zoom 0: fit"_s);
    EXPECT_TRUE(frame.PageWnd(0)->isVisible());
    EXPECT_FALSE(frame.PageWnd(2)->isVisible());

    // A design without pages still has one (empty) page window.
    frame.SetTemplate(Design({}));
    EXPECT_EQ(frame.PageCount(), 1);
    EXPECT_EQ(selector->count(), 0);
    EXPECT_FALSE(frame.Action(ZWViewReportFrame::ID_NEXT_PAGE)->isEnabled());
}

// The entries of the Toolbars menu of a page window's context menu.
QString Bars(QMenu* menu)
{
    QMenu* bars = menu->actions().value(0)->menu();
    QString out = menu->actions().value(0)->text() + (bars->isEnabled() ? u":"_s : u" (disabled):"_s);
    for (QAction* a : bars->actions())
        out += u" %1 %2%3"_s.arg(a->data().toInt()).arg(a->text(), a->isChecked() ? u"*"_s : QString());
    return out;
}

TEST_F(ViewerFrame, ContextMenuTogglesToolBarsAndTheirStateIsKept)
{
    {
        ZWViewReportFrame frame;
        Show(frame, ThreePages());
        ZWViewTemplateWnd* wnd = frame.CurrentPageWnd();
        QTest::mouseClick(wnd->viewport(), Qt::RightButton, {}, QPoint(50, 50));
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        ASSERT_NE(menu, nullptr);
        EXPECT_EQ(menu->actions().size(), 1);
        EXPECT_EQ(Bars(menu), u"&Toolbars: 800 &Pages* 801 &Zoom*"_s);
        menu->actions()[0]->menu()->actions()[1]->trigger();
        menu->close();
        EXPECT_TRUE(frame.ZoomBar()->isHidden());
        EXPECT_FALSE(frame.PagesBar()->isHidden());
        EXPECT_EQ(Bars(std::unique_ptr<QMenu>(wnd->CreateContextMenu()).get()), u"&Toolbars: 800 &Pages* 801 &Zoom"_s);
        // Ids of no bar do nothing.
        wnd->OnViewToolbar(802);
        wnd->OnViewToolbar(799);
        EXPECT_TRUE(frame.ZoomBar()->isHidden());
        EXPECT_FALSE(frame.PagesBar()->isHidden());
    }
    // The bar state went into the settings and a new frame takes it.
    EXPECT_FALSE(ZWMarentaSetup::instance().OpenSettings()->value(u"ViewReportBars"_s).toByteArray().isEmpty());
    ZWViewReportFrame frame;
    Show(frame, ThreePages());
    EXPECT_TRUE(frame.ZoomBar()->isHidden());
    frame.CurrentPageWnd()->OnViewToolbar(801);
    EXPECT_FALSE(frame.ZoomBar()->isHidden());

    // A window outside a frame, handed no commands: the menu is there but disabled.
    ZWViewTemplateWnd bare;
    EXPECT_EQ(Bars(std::unique_ptr<QMenu>(bare.CreateContextMenu()).get()), u"&Toolbars (disabled):"_s);
}

// Printing through QPrinter into a PDF file, checked with poppler's tools.
class ViewerPrint : public ViewerFrame
{
protected:
    static QString Run(const QString& program, const QStringList& args)
    {
        QProcess process;
        process.start(program, args);
        if (!process.waitForFinished(30000) || process.exitCode() != 0)
            return QString();
        return QString::fromUtf8(process.readAllStandardOutput());
    }

    QString PrintToPdf(ZWViewReportFrame& frame, int first, int last, QPageLayout::Orientation orientation)
    {
        const QString path = m_dir.filePath(u"print.pdf"_s);
        QFile::remove(path);
        QPrinter printer(QPrinter::HighResolution);
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(path);
        printer.setPageSize(QPageSize(QPageSize::A4));
        printer.setPageOrientation(orientation);
        // A printer's unprintable edges, the same on both sides.
        printer.setPageMargins(QMarginsF(5, 5, 5, 5), QPageLayout::Millimeter);
        EXPECT_TRUE(frame.PrintPages(printer, first, last));
        return path;
    }

    // Centres (in mm from the paper's top-left corner) of the words on page `page`.
    std::map<QString, QPointF> WordCentres(const QString& pdf, int page)
    {
        const QString html = Run(
            u"pdftotext"_s, {u"-bbox"_s, u"-f"_s, QString::number(page), u"-l"_s, QString::number(page), pdf, u"-"_s});
        std::map<QString, QPointF> out;
        static const QRegularExpression word(QStringLiteral(
            R"re(<word xMin="([\d.]+)" yMin="([\d.]+)" xMax="([\d.]+)" yMax="([\d.]+)">([^<]*)</word>)re"));
        for (auto it = word.globalMatch(html); it.hasNext();) {
            const QRegularExpressionMatch m = it.next();
            const double toMm = 25.4 / 72.0;
            out[m.captured(5)] = QPointF((m.captured(1).toDouble() + m.captured(3).toDouble()) / 2 * toMm,
                (m.captured(2).toDouble() + m.captured(4).toDouble()) / 2 * toMm);
        }
        return out;
    }
};

TEST_F(ViewerPrint, PagesAreTurnedToThePaperAtRealSizeAndGetTheirZoomAndOutColourBack)
{
    // A 250 × 150 mm landscape page: turned, it is 150 × 250 mm. The
    // printable area of A4 portrait with 5 mm edges is 200 × 287 mm, and the
    // page is centred in that extent measured from the paper's corner: at
    // (25, 18.5) mm.
    ZWViewReportFrame frame;
    Show(frame,
        Design({PageXml(250, 150, {{"A", 20, 30, 60, 12, "WEST"}, {"B", 170, 110, 60, 12, "EAST"}}),
            PageXml(210, 297, {{"P", 40, 50, 60, 12, "PORTRAIT"}}), PageXml(210, 297, {})}));
    // Page 1 in fit mode, page 2 at 250 %, page 3 not yet fitted.
    frame.PageWnd(1)->SetMode(2.5);
    frame.PageWnd(2)->SetMode(ZW_NO_VALUE);
    frame.PageWnd(0)->SetOutColor(ZWRGB(10, 20, 30));
    const auto pages = [&frame] {
        QStringList out;
        for (int i = 0; i < 3; ++i) {
            const ZWViewTemplateWnd* wnd = frame.PageWnd(i);
            out << QString::number(Factor(wnd), 'g', 17) + u' ' + QString::number(wnd->GetOutColor(), 16)
                    + (wnd->Page().IsFlipped() ? u" turned"_s : QString());
        }
        return out;
    };
    const QStringList before = pages();
    ASSERT_LT(Factor(frame.PageWnd(0)), 0.0);
    ASSERT_FALSE(before.join(u' ').contains(u"turned"_s));
    const QString pdf = PrintToPdf(frame, 1, 3, QPageLayout::Portrait);

    const QString info = Run(u"pdfinfo"_s, {pdf});
    EXPECT_TRUE(info.contains(QRegularExpression(u"Pages:\\s+3\\n"_s))) << info.toStdString();
    EXPECT_TRUE(info.contains(QRegularExpression(u"Page size:\\s+595(\\.\\d+)? x 84[12](\\.\\d+)? pts \\(A4\\)"_s)))
        << info.toStdString();
    EXPECT_TRUE(info.contains(QRegularExpression(u"Title:\\s+Frame test\\n"_s))) << info.toStdString();

    // A card at (x, y) of w × h turned right lands at (150 − y − h, x), h × w.
    const auto expected = [](double x, double y, double w, double h) {
        return QPointF(25.0 + (150.0 - y - h) + h / 2, 18.5 + x + w / 2);
    };
    std::map<QString, QPointF> words = WordCentres(pdf, 1);
    ASSERT_EQ(words.count(u"WEST"_s) + words.count(u"EAST"_s), 2u);
    const QPointF west = words[u"WEST"_s], east = words[u"EAST"_s];
    for (const auto& [got, want] :
        {std::pair(west, expected(20, 30, 60, 12)), std::pair(east, expected(170, 110, 60, 12))}) {
        EXPECT_NEAR(got.x(), want.x(), 1.5);
        EXPECT_NEAR(got.y(), want.y(), 1.5);
    }
    // Real size: 150 mm apart along the page's width, 80 mm across.
    EXPECT_NEAR(east.y() - west.y(), 150.0, 0.5);
    EXPECT_NEAR(west.x() - east.x(), 80.0, 0.5);

    // The portrait page is not turned; larger than the printable area, it
    // lies on the paper as on the page.
    words = WordCentres(pdf, 2);
    ASSERT_EQ(words.count(u"PORTRAIT"_s), 1u);
    EXPECT_NEAR(words[u"PORTRAIT"_s].x(), 40 + 30, 1.5);
    EXPECT_NEAR(words[u"PORTRAIT"_s].y(), 50 + 6, 1.5);

    // Every page window is back in its zoom, out colour and shape, the
    // turned page's card where it was; the zoom selector did not follow.
    EXPECT_EQ(pages(), before);
    EXPECT_DOUBLE_EQ(frame.PageWnd(0)->GetWidth(), 250.0);
    const ZWCardControl* card = frame.PageWnd(0)->Page().Page().FindCard(u"A"_s);
    ASSERT_NE(card, nullptr);
    EXPECT_EQ(QRectF(card->x, card->y, card->width, card->height), QRectF(20.0, 30.0, 60.0, 12.0));
    EXPECT_EQ(frame.ZoomSelector()->currentIndex(), 0);

    // The page range is kept: only the second page; an empty range prints nothing.
    const QString second = PrintToPdf(frame, 2, 2, QPageLayout::Portrait);
    EXPECT_TRUE(Run(u"pdfinfo"_s, {second}).contains(QRegularExpression(u"Pages:\\s+1\\n"_s)));
    EXPECT_TRUE(Run(u"pdftotext"_s, {second, u"-"_s}).contains(u"PORTRAIT"_s));
    QPrinter printer;
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(m_dir.filePath(u"none.pdf"_s));
    EXPECT_FALSE(frame.PrintPages(printer, 3, 2));
}

} // namespace
