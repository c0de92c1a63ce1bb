#pragma once

#include "host/ZWProgress.h"

#include <QElapsedTimer>
#include <QMutex>

// Progress of command-line work as one line on standard error, redrawn in
// place, and only when standard error is a terminal (nothing in pipes, logs
// and tests).
class ZWTerminalProgress : public ZWProgress
{
public:
    ZWTerminalProgress();
    ~ZWTerminalProgress() override;
    void SetText(const QString& text) override;
    void SetRange(int minimum, int maximum) override;
    void SetPos(int position) override;
    void End(bool ok) override;

private:
    void Draw(bool force);

    bool m_enabled;
    QMutex m_mutex;
    QString m_text;
    int m_min = 0;
    int m_max = 0;
    int m_pos = 0;
    bool m_drawn = false;
    QElapsedTimer m_sinceDraw;
};
