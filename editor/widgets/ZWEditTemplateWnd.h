#pragma once

#include "editor/ZWEditPage.h"
#include "host/core/XmlDocument.h"
#include "template/ZWTemplatePage.h"

#include <QAbstractScrollArea>
#include <QImage>
#include <QList>
#include <QPointer>
#include <QStringList>
#include <QTimer>
#include <functional>

class QAction;
class QMenu;
class QUndoCommand;
class QUndoStack;
class ZWCardImage;
struct tagDraw;

// The designer's window of one report page. It owns the page (properties and
// cards) and its ZWEditPage (mapping, selection, mouse operations); it turns
// Qt's events into the page's presses, moves and releases, paints the page
// from a cached picture with the dot grid, the card outlines, the animated
// outline of the selected cards and the drag outline over it, and records
// every change of the cards as a command on the report's undo stack.
//
// Keys: Delete deletes the selection; Ctrl+C, Ctrl+X, Ctrl+V copy, cut and
// paste; Ctrl+Z undoes, Ctrl+Shift+Z and Ctrl+Y redo; the arrow keys move the
// selected cards one pixel (with Shift one grid step), kept on the page, and
// repeated presses on the same cards are one undo step; Escape drops a drag.
// Every other key goes on to the parent.
//
// The window knows nothing of its frame: it tells it by signals what
// changed, and the frame hands it the undo stack of the report and the
// commands that show and hide its tool bars.
class ZWEditTemplateWnd : public QAbstractScrollArea
{
    Q_OBJECT

public:
    // The context menu's commands: the new cards, and tool bar i of the frame
    // as command 800 + i.
    enum Command {
        NewLabelCommand = 420,
        NewImageCommand = 421,
        NewDateCommand = 422,
        NewFormuleCommand = 423,
        NewConditionedCommand = 424,
        NewChartCommand = 425,
        NewTableCommand = 426,
        FirstToolBarCommand = 800,
    };
    // The support mask's bits: which kinds of card may be made here.
    enum Support {
        LabelSupport = 1,
        ImageSupport = 2,
        DateSupport = 4,
        FormuleSupport = 8,
        ConditionedSupport = 16,
        ChartSupport = 32,
        TableSupport = 64,
    };

    explicit ZWEditTemplateWnd(QWidget* parent = nullptr);
    // Clears the undo stack when it holds commands: they point into this
    // page.
    ~ZWEditTemplateWnd() override;

    // The page. SetTemplate reads a "page" element, SetPage takes a page
    // read already; both drop the selection and the drag. SaveTemplate adds
    // the page's "page" element under `design`.
    virtual bool SetTemplate(const XmlDocument::XmlNode& page);
    void SetPage(ZWTemplatePage page);
    bool SaveTemplate(XmlDocument::XmlNode design) const;
    ZWTemplatePage& Page() { return m_page; }
    const ZWTemplatePage& Page() const { return m_page; }
    ZWEditPage& Edit() { return m_edit; }

    // The undo stack of the report, shared by all its pages and owned by
    // the frame. Without one the window keeps its own.
    void SetUndoStack(QUndoStack* stack);
    QUndoStack* UndoStack() const;

    // The device resolution the mapping uses, pixels per millimetre; 0 (the
    // default) takes the screen's.
    void SetPixelsPerMm(double x, double y);
    // The whole mapping now; false when it cannot be made (no area yet, a
    // page without size).
    bool GetTemplateDimensions(ZWPageMapping::Dimensions& d);

    // Zoom: 0 fits the page to the window, 1..4 those factors, 100 keeps the
    // factor; a factor, negative for fit mode. True when the factor changed.
    bool SetMode(int mode);
    bool SetMode(double factor);
    void GetMode(double& factor) const { m_edit.Mapping().GetMode(factor); }
    // 0 landscape, otherwise portrait. True when the page turned.
    bool SetOrientation(int orientation);
    int GetOrientation() const;
    double GetWidth() const { return m_page.properties.width; }
    double GetHeight() const { return m_page.properties.height; }
    ZWGlobalProperties& GetGlobalProperties() { return m_page.properties; }
    ZWCardImage& GetBackground();
    // The pixels the window needs to show the whole page at this zoom.
    bool GetMinimumControlDimensions(double& w, double& h);
    // Where a card made by a command goes: at the last mouse position, one
    // grid step (or 30 pixels) each way, on the page; in mm.
    void GetInitialControlDimensions(double& x, double& y, double& w, double& h);
    // Shows a scroll bar in each direction in which the page is larger than
    // the window (both hidden when `hide`).
    void InitializeScrollBars(bool hide);

    // Display settings.
    void SetViewBoundingRectangles(bool view);
    // The next paint draws the page again instead of copying its picture.
    void SetRedrawAll(bool redraw = true);
    void SetOutColor(quint32 color);
    quint32 GetOutColor() const { return m_page.properties.outColor; }
    void SetLabelColor(quint32 color) { m_edit.labelColor = color; }
    void SetImageColor(quint32 color) { m_edit.imageColor = color; }
    void SetDateColor(quint32 color) { m_edit.dateColor = color; }
    void SetFormuleColor(quint32 color) { m_edit.formuleColor = color; }
    void SetConditionedColor(quint32 color) { m_edit.conditionedColor = color; }
    void SetLabelSupport(bool on) { SetSupport(LabelSupport, on); }
    void SetImageSupport(bool on) { SetSupport(ImageSupport, on); }
    void SetDateSupport(bool on) { SetSupport(DateSupport, on); }
    void SetFormuleSupport(bool on) { SetSupport(FormuleSupport, on); }
    void SetConditionedSupport(bool on) { SetSupport(ConditionedSupport, on); }
    void SetChartSupport(bool on) { SetSupport(ChartSupport, on); }
    void SetTableSupport(bool on) { SetSupport(TableSupport, on); }
    int GetSupportMask() const { return m_support; }
    // The tool: 2 selects, 0 label, 1 image, 3 date, 4 formula, 8
    // conditioned card (ZWEditPage::ActiveState).
    void SetActiveState(int state);
    int GetActiveState() const { return m_edit.GetActiveState(); }

    // The animation of the selected outline: runs only while something is
    // selected and no drag is in progress.
    void PlayTimer();
    void PauseTimer();
    bool IsTimerRunning() const { return m_timer.isActive(); }
    int AnimationPhase() const { return m_phase; }

    // Commands on the cards; each change is one undo step.
    ZWCardControl* AddControl(double x, double y, double w, double h);
    void OnNewLabel() { NewCard(ZWEditPage::LabelTool); }
    void OnNewImage() { NewCard(ZWEditPage::ImageTool); }
    void OnNewDate() { NewCard(ZWEditPage::DateTool); }
    void OnNewFormule() { NewCard(ZWEditPage::FormuleTool); }
    void OnNewConditioned() { NewCard(ZWEditPage::ConditionedTool); }
    void OnNewChart() { NewCard(ZWEditPage::ChartTool); }
    void OnNewTable() { NewCard(ZWEditPage::TableTool); }
    void AlignSelectedControls(int mode);
    void DistributeSelectedControls(int mode);
    void JustifySelectedControls(int mode, bool asGroup);
    void ResizeSelectedControls(bool width, bool height);
    // Moves the selection (dx, dy) pixels, or grid steps with `gridStep`;
    // repeated moves of the same cards merge into one undo step.
    void MoveSelectedControls(int dx, int dy, bool gridStep);
    void ControlCopy();
    void ControlCut();
    void ControlPaste();
    void DeleteSelectedControls();
    // Makes the first card with this id the only selected one; false for an
    // unknown id (nothing changes).
    bool SelectControlById(const QString& id);
    ZWCardControl* GetSelectedControl() const;
    int GetNumberOfSelectedControls() const;
    QStringList SelectedIds() const;
    // Every card takes its text style again from its style file.
    void StylesModified();
    void Undo();
    void Redo();

    // The mouse capture was lost: a drag in progress is dropped, with the
    // selection.
    void OnCaptureChanged();

    // The commands (checkable) that show and hide the frame's tool bars, in
    // order: tool bar i is command 800 + i of the context menu.
    void SetToolBarActions(const QList<QAction*>& actions);
    // The context menu at a point of the page: a new card of each supported
    // kind, then the tool bars. Owned by the caller; null off the page.
    QMenu* CreateContextMenu(const QPoint& point);
    void OnViewToolbar(int id);

    // Draws the page (background, grid, cards layer by layer) as the window
    // shows it, without the editor's outlines.
    virtual void Draw(QPainter& dc, const QRect& clip);

    // Whether `r` overlaps `area`, touching edges included.
    static bool IsVisible(const ZWRect& area, const ZWRect& r);

signals:
    // The selection changed: the single selected card or null; `byId` when
    // SelectControlById made it.
    void selectionChanged(ZWCardControl* card, bool byId);
    // A card was made on this page (drawn or by a command); the single
    // selected card or null.
    void cardCreated(ZWCardControl* card);
    // The cards of the page changed (a command, an undo or a redo).
    void templateModified();
    // An undo or redo changed this page: the frame shows it.
    void pageShowRequested();
    // The tool changed (SetActiveState).
    void toolChanged(int state);
    void zoomChanged(double factor);
    // The animation timer started (true) or stopped.
    void timerStateChanged(bool running);

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    // Runs the context menu at `point` (viewport pixels).
    virtual void OnRButtonUp(const QPoint& point);

private:
    void SyncMapping();
    void SetSupport(int bit, bool on);
    void NewCard(int tool);
    // Runs `change` recorded as one undo step of the card places and sizes.
    void RecordGeometry(int textId, const std::function<void()>& change, bool nudge = false);
    // Runs `change` recorded as one undo step that adds (insert) or removes
    // cards. Returns whether the cards changed.
    bool RecordList(bool insert, int textId, const std::function<void()>& change);
    void Push(QUndoCommand* command);
    // After the cards changed: repaint everything and tell the frame.
    void CardsChanged();
    void OnTimer();
    void UpdateCursor();
    void DrawGrid(QPainter& dc, const ZWPageMapping::Dimensions& d, const QRect& clip) const;
    // The card outlines: those of the unselected cards, or (`selectedOnly`)
    // those of the selected cards and the card under the mouse; straight
    // into `picture` when given, else with `dc`.
    void DrawBoundingRectangles(
        QPainter* dc, const ZWPageMapping::Dimensions& d, bool selectedOnly, QImage* picture = nullptr);
    void DrawDraggingBox(QPainter& dc);
    void RenderPagePicture(const QSize& client, qreal ratio);
    void RenderOutlinePicture();
    QImage NewPicture(const QSize& client, qreal ratio) const;

    ZWTemplatePage m_page;
    ZWEditPage m_edit{m_page};
    QPointer<QUndoStack> m_stack;
    QUndoStack* m_ownStack = nullptr;
    double m_pixelsPerMmX = 0.0;
    double m_pixelsPerMmY = 0.0;
    int m_layerCount = 2;
    int m_support = 127;
    bool m_viewBoundingRectangles = true;
    bool m_redrawAll = true;
    // The outlines of the unselected cards are drawn once over the page
    // picture; the selected ones, the card under the mouse and the drag are
    // drawn over that on every paint.
    bool m_outlinesDirty = true;
    QImage m_pagePicture;
    QImage m_outlinePicture;
    QTimer m_timer;
    int m_phase = 0;
    bool m_adjusting = false;
    bool m_fitting = false;
    QList<QPointer<QAction>> m_toolBarActions;
};
