#pragma once

#include <QMainWindow>
#include <QPointer>
#include <memory>

class CDlgEditor;
class CDlgViewer;
class ZWRecovery;
class QAction;
class QLabel;
class QListWidget;

// The desktop application's main window, in the host's role: the reports
// of the report folder, each opened in a viewer with the unit last chosen;
// the report last opened is remembered and preselected; the report folder
// and the logger database can be chosen (both kept in the settings).
class ZWMainWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit ZWMainWindow(QWidget* parent = nullptr);
    ~ZWMainWindow() override;

    // Opens the logger database of the setup; a message says why it cannot.
    bool OpenDatabase();
    // Lists the reports of the folder again, keeping the selection.
    void Refresh();
    // Opens the selected report in a new viewer.
    void OnOpen();
    // Opens `name` (a report of the folder) in a new viewer; null when the
    // report could not be read.
    CDlgViewer* OpenReport(const QString& name);
    // The designer: a new report, the selected one, and what a crash left.
    CDlgEditor* OnNewReport();
    CDlgEditor* OnEdit();
    CDlgEditor* EditReport(const QString& name);
    // Offers the states of reports left unsaved by a crash; opens an editor
    // for each one restored. Returns how many were restored.
    int OfferRecovery();
    // Deletes the selected report after a confirmation; its file is kept as
    // its backup.
    bool OnDelete();
    // Copies the selected report under a new name, with a new identity.
    bool OnDuplicate();
    void OnLoggerDatabase();
    // Asks for the report folder; the chosen one is listed, used for this
    // session and kept as "ReportDirectory".
    void OnReportFolder();

    QListWidget* List() const { return m_list; }
    // The lines above the list: the report folder, the logger database.
    QLabel* FolderLabel() const { return m_folder; }
    QLabel* DatabaseLabel() const { return m_database; }
    QAction* OpenAction() const { return m_open; }
    QAction* EditAction() const { return m_edit; }
    QAction* DeleteAction() const { return m_delete; }
    QAction* DuplicateAction() const { return m_duplicate; }
    QList<CDlgEditor*> Editors() const;
    // Where the editors keep unsaved states.
    void SetRecovery(std::shared_ptr<ZWRecovery> recovery);
    QAction* ReportFolderAction() const { return m_chooseFolder; }
    QAction* LoggerDatabaseAction() const { return m_chooseDatabase; }
    // The viewers opened and not yet closed.
    QList<CDlgViewer*> Viewers() const;

protected:
    // Makes the viewer of a report; tests make one that answers its own dialogs.
    virtual CDlgViewer* CreateViewer();
    virtual CDlgEditor* CreateEditor();
    virtual bool Ask(const QString& text);
    // A name for a new report from the report list; empty for none.
    virtual QString ChooseNewName(const QString& proposal);
    virtual int ExecDialog(QDialog& dialog);
    virtual void ShowMessage(const QString& text);
    // Asks for a folder, starting at `current`; empty when cancelled.
    virtual QString ChooseFolder(const QString& current);

private:
    void UpdateStatus();
    void UpdateActions();
    CDlgEditor* ShowEditor(CDlgEditor* editor);

    QListWidget* m_list;
    QLabel* m_folder;
    QLabel* m_database;
    QAction* m_open;
    QAction* m_new;
    QAction* m_edit;
    QAction* m_delete;
    QAction* m_duplicate;
    QAction* m_refresh;
    QAction* m_chooseDatabase;
    QAction* m_chooseFolder;
    QList<QPointer<CDlgViewer>> m_viewers;
    QList<QPointer<CDlgEditor>> m_editors;
    std::shared_ptr<ZWRecovery> m_recovery;
};
