#pragma once

#include "host/core/ZWBasicString.h"

#include <QDialog>
#include <vector>

class QLabel;
class QPushButton;
class QTreeWidget;

// The wizard's page for a formula of the library: its names and texts; the
// chosen name goes into the formula.
class CDlgAddFormuleWizzard : public QDialog
{
    Q_OBJECT

public:
    CDlgAddFormuleWizzard(
        const std::vector<ZWBasicString>& names, const std::vector<ZWBasicString>& texts, QWidget* parent = nullptr);

    // The chosen formula's name; empty when none is chosen.
    ZWBasicString GetFormule() const;
    QTreeWidget* List() const { return m_list; }

private:
    QTreeWidget* m_list;
    QLabel* m_none;
    QPushButton* m_ok;
};
