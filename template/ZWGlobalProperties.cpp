#include "template/ZWGlobalProperties.h"

#include "host/core/ZWRemote.h"
#include "template/ZWXmlFields.h"

#include <QGuiApplication>
#include <QPalette>

namespace {

quint32 ButtonFace()
{
    if (qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        return ZWQColorToColorRef(QGuiApplication::palette().color(QPalette::Button));
    return ZWRGB(240, 240, 240);
}

} // namespace

ZWGlobalProperties::ZWGlobalProperties() : background(std::make_unique<ZWCardImage>()), outColor(ButtonFace())
{
    background->backcolor = ZWRGB(255, 255, 255);
    FitBackground();
}

ZWGlobalProperties::ZWGlobalProperties(const ZWGlobalProperties& other)
    : width(other.width), height(other.height), rounded(other.rounded),
      background(std::make_unique<ZWCardImage>(*other.background)), outColor(other.outColor), xgrid(other.xgrid),
      ygrid(other.ygrid)
{}

ZWGlobalProperties& ZWGlobalProperties::operator=(const ZWGlobalProperties& other)
{
    if (this != &other) {
        width = other.width;
        height = other.height;
        rounded = other.rounded;
        *background = *other.background;
        outColor = other.outColor;
        xgrid = other.xgrid;
        ygrid = other.ygrid;
    }
    return *this;
}

ZWGlobalProperties::~ZWGlobalProperties() = default;

void ZWGlobalProperties::FitBackground()
{
    background->x = 0.0;
    background->y = 0.0;
    background->width = width;
    background->height = height;
}

bool ZWGlobalProperties::GetFromXml(const XmlDocument::XmlNode& page)
{
    ZWXmlFields::Read(page, QStringLiteral("width"), width);
    ZWXmlFields::Read(page, QStringLiteral("height"), height);
    ZWXmlFields::Read(page, QStringLiteral("rounded"), rounded);
    ZWXmlFields::Read(page, QStringLiteral("xgrid"), xgrid);
    ZWXmlFields::Read(page, QStringLiteral("ygrid"), ygrid);

    ZWCardImage& card = *background;
    card.horizontalAlign = ZWCardImage::AlignCenter;
    card.verticalAlign = ZWCardImage::AlignCenter;
    ZWXmlFields::Read(page, QStringLiteral("horizontalAlign"), card.horizontalAlign);
    ZWXmlFields::Read(page, QStringLiteral("verticalAlign"), card.verticalAlign);
    ZWXmlFields::Read(page, QStringLiteral("maintainAspectRatio"), card.maintainAspectRatio);
    ZWXmlFields::Read(page, QStringLiteral("maintainRealSize"), card.maintainRealSize);

    QString text;
    if (ZWXmlFields::Read(page, QStringLiteral("background"), text)) {
        DeleteBackground();
        InitializeBackground(text);
    } else if (ZWXmlFields::Read(page, QStringLiteral("backgroundFile"), text)) {
        DeleteBackground();
        InitializeBackgroundFile(text);
    } else {
        DeleteBackground();
    }
    // The background always covers the page, whatever size it was made for.
    FitBackground();
    return true;
}

bool ZWGlobalProperties::SaveTemplate(XmlDocument::XmlNode page) const
{
    page.NewChild(QStringLiteral("width"), ZWXmlFields::WriteMm(width));
    page.NewChild(QStringLiteral("height"), ZWXmlFields::WriteMm(height));
    page.NewChild(QStringLiteral("rounded"), ZWXmlFields::WriteMm(rounded));
    page.NewChild(QStringLiteral("xgrid"), ZWXmlFields::WriteMm(xgrid));
    page.NewChild(QStringLiteral("ygrid"), ZWXmlFields::WriteMm(ygrid));
    const ZWCardImage& card = *background;
    if (!card.valueFile.isEmpty())
        page.NewChild(QStringLiteral("backgroundFile"), card.valueFile);
    else if (!card.bytes.isEmpty())
        page.NewChild(QStringLiteral("background"), EncodeBase64(card.bytes));
    page.NewChild(QStringLiteral("horizontalAlign"), ZWXmlFields::WriteInt(card.horizontalAlign));
    page.NewChild(QStringLiteral("verticalAlign"), ZWXmlFields::WriteInt(card.verticalAlign));
    page.NewChild(QStringLiteral("maintainAspectRatio"), ZWXmlFields::WriteBool(card.maintainAspectRatio));
    page.NewChild(QStringLiteral("maintainRealSize"), ZWXmlFields::WriteBool(card.maintainRealSize));
    return true;
}

bool ZWGlobalProperties::InitializeBackgroundFile(const QString& path)
{
    DeleteBackground();
    const bool ok = background->SetPictureFile(path);
    FitBackground();
    return ok;
}

bool ZWGlobalProperties::InitializeBackground(const QString& base64)
{
    DeleteBackground();
    QByteArray data;
    if (!DecodeBase64(base64, data) || data.isEmpty())
        return false;
    const bool ok = background->SetPictureBytes(data);
    FitBackground();
    return ok;
}

void ZWGlobalProperties::DeleteBackground()
{
    background->DeletePicture();
}

bool ZWGlobalProperties::ThereAreBackground() const
{
    return background->HasPicture();
}
