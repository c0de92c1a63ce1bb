#include "app/commands/ZWPageEditWindow.h"

#include "editor/widgets/ZWEditTemplateWnd.h"
#include "host/core/ZWLoadString.h"
#include "host/core/ZWTextId.h"

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QFileInfo>
#include <QMessageBox>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTimer>
#include <QToolBar>

namespace {

// Zoom selector entries: fit, then 50 % to 1000 % in steps of 50.
constexpr int ZoomEntries = 20;

} // namespace

ZWPageEditWindow::ZWPageEditWindow(QWidget* parent) : QMainWindow(parent)
{
    m_stackWidget = new QStackedWidget(this);
    setCentralWidget(m_stackWidget);
    BuildToolBars();
    connect(&m_stack, &QUndoStack::cleanChanged, this, &ZWPageEditWindow::UpdateTitle);
    resize(1100, 800);
}

ZWPageEditWindow::~ZWPageEditWindow()
{
    // The pages go before the undo stack whose commands point into them.
    for (ZWEditTemplateWnd* page : m_pages)
        delete page;
}

void ZWPageEditWindow::BuildToolBars()
{
    QToolBar* tools = addToolBar(ZWLoadString(ZWTextId::ToolsBar));
    m_tools = new QActionGroup(this);
    const std::pair<int, int> toolList[] = {
        {ZWEditPage::SelectTool, ZWTextId::ToolSelect},
        {ZWEditPage::LabelTool, ZWTextId::ToolLabel},
        {ZWEditPage::ImageTool, ZWTextId::ToolImage},
        {ZWEditPage::DateTool, ZWTextId::ToolDate},
        {ZWEditPage::FormuleTool, ZWTextId::ToolFormule},
        {ZWEditPage::ConditionedTool, ZWTextId::ToolConditioned},
    };
    for (const auto& [state, text] : toolList) {
        QAction* action = tools->addAction(ZWLoadString(text));
        action->setCheckable(true);
        action->setData(state);
        action->setChecked(state == m_tool);
        m_tools->addAction(action);
        connect(action, &QAction::triggered, this, [this, state = state] { SetTool(state); });
    }

    QToolBar* edit = addToolBar(ZWLoadString(ZWTextId::UndoAction));
    QAction* undo = m_stack.createUndoAction(this, ZWLoadString(ZWTextId::UndoAction));
    QAction* redo = m_stack.createRedoAction(this, ZWLoadString(ZWTextId::RedoAction));
    // The page window takes these keys itself while it has the focus; the
    // shortcuts serve when the focus is elsewhere in the window.
    undo->setShortcut(QKeySequence::Undo);
    redo->setShortcuts({QKeySequence(Qt::CTRL | Qt::Key_Y), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z)});
    edit->addAction(undo);
    edit->addAction(redo);
    QAction* save = edit->addAction(ZWLoadString(ZWTextId::SaveReport));
    save->setShortcut(QKeySequence::Save);
    connect(save, &QAction::triggered, this, [this] {
        QString error;
        if (!Save(&error))
            QMessageBox::warning(this, windowTitle(), error);
    });

    QToolBar* layout = addToolBar(ZWLoadString(ZWTextId::LayoutBar));
    const auto add = [&](int text, auto run) {
        QAction* action = layout->addAction(ZWLoadString(text));
        connect(action, &QAction::triggered, this, [this, run] {
            if (ZWEditTemplateWnd* page = CurrentPage())
                run(page);
        });
    };
    add(ZWTextId::AlignLeft, [](ZWEditTemplateWnd* p) { p->AlignSelectedControls(1); });
    add(ZWTextId::AlignRight, [](ZWEditTemplateWnd* p) { p->AlignSelectedControls(2); });
    add(ZWTextId::AlignTop, [](ZWEditTemplateWnd* p) { p->AlignSelectedControls(4); });
    add(ZWTextId::AlignBottom, [](ZWEditTemplateWnd* p) { p->AlignSelectedControls(8); });
    layout->addSeparator();
    add(ZWTextId::DistributeAcross, [](ZWEditTemplateWnd* p) { p->DistributeSelectedControls(0); });
    add(ZWTextId::DistributeDown, [](ZWEditTemplateWnd* p) { p->DistributeSelectedControls(1); });
    // Ctrl centres each card by itself instead of the group.
    const auto group = [] { return !(QApplication::keyboardModifiers() & Qt::ControlModifier); };
    add(ZWTextId::CentreAcross, [group](ZWEditTemplateWnd* p) { p->JustifySelectedControls(0, group()); });
    add(ZWTextId::CentreDown, [group](ZWEditTemplateWnd* p) { p->JustifySelectedControls(1, group()); });
    layout->addSeparator();
    add(ZWTextId::SameWidth, [](ZWEditTemplateWnd* p) { p->ResizeSelectedControls(true, false); });
    add(ZWTextId::SameHeight, [](ZWEditTemplateWnd* p) { p->ResizeSelectedControls(false, true); });
    add(ZWTextId::SameSize, [](ZWEditTemplateWnd* p) { p->ResizeSelectedControls(true, true); });

    addToolBarBreak();
    QToolBar* pages = addToolBar(ZWLoadString(ZWTextId::Pages));
    m_pageSelector = new QComboBox(pages);
    pages->addWidget(m_pageSelector);
    connect(m_pageSelector, &QComboBox::activated, this, &ZWPageEditWindow::SetCurrentPage);
    QToolBar* zoom = addToolBar(ZWLoadString(ZWTextId::Zoom));
    m_zoomSelector = new QComboBox(zoom);
    m_zoomSelector->addItem(ZWLoadString(ZWTextId::FitToWindow));
    for (int i = 1; i <= ZoomEntries; ++i)
        m_zoomSelector->addItem(QStringLiteral("%1%").arg(i * 50));
    zoom->addWidget(m_zoomSelector);
    connect(m_zoomSelector, &QComboBox::activated, this, &ZWPageEditWindow::ChooseZoom);

    // The page window's context menu shows and hides these bars.
    for (QToolBar* bar : {tools, edit, layout, pages, zoom})
        bar->toggleViewAction()->setText(bar->windowTitle());
}

bool ZWPageEditWindow::Open(const QString& path, QString* error)
{
    if (!m_report.Load(path, error))
        return false;
    m_path = path;
    if (m_report.pages.empty())
        m_report.AddPage();
    m_stack.clear();
    for (ZWEditTemplateWnd* page : m_pages)
        delete page;
    m_pages.clear();
    m_pageSelector->clear();
    QList<QAction*> bars;
    for (QToolBar* bar : findChildren<QToolBar*>())
        bars << bar->toggleViewAction();
    for (size_t i = 0; i < m_report.pages.size(); ++i) {
        auto* page = new ZWEditTemplateWnd(m_stackWidget);
        page->SetUndoStack(&m_stack);
        page->SetPage(m_report.pages[i]);
        page->SetActiveState(m_tool);
        page->SetToolBarActions(bars);
        page->installEventFilter(this);
        connect(page, &ZWEditTemplateWnd::selectionChanged, this, [this, page](ZWCardControl* card) {
            if (page == CurrentPage())
                ShowSelection(card);
        });
        // The status bar follows the selected card's place and size.
        connect(page, &ZWEditTemplateWnd::templateModified, this, [this, page] {
            if (page == CurrentPage())
                ShowSelection(page->GetSelectedControl());
        });
        connect(page, &ZWEditTemplateWnd::zoomChanged, this, &ZWPageEditWindow::ShowZoom);
        connect(page, &ZWEditTemplateWnd::pageShowRequested, this, [this, page] {
            for (size_t j = 0; j < m_pages.size(); ++j)
                if (m_pages[j] == page)
                    SetCurrentPage(int(j));
        });
        m_stackWidget->addWidget(page);
        m_pages.push_back(page);
        m_pageSelector->addItem(ZWLoadString(ZWTextId::PageNumber).arg(i + 1));
    }
    // Every page starts fitted to the window.
    for (ZWEditTemplateWnd* page : m_pages)
        page->SetMode(0);
    SetCurrentPage(0);
    m_pagesChanged = false;
    UpdateTitle();
    return true;
}

bool ZWPageEditWindow::Save(QString* error)
{
    ZWTemplate report;
    report.id = m_report.id;
    report.name = m_report.name;
    report.formules = m_report.formules;
    for (ZWEditTemplateWnd* page : m_pages)
        report.pages.push_back(page->Page());
    if (!report.Save(m_path, error))
        return false;
    m_stack.setClean();
    m_pagesChanged = false;
    UpdateTitle();
    return true;
}

ZWEditTemplateWnd* ZWPageEditWindow::CurrentPage() const
{
    return qobject_cast<ZWEditTemplateWnd*>(m_stackWidget->currentWidget());
}

void ZWPageEditWindow::SetCurrentPage(int index)
{
    if (index < 0 || index >= PageCount())
        return;
    ZWEditTemplateWnd* page = m_pages[size_t(index)];
    if (ZWEditTemplateWnd* old = CurrentPage(); old && old != page)
        old->PauseTimer();
    m_stackWidget->setCurrentWidget(page);
    m_pageSelector->setCurrentIndex(index);
    page->SetActiveState(m_tool);
    page->PlayTimer();
    page->setFocus();
    ShowSelection(page->GetSelectedControl());
    ShowZoom();
}

void ZWPageEditWindow::SetTool(int state)
{
    m_tool = state;
    for (QAction* action : m_tools->actions())
        action->setChecked(action->data().toInt() == state);
    if (ZWEditTemplateWnd* page = CurrentPage()) {
        page->SetActiveState(state);
        page->setFocus();
    }
}

void ZWPageEditWindow::ShowSelection(ZWCardControl* card)
{
    ZWEditTemplateWnd* page = CurrentPage();
    if (!page)
        return;
    const int count = page->GetNumberOfSelectedControls();
    QString text;
    if (card) {
        const auto mm = [](double v) { return QString::number(v, 'f', 2); };
        text = ZWLoadString(ZWTextId::SelectionOne)
                   .arg(card->ElementName(), card->id, mm(card->x), mm(card->y), mm(card->width), mm(card->height));
    } else if (count > 1) {
        text = ZWLoadString(ZWTextId::SelectionMany).arg(count);
    } else {
        text = ZWLoadString(ZWTextId::SelectionNone);
    }
    statusBar()->showMessage(text);
    UpdateTitle();
}

void ZWPageEditWindow::UpdateTitle()
{
    const QString name = m_report.name.isEmpty() ? QFileInfo(m_path).completeBaseName() : m_report.name;
    setWindowTitle(name + (IsModified() ? QStringLiteral(" *") : QString()));
}

void ZWPageEditWindow::ChooseZoom(int entry)
{
    ZWEditTemplateWnd* page = CurrentPage();
    if (!page)
        return;
    if (entry == 0)
        page->SetMode(0);
    else
        page->SetMode(entry * 0.5);
    page->setFocus();
}

void ZWPageEditWindow::ShowZoom()
{
    ZWEditTemplateWnd* page = CurrentPage();
    if (!page)
        return;
    double factor = 0.0;
    page->GetMode(factor);
    const int entry = factor < 0.0 ? 0 : int(std::lround(factor / 0.5));
    m_zoomSelector->setCurrentIndex(entry >= 0 && entry <= ZoomEntries ? entry : -1);
}

bool ZWPageEditWindow::eventFilter(QObject* watched, QEvent* event)
{
    // A fitted page fits again when the window changes size.
    if (event->type() == QEvent::Resize) {
        if (auto* page = qobject_cast<ZWEditTemplateWnd*>(watched)) {
            double factor = 0.0;
            page->GetMode(factor);
            if (factor < 0.0)
                QTimer::singleShot(0, page, [page] { page->SetMode(0); });
        }
    }
    return QMainWindow::eventFilter(watched, event);
}

void ZWPageEditWindow::closeEvent(QCloseEvent* event)
{
    if (!IsModified()) {
        event->accept();
        return;
    }
    const auto answer = QMessageBox::question(this, windowTitle(), ZWLoadString(ZWTextId::SaveQuestion),
        QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, QMessageBox::Save);
    if (answer == QMessageBox::Cancel) {
        event->ignore();
        return;
    }
    if (answer == QMessageBox::Save) {
        QString error;
        if (!Save(&error)) {
            QMessageBox::warning(this, windowTitle(), error);
            event->ignore();
            return;
        }
    }
    event->accept();
}
