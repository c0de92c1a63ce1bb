#include "editor/widgets/ZWEditTemplateWnd.h"
#include "viewer/widgets/ZWPageScrollBars.h"

#include "editor/ZWCardListCommand.h"
#include "editor/ZWGeometryCommand.h"
#include "editor/ZWLayoutCommands.h"
#include "host/core/ZWLoadString.h"
#include "host/core/ZWMath.h"
#include "host/core/ZWTextId.h"
#include "template/ZWPageRenderer.h"
#include "template/tagDraw.h"

#include <QAction>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QUndoStack>
#include <QtMath>
#include <algorithm>
#include <cmath>
#include <vector>

using Cursor = ZWHandleZones::Cursor;

namespace {

Qt::CursorShape QtCursor(Cursor cursor)
{
    switch (cursor) {
    case Cursor::SizeWestEast:
        return Qt::SizeHorCursor;
    case Cursor::SizeNorthSouth:
        return Qt::SizeVerCursor;
    case Cursor::SizeNorthEastSouthWest:
        return Qt::SizeBDiagCursor;
    case Cursor::SizeNorthWestSouthEast:
        return Qt::SizeFDiagCursor;
    case Cursor::SizeAll:
        return Qt::SizeAllCursor;
    case Cursor::OverCard:
        return Qt::OpenHandCursor;
    case Cursor::Moving:
        return Qt::ClosedHandCursor;
    case Cursor::NoEntry:
        return Qt::ForbiddenCursor;
    case Cursor::Arrow:
        break;
    }
    return Qt::ArrowCursor;
}

// The card's colour for its outline, unless it would not show against what
// lies under it (its own fill, or the white page): then a dark grey.
QColor OutlineColour(const ZWCardControl& card)
{
    const QColor under = card.backcolor == ZW_NO_COLOR ? QColor(Qt::white) : ZWColorRefToQColor(card.backcolor);
    if (card.color == ZW_NO_COLOR)
        return QColor(64, 64, 64);
    const QColor colour = ZWColorRefToQColor(card.color);
    const int distance = std::abs(colour.red() - under.red()) + std::abs(colour.green() - under.green())
        + std::abs(colour.blue() - under.blue());
    return distance < 96 ? QColor(64, 64, 64) : colour;
}

// The editor's outlines of many cards (each the card's DrawBorder, in a
// colour that shows), gathered by colour and filled at once: a page has
// thousands of short runs and few colours.
class OutlineBatch
{
public:
    void Add(const ZWCardControl& card, const ZWRect& r, bool thick, bool dashed, bool dense, int phase)
    {
        const QRgb colour = OutlineColour(card).rgb();
        auto it = std::find_if(m_runs.begin(), m_runs.end(), [colour](const auto& b) { return b.first == colour; });
        if (it == m_runs.end())
            it = m_runs.insert(m_runs.end(), {colour, {}});
        for (const QRect& run : ZWCardControl::BorderRuns(r, thick, dashed, dense, phase))
            it->second.append(run);
    }

    // Straight into a picture of one device pixel per pixel, within `clip`:
    // many times faster than a painter for thousands of tiny runs.
    void Fill(QImage& picture, const QRect& clip) const
    {
        const QRect area = clip & picture.rect();
        for (const auto& [colour, runs] : m_runs) {
            for (const QRect& run : runs) {
                const QRect r = run & area;
                for (int y = r.top(); y <= r.bottom(); ++y) {
                    QRgb* line = reinterpret_cast<QRgb*>(picture.scanLine(y));
                    std::fill(line + r.left(), line + r.right() + 1, colour);
                }
            }
        }
    }

    void Fill(QPainter& dc) const
    {
        dc.setPen(Qt::NoPen);
        for (const auto& [colour, runs] : m_runs) {
            dc.setBrush(QColor(colour));
            dc.drawRects(runs.constData(), int(runs.size()));
        }
    }

private:
    std::vector<std::pair<QRgb, QList<QRect>>> m_runs;
};

bool IsNewCardOperation(int op)
{
    return op == ZWEditPage::NewCard || op == ZWEditPage::NewCardCtrl || op == ZWEditPage::DrawNewCard
        || op == ZWEditPage::DrawNewCardCtrl;
}

bool IsDragOperation(int op)
{
    return (op >= ZWEditPage::MoveUnselected && op <= ZWEditPage::MoveSelectedCtrl)
        || op == ZWEditPage::MoveUnselectedShift || op == ZWEditPage::MoveSelectedShift;
}

// The keys the page acts on itself; the rest go on to the parent.
bool IsOwnKey(const QKeyEvent* event)
{
    const Qt::KeyboardModifiers mods = event->modifiers() & ~Qt::KeypadModifier;
    const bool ctrl = mods & Qt::ControlModifier;
    switch (event->key()) {
    case Qt::Key_Delete:
        return !ctrl;
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Up:
    case Qt::Key_Down:
        return !ctrl && !(mods & Qt::AltModifier);
    case Qt::Key_C:
    case Qt::Key_X:
    case Qt::Key_V:
    case Qt::Key_Z:
    case Qt::Key_Y:
        return ctrl && !(mods & Qt::AltModifier);
    default:
        return false;
    }
}

} // namespace

ZWEditTemplateWnd::ZWEditTemplateWnd(QWidget* parent) : QAbstractScrollArea(parent)
{
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // The page picture covers the whole window; nothing is to be erased.
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    viewport()->setAttribute(Qt::WA_NoSystemBackground);
    viewport()->setMouseTracking(true);
    viewport()->setContextMenuPolicy(Qt::PreventContextMenu);
    setContextMenuPolicy(Qt::PreventContextMenu);
    // The page takes the keyboard when clicked, so that Delete and the
    // clipboard keys reach it.
    setFocusPolicy(Qt::StrongFocus);
    m_timer.setInterval(200);
    connect(&m_timer, &QTimer::timeout, this, &ZWEditTemplateWnd::OnTimer);
    m_edit.SetActiveState(ZWEditPage::LabelTool);
    m_edit.commandApplied = [this] {
        CardsChanged();
        PlayTimer();
        emit pageShowRequested();
        emit selectionChanged(GetSelectedControl(), false);
    };
    SyncMapping();
}

ZWEditTemplateWnd::~ZWEditTemplateWnd()
{
    m_edit.commandApplied = nullptr;
    // The commands on the stack hold this page.
    if (m_stack && m_stack->count() > 0)
        m_stack->clear();
}

bool ZWEditTemplateWnd::SetTemplate(const XmlDocument::XmlNode& page)
{
    OnCaptureChanged();
    m_edit.Selection().Clear();
    const bool ok = m_page.SetTemplate(page);
    m_edit.Mapping().SetOrientation(m_page.properties.IsPortrait() ? 1 : 0);
    CardsChanged();
    InitializeScrollBars(false);
    return ok;
}

void ZWEditTemplateWnd::SetPage(ZWTemplatePage page)
{
    OnCaptureChanged();
    m_edit.Selection().Clear();
    m_page = std::move(page);
    m_edit.Mapping().SetOrientation(m_page.properties.IsPortrait() ? 1 : 0);
    m_redrawAll = true;
    m_outlinesDirty = true;
    InitializeScrollBars(false);
    viewport()->update();
}

bool ZWEditTemplateWnd::SaveTemplate(XmlDocument::XmlNode design) const
{
    return m_page.SaveTemplate(design);
}

void ZWEditTemplateWnd::SetUndoStack(QUndoStack* stack)
{
    m_stack = stack;
}

QUndoStack* ZWEditTemplateWnd::UndoStack() const
{
    if (m_stack)
        return m_stack;
    // A window on its own keeps its own history.
    auto* self = const_cast<ZWEditTemplateWnd*>(this);
    if (!self->m_ownStack)
        self->m_ownStack = new QUndoStack(self);
    return self->m_ownStack;
}

void ZWEditTemplateWnd::SetPixelsPerMm(double x, double y)
{
    m_pixelsPerMmX = x;
    m_pixelsPerMmY = y;
    SyncMapping();
    m_redrawAll = true;
    InitializeScrollBars(false);
    viewport()->update();
}

void ZWEditTemplateWnd::SyncMapping()
{
    ZWPageMapping& mapping = m_edit.Mapping();
    if (m_pixelsPerMmX > 0.0 && m_pixelsPerMmY > 0.0) {
        mapping.SetDevice(m_pixelsPerMmX, m_pixelsPerMmY);
    } else {
        const QPointF screen = ZWDevicePixelsPerMm(viewport());
        mapping.SetDevice(screen.x(), screen.y());
    }
    mapping.SetClientSize(viewport()->width(), viewport()->height());
    mapping.SetScrollPosition(horizontalScrollBar()->value(), verticalScrollBar()->value());
}

bool ZWEditTemplateWnd::GetTemplateDimensions(ZWPageMapping::Dimensions& d)
{
    SyncMapping();
    return m_edit.Mapping().GetTemplateDimensions(d);
}

bool ZWEditTemplateWnd::SetMode(int mode)
{
    SyncMapping();
    double before = 0.0;
    GetMode(before);
    m_edit.Mapping().SetMode(mode);
    if (mode == 0) {
        // Fitting can take the scroll bars away and so give the page more
        // room: fit once more in the room that is left.
        InitializeScrollBars(false);
        SyncMapping();
        m_edit.Mapping().SetMode(0);
    }
    double after = 0.0;
    GetMode(after);
    if (after == before)
        return false;
    InitializeScrollBars(false);
    m_redrawAll = true;
    viewport()->update();
    emit zoomChanged(after);
    return true;
}

bool ZWEditTemplateWnd::SetMode(double factor)
{
    SyncMapping();
    if (!m_edit.Mapping().SetMode(factor))
        return false;
    InitializeScrollBars(false);
    m_redrawAll = true;
    viewport()->update();
    emit zoomChanged(factor);
    return true;
}

bool ZWEditTemplateWnd::SetOrientation(int orientation)
{
    SyncMapping();
    if (!m_edit.Mapping().SetOrientation(orientation))
        return false;
    // The background always covers the whole page.
    m_page.properties.FitBackground();
    InitializeScrollBars(false);
    CardsChanged();
    return true;
}

int ZWEditTemplateWnd::GetOrientation() const
{
    return m_edit.Mapping().GetOrientation();
}

ZWCardImage& ZWEditTemplateWnd::GetBackground()
{
    return m_page.properties.GetBackground();
}

bool ZWEditTemplateWnd::GetMinimumControlDimensions(double& w, double& h)
{
    SyncMapping();
    return m_edit.Mapping().GetMinimumControlDimensions(w, h);
}

void ZWEditTemplateWnd::GetInitialControlDimensions(double& x, double& y, double& w, double& h)
{
    SyncMapping();
    m_edit.Mapping().GetInitialControlDimensions(m_edit.LastMouse(), x, y, w, h);
}

void ZWEditTemplateWnd::InitializeScrollBars(bool hide)
{
    if (m_adjusting)
        return;
    m_adjusting = true;
    double w = 0.0;
    double h = 0.0;
    // Showing one bar narrows the room of the other: settle twice.
    for (int pass = 0; pass < 2; ++pass) {
        if (hide || !GetMinimumControlDimensions(w, h)) {
            ZWPageScrollBars::Hide(*this);
            break;
        }
        ZWPageScrollBars::Fit(*this, QSize(roundi(w), roundi(h)), 1, 10);
    }
    m_adjusting = false;
    SyncMapping();
    m_redrawAll = true;
    viewport()->update();
}

void ZWEditTemplateWnd::SetViewBoundingRectangles(bool view)
{
    m_viewBoundingRectangles = view;
    viewport()->update();
}

void ZWEditTemplateWnd::SetRedrawAll(bool redraw)
{
    m_redrawAll = redraw;
    if (redraw)
        viewport()->update();
}

void ZWEditTemplateWnd::SetOutColor(quint32 color)
{
    m_page.properties.outColor = color;
    SetRedrawAll();
}

void ZWEditTemplateWnd::SetSupport(int bit, bool on)
{
    m_support = on ? (m_support | bit) : (m_support & ~bit);
}

void ZWEditTemplateWnd::SetActiveState(int state)
{
    if (state == m_edit.GetActiveState())
        return;
    m_edit.SetActiveState(state);
    emit toolChanged(state);
}

void ZWEditTemplateWnd::PlayTimer()
{
    if (m_timer.isActive() || m_edit.Selection().GetNumberOfSelectedControls() == 0)
        return;
    m_timer.start();
    emit timerStateChanged(true);
}

void ZWEditTemplateWnd::PauseTimer()
{
    if (!m_timer.isActive())
        return;
    m_timer.stop();
    emit timerStateChanged(false);
}

void ZWEditTemplateWnd::OnTimer()
{
    if (m_edit.Selection().GetNumberOfSelectedControls() == 0) {
        m_phase = 0;
        PauseTimer();
        return;
    }
    m_phase = (m_phase + 1) % 6;
    viewport()->update();
}

// Commands ----------------------------------------------------------------

void ZWEditTemplateWnd::Push(QUndoCommand* command)
{
    UndoStack()->push(command);
}

void ZWEditTemplateWnd::RecordGeometry(int textId, const std::function<void()>& change, bool nudge)
{
    SyncMapping();
    auto* command = new ZWGeometryCommand(m_edit, ZWLoadString(textId), nudge);
    change();
    if (!command->CaptureAfter()) {
        delete command;
        return;
    }
    Push(command);
    CardsChanged();
}

bool ZWEditTemplateWnd::RecordList(bool insert, int textId, const std::function<void()>& change)
{
    SyncMapping();
    auto* command = new ZWCardListCommand(
        m_edit, insert ? ZWCardListCommand::Insert : ZWCardListCommand::Remove, ZWLoadString(textId));
    change();
    const bool changed = command->CaptureAfter();
    if (changed)
        Push(command);
    else
        delete command;
    // A paste or delete changes the selection even when nothing is recorded.
    CardsChanged();
    return changed;
}

void ZWEditTemplateWnd::CardsChanged()
{
    m_redrawAll = true;
    m_outlinesDirty = true;
    viewport()->update();
    emit templateModified();
}

ZWCardControl* ZWEditTemplateWnd::AddControl(double x, double y, double w, double h)
{
    ZWCardControl* card = nullptr;
    if (!RecordList(true, ZWTextId::UndoNewCard, [&] { card = m_edit.AddControl(x, y, w, h); }))
        return nullptr;
    PlayTimer();
    emit cardCreated(GetSelectedControl());
    return card;
}

void ZWEditTemplateWnd::NewCard(int tool)
{
    if (!RecordList(true, ZWTextId::UndoNewCard, [&] { m_edit.NewControl(tool); }))
        return;
    PlayTimer();
    emit cardCreated(GetSelectedControl());
}

void ZWEditTemplateWnd::AlignSelectedControls(int mode)
{
    RecordGeometry(ZWTextId::UndoAlign, [&] { ZWLayoutCommands::AlignSelectedControls(m_edit, mode); });
}

void ZWEditTemplateWnd::DistributeSelectedControls(int mode)
{
    RecordGeometry(ZWTextId::UndoDistribute, [&] { ZWLayoutCommands::DistributeSelectedControls(m_edit, mode); });
}

void ZWEditTemplateWnd::JustifySelectedControls(int mode, bool asGroup)
{
    RecordGeometry(ZWTextId::UndoCentre, [&] { ZWLayoutCommands::JustifySelectedControls(m_edit, mode, asGroup); });
}

void ZWEditTemplateWnd::ResizeSelectedControls(bool width, bool height)
{
    RecordGeometry(ZWTextId::UndoSameSize, [&] { ZWLayoutCommands::ResizeSelectedControls(m_edit, width, height); });
}

void ZWEditTemplateWnd::MoveSelectedControls(int dx, int dy, bool gridStep)
{
    RecordGeometry(
        ZWTextId::UndoNudge, [&] { ZWLayoutCommands::NudgeSelectedControls(m_edit, dx, dy, gridStep); }, true);
}

void ZWEditTemplateWnd::ControlCopy()
{
    ZWLayoutCommands::ControlCopy(m_edit);
}

void ZWEditTemplateWnd::ControlCut()
{
    if (m_edit.Selection().GetNumberOfSelectedControls() == 0)
        return;
    RecordList(false, ZWTextId::UndoCut, [&] { ZWLayoutCommands::ControlCut(m_edit); });
    emit selectionChanged(nullptr, false);
}

void ZWEditTemplateWnd::ControlPaste()
{
    if (m_edit.clipboard.empty())
        return;
    RecordList(true, ZWTextId::UndoPaste, [&] { ZWLayoutCommands::ControlPaste(m_edit); });
    PlayTimer();
    emit selectionChanged(GetSelectedControl(), false);
}

void ZWEditTemplateWnd::DeleteSelectedControls()
{
    if (m_edit.Selection().GetNumberOfSelectedControls() == 0)
        return;
    RecordList(false, ZWTextId::UndoDelete, [&] { ZWLayoutCommands::DeleteSelectedControls(m_edit); });
    emit selectionChanged(nullptr, false);
}

bool ZWEditTemplateWnd::SelectControlById(const QString& id)
{
    SyncMapping();
    if (!m_page.FindCard(id))
        return false;
    PauseTimer();
    ZWLayoutCommands::SelectControlById(m_edit, id);
    m_outlinesDirty = true;
    PlayTimer();
    viewport()->update();
    emit selectionChanged(GetSelectedControl(), true);
    return true;
}

ZWCardControl* ZWEditTemplateWnd::GetSelectedControl() const
{
    const ZWSelection& selection = m_edit.Selection();
    return selection.GetNumberOfSelectedControls() == 1 ? selection.GetSelectedControl(0) : nullptr;
}

int ZWEditTemplateWnd::GetNumberOfSelectedControls() const
{
    return m_edit.Selection().GetNumberOfSelectedControls();
}

QStringList ZWEditTemplateWnd::SelectedIds() const
{
    const ZWSelection& selection = m_edit.Selection();
    QStringList ids;
    for (int i = 0; i < selection.GetNumberOfSelectedControls(); ++i)
        ids << selection.GetSelectedControl(i)->id;
    return ids;
}

void ZWEditTemplateWnd::StylesModified()
{
    m_page.UpdateStylesFromFile();
    SetRedrawAll();
}

void ZWEditTemplateWnd::Undo()
{
    OnCaptureChanged();
    SyncMapping();
    UndoStack()->undo();
}

void ZWEditTemplateWnd::Redo()
{
    OnCaptureChanged();
    SyncMapping();
    UndoStack()->redo();
}

void ZWEditTemplateWnd::OnCaptureChanged()
{
    if (m_edit.GetOperation() == ZWEditPage::NoOperation)
        return;
    m_edit.CancelDrag();
    m_outlinesDirty = true;
    PlayTimer();
    viewport()->unsetCursor();
    viewport()->update();
    emit selectionChanged(nullptr, false);
}

// Context menu ------------------------------------------------------------

void ZWEditTemplateWnd::SetToolBarActions(const QList<QAction*>& actions)
{
    m_toolBarActions.clear();
    for (QAction* action : actions)
        m_toolBarActions << action;
}

QMenu* ZWEditTemplateWnd::CreateContextMenu(const QPoint& point)
{
    ZWPageMapping::Dimensions d;
    if (!GetTemplateDimensions(d) || !m_edit.Mapping().PageRect(d).ToQRect().contains(point))
        return nullptr;
    auto* menu = new QMenu(this);
    struct Item
    {
        int bit, text, command;
        void (ZWEditTemplateWnd::*run)();
    };
    static const Item items[] = {
        {LabelSupport, ZWTextId::NewLabelMenu, NewLabelCommand, &ZWEditTemplateWnd::OnNewLabel},
        {ImageSupport, ZWTextId::NewImageMenu, NewImageCommand, &ZWEditTemplateWnd::OnNewImage},
        {DateSupport, ZWTextId::NewDateMenu, NewDateCommand, &ZWEditTemplateWnd::OnNewDate},
        {FormuleSupport, ZWTextId::NewFormuleMenu, NewFormuleCommand, &ZWEditTemplateWnd::OnNewFormule},
        {ConditionedSupport, ZWTextId::NewConditionedMenu, NewConditionedCommand, &ZWEditTemplateWnd::OnNewConditioned},
        {ChartSupport, ZWTextId::NewChartMenu, NewChartCommand, &ZWEditTemplateWnd::OnNewChart},
        {TableSupport, ZWTextId::NewTableMenu, NewTableCommand, &ZWEditTemplateWnd::OnNewTable},
    };
    bool any = false;
    for (const Item& item : items) {
        if (!(m_support & item.bit))
            continue;
        QAction* action = menu->addAction(ZWLoadString(item.text));
        action->setData(item.command);
        connect(action, &QAction::triggered, this, item.run);
        any = true;
    }
    if (any)
        menu->addSeparator();
    QMenu* bars = menu->addMenu(ZWLoadString(ZWTextId::Toolbars));
    for (int i = 0; i < m_toolBarActions.size(); ++i) {
        const QAction* command = m_toolBarActions[i];
        if (!command)
            continue;
        QAction* action = bars->addAction(command->text());
        action->setCheckable(true);
        action->setChecked(command->isChecked());
        const int id = FirstToolBarCommand + i;
        action->setData(id);
        connect(action, &QAction::triggered, this, [this, id] { OnViewToolbar(id); });
    }
    bars->setEnabled(!bars->isEmpty());
    return menu;
}

void ZWEditTemplateWnd::OnRButtonUp(const QPoint& point)
{
    QMenu* menu = CreateContextMenu(point);
    if (!menu)
        return;
    PauseTimer();
    m_edit.ForgetOverCard();
    viewport()->update();
    menu->setAttribute(Qt::WA_DeleteOnClose);
    connect(menu, &QMenu::aboutToHide, this, &ZWEditTemplateWnd::PlayTimer);
    menu->popup(viewport()->mapToGlobal(point));
}

void ZWEditTemplateWnd::OnViewToolbar(int id)
{
    const int index = id - FirstToolBarCommand;
    if (index < 0 || index >= m_toolBarActions.size() || !m_toolBarActions[index])
        return;
    m_toolBarActions[index]->trigger();
}

// Events ------------------------------------------------------------------

void ZWEditTemplateWnd::UpdateCursor()
{
    const Qt::CursorShape shape = QtCursor(m_edit.ShownCursor());
    if (viewport()->cursor().shape() != shape)
        viewport()->setCursor(shape);
}

void ZWEditTemplateWnd::mousePressEvent(QMouseEvent* event)
{
    const QPoint point = event->position().toPoint();
    SyncMapping();
    if (event->button() == Qt::RightButton) {
        m_edit.SetLastMouse(point);
        event->accept();
        return;
    }
    if (event->button() != Qt::LeftButton) {
        QAbstractScrollArea::mousePressEvent(event);
        return;
    }
    setFocus(Qt::MouseFocusReason);
    // Mouse moves carry no reliable modifiers: they are read here, once.
    const Qt::KeyboardModifiers mods = event->modifiers();
    m_edit.ButtonDown(point, mods & Qt::ControlModifier, mods & Qt::ShiftModifier);
    PauseTimer();
    m_phase = 0;
    m_outlinesDirty = true;
    UpdateCursor();
    viewport()->update();
    event->accept();
}

void ZWEditTemplateWnd::mouseDoubleClickEvent(QMouseEvent* event)
{
    // The second click of a double click is one more press.
    mousePressEvent(event);
}

void ZWEditTemplateWnd::mouseMoveEvent(QMouseEvent* event)
{
    SyncMapping();
    const ZWCardControl* over = m_edit.GetOverCard();
    m_edit.MouseMove(event->position().toPoint());
    UpdateCursor();
    if (m_edit.GetOperation() != ZWEditPage::NoOperation || over != m_edit.GetOverCard())
        viewport()->update();
    event->accept();
}

void ZWEditTemplateWnd::mouseReleaseEvent(QMouseEvent* event)
{
    SyncMapping();
    if (event->button() == Qt::RightButton) {
        event->accept();
        OnRButtonUp(event->position().toPoint());
        return;
    }
    if (event->button() != Qt::LeftButton) {
        QAbstractScrollArea::mouseReleaseEvent(event);
        return;
    }
    event->accept();
    const int operation = m_edit.GetOperation();
    QUndoCommand* command = nullptr;
    if (IsNewCardOperation(operation)) {
        command = new ZWCardListCommand(m_edit, ZWCardListCommand::Insert, ZWLoadString(ZWTextId::UndoNewCard));
    } else if (IsDragOperation(operation)) {
        const int style = m_edit.Selection().draggingStyle;
        const bool resize = style != ZWHandleZones::None && style != ZWHandleZones::Move;
        command = new ZWGeometryCommand(m_edit, ZWLoadString(resize ? ZWTextId::UndoResize : ZWTextId::UndoMove));
    }
    m_edit.ButtonUp();
    bool created = false;
    if (command) {
        const bool changed = IsNewCardOperation(operation) ? static_cast<ZWCardListCommand*>(command)->CaptureAfter()
                                                           : static_cast<ZWGeometryCommand*>(command)->CaptureAfter();
        if (changed) {
            Push(command);
            CardsChanged();
            created = IsNewCardOperation(operation);
        } else {
            delete command;
        }
    }
    m_outlinesDirty = true;
    UpdateCursor();
    viewport()->update();
    PlayTimer();
    if (created)
        emit cardCreated(GetSelectedControl());
    emit selectionChanged(GetSelectedControl(), false);
}

bool ZWEditTemplateWnd::event(QEvent* event)
{
    // The page's own keys win over shortcuts of the window around it (an
    // undo action on Ctrl+Z) while the page has the focus.
    if (event->type() == QEvent::ShortcutOverride && IsOwnKey(static_cast<QKeyEvent*>(event))) {
        event->accept();
        return true;
    }
    return QAbstractScrollArea::event(event);
}

void ZWEditTemplateWnd::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape && m_edit.GetOperation() != ZWEditPage::NoOperation) {
        OnCaptureChanged();
        return;
    }
    if (!IsOwnKey(event)) {
        // Everything else (the frame's and the dialog's keys) goes on.
        event->ignore();
        return;
    }
    // A key in the middle of a drag ends the drag first.
    OnCaptureChanged();
    const bool shift = event->modifiers() & Qt::ShiftModifier;
    switch (event->key()) {
    case Qt::Key_Delete:
        DeleteSelectedControls();
        break;
    case Qt::Key_Left:
        MoveSelectedControls(-1, 0, shift);
        break;
    case Qt::Key_Right:
        MoveSelectedControls(1, 0, shift);
        break;
    case Qt::Key_Up:
        MoveSelectedControls(0, -1, shift);
        break;
    case Qt::Key_Down:
        MoveSelectedControls(0, 1, shift);
        break;
    case Qt::Key_C:
        ControlCopy();
        break;
    case Qt::Key_X:
        ControlCut();
        break;
    case Qt::Key_V:
        ControlPaste();
        break;
    case Qt::Key_Z:
        if (shift)
            Redo();
        else
            Undo();
        break;
    case Qt::Key_Y:
        Redo();
        break;
    default:
        break;
    }
    event->accept();
}

void ZWEditTemplateWnd::focusOutEvent(QFocusEvent* event)
{
    // A menu or another window took the mouse in the middle of a drag.
    OnCaptureChanged();
    QAbstractScrollArea::focusOutEvent(event);
}

void ZWEditTemplateWnd::hideEvent(QHideEvent* event)
{
    OnCaptureChanged();
    PauseTimer();
    QAbstractScrollArea::hideEvent(event);
}

void ZWEditTemplateWnd::resizeEvent(QResizeEvent* event)
{
    QAbstractScrollArea::resizeEvent(event);
    m_redrawAll = true;
    double factor = 0.0;
    GetMode(factor);
    // A fitted page stays fitted to the window; fitting shows or hides
    // scroll bars, which resizes the viewport again.
    if (factor < 0.0 && !m_fitting) {
        m_fitting = true;
        SetMode(0);
        m_fitting = false;
    } else {
        InitializeScrollBars(false);
    }
}

void ZWEditTemplateWnd::scrollContentsBy(int, int)
{
    SyncMapping();
    m_redrawAll = true;
    viewport()->update();
}

// Painting ----------------------------------------------------------------

bool ZWEditTemplateWnd::IsVisible(const ZWRect& area, const ZWRect& r)
{
    return tagDraw::IsVisible(area, r);
}

void ZWEditTemplateWnd::Draw(QPainter& dc, const QRect& clip)
{
    ZWPageMapping::Dimensions d;
    if (!GetTemplateDimensions(d))
        return;
    double zoom = 1.0;
    GetMode(zoom);
    tagDraw draw;
    const ZWRect visible{clip.left(), clip.top(), clip.right(), clip.bottom()};
    draw.visibleArea = &visible;
    draw.left = d.offsetX;
    draw.top = d.offsetY;
    draw.pageWidthPx = d.pageWidthPx;
    draw.pageHeightPx = d.pageHeightPx;
    draw.roundWidthPx = d.roundedXPx;
    draw.roundHeightPx = d.roundedYPx;
    draw.pageWidthMm = m_page.properties.width;
    draw.pageHeightMm = m_page.properties.height;
    draw.fontScale = zoom;
    draw.logicalResolution = true;
    draw.clipToCard = true;
    draw.markProblems = true;
    dc.save();
    dc.setBackgroundMode(Qt::TransparentMode);
    ZWPageRenderer::DrawBackground(dc, draw, m_page.properties, m_page.properties.outColor, clip);
    DrawGrid(dc, d, clip);
    ZWPageRenderer::DrawCards(dc, draw, m_page.cards, m_layerCount);
    dc.restore();
}

void ZWEditTemplateWnd::DrawGrid(QPainter& dc, const ZWPageMapping::Dimensions& d, const QRect& clip) const
{
    const ZWGlobalProperties& props = m_page.properties;
    if (!(props.xgrid > 0.0 && props.ygrid > 0.0))
        return;
    const double stepX = props.xgrid * d.pageWidthPx / props.width;
    const double stepY = props.ygrid * d.pageHeightPx / props.height;
    // Dots closer than a pixel would cover the page: no grid is shown then.
    if (!(stepX >= 1.0 && stepY >= 1.0))
        return;
    const int clipRight = clip.left() + clip.width();
    const int clipBottom = clip.top() + clip.height();
    // Only the rows and columns inside the clip are walked.
    const auto first
        = [](int edge, double offset, double step) { return std::max(0.0, std::floor((edge - offset) / step) - 1.0); };
    QList<QPoint> dots;
    for (double i = first(clip.top(), d.offsetY, stepY); i * props.ygrid < props.height; ++i) {
        const int y = roundi(i * props.ygrid * d.pageHeightPx / props.height + d.offsetY);
        if (y < clip.top())
            continue;
        if (y >= clipBottom)
            break;
        for (double j = first(clip.left(), d.offsetX, stepX); j * props.xgrid < props.width; ++j) {
            const int x = roundi(j * props.xgrid * d.pageWidthPx / props.width + d.offsetX);
            if (x < clip.left())
                continue;
            if (x >= clipRight)
                break;
            dots.append(QPoint(x, y));
        }
    }
    dc.save();
    // White XORed: black on the white page, the inverse over a picture.
    dc.setCompositionMode(QPainter::RasterOp_SourceXorDestination);
    dc.setRenderHint(QPainter::Antialiasing, false);
    dc.setPen(QPen(Qt::white, 0));
    dc.drawPoints(dots.constData(), int(dots.size()));
    dc.restore();
}

void ZWEditTemplateWnd::DrawBoundingRectangles(
    QPainter* dc, const ZWPageMapping::Dimensions& d, bool selectedOnly, QImage* picture)
{
    const ZWSelection& selection = m_edit.Selection();
    const bool dragging = m_edit.GetOperation() != ZWEditPage::NoOperation;
    const ZWCardControl* over = m_edit.GetOverCard();
    ZWRect clip = m_edit.Mapping().PageRect(d);
    clip.right += 1;
    clip.bottom += 1;
    OutlineBatch batch;
    for (const auto& card : m_page.cards) {
        const bool selected = selection.Find(card.get()) >= 0;
        const bool hovered = card.get() == over && !dragging;
        // The picture under the live outlines holds every unselected card's;
        // the selected cards and the card under the mouse go over it.
        if (selectedOnly ? !(selected || hovered) : selected)
            continue;
        const ZWRect r = m_edit.Mapping().CardRect(*card, d);
        // Dragging rectangles follow the cards, except while they are the
        // drag itself.
        if (selected && !dragging)
            m_edit.UpdateRect(card.get(), r);
        if (!IsVisible(clip, r))
            continue;
        if (selected)
            batch.Add(*card, r, true, true, selection.IsLastSelected(card.get()), m_phase);
        else if (selectedOnly)
            batch.Add(*card, r, false, false, false, 0);
        else
            batch.Add(*card, r, false, true, false, 0);
    }
    if (picture) {
        batch.Fill(*picture, clip.ToQRect());
    } else if (dc) {
        dc->save();
        dc->setClipRect(clip.ToQRect());
        dc->setRenderHint(QPainter::Antialiasing, false);
        batch.Fill(*dc);
        dc->restore();
    }
}

void ZWEditTemplateWnd::DrawDraggingBox(QPainter& dc)
{
    ZWSelection& selection = m_edit.Selection();
    QList<QRect> rects;
    const auto outline = [](const ZWRect& r) { return QRect(r.left, r.top, r.right - r.left, r.bottom - r.top); };
    if (!selection.IsRectUndefined()) {
        rects.append(outline(selection.band));
    } else {
        for (int i = 0; i < selection.GetNumberOfSelectedControls(); ++i)
            rects.append(outline(selection.GetDraggingRect(i)));
    }
    dc.save();
    dc.setRenderHint(QPainter::Antialiasing, false);
    dc.setBrush(Qt::NoBrush);
    // Black dots on white: seen on the page, on pictures and on dark cards.
    dc.setPen(QPen(Qt::white, 0));
    dc.drawRects(rects.constData(), int(rects.size()));
    dc.setPen(QPen(Qt::black, 0, Qt::DotLine));
    dc.drawRects(rects.constData(), int(rects.size()));
    dc.restore();
}

QImage ZWEditTemplateWnd::NewPicture(const QSize& client, qreal ratio) const
{
    QImage picture(QSize(qCeil(client.width() * ratio), qCeil(client.height() * ratio)), QImage::Format_RGB32);
    picture.setDevicePixelRatio(ratio);
    // The picture measures millimetres as the mapping does, so that fonts
    // keep their size.
    const QPointF pxPerMm = m_pixelsPerMmX > 0.0 && m_pixelsPerMmY > 0.0 ? QPointF(m_pixelsPerMmX, m_pixelsPerMmY)
                                                                         : ZWDevicePixelsPerMm(viewport());
    picture.setDotsPerMeterX(int(std::lround(pxPerMm.x() * 1000.0)));
    picture.setDotsPerMeterY(int(std::lround(pxPerMm.y() * 1000.0)));
    return picture;
}

void ZWEditTemplateWnd::RenderPagePicture(const QSize& client, qreal ratio)
{
    if (m_pagePicture.size() != QSize(qCeil(client.width() * ratio), qCeil(client.height() * ratio))
        || m_pagePicture.devicePixelRatio() != ratio)
        m_pagePicture = NewPicture(client, ratio);
    QPainter dc(&m_pagePicture);
    // Beneath the page when it has no out colour of its own.
    dc.fillRect(QRect(QPoint(0, 0), client), palette().color(QPalette::Dark));
    dc.setRenderHint(QPainter::TextAntialiasing, true);
    Draw(dc, QRect(QPoint(0, 0), client));
}

void ZWEditTemplateWnd::RenderOutlinePicture()
{
    m_outlinePicture = m_pagePicture.copy();
    m_outlinePicture.setDevicePixelRatio(m_pagePicture.devicePixelRatio());
    ZWPageMapping::Dimensions d;
    if (!m_edit.Mapping().GetTemplateDimensions(d))
        return;
    // A picture of one device pixel per pixel takes the outlines directly.
    if (m_outlinePicture.devicePixelRatio() == 1.0 && m_outlinePicture.format() == QImage::Format_RGB32) {
        DrawBoundingRectangles(nullptr, d, false, &m_outlinePicture);
        return;
    }
    QPainter dc(&m_outlinePicture);
    DrawBoundingRectangles(&dc, d, false);
}

void ZWEditTemplateWnd::paintEvent(QPaintEvent*)
{
    QWidget* area = viewport();
    const QRect client = area->rect();
    if (client.isEmpty())
        return;
    SyncMapping();
    // A fit asked for before the window had an area is made now.
    double zoom = 0.0;
    GetMode(zoom);
    if (zoom == ZWPageMapping::FitPending && m_edit.Mapping().HasDevice())
        SetMode(0);
    const qreal ratio = area->devicePixelRatioF();
    const QSize pixels(qCeil(client.width() * ratio), qCeil(client.height() * ratio));
    if (m_redrawAll || m_pagePicture.size() != pixels) {
        RenderPagePicture(client.size(), ratio);
        m_redrawAll = false;
        m_outlinesDirty = true;
    }
    ZWPageMapping::Dimensions d;
    const bool mapped = m_edit.Mapping().GetTemplateDimensions(d);
    if (m_viewBoundingRectangles && mapped && m_outlinesDirty) {
        RenderOutlinePicture();
        m_outlinesDirty = false;
    }
    QPainter screen(area);
    const bool outlines = m_viewBoundingRectangles && mapped;
    screen.drawImage(0, 0, outlines ? m_outlinePicture : m_pagePicture);
    if (outlines)
        DrawBoundingRectangles(&screen, d, true);
    if (m_edit.GetOperation() != ZWEditPage::NoOperation)
        DrawDraggingBox(screen);
}
