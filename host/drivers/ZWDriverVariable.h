#pragma once

#include "host/core/ZWValue.h"

#include <QString>
#include <memory>

class ZWLoggerStore;

// One device variable of the host, by name: whether the host knows it
// (Lock) and its current value.
class ZWDriverVariable
{
public:
    ZWDriverVariable();
    bool Setup(const QString& name);
    // Resolves the name against the store; false when the host does not know it.
    bool Lock(bool wait);
    void Unlock();
    bool HasValue() const;
    ZWValue Value() const;
    const QString& Name() const { return m_name; }

private:
    QString m_name;
    std::shared_ptr<ZWLoggerStore> m_store;
    bool m_locked = false;
    // The live value is read on first use: evaluations over logged data never
    // need it.
    mutable bool m_valueRead = false;
    mutable bool m_hasValue = false;
    mutable double m_value = 0.0;
};
