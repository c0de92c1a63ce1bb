#pragma once

#include "template/ZWCardLabel.h"

// A text card showing a date by a pattern ("dd/MM/yyyy hh:mm:ss"). Its
// `field` names the date: "BEGIN_DATE" and "END_DATE" of the report's period
// or "ACTUAL_DATE" (now); without a field it shows the date written in its
// `value`.
class ZWCardDate : public ZWCardLabel
{
public:
    ZWCardDate() = default;

    const char* GetRuntimeClass() const override;
    bool SaveTemplate(XmlDocument::XmlNode node, bool createElement) const override;
    bool GetFromXml(const XmlDocument::XmlNode& element) override;
    std::unique_ptr<ZWCardControl> GetClone() const override;
    // The value read as a date and written by the pattern; a value that is
    // no date is shown as it stands. A card filled with a report's date text
    // shows that text unchanged.
    QString GetDrawText() const override;

    static constexpr const char* DefaultFormat = "dd/MM/yyyy hh:mm:ss";

    QString format = QString::fromLatin1(DefaultFormat);
    // Set when `value` holds a date already written by the pattern (the
    // viewer's value document): reading it back as a date could swap day
    // and month. Not stored in the file.
    bool filled = false;
};
