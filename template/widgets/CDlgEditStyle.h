#pragma once

#include "template/ZWStyleChange.h"

#include <QDialog>
#include <optional>

class QCheckBox;
class QDoubleSpinBox;
class QFontComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

// The style editor: name, font, size, bold and italic, angle and colour of
// one text style, with a sample. OK judges the style (ZWStyleChange), shows
// the message of a refusal with the focus on the field at fault, asks before
// replacing another style, and writes the file; an unchanged style closes as
// cancelled.
class CDlgEditStyle : public QDialog
{
    Q_OBJECT

public:
    // `opened` is the style to modify, none for a new one.
    CDlgEditStyle(std::optional<ZWTextStyle> opened, bool mayOverwrite, QWidget* parent = nullptr);

    // The style as the fields show it.
    ZWTextStyle Edited() const;
    void SetColor(quint32 color);

    QLineEdit* NameEdit() const { return m_name; }
    QDoubleSpinBox* SizeEdit() const { return m_size; }
    QDoubleSpinBox* OrientationEdit() const { return m_orientation; }
    QFontComboBox* FontEdit() const { return m_font; }
    QCheckBox* BoldEdit() const { return m_bold; }
    QCheckBox* ItalicEdit() const { return m_italic; }

public slots:
    void accept() override;

signals:
    void messageShown(int textId);

protected:
    virtual void ShowMessage(const QString& text, int textId);
    // A yes/no question; true for yes.
    virtual bool Ask(const QString& text, int textId);

private:
    void ChooseColor();
    void UpdateSample();

    ZWStyleChange m_change;
    std::optional<ZWTextStyle> m_opened;
    quint32 m_color = 0x000000;
    QLineEdit* m_name;
    QFontComboBox* m_font;
    QDoubleSpinBox* m_size;
    QCheckBox* m_bold;
    QCheckBox* m_italic;
    QDoubleSpinBox* m_orientation;
    QPushButton* m_colorButton;
    QLabel* m_sample;
};
