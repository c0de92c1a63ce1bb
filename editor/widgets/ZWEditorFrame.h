#pragma once

#include "host/core/XmlDocument.h"
#include "template/ZWTemplate.h"

#include <QMainWindow>
#include <QTimer>
#include <QUndoStack>
#include <map>
#include <memory>
#include <vector>

class QAction;
class QActionGroup;
class QComboBox;
class QStackedWidget;
class ZWEditTemplateWnd;
class ZWPropertyEdit;
class ZWPropertyPanel;
class ZWRecovery;

// The editor's frame: the tool bars (tools, layout, pages, zoom, report),
// the page and zoom selectors, the properties panel in a dock, one page
// window per page of the report (one shown), the report's undo stack, and
// the report's identity, name, formula library and modified flag. It loads
// and saves the report and routes every command to the current page.
class ZWEditorFrame : public QMainWindow
{
    Q_OBJECT

public:
    explicit ZWEditorFrame(QWidget* parent = nullptr);
    ~ZWEditorFrame() override;

    // Loads a report file; a file that cannot be read becomes a new empty
    // report (false). A report without an identity is modified at once.
    bool Setup(const QString& path);
    // Takes a report from its XML (a state restored after a crash), saved
    // as `path` (empty for a report never saved); it stays modified.
    void SetupFromXml(const QByteArray& xml, const QString& path);
    // An empty report with one page, not modified.
    void ResetToNew();
    // The report as the pages show it now.
    ZWTemplate ToTemplate() const;
    // Saves; without a name (or with `chooseName`) asks for one first.
    // False when nothing was saved.
    bool SaveReport(bool chooseName = false);
    // The save question when the report is modified: false when the user
    // chose Cancel, or Yes and the save did not happen.
    bool MaybeSave(bool offerCancel);

    // The text document of the fields a card can be bound to.
    static void CreateDatabaseFields(XmlDocument& document);

    int PageCount() const { return int(m_pages.size()); }
    ZWEditTemplateWnd* Page(int index) const;
    ZWEditTemplateWnd* CurrentPage() const { return Page(m_current); }
    int CurrentIndex() const { return m_current; }
    void SetCurrentPage(int index);
    void OnNewPage();
    // False (and a message) for the only page.
    bool OnDeletePage();
    void OnZoomIn();
    void OnZoomOut();
    void Zoom(bool in);
    void OnZoomSelector(int entry);
    void SetTool(int state);
    void SetSupportMask(int mask);
    void SetOrientation(int orientation);
    void OnStylesModified();
    // Deletes a report chosen in the report list after a confirmation; its
    // file stays as its backup. The report being edited becomes unsaved.
    void OnDeleteReport();

    bool IsModified() const { return m_modified || !m_stack.isClean(); }
    void SetModified(bool modified);
    const QString& ReportId() const { return m_id; }
    const QString& ReportName() const { return m_name; }
    // The file the report is saved as, empty when it has no name.
    QString ReportPath() const;
    QUndoStack& Stack() { return m_stack; }
    ZWPropertyPanel* Panel() const { return m_panel; }
    QComboBox* PageSelector() const { return m_pageSelector; }
    QComboBox* ZoomSelector() const { return m_zoomSelector; }
    const XmlDocument& Formules() const { return m_formules; }
    // The action of a command identifier (32488 …), or null.
    QAction* Action(int command) const;

    // Keeps the unsaved state in `recovery` every minute and on each page
    // switch while the report is modified (null stops it).
    void SetRecovery(std::shared_ptr<ZWRecovery> recovery);
    // Writes the state now when modified; removes it when not.
    void WriteRecovery();
    // The key of this report in the recovery folder.
    QString RecoveryKey() const;

signals:
    void captionChanged(const QString& caption);
    void modifiedChanged(bool modified);
    // The user asked to close the editor.
    void closeRequested();
    // The user asked to see the report with data.
    void previewRequested();

protected:
    // Yes/No(/Cancel) on the save question: QMessageBox::Yes, No or Cancel.
    virtual int AskSave(bool offerCancel);
    // A name for the report from the report list; empty for none.
    virtual QString ChooseName();
    // The report to open from the report list; empty for none.
    virtual QString ChooseReport();
    virtual bool Confirm(const QString& text);
    virtual void ShowMessage(const QString& text);
    virtual void OnFormulaLibrary();
    void closeEvent(QCloseEvent* event) override;

private:
    void BuildActions();
    void BuildBars();
    void BuildMenus();
    ZWEditTemplateWnd* AddPage(ZWTemplatePage page);
    void Load(ZWTemplate report, const QString& path, bool modified);
    void DestroyPages();
    void FillPageSelector();
    void ShowProperties();
    void PageChanged(bool redraw);
    void UpdateActions();
    void UpdateCaption();
    void OnOpenReport();
    void OnNewReport();
    QAction* NewAction(int command, int textId, const QKeySequence& key = {});

    QString m_id;
    QString m_name;
    QString m_path;
    bool m_modified = false;
    XmlDocument m_formules;
    QUndoStack m_stack;
    std::vector<ZWEditTemplateWnd*> m_pages;
    int m_current = -1;
    int m_support = 127;
    int m_defaultTool = 2;
    QStackedWidget* m_stackWidget;
    ZWPropertyPanel* m_panel;
    std::unique_ptr<ZWPropertyEdit> m_propertyEdit;
    QComboBox* m_pageSelector;
    QComboBox* m_zoomSelector;
    QActionGroup* m_tools;
    std::map<int, QAction*> m_actions;
    QList<QAction*> m_barActions;
    std::shared_ptr<ZWRecovery> m_recovery;
    QTimer m_recoveryTimer;
};
