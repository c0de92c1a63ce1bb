#pragma once

#include "host/images/ZWImageSupport.h"
#include "template/ZWCardControl.h"

#include <QByteArray>
#include <QImage>
#include <QRectF>
#include <QSizeF>

// A picture in a rectangle: stretched, scaled with its aspect ratio kept, or
// at its real size, aligned within the rectangle. The card keeps the
// picture's file bytes, so that the template can carry them (base64) when
// the picture has no file of its own, and only the bytes: the decoded
// picture and the copies drawn from it live in ZWImageSupport's one cache
// for the whole process, made on first draw. The page background is an
// image card too.
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

    // Keeps `data` as the picture file's bytes (kept even when they are no
    // picture, so that they are written back) and reads the picture's size
    // from their header; nothing is decoded yet. Returns whether the header
    // reads as a picture within the limits.
    bool SetPictureBytes(const QByteArray& data);
    // Reads the file at `path` (relative to the host's data folder, or
    // absolute) and keeps `path` as the card's file name. A file that cannot
    // be read leaves the card without a picture. Returns as SetPictureBytes.
    bool SetPictureFile(const QString& path);
    // Forgets the picture: its bytes and its file name.
    void DeletePicture();
    // Whether the card holds a picture it can draw (decoded through the
    // shared cache to know).
    bool HasPicture() const;
    quint32 ByteCount() const { return quint32(bytes.size()); }
    // The picture's size in pixels as drawn (turned), invalid without one.
    QSize PictureSize() const;
    // The picture as drawn (decoded, turned), from the shared cache; null
    // without one.
    QImage Picture() const;
    // Why the card's bytes are not drawn ("6000 × 6000 pixels: more than…"),
    // or an empty text when there are none or they are drawn.
    QString PictureProblem() const;
    // A quarter turn of the picture (printing a page turned).
    void RotatePicture(bool right);

    // Where the picture goes, in millimetres of the page, for a card at
    // `card` (mm), a picture of `picturePx` pixels and a device of
    // `mmPerPixel` millimetres per pixel (x and y).
    static QRectF TargetRectMm(const QRectF& card, const QSize& picturePx, const QPointF& mmPerPixel,
        int horizontalAlign, int verticalAlign, bool maintainAspectRatio, bool maintainRealSize);
    QRectF TargetRectMm(const QPointF& mmPerPixel) const;

    // Drawn copies larger than this are not made: such a picture is drawn
    // scaled on the fly, clipped to what is visible.
    static constexpr qint64 MaxDrawPixels = 40'000'000;

    QByteArray bytes;
    int horizontalAlign = AlignCenter;
    int verticalAlign = AlignCenter;
    bool maintainAspectRatio = true;
    bool maintainRealSize = false;
    QString valueFile;

private:
    // Bytes whose header reads as a picture, not known to fail.
    bool Probed() const;
    // Learns the size of a picture whose header is not read here (tif) by
    // decoding it, once.
    void LearnSize() const;
    void DrawProblemMark(QPainter& dc, const ZWRect& rect) const;

    QByteArray m_key;
    int m_turns = 0;
    mutable QSize m_size;
    mutable ZWImageSupport::Status m_status = ZWImageSupport::Status::Empty;
};
