#pragma once

#include "host/drivers/ZWLoggerStore.h"

#include <QHash>
#include <QReadWriteLock>
#include <optional>

// An in-process logger store that holds the live values given to it: the
// command line's --set NAME=VALUE, a host that pushes readings, tests.
// Filtered names are served when their plain name is known and their shift
// (if any) reads; a period's value, shifted or not, is the live value.
class ZWLiveValues : public ZWLoggerStore
{
public:
    // Makes `name` known; without a value it is known but has no reading.
    void Set(const QString& name, std::optional<double> value);
    void Remove(const QString& name);

    bool HasVariable(const QString& name) override;
    bool LiveValue(const QString& name, double& value) override;
    bool PeriodValues(const QStringList& names, const ZWDateTime& start, const ZWDateTime& end,
        std::vector<double>& values, ZWProgress* progress, QString* error) override;
    // Any filter is served (as the live value), so none is offered.
    QStringList VariableNames() override;

private:
    std::optional<std::optional<double>> Find(const QString& name) const;

    mutable QReadWriteLock m_lock;
    QHash<QString, std::optional<double>> m_values;
};
