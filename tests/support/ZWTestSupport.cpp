#include "tests/support/ZWTestSupport.h"

#include <QDir>
#include <QFile>

namespace zwtest {

QString CorpusDir()
{
    const QString dir = QStringLiteral(ZW_CORPUS_DIR_VALUE);
    return QDir(dir).exists() ? QDir(dir).absolutePath() : QString();
}

QString SourcePath(const QString& relative)
{
    return QStringLiteral(ZW_SOURCE_DIR_VALUE) + QLatin1Char('/') + relative;
}

QByteArray ReadFile(const QString& path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return QByteArray();
    return f.readAll();
}

bool WriteFile(const QString& path, const QByteArray& data)
{
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    return f.write(data) == data.size();
}

} // namespace zwtest
