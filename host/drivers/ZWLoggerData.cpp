#include "host/drivers/ZWLoggerData.h"

#include "host/core/ZWNoValue.h"
#include "host/drivers/ZWDriverSupport.h"
#include "host/drivers/ZWLoggerStore.h"

#include <algorithm>

ZWLoggerData::ZWLoggerData(std::shared_ptr<ZWLoggerStore> store) : m_store(std::move(store))
{}

ZWLoggerData::~ZWLoggerData() = default;

bool ZWLoggerData::Setup(const ZWLoggerInfo& info)
{
    m_names = info.Variables();
    m_hasRecord = false;
    m_record = ZWDataRecord();
    return true;
}

bool ZWLoggerData::SelectData(const ZWDateTime& start, const ZWDateTime& end, ZWProgress* progress)
{
    m_begin = start;
    m_end = end;
    m_hasRecord = false;
    m_record = ZWDataRecord();
    m_error.clear();
    m_storeEmpty = false;
    std::shared_ptr<ZWLoggerStore> store = m_store ? m_store : ZWDriverSupport::Store();
    if (!store) {
        m_error = QStringLiteral("no logged-data store is configured");
        return false;
    }
    std::vector<double> values;
    if (!store->PeriodValues(m_names, start, end, values, progress, &m_error))
        return false;
    values.resize(size_t(m_names.size()), 0.0);
    m_record.time = start;
    m_record.values = std::move(values);
    m_hasRecord = true;
    m_storeEmpty = store->HoldsNoVariables();
    return true;
}

bool ZWLoggerData::SelectSeries(
    const ZWDateTime& start, const ZWDateTime& end, ZWSeriesUnit unit, ZWSeries& out, ZWProgress* progress)
{
    out = ZWSeries();
    m_error.clear();
    std::shared_ptr<ZWLoggerStore> store = m_store ? m_store : ZWDriverSupport::Store();
    if (!store) {
        m_error = QStringLiteral("no logged-data store is configured");
        return false;
    }
    if (!store->SeriesValues(m_names, start, end, unit, out, progress, &m_error)) {
        out = ZWSeries();
        return false;
    }
    return true;
}

std::shared_ptr<ZWLoggerStore> ZWLoggerData::Store() const
{
    return m_store ? m_store : ZWDriverSupport::Store();
}

bool ZWLoggerData::HasAnyValue() const
{
    if (!m_hasRecord)
        return false;
    return std::any_of(m_record.values.begin(), m_record.values.end(), [](double v) { return !IsNoValue(v); });
}

void ZWLoggerData::SetData(const ZWDateTime& start, const ZWDateTime& end, const ZWDataRecord& record)
{
    m_begin = start;
    m_end = end;
    m_record = record;
    m_hasRecord = true;
}

const ZWDataRecord* ZWLoggerData::DataRecord(const ZWDateTime& from, const ZWDateTime& to) const
{
    if (!m_hasRecord || from != m_begin || to != m_end)
        return nullptr;
    return &m_record;
}
