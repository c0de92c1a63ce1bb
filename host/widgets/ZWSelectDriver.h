#pragma once

#include <QDialog>
#include <QString>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTreeWidget;
class ZWLoggerStore;

// The device-variable chooser: the variables of the logger store, as device
// and variable, narrowed by a search text, with an optional filter. The
// chosen name ("device.variable" or "device.variable:filter") can also be
// typed, for a store that lists nothing.
class ZWSelectDriver : public QDialog
{
    Q_OBJECT

public:
    // A null store means the installed one.
    explicit ZWSelectDriver(ZWLoggerStore* store = nullptr, QWidget* parent = nullptr);

    // Runs the chooser; true with `name` set when the user chose a variable.
    static bool SelectDriverAndVar(QWidget* parent, ZWLoggerStore* store, QString& name);

    // The name as it goes between the brackets of a formula.
    QString GetName() const;
    // Preselects a name (its filter too, when the store offers it).
    void SetName(const QString& name);

    QLineEdit* Search() const { return m_search; }
    QTreeWidget* List() const { return m_list; }
    QComboBox* Filter() const { return m_filter; }
    QLineEdit* NameEdit() const { return m_name; }
    // The rows the search leaves visible.
    int VisibleCount() const;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void ApplySearch();
    void OnCurrentChanged();
    void UpdateOk();

    QLineEdit* m_search;
    QTreeWidget* m_list;
    QComboBox* m_filter;
    QLineEdit* m_name;
    QLabel* m_empty;
    QPushButton* m_ok;
};
