#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

namespace zwtest {

// The shared regression corpus, or an empty string when it is absent.
QString CorpusDir();
// A file of the source tree (examples, fixtures).
QString SourcePath(const QString& relative);
QByteArray ReadFile(const QString& path);
bool WriteFile(const QString& path, const QByteArray& data);

} // namespace zwtest
