#pragma once

#include "template/ZWCardControl.h"

#include <QByteArray>
#include <QImage>
#include <QRectF>
#include <QSizeF>

// A picture in a rectangle: stretched, scaled with its aspect ratio kept, or
// at its real size, aligned within the rectangle. The picture's file bytes
// are kept so that the template can carry them (base64) when the picture has
// no file of its own. The page background is an image card too.
class ZWCardImage : public ZWCardControl
{
public:
    enum Align { AlignLeft = 1, AlignRight = 2, AlignTop = 4, AlignBottom = 8, AlignCenter = 16 };

    ZWCardImage();

    const char* GetRuntimeClass() const override;
    bool SaveTemplate(XmlDocument::XmlNode node, bool createElement) const override;
    bool GetFromXml(const XmlDocument::XmlNode& element) override;
    void Draw(QPainter& dc, const tagDraw& draw) override;
    std::unique_ptr<ZWCardControl> GetClone() const override;

    // Keeps `data` as the picture file's bytes and decodes them; the bytes
    // are kept even when they are no picture, so that they are written back.
    // Returns whether a picture was decoded.
    bool SetPictureBytes(const QByteArray& data);
    // Reads the file at `path` (relative to the host's data folder, or
    // absolute) and keeps `path` as the card's file name. A file that cannot
    // be read leaves the card without a picture. Returns whether a picture
    // was decoded.
    bool SetPictureFile(const QString& path);
    // Frees the picture, its display copy and its bytes, and forgets the
    // file name.
    void DeletePicture();
    bool HasPicture() const { return !image.isNull(); }
    quint32 ByteCount() const { return quint32(bytes.size()); }
    // A quarter turn of the picture (printing a page turned).
    void RotatePicture(bool right);

    // Where the picture goes, in millimetres of the page, for a card at
    // `card` (mm), a picture of `picturePx` pixels and a device of
    // `mmPerPixel` millimetres per pixel (x and y).
    static QRectF TargetRectMm(const QRectF& card, const QSize& picturePx, const QPointF& mmPerPixel,
        int horizontalAlign, int verticalAlign, bool maintainAspectRatio, bool maintainRealSize);
    QRectF TargetRectMm(const QPointF& mmPerPixel) const;

    // Display copies larger than this are not made: such a picture is drawn
    // scaled on the fly, clipped to what is visible.
    static constexpr qint64 MaxDrawPixels = 40'000'000;

    QImage image;
    QImage drawImage;
    QByteArray bytes;
    int horizontalAlign = AlignCenter;
    int verticalAlign = AlignCenter;
    bool maintainAspectRatio = true;
    bool maintainRealSize = false;
    QString valueFile;
};
