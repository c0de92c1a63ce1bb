#include "viewer/ZWViewZoom.h"

#include "host/core/ZWMath.h"
#include "host/core/ZWNoValue.h"

#include <algorithm>
#include <cmath>

bool ZWViewZoom::IsFit(double factor)
{
    return factor <= 0.0 || IsNoValue(factor);
}

double ZWViewZoom::FitFactor(double clientWidth, double clientHeight, double pixelsPerMmX, double pixelsPerMmY,
    double pageWidthMm, double pageHeightMm)
{
    if (pixelsPerMmX <= 0 || pixelsPerMmY <= 0 || pageWidthMm <= 0 || pageHeightMm <= 0)
        return ZW_NO_VALUE;
    return std::min(clientWidth / pixelsPerMmX / pageWidthMm, clientHeight / pixelsPerMmY / pageHeightMm);
}

std::optional<double> ZWViewZoom::ZoomIn(double factor)
{
    if (IsFit(factor)) {
        const double current = std::fabs(factor);
        for (int k = 1; k < SelectorEntries; ++k)
            if (FactorOfIndex(k) > current)
                return FactorOfIndex(k);
        return std::nullopt;
    }
    const double next = factor + Step;
    if (next > MaxFactor)
        return std::nullopt;
    return next;
}

std::optional<double> ZWViewZoom::ZoomOut(double factor)
{
    if (IsFit(factor)) {
        const double current = std::fabs(factor);
        for (int k = SelectorEntries - 1; k >= 1; --k)
            if (FactorOfIndex(k) < current)
                return FactorOfIndex(k);
        return std::nullopt;
    }
    const double next = factor - Step;
    if (next < MinFactor)
        return std::nullopt;
    return next;
}

bool ZWViewZoom::CanZoomIn(double factor)
{
    return std::fabs(factor) < MaxFactor;
}

bool ZWViewZoom::CanZoomOut(double factor)
{
    return std::fabs(factor) > MinFactor;
}

int ZWViewZoom::SelectorIndex(double factor)
{
    if (IsFit(factor))
        return 0;
    return std::clamp(int(2.0 * factor), 0, SelectorEntries - 1);
}

int ZWViewZoom::LineStep(int viewExtent)
{
    return std::max(1, roundi(viewExtent / 20.0));
}

int ZWViewZoom::PageStep(int viewExtent)
{
    return std::max(1, viewExtent);
}

double ZWViewZoom::PageOffset(double pageExtent, int viewExtent, int scroll)
{
    // The same rule as the page's placement when it is drawn.
    const double centred = (viewExtent - pageExtent) * 0.5;
    return roundi(centred) < 0 ? -double(scroll) : centred;
}

double ZWViewZoom::PageFraction(double viewPoint, double pageExtent, int viewExtent, int scroll)
{
    if (pageExtent <= 0.0)
        return 0.5;
    return (viewPoint - PageOffset(pageExtent, viewExtent, scroll)) / pageExtent;
}

int ZWViewZoom::ScrollMaximum(double pageExtent, int viewExtent)
{
    return std::max(0, roundi(pageExtent) - viewExtent);
}

int ZWViewZoom::ScrollToKeep(double fraction, double viewPoint, double pageExtent, int viewExtent)
{
    return std::clamp(roundi(fraction * pageExtent - viewPoint), 0, ScrollMaximum(pageExtent, viewExtent));
}
