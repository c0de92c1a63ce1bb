#pragma once

#include "template/ZWTemplate.h"

#include <QMainWindow>
#include <QUndoStack>
#include <vector>

class QActionGroup;
class QComboBox;
class QStackedWidget;
class ZWCardControl;
class ZWEditTemplateWnd;

// A plain window around the designer's page windows of one report, until
// the editor dialog takes their place: a tool selector, the layout
// commands, undo and redo, a page selector, a zoom selector and saving back
// to the report's file. One undo history serves all the pages.
class ZWPageEditWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit ZWPageEditWindow(QWidget* parent = nullptr);
    ~ZWPageEditWindow() override;

    // Loads a report and makes a page window for each of its pages (one
    // empty page when it has none). False, with the reason, when the file
    // cannot be read.
    bool Open(const QString& path, QString* error = nullptr);
    // Writes the report back to its file (the previous one kept as
    // NAME.XRPT.bak).
    bool Save(QString* error = nullptr);
    bool IsModified() const { return !m_stack.isClean() || m_pagesChanged; }

    int PageCount() const { return int(m_pages.size()); }
    ZWEditTemplateWnd* Page(int index) const { return m_pages.at(size_t(index)); }
    ZWEditTemplateWnd* CurrentPage() const;
    void SetCurrentPage(int index);
    QUndoStack& UndoStack() { return m_stack; }

protected:
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void BuildToolBars();
    void SetTool(int state);
    void ShowSelection(ZWCardControl* card);
    void UpdateTitle();
    void ChooseZoom(int entry);
    void ShowZoom();

    ZWTemplate m_report;
    QString m_path;
    QUndoStack m_stack;
    bool m_pagesChanged = false;
    std::vector<ZWEditTemplateWnd*> m_pages;
    QStackedWidget* m_stackWidget = nullptr;
    QActionGroup* m_tools = nullptr;
    QComboBox* m_pageSelector = nullptr;
    QComboBox* m_zoomSelector = nullptr;
    int m_tool = 2;
};
