#include "editor/widgets/ZWEditorFrame.h"

#include "editor/ZWPropertyEdit.h"
#include "editor/ZWRecovery.h"
#include "editor/widgets/ZWEditTemplateWnd.h"
#include "editor/widgets/ZWPropertyPanel.h"
#include "formula/ZWFormulaLibrary.h"
#include "formula/ZWFormuleCheck.h"
#include "formula/widgets/CDlgFormules.h"
#include "host/core/ZWGuid.h"
#include "host/core/ZWLoadString.h"
#include "host/core/ZWMarentaSetup.h"
#include "host/core/ZWSettingsKeys.h"
#include "host/core/ZWTextId.h"
#include "template/widgets/CDlgAddRemoveStyle.h"
#include "viewer/ZWReportFiles.h"
#include "viewer/ZWViewZoom.h"
#include "viewer/widgets/CDlgInformesList.h"

#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QDir>
#include <QDockWidget>
#include <QFile>
#include <QFileInfo>
#include <QMenuBar>
#include <QMessageBox>
#include <QSettings>
#include <QStackedWidget>
#include <QToolBar>

namespace {

QString Text(int id)
{
    return ZWLoadString(id);
}

} // namespace

ZWEditorFrame::ZWEditorFrame(QWidget* parent) : QMainWindow(parent)
{
    // A main window is always made a window of its own; inside the editor
    // dialog it is a plain child.
    if (parent)
        setWindowFlags(Qt::Widget);
    m_stackWidget = new QStackedWidget(this);
    setCentralWidget(m_stackWidget);
    m_panel = new ZWPropertyPanel(this);
    // A formula card is checked against the report's own library, with the
    // values of the logged data.
    m_panel->formulaCheck = [this](const QString& text) {
        std::vector<ZWBasicString> names, texts;
        ZWFormulaLibrary::Read(m_formules, names, texts);
        return ZWFormuleCheck::Evaluate(ZWBasicString(), text, names, texts, -1, false).text;
    };
    m_panel->formulaLibrary = [this] { return &m_formules; };
    // The dates a date card can show come from the fields document.
    m_panel->dateFields = [] {
        XmlDocument fields;
        CreateDatabaseFields(fields);
        std::vector<std::pair<QString, QString>> dates;
        for (const XmlDocument::XmlNode& field : fields.Root().Nodes(QStringLiteral("field")))
            if (field.Value(QStringLiteral("type")) == u"date")
                dates.emplace_back(field.Value(QStringLiteral("id")), field.Value(QStringLiteral("name")));
        return dates;
    };
    m_panel->formulaNames = [this] {
        std::vector<ZWBasicString> names, texts;
        ZWFormulaLibrary::Read(m_formules, names, texts);
        return QStringList(names.begin(), names.end());
    };
    BuildActions();
    BuildBars();
    BuildMenus();
    setDockNestingEnabled(true);
    if (const QByteArray state
        = ZWMarentaSetup::instance().OpenSettings()->value(ZWSettingsKeys::ReportBars).toByteArray();
        !state.isEmpty())
        restoreState(state);

    connect(&m_stack, &QUndoStack::indexChanged, this, [this] {
        if (ZWEditTemplateWnd* page = CurrentPage()) {
            page->SetRedrawAll();
            page->viewport()->update();
        }
        m_panel->Refresh();
        UpdateActions();
    });
    connect(&m_stack, &QUndoStack::cleanChanged, this, [this] {
        emit modifiedChanged(IsModified());
        UpdateCaption();
    });
    connect(m_panel, &ZWPropertyPanel::edited, this, [this] {
        if (ZWEditTemplateWnd* page = CurrentPage()) {
            // A page's size may have changed: refit and redraw.
            double factor = 0;
            page->GetMode(factor);
            if (factor < 0)
                page->SetMode(0);
            page->InitializeScrollBars(false);
            page->SetRedrawAll();
            page->viewport()->update();
        }
    });
    m_recoveryTimer.setInterval(60'000);
    connect(&m_recoveryTimer, &QTimer::timeout, this, &ZWEditorFrame::WriteRecovery);
    ResetToNew();
}

ZWEditorFrame::~ZWEditorFrame()
{
    ZWMarentaSetup::instance().OpenSettings()->setValue(ZWSettingsKeys::ReportBars, saveState());
    m_panel->SetEdit(nullptr);
    m_propertyEdit.reset();
    m_stack.clear();
}

QAction* ZWEditorFrame::NewAction(int command, int textId, const QKeySequence& key)
{
    auto* action = new QAction(Text(textId), this);
    if (!key.isEmpty())
        action->setShortcut(key);
    m_actions[command] = action;
    return action;
}

QAction* ZWEditorFrame::Action(int command) const
{
    const auto it = m_actions.find(command);
    return it == m_actions.end() ? nullptr : it->second;
}

void ZWEditorFrame::BuildActions()
{
    m_tools = new QActionGroup(this);
    const std::pair<int, int> tools[] = {{32488, 2}, {32496, 0}, {32497, 1}, {32498, 3}, {32499, 4}, {32489, 8},
        {ZWTextId::ToolChart, ZWEditPage::ChartTool}, {ZWTextId::ToolTable, ZWEditPage::TableTool}};
    const int toolTexts[] = {ZWTextId::ToolSelect, ZWTextId::ToolLabel, ZWTextId::ToolImage, ZWTextId::ToolDate,
        ZWTextId::ToolFormule, ZWTextId::ToolConditioned, ZWTextId::ToolChart, ZWTextId::ToolTable};
    for (size_t i = 0; i < std::size(tools); ++i) {
        QAction* action = NewAction(tools[i].first, toolTexts[i]);
        action->setCheckable(true);
        action->setData(tools[i].second);
        m_tools->addAction(action);
        connect(action, &QAction::triggered, this, [this, state = tools[i].second] { SetTool(state); });
    }

    const auto onPage = [this](int command, int textId, std::function<void(ZWEditTemplateWnd&)> run) {
        QAction* action = NewAction(command, textId);
        connect(action, &QAction::triggered, this, [this, run] {
            if (ZWEditTemplateWnd* page = CurrentPage())
                run(*page);
        });
    };
    onPage(32492, ZWTextId::CentreAcross, [](ZWEditTemplateWnd& p) {
        p.JustifySelectedControls(0, !(QApplication::keyboardModifiers() & Qt::ControlModifier));
    });
    onPage(32493, ZWTextId::CentreDown, [](ZWEditTemplateWnd& p) {
        p.JustifySelectedControls(1, !(QApplication::keyboardModifiers() & Qt::ControlModifier));
    });
    onPage(32494, ZWTextId::SameWidth, [](ZWEditTemplateWnd& p) { p.ResizeSelectedControls(true, false); });
    onPage(32495, ZWTextId::SameHeight, [](ZWEditTemplateWnd& p) { p.ResizeSelectedControls(false, true); });
    onPage(32500, ZWTextId::SameSize, [](ZWEditTemplateWnd& p) { p.ResizeSelectedControls(true, true); });
    onPage(32501, ZWTextId::DistributeAcross, [](ZWEditTemplateWnd& p) { p.DistributeSelectedControls(0); });
    onPage(32502, ZWTextId::DistributeDown, [](ZWEditTemplateWnd& p) { p.DistributeSelectedControls(1); });
    onPage(32503, ZWTextId::AlignLeft, [](ZWEditTemplateWnd& p) { p.AlignSelectedControls(1); });
    onPage(32504, ZWTextId::AlignRight, [](ZWEditTemplateWnd& p) { p.AlignSelectedControls(2); });
    onPage(32505, ZWTextId::AlignTop, [](ZWEditTemplateWnd& p) { p.AlignSelectedControls(4); });
    onPage(32506, ZWTextId::AlignBottom, [](ZWEditTemplateWnd& p) { p.AlignSelectedControls(8); });
    onPage(37190, ZWTextId::Copy, [](ZWEditTemplateWnd& p) { p.ControlCopy(); });
    onPage(37191, ZWTextId::Cut, [](ZWEditTemplateWnd& p) { p.ControlCut(); });
    onPage(37192, ZWTextId::Paste, [](ZWEditTemplateWnd& p) { p.ControlPaste(); });
    onPage(37193, ZWTextId::DeleteCards, [](ZWEditTemplateWnd& p) { p.DeleteSelectedControls(); });
    Action(37190)->setShortcut(QKeySequence::Copy);
    Action(37191)->setShortcut(QKeySequence::Cut);
    Action(37192)->setShortcut(QKeySequence::Paste);
    Action(37193)->setShortcut(QKeySequence::Delete);
    // The page window handles these keys itself when it has the focus; the
    // shortcuts serve the menus and the other widgets of the frame.
    for (int command : {37190, 37191, 37192, 37193})
        Action(command)->setShortcutContext(Qt::WidgetWithChildrenShortcut);

    connect(NewAction(32513, ZWTextId::NewPage), &QAction::triggered, this, &ZWEditorFrame::OnNewPage);
    connect(NewAction(32514, ZWTextId::DeletePage), &QAction::triggered, this, &ZWEditorFrame::OnDeletePage);
    connect(NewAction(32515, ZWTextId::PreviousPage, QKeySequence(Qt::CTRL | Qt::Key_PageUp)), &QAction::triggered,
        this, [this] { SetCurrentPage(m_current - 1); });
    connect(NewAction(32516, ZWTextId::NextPage, QKeySequence(Qt::CTRL | Qt::Key_PageDown)), &QAction::triggered, this,
        [this] { SetCurrentPage(m_current + 1); });
    connect(
        NewAction(32520, ZWTextId::ZoomIn, QKeySequence::ZoomIn), &QAction::triggered, this, &ZWEditorFrame::OnZoomIn);
    connect(NewAction(32521, ZWTextId::ZoomOut, QKeySequence::ZoomOut), &QAction::triggered, this,
        &ZWEditorFrame::OnZoomOut);
    connect(NewAction(32405, ZWTextId::FitToWindow, QKeySequence(Qt::CTRL | Qt::Key_0)), &QAction::triggered, this,
        [this] { OnZoomSelector(0); });
    connect(NewAction(32523, ZWTextId::FormulaLibrary), &QAction::triggered, this, [this] {
        if (ZWEditTemplateWnd* page = CurrentPage())
            page->PauseTimer();
        OnFormulaLibrary();
        if (ZWEditTemplateWnd* page = CurrentPage(); page && page->GetNumberOfSelectedControls() > 0)
            page->PlayTimer();
    });
    connect(NewAction(37001, ZWTextId::StylesTitle), &QAction::triggered, this, [this] {
        if (ZWEditTemplateWnd* page = CurrentPage())
            page->PauseTimer();
        CDlgAddRemoveStyle dialog(this);
        // Every label that uses a changed style takes it again at once.
        connect(&dialog, &CDlgAddRemoveStyle::stylesModified, this, &ZWEditorFrame::OnStylesModified);
        dialog.exec();
        if (ZWEditTemplateWnd* page = CurrentPage(); page && page->GetNumberOfSelectedControls() > 0)
            page->PlayTimer();
    });
    connect(NewAction(32524, ZWTextId::Landscape), &QAction::triggered, this, [this] { SetOrientation(0); });
    connect(NewAction(32525, ZWTextId::Portrait), &QAction::triggered, this, [this] { SetOrientation(1); });

    connect(NewAction(32507, ZWTextId::EditorNewReport, QKeySequence::New), &QAction::triggered, this,
        &ZWEditorFrame::OnNewReport);
    connect(NewAction(32508, ZWTextId::OpenReport, QKeySequence::Open), &QAction::triggered, this,
        &ZWEditorFrame::OnOpenReport);
    connect(NewAction(32509, ZWTextId::SaveReport, QKeySequence::Save), &QAction::triggered, this, [this] {
        if (IsModified() || m_name.isEmpty())
            SaveReport();
    });
    connect(NewAction(37180, ZWTextId::SaveReportAs, QKeySequence::SaveAs), &QAction::triggered, this,
        [this] { SaveReport(true); });
    connect(NewAction(32510, ZWTextId::DeleteReport), &QAction::triggered, this, &ZWEditorFrame::OnDeleteReport);
    connect(NewAction(37198, ZWTextId::PreviewReport, QKeySequence(Qt::CTRL | Qt::Key_P)), &QAction::triggered, this,
        &ZWEditorFrame::previewRequested);
    connect(NewAction(37187, ZWTextId::CloseEditor, QKeySequence::Close), &QAction::triggered, this,
        &ZWEditorFrame::closeRequested);

    QAction* undo = m_stack.createUndoAction(this, Text(ZWTextId::Undo));
    undo->setShortcuts({QKeySequence::Undo});
    QAction* redo = m_stack.createRedoAction(this, Text(ZWTextId::Redo));
    redo->setShortcuts({QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z), QKeySequence(Qt::CTRL | Qt::Key_Y)});
    m_actions[37188] = undo;
    m_actions[37189] = redo;
}

void ZWEditorFrame::BuildBars()
{
    const auto bar = [this](int titleId, const char* name, std::initializer_list<int> commands) {
        QToolBar* toolBar = addToolBar(Text(titleId));
        toolBar->setObjectName(QString::fromLatin1(name));
        for (int command : commands) {
            if (command == 0)
                toolBar->addSeparator();
            else
                toolBar->addAction(Action(command));
        }
        m_barActions << toolBar->toggleViewAction();
        return toolBar;
    };
    bar(ZWTextId::ToolsBar, "tools",
        {32488, 32496, 32497, 32498, 32499, 32489, int(ZWTextId::ToolChart), int(ZWTextId::ToolTable)});
    bar(ZWTextId::LayoutBar, "layout",
        {32492, 32493, 0, 32494, 32495, 32500, 0, 32501, 32502, 0, 32503, 32504, 32505, 32506});
    // Two rows: the card tools and layout, then pages, zoom and report.
    addToolBarBreak();
    QToolBar* pages = bar(ZWTextId::Pages, "pages", {32513, 32514, 32516, 32515});
    m_pageSelector = new QComboBox(pages);
    m_pageSelector->setObjectName(QStringLiteral("pageSelector"));
    pages->addWidget(m_pageSelector);
    connect(m_pageSelector, &QComboBox::activated, this, &ZWEditorFrame::SetCurrentPage);
    QToolBar* zoom = bar(ZWTextId::Zoom, "zoom", {32520, 32521});
    m_zoomSelector = new QComboBox(zoom);
    m_zoomSelector->setObjectName(QStringLiteral("zoomSelector"));
    m_zoomSelector->addItem(Text(ZWTextId::FitToWindow));
    for (int entry = 1; entry < ZWViewZoom::SelectorEntries; ++entry)
        m_zoomSelector->addItem(QStringLiteral("%1%").arg(entry * 50));
    m_zoomSelector->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    zoom->addWidget(m_zoomSelector);
    connect(m_zoomSelector, &QComboBox::activated, this, &ZWEditorFrame::OnZoomSelector);
    bar(ZWTextId::ReportBar, "report", {32523, 0, 32524, 32525});

    auto* dock = new QDockWidget(Text(ZWTextId::PropertiesPanel), this);
    dock->setObjectName(QStringLiteral("properties"));
    dock->setWidget(m_panel);
    addDockWidget(Qt::RightDockWidgetArea, dock);
    m_barActions << dock->toggleViewAction();
}

void ZWEditorFrame::BuildMenus()
{
    QMenu* file = menuBar()->addMenu(Text(ZWTextId::MenuFile));
    for (int command : {32507, 32508, 32509, 37180, 0, 37198, 0, 32510, 0, 37187}) {
        if (command == 0)
            file->addSeparator();
        else
            file->addAction(Action(command));
    }
    QMenu* edit = menuBar()->addMenu(Text(ZWTextId::MenuEdit));
    for (int command : {37188, 37189, 0, 37191, 37190, 37192, 37193})
        command == 0 ? (void)edit->addSeparator() : edit->addAction(Action(command));
    QMenu* view = menuBar()->addMenu(Text(ZWTextId::EditorMenuView));
    for (int command : {32520, 32521, 32405})
        view->addAction(Action(command));
    view->addSeparator();
    for (QAction* action : m_barActions)
        view->addAction(action);
    QMenu* page = menuBar()->addMenu(Text(ZWTextId::MenuPage));
    for (int command : {32513, 32514, 32515, 32516, 0, 32524, 32525, 0, 32523, 37001})
        command == 0 ? (void)page->addSeparator() : page->addAction(Action(command));
}

void ZWEditorFrame::CreateDatabaseFields(XmlDocument& document)
{
    document.Reset();
    document.Create(QStringLiteral("fields"));
    XmlDocument::XmlNode root = document.Root();
    for (const char* kind : {"labels", "dates", "images", "formules", "conditioned"})
        root.NewChild(QString::fromLatin1(kind), QStringLiteral("T"));
    const std::pair<const char*, int> fields[] = {{"ACTUAL_DATE", ZWTextId::ActualDateField},
        {"BEGIN_DATE", ZWTextId::BeginDateField}, {"END_DATE", ZWTextId::EndDateField}};
    for (const auto& [id, nameId] : fields) {
        XmlDocument::XmlNode field = root.NewChild(QStringLiteral("field"));
        field.NewChild(QStringLiteral("id"), QString::fromLatin1(id));
        field.NewChild(QStringLiteral("name"), ZWLoadString(nameId));
        field.NewChild(QStringLiteral("type"), QStringLiteral("date"));
    }
}

ZWEditTemplateWnd* ZWEditorFrame::Page(int index) const
{
    return index >= 0 && index < PageCount() ? m_pages[size_t(index)] : nullptr;
}

ZWEditTemplateWnd* ZWEditorFrame::AddPage(ZWTemplatePage page)
{
    auto* window = new ZWEditTemplateWnd(m_stackWidget);
    window->setObjectName(QStringLiteral("Template"));
    window->SetUndoStack(&m_stack);
    window->SetLabelSupport(m_support & 1);
    window->SetImageSupport(m_support & 2);
    window->SetDateSupport(m_support & 4);
    window->SetFormuleSupport(m_support & 8);
    // The conditioned card needs one of the other kinds for its
    // alternatives.
    window->SetConditionedSupport((m_support & 16) && (m_support & 15));
    window->SetChartSupport(m_support & ZWEditTemplateWnd::ChartSupport);
    window->SetTableSupport(m_support & ZWEditTemplateWnd::TableSupport);
    window->SetActiveState(m_defaultTool);
    window->SetViewBoundingRectangles(true);
    window->SetPage(std::move(page));
    window->SetToolBarActions(m_barActions);
    m_stackWidget->addWidget(window);
    m_pages.push_back(window);

    connect(window, &ZWEditTemplateWnd::selectionChanged, this, [this, window] {
        if (window == CurrentPage())
            ShowProperties();
    });
    connect(window, &ZWEditTemplateWnd::cardCreated, this, [this, window] {
        if (window == CurrentPage())
            ShowProperties();
    });
    connect(window, &ZWEditTemplateWnd::templateModified, this, [this] {
        m_panel->Refresh();
        UpdateActions();
    });
    connect(window, &ZWEditTemplateWnd::pageShowRequested, this, [this, window] {
        const auto it = std::find(m_pages.begin(), m_pages.end(), window);
        if (it != m_pages.end())
            SetCurrentPage(int(it - m_pages.begin()));
    });
    connect(window, &ZWEditTemplateWnd::toolChanged, this, [this](int state) {
        for (QAction* action : m_tools->actions())
            action->setChecked(action->data().toInt() == state);
    });
    connect(window, &ZWEditTemplateWnd::zoomChanged, this, [this, window](double factor) {
        if (window == CurrentPage())
            m_zoomSelector->setCurrentIndex(ZWViewZoom::SelectorIndex(factor));
    });
    window->SetMode(0);
    return window;
}

void ZWEditorFrame::DestroyPages()
{
    m_panel->SetEdit(nullptr);
    m_propertyEdit.reset();
    // The commands point into the pages.
    m_stack.clear();
    for (ZWEditTemplateWnd* page : m_pages)
        delete page;
    m_pages.clear();
    m_current = -1;
}

void ZWEditorFrame::FillPageSelector()
{
    m_pageSelector->clear();
    for (int i = 0; i < PageCount(); ++i)
        m_pageSelector->addItem(ZWLoadString(ZWTextId::PageNumber).arg(i + 1));
    m_pageSelector->setCurrentIndex(m_current);
}

void ZWEditorFrame::SetCurrentPage(int index)
{
    if (index < 0 || index >= PageCount())
        return;
    if (index != m_current) {
        if (ZWEditTemplateWnd* old = CurrentPage())
            old->PauseTimer();
        m_current = index;
        m_stackWidget->setCurrentWidget(CurrentPage());
        if (m_recovery && IsModified())
            WriteRecovery();
    }
    m_pageSelector->setCurrentIndex(index);
    PageChanged(true);
}

void ZWEditorFrame::PageChanged(bool redraw)
{
    ZWEditTemplateWnd* page = CurrentPage();
    if (!page)
        return;
    double factor = 0;
    page->GetMode(factor);
    m_zoomSelector->setCurrentIndex(ZWViewZoom::SelectorIndex(factor));
    for (QAction* action : m_tools->actions())
        action->setChecked(action->data().toInt() == page->GetActiveState());
    if (redraw) {
        page->SetRedrawAll();
        page->viewport()->update();
    }
    ShowProperties();
    UpdateActions();
}

void ZWEditorFrame::ShowProperties()
{
    ZWEditTemplateWnd* page = CurrentPage();
    if (!page) {
        m_panel->SetEdit(nullptr);
        return;
    }
    if (!m_propertyEdit || &m_propertyEdit->Page() != &page->Page())
        m_propertyEdit = std::make_unique<ZWPropertyEdit>(page->Page(), m_stack);
    m_propertyEdit->SetSelection(page->Edit().SelectedIndices());
    m_panel->SetEdit(m_propertyEdit.get());
    UpdateActions();
}

void ZWEditorFrame::UpdateActions()
{
    ZWEditTemplateWnd* page = CurrentPage();
    const int selected = page ? page->GetNumberOfSelectedControls() : 0;
    for (int command : {32492, 32493, 32501, 32502, 37190, 37191, 37193})
        Action(command)->setEnabled(selected > 0);
    for (int command : {32494, 32495, 32500, 32503, 32504, 32505, 32506})
        Action(command)->setEnabled(selected > 1);
    Action(32514)->setEnabled(PageCount() > 1);
    Action(32515)->setEnabled(m_current > 0);
    Action(32516)->setEnabled(m_current + 1 < PageCount());
    Action(32524)->setEnabled(page && page->GetOrientation() != 0);
    Action(32525)->setEnabled(page && page->GetOrientation() == 0);
    const int support = page ? page->GetSupportMask() : 0;
    const std::pair<int, int> tools[] = {{32496, 1}, {32497, 2}, {32498, 4}, {32499, 8}, {32489, 16},
        {ZWTextId::ToolChart, ZWEditTemplateWnd::ChartSupport}, {ZWTextId::ToolTable, ZWEditTemplateWnd::TableSupport}};
    for (const auto& [command, bit] : tools)
        Action(command)->setEnabled(support & bit);
}

void ZWEditorFrame::OnNewPage()
{
    ZWTemplatePage page;
    AddPage(std::move(page));
    m_modified = true;
    FillPageSelector();
    SetCurrentPage(PageCount() - 1);
    emit modifiedChanged(true);
    UpdateCaption();
}

bool ZWEditorFrame::OnDeletePage()
{
    if (PageCount() < 2) {
        ShowMessage(Text(ZWTextId::OnlyPageNotDeleted));
        return false;
    }
    const int index = m_current;
    m_panel->SetEdit(nullptr);
    m_propertyEdit.reset();
    // The undo steps of the deleted page cannot be replayed.
    m_stack.clear();
    ZWEditTemplateWnd* page = m_pages[size_t(index)];
    m_pages.erase(m_pages.begin() + index);
    delete page;
    m_current = -1;
    m_modified = true;
    FillPageSelector();
    SetCurrentPage(std::min(index, PageCount() - 1));
    emit modifiedChanged(true);
    UpdateCaption();
    return true;
}

void ZWEditorFrame::OnZoomIn()
{
    Zoom(true);
}

void ZWEditorFrame::OnZoomOut()
{
    Zoom(false);
}

void ZWEditorFrame::Zoom(bool in)
{
    ZWEditTemplateWnd* page = CurrentPage();
    if (!page)
        return;
    double factor = 0;
    page->GetMode(factor);
    // The viewer's steps: by halves from 0.5 to 10, from fit to the next
    // step past the fitted factor; nothing beyond the ends.
    const std::optional<double> next = in ? ZWViewZoom::ZoomIn(factor) : ZWViewZoom::ZoomOut(factor);
    if (next && *next != factor) {
        page->SetMode(*next);
        page->InitializeScrollBars(false);
        PageChanged(true);
    }
}

void ZWEditorFrame::OnZoomSelector(int entry)
{
    ZWEditTemplateWnd* page = CurrentPage();
    if (!page)
        return;
    if (entry <= 0) {
        page->SetMode(0);
        page->InitializeScrollBars(false);
        page->SetMode(0);
    } else {
        double factor = 0;
        page->GetMode(factor);
        if (factor != ZWViewZoom::FactorOfIndex(entry))
            page->SetMode(ZWViewZoom::FactorOfIndex(entry));
        page->InitializeScrollBars(false);
    }
    PageChanged(true);
}

void ZWEditorFrame::SetTool(int state)
{
    m_defaultTool = state;
    if (ZWEditTemplateWnd* page = CurrentPage())
        page->SetActiveState(state);
    for (QAction* action : m_tools->actions())
        action->setChecked(action->data().toInt() == state);
}

void ZWEditorFrame::SetSupportMask(int mask)
{
    m_support = mask;
    for (ZWEditTemplateWnd* page : m_pages) {
        page->SetLabelSupport(mask & 1);
        page->SetImageSupport(mask & 2);
        page->SetDateSupport(mask & 4);
        page->SetFormuleSupport(mask & 8);
        page->SetConditionedSupport((mask & 16) && (mask & 15));
        page->SetChartSupport(mask & ZWEditTemplateWnd::ChartSupport);
        page->SetTableSupport(mask & ZWEditTemplateWnd::TableSupport);
    }
    UpdateActions();
}

void ZWEditorFrame::SetOrientation(int orientation)
{
    ZWEditTemplateWnd* page = CurrentPage();
    if (page && page->SetOrientation(orientation)) {
        page->InitializeScrollBars(false);
        m_modified = true;
        emit modifiedChanged(true);
        UpdateCaption();
        PageChanged(true);
    }
}

void ZWEditorFrame::OnStylesModified()
{
    for (ZWEditTemplateWnd* page : m_pages) {
        page->StylesModified();
        page->SetRedrawAll();
    }
    m_panel->Refresh();
    if (ZWEditTemplateWnd* page = CurrentPage())
        page->viewport()->update();
}

void ZWEditorFrame::SetModified(bool modified)
{
    m_modified = modified;
    if (!modified)
        m_stack.setClean();
    emit modifiedChanged(IsModified());
    UpdateCaption();
}

void ZWEditorFrame::UpdateCaption()
{
    const QString name = m_name.isEmpty() ? Text(ZWTextId::UntitledReport) : m_name;
    const QString caption = name + (IsModified() ? QStringLiteral(" *") : QString());
    setWindowTitle(caption);
    emit captionChanged(caption);
}

void ZWEditorFrame::ResetToNew()
{
    DestroyPages();
    m_formules.Reset();
    m_formules.Create(QStringLiteral("formules"));
    AddPage(ZWTemplatePage());
    m_id = guidtow(NewGUID());
    m_name.clear();
    m_path.clear();
    m_current = -1;
    FillPageSelector();
    SetCurrentPage(0);
    SetModified(false);
}

bool ZWEditorFrame::Setup(const QString& path)
{
    XmlDocument document;
    const bool loaded = document.Load(path);
    if (!loaded)
        document.Create(QStringLiteral("design"));
    // A report without an identity was never saved by the designer.
    const bool hasId = !document.Value(QStringLiteral("/id")).isEmpty();
    ZWTemplate report;
    report.Read(document);
    Load(std::move(report), path, !hasId);
    return loaded;
}

void ZWEditorFrame::SetupFromXml(const QByteArray& xml, const QString& path)
{
    XmlDocument document;
    if (!document.Parse(xml))
        document.Create(QStringLiteral("design"));
    ZWTemplate report;
    report.Read(document);
    Load(std::move(report), path, true);
}

void ZWEditorFrame::Load(ZWTemplate report, const QString& path, bool modified)
{
    DestroyPages();
    m_id = report.id;
    m_name = report.name;
    m_path = path;
    m_formules.Reset();
    if (report.HasFormules())
        m_formules.Parse(report.formules.ToXml());
    else
        m_formules.Create(QStringLiteral("formules"));
    for (ZWTemplatePage& page : report.pages)
        AddPage(std::move(page));
    if (m_pages.empty())
        AddPage(ZWTemplatePage());
    m_current = -1;
    FillPageSelector();
    SetCurrentPage(0);
    m_stack.clear();
    m_stack.setClean();
    m_modified = modified;
    emit modifiedChanged(IsModified());
    UpdateCaption();
}

ZWTemplate ZWEditorFrame::ToTemplate() const
{
    ZWTemplate report;
    report.id = m_id;
    report.name = m_name;
    for (const ZWEditTemplateWnd* page : m_pages)
        report.pages.push_back(page->Page());
    if (!m_formules.IsEmpty() && !m_formules.Root().Children().empty())
        report.SetFormules(m_formules.Root());
    return report;
}

QString ZWEditorFrame::ReportPath() const
{
    if (!m_path.isEmpty())
        return m_path;
    if (m_name.isEmpty())
        return QString();
    return ZWMarentaSetup::instance().GetReportDirectory() + m_name + QStringLiteral(".XRPT");
}

QString ZWEditorFrame::RecoveryKey() const
{
    const QString path = ReportPath();
    return path.isEmpty() ? QStringLiteral("new:") + m_id : QFileInfo(path).absoluteFilePath();
}

bool ZWEditorFrame::SaveReport(bool chooseName)
{
    const QString oldKey = RecoveryKey();
    // A report opened by its file is saved there, named after it.
    if (m_name.isEmpty() && !m_path.isEmpty() && !chooseName)
        m_name = QFileInfo(m_path).completeBaseName();
    if (m_name.isEmpty() || chooseName) {
        const QString name = ChooseName();
        if (name.isEmpty())
            return false;
        m_name = name;
        m_path = ZWMarentaSetup::instance().GetReportDirectory() + name + QStringLiteral(".XRPT");
        if (chooseName)
            m_id = guidtow(NewGUID());
    }
    ZWReportFiles::RememberReport(m_name);
    const QString path = ReportPath();
    QDir().mkpath(QFileInfo(path).absolutePath());
    QString error;
    if (!ToTemplate().Save(path, &error)) {
        ShowMessage(ZWLoadString(ZWTextId::ReportSaveFailed).arg(error));
        return false;
    }
    if (m_recovery) {
        m_recovery->Remove(oldKey);
        m_recovery->Remove(RecoveryKey());
    }
    SetModified(false);
    UpdateActions();
    return true;
}

bool ZWEditorFrame::MaybeSave(bool offerCancel)
{
    if (!IsModified())
        return true;
    if (ZWEditTemplateWnd* page = CurrentPage())
        page->PauseTimer();
    const int answer = AskSave(offerCancel);
    if (answer == QMessageBox::Cancel)
        return false;
    if (answer == QMessageBox::Yes)
        return SaveReport();
    // No: the unsaved state is given up knowingly.
    if (m_recovery)
        m_recovery->Remove(RecoveryKey());
    return true;
}

void ZWEditorFrame::OnNewReport()
{
    if (!MaybeSave(true))
        return;
    ResetToNew();
}

void ZWEditorFrame::OnOpenReport()
{
    if (!MaybeSave(true))
        return;
    const QString name = ChooseReport();
    if (name.isEmpty())
        return;
    if (Setup(ZWReportFiles::ReportPath(name)))
        ZWReportFiles::RememberReport(name);
}

void ZWEditorFrame::OnDeleteReport()
{
    // The report to delete is chosen in the report list, the one being
    // edited preselected.
    const QString name = ChooseReport();
    if (name.isEmpty())
        return;
    const QString path = ZWReportFiles::ReportPath(name);
    if (!QFileInfo::exists(path))
        return;
    const QString backup = ZWTemplate::BackupPath(path);
    if (!Confirm(ZWLoadString(ZWTextId::DeleteReportQuestion).arg(name, QFileInfo(backup).fileName())))
        return;
    // The deleted report stays as its backup, so the deletion can be undone
    // by hand.
    QFile::remove(backup);
    if (!QFile::rename(path, backup)) {
        ShowMessage(ZWLoadString(ZWTextId::ReportDeleteFailed).arg(path));
        return;
    }
    // The report being edited was deleted: what is on screen is a report
    // never saved.
    if (QFileInfo(path).absoluteFilePath() == QFileInfo(ReportPath()).absoluteFilePath()) {
        if (m_recovery)
            m_recovery->Remove(RecoveryKey());
        m_path.clear();
        m_name.clear();
        m_modified = true;
        emit modifiedChanged(true);
        UpdateCaption();
        UpdateActions();
    }
}

void ZWEditorFrame::SetRecovery(std::shared_ptr<ZWRecovery> recovery)
{
    m_recovery = std::move(recovery);
    if (m_recovery)
        m_recoveryTimer.start();
    else
        m_recoveryTimer.stop();
}

void ZWEditorFrame::WriteRecovery()
{
    if (!m_recovery)
        return;
    if (IsModified())
        m_recovery->Write(RecoveryKey(), ReportPath(), ToTemplate().ToXml());
    else
        m_recovery->Remove(RecoveryKey());
}

int ZWEditorFrame::AskSave(bool offerCancel)
{
    QMessageBox::StandardButtons buttons = QMessageBox::Yes | QMessageBox::No;
    if (offerCancel)
        buttons |= QMessageBox::Cancel;
    return QMessageBox::question(this, windowTitle(), Text(ZWTextId::SaveQuestion), buttons);
}

QString ZWEditorFrame::ChooseName()
{
    CDlgInformesList list(this);
    list.SetType(CDlgInformesList::NewName);
    list.SetName(m_name);
    if (list.exec() != QDialog::Accepted || list.GetNumberOfNames() == 0)
        return QString();
    QString name;
    list.GetName(name, 0);
    return name;
}

QString ZWEditorFrame::ChooseReport()
{
    CDlgInformesList list(this);
    list.SetType(CDlgInformesList::One);
    list.SetName(m_name);
    if (list.exec() != QDialog::Accepted || list.GetNumberOfNames() == 0)
        return QString();
    QString name;
    list.GetName(name, 0);
    return name;
}

bool ZWEditorFrame::Confirm(const QString& text)
{
    return QMessageBox::question(this, windowTitle(), text) == QMessageBox::Yes;
}

void ZWEditorFrame::ShowMessage(const QString& text)
{
    QMessageBox::warning(this, windowTitle(), text);
}

void ZWEditorFrame::OnFormulaLibrary()
{}

void ZWEditorFrame::closeEvent(QCloseEvent* event)
{
    if (MaybeSave(true))
        event->accept();
    else
        event->ignore();
}
