#pragma once

// The editor's zoom steps: factors 0.5 to 10 by halves, and fit mode (a
// negative factor whose size is the fitted one).
class ZWEditorZoom
{
public:
    static constexpr double Step = 0.5;
    static constexpr double Min = 0.5;
    static constexpr double Max = 10.0;
    // Entries of the zoom selector: fit, then 50 % … 1000 %.
    static constexpr int Entries = 21;

    // The factor one step in or out; `factor` itself when the step would
    // leave the range. From fit mode the step goes to the next factor of
    // the list past the fitted one.
    static double ZoomIn(double factor);
    static double ZoomOut(double factor);
    // The selector entry of a factor (0 for fit mode, −1 for a factor off
    // the list) and the factor of an entry (−1 for fit).
    static int EntryOf(double factor);
    static double FactorOf(int entry);
};
