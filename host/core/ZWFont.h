#pragma once

#include <QFont>
#include <QString>

class QPaintDevice;

// Font creation of the host's tools library.
//
// face: the typeface; deciPointHeight: size in tenths of a point;
// deciPointWidth: 0 for the natural width, else the average character width
// in tenths of a point (applied as a horizontal stretch); attributes: bit 0
// bold, bit 1 italic, other bits ignored; logicalResolution: size the font by
// the device's logical resolution (true) or by its physical one (false). The
// text angle is not part of the font: whoever draws rotates the painter.
//
// "Arial", "Times New Roman", "Courier New" and "Microsoft Sans Serif" are
// mapped to the metric-compatible Liberation faces where those Windows faces
// are not installed, so that text measures the same on every machine.
QFont EzCreateFont(const QPaintDevice* device, const QString& face, int deciPointHeight, int deciPointWidth,
    int attributes, bool logicalResolution);

// Installs the face substitutions above (done by EzCreateFont on first use;
// needs a QGuiApplication).
void ZWInstallFontSubstitutions();
