#pragma once

#include "host/core/XmlDocument.h"
#include "template/ZWColorRef.h"
#include "template/ZWRect.h"
#include "template/tagDraw.h"

#include <QRect>
#include <QString>
#include <memory>
#include <vector>

class QPainter;

// The base of every card: a rectangle on a page, in millimetres, with an
// identity, an optional data binding and two colours. The kinds derive from
// it (image, label and its date and formula kinds, conditioned); their names,
// elements and bases are the rows of ZWCardKinds.
class ZWCardControl
{
public:
    ZWCardControl();
    ZWCardControl(const ZWCardControl&) = default;
    ZWCardControl& operator=(const ZWCardControl&) = default;
    virtual ~ZWCardControl();

    // The kind's class name: "ZWCardControl", "ZWCardImage", "ZWCardLabel",
    // "ZWCardDate", "ZWCardFormule" or "ZWCardConditioned".
    virtual const char* GetRuntimeClass() const;
    // The element the kind is stored as ("image", "label", "date",
    // "formule", "conditioned"); empty for the bare base.
    QString ElementName() const;
    // Whether this card is of the kind `className` or derives from it
    // ("ZWCardLabel" is true for date and formula cards).
    bool IsKindOf(const char* className) const;

    // A default card of the kind named by class name, or null.
    static std::unique_ptr<ZWCardControl> CreateObject(const QString& className);
    // A default card of the kind stored as `elementName` (the five page
    // elements), or null for any other name.
    static std::unique_ptr<ZWCardControl> CreateFromElement(const QString& elementName);

    // Writes the card: with `createElement` under a new child element of
    // `node` named after the kind, else straight into `node`. Always true.
    virtual bool SaveTemplate(XmlDocument::XmlNode node, bool createElement) const;
    // Reads the card from its element; missing elements keep their values
    // except where the format says otherwise. Always true.
    virtual bool GetFromXml(const XmlDocument::XmlNode& element);
    // Draws the card; the base draws nothing.
    virtual void Draw(QPainter& dc, const tagDraw& draw);
    // The editor's outline of the card, pixel by pixel in `color`, both ends
    // of every edge included.
    virtual void DrawBorder(QPainter& dc, const ZWRect& rect, bool thick, bool dashed, bool densePattern, int phase);
    // A deep copy, id included; the caller owns it.
    virtual std::unique_ptr<ZWCardControl> GetClone() const;
    virtual bool Resizable() const;
    // Re-reads the text style from the card's style file; the base has none
    // and returns true.
    virtual bool UpdateStyleFromFile();

    // Gives the card a new identity.
    void InitializeId();

    // The pixels of the outline as filled rectangles (runs along each edge),
    // the work of DrawBorder.
    static std::vector<QRect> BorderRuns(const ZWRect& rect, bool thick, bool dashed, bool densePattern, int phase);

    double x = 0.0;
    double y = 0.0;
    double width = 10.0;
    double height = 10.0;
    QString id;
    QString field;
    quint32 color = 0x000000;
    quint32 backcolor = ZW_NO_COLOR;
    // Drawing layer: 0 under, 1 over; not stored.
    int layer = 0;

protected:
    // The common fields, into an element that exists.
    void SaveCommon(XmlDocument::XmlNode element) const;
    // The element to write into: a new child when asked, else `node`.
    XmlDocument::XmlNode TargetElement(XmlDocument::XmlNode node, bool createElement) const;
};
