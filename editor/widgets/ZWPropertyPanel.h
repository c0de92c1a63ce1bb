#pragma once

#include "host/core/XmlDocument.h"

#include <QScrollArea>
#include <functional>
#include <utility>
#include <vector>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QFontComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QSpinBox;
class CDlgWizzard;
class ZWColorButton;
class ZWDataCardGroups;
class ZWFormulaEdit;
class ZWPropertyEdit;

// The properties of the selected cards, or of the page when none is
// selected: a group of fields per kind (card, text, number, date, picture,
// conditions, page), shown for what the selection shares. Every edit is one
// step on the report's undo stack through ZWPropertyEdit; refreshing never
// records one.
class ZWPropertyPanel : public QScrollArea
{
    Q_OBJECT

public:
    explicit ZWPropertyPanel(QWidget* parent = nullptr);

    // What the panel edits; null shows nothing. The panel does not own it.
    void SetEdit(ZWPropertyEdit* edit);
    ZWPropertyEdit* Edit() const { return m_edit; }
    // Shows the values of the cards (after a selection change, an undo).
    void Refresh();

    // The fields a card can be bound to; the formula check shown under a
    // formula (its value or why it has none).
    std::function<QStringList()> databaseFields;
    std::function<QString(const QString& formula)> formulaCheck;
    // The names of the report's formulas, offered while a formula is typed.
    std::function<QStringList()> formulaNames;
    // The report's formula library, for the wizard; null for none.
    std::function<const XmlDocument*()> formulaLibrary;
    // The dates a date card can be bound to, as (id, name); without it the
    // period's start and end and the present.
    std::function<std::vector<std::pair<QString, QString>>()> dateFields;

    QDoubleSpinBox* XEdit() const { return m_x; }
    QDoubleSpinBox* YEdit() const { return m_y; }
    QDoubleSpinBox* WidthEdit() const { return m_width; }
    QDoubleSpinBox* HeightEdit() const { return m_height; }
    ZWColorButton* ColorEdit() const { return m_color; }
    ZWColorButton* BackcolorEdit() const { return m_backcolor; }
    QLineEdit* TextEdit() const { return m_text; }
    ZWFormulaEdit* FormulaEdit() const { return m_formula; }
    QDoubleSpinBox* SizeEdit() const { return m_size; }
    QCheckBox* BoldEdit() const { return m_bold; }
    QSpinBox* DecimalsEdit() const { return m_decimals; }
    QCheckBox* ThousandsEdit() const { return m_thousands; }
    QLabel* NumberSample() const { return m_numberSample; }
    QLineEdit* PatternEdit() const { return m_pattern; }
    QLabel* DateSample() const { return m_dateSample; }
    QComboBox* FieldEdit() const { return m_field; }
    QComboBox* PagePresetEdit() const { return m_pagePreset; }
    QDoubleSpinBox* PageWidthEdit() const { return m_pageWidth; }
    QListWidget* ConditionList() const { return m_conditions; }
    QGroupBox* Group(const char* name) const;
    // The chart and table groups.
    ZWDataCardGroups* DataGroups() const { return m_dataGroups; }

    // Conditions of the selected conditioned card.
    void AddCondition(const QString& element);
    void RemoveCondition();
    void MoveCondition(int step);
    void EditAlternative();
    // The formula wizard on the formula line: the element chosen goes in
    // place of the selection.
    void OnWizard();
    void BackToConditioned();
    // Takes a picture file for the selected picture cards; false (and a
    // message) when it is no picture.
    bool ChoosePicture(const QString& path);
    bool ChooseBackground(const QString& path);

signals:
    // A step was pushed: the page must be redrawn.
    void edited();

protected:
    virtual void ShowMessage(const QString& text);
    // Runs the wizard; true when it was accepted. Tests replace it.
    virtual bool RunWizard(CDlgWizzard& wizard);

private:
    void Build();
    QGroupBox* NewGroup(const char* name, int titleId);
    QDoubleSpinBox* NewSpin(double min, double max, int decimals);
    void RefreshCard();
    void RefreshText();
    void RefreshNumber();
    void RefreshDate();
    void RefreshPicture();
    void RefreshConditions();
    void RefreshPage();
    void UpdateNumberSample();
    void UpdateDateSample();
    void UpdateFormulaCheck();
    void Pushed(bool changed);

    ZWPropertyEdit* m_edit = nullptr;
    bool m_refreshing = false;
    QWidget* m_body;

    QDoubleSpinBox* m_x;
    QDoubleSpinBox* m_y;
    QDoubleSpinBox* m_width;
    QDoubleSpinBox* m_height;
    ZWColorButton* m_color;
    ZWColorButton* m_backcolor;
    QComboBox* m_layer;
    QComboBox* m_field;

    QLabel* m_textLabel;
    QLineEdit* m_text;
    QLabel* m_formulaLabel;
    ZWFormulaEdit* m_formula;
    QPushButton* m_wizard;
    QLabel* m_check;
    QFontComboBox* m_font;
    QDoubleSpinBox* m_size;
    QCheckBox* m_bold;
    QCheckBox* m_italic;
    QDoubleSpinBox* m_orientation;
    QComboBox* m_horizontal;
    QComboBox* m_vertical;
    QComboBox* m_style;
    QPushButton* m_saveStyle;

    QCheckBox* m_thousands;
    QSpinBox* m_integerDigits;
    QSpinBox* m_decimals;
    QCheckBox* m_fillInteger;
    QCheckBox* m_fillDecimal;
    QLabel* m_numberSample;

    QLineEdit* m_pattern;
    QLabel* m_dateSample;

    QPushButton* m_picture;
    QCheckBox* m_linked;
    QCheckBox* m_aspect;
    QCheckBox* m_realSize;
    QComboBox* m_pictureHorizontal;
    QComboBox* m_pictureVertical;

    QListWidget* m_conditions;
    QLineEdit* m_condition;
    QPushButton* m_back;

    QComboBox* m_pagePreset;
    QDoubleSpinBox* m_pageWidth;
    QDoubleSpinBox* m_pageHeight;
    QDoubleSpinBox* m_rounded;
    QDoubleSpinBox* m_gridX;
    QDoubleSpinBox* m_gridY;
    QPushButton* m_background;
    QPushButton* m_noBackground;
    ZWColorButton* m_outColor;

    ZWDataCardGroups* m_dataGroups;
};
