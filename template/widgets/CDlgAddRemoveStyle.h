#pragma once

#include "template/ZWTextStyle.h"

#include <QDialog>
#include <memory>
#include <optional>

class CDlgEditStyle;

class QPushButton;
class QTreeWidget;

// The styles of the data folder: one row per ".XSTY" file with the values
// read from it and a swatch of its colour, sortable by any column. New
// (Insert), Modify (double-click) and Remove (Delete) change the files and
// signal stylesModified so that open pages re-read their labels' styles.
class CDlgAddRemoveStyle : public QDialog
{
    Q_OBJECT

public:
    explicit CDlgAddRemoveStyle(QWidget* parent = nullptr);

    QTreeWidget* List() const { return m_list; }
    // Re-reads the folder, keeping the selected style selected.
    void Refresh();
    // The selected style's name, empty when none.
    QString SelectedName() const;

    void OnNew();
    void OnModify();
    void OnRemove();

signals:
    void stylesModified();

protected:
    // Makes and runs the style editor; true when it wrote a style. Tests
    // replace them.
    virtual std::unique_ptr<CDlgEditStyle> MakeEditor(std::optional<ZWTextStyle> opened, bool mayOverwrite);
    virtual bool RunEditor(CDlgEditStyle& editor);
    virtual bool Ask(const QString& text);
    virtual void ShowMessage(const QString& text);
    void keyPressEvent(QKeyEvent* event) override;

private:
    void UpdateButtons();

    QTreeWidget* m_list;
    QPushButton* m_modify;
    QPushButton* m_remove;
};
