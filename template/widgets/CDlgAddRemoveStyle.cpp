#include "template/widgets/CDlgAddRemoveStyle.h"

#include "host/core/ZWLoadString.h"
#include "host/core/ZWTextId.h"
#include "template/widgets/CDlgEditStyle.h"

#include <QDialogButtonBox>
#include <QFile>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMessageBox>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

enum Column { NameColumn, FontColumn, SizeColumn, StyleColumn, OrientationColumn, ColorColumn, ColumnCount };

// Sorts the numeric columns by number, not by text.
class StyleItem : public QTreeWidgetItem
{
public:
    using QTreeWidgetItem::QTreeWidgetItem;
    bool operator<(const QTreeWidgetItem& other) const override
    {
        const int column = treeWidget() ? treeWidget()->sortColumn() : 0;
        if (column == SizeColumn || column == OrientationColumn)
            return data(column, Qt::UserRole).toDouble() < other.data(column, Qt::UserRole).toDouble();
        return text(column).localeAwareCompare(other.text(column)) < 0;
    }
};

QString StyleText(int style)
{
    static const int ids[]
        = {ZWTextId::StyleRegular, ZWTextId::StyleBold, ZWTextId::StyleItalic, ZWTextId::StyleBoldItalic};
    return ZWLoadString(ids[style & 3]);
}

} // namespace

CDlgAddRemoveStyle::CDlgAddRemoveStyle(QWidget* parent) : QDialog(parent)
{
    setWindowTitle(ZWLoadString(ZWTextId::StylesTitle));
    m_list = new QTreeWidget(this);
    m_list->setColumnCount(ColumnCount);
    m_list->setHeaderLabels({ZWLoadString(ZWTextId::StyleColumnName), ZWLoadString(ZWTextId::StyleColumnFont),
        ZWLoadString(ZWTextId::StyleColumnSize), ZWLoadString(ZWTextId::StyleColumnStyle),
        ZWLoadString(ZWTextId::StyleColumnOrientation), ZWLoadString(ZWTextId::StyleColumnColor)});
    m_list->setRootIsDecorated(false);
    m_list->setSortingEnabled(true);
    m_list->sortByColumn(NameColumn, Qt::AscendingOrder);
    m_list->header()->setSectionResizeMode(QHeaderView::ResizeToContents);

    auto* buttons = new QDialogButtonBox(this);
    auto* add = buttons->addButton(ZWLoadString(ZWTextId::StyleNew), QDialogButtonBox::ActionRole);
    m_modify = buttons->addButton(ZWLoadString(ZWTextId::StyleModify), QDialogButtonBox::ActionRole);
    m_remove = buttons->addButton(ZWLoadString(ZWTextId::StyleRemove), QDialogButtonBox::ActionRole);
    auto* close = buttons->addButton(ZWLoadString(ZWTextId::Close), QDialogButtonBox::RejectRole);
    connect(add, &QPushButton::clicked, this, &CDlgAddRemoveStyle::OnNew);
    connect(m_modify, &QPushButton::clicked, this, &CDlgAddRemoveStyle::OnModify);
    connect(m_remove, &QPushButton::clicked, this, &CDlgAddRemoveStyle::OnRemove);
    connect(close, &QPushButton::clicked, this, &CDlgAddRemoveStyle::reject);
    connect(m_list, &QTreeWidget::itemDoubleClicked, this, &CDlgAddRemoveStyle::OnModify);
    connect(m_list, &QTreeWidget::itemSelectionChanged, this, &CDlgAddRemoveStyle::UpdateButtons);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_list);
    layout->addWidget(buttons);
    resize(640, 360);
    Refresh();
}

void CDlgAddRemoveStyle::Refresh()
{
    const QString selected = SelectedName();
    m_list->clear();
    for (const QString& name : ZWTextStyle::List()) {
        // Missing values show as the defaults: size 10.0, colour 000000.
        ZWTextStyle style;
        style.Load(ZWTextStyle::PathFor(name));
        auto* item = new StyleItem(m_list);
        item->setText(NameColumn, name);
        item->setText(FontColumn, style.font);
        item->setText(SizeColumn, QString::number(style.size, 'f', 1));
        item->setData(SizeColumn, Qt::UserRole, style.size);
        item->setText(StyleColumn, StyleText(style.style));
        item->setText(OrientationColumn, QString::number(style.orientation, 'f', 2));
        item->setData(OrientationColumn, Qt::UserRole, style.orientation);
        item->setText(ColorColumn, QStringLiteral("%1").arg(style.color & 0xFFFFFF, 6, 16, QLatin1Char('0')).toUpper());
        QPixmap swatch(12, 12);
        swatch.fill(QColor(int(style.color & 0xFF), int((style.color >> 8) & 0xFF), int((style.color >> 16) & 0xFF)));
        item->setIcon(ColorColumn, QIcon(swatch));
        if (name == selected)
            item->setSelected(true);
    }
    if (m_list->selectedItems().isEmpty() && m_list->topLevelItemCount() > 0)
        m_list->setCurrentItem(m_list->topLevelItem(0));
    UpdateButtons();
}

QString CDlgAddRemoveStyle::SelectedName() const
{
    const auto items = m_list->selectedItems();
    return items.isEmpty() ? QString() : items.first()->text(NameColumn);
}

void CDlgAddRemoveStyle::UpdateButtons()
{
    const bool any = !SelectedName().isEmpty();
    m_modify->setEnabled(any);
    m_remove->setEnabled(any);
}

void CDlgAddRemoveStyle::OnNew()
{
    const auto editor = MakeEditor(std::nullopt, false);
    if (!RunEditor(*editor))
        return;
    const QString name = editor->Edited().name;
    Refresh();
    for (int i = 0; i < m_list->topLevelItemCount(); ++i)
        if (m_list->topLevelItem(i)->text(NameColumn) == name)
            m_list->setCurrentItem(m_list->topLevelItem(i));
    emit stylesModified();
}

void CDlgAddRemoveStyle::OnModify()
{
    const QString name = SelectedName();
    if (name.isEmpty())
        return;
    ZWTextStyle style;
    style.Load(ZWTextStyle::PathFor(name));
    // The file's name is the style's name, whatever the file says inside.
    style.name = name;
    const auto editor = MakeEditor(style, true);
    if (!RunEditor(*editor))
        return;
    Refresh();
    emit stylesModified();
}

void CDlgAddRemoveStyle::OnRemove()
{
    const QString name = SelectedName();
    if (name.isEmpty() || !Ask(ZWLoadString(ZWTextId::StyleRemoveQuestion).arg(name)))
        return;
    const QString path = ZWTextStyle::PathFor(name);
    if (!QFile::remove(path)) {
        ShowMessage(ZWLoadString(ZWTextId::StyleRemoveFailed).arg(path));
        return;
    }
    Refresh();
    emit stylesModified();
}

std::unique_ptr<CDlgEditStyle> CDlgAddRemoveStyle::MakeEditor(std::optional<ZWTextStyle> opened, bool mayOverwrite)
{
    return std::make_unique<CDlgEditStyle>(std::move(opened), mayOverwrite, this);
}

bool CDlgAddRemoveStyle::RunEditor(CDlgEditStyle& editor)
{
    return editor.exec() == QDialog::Accepted;
}

bool CDlgAddRemoveStyle::Ask(const QString& text)
{
    return QMessageBox::question(this, windowTitle(), text) == QMessageBox::Yes;
}

void CDlgAddRemoveStyle::ShowMessage(const QString& text)
{
    QMessageBox::warning(this, windowTitle(), text);
}

void CDlgAddRemoveStyle::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Insert) {
        OnNew();
        return;
    }
    if (event->key() == Qt::Key_Delete && !SelectedName().isEmpty()) {
        OnRemove();
        return;
    }
    QDialog::keyPressEvent(event);
}
