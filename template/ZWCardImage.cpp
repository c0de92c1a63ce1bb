#include "template/ZWCardImage.h"

#include "host/core/ZWPath.h"
#include "host/core/ZWRemote.h"
#include "host/images/ZWImageSupport.h"
#include "template/ZWXmlFields.h"

#include <QCursor>
#include <QGuiApplication>
#include <QPaintEngine>
#include <QPainter>
#include <QThread>

ZWCardImage::ZWCardImage()
{
    color = 0x00C06060;
    backcolor = 0x0000FFFF;
}

const char* ZWCardImage::GetRuntimeClass() const
{
    return "ZWCardImage";
}

bool ZWCardImage::SaveTemplate(XmlDocument::XmlNode node, bool createElement) const
{
    XmlDocument::XmlNode e = TargetElement(node, createElement);
    SaveCommon(e);
    if (!valueFile.isEmpty())
        e.NewChild(QStringLiteral("valueFile"), valueFile);
    else
        e.NewChild(QStringLiteral("value"), EncodeBase64(bytes));
    e.NewChild(QStringLiteral("horizontalAlign"), ZWXmlFields::WriteInt(horizontalAlign));
    e.NewChild(QStringLiteral("verticalAlign"), ZWXmlFields::WriteInt(verticalAlign));
    e.NewChild(QStringLiteral("maintainAspectRatio"), ZWXmlFields::WriteBool(maintainAspectRatio));
    e.NewChild(QStringLiteral("maintainRealSize"), ZWXmlFields::WriteBool(maintainRealSize));
    return true;
}

bool ZWCardImage::GetFromXml(const XmlDocument::XmlNode& e)
{
    ZWCardControl::GetFromXml(e);
    horizontalAlign = AlignCenter;
    verticalAlign = AlignCenter;
    ZWXmlFields::Read(e, QStringLiteral("horizontalAlign"), horizontalAlign);
    ZWXmlFields::Read(e, QStringLiteral("verticalAlign"), verticalAlign);
    const XmlDocument::XmlNode value = e.Node(QStringLiteral("value"));
    if (!value.IsNull()) {
        DeletePicture();
        QByteArray data;
        if (DecodeBase64(value.Text(), data))
            SetPictureBytes(data);
    } else {
        const XmlDocument::XmlNode file = e.Node(QStringLiteral("valueFile"));
        if (!file.IsNull()) {
            DeletePicture();
            SetPictureFile(file.Text());
        }
    }
    ZWXmlFields::Read(e, QStringLiteral("maintainAspectRatio"), maintainAspectRatio);
    ZWXmlFields::Read(e, QStringLiteral("maintainRealSize"), maintainRealSize);
    return true;
}

bool ZWCardImage::SetPictureBytes(const QByteArray& data)
{
    bytes = data;
    image = ZWImageSupport::Load(bytes);
    drawImage = image;
    return !image.isNull();
}

bool ZWCardImage::SetPictureFile(const QString& path)
{
    QByteArray data;
    ZWImageSupport::ReadPictureFile(RelativePathToFullPath(path), data);
    const bool ok = SetPictureBytes(data);
    valueFile = path;
    return ok;
}

void ZWCardImage::DeletePicture()
{
    image = QImage();
    drawImage = QImage();
    bytes.clear();
    valueFile.clear();
}

void ZWCardImage::RotatePicture(bool right)
{
    image = ZWImageSupport::RotateQuarter(image, right);
    drawImage = image;
}

QRectF ZWCardImage::TargetRectMm(const QRectF& card, const QSize& picturePx, const QPointF& mmPerPixel, int horizontal,
    int vertical, bool aspectRatio, bool realSize)
{
    if (!realSize && !aspectRatio)
        return card;
    double w = picturePx.width() * mmPerPixel.x();
    double h = picturePx.height() * mmPerPixel.y();
    if (!realSize && w > 0.0 && h > 0.0) {
        const double factor = std::min(card.width() / w, card.height() / h);
        w *= factor;
        h *= factor;
    }
    double left = card.left();
    if (horizontal == AlignRight)
        left = card.left() + card.width() - w;
    else if (horizontal != AlignLeft)
        left = card.left() + (card.width() - w) * 0.5;
    double top = card.top();
    if (vertical == AlignBottom)
        top = card.top() + card.height() - h;
    else if (vertical != AlignTop)
        top = card.top() + (card.height() - h) * 0.5;
    return QRectF(left, top, w, h);
}

QRectF ZWCardImage::TargetRectMm(const QPointF& mmPerPixel) const
{
    return TargetRectMm(QRectF(x, y, width, height), image.size(), mmPerPixel, horizontalAlign, verticalAlign,
        maintainAspectRatio, maintainRealSize);
}

void ZWCardImage::Draw(QPainter& dc, const tagDraw& draw)
{
    const ZWRect cardRect = draw.CardRect(x, y, width, height);
    if (!draw.IsVisible(cardRect))
        return;
    if (backcolor != ZW_NO_COLOR && !draw.noBackground && image.isNull()) {
        dc.save();
        if (draw.clipToPage)
            dc.setClipPath(draw.PageClipPath(), Qt::IntersectClip);
        dc.fillRect(cardRect.ToQRect(), ZWColorRefToQColor(backcolor));
        dc.restore();
    }
    if (image.isNull())
        return;

    const QPointF pxPerMm = ZWDevicePixelsPerMm(dc.device());
    const QPointF mmPerPixel(1.0 / pxPerMm.x(), 1.0 / pxPerMm.y());
    const QRectF target = TargetRectMm(mmPerPixel);
    const ZWRect targetRect = draw.CardRect(target.x(), target.y(), target.width(), target.height());
    if (!draw.IsVisible(targetRect) || targetRect.IsEmpty())
        return;

    dc.save();
    if (draw.clipToCard)
        dc.setClipRect(cardRect.ToQRect(), Qt::IntersectClip);
    if (draw.clipToPage)
        dc.setClipPath(draw.PageClipPath(), Qt::IntersectClip);
    const QRect device = targetRect.ToQRect();
    const QSize size = device.size();
    const bool vector = dc.paintEngine() && dc.paintEngine()->type() == QPaintEngine::Pdf;
    if (vector) {
        // A PDF (and printing, which goes through PDF) keeps the picture at
        // its own resolution and scales it on paper: no resampled copy.
        dc.setRenderHint(QPainter::SmoothPixmapTransform, true);
        dc.drawImage(device, image);
    } else if (qint64(size.width()) * size.height() > MaxDrawPixels) {
        // Far beyond any screen: let the painter scale what is visible.
        drawImage = QImage();
        dc.setRenderHint(QPainter::SmoothPixmapTransform, true);
        dc.drawImage(device, image);
    } else {
        if (drawImage.size() != size) {
            const auto* gui = qobject_cast<QGuiApplication*>(QCoreApplication::instance());
            const bool cursor = gui && QThread::currentThread() == gui->thread()
                && QGuiApplication::platformName() != QLatin1String("offscreen");
            if (cursor)
                QGuiApplication::setOverrideCursor(QCursor(Qt::WaitCursor));
            drawImage = ZWImageSupport::Resample(image, size);
            if (cursor)
                QGuiApplication::restoreOverrideCursor();
        }
        dc.drawImage(device.topLeft(), drawImage);
    }
    dc.restore();
}

std::unique_ptr<ZWCardControl> ZWCardImage::GetClone() const
{
    return std::make_unique<ZWCardImage>(*this);
}
