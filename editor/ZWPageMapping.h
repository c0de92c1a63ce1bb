#pragma once

#include "template/ZWRect.h"

#include <QPoint>
#include <cfloat>

class ZWCardControl;
class ZWGlobalProperties;

// How one page of a template, in millimetres, lies in the pixels of its
// editor window at a zoom and scroll position. The window fills in what it
// knows of its device (resolution, client size, scroll positions); everything
// the mouse code and the commands compute goes through here, so it can be
// reached without a window.
class ZWPageMapping
{
public:
    // The mapping of one moment, in pixels.
    struct Dimensions
    {
        double offsetX = 0.0;
        double offsetY = 0.0;
        double pageWidthPx = 0.0;
        double pageHeightPx = 0.0;
        double roundedXPx = 0.0;
        double roundedYPx = 0.0;
        double pixelsPerMmX = 0.0;
        double pixelsPerMmY = 0.0;

        // The size of one screen pixel in millimetres of the page.
        double MmPerPixelX(double pageWidthMm) const { return pageWidthMm / pageWidthPx; }
        double MmPerPixelY(double pageHeightMm) const { return pageHeightMm / pageHeightPx; }
    };

    // Stored as the zoom while a fit is asked for before the window has a
    // device: the smallest positive normal double, compared exactly.
    static constexpr double FitPending = DBL_MIN;

    explicit ZWPageMapping(ZWGlobalProperties& page);

    // The device: pixels per millimetre in each direction; a resolution of 0
    // or less means there is no device and no mapping.
    void SetDevice(double pixelsPerMmX, double pixelsPerMmY);
    bool HasDevice() const;
    void SetClientSize(int width, int height);
    void SetScrollPosition(int x, int y);
    int ClientWidth() const { return m_clientWidth; }
    int ClientHeight() const { return m_clientHeight; }

    // The whole mapping; false without a device.
    bool GetTemplateDimensions(Dimensions& d);

    // Zoom: 0 fits the page, 1–4 are those factors, 100 keeps the factor,
    // anything else is 1. True when the stored factor changed.
    bool SetMode(int mode);
    // A factor; negative means fit with its absolute value.
    bool SetMode(double factor);
    void GetMode(double& factor) const { factor = m_zoom; }

    // 0 landscape, else portrait; swaps the page's sides when they disagree
    // with it. True when a swap happened.
    bool SetOrientation(int orientation);
    int GetOrientation() const { return m_orientation; }

    // The pixels the window needs to show the whole page; false without a
    // device.
    bool GetMinimumControlDimensions(double& w, double& h);
    // The place and size in mm of a card made by a command at the last mouse
    // position: one grid step (or 30 pixels) each way, kept on the page.
    void GetInitialControlDimensions(const QPoint& lastMouse, double& x, double& y, double& w, double& h);

    // A card's pixel rectangle.
    ZWRect CardRect(const ZWCardControl& card, const Dimensions& d) const;
    // The pixel rectangle of the page itself.
    ZWRect PageRect(const Dimensions& d) const;
    double PixelToMmX(double px, const Dimensions& d) const;
    double PixelToMmY(double px, const Dimensions& d) const;

    // A point pressed on the page put on the nearest grid dot, in each
    // direction whose spacing is positive.
    QPoint SnapPointToGrid(const QPoint& p, const Dimensions& d) const;
    // Puts a card's edges exactly on a grid line when they lie within one
    // screen pixel of it; edges further away keep their place.
    void IntelligentAdjustToGrid(ZWCardControl& card, const Dimensions& d) const;

    ZWGlobalProperties& Page() const { return m_page; }

private:
    ZWGlobalProperties& m_page;
    double m_pixelsPerMmX = 0.0;
    double m_pixelsPerMmY = 0.0;
    int m_clientWidth = 0;
    int m_clientHeight = 0;
    int m_scrollX = 0;
    int m_scrollY = 0;
    double m_zoom = 1.0;
    int m_orientation = 0;
};
