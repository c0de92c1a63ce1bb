#include "formula/widgets/CDlgNewFormule.h"

#include "formula/ZWFormulaLibrary.h"
#include "formula/widgets/CDlgWizzard.h"
#include "formula/widgets/ZWFormulaEdit.h"
#include "host/core/ZWLoadString.h"
#include "host/core/ZWTextId.h"
#include "host/drivers/ZWDriverSupport.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

CDlgNewFormule::CDlgNewFormule(const XmlDocument& library, ZWLoggerStore* store, QWidget* parent)
    : QDialog(parent), m_store(store), m_library(library)
{
    setWindowTitle(ZWLoadString(ZWTextId::FormulaEditTitle));
    ZWFormulaLibrary::Read(library, m_names, m_texts);

    m_name = new QLineEdit(this);
    m_name->setObjectName(QStringLiteral("name"));
    m_text = new ZWFormulaEdit(this);
    m_text->setObjectName(QStringLiteral("text"));
    {
        std::shared_ptr<ZWLoggerStore> installed = store ? nullptr : ZWDriverSupport::Store();
        m_text->SetStore(store ? store : installed.get());
    }
    m_text->SetFormulas(QStringList(m_names.begin(), m_names.end()));
    m_resultLine = new QLabel(this);
    m_resultLine->setObjectName(QStringLiteral("result"));
    m_resultLine->setWordWrap(true);
    m_resultLine->setTextFormat(Qt::PlainText);
    m_resultLine->setTextInteractionFlags(Qt::TextSelectableByMouse);
    // Room for the value line and a few lines of what is missing.
    m_resultLine->setMinimumHeight(m_resultLine->fontMetrics().lineSpacing() * 6);
    m_resultLine->setAlignment(Qt::AlignLeft | Qt::AlignTop);

    m_check = new QPushButton(ZWLoadString(ZWTextId::FormulaCheck), this);
    m_check->setObjectName(QStringLiteral("check"));
    m_check->setAutoDefault(false);
    m_wizard = new QPushButton(ZWLoadString(ZWTextId::FormulaWizard), this);
    m_wizard->setObjectName(QStringLiteral("wizard"));
    m_wizard->setAutoDefault(false);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    m_ok = buttons->button(QDialogButtonBox::Ok);
    m_ok->setText(ZWLoadString(ZWTextId::Ok));
    buttons->button(QDialogButtonBox::Cancel)->setText(ZWLoadString(ZWTextId::Cancel));
    connect(buttons, &QDialogButtonBox::accepted, this, &CDlgNewFormule::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &CDlgNewFormule::reject);
    connect(m_check, &QPushButton::clicked, this, &CDlgNewFormule::Evaluate);
    connect(m_wizard, &QPushButton::clicked, this, &CDlgNewFormule::OnWizzard);

    // The check follows the typing, once it pauses.
    m_checkTimer = new QTimer(this);
    m_checkTimer->setSingleShot(true);
    m_checkTimer->setInterval(300);
    connect(m_checkTimer, &QTimer::timeout, this, &CDlgNewFormule::Evaluate);
    connect(m_name, &QLineEdit::textChanged, this, &CDlgNewFormule::OnEdited);
    connect(m_text, &QLineEdit::textChanged, this, &CDlgNewFormule::OnEdited);

    auto* form = new QFormLayout;
    form->addRow(ZWLoadString(ZWTextId::FormulaNameLabel), m_name);
    auto* textRow = new QHBoxLayout;
    textRow->addWidget(m_text, 1);
    textRow->addWidget(m_wizard);
    auto* textLabel = new QLabel(ZWLoadString(ZWTextId::FormulaTextLabel), this);
    textLabel->setBuddy(m_text);
    form->addRow(textLabel, textRow);
    auto* bottom = new QHBoxLayout;
    bottom->addWidget(m_check);
    bottom->addStretch(1);
    bottom->addWidget(buttons);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(m_resultLine, 1);
    layout->addLayout(bottom);
    resize(640, sizeHint().height());
}

void CDlgNewFormule::SetFormule(const ZWBasicString& name, const ZWBasicString& text)
{
    m_edited = -1;
    if (!name.isEmpty()) {
        const auto it = std::find(m_names.begin(), m_names.end(), name);
        if (it != m_names.end())
            m_edited = int(it - m_names.begin());
    }
    // The completion offers the other formulas.
    QStringList others;
    for (size_t i = 0; i < m_names.size(); ++i)
        if (int(i) != m_edited)
            others << m_names[i];
    m_text->SetFormulas(others);
    m_name->setText(name);
    m_text->setText(text);
    Evaluate();
}

void CDlgNewFormule::GetFormule(ZWBasicString& name, ZWBasicString& text) const
{
    name = m_name->text();
    text = m_text->text();
}

bool CDlgNewFormule::BuildFormulesDoc(XmlDocument& doc) const
{
    return ZWFormuleCheck::BuildFormulesDoc(m_names, m_texts, m_edited, doc);
}

bool CDlgNewFormule::Evaluate()
{
    m_checkTimer->stop();
    m_result = ZWFormuleCheck::Evaluate(m_name->text(), m_text->text(), m_names, m_texts, m_edited);
    m_resultLine->setText(m_result.text);
    m_ok->setEnabled(m_result.okEnabled);
    return m_result.okEnabled;
}

void CDlgNewFormule::OnEdited()
{
    m_checkTimer->start();
}

void CDlgNewFormule::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    // Typing goes on at the end of the formula rather than replacing it;
    // after the window took its focus, which selects the whole line.
    QTimer::singleShot(0, this, [this] {
        m_text->setFocus();
        m_text->deselect();
        m_text->end(false);
    });
}

void CDlgNewFormule::OnWizzard()
{
    XmlDocument others;
    BuildFormulesDoc(others);
    CDlgWizzard wizard(others, m_store, this);
    int start = 0, end = 0;
    m_text->LastSelection(start, end);
    wizard.SetExpression(m_text->text(), start, end);
    if (wizard.exec() != QDialog::Accepted)
        return;
    // One undo step in the text line.
    m_text->selectAll();
    m_text->insert(wizard.GetExpression());
    m_text->setCursorPosition(wizard.GetCursor());
    m_text->setFocus();
    Evaluate();
}

void CDlgNewFormule::accept()
{
    if (Evaluate())
        QDialog::accept();
}
