#pragma once

#include "template/ZWTemplate.h"

// The sample reports of examples/reports, built card by card: a two-page
// monthly energy report of a building and a landscape summary. They use the
// device variables of the demonstration database ("Main meter.Active
// energy", "Gas meter.Volume"...). Building them draws pictures, which needs
// a QGuiApplication.
class ZWExampleReports
{
public:
    static ZWTemplate MonthlyEnergy();
    static ZWTemplate LandscapeSummary();
    // The logo embedded in both: a small PNG drawn here.
    static QByteArray LogoPng();
};
