#include "template/ZWCardFormule.h"

#include "template/ZWFormat.h"
#include "template/ZWXmlFields.h"

const char* ZWCardFormule::GetRuntimeClass() const
{
    return "ZWCardFormule";
}

void ZWCardFormule::ParseFormat(
    const QString& format, int& integerDigits, int& decimals, bool& fillIntegerZeros, bool& fillDecimalZeros)
{
    integerDigits = -1;
    decimals = 3;
    fillIntegerZeros = false;
    fillDecimalZeros = false;
    const qsizetype p = format.indexOf(QLatin1Char('.'));
    if (format.isEmpty() || p < 0)
        return;
    // A digit is the character's code minus that of "0", so ":" is 10.
    const auto digit = [](QChar c) { return int(c.unicode()) - int(u'0'); };

    const QString integerPart = format.left(p);
    if (integerPart.size() == 1) {
        integerDigits = digit(integerPart.at(0));
    } else if (integerPart.size() == 2) {
        if (integerPart.at(0) == QLatin1Char('0'))
            fillIntegerZeros = true;
        integerDigits = digit(integerPart.at(1));
    }
    if (integerDigits > 12)
        integerDigits = 12;
    else if (integerDigits < 0)
        fillIntegerZeros = false;

    const QString decimalPart = format.mid(p + 1);
    if (decimalPart.isEmpty()) {
        decimals = -1;
    } else if (decimalPart.size() == 1) {
        decimals = digit(decimalPart.at(0));
    } else if (decimalPart.size() == 2) {
        if (decimalPart.at(0) == QLatin1Char('0'))
            fillDecimalZeros = true;
        decimals = digit(decimalPart.at(1));
    }
    if (decimals > 9)
        decimals = 9;
    else if (decimals < 0)
        fillDecimalZeros = false;
}

QString ZWCardFormule::BuildFormat(int integerDigits, int decimals, bool fillIntegerZeros, bool fillDecimalZeros)
{
    QString format;
    if (integerDigits > 0) {
        if (fillIntegerZeros)
            format += QLatin1Char('0');
        format += QChar(char16_t(u'0' + std::min(integerDigits, 12)));
    }
    format += QLatin1Char('.');
    if (decimals >= 0) {
        if (fillDecimalZeros)
            format += QLatin1Char('0');
        format += QChar(char16_t(u'0' + std::min(decimals, 9)));
    }
    return format;
}

QString ZWCardFormule::GetFormat() const
{
    return BuildFormat(integerDigits, decimals, fillIntegerZeros, fillDecimalZeros);
}

void ZWCardFormule::SetFormat(const QString& format)
{
    ParseFormat(format, integerDigits, decimals, fillIntegerZeros, fillDecimalZeros);
}

QString ZWCardFormule::FormatValue(double number) const
{
    return ZWFormat::FormatDouble(
        number, integerDigits, decimals, thousandSeparator, fillIntegerZeros, fillDecimalZeros);
}

QString ZWCardFormule::FormatNumber(double number, const QString& format, bool thousandSeparator)
{
    int integerDigits = 0, decimals = 0;
    bool fillIntegerZeros = false, fillDecimalZeros = false;
    ParseFormat(format, integerDigits, decimals, fillIntegerZeros, fillDecimalZeros);
    return ZWFormat::FormatDouble(
        number, integerDigits, decimals, thousandSeparator, fillIntegerZeros, fillDecimalZeros);
}

bool ZWCardFormule::SaveTemplate(XmlDocument::XmlNode node, bool createElement) const
{
    XmlDocument::XmlNode e = TargetElement(node, createElement);
    SaveLabelFields(e);
    e.NewChild(QStringLiteral("format"), GetFormat());
    e.NewChild(QStringLiteral("thousandSeparator"), ZWXmlFields::WriteBool(thousandSeparator));
    return true;
}

bool ZWCardFormule::GetFromXml(const XmlDocument::XmlNode& e)
{
    ReadLabelFields(e);
    ZWXmlFields::Read(e, QStringLiteral("thousandSeparator"), thousandSeparator);
    integerDigits = -1;
    fillIntegerZeros = false;
    fillDecimalZeros = false;
    decimals = 3;
    QString format;
    if (ZWXmlFields::Read(e, QStringLiteral("format"), format))
        SetFormat(format);
    return true;
}

std::unique_ptr<ZWCardControl> ZWCardFormule::GetClone() const
{
    return std::make_unique<ZWCardFormule>(*this);
}
