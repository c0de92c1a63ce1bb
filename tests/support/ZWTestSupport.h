#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>
#include <ostream>

// Failed comparisons of texts show the texts.
inline void PrintTo(const QString& text, std::ostream* os)
{
    *os << '"' << text.toStdString() << '"';
}

namespace zwtest {

// The shared regression corpus, or an empty string when it is absent.
QString CorpusDir();
// A file of the source tree (examples, fixtures).
QString SourcePath(const QString& relative);
QByteArray ReadFile(const QString& path);
bool WriteFile(const QString& path, const QByteArray& data);

} // namespace zwtest
