#pragma once

#include <QToolButton>

// A colour field: a swatch that opens the colour dialog, and, where the
// field allows it, a "None" choice (ZW_NO_COLOR). Colours are colour
// references (0x00BBGGRR).
class ZWColorButton : public QToolButton
{
    Q_OBJECT

public:
    explicit ZWColorButton(bool allowNone, QWidget* parent = nullptr);

    quint32 Color() const { return m_color; }
    // Shows a colour without signalling; `mixed` shows that the selected
    // cards differ.
    void SetColor(quint32 color, bool mixed = false);

    static QColor ToQColor(quint32 ref);
    static quint32 FromQColor(const QColor& color);

signals:
    void colorChosen(quint32 color);

private:
    void Choose();
    void Choose(quint32 color);

    bool m_allowNone;
    quint32 m_color = 0;
};
