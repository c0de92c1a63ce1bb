#include "viewer/widgets/ZWViewReportFrame.h"

#include "host/core/ZWLoadString.h"
#include "host/core/ZWMarentaSetup.h"
#include "host/core/ZWNoValue.h"
#include "host/core/ZWSettingsKeys.h"
#include "host/core/ZWTextId.h"
#include "template/ZWColorRef.h"
#include "viewer/ZWActionTexts.h"
#include "viewer/ZWViewZoom.h"
#include "viewer/widgets/ZWViewTemplateWnd.h"
#include "viewer/widgets/ZWViewerIcons.h"

#include <QAction>
#include <QComboBox>
#include <QPainter>
#include <QPrintDialog>
#include <QPrinter>
#include <QScrollBar>
#include <QSettings>
#include <QSignalBlocker>
#include <QStackedWidget>
#include <QToolBar>

namespace {

// A command of the frame, added to the frame itself so that its keys work
// wherever the focus is in the viewer, whatever tool bar is shown.
QAction* MakeAction(QWidget* frame, int textId, ZWViewerIcons::Kind icon, const QList<QKeySequence>& keys)
{
    auto* action = new QAction(ZWViewerIcons::Icon(icon), ZWLoadString(textId), frame);
    action->setData(textId);
    action->setShortcuts(keys);
    ZWActionTexts::ShowShortcutInToolTip(*action);
    frame->addAction(action);
    return action;
}

} // namespace

ZWViewReportFrame::ZWViewReportFrame(QWidget* parent) : QMainWindow(parent)
{
    // Inside the viewer dialog the frame is a child, not a window of its own.
    if (parent)
        setWindowFlags(Qt::Widget);
    m_stack = new QStackedWidget(this);
    setCentralWidget(m_stack);

    m_pagesBar = addToolBar(ZWLoadString(ZWTextId::Pages));
    m_pagesBar->setObjectName(QStringLiteral("PagesBar"));
    // Page Up and Page Down alone scroll the page (and change it at its ends).
    m_previousPage
        = MakeAction(this, ID_PREVIOUS_PAGE, ZWViewerIcons::PreviousPage, {QKeySequence(Qt::CTRL | Qt::Key_PageUp)});
    m_nextPage = MakeAction(this, ID_NEXT_PAGE, ZWViewerIcons::NextPage, {QKeySequence(Qt::CTRL | Qt::Key_PageDown)});
    m_print = MakeAction(this, ID_FILE_PRINT, ZWViewerIcons::Print, QKeySequence::keyBindings(QKeySequence::Print));
    m_refresh
        = MakeAction(this, ID_VIEW_REFRESH, ZWViewerIcons::Refresh, QKeySequence::keyBindings(QKeySequence::Refresh));
    m_pageSelector = new QComboBox(this);
    m_pageSelector->setObjectName(QStringLiteral("PageSelector"));
    m_pageSelector->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    // A click on a selector leaves the keyboard with the page; Tab still
    // reaches the selectors.
    m_pageSelector->setFocusPolicy(Qt::TabFocus);
    m_pagesBar->addAction(m_previousPage);
    m_pagesBar->addWidget(m_pageSelector);
    m_pagesBar->addAction(m_nextPage);
    m_pagesBar->addSeparator();
    m_pagesBar->addAction(m_print);
    m_pagesBar->addAction(m_refresh);

    m_zoomBar = addToolBar(ZWLoadString(ZWTextId::Zoom));
    m_zoomBar->setObjectName(QStringLiteral("ZoomBar"));
    m_zoomOut = MakeAction(this, ID_ZOOM_OUT, ZWViewerIcons::ZoomOut, QKeySequence::keyBindings(QKeySequence::ZoomOut));
    // Ctrl+= as well: the "+" of most keyboards needs Shift.
    QList<QKeySequence> zoomIn = QKeySequence::keyBindings(QKeySequence::ZoomIn);
    zoomIn << QKeySequence(Qt::CTRL | Qt::Key_Equal);
    m_zoomIn = MakeAction(this, ID_ZOOM_IN, ZWViewerIcons::ZoomIn, zoomIn);
    m_zoomFit = MakeAction(this, ID_ZOOM_FIT, ZWViewerIcons::ZoomFit, {QKeySequence(Qt::CTRL | Qt::Key_0)});
    m_zoomSelector = new QComboBox(this);
    m_zoomSelector->setObjectName(QStringLiteral("ZoomSelector"));
    m_zoomSelector->setFocusPolicy(Qt::TabFocus);
    m_zoomSelector->addItem(ZWLoadString(ZWTextId::FitToWindow));
    for (int k = 1; k < ZWViewZoom::SelectorEntries; ++k)
        m_zoomSelector->addItem(QString::asprintf("%d%%", k * 50));
    m_zoomBar->addAction(m_zoomOut);
    m_zoomBar->addWidget(m_zoomSelector);
    m_zoomBar->addAction(m_zoomIn);

    connect(m_previousPage, &QAction::triggered, this, &ZWViewReportFrame::OnPreviousPage);
    connect(m_nextPage, &QAction::triggered, this, &ZWViewReportFrame::OnNextPage);
    connect(m_zoomIn, &QAction::triggered, this, &ZWViewReportFrame::OnZoomIn);
    connect(m_zoomOut, &QAction::triggered, this, &ZWViewReportFrame::OnZoomOut);
    connect(m_zoomFit, &QAction::triggered, this, &ZWViewReportFrame::OnZoomFit);
    connect(m_print, &QAction::triggered, this, &ZWViewReportFrame::OnFilePrint);
    connect(m_refresh, &QAction::triggered, this, &ZWViewReportFrame::Refresh);
    connect(m_pageSelector, &QComboBox::activated, this, &ZWViewReportFrame::OnPageSelector);
    connect(m_zoomSelector, &QComboBox::activated, this, &ZWViewReportFrame::OnZoomSelector);

    restoreState(ZWMarentaSetup::instance().OpenSettings()->value(ZWSettingsKeys::ViewReportBars).toByteArray());
    // Bars hidden before the frame was ever shown leave their commands
    // checked; the commands follow the bars from here on.
    for (QToolBar* bar : {m_pagesBar, m_zoomBar})
        bar->toggleViewAction()->setChecked(!bar->isHidden());
    SetTemplate(XmlDocument());
}

ZWViewReportFrame::~ZWViewReportFrame()
{
    SaveBarState();
}

void ZWViewReportFrame::closeEvent(QCloseEvent* event)
{
    SaveBarState();
    QMainWindow::closeEvent(event);
}

void ZWViewReportFrame::SaveBarState()
{
    ZWMarentaSetup::instance().OpenSettings()->setValue(ZWSettingsKeys::ViewReportBars, saveState());
}

QAction* ZWViewReportFrame::Action(int command) const
{
    switch (command) {
    case ID_PREVIOUS_PAGE:
        return m_previousPage;
    case ID_NEXT_PAGE:
        return m_nextPage;
    case ID_ZOOM_IN:
        return m_zoomIn;
    case ID_ZOOM_OUT:
        return m_zoomOut;
    case ID_FILE_PRINT:
    case ID_FILE_PRINT_PREVIEW:
        return m_print;
    case ID_VIEW_REFRESH:
        return m_refresh;
    case ID_ZOOM_FIT:
        return m_zoomFit;
    default:
        return nullptr;
    }
}

QList<QAction*> ZWViewReportFrame::ToolBarActions() const
{
    return {m_pagesBar->toggleViewAction(), m_zoomBar->toggleViewAction()};
}

ZWViewTemplateWnd* ZWViewReportFrame::PageWnd(int index) const
{
    return index >= 0 && index < PageCount() ? m_pages[size_t(index)] : nullptr;
}

ZWViewTemplateWnd* ZWViewReportFrame::CurrentPageWnd() const
{
    return PageWnd(m_current);
}

QString ZWViewReportFrame::DocumentName() const
{
    return m_title.isEmpty() ? ZWLoadString(ZWTextId::UntitledReport) : m_title;
}

bool ZWViewReportFrame::SetTemplate(const XmlDocument& design)
{
    const XmlDocument::XmlNode root = design.Root();
    m_id = root.IsNull() ? QString() : root.Value(QStringLiteral("/id"));
    m_title = root.IsNull() ? QString() : root.Value(QStringLiteral("/name"));
    m_pageSelector->clear();
    for (ZWViewTemplateWnd* page : m_pages) {
        m_stack->removeWidget(page);
        delete page;
    }
    m_pages.clear();

    const std::vector<XmlDocument::XmlNode> pages
        = root.IsNull() ? std::vector<XmlDocument::XmlNode>() : root.Nodes(QStringLiteral("page"));
    const auto addWindow = [this] {
        auto* wnd = new ZWViewTemplateWnd(m_stack);
        wnd->setObjectName(QStringLiteral("Viewer"));
        m_stack->addWidget(wnd);
        wnd->SetMode(0);
        connect(wnd, &ZWViewTemplateWnd::zoomChanged, this, [this, wnd] {
            if (wnd == CurrentPageWnd())
                OnPageZoomChanged();
        });
        connect(wnd, &ZWViewTemplateWnd::zoomRequested, this, [this, wnd](int steps, const QPointF& anchor) {
            if (wnd == CurrentPageWnd())
                ZoomBy(steps, anchor);
        });
        connect(wnd, &ZWViewTemplateWnd::pageEndReached, this, [this, wnd](int direction) {
            if (wnd == CurrentPageWnd())
                OnPageEnd(direction);
        });
        wnd->SetToolBarActions(ToolBarActions());
        m_pages.push_back(wnd);
        return wnd;
    };
    for (size_t i = 0; i < pages.size(); ++i) {
        addWindow()->SetTemplate(pages[i]);
        m_pageSelector->addItem(ZWLoadString(ZWTextId::PageNumber).arg(int(i) + 1));
    }
    if (m_pages.empty())
        addWindow();
    m_current = -1;
    ShowPage(0);
    // Fitted at once, before anything paints it.
    Refresh();
    return true;
}

bool ZWViewReportFrame::SetUserData(const QByteArray& text)
{
    m_userData = text;
    bool ok = true;
    for (ZWViewTemplateWnd* page : m_pages)
        ok = page->SetUserData(text) && ok;
    return ok;
}

void ZWViewReportFrame::ShowPage(int index)
{
    ZWViewTemplateWnd* page = PageWnd(index);
    if (!page)
        return;
    // The keyboard stays with the page: it goes to the new page when the
    // old one had it, or when nothing in the window has it yet (a viewer
    // that has just opened).
    const ZWViewTemplateWnd* old = CurrentPageWnd();
    const QWidget* focus = window()->focusWidget();
    const bool takeFocus = !focus || focus == old || !focus->isVisible();
    m_current = index;
    m_stack->setCurrentWidget(page);
    if (index < m_pageSelector->count())
        m_pageSelector->setCurrentIndex(index);
    if (takeFocus)
        page->setFocus(Qt::OtherFocusReason);
    UpdateCommands();
}

void ZWViewReportFrame::GoToPage(int index, bool atBottom)
{
    ZWViewTemplateWnd* old = CurrentPageWnd();
    ZWViewTemplateWnd* page = PageWnd(index);
    if (!page || page == old)
        return;
    // The zoom the reader chose goes with them: fit stays fit, a fixed
    // factor stays that factor; so does the sideways position.
    double factor = 0.0;
    int across = 0;
    if (old) {
        old->GetMode(factor);
        across = old->horizontalScrollBar()->value();
        const QSignalBlocker block(page);
        page->SetMode(ZWViewZoom::IsFit(factor) ? ZW_NO_VALUE : factor);
    }
    ShowPage(index);
    Refresh();
    page->horizontalScrollBar()->setValue(across);
    if (atBottom)
        page->ScrollToBottom();
    else
        page->ScrollToTop();
}

void ZWViewReportFrame::OnNextPage()
{
    GoToPage(m_current + 1);
}

void ZWViewReportFrame::OnPreviousPage()
{
    GoToPage(m_current - 1);
}

void ZWViewReportFrame::OnPageEnd(int direction)
{
    GoToPage(m_current + direction, direction < 0);
}

void ZWViewReportFrame::OnPageSelector(int index)
{
    if (index < 0 || index == m_current)
        return;
    GoToPage(index);
}

void ZWViewReportFrame::Refresh()
{
    ZWViewTemplateWnd* page = CurrentPageWnd();
    if (!page)
        return;
    setUpdatesEnabled(false);
    // The page window takes the stack's whole area before it is fitted.
    page->setGeometry(m_stack->contentsRect());
    page->AdjustToClient();
    UpdateZoomSelector();
    UpdateCommands();
    setUpdatesEnabled(true);
    page->viewport()->update();
}

void ZWViewReportFrame::ApplyZoom(double factor, const QPointF& anchor)
{
    ZWViewTemplateWnd* page = CurrentPageWnd();
    if (!page || !page->ZoomAt(factor, anchor))
        return;
    UpdateZoomSelector();
    UpdateCommands();
}

void ZWViewReportFrame::ZoomBy(int steps, const QPointF& anchor)
{
    ZWViewTemplateWnd* page = CurrentPageWnd();
    if (!page || steps == 0)
        return;
    double factor = 0.0;
    page->GetMode(factor);
    std::optional<double> next;
    for (int i = 0; i < std::abs(steps); ++i) {
        const std::optional<double> step = steps > 0 ? ZWViewZoom::ZoomIn(factor) : ZWViewZoom::ZoomOut(factor);
        if (!step)
            break;
        factor = *step;
        next = step;
    }
    if (next)
        ApplyZoom(*next, anchor);
}

void ZWViewReportFrame::OnZoomIn()
{
    if (ZWViewTemplateWnd* page = CurrentPageWnd())
        ZoomBy(1, page->Centre());
}

void ZWViewReportFrame::OnZoomOut()
{
    if (ZWViewTemplateWnd* page = CurrentPageWnd())
        ZoomBy(-1, page->Centre());
}

void ZWViewReportFrame::OnZoomFit()
{
    const QSignalBlocker block(m_zoomSelector);
    m_zoomSelector->setCurrentIndex(0);
    OnZoomSelector(0);
}

void ZWViewReportFrame::OnZoomSelector(int index)
{
    ZWViewTemplateWnd* page = CurrentPageWnd();
    if (!page)
        return;
    if (index <= 0) {
        if (page->SetMode(0)) {
            page->InitializeScrollBars(false);
            page->SetMode(0);
        }
    } else {
        const double factor = ZWViewZoom::FactorOfIndex(index);
        double current = 0.0;
        page->GetMode(current);
        if (current != factor)
            page->ZoomAt(factor, page->Centre());
    }
    page->viewport()->update();
    UpdateZoomSelector();
    UpdateCommands();
}

void ZWViewReportFrame::OnPageZoomChanged()
{
    UpdateZoomSelector();
    UpdateCommands();
}

void ZWViewReportFrame::UpdateZoomSelector()
{
    ZWViewTemplateWnd* page = CurrentPageWnd();
    if (!page)
        return;
    double factor = 0.0;
    page->GetMode(factor);
    const QSignalBlocker block(m_zoomSelector);
    m_zoomSelector->setCurrentIndex(ZWViewZoom::SelectorIndex(factor));
}

void ZWViewReportFrame::UpdateCommands()
{
    ZWViewTemplateWnd* page = CurrentPageWnd();
    double factor = 0.0;
    if (page)
        page->GetMode(factor);
    m_previousPage->setEnabled(page && m_current > 0);
    m_nextPage->setEnabled(page && m_current + 1 < PageCount());
    m_zoomIn->setEnabled(page && ZWViewZoom::CanZoomIn(factor));
    m_zoomOut->setEnabled(page && ZWViewZoom::CanZoomOut(factor));
    m_zoomFit->setEnabled(page != nullptr);
    m_print->setEnabled(page != nullptr);
    m_pageSelector->setEnabled(PageCount() > 1);
}

void ZWViewReportFrame::OnFilePrint()
{
    if (!CurrentPageWnd())
        return;
    QPrinter printer(QPrinter::HighResolution);
    printer.setDocName(DocumentName());
    printer.setFromTo(1, PageCount());
    QPrintDialog dialog(&printer, this);
    dialog.setMinMax(1, PageCount());
    dialog.setOption(QAbstractPrintDialog::PrintPageRange, true);
    if (ExecDialog(dialog) != QDialog::Accepted)
        return;
    int first = printer.fromPage();
    int last = printer.toPage();
    if (printer.printRange() != QPrinter::PageRange || first <= 0 || last <= 0) {
        first = 1;
        last = PageCount();
    }
    PrintPages(printer, first, last);
}

bool ZWViewReportFrame::PrintPages(QPrinter& printer, int first, int last)
{
    first = std::max(first, 1);
    last = std::min(last, PageCount());
    if (first > last)
        return false;
    printer.setDocName(DocumentName());
    QPainter painter;
    if (!painter.begin(&printer))
        return false;
    // Where the printable area begins on the paper.
    const QPointF offset
        = printer.pageRect(QPrinter::DevicePixel).topLeft() - printer.paperRect(QPrinter::DevicePixel).topLeft();
    for (int number = first; number <= last; ++number) {
        if (number > first && !printer.newPage())
            break;
        ZWViewTemplateWnd* page = m_pages[size_t(number - 1)];
        // The selectors and scroll bars must not follow the page's short
        // trip to real size.
        const QSignalBlocker block(page);
        double factor = 0.0;
        page->GetMode(factor);
        page->SetMode(1);
        const quint32 out = page->GetOutColor();
        page->SetOutColor(ZW_NO_COLOR);
        page->Print(painter, offset);
        page->SetOutColor(out);
        double now = 0.0;
        page->GetMode(now);
        if (now != factor)
            page->SetMode(factor);
    }
    return painter.end();
}

int ZWViewReportFrame::ExecDialog(QDialog& dialog)
{
    return dialog.exec();
}
