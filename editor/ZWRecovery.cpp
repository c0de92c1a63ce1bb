#include "editor/ZWRecovery.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <algorithm>

namespace {

bool WriteAtomically(const QString& path, const QByteArray& bytes)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    if (file.write(bytes) != bytes.size()) {
        file.cancelWriting();
        return false;
    }
    return file.commit();
}

} // namespace

ZWRecovery::ZWRecovery(QString folder) : m_folder(std::move(folder))
{}

QString ZWRecovery::FolderBeside(const QString& settingsFile)
{
    return QFileInfo(settingsFile).absolutePath() + QStringLiteral("/zwinformes-recovery");
}

QString ZWRecovery::BaseName(const QString& key) const
{
    const QByteArray hash = QCryptographicHash::hash(key.toUtf8(), QCryptographicHash::Sha1).toHex().left(20);
    return m_folder + QLatin1Char('/') + QString::fromLatin1(hash);
}

bool ZWRecovery::Write(const QString& key, const QString& reportPath, const QByteArray& content) const
{
    if (!QDir().mkpath(m_folder))
        return false;
    const QString base = BaseName(key);
    QJsonObject index;
    index.insert(QStringLiteral("key"), key);
    index.insert(QStringLiteral("report"), reportPath);
    index.insert(QStringLiteral("written"), QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs));
    // The content first: an index never names a content file that is not
    // complete.
    return WriteAtomically(base + QStringLiteral(".xrpt"), content)
        && WriteAtomically(base + QStringLiteral(".json"), QJsonDocument(index).toJson(QJsonDocument::Compact));
}

void ZWRecovery::Remove(const QString& key) const
{
    const QString base = BaseName(key);
    QFile::remove(base + QStringLiteral(".json"));
    QFile::remove(base + QStringLiteral(".xrpt"));
}

std::vector<ZWRecovery::Entry> ZWRecovery::Pending() const
{
    std::vector<Entry> entries;
    const QDir dir(m_folder);
    for (const QFileInfo& info : dir.entryInfoList({QStringLiteral("*.json")}, QDir::Files)) {
        QFile file(info.absoluteFilePath());
        if (info.size() > 64 * 1024 || !file.open(QIODevice::ReadOnly))
            continue;
        const QJsonObject index = QJsonDocument::fromJson(file.readAll()).object();
        Entry entry;
        entry.key = index.value(QStringLiteral("key")).toString();
        entry.reportPath = index.value(QStringLiteral("report")).toString();
        entry.written = QDateTime::fromString(index.value(QStringLiteral("written")).toString(), Qt::ISODateWithMs);
        entry.file = info.absolutePath() + QLatin1Char('/') + info.completeBaseName() + QStringLiteral(".xrpt");
        // An index written by hand or for another key is not ours to offer.
        if (entry.key.isEmpty() || BaseName(entry.key) + QStringLiteral(".json") != info.absoluteFilePath()
            || !QFileInfo::exists(entry.file))
            continue;
        entries.push_back(std::move(entry));
    }
    std::sort(entries.begin(), entries.end(),
        [](const Entry& a, const Entry& b) { return a.written != b.written ? a.written > b.written : a.key < b.key; });
    return entries;
}

bool ZWRecovery::Read(const Entry& entry, QByteArray& content)
{
    QFile file(entry.file);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    content = file.readAll();
    return file.error() == QFileDevice::NoError;
}
