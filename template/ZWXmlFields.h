#pragma once

#include "host/core/XmlDocument.h"

#include <QString>

// The text encodings of template fields, reading and writing.
//
// Reading never fails: text that is not a number reads as 0. Like the C
// conversions the files were made for, leading blanks are skipped and the
// longest number at the start counts ("12.5mm" reads 12.5); a number too
// large for its type, "inf" and "nan" read as 0 too.
class ZWXmlFields
{
public:
    static double ReadDouble(const QString& text);
    static int ReadInt(const QString& text);
    // Base 16, with or without "0x"; a minus sign negates in 32 bits.
    static quint32 ReadColor(const QString& text);
    // True exactly when the text is "T".
    static bool ReadBool(const QString& text);

    // "%.2f", "%d", "%06X", "T"/"F".
    static QString WriteMm(double value);
    static QString WriteInt(int value);
    static QString WriteColor(quint32 colour);
    static QString WriteBool(bool value);

    // Reads the child `name` of `node` into `value` when it is present;
    // returns whether it was.
    static bool Read(const XmlDocument::XmlNode& node, const QString& name, double& value);
    static bool Read(const XmlDocument::XmlNode& node, const QString& name, int& value);
    static bool Read(const XmlDocument::XmlNode& node, const QString& name, bool& value);
    static bool Read(const XmlDocument::XmlNode& node, const QString& name, QString& value);
    static bool ReadColor(const XmlDocument::XmlNode& node, const QString& name, quint32& value);
};
