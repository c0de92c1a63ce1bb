#include "viewer/widgets/ZWViewTemplateWnd.h"

#include "host/core/ZWLoadString.h"
#include "host/core/ZWMath.h"
#include "template/tagDraw.h"
#include "viewer/ZWViewZoom.h"

#include <QMainWindow>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QToolBar>
#include <QWheelEvent>
#include <QtMath>
#include <cmath>

namespace {

// Both scroll bars move by this many pixels a step, as the page size of
// the bars says.
constexpr int kScrollStep = 10;

} // namespace

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
    const auto setUp = [](QScrollBar* bar, int page, int client, auto setPolicy) {
        if (client < page - 1) {
            // Positions 0 .. page − client: the last shows the page's far edge.
            const int last = page - client;
            const int position = std::min(bar->value(), last);
            bar->setRange(0, last);
            bar->setPageStep(kScrollStep);
            bar->setSingleStep(kScrollStep);
            bar->setValue(position);
            setPolicy(Qt::ScrollBarAlwaysOn);
        } else {
            bar->setValue(0);
            setPolicy(Qt::ScrollBarAlwaysOff);
        }
    };
    setUp(horizontalScrollBar(), roundi(w), viewport()->width(),
        [this](Qt::ScrollBarPolicy p) { setHorizontalScrollBarPolicy(p); });
    setUp(verticalScrollBar(), roundi(h), viewport()->height(),
        [this](Qt::ScrollBarPolicy p) { setVerticalScrollBarPolicy(p); });
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
    if (event->modifiers() & Qt::ControlModifier) {
        const int steps = event->angleDelta().y() / 120;
        if (steps != 0)
            emit zoomRequested(steps);
        event->accept();
        return;
    }
    QAbstractScrollArea::wheelEvent(event);
}

QList<QToolBar*> ZWViewTemplateWnd::FrameToolBars() const
{
    for (QWidget* w = parentWidget(); w; w = w->parentWidget())
        if (auto* frame = qobject_cast<QMainWindow*>(w))
            return frame->findChildren<QToolBar*>(QString(), Qt::FindDirectChildrenOnly);
    return {};
}

QMenu* ZWViewTemplateWnd::CreateContextMenu()
{
    auto* menu = new QMenu(this);
    QMenu* bars = menu->addMenu(ZWLoadString(32526));
    const QList<QToolBar*> toolBars = FrameToolBars();
    for (int i = 0; i < toolBars.size(); ++i) {
        QAction* action = bars->addAction(toolBars[i]->windowTitle());
        action->setCheckable(true);
        action->setChecked(!toolBars[i]->isHidden());
        const int id = FirstToolBarCommand + i;
        action->setData(id);
        connect(action, &QAction::triggered, this, [this, id] { OnViewToolbar(id); });
    }
    bars->setEnabled(!toolBars.isEmpty());
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
    const QList<QToolBar*> toolBars = FrameToolBars();
    const int index = id - FirstToolBarCommand;
    if (index < 0 || index >= toolBars.size())
        return;
    QToolBar* bar = toolBars[index];
    bar->setVisible(bar->isHidden());
}
