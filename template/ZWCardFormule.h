#pragma once

#include "template/ZWCardLabel.h"

// A text card showing the value of a formula in a number format: the width
// of the integer part, the decimals, zero filling and thousands grouping.
// Its `value` holds the formula text until a report puts the number there.
class ZWCardFormule : public ZWCardLabel
{
public:
    ZWCardFormule() = default;

    const char* GetRuntimeClass() const override;
    bool SaveTemplate(XmlDocument::XmlNode node, bool createElement) const override;
    bool GetFromXml(const XmlDocument::XmlNode& element) override;
    std::unique_ptr<ZWCardControl> GetClone() const override;

    // Reads a stored format string ("03.02", ".3", "."): see the formats of
    // the "formule" element.
    static void ParseFormat(
        const QString& format, int& integerDigits, int& decimals, bool& fillIntegerZeros, bool& fillDecimalZeros);
    // The format string of these settings; widths past 9 are written as the
    // characters after "9" (":" for 10, ";" for 11, "<" for 12).
    static QString BuildFormat(int integerDigits, int decimals, bool fillIntegerZeros, bool fillDecimalZeros);
    QString GetFormat() const;
    void SetFormat(const QString& format);
    // A number as this card shows it.
    QString FormatValue(double number) const;
    // A number as a card with the stored format string and thousands
    // separator shows it (charts, tables and samples use it too).
    static QString FormatNumber(double number, const QString& format, bool thousandSeparator);

    bool thousandSeparator = false;
    bool fillIntegerZeros = false;
    bool fillDecimalZeros = false;
    int integerDigits = -1;
    int decimals = 3;
};
