#include "formula/widgets/CDlgAddFunctionWizzard.h"

#include "formula/ZWTokenProducer.h"
#include "formula/ZWWizzardText.h"
#include "host/core/ZWLoadString.h"
#include "host/core/ZWTextId.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

// What each function of the table computes, by its name.
int MeaningId(const QString& name)
{
    static const std::pair<const char*, int> meanings[] = {
        {"sqrt", ZWTextId::FunctionSqrt},
        {"log", ZWTextId::FunctionLog},
        {"exp", ZWTextId::FunctionExp},
        {"sin", ZWTextId::FunctionSin},
        {"cos", ZWTextId::FunctionCos},
        {"tan", ZWTextId::FunctionTan},
        {"asin", ZWTextId::FunctionAsin},
        {"acos", ZWTextId::FunctionAcos},
        {"atan", ZWTextId::FunctionAtan},
        {"atan2", ZWTextId::FunctionAtan2},
        {"log10", ZWTextId::FunctionLog10},
    };
    for (const auto& [n, id] : meanings)
        if (name == QLatin1String(n))
            return id;
    return 0;
}

} // namespace

CDlgAddFunctionWizzard::CDlgAddFunctionWizzard(QWidget* parent) : QDialog(parent)
{
    setWindowTitle(ZWLoadString(ZWTextId::WizardFunctionTitle));
    m_list = new QTreeWidget(this);
    m_list->setObjectName(QStringLiteral("functions"));
    m_list->setColumnCount(2);
    m_list->setHeaderLabels({ZWLoadString(ZWTextId::WizardElement), ZWLoadString(ZWTextId::WizardMeaning)});
    m_list->setRootIsDecorated(false);
    m_list->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    for (const QString& name : ZWTokenProducer::FunctionNames()) {
        const int meaning = MeaningId(name);
        new QTreeWidgetItem(m_list, {name, meaning ? ZWLoadString(meaning) : QString()});
    }
    m_preview = new QLabel(this);
    m_preview->setObjectName(QStringLiteral("preview"));
    m_preview->setTextFormat(Qt::PlainText);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setText(ZWLoadString(ZWTextId::Ok));
    buttons->button(QDialogButtonBox::Cancel)->setText(ZWLoadString(ZWTextId::Cancel));
    connect(buttons, &QDialogButtonBox::accepted, this, &CDlgAddFunctionWizzard::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &CDlgAddFunctionWizzard::reject);
    connect(m_list, &QTreeWidget::currentItemChanged, this, &CDlgAddFunctionWizzard::UpdatePreview);
    connect(m_list, &QTreeWidget::itemActivated, this, &CDlgAddFunctionWizzard::accept);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_list, 1);
    layout->addWidget(m_preview);
    layout->addWidget(buttons);
    m_list->setCurrentItem(m_list->topLevelItem(0));
    UpdatePreview();
    resize(420, 380);
}

ZWBasicString CDlgAddFunctionWizzard::GetFunction() const
{
    const QTreeWidgetItem* item = m_list->currentItem();
    return item ? item->text(0) : QString();
}

void CDlgAddFunctionWizzard::UpdatePreview()
{
    const QString name = GetFunction();
    m_preview->setText(ZWLoadString(ZWTextId::WizardPreview) + QLatin1Char(' ')
        + (name.isEmpty() ? ZWWizzardText::Placeholder(ZWWizzardText::Function)
                          : ZWWizzardText::Element(ZWWizzardText::Function, name)));
}
