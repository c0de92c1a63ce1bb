#include "host/core/ZWFont.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <QPaintDevice>
#include <algorithm>
#include <mutex>

void ZWInstallFontSubstitutions()
{
    static std::once_flag once;
    std::call_once(once, [] {
        const QStringList families = QFontDatabase::families();
        const auto substitute = [&families](const char* face, const char* replacement) {
            const QString f = QString::fromLatin1(face);
            const QString r = QString::fromLatin1(replacement);
            if (!families.contains(f, Qt::CaseInsensitive) && families.contains(r, Qt::CaseInsensitive))
                QFont::insertSubstitution(f, r);
        };
        substitute("Arial", "Liberation Sans");
        substitute("Helvetica", "Liberation Sans");
        substitute("Microsoft Sans Serif", "Liberation Sans");
        substitute("MS Sans Serif", "Liberation Sans");
        substitute("Tahoma", "Liberation Sans");
        substitute("Verdana", "Liberation Sans");
        substitute("Times New Roman", "Liberation Serif");
        substitute("Times", "Liberation Serif");
        substitute("Courier New", "Liberation Mono");
        substitute("Courier", "Liberation Mono");
    });
}

QFont EzCreateFont(const QPaintDevice* device, const QString& face, int deciPointHeight, int deciPointWidth,
    int attributes, bool logicalResolution)
{
    if (qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        ZWInstallFontSubstitutions();
    QFont font(face.isEmpty() ? QStringLiteral("Arial") : face);
    // Very large sizes are drawn as outlines by Qt; the bound only keeps the
    // arithmetic of the rasteriser finite.
    double points = std::clamp(deciPointHeight, 1, 200000) / 10.0;
    if (!logicalResolution && device && device->logicalDpiY() > 0 && device->physicalDpiY() > 0)
        points *= double(device->physicalDpiY()) / double(device->logicalDpiY());
    font.setPointSizeF(points);
    font.setBold((attributes & 1) != 0);
    font.setItalic((attributes & 2) != 0);
    if (deciPointWidth > 0 && deciPointHeight > 0) {
        // A natural average width is about half the height.
        const int stretch = int(200.0 * deciPointWidth / deciPointHeight);
        font.setStretch(std::clamp(stretch, 1, 4000));
    }
    // Outlines without hinting scale linearly with the zoom, so that a text
    // takes the same share of its card at every zoom and resolution.
    font.setHintingPreference(QFont::PreferNoHinting);
    font.setKerning(false);
    return font;
}
