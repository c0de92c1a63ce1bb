#pragma once

#include <QDialog>
#include <QString>
#include <QStringList>

class QLabel;
class QLineEdit;
class QTreeWidget;
class QTreeWidgetItem;

// The list of reports of the report folder, in which the user names a new
// report (type 0), chooses several (type 1) or one (type 2). It only returns
// names; the caller opens, creates, copies or deletes the files.
class CDlgInformesList : public QDialog
{
    Q_OBJECT

public:
    enum Type { NewName = 0, Several = 1, One = 2 };

    explicit CDlgInformesList(QWidget* parent = nullptr);

    void SetType(int type);
    int GetType() const { return m_type; }
    // The report to preselect.
    void SetName(const QString& name);

    int GetNumberOfNames() const { return int(m_names.size()); }
    // An index outside the list leaves `out` unchanged.
    void GetName(QString& out, int index) const;
    const QStringList& Names() const { return m_names; }

    // A new report name: not empty, not starting with a blank, letters and
    // digits only.
    static bool IsValidName(const QString& name);

    // Fills the list from the report folder (done when the dialog is shown).
    void InitializeFields();
    QTreeWidget* List() const { return m_list; }
    QLineEdit* NameEdit() const { return m_edit; }

public slots:
    void accept() override;

signals:
    // A refusal shown to the user (text id), for whoever watches.
    void messageShown(int textId);

protected:
    void showEvent(QShowEvent* event) override;
    // Shows a message box with the text `textId`; tests override it.
    virtual void ShowMessage(int textId);

private:
    void OnSelectionChanged();
    void OnDoubleClick(QTreeWidgetItem* item);
    QList<QTreeWidgetItem*> SelectedInListOrder() const;

    int m_type = NewName;
    QString m_preselect;
    QStringList m_names;
    QTreeWidget* m_list = nullptr;
    QLabel* m_label = nullptr;
    QLineEdit* m_edit = nullptr;
    bool m_initialized = false;
};
