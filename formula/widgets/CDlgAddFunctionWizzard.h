#pragma once

#include "host/core/ZWBasicString.h"

#include <QDialog>

class QLabel;
class QTreeWidget;

// The wizard's page for a function: the functions of the tokenizer's table
// with what each computes, and a preview of the call that goes in.
class CDlgAddFunctionWizzard : public QDialog
{
    Q_OBJECT

public:
    explicit CDlgAddFunctionWizzard(QWidget* parent = nullptr);

    // The chosen function's name ("sqrt").
    ZWBasicString GetFunction() const;
    QTreeWidget* List() const { return m_list; }
    QLabel* Preview() const { return m_preview; }

private:
    void UpdatePreview();

    QTreeWidget* m_list;
    QLabel* m_preview;
};
