#pragma once

#include "host/core/ZWProgress.h"

#include <QString>
#include <mutex>

// Progress of long work on the terminal: a bar redrawn in place on standard
// error when it is a terminal, nothing otherwise (so logs and pipes stay
// clean). May be called from any thread.
class ZWTerminalProgress : public ZWProgress
{
public:
    // `enabled` false silences it; by default it is on when stderr is a terminal.
    explicit ZWTerminalProgress(bool enabled = IsTerminal());
    ~ZWTerminalProgress() override;

    void SetText(const QString& text) override;
    void SetRange(int minimum, int maximum) override;
    void SetPos(int position) override;
    void End(bool ok) override;

    static bool IsTerminal();

private:
    void Draw();

    std::mutex m_mutex;
    bool m_enabled;
    bool m_drawn = false;
    QString m_text;
    int m_min = 0;
    int m_max = 100;
    int m_pos = 0;
    int m_lastPercent = -1;
};
