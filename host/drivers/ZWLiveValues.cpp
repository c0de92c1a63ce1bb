#include "host/drivers/ZWLiveValues.h"

#include "host/core/ZWNoValue.h"
#include "host/drivers/ZWDriverSupport.h"
#include "host/drivers/ZWPeriodShift.h"

void ZWLiveValues::Set(const QString& name, std::optional<double> value)
{
    QWriteLocker lock(&m_lock);
    m_values.insert(name, value);
}

void ZWLiveValues::Remove(const QString& name)
{
    QWriteLocker lock(&m_lock);
    m_values.remove(name);
}

std::optional<std::optional<double>> ZWLiveValues::Find(const QString& name) const
{
    QReadLocker lock(&m_lock);
    auto it = m_values.constFind(name);
    if (it == m_values.constEnd()) {
        QString device, variable, filter;
        if (!SplitFilterDriverVariable(name, device, variable, filter) || filter.isEmpty())
            return std::nullopt;
        // Any reduction is served, a malformed shift is not ("x@", "x@+1").
        QString reduction;
        ZWPeriodShift shift;
        if (!ZWPeriodShift::Parse(filter, reduction, shift))
            return std::nullopt;
        it = m_values.constFind(device + QLatin1Char('.') + variable);
        if (it == m_values.constEnd())
            return std::nullopt;
    }
    return *it;
}

bool ZWLiveValues::HasVariable(const QString& name)
{
    return Find(name).has_value();
}

bool ZWLiveValues::LiveValue(const QString& name, double& value)
{
    const auto found = Find(name);
    if (!found || !found->has_value())
        return false;
    value = **found;
    return true;
}

bool ZWLiveValues::PeriodValues(const QStringList& names, const ZWDateTime& start, const ZWDateTime& end,
    std::vector<double>& values, ZWProgress* progress, QString* error)
{
    Q_UNUSED(start);
    Q_UNUSED(end);
    Q_UNUSED(progress);
    Q_UNUSED(error);
    values.clear();
    for (const QString& name : names) {
        double v = ZW_NO_VALUE;
        if (!LiveValue(name, v))
            v = ZW_NO_VALUE;
        values.push_back(v);
    }
    return true;
}

QStringList ZWLiveValues::VariableNames()
{
    QReadLocker lock(&m_lock);
    QStringList names = m_values.keys();
    lock.unlock();
    names.sort();
    return names;
}
