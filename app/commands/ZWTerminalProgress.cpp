#include "app/commands/ZWTerminalProgress.h"

#include <cstdio>
#include <unistd.h>

ZWTerminalProgress::ZWTerminalProgress(bool enabled) : m_enabled(enabled)
{}

ZWTerminalProgress::~ZWTerminalProgress()
{
    End(true);
}

bool ZWTerminalProgress::IsTerminal()
{
    return isatty(fileno(stderr)) != 0;
}

void ZWTerminalProgress::SetText(const QString& text)
{
    std::lock_guard lock(m_mutex);
    if (m_text == text)
        return;
    m_text = text;
    m_lastPercent = -1;
    Draw();
}

void ZWTerminalProgress::SetRange(int minimum, int maximum)
{
    std::lock_guard lock(m_mutex);
    m_min = minimum;
    m_max = maximum;
    m_lastPercent = -1;
    Draw();
}

void ZWTerminalProgress::SetPos(int position)
{
    std::lock_guard lock(m_mutex);
    m_pos = position;
    Draw();
}

void ZWTerminalProgress::End(bool ok)
{
    Q_UNUSED(ok);
    std::lock_guard lock(m_mutex);
    if (m_enabled && m_drawn) {
        std::fputs("\r\033[K", stderr);
        std::fflush(stderr);
    }
    m_drawn = false;
}

void ZWTerminalProgress::Draw()
{
    if (!m_enabled)
        return;
    const int span = m_max - m_min;
    const int percent = span > 0 ? qBound(0, int(qint64(m_pos - m_min) * 100 / span), 100) : 0;
    if (percent == m_lastPercent)
        return;
    m_lastPercent = percent;
    constexpr int width = 30;
    const int filled = percent * width / 100;
    const QByteArray bar = QByteArray(filled, '#') + QByteArray(width - filled, ' ');
    std::fprintf(stderr, "\r\033[K[%s] %3d%% %s", bar.constData(), percent, m_text.left(60).toLocal8Bit().constData());
    std::fflush(stderr);
    m_drawn = true;
}
