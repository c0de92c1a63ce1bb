#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <vector>

// The unsaved states of reports being edited, kept in a folder beside the
// user's settings so that a crash loses at most the last minute of work.
// Each report has a content file and a small JSON index (which report, when)
// named after a hash of its key, both written atomically; a clean save or
// close removes them, and the next start offers what is left.
class ZWRecovery
{
public:
    struct Entry
    {
        // The report's identity for the editor: its path, or a made-up key
        // for a report never saved.
        QString key;
        // Where the report is saved; empty for a new one.
        QString reportPath;
        QDateTime written;
        // The content file.
        QString file;
    };

    explicit ZWRecovery(QString folder);
    // The recovery folder beside a settings file (native or INI).
    static QString FolderBeside(const QString& settingsFile);

    const QString& Folder() const { return m_folder; }
    // Writes the state; false (and the previous state kept) when it cannot.
    bool Write(const QString& key, const QString& reportPath, const QByteArray& content) const;
    // Forgets the state of a report (after a save, a close or a restore).
    void Remove(const QString& key) const;
    // The states left behind, newest first; unreadable indexes and states
    // whose content file is gone are skipped.
    std::vector<Entry> Pending() const;
    // The content of a state; false when it cannot be read.
    static bool Read(const Entry& entry, QByteArray& content);

private:
    QString BaseName(const QString& key) const;

    QString m_folder;
};
