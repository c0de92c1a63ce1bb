#pragma once

#include "host/core/ZWDateTime.h"
#include "host/drivers/ZWLoggerInfo.h"
#include "host/drivers/ZWLoggerStore.h"

#include <QString>
#include <QStringList>
#include <memory>
#include <vector>

class ZWProgress;

// One record of logged data: the values of the loaded variables (in the
// order of the loaded-variable list) for the period beginning at `time`.
// A variable without data in the period holds the no-value marker.
struct ZWDataRecord
{
    ZWDateTime time;
    std::vector<double> values;
};

// The logged data of a set of variables over one period, as the formula
// engine reads it: Setup names the variables, SelectData reads the period
// from the store, DataRecord hands out the period's record.
class ZWLoggerData
{
public:
    // Reads from the store installed in ZWDriverSupport unless one is given.
    explicit ZWLoggerData(std::shared_ptr<ZWLoggerStore> store = nullptr);
    virtual ~ZWLoggerData();

    bool Setup(const ZWLoggerInfo& info);
    // Reads the period [start, end). False when the store cannot be read;
    // LastError() then says why. The record is empty afterwards.
    virtual bool SelectData(const ZWDateTime& start, const ZWDateTime& end, ZWProgress* progress);
    // Reads the values of the Setup names for every sub-period of [start,
    // end) (see ZWLoggerStore::SeriesValues). False when the store cannot be
    // read or the period holds too many sub-periods; LastError() says why.
    // The period's record is left as it is.
    bool SelectSeries(
        const ZWDateTime& start, const ZWDateTime& end, ZWSeriesUnit unit, ZWSeries& out, ZWProgress* progress);
    // Sets the period and its record directly (a host that computes values
    // itself, tests).
    void SetData(const ZWDateTime& start, const ZWDateTime& end, const ZWDataRecord& record);

    // The record of the period [from, to), or null when there is none.
    const ZWDataRecord* DataRecord(const ZWDateTime& from, const ZWDateTime& to) const;
    // The store the data is read from: the one given, else the installed one.
    std::shared_ptr<ZWLoggerStore> Store() const;
    const ZWDateTime& GetBegin() const { return m_begin; }
    const ZWDateTime& GetEnd() const { return m_end; }
    const QStringList& GetVariables() const { return m_names; }
    QString LastError() const { return m_error; }
    // After a selection: whether any variable has a value in the period, and
    // whether the store holds no variables at all.
    bool HasAnyValue() const;
    bool StoreHoldsNoVariables() const { return m_storeEmpty; }

private:
    std::shared_ptr<ZWLoggerStore> m_store;
    QStringList m_names;
    ZWDateTime m_begin;
    ZWDateTime m_end;
    bool m_hasRecord = false;
    ZWDataRecord m_record;
    QString m_error;
    bool m_storeEmpty = false;
};
