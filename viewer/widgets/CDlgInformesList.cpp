#include "viewer/widgets/CDlgInformesList.h"

#include "host/core/ZWLoadString.h"
#include "host/core/ZWTextId.h"
#include "viewer/ZWReportFiles.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

CDlgInformesList::CDlgInformesList(QWidget* parent) : QDialog(parent)
{
    m_list = new QTreeWidget(this);
    m_list->setObjectName(QStringLiteral("list"));
    m_list->setColumnCount(1);
    m_list->setHeaderLabels({ZWLoadString(ZWTextId::Report)});
    m_list->setRootIsDecorated(false);
    m_list->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_list->header()->setStretchLastSection(true);
    m_label = new QLabel(ZWLoadString(ZWTextId::NewReportName), this);
    m_edit = new QLineEdit(this);
    m_edit->setObjectName(QStringLiteral("name"));
    m_label->setBuddy(m_edit);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setText(ZWLoadString(ZWTextId::Ok));
    buttons->button(QDialogButtonBox::Cancel)->setText(ZWLoadString(ZWTextId::Cancel));
    connect(buttons, &QDialogButtonBox::accepted, this, &CDlgInformesList::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &CDlgInformesList::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_list, 1);
    layout->addWidget(m_label);
    layout->addWidget(m_edit);
    layout->addWidget(buttons);

    connect(m_list, &QTreeWidget::itemSelectionChanged, this, &CDlgInformesList::OnSelectionChanged);
    connect(m_list, &QTreeWidget::itemDoubleClicked, this, &CDlgInformesList::OnDoubleClick);
    SetType(NewName);
    resize(360, 420);
}

void CDlgInformesList::SetType(int type)
{
    m_type = (type == Several || type == One) ? type : NewName;
    static const int captions[] = {ZWTextId::NewReport, ZWTextId::ChooseReports, ZWTextId::ChooseReport};
    setWindowTitle(ZWLoadString(captions[m_type]));
    m_label->setVisible(m_type == NewName);
    m_edit->setVisible(m_type == NewName);
}

void CDlgInformesList::SetName(const QString& name)
{
    m_preselect = name;
}

void CDlgInformesList::GetName(QString& out, int index) const
{
    if (index >= 0 && index < m_names.size())
        out = m_names[index];
}

bool CDlgInformesList::IsValidName(const QString& name)
{
    if (name.isEmpty() || name.front() == QLatin1Char(' '))
        return false;
    const QList<uint> codePoints = name.toUcs4();
    return std::all_of(
        codePoints.begin(), codePoints.end(), [](uint c) { return QChar::isLetterOrNumber(char32_t(c)); });
}

void CDlgInformesList::showEvent(QShowEvent* event)
{
    if (!m_initialized)
        InitializeFields();
    QDialog::showEvent(event);
}

void CDlgInformesList::InitializeFields()
{
    m_initialized = true;
    m_list->clear();
    m_list->setSelectionMode(
        m_type == Several ? QAbstractItemView::ExtendedSelection : QAbstractItemView::SingleSelection);
    QTreeWidgetItem* remembered = nullptr;
    for (const QString& title : ZWReportFiles::ReportNames()) {
        auto* item = new QTreeWidgetItem(m_list, {title});
        if (!remembered && title == m_preselect)
            remembered = item;
    }
    if (!remembered && m_list->topLevelItemCount() > 0)
        remembered = m_list->topLevelItem(0);
    if (remembered) {
        m_list->setCurrentItem(remembered);
        remembered->setSelected(true);
    }
}

void CDlgInformesList::OnSelectionChanged()
{
    if (m_type != NewName)
        return;
    const QList<QTreeWidgetItem*> selected = m_list->selectedItems();
    if (!selected.isEmpty())
        m_edit->setText(selected.first()->text(0));
}

void CDlgInformesList::OnDoubleClick(QTreeWidgetItem* item)
{
    if (item && m_type != NewName)
        accept();
}

QList<QTreeWidgetItem*> CDlgInformesList::SelectedInListOrder() const
{
    QList<QTreeWidgetItem*> out;
    for (int i = 0; i < m_list->topLevelItemCount(); ++i)
        if (m_list->topLevelItem(i)->isSelected())
            out.append(m_list->topLevelItem(i));
    return out;
}

void CDlgInformesList::accept()
{
    m_names.clear();
    if (m_type == NewName) {
        const QString name = m_edit->text();
        if (!IsValidName(name)) {
            ShowMessage(ZWTextId::ReportNameInvalid);
            return;
        }
        // Case-sensitive, as the names are compared everywhere else.
        for (int i = 0; i < m_list->topLevelItemCount(); ++i) {
            if (m_list->topLevelItem(i)->text(0) == name) {
                ShowMessage(ZWTextId::ReportNameTaken);
                return;
            }
        }
        m_names.append(name);
    } else {
        const QList<QTreeWidgetItem*> selected = SelectedInListOrder();
        for (QTreeWidgetItem* item : selected) {
            m_names.append(item->text(0));
            if (m_type == One)
                break;
        }
    }
    QDialog::accept();
}

void CDlgInformesList::ShowMessage(int textId)
{
    emit messageShown(textId);
    QMessageBox::warning(this, windowTitle(), ZWLoadString(textId));
}
