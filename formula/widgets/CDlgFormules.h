#pragma once

#include "host/core/XmlDocument.h"
#include "host/core/ZWBasicString.h"

#include <QDialog>
#include <vector>

class QPushButton;
class QTreeWidget;
class ZWLoggerStore;

// The formula library: the formulas by name and text, in library order,
// with add, modify and delete. OK refuses a library with a reference loop;
// otherwise it rebuilds the library document from the list.
class CDlgFormules : public QDialog
{
    Q_OBJECT

public:
    // `library`: a "formules" document (an empty document is an empty
    // library); `store`: the variables offered while editing (null: the
    // installed store).
    explicit CDlgFormules(const XmlDocument& library, ZWLoggerStore* store = nullptr, QWidget* parent = nullptr);

    // The library after OK (before it, the library given).
    const XmlDocument& GetFormules() const { return m_library; }
    // The names and texts of the list, in order.
    void GetLists(std::vector<ZWBasicString>& names, std::vector<ZWBasicString>& texts) const;
    // The list as a library document.
    bool BuildFormulesDoc(XmlDocument& doc) const;

    QTreeWidget* List() const { return m_list; }
    QPushButton* AddButton() const { return m_add; }
    QPushButton* ModifyButton() const { return m_modify; }
    QPushButton* DeleteButton() const { return m_delete; }

public slots:
    void accept() override;
    void OnAdd();
    void OnModify();
    void OnDelete();

signals:
    // A refusal or question shown to the user (text id), for whoever watches.
    void messageShown(int textId);

protected:
    // Edits a formula in the formula dialog; true when it was accepted.
    // `name` and `text` empty for a new formula.
    virtual bool EditFormule(ZWBasicString& name, ZWBasicString& text);
    // Shows a refusal; asks a yes/no question. Tests override them.
    virtual void ShowMessage(const QString& text);
    virtual bool Ask(const QString& text);

private:
    void UpdateButtons();

    ZWLoggerStore* m_store;
    XmlDocument m_library;
    QTreeWidget* m_list;
    QPushButton* m_add;
    QPushButton* m_modify;
    QPushButton* m_delete;
};
