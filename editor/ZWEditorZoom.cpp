#include "editor/ZWEditorZoom.h"

#include <cmath>

double ZWEditorZoom::ZoomIn(double factor)
{
    if (factor < 0.0) {
        for (double f = Min; f <= Max + 1e-9; f += Step)
            if (f > -factor + 1e-9)
                return f;
        return factor;
    }
    const double next = factor + Step;
    return next > Max + 1e-9 ? factor : next;
}

double ZWEditorZoom::ZoomOut(double factor)
{
    if (factor < 0.0) {
        for (double f = Max; f >= Min - 1e-9; f -= Step)
            if (f < -factor - 1e-9)
                return f;
        return factor;
    }
    const double next = factor - Step;
    return next < Min - 1e-9 ? factor : next;
}

int ZWEditorZoom::EntryOf(double factor)
{
    if (factor < 0.0)
        return 0;
    const double entry = factor / Step;
    const long rounded = std::lround(entry);
    return std::abs(entry - double(rounded)) < 1e-9 && rounded >= 1 && rounded < Entries ? int(rounded) : -1;
}

double ZWEditorZoom::FactorOf(int entry)
{
    return entry <= 0 || entry >= Entries ? -1.0 : entry * Step;
}
