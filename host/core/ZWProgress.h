#pragma once

#include <QString>

// Progress of long work (a data gathering, an import). Implemented by the
// progress dialog of the viewer and by the command line's progress bar. The
// calls may come from a worker thread; implementations marshal them.
class ZWProgress
{
public:
    virtual ~ZWProgress() = default;
    virtual void SetText(const QString& text) = 0;
    virtual void SetRange(int minimum, int maximum) = 0;
    virtual void SetPos(int position) = 0;
    virtual void End(bool ok) = 0;
    // True when the user asked to stop; long work checks it between steps.
    virtual bool IsCancelled() const { return false; }
};
