#include "editor/widgets/ZWColorButton.h"

#include "host/core/ZWLoadString.h"
#include "host/core/ZWTextId.h"
#include "template/ZWColorRef.h"

#include <QColorDialog>
#include <QMenu>
#include <QPainter>

ZWColorButton::ZWColorButton(bool allowNone, QWidget* parent) : QToolButton(parent), m_allowNone(allowNone)
{
    setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    if (m_allowNone) {
        auto* menu = new QMenu(this);
        menu->addAction(ZWLoadString(ZWTextId::PanelChooseColor), this, [this] { Choose(); });
        menu->addAction(ZWLoadString(ZWTextId::PanelNone), this, [this] { Choose(ZW_NO_COLOR); });
        setMenu(menu);
        setPopupMode(QToolButton::MenuButtonPopup);
    }
    connect(this, &QToolButton::clicked, this, [this] { Choose(); });
    SetColor(0);
}

QColor ZWColorButton::ToQColor(quint32 ref)
{
    return QColor(int(ref & 0xFF), int((ref >> 8) & 0xFF), int((ref >> 16) & 0xFF));
}

quint32 ZWColorButton::FromQColor(const QColor& color)
{
    return quint32(color.red()) | (quint32(color.green()) << 8) | (quint32(color.blue()) << 16);
}

void ZWColorButton::SetColor(quint32 color, bool mixed)
{
    m_color = color;
    QPixmap swatch(16, 16);
    if (mixed || color == ZW_NO_COLOR) {
        swatch.fill(Qt::white);
        QPainter painter(&swatch);
        painter.setPen(Qt::red);
        painter.drawLine(0, 15, 15, 0);
        painter.setPen(Qt::gray);
        painter.drawRect(0, 0, 15, 15);
    } else {
        swatch.fill(ToQColor(color));
    }
    setIcon(QIcon(swatch));
    setText(mixed                  ? QStringLiteral("—")
            : color == ZW_NO_COLOR ? ZWLoadString(ZWTextId::PanelNone)
                                   : QStringLiteral("#%1").arg(ToQColor(color).name().mid(1).toUpper()));
}

void ZWColorButton::Choose()
{
    const QColor start = m_color == ZW_NO_COLOR ? QColor(Qt::white) : ToQColor(m_color);
    const QColor chosen = QColorDialog::getColor(start, this);
    if (chosen.isValid())
        Choose(FromQColor(chosen));
}

void ZWColorButton::Choose(quint32 color)
{
    SetColor(color);
    emit colorChosen(color);
}
