#include "formula/widgets/CDlgAddOtherWizzard.h"

#include "formula/ZWWizzardText.h"
#include "host/core/ZWLoadString.h"
#include "host/core/ZWTextId.h"

#include <QButtonGroup>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QVBoxLayout>

CDlgAddOtherWizzard::CDlgAddOtherWizzard(QWidget* parent) : QDialog(parent)
{
    setWindowTitle(ZWLoadString(ZWTextId::WizardOtherTitle));
    static const int meanings[] = {ZWTextId::OtherOpen, ZWTextId::OtherClose, ZWTextId::OtherPower,
        ZWTextId::OtherMultiply, ZWTextId::OtherDivide, ZWTextId::OtherAdd, ZWTextId::OtherSubtract,
        ZWTextId::OtherLess, ZWTextId::OtherGreater, ZWTextId::OtherLessEqual, ZWTextId::OtherGreaterEqual,
        ZWTextId::OtherEqual, ZWTextId::OtherNotEqual, ZWTextId::OtherNot, ZWTextId::OtherAnd, ZWTextId::OtherOr};
    const QStringList& elements = ZWWizzardText::OtherElements();
    m_options = new QButtonGroup(this);
    auto* grid = new QGridLayout;
    // Two columns of options, each an element and what it means.
    const int rows = int(elements.size() + 2 + 1) / 2;
    for (int i = 0; i < elements.size(); ++i) {
        auto* option = new QRadioButton(elements[i] + QStringLiteral("   ") + ZWLoadString(meanings[i]), this);
        m_options->addButton(option, i);
        grid->addWidget(option, i % rows, i / rows);
    }
    auto* pi = new QRadioButton(ZWLoadString(ZWTextId::WizardConstantPi), this);
    auto* e = new QRadioButton(ZWLoadString(ZWTextId::WizardConstantE), this);
    m_options->addButton(pi, OptionPi);
    m_options->addButton(e, OptionE);
    grid->addWidget(pi, int(elements.size()) % rows, int(elements.size()) / rows);
    grid->addWidget(e, int(elements.size() + 1) % rows, int(elements.size() + 1) / rows);
    m_options->button(0)->setChecked(true);

    m_decimals = new QSpinBox(this);
    m_decimals->setObjectName(QStringLiteral("decimals"));
    m_decimals->setRange(0, ZWWizzardText::MaxDecimals);
    m_decimals->setValue(4);
    auto* decimalsLabel = new QLabel(ZWLoadString(ZWTextId::WizardDecimals), this);
    decimalsLabel->setBuddy(m_decimals);
    auto* decimalsRow = new QHBoxLayout;
    decimalsRow->addStretch(1);
    decimalsRow->addWidget(decimalsLabel);
    decimalsRow->addWidget(m_decimals);
    const auto updateDecimals = [this] { m_decimals->setEnabled(m_options->checkedId() >= OptionPi); };
    connect(m_options, &QButtonGroup::idToggled, this, updateDecimals);
    updateDecimals();

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setText(ZWLoadString(ZWTextId::Ok));
    buttons->button(QDialogButtonBox::Cancel)->setText(ZWLoadString(ZWTextId::Cancel));
    connect(buttons, &QDialogButtonBox::accepted, this, &CDlgAddOtherWizzard::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &CDlgAddOtherWizzard::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addLayout(decimalsRow);
    layout->addWidget(buttons);
}

ZWBasicString CDlgAddOtherWizzard::GetElement() const
{
    const int id = m_options->checkedId();
    if (id == OptionPi)
        return ZWWizzardText::Constant(ZWWizzardText::Pi, m_decimals->value());
    if (id == OptionE)
        return ZWWizzardText::Constant(ZWWizzardText::E, m_decimals->value());
    const QStringList& elements = ZWWizzardText::OtherElements();
    return id >= 0 && id < elements.size() ? elements[id] : QString();
}
