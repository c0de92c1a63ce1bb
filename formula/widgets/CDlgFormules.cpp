#include "formula/widgets/CDlgFormules.h"

#include "formula/ZWFormulaLibrary.h"
#include "formula/ZWFormuleCheck.h"
#include "formula/widgets/CDlgNewFormule.h"
#include "host/core/ZWLoadString.h"
#include "host/core/ZWTextId.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QMessageBox>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

CDlgFormules::CDlgFormules(const XmlDocument& library, ZWLoggerStore* store, QWidget* parent)
    : QDialog(parent), m_store(store), m_library(library)
{
    setWindowTitle(ZWLoadString(ZWTextId::FormulaLibraryTitle));
    m_list = new QTreeWidget(this);
    m_list->setObjectName(QStringLiteral("formulas"));
    m_list->setColumnCount(2);
    m_list->setHeaderLabels({ZWLoadString(ZWTextId::FormulaNameColumn), ZWLoadString(ZWTextId::FormulaTextColumn)});
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    m_list->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    std::vector<ZWBasicString> names, texts;
    ZWFormulaLibrary::Read(library, names, texts);
    for (size_t i = 0; i < names.size(); ++i)
        new QTreeWidgetItem(m_list, {names[i], texts[i]});

    m_add = new QPushButton(ZWLoadString(ZWTextId::FormulaAdd), this);
    m_add->setObjectName(QStringLiteral("add"));
    m_modify = new QPushButton(ZWLoadString(ZWTextId::FormulaModify), this);
    m_modify->setObjectName(QStringLiteral("modify"));
    m_delete = new QPushButton(ZWLoadString(ZWTextId::FormulaDelete), this);
    m_delete->setObjectName(QStringLiteral("delete"));
    for (QPushButton* b : {m_add, m_modify, m_delete})
        b->setAutoDefault(false);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setText(ZWLoadString(ZWTextId::Ok));
    buttons->button(QDialogButtonBox::Cancel)->setText(ZWLoadString(ZWTextId::Cancel));
    connect(buttons, &QDialogButtonBox::accepted, this, &CDlgFormules::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &CDlgFormules::reject);
    connect(m_add, &QPushButton::clicked, this, &CDlgFormules::OnAdd);
    connect(m_modify, &QPushButton::clicked, this, &CDlgFormules::OnModify);
    connect(m_delete, &QPushButton::clicked, this, &CDlgFormules::OnDelete);
    // Not itemActivated: Return on the list also reaches the dialog's
    // default button, which would close the library behind the formula.
    connect(m_list, &QTreeWidget::itemDoubleClicked, this, &CDlgFormules::OnModify);
    connect(m_list, &QTreeWidget::currentItemChanged, this, &CDlgFormules::UpdateButtons);

    auto* side = new QVBoxLayout;
    side->addWidget(m_add);
    side->addWidget(m_modify);
    side->addWidget(m_delete);
    side->addStretch(1);
    auto* top = new QHBoxLayout;
    top->addWidget(m_list, 1);
    top->addLayout(side);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top, 1);
    layout->addWidget(buttons);
    if (m_list->topLevelItemCount() > 0)
        m_list->setCurrentItem(m_list->topLevelItem(0));
    UpdateButtons();
    resize(720, 420);
}

void CDlgFormules::GetLists(std::vector<ZWBasicString>& names, std::vector<ZWBasicString>& texts) const
{
    names.clear();
    texts.clear();
    for (int i = 0; i < m_list->topLevelItemCount(); ++i) {
        names.push_back(m_list->topLevelItem(i)->text(0));
        texts.push_back(m_list->topLevelItem(i)->text(1));
    }
}

bool CDlgFormules::BuildFormulesDoc(XmlDocument& doc) const
{
    std::vector<ZWBasicString> names, texts;
    GetLists(names, texts);
    return ZWFormulaLibrary::Build(names, texts, doc);
}

void CDlgFormules::UpdateButtons()
{
    const bool current = m_list->currentItem() != nullptr;
    m_modify->setEnabled(current);
    m_delete->setEnabled(current);
}

bool CDlgFormules::EditFormule(ZWBasicString& name, ZWBasicString& text)
{
    XmlDocument library;
    BuildFormulesDoc(library);
    CDlgNewFormule dialog(library, m_store, this);
    dialog.SetFormule(name, text);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    dialog.GetFormule(name, text);
    return true;
}

void CDlgFormules::OnAdd()
{
    ZWBasicString name, text;
    if (!EditFormule(name, text))
        return;
    // A new formula goes after the selected one, else at the end.
    const int at
        = m_list->currentItem() ? m_list->indexOfTopLevelItem(m_list->currentItem()) + 1 : m_list->topLevelItemCount();
    auto* item = new QTreeWidgetItem({name, text});
    m_list->insertTopLevelItem(at, item);
    m_list->setCurrentItem(item);
}

void CDlgFormules::OnModify()
{
    QTreeWidgetItem* item = m_list->currentItem();
    if (!item)
        return;
    ZWBasicString name = item->text(0), text = item->text(1);
    if (!EditFormule(name, text))
        return;
    item->setText(0, name);
    item->setText(1, text);
}

void CDlgFormules::OnDelete()
{
    QTreeWidgetItem* item = m_list->currentItem();
    if (!item)
        return;
    emit messageShown(ZWTextId::FormulaDeleteQuestion);
    if (!Ask(ZWLoadString(ZWTextId::FormulaDeleteQuestion).arg(item->text(0))))
        return;
    delete item;
    UpdateButtons();
}

void CDlgFormules::accept()
{
    std::vector<ZWBasicString> names, texts;
    GetLists(names, texts);
    if (ZWFormuleCheck::HasLoop(names, texts)) {
        emit messageShown(ZWTextId::FormulaRefersToItself);
        ShowMessage(ZWLoadString(ZWTextId::FormulaRefersToItself));
        return;
    }
    ZWFormulaLibrary::Build(names, texts, m_library);
    QDialog::accept();
}

void CDlgFormules::ShowMessage(const QString& text)
{
    QMessageBox::warning(this, windowTitle(), text);
}

bool CDlgFormules::Ask(const QString& text)
{
    return QMessageBox::question(this, windowTitle(), text, QMessageBox::Yes | QMessageBox::No, QMessageBox::No)
        == QMessageBox::Yes;
}
