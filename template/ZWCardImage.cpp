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
    m_key = data.isEmpty() ? QByteArray() : ZWImageSupport::Key(data);
    m_turns = 0;
    m_size = ZWImageSupport::Probe(data, &m_status);
    return Probed();
}

bool ZWCardImage::SetPictureFile(const QString& path)
{
    QByteArray data;
    ZWImageSupport::ReadPictureFile(RelativePathToFullPath(path), data);
    SetPictureBytes(data);
    valueFile = path;
    return Probed();
}

void ZWCardImage::DeletePicture()
{
    bytes.clear();
    m_key.clear();
    m_turns = 0;
    m_size = QSize();
    m_status = ZWImageSupport::Status::Empty;
    valueFile.clear();
}

bool ZWCardImage::Probed() const
{
    return !bytes.isEmpty() && m_status == ZWImageSupport::Status::Ok;
}

bool ZWCardImage::HasPicture() const
{
    return !Picture().isNull();
}

void ZWCardImage::LearnSize() const
{
    if (!Probed() || m_size.isValid())
        return;
    const QImage picture = ZWImageSupport::Picture(m_key, bytes, 0, QSize(), &m_status);
    m_size = picture.size();
}

QSize ZWCardImage::PictureSize() const
{
    LearnSize();
    if (!Probed())
        return QSize();
    return m_turns % 2 ? m_size.transposed() : m_size;
}

QImage ZWCardImage::Picture() const
{
    if (!Probed())
        return QImage();
    const QImage picture = ZWImageSupport::Picture(m_key, bytes, m_turns, QSize(), &m_status);
    if (picture.isNull() && m_status == ZWImageSupport::Status::Ok)
        m_status = ZWImageSupport::Status::Corrupt;
    return picture;
}

QString ZWCardImage::PictureProblem() const
{
    LearnSize();
    if (bytes.isEmpty() || m_status == ZWImageSupport::Status::Ok)
        return QString();
    return ZWImageSupport::Reason(m_status, m_size);
}

void ZWCardImage::RotatePicture(bool right)
{
    if (!bytes.isEmpty())
        m_turns = (m_turns + (right ? 1 : 3)) % 4;
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
    return TargetRectMm(QRectF(x, y, width, height), PictureSize(), mmPerPixel, horizontalAlign, verticalAlign,
        maintainAspectRatio, maintainRealSize);
}

void ZWCardImage::DrawProblemMark(QPainter& dc, const ZWRect& rect) const
{
    // Bytes that are no picture to draw: a red cross over the card, so that
    // the window says what the paper would silently leave out.
    dc.save();
    QPen pen(QColor(200, 0, 0));
    pen.setCosmetic(true);
    pen.setWidth(2);
    dc.setPen(pen);
    dc.setBrush(Qt::NoBrush);
    const QRect r = rect.ToQRect().adjusted(1, 1, -1, -1);
    dc.drawRect(r);
    dc.drawLine(r.topLeft(), r.bottomRight());
    dc.drawLine(r.topRight(), r.bottomLeft());
    dc.restore();
}

void ZWCardImage::Draw(QPainter& dc, const tagDraw& draw)
{
    const ZWRect cardRect = draw.CardRect(x, y, width, height);
    if (!draw.IsVisible(cardRect))
        return;
    const QSize pictureSize = PictureSize();
    const auto withoutPicture = [&] {
        if (backcolor != ZW_NO_COLOR && !draw.noBackground) {
            dc.save();
            if (draw.clipToPage)
                dc.setClipPath(draw.PageClipPath(), Qt::IntersectClip);
            dc.fillRect(cardRect.ToQRect(), ZWColorRefToQColor(backcolor));
            dc.restore();
        }
        if (draw.markProblems && !bytes.isEmpty())
            DrawProblemMark(dc, cardRect);
    };
    if (!Probed()) {
        withoutPicture();
        return;
    }

    const QPointF pxPerMm = ZWDevicePixelsPerMm(dc.device());
    const QPointF mmPerPixel(1.0 / pxPerMm.x(), 1.0 / pxPerMm.y());
    const QRectF target = TargetRectMm(QRectF(x, y, width, height), pictureSize, mmPerPixel, horizontalAlign,
        verticalAlign, maintainAspectRatio, maintainRealSize);
    const ZWRect targetRect = draw.CardRect(target.x(), target.y(), target.width(), target.height());
    if (!draw.IsVisible(targetRect) || targetRect.IsEmpty())
        return;

    const QRect device = targetRect.ToQRect();
    const QSize size = device.size();
    const bool vector = dc.paintEngine() && dc.paintEngine()->type() == QPaintEngine::Pdf;
    // A PDF (and printing, which goes through PDF) keeps the picture at its
    // own resolution and scales it on paper; a copy far beyond any screen is
    // not made either: the painter scales what is visible.
    const bool scaleOnDevice = vector || qint64(size.width()) * size.height() > MaxDrawPixels;
    QImage picture;
    if (scaleOnDevice) {
        picture = Picture();
    } else {
        const auto* gui = qobject_cast<QGuiApplication*>(QCoreApplication::instance());
        const bool cursor = gui && QThread::currentThread() == gui->thread()
            && QGuiApplication::platformName() != QLatin1String("offscreen")
            && !ZWImageSupport::IsCached(m_key, m_turns, size);
        if (cursor)
            QGuiApplication::setOverrideCursor(QCursor(Qt::WaitCursor));
        picture = ZWImageSupport::Picture(m_key, bytes, m_turns, size, &m_status);
        if (cursor)
            QGuiApplication::restoreOverrideCursor();
    }
    if (picture.isNull()) {
        if (m_status == ZWImageSupport::Status::Ok)
            m_status = ZWImageSupport::Status::Corrupt;
        withoutPicture();
        return;
    }
    dc.save();
    if (draw.clipToCard)
        dc.setClipRect(cardRect.ToQRect(), Qt::IntersectClip);
    if (draw.clipToPage)
        dc.setClipPath(draw.PageClipPath(), Qt::IntersectClip);
    if (scaleOnDevice) {
        dc.setRenderHint(QPainter::SmoothPixmapTransform, true);
        dc.drawImage(device, picture);
    } else {
        dc.drawImage(device.topLeft(), picture);
    }
    dc.restore();
}

std::unique_ptr<ZWCardControl> ZWCardImage::GetClone() const
{
    return std::make_unique<ZWCardImage>(*this);
}
