#include "editor/widgets/ZWPropertyPanel.h"

#include "editor/ZWPropertyEdit.h"
#include "editor/widgets/ZWColorButton.h"
#include "editor/widgets/ZWDataCardGroups.h"
#include "formula/widgets/CDlgWizzard.h"
#include "formula/widgets/ZWFormulaEdit.h"
#include "host/core/ZWLoadString.h"
#include "host/core/ZWTextId.h"
#include "host/drivers/ZWDriverSupport.h"
#include "template/ZWCardConditioned.h"
#include "template/ZWCardDate.h"
#include "template/ZWCardFormule.h"
#include "template/ZWCardImage.h"
#include "template/ZWCardLabel.h"
#include "template/ZWColorRef.h"
#include "template/ZWTextStyle.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateTime>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QFontComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QVBoxLayout>
#include <cstring>

namespace {

// The value every edited card shares, through a plain getter.
template <class Card, class T, class Get> std::optional<T> SharedOf(const ZWPropertyEdit& edit, Get get)
{
    return edit.Shared<Card, T>(std::function<T(const Card&)>(get));
}

void Show(QDoubleSpinBox* spin, std::optional<double> value)
{
    if (value)
        spin->setValue(*value);
    else
        spin->clear();
}

void Show(QCheckBox* check, std::optional<bool> value)
{
    check->setTristate(!value);
    check->setCheckState(!value ? Qt::PartiallyChecked : *value ? Qt::Checked : Qt::Unchecked);
}

// Alignment combos hold the stored codes as item data.
void FillAlign(QComboBox* combo, bool horizontal)
{
    if (horizontal) {
        combo->addItem(ZWLoadString(ZWTextId::PanelLeft), 1);
        combo->addItem(ZWLoadString(ZWTextId::PanelCentre), 16);
        combo->addItem(ZWLoadString(ZWTextId::PanelRight), 2);
    } else {
        combo->addItem(ZWLoadString(ZWTextId::PanelTop), 4);
        combo->addItem(ZWLoadString(ZWTextId::PanelCentre), 16);
        combo->addItem(ZWLoadString(ZWTextId::PanelBottom), 8);
    }
}

void ShowAlign(QComboBox* combo, std::optional<int> value)
{
    combo->setCurrentIndex(value ? combo->findData(*value) : -1);
}

struct Paper
{
    const char* name;
    double width, height;
};
constexpr Paper Papers[] = {{"A4", 210.0, 297.0}, {"A3", 297.0, 420.0}, {"Letter", 215.9, 279.4}};

bool IsKind(const char* kind, const char* name)
{
    return std::strcmp(kind, name) == 0;
}

} // namespace

ZWPropertyPanel::ZWPropertyPanel(QWidget* parent) : QScrollArea(parent)
{
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    Build();
    SetEdit(nullptr);
}

QGroupBox* ZWPropertyPanel::NewGroup(const char* name, int titleId)
{
    auto* group = new QGroupBox(ZWLoadString(titleId), m_body);
    group->setObjectName(QString::fromLatin1(name));
    new QFormLayout(group);
    m_body->layout()->addWidget(group);
    return group;
}

QGroupBox* ZWPropertyPanel::Group(const char* name) const
{
    return m_body->findChild<QGroupBox*>(QString::fromLatin1(name));
}

QDoubleSpinBox* ZWPropertyPanel::NewSpin(double min, double max, int decimals)
{
    auto* spin = new QDoubleSpinBox(m_body);
    spin->setRange(min, max);
    spin->setDecimals(decimals);
    spin->setKeyboardTracking(false);
    return spin;
}

void ZWPropertyPanel::Build()
{
    m_body = new QWidget(this);
    auto* layout = new QVBoxLayout(m_body);
    setWidget(m_body);
    const auto form = [](QGroupBox* group) { return static_cast<QFormLayout*>(group->layout()); };

    m_back = new QPushButton(ZWLoadString(ZWTextId::PanelBackToConditioned), m_body);
    layout->addWidget(m_back);
    connect(m_back, &QPushButton::clicked, this, &ZWPropertyPanel::BackToConditioned);

    // The card: geometry, colours, layer, binding.
    QGroupBox* card = NewGroup("card", ZWTextId::PanelCard);
    m_x = NewSpin(0, 10000, 2);
    m_y = NewSpin(0, 10000, 2);
    m_width = NewSpin(0.1, 10000, 2);
    m_height = NewSpin(0.1, 10000, 2);
    m_color = new ZWColorButton(false, m_body);
    m_backcolor = new ZWColorButton(true, m_body);
    m_layer = new QComboBox(m_body);
    m_layer->addItem(ZWLoadString(ZWTextId::PanelLayerUnder), 0);
    m_layer->addItem(ZWLoadString(ZWTextId::PanelLayerOver), 1);
    m_field = new QComboBox(m_body);
    form(card)->addRow(ZWLoadString(ZWTextId::PanelX), m_x);
    form(card)->addRow(ZWLoadString(ZWTextId::PanelY), m_y);
    form(card)->addRow(ZWLoadString(ZWTextId::PanelWidth), m_width);
    form(card)->addRow(ZWLoadString(ZWTextId::PanelHeight), m_height);
    form(card)->addRow(ZWLoadString(ZWTextId::PanelColor), m_color);
    form(card)->addRow(ZWLoadString(ZWTextId::PanelBackcolor), m_backcolor);
    form(card)->addRow(ZWLoadString(ZWTextId::PanelLayer), m_layer);
    form(card)->addRow(ZWLoadString(ZWTextId::PanelField), m_field);

    const auto geometry
        = [this](QDoubleSpinBox* spin, ZWPropertyEdit::Field field, double ZWCardControl::*member, int textId) {
              connect(spin, &QDoubleSpinBox::valueChanged, this, [this, spin, field, member, textId](double value) {
                  if (m_refreshing || !m_edit || spin->text().isEmpty())
                      return;
                  Pushed(m_edit->Apply<ZWCardControl>(field, ZWLoadString(textId), [&](ZWCardControl& c) {
                      c.*member = value;
                      // Kept on the page, as the mouse keeps it.
                      const auto& page = m_edit->Page().properties;
                      c.width = std::min(c.width, page.width);
                      c.height = std::min(c.height, page.height);
                      c.x = std::clamp(c.x, 0.0, std::max(0.0, page.width - c.width));
                      c.y = std::clamp(c.y, 0.0, std::max(0.0, page.height - c.height));
                  }));
              });
          };
    geometry(m_x, ZWPropertyEdit::X, &ZWCardControl::x, ZWTextId::PanelX);
    geometry(m_y, ZWPropertyEdit::Y, &ZWCardControl::y, ZWTextId::PanelY);
    geometry(m_width, ZWPropertyEdit::Width, &ZWCardControl::width, ZWTextId::PanelWidth);
    geometry(m_height, ZWPropertyEdit::Height, &ZWCardControl::height, ZWTextId::PanelHeight);
    connect(m_color, &ZWColorButton::colorChosen, this, [this](quint32 color) {
        if (m_edit)
            Pushed(m_edit->Apply<ZWCardControl>(ZWPropertyEdit::Color, ZWLoadString(ZWTextId::PanelColor),
                [color](ZWCardControl& c) { c.color = color; }));
    });
    connect(m_backcolor, &ZWColorButton::colorChosen, this, [this](quint32 color) {
        if (m_edit)
            Pushed(m_edit->Apply<ZWCardControl>(ZWPropertyEdit::Backcolor, ZWLoadString(ZWTextId::PanelBackcolor),
                [color](ZWCardControl& c) { c.backcolor = color; }));
    });
    connect(m_layer, &QComboBox::activated, this, [this](int index) {
        const int layer = m_layer->itemData(index).toInt();
        if (m_edit)
            Pushed(m_edit->Apply<ZWCardControl>(ZWPropertyEdit::Layer, ZWLoadString(ZWTextId::PanelLayer),
                [layer](ZWCardControl& c) { c.layer = layer; }));
    });
    const auto applyField = [this](const QString& value) {
        if (m_refreshing || !m_edit)
            return;
        Pushed(m_edit->Apply<ZWCardControl>(ZWPropertyEdit::Binding, ZWLoadString(ZWTextId::PanelField),
            [&value](ZWCardControl& c) { c.field = value; }));
        UpdateDateSample();
    };
    connect(m_field, &QComboBox::activated, this, [this, applyField](int index) {
        const QVariant data = m_field->itemData(index);
        applyField(data.isValid() ? data.toString() : m_field->itemText(index));
    });

    // The text of labels, dates and formulas.
    QGroupBox* textGroup = NewGroup("text", ZWTextId::PanelText);
    m_text = new QLineEdit(m_body);
    m_check = new QLabel(m_body);
    m_check->setWordWrap(true);
    m_check->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_font = new QFontComboBox(m_body);
    m_size = NewSpin(0.5, 500, 2);
    m_bold = new QCheckBox(ZWLoadString(ZWTextId::PanelBold), m_body);
    m_italic = new QCheckBox(ZWLoadString(ZWTextId::PanelItalic), m_body);
    m_orientation = NewSpin(-360, 360, 2);
    m_horizontal = new QComboBox(m_body);
    FillAlign(m_horizontal, true);
    m_vertical = new QComboBox(m_body);
    FillAlign(m_vertical, false);
    m_style = new QComboBox(m_body);
    m_saveStyle = new QPushButton(ZWLoadString(ZWTextId::PanelSaveAsStyle), m_body);
    m_textLabel = new QLabel(ZWLoadString(ZWTextId::PanelValue), m_body);
    m_textLabel->setBuddy(m_text);
    form(textGroup)->addRow(m_textLabel, m_text);
    // Formula cards get a line that completes names as they are typed.
    m_formula = new ZWFormulaEdit(m_body);
    m_formulaLabel = new QLabel(ZWLoadString(ZWTextId::PanelFormula), m_body);
    m_formulaLabel->setBuddy(m_formula);
    m_wizard = new QPushButton(ZWLoadString(ZWTextId::FormulaWizard), m_body);
    auto* formulaRow = new QHBoxLayout;
    formulaRow->addWidget(m_formula, 1);
    formulaRow->addWidget(m_wizard);
    form(textGroup)->addRow(m_formulaLabel, formulaRow);
    connect(m_wizard, &QPushButton::clicked, this, &ZWPropertyPanel::OnWizard);
    form(textGroup)->addRow(QString(), m_check);
    form(textGroup)->addRow(ZWLoadString(ZWTextId::PanelFont), m_font);
    form(textGroup)->addRow(ZWLoadString(ZWTextId::PanelSize), m_size);
    auto* look = new QHBoxLayout;
    look->addWidget(m_bold);
    look->addWidget(m_italic);
    form(textGroup)->addRow(QString(), look);
    form(textGroup)->addRow(ZWLoadString(ZWTextId::PanelOrientation), m_orientation);
    form(textGroup)->addRow(ZWLoadString(ZWTextId::PanelHorizontal), m_horizontal);
    form(textGroup)->addRow(ZWLoadString(ZWTextId::PanelVertical), m_vertical);
    form(textGroup)->addRow(ZWLoadString(ZWTextId::PanelStyle), m_style);
    form(textGroup)->addRow(QString(), m_saveStyle);

    const auto editText = [this](const QString& value) {
        if (!m_edit)
            return;
        Pushed(m_edit->Apply<ZWCardLabel>(
            ZWPropertyEdit::Text, m_textLabel->text(), [&value](ZWCardLabel& c) { c.value = value; }));
        UpdateFormulaCheck();
        UpdateDateSample();
    };
    connect(m_text, &QLineEdit::textEdited, this, editText);
    // A completion chosen from the popup changes the text without an edit
    // signal of its own.
    connect(m_formula, &QLineEdit::textChanged, this, [this, editText](const QString& value) {
        if (!m_refreshing)
            editText(value);
    });
    connect(m_font, &QFontComboBox::currentFontChanged, this, [this](const QFont& font) {
        if (!m_refreshing && m_edit)
            Pushed(m_edit->Apply<ZWCardLabel>(ZWPropertyEdit::Font, ZWLoadString(ZWTextId::PanelFont),
                [&font](ZWCardLabel& c) { c.font = font.family(); }));
    });
    connect(m_size, &QDoubleSpinBox::valueChanged, this, [this](double value) {
        if (!m_refreshing && m_edit && !m_size->text().isEmpty())
            Pushed(m_edit->Apply<ZWCardLabel>(
                ZWPropertyEdit::Size, ZWLoadString(ZWTextId::PanelSize), [value](ZWCardLabel& c) { c.size = value; }));
    });
    connect(m_orientation, &QDoubleSpinBox::valueChanged, this, [this](double value) {
        if (!m_refreshing && m_edit && !m_orientation->text().isEmpty())
            Pushed(m_edit->Apply<ZWCardLabel>(ZWPropertyEdit::Orientation, ZWLoadString(ZWTextId::PanelOrientation),
                [value](ZWCardLabel& c) { c.orientation = value; }));
    });
    const auto styleBit = [this](QCheckBox* check, int bit, ZWPropertyEdit::Field field) {
        connect(check, &QCheckBox::clicked, this, [this, check, bit, field](bool on) {
            check->setTristate(false);
            if (m_edit)
                Pushed(m_edit->Apply<ZWCardLabel>(field, check->text(),
                    [on, bit](ZWCardLabel& c) { c.style = on ? (c.style | bit) : (c.style & ~bit); }));
        });
    };
    styleBit(m_bold, 1, ZWPropertyEdit::Bold);
    styleBit(m_italic, 2, ZWPropertyEdit::Italic);
    connect(m_horizontal, &QComboBox::activated, this, [this](int index) {
        const int align = m_horizontal->itemData(index).toInt();
        if (m_edit)
            Pushed(m_edit->Apply<ZWCardLabel>(ZWPropertyEdit::HorizontalAlign, ZWLoadString(ZWTextId::PanelHorizontal),
                [align](ZWCardLabel& c) { c.horizontalAlign = align; }));
    });
    connect(m_vertical, &QComboBox::activated, this, [this](int index) {
        const int align = m_vertical->itemData(index).toInt();
        if (m_edit)
            Pushed(m_edit->Apply<ZWCardLabel>(ZWPropertyEdit::VerticalAlign, ZWLoadString(ZWTextId::PanelVertical),
                [align](ZWCardLabel& c) { c.verticalAlign = align; }));
    });
    connect(m_style, &QComboBox::activated, this, [this](int index) {
        const QString name = m_style->itemData(index).toString();
        if (!m_edit)
            return;
        // Picking a style applies it at once; "none" keeps the look.
        Pushed(m_edit->Apply<ZWCardLabel>(
            ZWPropertyEdit::StyleFile, ZWLoadString(ZWTextId::PanelStyle), [&name](ZWCardLabel& c) {
                c.styleFile = name;
                c.UpdateStyleFromFile();
            }));
        Refresh();
    });
    connect(m_saveStyle, &QPushButton::clicked, this, [this] {
        const auto cards = m_edit ? m_edit->Cards() : std::vector<ZWCardControl*>();
        const auto* label = cards.empty() ? nullptr : dynamic_cast<const ZWCardLabel*>(cards.front());
        if (!label)
            return;
        bool ok = false;
        const QString name = QInputDialog::getText(this, m_saveStyle->text(), ZWLoadString(ZWTextId::PanelStyleName),
            QLineEdit::Normal, label->styleFile, &ok);
        if (!ok || name.trimmed().isEmpty())
            return;
        ZWTextStyle style;
        style.name = name.trimmed();
        style.font = label->font;
        style.size = label->size;
        style.color = label->color;
        style.style = label->style;
        style.orientation = label->orientation;
        if (!style.SaveByName()) {
            ShowMessage(ZWLoadString(ZWTextId::StyleWriteFailed).arg(ZWTextStyle::PathFor(style.name)));
            return;
        }
        Pushed(m_edit->Apply<ZWCardLabel>(ZWPropertyEdit::StyleFile, ZWLoadString(ZWTextId::PanelStyle),
            [&style](ZWCardLabel& c) { c.styleFile = style.name; }));
        Refresh();
    });

    // The number format of formula cards.
    QGroupBox* number = NewGroup("number", ZWTextId::PanelNumber);
    m_thousands = new QCheckBox(ZWLoadString(ZWTextId::PanelThousands), m_body);
    m_integerDigits = new QSpinBox(m_body);
    m_integerDigits->setRange(-1, 12);
    m_integerDigits->setSpecialValueText(ZWLoadString(ZWTextId::PanelAutomatic));
    m_decimals = new QSpinBox(m_body);
    m_decimals->setRange(0, 12);
    m_fillInteger = new QCheckBox(ZWLoadString(ZWTextId::PanelFillIntegerZeros), m_body);
    m_fillDecimal = new QCheckBox(ZWLoadString(ZWTextId::PanelFillDecimalZeros), m_body);
    m_numberSample = new QLabel(m_body);
    form(number)->addRow(QString(), m_thousands);
    form(number)->addRow(ZWLoadString(ZWTextId::PanelIntegerDigits), m_integerDigits);
    form(number)->addRow(ZWLoadString(ZWTextId::PanelDecimals), m_decimals);
    form(number)->addRow(QString(), m_fillInteger);
    form(number)->addRow(QString(), m_fillDecimal);
    form(number)->addRow(ZWLoadString(ZWTextId::PanelSample), m_numberSample);
    const auto numberCheck = [this](QCheckBox* check, ZWPropertyEdit::Field field, bool ZWCardFormule::*member) {
        connect(check, &QCheckBox::clicked, this, [this, check, field, member](bool on) {
            check->setTristate(false);
            if (m_edit)
                Pushed(m_edit->Apply<ZWCardFormule>(
                    field, check->text(), [on, member](ZWCardFormule& c) { c.*member = on; }));
            UpdateNumberSample();
        });
    };
    numberCheck(m_thousands, ZWPropertyEdit::Thousands, &ZWCardFormule::thousandSeparator);
    numberCheck(m_fillInteger, ZWPropertyEdit::FillIntegerZeros, &ZWCardFormule::fillIntegerZeros);
    numberCheck(m_fillDecimal, ZWPropertyEdit::FillDecimalZeros, &ZWCardFormule::fillDecimalZeros);
    const auto numberSpin = [this](QSpinBox* spin, ZWPropertyEdit::Field field, int ZWCardFormule::*member) {
        connect(spin, &QSpinBox::valueChanged, this, [this, field, member](int value) {
            if (m_refreshing || !m_edit)
                return;
            Pushed(m_edit->Apply<ZWCardFormule>(
                field, ZWLoadString(ZWTextId::PanelNumber), [value, member](ZWCardFormule& c) { c.*member = value; }));
            UpdateNumberSample();
        });
    };
    numberSpin(m_integerDigits, ZWPropertyEdit::IntegerDigits, &ZWCardFormule::integerDigits);
    numberSpin(m_decimals, ZWPropertyEdit::Decimals, &ZWCardFormule::decimals);

    // The pattern of date cards.
    QGroupBox* date = NewGroup("date", ZWTextId::PanelDate);
    m_pattern = new QLineEdit(m_body);
    m_dateSample = new QLabel(m_body);
    form(date)->addRow(ZWLoadString(ZWTextId::PanelPattern), m_pattern);
    form(date)->addRow(ZWLoadString(ZWTextId::PanelSample), m_dateSample);
    connect(m_pattern, &QLineEdit::textEdited, this, [this](const QString& value) {
        if (m_edit)
            Pushed(m_edit->Apply<ZWCardDate>(ZWPropertyEdit::DatePattern, ZWLoadString(ZWTextId::PanelPattern),
                [&value](ZWCardDate& c) { c.format = value; }));
        UpdateDateSample();
    });

    // Pictures.
    QGroupBox* picture = NewGroup("picture", ZWTextId::PanelPicture);
    m_picture = new QPushButton(ZWLoadString(ZWTextId::PanelPictureFile), m_body);
    m_linked = new QCheckBox(ZWLoadString(ZWTextId::PanelPictureLinked), m_body);
    m_aspect = new QCheckBox(ZWLoadString(ZWTextId::PanelAspect), m_body);
    m_realSize = new QCheckBox(ZWLoadString(ZWTextId::PanelRealSize), m_body);
    m_pictureHorizontal = new QComboBox(m_body);
    FillAlign(m_pictureHorizontal, true);
    m_pictureVertical = new QComboBox(m_body);
    FillAlign(m_pictureVertical, false);
    form(picture)->addRow(m_picture);
    form(picture)->addRow(m_linked);
    form(picture)->addRow(m_aspect);
    form(picture)->addRow(m_realSize);
    form(picture)->addRow(ZWLoadString(ZWTextId::PanelHorizontal), m_pictureHorizontal);
    form(picture)->addRow(ZWLoadString(ZWTextId::PanelVertical), m_pictureVertical);
    connect(m_picture, &QPushButton::clicked, this, [this] {
        const QString path = QFileDialog::getOpenFileName(
            this, m_picture->text(), QString(), ZWLoadString(ZWTextId::PanelPictureTypes));
        if (!path.isEmpty())
            ChoosePicture(path);
    });
    connect(m_linked, &QCheckBox::clicked, this, [this](bool on) {
        // Only un-linking is offered: the picture's bytes go into the report.
        if (!on && m_edit)
            Pushed(m_edit->Apply<ZWCardImage>(
                ZWPropertyEdit::Picture, m_linked->text(), [](ZWCardImage& c) { c.valueFile.clear(); }));
        RefreshPicture();
    });
    const auto pictureCheck = [this](QCheckBox* check, ZWPropertyEdit::Field field, bool ZWCardImage::*member) {
        connect(check, &QCheckBox::clicked, this, [this, check, field, member](bool on) {
            check->setTristate(false);
            if (m_edit)
                Pushed(
                    m_edit->Apply<ZWCardImage>(field, check->text(), [on, member](ZWCardImage& c) { c.*member = on; }));
        });
    };
    pictureCheck(m_aspect, ZWPropertyEdit::AspectRatio, &ZWCardImage::maintainAspectRatio);
    pictureCheck(m_realSize, ZWPropertyEdit::RealSize, &ZWCardImage::maintainRealSize);
    connect(m_pictureHorizontal, &QComboBox::activated, this, [this](int index) {
        const int align = m_pictureHorizontal->itemData(index).toInt();
        if (m_edit)
            Pushed(m_edit->Apply<ZWCardImage>(ZWPropertyEdit::HorizontalAlign, ZWLoadString(ZWTextId::PanelHorizontal),
                [align](ZWCardImage& c) { c.horizontalAlign = align; }));
    });
    connect(m_pictureVertical, &QComboBox::activated, this, [this](int index) {
        const int align = m_pictureVertical->itemData(index).toInt();
        if (m_edit)
            Pushed(m_edit->Apply<ZWCardImage>(ZWPropertyEdit::VerticalAlign, ZWLoadString(ZWTextId::PanelVertical),
                [align](ZWCardImage& c) { c.verticalAlign = align; }));
    });

    // The conditions of a conditioned card.
    QGroupBox* conditions = NewGroup("conditions", ZWTextId::PanelConditions);
    m_conditions = new QListWidget(m_body);
    m_conditions->setMaximumHeight(120);
    m_condition = new QLineEdit(m_body);
    auto* add = new QPushButton(ZWLoadString(ZWTextId::PanelAddCondition), m_body);
    auto* kinds = new QMenu(add);
    const std::pair<const char*, int> kindTexts[]
        = {{"label", ZWTextId::PanelKindLabel}, {"formule", ZWTextId::PanelKindFormule},
            {"date", ZWTextId::PanelKindDate}, {"image", ZWTextId::PanelKindImage}};
    for (const auto& [element, id] : kindTexts) {
        const QString name = QString::fromLatin1(element);
        kinds->addAction(ZWLoadString(id), this, [this, name] { AddCondition(name); });
    }
    add->setMenu(kinds);
    auto* remove = new QPushButton(ZWLoadString(ZWTextId::PanelRemoveCondition), m_body);
    auto* up = new QPushButton(ZWLoadString(ZWTextId::PanelUp), m_body);
    auto* down = new QPushButton(ZWLoadString(ZWTextId::PanelDown), m_body);
    auto* editCard = new QPushButton(ZWLoadString(ZWTextId::PanelEditAlternative), m_body);
    auto* buttons = new QHBoxLayout;
    for (QPushButton* button : {add, remove, up, down})
        buttons->addWidget(button);
    form(conditions)->addRow(m_conditions);
    form(conditions)->addRow(buttons);
    form(conditions)->addRow(ZWLoadString(ZWTextId::PanelCondition), m_condition);
    form(conditions)->addRow(editCard);
    connect(remove, &QPushButton::clicked, this, &ZWPropertyPanel::RemoveCondition);
    connect(up, &QPushButton::clicked, this, [this] { MoveCondition(-1); });
    connect(down, &QPushButton::clicked, this, [this] { MoveCondition(1); });
    connect(editCard, &QPushButton::clicked, this, &ZWPropertyPanel::EditAlternative);
    connect(m_conditions, &QListWidget::itemDoubleClicked, this, &ZWPropertyPanel::EditAlternative);
    connect(m_conditions, &QListWidget::currentRowChanged, this, [this](int row) {
        if (m_refreshing || !m_edit || m_edit->Indices().size() != 1)
            return;
        const auto* card = dynamic_cast<const ZWCardConditioned*>(m_edit->Cards().front());
        const QSignalBlocker blocker(m_condition);
        m_condition->setText(card && row >= 0 ? card->GetCondition(row) : QString());
    });
    connect(m_condition, &QLineEdit::textEdited, this, [this](const QString& value) {
        const int row = m_conditions->currentRow();
        if (!m_edit || row < 0)
            return;
        Pushed(m_edit->Apply<ZWCardConditioned>(ZWPropertyEdit::Conditions, ZWLoadString(ZWTextId::PanelCondition),
            [&](ZWCardConditioned& c) { c.SetCondition(row, value); }));
        if (QListWidgetItem* item = m_conditions->item(row))
            item->setText(value);
    });

    // The page.
    QGroupBox* page = NewGroup("page", ZWTextId::PanelPage);
    m_pagePreset = new QComboBox(m_body);
    m_pagePreset->addItem(ZWLoadString(ZWTextId::PanelPageCustom));
    for (const Paper& paper : Papers) {
        const QString name = QString::fromLatin1(paper.name);
        m_pagePreset->addItem(name, QSizeF(paper.width, paper.height));
        m_pagePreset->addItem(ZWLoadString(ZWTextId::PanelLandscape).arg(name), QSizeF(paper.height, paper.width));
    }
    m_pageWidth = NewSpin(1, 5000, 2);
    m_pageHeight = NewSpin(1, 5000, 2);
    m_rounded = NewSpin(0, 500, 2);
    m_gridX = NewSpin(-100, 100, 2);
    m_gridY = NewSpin(-100, 100, 2);
    m_gridX->setToolTip(ZWLoadString(ZWTextId::PanelGridHint));
    m_gridY->setToolTip(ZWLoadString(ZWTextId::PanelGridHint));
    m_background = new QPushButton(ZWLoadString(ZWTextId::PanelBackground), m_body);
    m_noBackground = new QPushButton(ZWLoadString(ZWTextId::PanelNoBackground), m_body);
    m_outColor = new ZWColorButton(true, m_body);
    form(page)->addRow(ZWLoadString(ZWTextId::PanelPageSize), m_pagePreset);
    form(page)->addRow(ZWLoadString(ZWTextId::PanelWidth), m_pageWidth);
    form(page)->addRow(ZWLoadString(ZWTextId::PanelHeight), m_pageHeight);
    form(page)->addRow(ZWLoadString(ZWTextId::PanelRounded), m_rounded);
    form(page)->addRow(ZWLoadString(ZWTextId::PanelGridX), m_gridX);
    form(page)->addRow(ZWLoadString(ZWTextId::PanelGridY), m_gridY);
    form(page)->addRow(m_background);
    form(page)->addRow(m_noBackground);
    form(page)->addRow(ZWLoadString(ZWTextId::PanelOutColor), m_outColor);
    connect(m_pagePreset, &QComboBox::activated, this, [this](int index) {
        const QSizeF size = m_pagePreset->itemData(index).toSizeF();
        if (!m_edit || size.isEmpty())
            return;
        Pushed(m_edit->ApplyPage(
            ZWPropertyEdit::PageSize, ZWLoadString(ZWTextId::PanelPageSize), [size](ZWGlobalProperties& p) {
                p.width = size.width();
                p.height = size.height();
                p.FitBackground();
            }));
        RefreshPage();
    });
    const auto pageSpin
        = [this](QDoubleSpinBox* spin, ZWPropertyEdit::Field field, double ZWGlobalProperties::*member, int textId) {
              connect(spin, &QDoubleSpinBox::valueChanged, this, [this, field, member, textId](double value) {
                  if (m_refreshing || !m_edit)
                      return;
                  Pushed(m_edit->ApplyPage(field, ZWLoadString(textId), [value, member](ZWGlobalProperties& p) {
                      p.*member = value;
                      p.FitBackground();
                  }));
                  RefreshPage();
              });
          };
    pageSpin(m_pageWidth, ZWPropertyEdit::PageWidth, &ZWGlobalProperties::width, ZWTextId::PanelWidth);
    pageSpin(m_pageHeight, ZWPropertyEdit::PageHeight, &ZWGlobalProperties::height, ZWTextId::PanelHeight);
    pageSpin(m_rounded, ZWPropertyEdit::PageRounded, &ZWGlobalProperties::rounded, ZWTextId::PanelRounded);
    pageSpin(m_gridX, ZWPropertyEdit::PageGridX, &ZWGlobalProperties::xgrid, ZWTextId::PanelGridX);
    pageSpin(m_gridY, ZWPropertyEdit::PageGridY, &ZWGlobalProperties::ygrid, ZWTextId::PanelGridY);
    connect(m_background, &QPushButton::clicked, this, [this] {
        const QString path = QFileDialog::getOpenFileName(
            this, m_background->text(), QString(), ZWLoadString(ZWTextId::PanelPictureTypes));
        if (!path.isEmpty())
            ChooseBackground(path);
    });
    connect(m_noBackground, &QPushButton::clicked, this, [this] {
        if (m_edit)
            Pushed(m_edit->ApplyPage(ZWPropertyEdit::PageBackground, m_noBackground->text(),
                [](ZWGlobalProperties& p) { p.DeleteBackground(); }));
    });
    connect(m_outColor, &ZWColorButton::colorChosen, this, [this](quint32 color) {
        if (m_edit)
            Pushed(m_edit->ApplyPage(ZWPropertyEdit::PageOutColor, ZWLoadString(ZWTextId::PanelOutColor),
                [color](ZWGlobalProperties& p) { p.outColor = color; }));
    });
    // Charts and tables.
    m_dataGroups = new ZWDataCardGroups(m_body);
    layout->addWidget(m_dataGroups->ChartGroup());
    layout->addWidget(m_dataGroups->TableGroup());
    m_dataGroups->formulaNames = [this] { return formulaNames ? formulaNames() : QStringList(); };
    connect(m_dataGroups, &ZWDataCardGroups::edited, this, &ZWPropertyPanel::edited);
    layout->addStretch(1);
    // Wide enough for the widest group: the panel scrolls down, never
    // sideways.
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setMinimumWidth(m_body->minimumSizeHint().width() + verticalScrollBar()->sizeHint().width() + 4);
}

void ZWPropertyPanel::SetEdit(ZWPropertyEdit* edit)
{
    m_edit = edit;
    Refresh();
}

void ZWPropertyPanel::Pushed(bool changed)
{
    if (changed)
        emit edited();
}

void ZWPropertyPanel::ShowMessage(const QString& text)
{
    QMessageBox::warning(this, windowTitle(), text);
}

void ZWPropertyPanel::Refresh()
{
    m_refreshing = true;
    const char* kind = m_edit ? m_edit->SharedKind() : "";
    const bool cards = m_edit && !m_edit->Cards().empty();
    const bool alternative = m_edit && m_edit->Alternative() >= 0;
    const bool label
        = cards && (IsKind(kind, "ZWCardLabel") || IsKind(kind, "ZWCardDate") || IsKind(kind, "ZWCardFormule"));
    Group("card")->setVisible(cards);
    Group("text")->setVisible(label);
    Group("number")->setVisible(cards && IsKind(kind, "ZWCardFormule"));
    Group("date")->setVisible(cards && IsKind(kind, "ZWCardDate"));
    Group("picture")->setVisible(cards && IsKind(kind, "ZWCardImage"));
    Group("conditions")
        ->setVisible(cards && IsKind(kind, "ZWCardConditioned") && m_edit->Indices().size() == 1 && !alternative);
    Group("page")->setVisible(m_edit && !cards);
    m_back->setVisible(alternative);
    m_dataGroups->SetEdit(cards ? m_edit : nullptr);
    m_dataGroups->Refresh();
    if (cards) {
        RefreshCard();
        if (label)
            RefreshText();
        if (IsKind(kind, "ZWCardFormule"))
            RefreshNumber();
        if (IsKind(kind, "ZWCardDate"))
            RefreshDate();
        if (IsKind(kind, "ZWCardImage"))
            RefreshPicture();
        if (IsKind(kind, "ZWCardConditioned"))
            RefreshConditions();
    } else if (m_edit) {
        RefreshPage();
    }
    m_refreshing = false;
}

void ZWPropertyPanel::RefreshCard()
{
    const ZWPropertyEdit& e = *m_edit;
    // An alternative takes its conditioned card's rectangle.
    const bool geometry = e.Alternative() < 0;
    for (QDoubleSpinBox* spin : {m_x, m_y, m_width, m_height})
        spin->setEnabled(geometry);
    const auto& page = e.Page().properties;
    m_x->setMaximum(page.width);
    m_y->setMaximum(page.height);
    m_width->setMaximum(page.width);
    m_height->setMaximum(page.height);
    Show(m_x, SharedOf<ZWCardControl, double>(e, [](const ZWCardControl& c) { return c.x; }));
    Show(m_y, SharedOf<ZWCardControl, double>(e, [](const ZWCardControl& c) { return c.y; }));
    Show(m_width, SharedOf<ZWCardControl, double>(e, [](const ZWCardControl& c) { return c.width; }));
    Show(m_height, SharedOf<ZWCardControl, double>(e, [](const ZWCardControl& c) { return c.height; }));
    const auto color = SharedOf<ZWCardControl, quint32>(e, [](const ZWCardControl& c) { return c.color; });
    m_color->SetColor(color.value_or(0), !color);
    const auto back = SharedOf<ZWCardControl, quint32>(e, [](const ZWCardControl& c) { return c.backcolor; });
    m_backcolor->SetColor(back.value_or(ZW_NO_COLOR), !back);
    const auto layer = SharedOf<ZWCardControl, int>(e, [](const ZWCardControl& c) { return c.layer; });
    m_layer->setCurrentIndex(layer ? m_layer->findData(*layer) : -1);

    // Date cards name one of the report's dates; the others a field of the
    // database.
    const auto field = SharedOf<ZWCardControl, QString>(e, [](const ZWCardControl& c) { return c.field; });
    m_field->clear();
    if (IsKind(e.SharedKind(), "ZWCardDate")) {
        m_field->setEditable(false);
        m_field->addItem(ZWLoadString(ZWTextId::PanelDateFixed), QString());
        if (dateFields) {
            for (const auto& [id, name] : dateFields())
                m_field->addItem(name, id);
        } else {
            m_field->addItem(ZWLoadString(ZWTextId::PanelDateBegin), QStringLiteral("BEGIN_DATE"));
            m_field->addItem(ZWLoadString(ZWTextId::PanelDateEnd), QStringLiteral("END_DATE"));
            m_field->addItem(ZWLoadString(ZWTextId::PanelDateNow), QStringLiteral("ACTUAL_DATE"));
        }
        m_field->setCurrentIndex(field ? m_field->findData(*field) : -1);
    } else {
        m_field->setEditable(false);
        m_field->addItem(ZWLoadString(ZWTextId::PanelNoDateField), QString());
        if (databaseFields)
            for (const QString& name : databaseFields())
                m_field->addItem(name, name);
        if (field && m_field->findData(*field) < 0)
            m_field->addItem(*field, *field);
        m_field->setCurrentIndex(field ? m_field->findData(*field) : -1);
    }
}

void ZWPropertyPanel::RefreshText()
{
    const ZWPropertyEdit& e = *m_edit;
    const bool formula = IsKind(e.SharedKind(), "ZWCardFormule");
    m_textLabel->setVisible(!formula);
    m_text->setVisible(!formula);
    m_formulaLabel->setVisible(formula);
    m_formula->setVisible(formula);
    m_wizard->setVisible(formula);
    const auto value = SharedOf<ZWCardLabel, QString>(e, [](const ZWCardLabel& c) { return c.value; });
    QLineEdit* line = formula ? static_cast<QLineEdit*>(m_formula) : m_text;
    if (line->text() != value.value_or(QString()))
        line->setText(value.value_or(QString()));
    line->setPlaceholderText(value ? QString() : QStringLiteral("—"));
    if (formula) {
        m_formula->SetStore(ZWDriverSupport::Store().get());
        m_formula->SetFormulas(formulaNames ? formulaNames() : QStringList());
    }
    const auto font = SharedOf<ZWCardLabel, QString>(e, [](const ZWCardLabel& c) { return c.font; });
    {
        const QSignalBlocker blocker(m_font);
        m_font->setCurrentFont(QFont(font.value_or(QString())));
        m_font->setEditText(font.value_or(QString()));
    }
    Show(m_size, SharedOf<ZWCardLabel, double>(e, [](const ZWCardLabel& c) { return c.size; }));
    Show(m_orientation, SharedOf<ZWCardLabel, double>(e, [](const ZWCardLabel& c) { return c.orientation; }));
    Show(m_bold, SharedOf<ZWCardLabel, bool>(e, [](const ZWCardLabel& c) { return bool(c.style & 1); }));
    Show(m_italic, SharedOf<ZWCardLabel, bool>(e, [](const ZWCardLabel& c) { return bool(c.style & 2); }));
    ShowAlign(m_horizontal, SharedOf<ZWCardLabel, int>(e, [](const ZWCardLabel& c) { return c.horizontalAlign; }));
    ShowAlign(m_vertical, SharedOf<ZWCardLabel, int>(e, [](const ZWCardLabel& c) { return c.verticalAlign; }));
    const auto style = SharedOf<ZWCardLabel, QString>(e, [](const ZWCardLabel& c) { return c.styleFile; });
    m_style->clear();
    m_style->addItem(ZWLoadString(ZWTextId::PanelNoStyle), QString());
    for (const QString& name : ZWTextStyle::List())
        m_style->addItem(name, name);
    if (style && m_style->findData(*style) < 0)
        m_style->addItem(*style, *style);
    m_style->setCurrentIndex(style ? m_style->findData(*style) : -1);
    m_check->setVisible(formula);
    if (formula)
        UpdateFormulaCheck();
}

void ZWPropertyPanel::RefreshNumber()
{
    const ZWPropertyEdit& e = *m_edit;
    Show(m_thousands, SharedOf<ZWCardFormule, bool>(e, [](const ZWCardFormule& c) { return c.thousandSeparator; }));
    Show(m_fillInteger, SharedOf<ZWCardFormule, bool>(e, [](const ZWCardFormule& c) { return c.fillIntegerZeros; }));
    Show(m_fillDecimal, SharedOf<ZWCardFormule, bool>(e, [](const ZWCardFormule& c) { return c.fillDecimalZeros; }));
    const auto digits = SharedOf<ZWCardFormule, int>(e, [](const ZWCardFormule& c) { return c.integerDigits; });
    const auto decimals = SharedOf<ZWCardFormule, int>(e, [](const ZWCardFormule& c) { return c.decimals; });
    if (digits)
        m_integerDigits->setValue(*digits);
    else
        m_integerDigits->clear();
    if (decimals)
        m_decimals->setValue(*decimals);
    else
        m_decimals->clear();
    UpdateNumberSample();
}

void ZWPropertyPanel::UpdateNumberSample()
{
    const auto cards = m_edit ? m_edit->Cards() : std::vector<ZWCardControl*>();
    const auto* formula = cards.empty() ? nullptr : dynamic_cast<const ZWCardFormule*>(cards.front());
    m_numberSample->setText(
        formula ? formula->FormatValue(1234567.891) + QStringLiteral("   ") + formula->FormatValue(-0.5) : QString());
}

void ZWPropertyPanel::UpdateFormulaCheck()
{
    const auto cards = m_edit ? m_edit->Cards() : std::vector<ZWCardControl*>();
    const auto* formula = cards.size() == 1 ? dynamic_cast<const ZWCardFormule*>(cards.front()) : nullptr;
    m_check->setText(formula && formulaCheck ? formulaCheck(formula->value) : QString());
}

void ZWPropertyPanel::RefreshDate()
{
    const auto pattern = SharedOf<ZWCardDate, QString>(*m_edit, [](const ZWCardDate& c) { return c.format; });
    if (!m_pattern->hasFocus())
        m_pattern->setText(pattern.value_or(QString()));
    UpdateDateSample();
}

void ZWPropertyPanel::UpdateDateSample()
{
    const auto cards = m_edit ? m_edit->Cards() : std::vector<ZWCardControl*>();
    const auto* date = cards.empty() ? nullptr : dynamic_cast<const ZWCardDate*>(cards.front());
    if (!date) {
        m_dateSample->clear();
        return;
    }
    // A bound card shows a date of the period: the sample writes now by
    // the pattern; an unbound one its own text as drawn.
    ZWCardDate sample(*date);
    if (!sample.field.isEmpty()) {
        sample.value = QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-ddThh:mm:ss"));
        sample.filled = false;
    }
    m_dateSample->setText(sample.GetDrawText());
}

void ZWPropertyPanel::RefreshPicture()
{
    const ZWPropertyEdit& e = *m_edit;
    const auto linked = SharedOf<ZWCardImage, bool>(e, [](const ZWCardImage& c) { return !c.valueFile.isEmpty(); });
    Show(m_linked, linked);
    m_linked->setEnabled(linked.value_or(true));
    Show(m_aspect, SharedOf<ZWCardImage, bool>(e, [](const ZWCardImage& c) { return c.maintainAspectRatio; }));
    Show(m_realSize, SharedOf<ZWCardImage, bool>(e, [](const ZWCardImage& c) { return c.maintainRealSize; }));
    ShowAlign(
        m_pictureHorizontal, SharedOf<ZWCardImage, int>(e, [](const ZWCardImage& c) { return c.horizontalAlign; }));
    ShowAlign(m_pictureVertical, SharedOf<ZWCardImage, int>(e, [](const ZWCardImage& c) { return c.verticalAlign; }));
    const auto file = SharedOf<ZWCardImage, QString>(e, [](const ZWCardImage& c) { return c.valueFile; });
    m_picture->setToolTip(file.value_or(QString()));
}

bool ZWPropertyPanel::ChoosePicture(const QString& path)
{
    if (!m_edit)
        return false;
    ZWCardImage probe;
    if (!probe.SetPictureFile(path)) {
        ShowMessage(ZWLoadString(ZWTextId::PanelPictureUnreadable).arg(path));
        return false;
    }
    Pushed(m_edit->Apply<ZWCardImage>(
        ZWPropertyEdit::Picture, m_picture->text(), [&path](ZWCardImage& c) { c.SetPictureFile(path); }));
    Refresh();
    return true;
}

bool ZWPropertyPanel::ChooseBackground(const QString& path)
{
    if (!m_edit)
        return false;
    ZWGlobalProperties probe;
    if (!probe.InitializeBackgroundFile(path)) {
        ShowMessage(ZWLoadString(ZWTextId::PanelPictureUnreadable).arg(path));
        return false;
    }
    Pushed(m_edit->ApplyPage(ZWPropertyEdit::PageBackground, m_background->text(),
        [&path](ZWGlobalProperties& p) { p.InitializeBackgroundFile(path); }));
    return true;
}

void ZWPropertyPanel::RefreshConditions()
{
    const auto cards = m_edit->Cards();
    const auto* conditioned = cards.size() == 1 ? dynamic_cast<const ZWCardConditioned*>(cards.front()) : nullptr;
    const int row = m_conditions->currentRow();
    m_conditions->clear();
    if (!conditioned)
        return;
    for (int i = 0; i < conditioned->GetNumberOfConditions(); ++i)
        m_conditions->addItem(conditioned->GetCondition(i));
    m_conditions->setCurrentRow(std::min(std::max(row, 0), m_conditions->count() - 1));
    m_condition->setText(
        m_conditions->currentRow() >= 0 ? conditioned->GetCondition(m_conditions->currentRow()) : QString());
}

void ZWPropertyPanel::AddCondition(const QString& element)
{
    if (!m_edit)
        return;
    Pushed(m_edit->Apply<ZWCardConditioned>(
        ZWPropertyEdit::Conditions, ZWLoadString(ZWTextId::PanelAddCondition), [&element](ZWCardConditioned& c) {
            auto card = ZWCardControl::CreateFromElement(element);
            if (card)
                card->InitializeId();
            c.AddCondition(QStringLiteral("1"), std::move(card));
        }));
    Refresh();
    m_conditions->setCurrentRow(m_conditions->count() - 1);
}

void ZWPropertyPanel::RemoveCondition()
{
    const int row = m_conditions->currentRow();
    if (!m_edit || row < 0)
        return;
    Pushed(m_edit->Apply<ZWCardConditioned>(ZWPropertyEdit::Conditions, ZWLoadString(ZWTextId::PanelRemoveCondition),
        [row](ZWCardConditioned& c) { c.DeleteCondition(row); }));
    Refresh();
}

void ZWPropertyPanel::MoveCondition(int step)
{
    const int row = m_conditions->currentRow();
    const int to = row + step;
    if (!m_edit || row < 0 || to < 0 || to >= m_conditions->count())
        return;
    Pushed(m_edit->Apply<ZWCardConditioned>(ZWPropertyEdit::Conditions,
        ZWLoadString(step < 0 ? ZWTextId::PanelUp : ZWTextId::PanelDown), [row, to](ZWCardConditioned& c) {
            std::swap(c.controls[size_t(row)], c.controls[size_t(to)]);
            std::swap(c.conditions[size_t(row)], c.conditions[size_t(to)]);
            if (c.level == row || c.level == to)
                c.level = c.level == row ? to : row;
        }));
    Refresh();
    m_conditions->setCurrentRow(to);
}

void ZWPropertyPanel::EditAlternative()
{
    const int row = m_conditions->currentRow();
    if (!m_edit || row < 0)
        return;
    m_edit->SetAlternative(row);
    Refresh();
}

void ZWPropertyPanel::BackToConditioned()
{
    if (!m_edit)
        return;
    const int alternative = m_edit->Alternative();
    m_edit->SetAlternative(-1);
    Refresh();
    m_conditions->setCurrentRow(alternative);
}

void ZWPropertyPanel::RefreshPage()
{
    const ZWGlobalProperties& p = m_edit->Page().properties;
    const bool was = m_refreshing;
    m_refreshing = true;
    m_pageWidth->setValue(p.width);
    m_pageHeight->setValue(p.height);
    m_rounded->setValue(p.rounded);
    m_gridX->setValue(p.xgrid);
    m_gridY->setValue(p.ygrid);
    m_outColor->SetColor(p.outColor);
    m_noBackground->setEnabled(p.ThereAreBackground());
    int preset = 0;
    for (int i = 1; i < m_pagePreset->count(); ++i) {
        const QSizeF size = m_pagePreset->itemData(i).toSizeF();
        if (std::abs(size.width() - p.width) < 0.05 && std::abs(size.height() - p.height) < 0.05)
            preset = i;
    }
    m_pagePreset->setCurrentIndex(preset);
    m_refreshing = was;
}

void ZWPropertyPanel::OnWizard()
{
    if (!m_edit)
        return;
    XmlDocument empty;
    const XmlDocument* library = formulaLibrary ? formulaLibrary() : nullptr;
    CDlgWizzard wizard(library ? *library : empty, nullptr, this);
    int start = 0;
    int end = 0;
    m_formula->LastSelection(start, end);
    wizard.SetExpression(m_formula->text(), start, end);
    if (!RunWizard(wizard))
        return;
    // Setting the line records the edit, as typing does.
    m_formula->setText(wizard.GetExpression());
    m_formula->setCursorPosition(wizard.GetCursor());
    m_formula->setFocus();
}

bool ZWPropertyPanel::RunWizard(CDlgWizzard& wizard)
{
    return wizard.exec() == QDialog::Accepted;
}
