#pragma once

#include "host/core/XmlDocument.h"
#include "host/core/ZWTextId.h"

#include <QByteArray>
#include <QMainWindow>
#include <QString>
#include <vector>

class QAction;
class QComboBox;
class QDialog;
class QPrinter;
class QStackedWidget;
class QToolBar;
class ZWViewTemplateWnd;

// The report frame of the viewer: one page window per page of the report,
// one of them shown at a time, with a tool bar of pages (previous, page
// selector, next, print, refresh) and one of zoom (out, zoom selector, in).
// The state of the tool bars is kept in the per-user settings as
// "ViewReportBars".
//
// The commands belong to the frame itself, not to its tool bars, so that
// their keys work with the tool bars hidden: Ctrl+Page Up/Down change the
// page, Ctrl+− and Ctrl++ (or Ctrl+=) zoom, Ctrl+0 fits the page, Ctrl+P
// prints, F5 refreshes. Changing the page keeps the zoom the reader chose.
class ZWViewReportFrame : public QMainWindow
{
    Q_OBJECT

public:
    // Command (and text) ids of the frame's own commands.
    enum Command : int {
        ID_PREVIOUS_PAGE = ZWTextId::PreviousPage,
        ID_NEXT_PAGE = ZWTextId::NextPage,
        ID_ZOOM_IN = ZWTextId::ZoomIn,
        ID_ZOOM_OUT = ZWTextId::ZoomOut,
        ID_FILE_PRINT = 0xE107,
        ID_FILE_PRINT_PREVIEW = 0xE109,
        ID_VIEW_REFRESH = ZWTextId::Refresh,
        ID_ZOOM_FIT = ZWTextId::FitToWindow,
    };

    explicit ZWViewReportFrame(QWidget* parent = nullptr);
    ~ZWViewReportFrame() override;

    // One page window per "page" element of the design (one empty window
    // for a design without pages); the first is shown.
    bool SetTemplate(const XmlDocument& design);
    // Keeps a copy of the value document and gives it to every page window.
    bool SetUserData(const QByteArray& text);
    const QByteArray& UserData() const { return m_userData; }

    void OnNextPage();
    void OnPreviousPage();
    // Zoom steps keep the middle of the window over the same point of the page.
    void OnZoomIn();
    void OnZoomOut();
    // Fits the page into the window (the zoom selector's first entry).
    void OnZoomFit();
    // `steps` zoom steps in (positive) or out, keeping the page's point under
    // `anchor` (viewport pixels of the current page window) in place.
    void ZoomBy(int steps, const QPointF& anchor);
    // A choice in the zoom selector: 0 fits the window, k ≥ 1 is k × 50 %.
    void OnZoomSelector(int index);
    // A choice in the page selector (0-based).
    void OnPageSelector(int index);
    // Shows page `index` (0-based) with the zoom of the page shown so far,
    // scrolled to its top, or to its bottom when `atBottom`.
    void GoToPage(int index, bool atBottom = false);
    // Fits the current page into the frame again and repaints it (after a
    // data gathering, a page change).
    void Refresh();

    // Asks for a printer and a page range and prints.
    void OnFilePrint();
    // Prints pages first..last (1-based, inclusive) on `printer` at real
    // size: each page window is set to real size without out colour for its
    // page and given back its factor and out colour after. False when the
    // printer cannot be started or the range is empty.
    bool PrintPages(QPrinter& printer, int first, int last);

    int PageCount() const { return int(m_pages.size()); }
    // 0-based; −1 without pages.
    int CurrentPage() const { return m_current; }
    ZWViewTemplateWnd* CurrentPageWnd() const;
    ZWViewTemplateWnd* PageWnd(int index) const;
    QString Title() const { return m_title; }
    QString ReportId() const { return m_id; }
    // The title, or the text for an untitled report.
    QString DocumentName() const;

    QComboBox* PageSelector() const { return m_pageSelector; }
    QComboBox* ZoomSelector() const { return m_zoomSelector; }
    QAction* Action(int command) const;
    QToolBar* PagesBar() const { return m_pagesBar; }
    QToolBar* ZoomBar() const { return m_zoomBar; }
    // The commands that show and hide the tool bars (checked while shown).
    QList<QAction*> ToolBarActions() const;

    // Enables next and previous page and zoom in and out for the current
    // page and factor.
    void UpdateCommands();

protected:
    void closeEvent(QCloseEvent* event) override;
    // Runs the print dialog; tests answer it instead.
    virtual int ExecDialog(QDialog& dialog);

private:
    void ShowPage(int index);
    // The reader scrolled past an end of the page: on to the next page, or
    // back to the bottom of the previous one.
    void OnPageEnd(int direction);
    void ApplyZoom(double factor, const QPointF& anchor);
    void UpdateZoomSelector();
    void OnPageZoomChanged();
    void SaveBarState();

    QStackedWidget* m_stack;
    std::vector<ZWViewTemplateWnd*> m_pages;
    int m_current = -1;
    QByteArray m_userData;
    QString m_id;
    QString m_title;
    QComboBox* m_pageSelector;
    QComboBox* m_zoomSelector;
    QToolBar* m_pagesBar;
    QToolBar* m_zoomBar;
    QAction* m_previousPage;
    QAction* m_nextPage;
    QAction* m_zoomIn;
    QAction* m_zoomOut;
    QAction* m_zoomFit;
    QAction* m_print;
    QAction* m_refresh;
    bool m_barsSaved = false;
};
