#include "viewer/widgets/ZWViewTemplateWnd.h"
#include "viewer/widgets/ZWPageScrollBars.h"

#include "host/core/ZWLoadString.h"
#include "host/core/ZWMath.h"
#include "host/core/ZWNoValue.h"
#include "host/core/ZWTextId.h"
#include "template/tagDraw.h"
#include "viewer/ZWActionTexts.h"
#include "viewer/ZWViewZoom.h"

#include <QAction>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QWheelEvent>
#include <QtMath>
#include <cmath>

ZWViewTemplateWnd::ZWViewTemplateWnd(QWidget* parent) : QAbstractScrollArea(parent)
{
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // The picture covers the whole window; nothing is to be erased first.
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    viewport()->setAttribute(Qt::WA_NoSystemBackground);
    viewport()->setContextMenuPolicy(Qt::PreventContextMenu);
    setContextMenuPolicy(Qt::PreventContextMenu);
    // The page takes the keyboard, so that the keys scroll it.
    setFocusPolicy(Qt::StrongFocus);
    m_page.SetMarkProblems(true);
}

ZWViewTemplateWnd::~ZWViewTemplateWnd() = default;

bool ZWViewTemplateWnd::SetTemplate(const XmlDocument::XmlNode& page)
{
    const bool ok = m_page.SetTemplate(page);
    viewport()->update();
    return ok;
}

bool ZWViewTemplateWnd::SetUserData(const QByteArray& text)
{
    const bool ok = m_page.SetUserData(text);
    viewport()->update();
    return ok;
}

bool ZWViewTemplateWnd::RechargeUserDataValues()
{
    const bool ok = m_page.RechargeUserDataValues();
    viewport()->update();
    return ok;
}

QPointF ZWViewTemplateWnd::PixelsPerMm() const
{
    return ZWDevicePixelsPerMm(viewport());
}

bool ZWViewTemplateWnd::SetMode(int mode)
{
    // A window without an area cannot be fitted yet.
    const QSize client = viewport()->size();
    return ChangeFactor(m_page.SetMode(mode, client.isEmpty() ? QSize() : client, PixelsPerMm()));
}

bool ZWViewTemplateWnd::SetMode(double factor)
{
    return ChangeFactor(m_page.SetMode(factor));
}

bool ZWViewTemplateWnd::ChangeFactor(bool changed)
{
    if (changed) {
        viewport()->update();
        double factor = 0.0;
        GetMode(factor);
        emit zoomChanged(factor);
    }
    return changed;
}

void ZWViewTemplateWnd::SetOutColor(quint32 color)
{
    m_page.SetOutColor(color);
    viewport()->update();
}

bool ZWViewTemplateWnd::GetMinimumControlDimensions(double& width, double& height) const
{
    if (!m_page.HasTemplate())
        return false;
    const QSizeF size = m_page.GetMinimumControlDimensions(viewport());
    width = size.width();
    height = size.height();
    return true;
}

void ZWViewTemplateWnd::InitializeScrollBars(bool hide)
{
    double w = 0.0;
    double h = 0.0;
    if (hide || !GetMinimumControlDimensions(w, h)) {
        setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        return;
    }
    ZWPageScrollBars::Fit(*this, QSize(roundi(w), roundi(h)));
}

void ZWViewTemplateWnd::AdjustToClient()
{
    if (m_adjusting)
        return;
    m_adjusting = true;
    double factor = 0.0;
    GetMode(factor);
    // Fit mode, or a fit asked for before the window had an area.
    if (ZWViewZoom::IsFit(factor)) {
        // The first fit may show or hide scroll bars and so change the area.
        SetMode(0);
        InitializeScrollBars(false);
        SetMode(0);
    } else {
        InitializeScrollBars(false);
        InitializeScrollBars(false);
    }
    m_adjusting = false;
    viewport()->update();
}

QPointF ZWViewTemplateWnd::Centre() const
{
    return QRectF(viewport()->rect()).center();
}

bool ZWViewTemplateWnd::ZoomAt(double factor, const QPointF& anchor)
{
    double w = 0.0;
    double h = 0.0;
    if (!GetMinimumControlDimensions(w, h))
        return SetMode(factor);
    QScrollBar* hbar = horizontalScrollBar();
    QScrollBar* vbar = verticalScrollBar();
    // The point of the page under the anchor, as fractions of the page.
    const QSize before = viewport()->size();
    const double fx = ZWViewZoom::PageFraction(anchor.x(), w, before.width(), hbar->value());
    const double fy = ZWViewZoom::PageFraction(anchor.y(), h, before.height(), vbar->value());
    if (!SetMode(factor))
        return false;
    // The first setting can add or remove a scroll bar and so change the area.
    InitializeScrollBars(false);
    InitializeScrollBars(false);
    GetMinimumControlDimensions(w, h);
    const QSize after = viewport()->size();
    if (horizontalScrollBarPolicy() == Qt::ScrollBarAlwaysOn)
        hbar->setValue(ZWViewZoom::ScrollToKeep(fx, anchor.x(), w, after.width()));
    if (verticalScrollBarPolicy() == Qt::ScrollBarAlwaysOn)
        vbar->setValue(ZWViewZoom::ScrollToKeep(fy, anchor.y(), h, after.height()));
    viewport()->update();
    return true;
}

void ZWViewTemplateWnd::ScrollToTop()
{
    verticalScrollBar()->setValue(verticalScrollBar()->minimum());
}

void ZWViewTemplateWnd::ScrollToBottom()
{
    verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}

void ZWViewTemplateWnd::Draw(
    QPainter& dc, const QRect& target, bool logicalResolution, bool noBackground, const QRect& clip)
{
    m_page.Draw(dc, target, logicalResolution, noBackground, clip, horizontalScrollBar()->value(),
        verticalScrollBar()->value());
}

void ZWViewTemplateWnd::Print(QPainter& dc, const QPointF& physicalOffset)
{
    m_page.Print(dc, physicalOffset);
}

void ZWViewTemplateWnd::InitializeBackGround(const QSize& size, qreal ratio)
{
    const QSize pixels(qCeil(size.width() * ratio), qCeil(size.height() * ratio));
    if (m_backBuffer.size() != pixels || m_backBuffer.devicePixelRatio() != ratio) {
        m_backBuffer = QImage(pixels, QImage::Format_RGB32);
        m_backBuffer.setDevicePixelRatio(ratio);
    }
    // The picture measures millimetres as the screen does, so that the page
    // and its fonts keep their size.
    const QPointF pxPerMm = PixelsPerMm();
    m_backBuffer.setDotsPerMeterX(int(std::lround(pxPerMm.x() * 1000.0)));
    m_backBuffer.setDotsPerMeterY(int(std::lround(pxPerMm.y() * 1000.0)));
}

void ZWViewTemplateWnd::paintEvent(QPaintEvent*)
{
    QWidget* area = viewport();
    const QRect client = area->rect();
    if (client.isEmpty())
        return;
    // A fit asked for before the window had an area is made now that it
    // has one, rather than drawing the page at real size for good.
    double factor = 0.0;
    GetMode(factor);
    if (IsNoValue(factor) && m_page.HasTemplate())
        AdjustToClient();
    InitializeBackGround(client.size(), area->devicePixelRatioF());
    {
        QPainter dc(&m_backBuffer);
        // Beneath the page when the page has no out colour of its own.
        dc.fillRect(client, palette().color(QPalette::Dark));
        dc.setRenderHint(QPainter::TextAntialiasing, true);
        // Cards fill their background colours on screen as on paper: the
        // window shows what will be printed.
        Draw(dc, client, false, false, client);
    }
    QPainter screen(area);
    screen.drawImage(0, 0, m_backBuffer);
}

void ZWViewTemplateWnd::resizeEvent(QResizeEvent* event)
{
    QAbstractScrollArea::resizeEvent(event);
    if (m_page.HasTemplate())
        AdjustToClient();
}

void ZWViewTemplateWnd::scrollContentsBy(int, int)
{
    viewport()->update();
}

void ZWViewTemplateWnd::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::RightButton) {
        OnRButtonUp(event->globalPosition().toPoint());
        event->accept();
        return;
    }
    QAbstractScrollArea::mouseReleaseEvent(event);
}

void ZWViewTemplateWnd::wheelEvent(QWheelEvent* event)
{
    event->accept();
    if (event->modifiers() & Qt::ControlModifier) {
        // One zoom step a notch (120); finer wheels add up to one.
        m_zoomDelta += event->angleDelta().y();
        const int steps = m_zoomDelta / 120;
        m_zoomDelta -= steps * 120;
        if (steps != 0)
            emit zoomRequested(steps, event->position());
        return;
    }
    m_zoomDelta = 0;
    QScrollBar* hbar = horizontalScrollBar();
    QScrollBar* vbar = verticalScrollBar();
    const bool canScrollV = verticalScrollBarPolicy() == Qt::ScrollBarAlwaysOn;
    const bool canScrollH = horizontalScrollBarPolicy() == Qt::ScrollBarAlwaysOn;
    QPoint angle = event->angleDelta();
    QPoint pixels = event->pixelDelta();
    // Shift turns the wheel sideways, and so does a page that only overhangs sideways.
    if ((event->modifiers() & Qt::ShiftModifier) || (!canScrollV && canScrollH && angle.x() == 0)) {
        angle = QPoint(angle.x() + angle.y(), 0);
        pixels = QPoint(pixels.x() + pixels.y(), 0);
    }
    // A notch moves one line: a twentieth of the window.
    const int dx = pixels.isNull() ? roundi(angle.x() / 120.0 * hbar->singleStep()) : pixels.x();
    const int dy = pixels.isNull() ? roundi(angle.y() / 120.0 * vbar->singleStep()) : pixels.y();
    if (canScrollH && dx != 0)
        hbar->setValue(hbar->value() - dx);
    if (canScrollV && dy != 0)
        vbar->setValue(vbar->value() - dy);
}

void ZWViewTemplateWnd::PageStep(int direction)
{
    QScrollBar* vbar = verticalScrollBar();
    const bool scrolls = verticalScrollBarPolicy() == Qt::ScrollBarAlwaysOn;
    const bool atEnd
        = !scrolls || (direction > 0 ? vbar->value() >= vbar->maximum() : vbar->value() <= vbar->minimum());
    if (atEnd) {
        emit pageEndReached(direction);
        return;
    }
    vbar->setValue(vbar->value() + direction * vbar->pageStep());
}

void ZWViewTemplateWnd::keyPressEvent(QKeyEvent* event)
{
    const Qt::KeyboardModifiers modifiers = event->modifiers() & ~Qt::KeypadModifier;
    QScrollBar* hbar = horizontalScrollBar();
    QScrollBar* vbar = verticalScrollBar();
    if (modifiers == Qt::NoModifier) {
        switch (event->key()) {
        case Qt::Key_Up:
            vbar->setValue(vbar->value() - vbar->singleStep());
            return;
        case Qt::Key_Down:
            vbar->setValue(vbar->value() + vbar->singleStep());
            return;
        case Qt::Key_Left:
            hbar->setValue(hbar->value() - hbar->singleStep());
            return;
        case Qt::Key_Right:
            hbar->setValue(hbar->value() + hbar->singleStep());
            return;
        case Qt::Key_PageUp:
            PageStep(-1);
            return;
        case Qt::Key_PageDown:
        case Qt::Key_Space:
            PageStep(+1);
            return;
        case Qt::Key_Home:
            ScrollToTop();
            return;
        case Qt::Key_End:
            ScrollToBottom();
            return;
        default:
            break;
        }
    } else if (modifiers == Qt::ShiftModifier && event->key() == Qt::Key_Space) {
        PageStep(-1);
        return;
    }
    // Everything else (the frame's and the dialog's shortcuts among them)
    // goes on to the parents.
    event->ignore();
}

void ZWViewTemplateWnd::SetToolBarActions(const QList<QAction*>& actions)
{
    m_toolBarActions.clear();
    for (QAction* action : actions)
        m_toolBarActions << action;
}

QMenu* ZWViewTemplateWnd::CreateContextMenu()
{
    auto* menu = new QMenu(this);
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
    bars->setEnabled(!m_toolBarActions.isEmpty());
    ZWActionTexts::Apply(menu->actions());
    ZWActionTexts::Apply(bars->actions());
    return menu;
}

void ZWViewTemplateWnd::OnRButtonUp(const QPoint& globalPos)
{
    QMenu* menu = CreateContextMenu();
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->popup(globalPos);
}

void ZWViewTemplateWnd::OnViewToolbar(int id)
{
    const int index = id - FirstToolBarCommand;
    if (index < 0 || index >= m_toolBarActions.size() || !m_toolBarActions[index])
        return;
    m_toolBarActions[index]->trigger();
}
