#include "host/store/ZWLoggerDatabase.h"

#include "host/core/ZWMarentaSetup.h"
#include "host/core/ZWSettingsKeys.h"
#include "host/drivers/ZWDriverSupport.h"
#include "host/store/ZWLoggerUrl.h"
#include "host/store/ZWSqlLoggerStore.h"

ZWLoggerDatabase::Opened ZWLoggerDatabase::Open(const QString& address, ZWSqlLoggerStore::Creation creation)
{
    Opened opened;
    ZWLoggerUrl url;
    if (!url.Parse(address, &opened.error)) {
        opened.badAddress = true;
        return opened;
    }
    auto store = std::make_shared<ZWSqlLoggerStore>(url, creation);
    if (store->Open(&opened.error))
        opened.store = std::move(store);
    return opened;
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
