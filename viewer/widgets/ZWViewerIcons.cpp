#include "viewer/widgets/ZWViewerIcons.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

namespace {

const char* ThemeName(ZWViewerIcons::Kind kind)
{
    switch (kind) {
    case ZWViewerIcons::PreviousPeriod:
        return "go-previous";
    case ZWViewerIcons::NextPeriod:
        return "go-next";
    case ZWViewerIcons::GoToDate:
        return "x-office-calendar";
    case ZWViewerIcons::GroupBy:
        return "view-calendar-list";
    case ZWViewerIcons::PreviousPage:
        return "go-up";
    case ZWViewerIcons::NextPage:
        return "go-down";
    case ZWViewerIcons::Print:
        return "document-print";
    case ZWViewerIcons::Refresh:
        return "view-refresh";
    case ZWViewerIcons::ZoomIn:
        return "zoom-in";
    case ZWViewerIcons::ZoomOut:
        return "zoom-out";
    case ZWViewerIcons::ZoomFit:
        return "zoom-fit-best";
    case ZWViewerIcons::Report:
        return "x-office-document";
    case ZWViewerIcons::Database:
        return "network-server-database";
    case ZWViewerIcons::Folder:
        return "folder-open";
    }
    return "";
}

QPainterPath Triangle(QPointF a, QPointF b, QPointF c)
{
    QPainterPath path;
    path.moveTo(a);
    path.lineTo(b);
    path.lineTo(c);
    path.closeSubpath();
    return path;
}

enum class Sign { Minus, Plus, Frame };

void Magnifier(QPainter& p, Sign sign)
{
    p.setPen(QPen(QColor(0x30, 0x30, 0x30), 3.0, Qt::SolidLine, Qt::RoundCap));
    p.setBrush(QColor(0xdd, 0xee, 0xff));
    p.drawEllipse(QPointF(13, 13), 9, 9);
    p.drawLine(QPointF(20, 20), QPointF(28, 28));
    p.setPen(QPen(QColor(0x20, 0x50, 0xa0), 2.5, Qt::SolidLine, Qt::RoundCap));
    if (sign == Sign::Frame) {
        p.setBrush(Qt::NoBrush);
        p.drawRect(QRectF(9, 9, 8, 8));
        return;
    }
    p.drawLine(QPointF(9, 13), QPointF(17, 13));
    if (sign == Sign::Plus)
        p.drawLine(QPointF(13, 9), QPointF(13, 17));
}

QPixmap Drawn(ZWViewerIcons::Kind kind)
{
    QPixmap pixmap(32, 32);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    const QColor blue(0x20, 0x60, 0xb0);
    const QColor dark(0x30, 0x30, 0x30);
    switch (kind) {
    case ZWViewerIcons::PreviousPeriod:
        p.fillPath(Triangle({24, 5}, {24, 27}, {6, 16}), blue);
        break;
    case ZWViewerIcons::NextPeriod:
        p.fillPath(Triangle({8, 5}, {8, 27}, {26, 16}), blue);
        break;
    case ZWViewerIcons::PreviousPage:
        p.fillPath(Triangle({5, 22}, {27, 22}, {16, 8}), dark);
        break;
    case ZWViewerIcons::NextPage:
        p.fillPath(Triangle({5, 10}, {27, 10}, {16, 24}), dark);
        break;
    case ZWViewerIcons::GoToDate:
    case ZWViewerIcons::GroupBy: {
        p.setPen(QPen(dark, 2));
        p.setBrush(Qt::white);
        p.drawRect(QRectF(4, 6, 24, 22));
        p.fillRect(QRectF(4, 6, 24, 6), QColor(0xc0, 0x30, 0x30));
        if (kind == ZWViewerIcons::GoToDate) {
            p.fillRect(QRectF(17, 17, 7, 7), blue);
        } else {
            for (int row = 0; row < 2; ++row)
                for (int col = 0; col < 4; ++col)
                    p.fillRect(QRectF(7 + col * 5.5, 15 + row * 6, 4, 4), blue);
        }
        break;
    }
    case ZWViewerIcons::Print:
        p.setPen(QPen(dark, 2));
        p.setBrush(Qt::white);
        p.drawRect(QRectF(9, 3, 14, 10));
        p.setBrush(QColor(0x90, 0x90, 0x90));
        p.drawRoundedRect(QRectF(3, 12, 26, 12), 2, 2);
        p.setBrush(Qt::white);
        p.drawRect(QRectF(9, 20, 14, 9));
        break;
    case ZWViewerIcons::Refresh: {
        p.setPen(QPen(QColor(0x20, 0x90, 0x40), 3.5, Qt::SolidLine, Qt::RoundCap));
        p.drawArc(QRectF(6, 6, 20, 20), 90 * 16, 280 * 16);
        p.fillPath(Triangle({14, 1}, {14, 11}, {22, 6}), QColor(0x20, 0x90, 0x40));
        break;
    }
    case ZWViewerIcons::ZoomIn:
        Magnifier(p, Sign::Plus);
        break;
    case ZWViewerIcons::ZoomOut:
        Magnifier(p, Sign::Minus);
        break;
    case ZWViewerIcons::ZoomFit:
        Magnifier(p, Sign::Frame);
        break;
    case ZWViewerIcons::Report:
        p.setPen(QPen(dark, 2));
        p.setBrush(Qt::white);
        p.drawRect(QRectF(6, 3, 20, 26));
        p.fillRect(QRectF(10, 16, 3, 9), blue);
        p.fillRect(QRectF(15, 11, 3, 14), blue);
        p.fillRect(QRectF(20, 19, 3, 6), blue);
        break;
    case ZWViewerIcons::Database:
        p.setPen(QPen(dark, 2));
        p.setBrush(QColor(0xdd, 0xdd, 0xdd));
        p.drawRect(QRectF(6, 8, 20, 17));
        p.drawEllipse(QRectF(6, 20, 20, 8));
        p.drawEllipse(QRectF(6, 4, 20, 8));
        break;
    case ZWViewerIcons::Folder: {
        p.setPen(QPen(dark, 2));
        p.setBrush(QColor(0xe8, 0xc0, 0x60));
        QPainterPath path;
        path.moveTo(3, 8);
        path.lineTo(12, 8);
        path.lineTo(15, 11);
        path.lineTo(29, 11);
        path.lineTo(29, 26);
        path.lineTo(3, 26);
        path.closeSubpath();
        p.drawPath(path);
        break;
    }
    }
    return pixmap;
}

} // namespace

QIcon ZWViewerIcons::Icon(Kind kind)
{
    const QIcon theme = QIcon::fromTheme(QString::fromLatin1(ThemeName(kind)));
    if (!theme.isNull())
        return theme;
    return QIcon(Drawn(kind));
}
