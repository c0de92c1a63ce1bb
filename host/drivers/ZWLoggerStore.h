#pragma once

#include "host/core/ZWDateTime.h"

#include <QString>
#include <QStringList>
#include <vector>

class ZWProgress;

// The host's logged data as the module sees it: which device variables
// exist, their live (latest) values and their values over a period. A
// variable is named "device.variable"; a filter may follow (see
// SplitFilterDriverVariable). Implementations: ZWLiveValues (in process) and
// the database store.
class ZWLoggerStore
{
public:
    virtual ~ZWLoggerStore() = default;

    // Whether `name` (plain or filtered) names a variable the store serves.
    virtual bool HasVariable(const QString& name) = 0;
    // The variable's current value; false when it has none.
    virtual bool LiveValue(const QString& name, double& value) = 0;
    // One value per name for the local period [start, end); a name without
    // data in the period gets the no-value marker. False (with `error`) when
    // the data cannot be read at all.
    virtual bool PeriodValues(const QStringList& names, const ZWDateTime& start, const ZWDateTime& end,
        std::vector<double>& values, ZWProgress* progress, QString* error)
        = 0;
    // True when the store is known to hold no variable at all (an empty
    // database), so that a report can say so instead of showing its formulas.
    virtual bool HoldsNoVariables() { return false; }
    // The plain names ("device.variable") of every variable the store
    // serves, sorted, for choosers and completion; empty when it cannot say.
    virtual QStringList VariableNames() { return {}; }
    // The filters a name may carry after its last ":" ("max", "sum"...).
    virtual QStringList FilterNames() { return {}; }
};
