#pragma once

#include <QString>
#include <QStringList>

// The list of device variables a report needs from the logged data.
class ZWLoggerInfo
{
public:
    void DeleteAll() { m_names.clear(); }
    void AddVariable(const QString& name) { m_names.append(name); }
    bool Contains(const QString& name) const { return m_names.contains(name); }
    int GetCount() const { return int(m_names.size()); }
    QString GetVariable(int index) const { return m_names.value(index); }
    const QStringList& Variables() const { return m_names; }

private:
    QStringList m_names;
};
