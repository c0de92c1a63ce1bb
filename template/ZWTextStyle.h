#pragma once

#include <QString>
#include <QStringList>

// A named text style, kept as "NAME.XSTY" in the host's data folder: the
// font, size, colour, bold/italic and angle that labels using it take.
class ZWTextStyle
{
public:
    // Reads a style file; elements it lacks keep this object's values.
    // False when the file cannot be read as XML.
    bool Load(const QString& path);
    bool LoadByName(const QString& styleName);
    // Writes the file atomically, with a new GUID as its id. False on failure.
    bool Save(const QString& path) const;
    bool SaveByName() const;

    // The file of the style `styleName` in the data folder.
    static QString PathFor(const QString& styleName);
    // Names of every style of the data folder, sorted.
    static QStringList List();

    QString name;
    QString font = QStringLiteral("Arial");
    int style = 0;
    double orientation = 0.0;
    double size = 10.0;
    quint32 color = 0x000000;
};
