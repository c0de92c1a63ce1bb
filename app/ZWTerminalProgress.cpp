#include "app/ZWTerminalProgress.h"

#include <cstdio>
#include <unistd.h>

ZWTerminalProgress::ZWTerminalProgress() : m_enabled(isatty(fileno(stderr)) != 0)
{
}

ZWTerminalProgress::~ZWTerminalProgress()
{
    End(true);
}

void ZWTerminalProgress::SetText(const QString& text)
{
    QMutexLocker lock(&m_mutex);
    m_text = text;
    Draw(true);
}

void ZWTerminalProgress::SetRange(int minimum, int maximum)
{
    QMutexLocker lock(&m_mutex);
    m_min = minimum;
    m_max = maximum;
}

void ZWTerminalProgress::SetPos(int position)
{
    QMutexLocker lock(&m_mutex);
    m_pos = position;
    Draw(false);
}

void ZWTerminalProgress::End(bool ok)
{
    Q_UNUSED(ok);
    QMutexLocker lock(&m_mutex);
    if (m_enabled && m_drawn) {
        std::fputs("\r\033[K", stderr);
        std::fflush(stderr);
    }
    m_drawn = false;
}

void ZWTerminalProgress::Draw(bool force)
{
    if (!m_enabled)
        return;
    // A few redraws a second are enough for the eye.
    if (!force && m_sinceDraw.isValid() && m_sinceDraw.elapsed() < 100)
        return;
    m_sinceDraw.start();
    const int span = m_max - m_min;
    const int percent = span > 0 ? int(qint64(std::clamp(m_pos - m_min, 0, span)) * 100 / span) : 0;
    constexpr int Width = 30;
    const int filled = percent * Width / 100;
    const QString bar = QString(filled, QLatin1Char('#')) + QString(Width - filled, QLatin1Char('-'));
    const QByteArray line = QStringLiteral("\r\033[K%1 [%2] %3%").arg(m_text, bar).arg(percent).toUtf8();
    std::fputs(line.constData(), stderr);
    std::fflush(stderr);
    m_drawn = true;
}
