#include "host/drivers/ZWDriverSupport.h"

#include <mutex>

namespace {
std::mutex g_mutex;
std::shared_ptr<ZWLoggerStore> g_store;
} // namespace

void ZWDriverSupport::SetStore(std::shared_ptr<ZWLoggerStore> store)
{
    std::lock_guard lock(g_mutex);
    g_store = std::move(store);
}

std::shared_ptr<ZWLoggerStore> ZWDriverSupport::Store()
{
    std::lock_guard lock(g_mutex);
    return g_store;
}

bool SplitFilterDriverVariable(const QString& name, QString& device, QString& variable, QString& filter)
{
    device.clear();
    variable.clear();
    filter.clear();
    const qsizetype dot = name.indexOf(QLatin1Char('.'));
    if (dot < 0)
        return false;
    device = name.left(dot);
    QString rest = name.mid(dot + 1);
    const qsizetype colon = rest.lastIndexOf(QLatin1Char(':'));
    if (colon >= 0) {
        filter = rest.mid(colon + 1);
        rest.truncate(colon);
    }
    variable = rest;
    return true;
}
