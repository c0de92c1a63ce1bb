#pragma once

#include "viewer/ZWViewPage.h"

#include <QAbstractScrollArea>
#include <QImage>
#include <QList>
#include <QPointer>

class QAction;
class QMenu;

// The window of one report page in the viewer: the page (ZWViewPage, which
// holds the cards, their values and the zoom) drawn into an off-screen
// picture and copied to the screen in one piece, scroll bars when the page
// is larger than the window, and a context menu that shows or hides the
// frame's tool bars.
//
// The keyboard scrolls the page: arrows a twentieth of the window, Page
// Up/Down and Space a window's height, Home and End to its top and bottom.
// The window knows nothing of its frame: it tells it by signals when the
// reader goes past an end of the page or asks for another zoom, and the
// frame hands it the commands that show and hide its tool bars.
class ZWViewTemplateWnd : public QAbstractScrollArea
{
    Q_OBJECT

public:
    // First command of the tool bar toggles of the context menu: tool bar i
    // of the frame is command 800 + i.
    static constexpr int FirstToolBarCommand = 800;

    explicit ZWViewTemplateWnd(QWidget* parent = nullptr);
    ~ZWViewTemplateWnd() override;

    // Builds the cards and page properties from a "page" element and
    // re-applies the current value document.
    virtual bool SetTemplate(const XmlDocument::XmlNode& page);
    bool SetUserData(const QByteArray& text);
    bool RechargeUserDataValues();

    // Zoom: 0 fits the window, 1..4 fixed factors (see ZWViewPage). True
    // when the factor changed.
    bool SetMode(int mode);
    bool SetMode(double factor);
    void GetMode(double& factor) const { m_page.GetMode(factor); }

    double GetWidth() const { return m_page.GetWidth(); }
    double GetHeight() const { return m_page.GetHeight(); }
    void SetOutColor(quint32 color);
    quint32 GetOutColor() const { return m_page.GetOutColor(); }

    // The page's placed size in pixels at the present factor; false
    // without a page.
    bool GetMinimumControlDimensions(double& width, double& height) const;
    // Shows a scroll bar in each direction in which the page is larger than
    // the window (both hidden when `hide`).
    void InitializeScrollBars(bool hide);
    // Fits the page again after the window changed size: in fit mode the
    // factor is recomputed around the scroll bars, otherwise the scroll bars
    // follow the new size.
    void AdjustToClient();
    // Sets a fixed factor keeping the point `anchor` of the window (in
    // viewport pixels) over the same point of the page, as far as the page
    // reaches. True when the factor changed.
    bool ZoomAt(double factor, const QPointF& anchor);
    // The middle of the window, where zooming from the keyboard is anchored.
    QPointF Centre() const;
    // Scrolls to the page's top or bottom, keeping the horizontal position.
    void ScrollToTop();
    void ScrollToBottom();

    void Draw(QPainter& dc, const QRect& target, bool logicalResolution, bool noBackground, const QRect& clip);
    void Draw(QPainter& dc, const QRect& target, const QRect& clip) { Draw(dc, target, false, true, clip); }
    // Prints the page at real size on the painter's device (see ZWViewPage::Print).
    void Print(QPainter& dc, const QPointF& physicalOffset = QPointF());
    void FlipCard(bool right) { m_page.FlipCard(right); }

    ZWViewPage& Page() { return m_page; }
    const ZWViewPage& Page() const { return m_page; }
    // Pixels per millimetre of the window's screen.
    QPointF PixelsPerMm() const;

    // The commands (checkable) that show and hide the frame's tool bars,
    // in order: tool bar i is command 800 + i of the context menu.
    void SetToolBarActions(const QList<QAction*>& actions);
    // The context menu: one entry whose sub-menu lists the frame's tool bars,
    // each checked while visible. Owned by the caller.
    QMenu* CreateContextMenu();
    // Shows or hides tool bar id − 800 of the frame.
    void OnViewToolbar(int id);

signals:
    // The zoom factor changed (also in fit mode when the window was resized).
    void zoomChanged(double factor);
    // Ctrl + wheel: steps up (positive) or down, anchored at `anchor` (the
    // mouse, in viewport pixels).
    void zoomRequested(int steps, const QPointF& anchor);
    // Page Down or Space at the bottom of the page (+1), Page Up or
    // Shift+Space at its top (−1): the reader goes on to the next or back to
    // the previous page.
    void pageEndReached(int direction);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    // Runs the context menu at `globalPos` (the right button came up there).
    virtual void OnRButtonUp(const QPoint& globalPos);

private:
    void InitializeBackGround(const QSize& size, qreal ratio);
    bool ChangeFactor(bool changed);
    // Moves the vertical scroll bar one page; at an end already, tells the
    // frame instead.
    void PageStep(int direction);

    ZWViewPage m_page;
    QImage m_backBuffer;
    bool m_adjusting = false;
    QList<QPointer<QAction>> m_toolBarActions;
    // Wheel turns of less than a notch (fine-grained wheels), kept until
    // they make a whole zoom step.
    int m_zoomDelta = 0;
};
