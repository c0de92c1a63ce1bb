#pragma once

#include <QByteArray>
#include <QString>
#include <optional>
#include <vector>

// Writes one compact JSON value with its object members in the order they
// are given (QJsonObject sorts them), numbers in the shortest form that
// reads back to the same double. A number that JSON cannot carry (infinite,
// NaN) is written as null.
class ZWJsonWriter
{
public:
    ZWJsonWriter& BeginObject();
    ZWJsonWriter& EndObject();
    ZWJsonWriter& BeginArray();
    ZWJsonWriter& EndArray();
    ZWJsonWriter& Key(const char* name);

    ZWJsonWriter& Null();
    ZWJsonWriter& Bool(bool value);
    ZWJsonWriter& Int(long long value);
    ZWJsonWriter& Number(double value);
    ZWJsonWriter& Number(std::optional<double> value) { return value ? Number(*value) : Null(); }
    ZWJsonWriter& String(const QString& text);

    const QByteArray& Json() const { return m_out; }

    static QByteArray FormatNumber(double value);

private:
    void BeforeValue();
    void Quote(const QString& text);

    QByteArray m_out;
    // Per open container: whether it holds a member already.
    std::vector<bool> m_hasItem;
    bool m_afterKey = false;
};
