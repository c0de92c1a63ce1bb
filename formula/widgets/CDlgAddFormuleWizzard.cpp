#include "formula/widgets/CDlgAddFormuleWizzard.h"

#include "host/core/ZWLoadString.h"
#include "host/core/ZWTextId.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

CDlgAddFormuleWizzard::CDlgAddFormuleWizzard(
    const std::vector<ZWBasicString>& names, const std::vector<ZWBasicString>& texts, QWidget* parent)
    : QDialog(parent)
{
    setWindowTitle(ZWLoadString(ZWTextId::WizardFormulaTitle));
    m_list = new QTreeWidget(this);
    m_list->setObjectName(QStringLiteral("formulas"));
    m_list->setColumnCount(2);
    m_list->setHeaderLabels({ZWLoadString(ZWTextId::FormulaNameColumn), ZWLoadString(ZWTextId::FormulaTextColumn)});
    m_list->setRootIsDecorated(false);
    m_list->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    const size_t n = std::min(names.size(), texts.size());
    for (size_t i = 0; i < n; ++i)
        new QTreeWidgetItem(m_list, {names[i], texts[i]});
    m_none = new QLabel(ZWLoadString(ZWTextId::WizardFormulaNone), this);
    m_none->setVisible(n == 0);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    m_ok = buttons->button(QDialogButtonBox::Ok);
    m_ok->setText(ZWLoadString(ZWTextId::Ok));
    buttons->button(QDialogButtonBox::Cancel)->setText(ZWLoadString(ZWTextId::Cancel));
    connect(buttons, &QDialogButtonBox::accepted, this, &CDlgAddFormuleWizzard::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &CDlgAddFormuleWizzard::reject);
    connect(m_list, &QTreeWidget::currentItemChanged, this, [this] { m_ok->setEnabled(m_list->currentItem()); });
    connect(m_list, &QTreeWidget::itemActivated, this, &CDlgAddFormuleWizzard::accept);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_list, 1);
    layout->addWidget(m_none);
    layout->addWidget(buttons);
    if (m_list->topLevelItemCount() > 0)
        m_list->setCurrentItem(m_list->topLevelItem(0));
    m_ok->setEnabled(m_list->currentItem());
    resize(480, 360);
}

ZWBasicString CDlgAddFormuleWizzard::GetFormule() const
{
    const QTreeWidgetItem* item = m_list->currentItem();
    return item ? item->text(0) : QString();
}
