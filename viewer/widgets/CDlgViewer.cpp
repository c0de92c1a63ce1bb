#include "viewer/widgets/CDlgViewer.h"

#include "host/core/ZWLoadString.h"
#include "host/core/ZWLocale.h"
#include "host/core/ZWMarentaSetup.h"
#include "host/core/ZWSettingsKeys.h"
#include "host/core/ZWTextId.h"
#include "host/widgets/CDlgProgress.h"
#include "host/widgets/CGoToDateDlg.h"
#include "viewer/ZWActionTexts.h"
#include "viewer/ZWValueExport.h"
#include "viewer/ZWWindowPlacement.h"
#include "viewer/widgets/CDlgUserInterval.h"
#include "viewer/widgets/ZWViewReportFrame.h"
#include "viewer/widgets/ZWViewerIcons.h"

#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QGuiApplication>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QScreen>
#include <QSettings>
#include <QThread>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>
#include <QWindow>
#include <memory>

namespace {

// The units of the group-by menu in their order, with their texts and keys.
struct Unit
{
    int id;
    int textId;
    int key;
};
constexpr Unit kUnits[] = {
    {ID_GROUPBY_USER, ZWTextId::UserIntervalCommand, Qt::Key_6},
    {ID_GROUPBY_DAY, ZWTextId::UnitDay, Qt::Key_1},
    {ID_GROUPBY_WEEK, ZWTextId::UnitWeek, Qt::Key_2},
    {ID_GROUPBY_MONTH, ZWTextId::UnitMonth, Qt::Key_3},
    {ID_GROUPBY_3MONTH, ZWTextId::UnitQuarter, Qt::Key_4},
    {ID_GROUPBY_YEAR, ZWTextId::UnitYear, Qt::Key_5},
};

// The size the viewer opens with the first time (the screen permitting).
constexpr QSize kDefaultSize(1000, 860);

QString ShortDateTime(const ZWDateTime& t)
{
    if (!t.IsValid())
        return QString();
    return LocaleInformationWide().locale.toString(t.ToLocalQDateTime(), QLocale::ShortFormat);
}

} // namespace

CDlgViewer::CDlgViewer(QWidget* parent) : QDialog(parent)
{
    setWindowFlags(Qt::Window | Qt::WindowMinMaxButtonsHint | Qt::WindowCloseButtonHint);
    setSizeGripEnabled(true);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    InitializeToolBar();
    layout->addWidget(m_toolBar);
    // What the last gathering found that the values do not tell (no data in
    // the period, an empty database); hidden when there is nothing to say.
    m_notice = new QLabel(this);
    m_notice->setObjectName(QStringLiteral("Notice"));
    m_notice->setWordWrap(true);
    m_notice->setContentsMargins(8, 4, 8, 4);
    m_notice->hide();
    layout->addWidget(m_notice);
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    m_frame = new ZWViewReportFrame(this);
    QGuiApplication::restoreOverrideCursor();
    layout->addWidget(m_frame, 1);
    connect(m_frame->Action(ZWViewReportFrame::ID_VIEW_REFRESH), &QAction::triggered, this, &CDlgViewer::OnRefresh);
    InitializeMenus();
    layout->setMenuBar(m_menuBar);
    RestorePlacement();
    UpdateCommands();
    UpdateTitle();
}

CDlgViewer::~CDlgViewer() = default;

void CDlgViewer::InitializeToolBar()
{
    m_toolBar = new QToolBar(this);
    m_toolBar->setObjectName(QStringLiteral("ViewerBar"));
    m_toolBar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    // The commands belong to the window, so that their keys work wherever
    // the focus is; the tool bar shows them.
    const auto add = [this](int command, int textId, ZWViewerIcons::Kind icon, const QKeySequence& key) {
        auto* action = new QAction(ZWViewerIcons::Icon(icon), ZWLoadString(textId), this);
        action->setData(command);
        if (!key.isEmpty())
            action->setShortcut(key);
        ZWActionTexts::ShowShortcutInToolTip(*action);
        addAction(action);
        m_toolBar->addAction(action);
        return action;
    };
    m_previous = add(ID_VIEWER_PREVIOUS, ZWTextId::PreviousPeriod, ZWViewerIcons::PreviousPeriod,
        QKeySequence(Qt::ALT | Qt::Key_Left));
    m_next
        = add(ID_VIEWER_NEXT, ZWTextId::NextPeriod, ZWViewerIcons::NextPeriod, QKeySequence(Qt::ALT | Qt::Key_Right));
    m_goTo = add(ID_VIEWER_GOTO, ZWTextId::GoToDate, ZWViewerIcons::GoToDate, QKeySequence(Qt::CTRL | Qt::Key_G));
    m_groupBy = add(ID_VIEWER_GROUPBY, ZWTextId::GroupBy, ZWViewerIcons::GroupBy, QKeySequence());
    // One command per unit, in the window, each with its key; the menus
    // show them checked for the unit in use.
    m_unitGroup = new QActionGroup(this);
    m_unitGroup->setExclusive(true);
    for (size_t i = 0; i < std::size(kUnits); ++i) {
        const Unit& unit = kUnits[i];
        auto* action = new QAction(ZWLoadString(unit.textId), this);
        action->setCheckable(true);
        action->setData(unit.id);
        action->setShortcut(QKeySequence(Qt::CTRL | unit.key));
        m_unitGroup->addAction(action);
        addAction(action);
        connect(action, &QAction::triggered, this, [this, id = unit.id] { OnGroupByMenuItem(id); });
        m_units[i] = action;
    }
    // The group-by button drops its menu down; the menu is filled anew each
    // time so that it checks the present unit.
    m_groupByMenu = new QMenu(this);
    m_groupBy->setMenu(m_groupByMenu);
    if (QToolButton* button = Button(ID_VIEWER_GROUPBY))
        button->setPopupMode(QToolButton::InstantPopup);
    connect(m_groupByMenu, &QMenu::aboutToShow, this, [this] { CreateGroupByMenu(*m_groupByMenu); });
    connect(m_previous, &QAction::triggered, this, &CDlgViewer::OnPrevious);
    connect(m_next, &QAction::triggered, this, &CDlgViewer::OnNext);
    connect(m_goTo, &QAction::triggered, this, &CDlgViewer::OnGoTo);
}

void CDlgViewer::InitializeMenus()
{
    m_menuBar = new QMenuBar(this);
    auto* close = new QAction(ZWLoadString(ZWTextId::Close), this);
    close->setShortcuts(QKeySequence::keyBindings(QKeySequence::Close));
    addAction(close);
    connect(close, &QAction::triggered, this, &CDlgViewer::close);

    m_export = new QAction(ZWLoadString(ZWTextId::ExportValues), this);
    connect(m_export, &QAction::triggered, this, &CDlgViewer::OnExport);

    QMenu* report = m_menuBar->addMenu(ZWLoadString(ZWTextId::MenuReport));
    report->addAction(m_frame->Action(ZWViewReportFrame::ID_FILE_PRINT));
    report->addAction(m_export);
    report->addAction(m_frame->Action(ZWViewReportFrame::ID_VIEW_REFRESH));
    report->addSeparator();
    report->addAction(close);

    QMenu* period = m_menuBar->addMenu(ZWLoadString(ZWTextId::MenuPeriod));
    period->addAction(m_previous);
    period->addAction(m_next);
    period->addAction(m_goTo);
    period->addSeparator();
    QMenu* units = period->addMenu(ZWLoadString(ZWTextId::GroupBy));
    CreateGroupByMenu(*units);
    connect(units, &QMenu::aboutToShow, this, [this, units] { CreateGroupByMenu(*units); });

    QMenu* view = m_menuBar->addMenu(ZWLoadString(ZWTextId::MenuView));
    for (int command : {ZWViewReportFrame::ID_PREVIOUS_PAGE, ZWViewReportFrame::ID_NEXT_PAGE})
        view->addAction(m_frame->Action(command));
    view->addSeparator();
    for (int command : {ZWViewReportFrame::ID_ZOOM_IN, ZWViewReportFrame::ID_ZOOM_OUT, ZWViewReportFrame::ID_ZOOM_FIT})
        view->addAction(m_frame->Action(command));
    view->addSeparator();
    QMenu* bars = view->addMenu(ZWLoadString(ZWTextId::Toolbars));
    bars->addActions(m_frame->ToolBarActions());

    ZWActionTexts::Apply(m_menuBar->actions());
    for (QMenu* menu : {report, period, units, view, bars})
        ZWActionTexts::Apply(menu->actions());
}

QAction* CDlgViewer::UnitAction(int unit) const
{
    for (QAction* action : m_units)
        if (action && action->data().toInt() == unit)
            return action;
    return nullptr;
}

void CDlgViewer::UpdateUnitChecks()
{
    if (QAction* current = UnitAction(m_data.Period().Unit()))
        current->setChecked(true);
    else if (QAction* checked = m_unitGroup->checkedAction())
        checked->setChecked(false);
}

void CDlgViewer::RestorePlacement()
{
    const std::unique_ptr<QSettings> settings = ZWMarentaSetup::instance().OpenSettings();
    const QRect saved = settings->value(ZWSettingsKeys::ViewerGeometry).toRect();
    const bool maximized = settings->value(ZWSettingsKeys::ViewerMaximized, false).toBool();
    QScreen* screen = saved.isValid() ? QGuiApplication::screenAt(saved.center()) : nullptr;
    if (!screen && parentWidget())
        screen = parentWidget()->screen();
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    if (!screen) {
        resize(kDefaultSize);
        return;
    }
    // The frame the platform puts around the window, as far as it is known
    // before the window is shown; else as it is around the window in use.
    create();
    QMargins frame = windowHandle() ? windowHandle()->frameMargins() : QMargins();
    if (frame.isNull()) {
        if (const QWidget* active = QApplication::activeWindow()) {
            const QRect outer = active->frameGeometry();
            const QRect inner = active->geometry();
            frame = QMargins(inner.left() - outer.left(), inner.top() - outer.top(), outer.right() - inner.right(),
                outer.bottom() - inner.bottom());
        }
    }
    setGeometry(ZWWindowPlacement::Place(saved, kDefaultSize, screen->availableGeometry(), frame));
    if (maximized)
        setWindowState(windowState() | Qt::WindowMaximized);
}

void CDlgViewer::SavePlacement()
{
    const std::unique_ptr<QSettings> settings = ZWMarentaSetup::instance().OpenSettings();
    settings->setValue(ZWSettingsKeys::ViewerGeometry, normalGeometry());
    settings->setValue(ZWSettingsKeys::ViewerMaximized, isMaximized());
}

void CDlgViewer::hideEvent(QHideEvent* event)
{
    // Minimising hides the window too; only a real hide or close is kept.
    if (!isMinimized())
        SavePlacement();
    QDialog::hideEvent(event);
}

QAction* CDlgViewer::Action(int command) const
{
    switch (command) {
    case ID_VIEWER_PREVIOUS:
        return m_previous;
    case ID_VIEWER_NEXT:
        return m_next;
    case ID_VIEWER_GOTO:
        return m_goTo;
    case ID_VIEWER_GROUPBY:
        return m_groupBy;
    default:
        return nullptr;
    }
}

QToolButton* CDlgViewer::Button(int command) const
{
    QAction* action = Action(command);
    return action ? qobject_cast<QToolButton*>(m_toolBar->widgetForAction(action)) : nullptr;
}

bool CDlgViewer::Setup(QString& reportName, int unit)
{
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    const bool loaded = m_data.Setup(reportName);
    m_reportName = QFileInfo(reportName).completeBaseName();
    m_frame->SetTemplate(m_data.Design());
    QGuiApplication::restoreOverrideCursor();
    // The first period always differs from the stored one and so gathers.
    m_data.Period().Reset(unit);
    SetupData(Now(), unit, false);
    UpdateCommands();
    UpdateTitle();
    return loaded;
}

void CDlgViewer::SetupUserInterval(const ZWDateTime& from, const ZWDateTime& to)
{
    m_data.Period().SetupUserInterval(from, to);
}

bool CDlgViewer::SetupData(const ZWDateTime& end, int unit, bool force)
{
    if (m_gathering)
        return false;
    if (!m_data.Period().SetupData(end, unit, force, Now())) {
        UpdateCommands();
        return false;
    }
    Gather(true);
    return true;
}

void CDlgViewer::Gather(bool reload)
{
    m_gathering = true;
    UpdateCommands();
    CDlgProgress progress(this);
    bool ok = false;
    std::unique_ptr<QThread> worker(QThread::create([this, &progress, &ok, reload] {
        progress.SetTitle(ZWLoadString(ZWTextId::GatheringTitle));
        progress.SetText(QStringLiteral("..."));
        ok = m_data.SetupDataWork(reload, &progress);
        progress.End(ok);
    }));
    worker->start();
    // The user-interface thread runs nothing but the progress dialog until
    // the worker ends it; the window keeps painting meanwhile.
    progress.DoModal();
    worker->wait();
    worker.reset();
    m_gathering = false;
    ++m_gatherings;

    m_frame->SetUserData(m_data.ValueDocument());
    m_frame->Refresh();
    UpdateCommands();
    UpdateTitle();
    m_notice->setText(m_data.Notice());
    m_notice->setVisible(!m_data.Notice().isEmpty());
    const ZWLoggerData* logger = m_data.LoggerData();
    // A reading the user cancelled in the progress dialog needs no message.
    if (!ok && logger && !logger->GetVariables().isEmpty() && !progress.IsCancelled())
        ShowMessage(ZWLoadString(ZWTextId::LoggedDataUnreadable).arg(m_data.LastError()));
    emit gathered(ok);
}

bool CDlgViewer::GoTo(const ZWDateTime& date)
{
    if (m_gathering || !date.IsValid())
        return false;
    const ZWReportPeriod& period = m_data.Period();
    const ZWDateTime start = ZWReportPeriod::AdjustToGroupBy(date, period.Unit());
    return SetupData(ZWReportPeriod::AdjustToGoTo(start, period.Unit()), period.Unit(), false);
}

void CDlgViewer::OnPrevious()
{
    const ZWReportPeriod& period = m_data.Period();
    SetupData(ZWReportPeriod::AddGroupByUnit(period.End(), -period.Unit()), period.Unit(), false);
}

void CDlgViewer::OnNext()
{
    const ZWReportPeriod& period = m_data.Period();
    const int unit = period.Unit();
    ZWDateTime t = ZWReportPeriod::AdjustToGroupBy(period.End(), unit);
    if (period.End() > t)
        t = ZWReportPeriod::AddGroupByUnit(t, unit);
    t = ZWReportPeriod::AddGroupByUnit(t, unit);
    SetupData(t, unit, false);
}

void CDlgViewer::OnGoTo()
{
    if (m_gathering || !m_data.Period().CanGoTo())
        return;
    CGoToDateDlg dialog(this);
    // The dialog opens just above the button that asked for it.
    if (QToolButton* button = Button(ID_VIEWER_GOTO))
        dialog.SetAnchor(button->mapToGlobal(QPoint(0, -1)));
    dialog.SetDate(m_data.Period().GoToInitialDate());
    if (ExecDialog(dialog) != QDialog::Accepted)
        return;
    GoTo(dialog.GetDate());
}

void CDlgViewer::OnGroupBy()
{
    if (QToolButton* button = Button(ID_VIEWER_GROUPBY))
        button->showMenu();
}

bool CDlgViewer::CreateGroupByMenu(QMenu& menu)
{
    // The menu lists the window's unit commands; clearing it leaves them be.
    menu.clear();
    UpdateUnitChecks();
    for (QAction* action : m_units)
        menu.addAction(action);
    return true;
}

void CDlgViewer::OnGroupByMenuItem(int id)
{
    if (m_gathering || !ZWReportPeriod::IsUnit(id))
        return;
    ZWReportPeriod& period = m_data.Period();
    if (id == ID_GROUPBY_USER) {
        // The user unit always reloads, even when it is the present unit.
        CDlgUserInterval dialog(this, Now());
        if (ExecDialog(dialog) == QDialog::Accepted) {
            period.SetupUserInterval(dialog.From(), dialog.To());
            SetupData(period.End(), ID_GROUPBY_USER, true);
        }
    } else {
        ZWReportPeriod::WriteLastReportGroup(*ZWMarentaSetup::instance().OpenSettings(), id);
        SetupData(period.End(), id, false);
    }
    // A cancelled choice leaves the unit in use checked.
    UpdateUnitChecks();
}

void CDlgViewer::OnRefresh()
{
    if (!m_gathering)
        Gather(true);
}

void CDlgViewer::OnExport()
{
    if (m_gathering)
        return;
    if (m_data.ValueDocument().isEmpty()) {
        ShowMessage(ZWLoadString(ZWTextId::ExportNoValues));
        return;
    }
    struct Choice
    {
        int filter;
        const char* extension;
    };
    static constexpr Choice kChoices[] = {
        {ZWTextId::ExportFilterXlsx, "xlsx"},
        {ZWTextId::ExportFilterCsv, "csv"},
        {ZWTextId::ExportFilterJson, "json"},
        {ZWTextId::ExportFilterXml, "xml"},
    };
    QStringList filters;
    for (const Choice& c : kChoices)
        filters << ZWLoadString(c.filter);
    QFileDialog dialog(this, ZWLoadString(ZWTextId::ExportValuesTitle));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setNameFilters(filters);
    const ZWDateTime start = m_data.Period().Start();
    dialog.selectFile(
        QStringLiteral("%1-%2.xlsx")
            .arg(m_reportName.isEmpty() ? QStringLiteral("values") : m_reportName,
                start.IsValid() ? start.ToLocalQDateTime().toString(QStringLiteral("yyyy-MM-dd")) : QString()));
    if (ExecDialog(dialog) != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return;
    QString path = dialog.selectedFiles().first();
    std::optional<ZWValueExport::Format> format = ZWValueExport::FormatOfPath(path);
    if (!format) {
        // A name without a known extension takes that of the chosen filter.
        const qsizetype index = std::max<qsizetype>(0, filters.indexOf(dialog.selectedNameFilter()));
        path += QLatin1Char('.') + QLatin1String(kChoices[index].extension);
        format = ZWValueExport::FormatOfPath(path);
    }
    ZWValueExport values;
    QString error;
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    const bool ok = values.Read(m_data.ValueDocument(), m_data.Design()) && values.Write(path, *format, error);
    QGuiApplication::restoreOverrideCursor();
    if (!ok)
        ShowMessage(ZWLoadString(ZWTextId::ExportFailed).arg(path, error.isEmpty() ? values.Error() : error));
}

void CDlgViewer::UpdateNext()
{
    m_next->setEnabled(!m_gathering && m_data.Period().CanNext(Now()));
}

void CDlgViewer::UpdateGoTo()
{
    m_goTo->setEnabled(!m_gathering && m_data.Period().CanGoTo());
}

void CDlgViewer::UpdateCommands()
{
    UpdateNext();
    UpdateGoTo();
    m_previous->setEnabled(!m_gathering);
    if (m_export)
        m_export->setEnabled(!m_gathering);
    m_groupBy->setEnabled(!m_gathering);
    m_unitGroup->setEnabled(!m_gathering);
    UpdateUnitChecks();
}

void CDlgViewer::UpdateTitle()
{
    const QString report = m_frame && !m_frame->Title().isEmpty() ? m_frame->Title() : m_reportName;
    const ZWReportPeriod& period = m_data.Period();
    if (report.isEmpty() || m_gatherings == 0) {
        setWindowTitle(report.isEmpty() ? ZWLoadString(ZWTextId::UntitledReport) : report);
        return;
    }
    setWindowTitle(
        ZWLoadString(ZWTextId::ViewerTitle).arg(report, ShortDateTime(period.Start()), ShortDateTime(period.End())));
}

void CDlgViewer::closeEvent(QCloseEvent* event)
{
    // The worker thread uses this dialog's data until it ends.
    if (m_gathering) {
        event->ignore();
        return;
    }
    QDialog::closeEvent(event);
}

void CDlgViewer::changeEvent(QEvent* event)
{
    // Time passes while the window waits: a period that was the present one
    // may have ended, and Next becomes available.
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        UpdateNext();
    QDialog::changeEvent(event);
}

int CDlgViewer::ExecDialog(QDialog& dialog)
{
    return dialog.exec();
}

void CDlgViewer::ShowMessage(const QString& text)
{
    QMessageBox::warning(this, windowTitle(), text);
}
