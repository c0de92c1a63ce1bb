#include "host/drivers/ZWTariffCalendarFile.h"

#include "host/core/ZWLoadString.h"
#include "host/core/ZWMarentaSetup.h"
#include "host/core/ZWTextId.h"

QString ZWTariffCalendarFile::DefaultPath()
{
    return ZWMarentaSetup::instance().GetDataDirectory() + QStringLiteral("tariffs.xml");
}

bool ZWTariffCalendarFile::Load(const QString& path)
{
    XmlDocument doc;
    bool ok = doc.Load(path);
    if (ok) {
        ok = Read(doc);
    } else {
        m_calendars.clear();
        m_error = doc.ErrorString();
    }
    if (!ok)
        m_error = path + QStringLiteral(": ") + m_error;
    return ok;
}

bool ZWTariffCalendarFile::Parse(const QByteArray& utf8)
{
    XmlDocument doc;
    if (doc.Parse(utf8))
        return Read(doc);
    m_calendars.clear();
    m_error = doc.ErrorString();
    return false;
}

bool ZWTariffCalendarFile::Read(const XmlDocument& doc)
{
    m_calendars.clear();
    m_error.clear();
    const XmlDocument::XmlNode root = doc.Root();
    if (root.Name() != QLatin1String("tariffs")) {
        m_error = ZWLoadString(ZWTextId::TariffNotTariffs).arg(root.Name().left(80));
        return false;
    }
    std::vector<ZWTariffCalendar> calendars;
    for (const XmlDocument::XmlNode& child : root.Children()) {
        if (child.Name() != QLatin1String("calendar")) {
            m_error = ZWLoadString(ZWTextId::TariffUnknownElement).arg(child.Name().left(80), root.Name());
            return false;
        }
        ZWTariffCalendar calendar;
        if (!calendar.Read(child, int(calendars.size()) + 1, m_error))
            return false;
        for (const ZWTariffCalendar& other : calendars) {
            if (other.Name().compare(calendar.Name(), Qt::CaseInsensitive) == 0) {
                m_error = ZWLoadString(ZWTextId::TariffDuplicateCalendar).arg(calendar.Name().left(80));
                return false;
            }
        }
        calendars.push_back(std::move(calendar));
    }
    if (calendars.empty()) {
        m_error = ZWLoadString(ZWTextId::TariffNoCalendar);
        return false;
    }
    m_calendars = std::move(calendars);
    return true;
}

const ZWTariffCalendar* ZWTariffCalendarFile::Find(const QString& name) const
{
    for (const ZWTariffCalendar& calendar : m_calendars)
        if (calendar.Name().compare(name.trimmed(), Qt::CaseInsensitive) == 0)
            return &calendar;
    return nullptr;
}

bool ZWTariffCalendarFile::LoadNamed(const QString& name, ZWTariffCalendar& calendar, QString& error)
{
    ZWTariffCalendarFile file;
    const QString path = DefaultPath();
    if (!file.Load(path)) {
        error = file.LastError();
        return false;
    }
    const ZWTariffCalendar* found = file.Find(name);
    if (!found) {
        error = file.NoSuchCalendar(path, name);
        return false;
    }
    calendar = *found;
    return true;
}

QString ZWTariffCalendarFile::NoSuchCalendar(const QString& path, const QString& name) const
{
    QStringList names;
    for (const ZWTariffCalendar& calendar : m_calendars)
        names.append(QLatin1Char('"') + calendar.Name() + QLatin1Char('"'));
    return ZWLoadString(ZWTextId::TariffNoSuchCalendar).arg(path, name.left(80), names.join(QStringLiteral(", ")));
}
