#include "host/drivers/ZWDriverVariable.h"

#include "host/drivers/ZWDriverSupport.h"

ZWDriverVariable::ZWDriverVariable() = default;

bool ZWDriverVariable::Setup(const QString& name)
{
    Unlock();
    m_name = name;
    return !name.isEmpty();
}

bool ZWDriverVariable::Lock(bool wait)
{
    Q_UNUSED(wait);
    Unlock();
    m_store = ZWDriverSupport::Store();
    if (!m_store || m_name.isEmpty() || !m_store->HasVariable(m_name)) {
        m_store.reset();
        return false;
    }
    m_locked = true;
    return true;
}

void ZWDriverVariable::Unlock()
{
    m_locked = false;
    m_valueRead = false;
    m_hasValue = false;
    m_value = 0.0;
    m_store.reset();
}

bool ZWDriverVariable::HasValue() const
{
    if (!m_locked)
        return false;
    if (!m_valueRead) {
        m_hasValue = m_store->LiveValue(m_name, m_value);
        m_valueRead = true;
    }
    return m_hasValue;
}

ZWValue ZWDriverVariable::Value() const
{
    return HasValue() ? ZWValue(m_value) : ZWValue();
}
