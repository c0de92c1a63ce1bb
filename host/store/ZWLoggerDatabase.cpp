#include "host/store/ZWLoggerDatabase.h"

#include "host/core/ZWMarentaSetup.h"
#include "host/core/ZWSettingsKeys.h"
#include "host/drivers/ZWDriverSupport.h"
#include "host/drivers/ZWTariffCalendarFile.h"
#include "host/store/ZWLoggerUrl.h"
#include "host/store/ZWSqlLoggerStore.h"

#include <QDebug>
#include <QFileInfo>

ZWLoggerDatabase::Opened ZWLoggerDatabase::Open(const QString& address, ZWSqlLoggerStore::Creation creation)
{
    Opened opened;
    ZWLoggerUrl url;
    if (!url.Parse(address, &opened.error)) {
        opened.badAddress = true;
        return opened;
    }
    auto store = std::make_shared<ZWSqlLoggerStore>(url, creation);
    if (!store->Open(&opened.error))
        return opened;
    QString why;
    if (!LoadTariffCalendar(*store, QString(), &why))
        qWarning().noquote() << why;
    opened.store = std::move(store);
    return opened;
}

bool ZWLoggerDatabase::LoadTariffCalendar(ZWSqlLoggerStore& store, const QString& name, QString* error)
{
    const QString wanted = name.isEmpty() ? ZWMarentaSetup::instance().GetTariffCalendar() : name;
    const QString path = ZWTariffCalendarFile::DefaultPath();
    if (wanted.isEmpty() && !QFileInfo::exists(path))
        return store.SetTariffCalendar(nullptr, error);
    ZWTariffCalendarFile file;
    if (!file.Load(path)) {
        if (error)
            *error = file.LastError();
        return false;
    }
    const ZWTariffCalendar* found = wanted.isEmpty() ? &file.Calendars().front() : file.Find(wanted);
    if (!found) {
        if (error)
            *error = file.NoSuchCalendar(path, wanted);
        return false;
    }
    return store.SetTariffCalendar(std::make_shared<ZWTariffCalendar>(*found), error);
}

ZWLoggerDatabase::Opened ZWLoggerDatabase::OpenConfigured(ZWSqlLoggerStore::Creation creation)
{
    return Open(ZWMarentaSetup::instance().GetLoggerDatabase(), creation);
}

bool ZWLoggerDatabase::Install(const QString& address, QString* error)
{
    Opened opened = Open(address);
    if (!opened) {
        if (error)
            *error = opened.error;
        return false;
    }
    ZWDriverSupport::SetStore(opened.store);
    return true;
}

void ZWLoggerDatabase::Remember(const QString& address)
{
    ZWMarentaSetup::instance().OpenSettings()->setValue(ZWSettingsKeys::LoggerDatabase, address);
    ZWMarentaSetup::instance().SetLoggerDatabase(address);
}

QString ZWLoggerDatabase::Display()
{
    const QString text = ZWMarentaSetup::instance().GetLoggerDatabase();
    ZWLoggerUrl url;
    return url.Parse(text, nullptr) ? url.Display() : text;
}
