#include "template/ZWCardDate.h"

#include "template/ZWFormat.h"
#include "template/ZWXmlFields.h"

const char* ZWCardDate::GetRuntimeClass() const
{
    return "ZWCardDate";
}

bool ZWCardDate::SaveTemplate(XmlDocument::XmlNode node, bool createElement) const
{
    XmlDocument::XmlNode e = TargetElement(node, createElement);
    SaveLabelFields(e);
    e.NewChild(QStringLiteral("format"), format);
    return true;
}

bool ZWCardDate::GetFromXml(const XmlDocument::XmlNode& e)
{
    ReadLabelFields(e);
    ZWXmlFields::Read(e, QStringLiteral("format"), format);
    return true;
}

std::unique_ptr<ZWCardControl> ZWCardDate::GetClone() const
{
    return std::make_unique<ZWCardDate>(*this);
}

QString ZWCardDate::GetDrawText() const
{
    if (filled)
        return value;
    ZWDateTime date;
    if (!String2DateTime(date, value))
        return value;
    return ZWFormat::ParseDate(format, date);
}
