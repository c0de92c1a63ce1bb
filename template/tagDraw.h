#pragma once

#include "template/ZWRect.h"

#include <QPainterPath>
#include <QPointF>

class QPaintDevice;

// The drawing record handed to every card's Draw: where the page lies on the
// device and how the cards are to be drawn. Lengths in device pixels unless
// named in millimetres.
struct tagDraw
{
    const ZWRect* visibleArea = nullptr; // cards outside it are skipped; null: all
    double left = 0.0;                   // device x of the page's left edge
    double top = 0.0;                    // device y of the page's top edge
    double pageWidthPx = 0.0;
    double pageHeightPx = 0.0;
    double roundWidthPx = 0.0; // the page corners' rounding ellipse
    double roundHeightPx = 0.0;
    double pageWidthMm = 210.0;
    double pageHeightMm = 297.0;
    double fontScale = 1.0;        // multiplier of font sizes (absolute value used)
    bool logicalResolution = true; // fonts by the device's logical resolution
    bool clipToPage = false;       // clip drawing to the page's rounded rectangle
    bool clipToCard = false;       // clip a picture to its card (the editor sets it)
    bool noBackground = false;     // image cards do not fill their background colour
    bool markProblems = false;     // a picture that cannot be drawn is marked (windows)
    int scrollX = 0;               // subtracted from every device x
    int scrollY = 0;               // subtracted from every device y

    // The device rectangle of a card at (x, y) of size width × height mm.
    ZWRect CardRect(double x, double y, double width, double height) const;
    // The page's own rectangle (one pixel wider and higher than the page, as
    // the rounded clip region wants it).
    ZWRect PageRect() const;
    // The page's rectangle with its rounded corners, for clipping.
    QPainterPath PageClipPath() const;
    // Whether `rect` is to be drawn: inside the visible area, touching edges
    // included (every rectangle is when there is no visible area).
    bool IsVisible(const ZWRect& rect) const;
    static bool IsVisible(const ZWRect& area, const ZWRect& rect);
};

// Device pixels per millimetre, horizontally (x) and vertically (y): from
// the dots per metre of an image, else from the resolution the device lays
// fonts out at (its logical resolution).
QPointF ZWDevicePixelsPerMm(const QPaintDevice* device);
