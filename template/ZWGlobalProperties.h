#pragma once

#include "host/core/XmlDocument.h"
#include "template/ZWCardImage.h"

#include <memory>

// The properties of one page: its size in millimetres, the rounding of its
// corners, its grid and its background picture (an image card covering the
// whole page).
class ZWGlobalProperties
{
public:
    ZWGlobalProperties();
    ZWGlobalProperties(const ZWGlobalProperties& other);
    ZWGlobalProperties& operator=(const ZWGlobalProperties& other);
    virtual ~ZWGlobalProperties();

    // Reads the page's properties and background from a "page" element.
    // Never fails.
    virtual bool GetFromXml(const XmlDocument::XmlNode& page);
    // Writes them into a "page" element.
    virtual bool SaveTemplate(XmlDocument::XmlNode page) const;
    // Takes the background from a picture file (relative to the data folder,
    // or absolute); only its name is written back. Returns whether a picture
    // was decoded.
    virtual bool InitializeBackgroundFile(const QString& path);
    // Takes the background from base64 text of a picture file's bytes.
    bool InitializeBackground(const QString& base64);
    // Frees the background's picture and bytes; the card stays.
    void DeleteBackground();
    // Whether the background holds a picture.
    bool ThereAreBackground() const;
    // Sets the background card to the page's rectangle.
    void FitBackground();
    // Portrait when width ≤ height.
    bool IsPortrait() const { return width <= height; }

    ZWCardImage& GetBackground() { return *background; }
    const ZWCardImage& GetBackground() const { return *background; }

    double width = 210.0;
    double height = 297.0;
    double rounded = 0.0;
    std::unique_ptr<ZWCardImage> background;
    // Painted around the page by the windows; ZW_NO_COLOR for none. Not stored.
    quint32 outColor;
    double xgrid = -3.0;
    double ygrid = -3.0;
};
