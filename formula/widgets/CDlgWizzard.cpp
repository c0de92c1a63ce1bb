#include "formula/widgets/CDlgWizzard.h"

#include "formula/ZWFormulaLibrary.h"
#include "formula/ZWWizzardText.h"
#include "formula/widgets/CDlgAddFormuleWizzard.h"
#include "formula/widgets/CDlgAddFunctionWizzard.h"
#include "formula/widgets/CDlgAddOtherWizzard.h"
#include "host/core/ZWLoadString.h"
#include "host/core/ZWTextId.h"
#include "host/widgets/ZWSelectDriver.h"

#include <QButtonGroup>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

CDlgWizzard::CDlgWizzard(const XmlDocument& library, ZWLoggerStore* store, QWidget* parent)
    : QDialog(parent), m_store(store)
{
    setWindowTitle(ZWLoadString(ZWTextId::WizardTitle));
    ZWFormulaLibrary::Read(library, m_names, m_texts);

    m_formula = new QLineEdit(this);
    m_formula->setObjectName(QStringLiteral("formula"));
    m_formula->setReadOnly(true);
    m_preview = new QLineEdit(this);
    m_preview->setObjectName(QStringLiteral("preview"));
    m_preview->setReadOnly(true);
    // Shown, not edited: the keyboard starts on the kinds.
    m_formula->setFocusPolicy(Qt::NoFocus);
    m_preview->setFocusPolicy(Qt::NoFocus);

    m_kinds = new QButtonGroup(this);
    auto* kindsLayout = new QVBoxLayout;
    const int kindTexts[] = {ZWTextId::WizardKindDeviceVariable, ZWTextId::WizardKindFormula,
        ZWTextId::WizardKindFunction, ZWTextId::WizardKindOther};
    for (int kind = ZWWizzardText::DeviceVariable; kind <= ZWWizzardText::Other; ++kind) {
        auto* option = new QRadioButton(ZWLoadString(kindTexts[kind]), this);
        m_kinds->addButton(option, kind);
        kindsLayout->addWidget(option);
    }
    m_kinds->button(m_kind)->setChecked(true);
    connect(m_kinds, &QButtonGroup::idToggled, this, [this](int kind, bool on) {
        if (on)
            SetKind(kind);
    });

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setText(ZWLoadString(ZWTextId::WizardChoose));
    buttons->button(QDialogButtonBox::Cancel)->setText(ZWLoadString(ZWTextId::Cancel));
    connect(buttons, &QDialogButtonBox::accepted, this, &CDlgWizzard::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &CDlgWizzard::reject);

    auto* form = new QFormLayout;
    form->addRow(ZWLoadString(ZWTextId::FormulaTextLabel), m_formula);
    form->addRow(ZWLoadString(ZWTextId::WizardPreview), m_preview);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(kindsLayout);
    layout->addLayout(form);
    layout->addWidget(buttons);
    ActualizeExpression();
    resize(520, sizeHint().height());
}

void CDlgWizzard::SetExpression(const ZWBasicString& text, int start, int end)
{
    m_text = text;
    m_start = std::clamp(std::min(start, end), 0, int(text.size()));
    m_end = std::clamp(std::max(start, end), 0, int(text.size()));
    m_cursor = m_end;
    m_formula->setText(text);
    m_formula->setSelection(m_start, m_end - m_start);
    ActualizeExpression();
}

void CDlgWizzard::SetKind(int kind)
{
    if (kind < ZWWizzardText::DeviceVariable || kind > ZWWizzardText::Other)
        return;
    m_kind = kind;
    if (m_kinds->checkedId() != kind)
        m_kinds->button(kind)->setChecked(true);
    ActualizeExpression();
}

QString CDlgWizzard::Preview() const
{
    return m_preview->text();
}

void CDlgWizzard::ActualizeExpression()
{
    m_preview->setText(ZWWizzardText::ActualizeExpression(m_text, m_start, m_end, m_kind));
    // The placeholder shows selected, where the element will go.
    m_preview->setSelection(m_start, int(ZWWizzardText::Placeholder(m_kind).size()));
}

bool CDlgWizzard::ChooseElement(int kind, ZWBasicString& chosen)
{
    switch (kind) {
    case ZWWizzardText::DeviceVariable:
        return ZWSelectDriver::SelectDriverAndVar(this, m_store, chosen);
    case ZWWizzardText::Formula: {
        CDlgAddFormuleWizzard page(m_names, m_texts, this);
        if (page.exec() != QDialog::Accepted)
            return false;
        chosen = page.GetFormule();
        break;
    }
    case ZWWizzardText::Function: {
        CDlgAddFunctionWizzard page(this);
        if (page.exec() != QDialog::Accepted)
            return false;
        chosen = page.GetFunction();
        break;
    }
    default: {
        CDlgAddOtherWizzard page(this);
        if (page.exec() != QDialog::Accepted)
            return false;
        chosen = page.GetElement();
        break;
    }
    }
    return !chosen.isEmpty();
}

void CDlgWizzard::accept()
{
    ZWBasicString chosen;
    // A device variable selected in the formula is the one preselected.
    if (m_kind == ZWWizzardText::DeviceVariable) {
        const QString selected = m_text.mid(m_start, m_end - m_start);
        if (selected.size() > 2 && selected.startsWith(QLatin1Char('[')) && selected.endsWith(QLatin1Char(']')))
            chosen = selected.mid(1, selected.size() - 2);
    }
    // Cancelled on the page: back to the choice of kind.
    if (!ChooseElement(m_kind, chosen))
        return;
    const ZWBasicString element = ZWWizzardText::Element(m_kind, chosen);
    m_text = ZWWizzardText::Insert(m_text, m_start, m_end, m_kind, element, &m_cursor);
    QDialog::accept();
}
