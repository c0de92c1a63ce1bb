#include "host/widgets/ZWSelectDriver.h"

#include "host/core/ZWLoadString.h"
#include "host/core/ZWTextId.h"
#include "host/drivers/ZWDriverSupport.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <algorithm>

ZWSelectDriver::ZWSelectDriver(ZWLoggerStore* store, QWidget* parent) : QDialog(parent)
{
    setWindowTitle(ZWLoadString(ZWTextId::SelectVariableTitle));
    std::shared_ptr<ZWLoggerStore> installed;
    if (!store) {
        installed = ZWDriverSupport::Store();
        store = installed.get();
    }
    const QStringList names = store ? store->VariableNames() : QStringList();
    const QStringList filters = store ? store->FilterNames() : QStringList();

    m_search = new QLineEdit(this);
    m_search->setObjectName(QStringLiteral("search"));
    m_search->setClearButtonEnabled(true);
    m_list = new QTreeWidget(this);
    m_list->setObjectName(QStringLiteral("variables"));
    m_list->setColumnCount(2);
    m_list->setHeaderLabels(
        {ZWLoadString(ZWTextId::SelectVariableDevice), ZWLoadString(ZWTextId::SelectVariableVariable)});
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    m_list->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    for (const QString& name : names) {
        // The device is the text before the first ".".
        const qsizetype dot = name.indexOf(QLatin1Char('.'));
        auto* item
            = new QTreeWidgetItem(m_list, {dot < 0 ? name : name.left(dot), dot < 0 ? QString() : name.mid(dot + 1)});
        item->setData(0, Qt::UserRole, name);
    }
    m_empty = new QLabel(ZWLoadString(ZWTextId::SelectVariableNone), this);
    m_empty->setWordWrap(true);
    m_empty->setVisible(names.isEmpty());
    m_list->setVisible(!names.isEmpty());

    m_filter = new QComboBox(this);
    m_filter->setObjectName(QStringLiteral("filter"));
    m_filter->addItem(ZWLoadString(ZWTextId::SelectVariableNoFilter), QString());
    for (const QString& f : filters)
        m_filter->addItem(f, f);
    m_filter->setEnabled(!filters.isEmpty());
    m_name = new QLineEdit(this);
    m_name->setObjectName(QStringLiteral("name"));

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    m_ok = buttons->button(QDialogButtonBox::Ok);
    m_ok->setText(ZWLoadString(ZWTextId::Ok));
    buttons->button(QDialogButtonBox::Cancel)->setText(ZWLoadString(ZWTextId::Cancel));
    connect(buttons, &QDialogButtonBox::accepted, this, &ZWSelectDriver::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &ZWSelectDriver::reject);

    auto* form = new QFormLayout;
    form->addRow(ZWLoadString(ZWTextId::SelectVariableSearch), m_search);
    auto* bottom = new QFormLayout;
    bottom->addRow(ZWLoadString(ZWTextId::SelectVariableFilter), m_filter);
    bottom->addRow(ZWLoadString(ZWTextId::SelectVariableName), m_name);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(m_list, 1);
    layout->addWidget(m_empty);
    layout->addLayout(bottom);
    layout->addWidget(buttons);

    connect(m_search, &QLineEdit::textChanged, this, &ZWSelectDriver::ApplySearch);
    connect(m_list, &QTreeWidget::currentItemChanged, this, &ZWSelectDriver::OnCurrentChanged);
    connect(m_list, &QTreeWidget::itemActivated, this, [this] {
        if (!GetName().isEmpty())
            accept();
    });
    connect(m_filter, &QComboBox::currentIndexChanged, this, &ZWSelectDriver::OnCurrentChanged);
    connect(m_name, &QLineEdit::textChanged, this, &ZWSelectDriver::UpdateOk);
    // Typing in the search goes on in the list with the arrow keys.
    m_search->installEventFilter(this);
    UpdateOk();
    resize(520, 480);
}

bool ZWSelectDriver::SelectDriverAndVar(QWidget* parent, ZWLoggerStore* store, QString& name)
{
    ZWSelectDriver dialog(store, parent);
    dialog.SetName(name);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    name = dialog.GetName();
    return !name.isEmpty();
}

QString ZWSelectDriver::GetName() const
{
    return m_name->text().trimmed();
}

void ZWSelectDriver::SetName(const QString& name)
{
    QString plain = name;
    const qsizetype colon = name.lastIndexOf(QLatin1Char(':'));
    if (colon > 0) {
        const int filter = m_filter->findData(name.mid(colon + 1));
        if (filter > 0) {
            plain = name.left(colon);
            m_filter->setCurrentIndex(filter);
        }
    }
    for (int i = 0; i < m_list->topLevelItemCount(); ++i) {
        if (m_list->topLevelItem(i)->data(0, Qt::UserRole).toString() == plain) {
            m_list->setCurrentItem(m_list->topLevelItem(i));
            break;
        }
    }
    m_name->setText(name);
}

int ZWSelectDriver::VisibleCount() const
{
    int n = 0;
    for (int i = 0; i < m_list->topLevelItemCount(); ++i)
        n += m_list->topLevelItem(i)->isHidden() ? 0 : 1;
    return n;
}

void ZWSelectDriver::ApplySearch()
{
    // Every word of the search must appear in the name, in any order.
    const QStringList words = m_search->text().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    QTreeWidgetItem* firstVisible = nullptr;
    for (int i = 0; i < m_list->topLevelItemCount(); ++i) {
        QTreeWidgetItem* item = m_list->topLevelItem(i);
        const QString name = item->data(0, Qt::UserRole).toString();
        const bool match = std::all_of(
            words.begin(), words.end(), [&](const QString& w) { return name.contains(w, Qt::CaseInsensitive); });
        item->setHidden(!match);
        if (match && !firstVisible)
            firstVisible = item;
    }
    if (m_list->currentItem() == nullptr || m_list->currentItem()->isHidden())
        m_list->setCurrentItem(firstVisible);
}

void ZWSelectDriver::OnCurrentChanged()
{
    const QTreeWidgetItem* item = m_list->currentItem();
    if (!item || item->isHidden())
        return;
    QString name = item->data(0, Qt::UserRole).toString();
    const QString filter = m_filter->currentData().toString();
    if (!filter.isEmpty())
        name += QLatin1Char(':') + filter;
    m_name->setText(name);
}

void ZWSelectDriver::UpdateOk()
{
    m_ok->setEnabled(!GetName().isEmpty());
}

bool ZWSelectDriver::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_search && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Down || key == Qt::Key_Up || key == Qt::Key_PageDown || key == Qt::Key_PageUp) {
            QCoreApplication::sendEvent(m_list, event);
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}
