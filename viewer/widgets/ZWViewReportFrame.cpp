#include "viewer/widgets/ZWViewReportFrame.h"

#include "host/core/ZWLoadString.h"
#include "host/core/ZWMarentaSetup.h"
#include "host/core/ZWSettingsKeys.h"
#include "host/core/ZWTextId.h"
#include "template/ZWColorRef.h"
#include "viewer/ZWViewZoom.h"
#include "viewer/widgets/ZWViewTemplateWnd.h"
#include "viewer/widgets/ZWViewerIcons.h"

#include <QAction>
#include <QComboBox>
#include <QPainter>
#include <QPrintDialog>
#include <QPrinter>
#include <QSettings>
#include <QSignalBlocker>
#include <QStackedWidget>
#include <QToolBar>

namespace {

QAction* MakeAction(QObject* parent, int textId, ZWViewerIcons::Kind icon, const QKeySequence& key)
{
    auto* action = new QAction(ZWViewerIcons::Icon(icon), ZWLoadString(textId), parent);
    action->setData(textId);
    if (!key.isEmpty()) {
        action->setShortcut(key);
        action->setToolTip(QStringLiteral("%1 (%2)").arg(action->text(), key.toString(QKeySequence::NativeText)));
    }
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
    m_previousPage = MakeAction(this, ID_PREVIOUS_PAGE, ZWViewerIcons::PreviousPage, QKeySequence(Qt::Key_PageUp));
    m_nextPage = MakeAction(this, ID_NEXT_PAGE, ZWViewerIcons::NextPage, QKeySequence(Qt::Key_PageDown));
    m_print = MakeAction(this, ID_FILE_PRINT, ZWViewerIcons::Print, QKeySequence::Print);
    m_refresh = MakeAction(this, ID_VIEW_REFRESH, ZWViewerIcons::Refresh, QKeySequence::Refresh);
    m_pageSelector = new QComboBox(this);
    m_pageSelector->setObjectName(QStringLiteral("PageSelector"));
    m_pageSelector->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    m_pagesBar->addAction(m_previousPage);
    m_pagesBar->addWidget(m_pageSelector);
    m_pagesBar->addAction(m_nextPage);
    m_pagesBar->addSeparator();
    m_pagesBar->addAction(m_print);
    m_pagesBar->addAction(m_refresh);

    m_zoomBar = addToolBar(ZWLoadString(ZWTextId::Zoom));
    m_zoomBar->setObjectName(QStringLiteral("ZoomBar"));
    m_zoomOut = MakeAction(this, ID_ZOOM_OUT, ZWViewerIcons::ZoomOut, QKeySequence::ZoomOut);
    m_zoomIn = MakeAction(this, ID_ZOOM_IN, ZWViewerIcons::ZoomIn, QKeySequence::ZoomIn);
    m_zoomSelector = new QComboBox(this);
    m_zoomSelector->setObjectName(QStringLiteral("ZoomSelector"));
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
    connect(m_print, &QAction::triggered, this, &ZWViewReportFrame::OnFilePrint);
    connect(m_refresh, &QAction::triggered, this, &ZWViewReportFrame::Refresh);
    connect(m_pageSelector, &QComboBox::activated, this, &ZWViewReportFrame::OnPageSelector);
    connect(m_zoomSelector, &QComboBox::activated, this, &ZWViewReportFrame::OnZoomSelector);

    restoreState(ZWMarentaSetup::instance().OpenSettings()->value(ZWSettingsKeys::ViewReportBars).toByteArray());
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
    default:
        return nullptr;
    }
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
        connect(wnd, &ZWViewTemplateWnd::zoomRequested, this, [this](int steps) {
            for (int i = 0; i < std::abs(steps); ++i)
                steps > 0 ? OnZoomIn() : OnZoomOut();
        });
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
    m_current = index;
    m_stack->setCurrentWidget(page);
    if (index < m_pageSelector->count())
        m_pageSelector->setCurrentIndex(index);
    UpdateCommands();
}

void ZWViewReportFrame::OnNextPage()
{
    if (m_current + 1 >= PageCount())
        return;
    ShowPage(m_current + 1);
    Refresh();
}

void ZWViewReportFrame::OnPreviousPage()
{
    if (m_current <= 0)
        return;
    ShowPage(m_current - 1);
    Refresh();
}

void ZWViewReportFrame::OnPageSelector(int index)
{
    if (index < 0 || index == m_current)
        return;
    ShowPage(index);
    Refresh();
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

void ZWViewReportFrame::ApplyZoom(double factor)
{
    ZWViewTemplateWnd* page = CurrentPageWnd();
    if (!page || !page->SetMode(factor))
        return;
    // The first setting can add or remove a scroll bar and so change the area.
    page->InitializeScrollBars(false);
    page->InitializeScrollBars(false);
    page->viewport()->update();
    UpdateZoomSelector();
    UpdateCommands();
}

void ZWViewReportFrame::OnZoomIn()
{
    ZWViewTemplateWnd* page = CurrentPageWnd();
    if (!page)
        return;
    double factor = 0.0;
    page->GetMode(factor);
    if (const std::optional<double> next = ZWViewZoom::ZoomIn(factor))
        ApplyZoom(*next);
}

void ZWViewReportFrame::OnZoomOut()
{
    ZWViewTemplateWnd* page = CurrentPageWnd();
    if (!page)
        return;
    double factor = 0.0;
    page->GetMode(factor);
    if (const std::optional<double> next = ZWViewZoom::ZoomOut(factor))
        ApplyZoom(*next);
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
        if (current != factor) {
            page->SetMode(factor);
            page->InitializeScrollBars(false);
            page->InitializeScrollBars(false);
        }
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
    if (dialog.exec() != QDialog::Accepted)
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
