#pragma once

#include "host/drivers/ZWLoggerStore.h"

#include <memory>

// The host's driver support: the logger store that device variables and
// logged data are read from. The host (or the command line) installs one;
// without one every device variable is unknown.
class ZWDriverSupport
{
public:
    static void SetStore(std::shared_ptr<ZWLoggerStore> store);
    static std::shared_ptr<ZWLoggerStore> Store();
};

// Splits "device.variable" or "device.variable:filter" into its parts. The
// device is the text before the first ".", the variable the rest up to the
// last ":", the filter what follows that ":" (empty when there is none).
// Returns false when the name has no "." (not a device variable name).
bool SplitFilterDriverVariable(const QString& name, QString& device, QString& variable, QString& filter);
