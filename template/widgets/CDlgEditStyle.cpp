#include "template/widgets/CDlgEditStyle.h"

#include "host/core/ZWLoadString.h"
#include "host/core/ZWTextId.h"
#include "template/ZWColorRef.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFontComboBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>

namespace {

QColor ToQColor(quint32 ref)
{
    return QColor(int(ref & 0xFF), int((ref >> 8) & 0xFF), int((ref >> 16) & 0xFF));
}

quint32 FromQColor(const QColor& color)
{
    return quint32(color.red()) | (quint32(color.green()) << 8) | (quint32(color.blue()) << 16);
}

} // namespace

CDlgEditStyle::CDlgEditStyle(std::optional<ZWTextStyle> opened, bool mayOverwrite, QWidget* parent)
    : QDialog(parent), m_change(opened, mayOverwrite), m_opened(std::move(opened))
{
    setWindowTitle(ZWLoadString(ZWTextId::StyleEditTitle));
    const ZWTextStyle start = m_opened.value_or(ZWTextStyle());

    m_name = new QLineEdit(start.name, this);
    m_font = new QFontComboBox(this);
    m_font->setCurrentFont(QFont(start.font));
    m_font->setEditText(start.font);
    m_size = new QDoubleSpinBox(this);
    m_size->setRange(0.0, 1000.0);
    m_size->setDecimals(2);
    m_size->setValue(start.size);
    m_bold = new QCheckBox(ZWLoadString(ZWTextId::StyleFieldBold), this);
    m_bold->setChecked(start.style & 1);
    m_italic = new QCheckBox(ZWLoadString(ZWTextId::StyleFieldItalic), this);
    m_italic->setChecked(start.style & 2);
    m_orientation = new QDoubleSpinBox(this);
    m_orientation->setRange(-360.0, 360.0);
    m_orientation->setDecimals(2);
    m_orientation->setValue(start.orientation);
    m_colorButton = new QPushButton(ZWLoadString(ZWTextId::StyleFieldColor), this);
    m_sample = new QLabel(ZWLoadString(ZWTextId::StyleSampleText), this);
    m_sample->setMinimumHeight(48);
    m_sample->setAlignment(Qt::AlignCenter);

    auto* form = new QFormLayout(this);
    form->addRow(ZWLoadString(ZWTextId::StyleFieldName), m_name);
    form->addRow(ZWLoadString(ZWTextId::StyleFieldFont), m_font);
    form->addRow(ZWLoadString(ZWTextId::StyleFieldSize), m_size);
    form->addRow(QString(), m_bold);
    form->addRow(QString(), m_italic);
    form->addRow(ZWLoadString(ZWTextId::StyleFieldOrientation), m_orientation);
    form->addRow(QString(), m_colorButton);
    form->addRow(m_sample);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setText(ZWLoadString(ZWTextId::Ok));
    buttons->button(QDialogButtonBox::Cancel)->setText(ZWLoadString(ZWTextId::Cancel));
    form->addRow(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &CDlgEditStyle::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &CDlgEditStyle::reject);
    connect(m_colorButton, &QPushButton::clicked, this, &CDlgEditStyle::ChooseColor);
    connect(m_font, &QFontComboBox::currentFontChanged, this, &CDlgEditStyle::UpdateSample);
    connect(m_size, &QDoubleSpinBox::valueChanged, this, &CDlgEditStyle::UpdateSample);
    connect(m_bold, &QCheckBox::toggled, this, &CDlgEditStyle::UpdateSample);
    connect(m_italic, &QCheckBox::toggled, this, &CDlgEditStyle::UpdateSample);
    SetColor(start.color);
}

ZWTextStyle CDlgEditStyle::Edited() const
{
    ZWTextStyle style;
    style.name = m_name->text().trimmed();
    style.font = m_font->currentText();
    style.size = m_size->value();
    style.style = (m_bold->isChecked() ? 1 : 0) | (m_italic->isChecked() ? 2 : 0);
    style.orientation = m_orientation->value();
    style.color = m_color;
    // Bits the editor does not show are kept as the file had them.
    if (m_opened)
        style.style |= m_opened->style & ~3;
    return style;
}

void CDlgEditStyle::SetColor(quint32 color)
{
    m_color = color & 0xFFFFFF;
    QPixmap swatch(16, 16);
    swatch.fill(ToQColor(m_color));
    m_colorButton->setIcon(QIcon(swatch));
    UpdateSample();
}

void CDlgEditStyle::ChooseColor()
{
    const QColor chosen = QColorDialog::getColor(ToQColor(m_color), this);
    if (chosen.isValid())
        SetColor(FromQColor(chosen));
}

void CDlgEditStyle::UpdateSample()
{
    QFont font(m_font->currentText());
    font.setPointSizeF(std::clamp(m_size->value(), 1.0, 48.0));
    font.setBold(m_bold->isChecked());
    font.setItalic(m_italic->isChecked());
    m_sample->setFont(font);
    QPalette palette = m_sample->palette();
    palette.setColor(QPalette::WindowText, ToQColor(m_color));
    m_sample->setPalette(palette);
}

void CDlgEditStyle::accept()
{
    const ZWTextStyle edited = Edited();
    const ZWStyleChange::Verdict verdict = m_change.Judge(edited);
    const int textId = ZWStyleChange::MessageId(verdict);
    switch (verdict) {
    case ZWStyleChange::Verdict::NameMissing:
    case ZWStyleChange::Verdict::NameNotAFileName:
    case ZWStyleChange::Verdict::NameTaken:
        ShowMessage(ZWLoadString(textId), textId);
        m_name->setFocus();
        m_name->selectAll();
        return;
    case ZWStyleChange::Verdict::SizeNotPositive:
        ShowMessage(ZWLoadString(textId), textId);
        m_size->setFocus();
        m_size->selectAll();
        return;
    case ZWStyleChange::Verdict::AskReplace:
        if (!Ask(ZWLoadString(textId), textId))
            return;
        break;
    case ZWStyleChange::Verdict::Unchanged:
        reject();
        return;
    case ZWStyleChange::Verdict::Write:
        break;
    }
    if (!m_change.Commit(edited)) {
        ShowMessage(ZWLoadString(ZWTextId::StyleWriteFailed).arg(ZWTextStyle::PathFor(edited.name)),
            ZWTextId::StyleWriteFailed);
        return;
    }
    QDialog::accept();
}

void CDlgEditStyle::ShowMessage(const QString& text, int textId)
{
    emit messageShown(textId);
    QMessageBox::warning(this, windowTitle(), text);
}

bool CDlgEditStyle::Ask(const QString& text, int textId)
{
    emit messageShown(textId);
    return QMessageBox::question(this, windowTitle(), text) == QMessageBox::Yes;
}
