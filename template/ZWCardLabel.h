#pragma once

#include "template/ZWCardControl.h"

#include <QFont>
#include <QPointF>
#include <QSizeF>

class QPaintDevice;

// The text card: one line of text in a font, size, colour and angle, aligned
// in the card's rectangle. Its look may come from a named text style (a
// ".XSTY" file of the host's data folder). The date and formula cards derive
// from it and only change where the text comes from.
class ZWCardLabel : public ZWCardControl
{
public:
    enum Align { AlignLeft = 1, AlignRight = 2, AlignTop = 4, AlignBottom = 8, AlignCenter = 16 };

    ZWCardLabel();

    const char* GetRuntimeClass() const override;
    bool SaveTemplate(XmlDocument::XmlNode node, bool createElement) const override;
    bool GetFromXml(const XmlDocument::XmlNode& element) override;
    void Draw(QPainter& dc, const tagDraw& draw) override;
    std::unique_ptr<ZWCardControl> GetClone() const override;
    // GetStyleFromFile(styleFile): false for a label without a style.
    bool UpdateStyleFromFile() override;
    // Takes font, size, colour, style and angle from the style file `name`
    // (each only when the file has it). False, changing nothing, for an
    // empty name or a file that cannot be read.
    virtual bool GetStyleFromFile(const QString& name);

    // The text drawn: the value for a label and a formula card, the
    // formatted date for a date card.
    virtual QString GetDrawText() const;

    // The escapement of the font: the integer part of orientation × 10, in
    // tenths of a degree.
    int Escapement() const;
    // The font for drawing on `device` with the record's scale and resolution.
    QFont CreateFont(const QPaintDevice* device, const tagDraw& draw) const;

    // Where the text starts (the top-left corner of the unrotated text), in
    // device pixels, for text of extent cx × cy drawn at `orientation`
    // degrees in the device rectangle `rect` with the given alignments.
    static QPointF TextStart(
        const ZWRect& rect, double cx, double cy, double orientation, int horizontalAlign, int verticalAlign);
    // The rotated text's bounding box, W × H.
    static QSizeF RotatedExtent(double cx, double cy, double orientation);

    int style = 0;
    QString font = QStringLiteral("Arial");
    double size = 10.0;
    double orientation = 0.0;
    int horizontalAlign = AlignCenter;
    int verticalAlign = AlignCenter;
    QString styleFile;
    QString value;

protected:
    void SaveLabelFields(XmlDocument::XmlNode element) const;
    void ReadLabelFields(const XmlDocument::XmlNode& element);
    void DrawText(QPainter& dc, const tagDraw& draw, const QString& text) const;
};
