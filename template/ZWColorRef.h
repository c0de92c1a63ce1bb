#pragma once

#include <QColor>
#include <QtGlobal>

// Colours as the files store them: 32-bit colour references 0x00BBGGRR (red
// in the low byte); ZW_NO_COLOR means no colour (transparent).
constexpr quint32 ZW_NO_COLOR = 0xFFFFFFFFu;

constexpr quint32 ZWRGB(int red, int green, int blue)
{
    return quint32(red & 0xFF) | (quint32(green & 0xFF) << 8) | (quint32(blue & 0xFF) << 16);
}

// Only the three colour bytes count; ZW_NO_COLOR gives a transparent colour.
inline QColor ZWColorRefToQColor(quint32 colour)
{
    if (colour == ZW_NO_COLOR)
        return QColor(Qt::transparent);
    return QColor(int(colour & 0xFF), int((colour >> 8) & 0xFF), int((colour >> 16) & 0xFF));
}

inline quint32 ZWQColorToColorRef(const QColor& colour)
{
    if (!colour.isValid() || colour.alpha() == 0)
        return ZW_NO_COLOR;
    return ZWRGB(colour.red(), colour.green(), colour.blue());
}
