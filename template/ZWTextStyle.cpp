#include "template/ZWTextStyle.h"

#include "host/core/XmlDocument.h"
#include "host/core/ZWGuid.h"
#include "host/core/ZWMarentaSetup.h"
#include "template/ZWXmlFields.h"

#include <QDir>
#include <QFileInfo>

bool ZWTextStyle::Load(const QString& path)
{
    XmlDocument doc;
    if (!doc.Load(path))
        return false;
    const XmlDocument::XmlNode root = doc.Root();
    ZWXmlFields::Read(root, QStringLiteral("name"), name);
    ZWXmlFields::Read(root, QStringLiteral("font"), font);
    ZWXmlFields::Read(root, QStringLiteral("style"), style);
    ZWXmlFields::Read(root, QStringLiteral("orientation"), orientation);
    ZWXmlFields::Read(root, QStringLiteral("size"), size);
    ZWXmlFields::ReadColor(root, QStringLiteral("color"), color);
    return true;
}

bool ZWTextStyle::LoadByName(const QString& styleName)
{
    if (!Load(PathFor(styleName)))
        return false;
    name = styleName;
    return true;
}

bool ZWTextStyle::Save(const QString& path) const
{
    XmlDocument doc;
    doc.Create(QStringLiteral("design"));
    XmlDocument::XmlNode root = doc.Root();
    root.NewChild(QStringLiteral("id"), guidtow(NewGUID()));
    root.NewChild(QStringLiteral("name"), name);
    root.NewChild(QStringLiteral("font"), font);
    root.NewChild(QStringLiteral("style"), ZWXmlFields::WriteInt(style));
    root.NewChild(QStringLiteral("orientation"), ZWXmlFields::WriteMm(orientation));
    root.NewChild(QStringLiteral("size"), ZWXmlFields::WriteMm(size));
    root.NewChild(QStringLiteral("color"), ZWXmlFields::WriteColor(color));
    return doc.SaveAs(path);
}

bool ZWTextStyle::SaveByName() const
{
    if (name.isEmpty() || name.contains(QLatin1Char('/')) || name.contains(QLatin1Char('\\')))
        return false;
    QDir().mkpath(ZWMarentaSetup::instance().GetDataDirectory());
    return Save(PathFor(name));
}

QString ZWTextStyle::PathFor(const QString& styleName)
{
    return ZWMarentaSetup::instance().GetDataDirectory() + styleName + QStringLiteral(".XSTY");
}

QStringList ZWTextStyle::List()
{
    QStringList names;
    const QDir dir(ZWMarentaSetup::instance().GetDataDirectory());
    for (const QFileInfo& info : dir.entryInfoList({QStringLiteral("*.XSTY")}, QDir::Files, QDir::Name))
        names << info.completeBaseName();
    return names;
}
