#pragma once

#include <optional>

// The zoom rules of the report viewer, apart from any window.
//
// A page window's factor is positive for a fixed zoom (1.0 = real size),
// negative in fit-to-window mode (its absolute value the factor fitted to
// the present window), or the no-value marker when fit was asked for but the
// window cannot be measured yet.
class ZWViewZoom
{
public:
    static constexpr double MinFactor = 0.5;
    static constexpr double MaxFactor = 10.0;
    static constexpr double Step = 0.5;
    // The zoom selector: entry 0 is fit to window, entry k >= 1 the factor k × 0.5.
    static constexpr int SelectorEntries = 21;

    static bool IsFit(double factor);
    // The factor that fits a page (mm) into a client area (pixels) at the
    // given pixels per millimetre: the smaller of the two ratios.
    static double FitFactor(double clientWidth, double clientHeight, double pixelsPerMmX, double pixelsPerMmY,
        double pageWidthMm, double pageHeightMm);
    // The next factor up or down from `factor`, or nothing when it would
    // leave 0.5 .. 10.0. From fit mode the steps go to the next multiple of
    // 0.5 beyond the fitted factor.
    static std::optional<double> ZoomIn(double factor);
    static std::optional<double> ZoomOut(double factor);
    static bool CanZoomIn(double factor);
    static bool CanZoomOut(double factor);
    // The selector entry that shows `factor`.
    static int SelectorIndex(double factor);
    static double FactorOfIndex(int index) { return index * 50 * 0.01; }

    // How far the scroll bars move over a view `viewExtent` pixels long: a
    // line (arrow keys, one notch of the wheel) is a twentieth of the view,
    // a page (Page Up/Down, Space) the whole view.
    static int LineStep(int viewExtent);
    static int PageStep(int viewExtent);

    // Where a page `pageExtent` pixels long begins in a view of `viewExtent`
    // pixels scrolled to `scroll`: centred when it fits, else at −scroll.
    static double PageOffset(double pageExtent, int viewExtent, int scroll);
    // Where `viewPoint` of the view falls on the page, as a fraction of the
    // page's extent (0 its leading edge, 1 its far edge).
    static double PageFraction(double viewPoint, double pageExtent, int viewExtent, int scroll);
    // The scroll position (0 .. pageExtent − viewExtent) that brings the
    // point `fraction` of the page under `viewPoint`, as far as the page
    // allows: what keeps a point in place while the zoom changes.
    static int ScrollToKeep(double fraction, double viewPoint, double pageExtent, int viewExtent);
    // The last scroll position of a page in a view (0 when the page fits).
    static int ScrollMaximum(double pageExtent, int viewExtent);
};
