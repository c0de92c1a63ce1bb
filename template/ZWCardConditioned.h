#pragma once

#include "template/ZWCardControl.h"

// A card holding alternatives, each a condition (formula text) with a card
// (label, image, date or formula card), of which one, the current level, is
// shown. All alternatives share this card's rectangle.
class ZWCardConditioned : public ZWCardControl
{
public:
    ZWCardConditioned();
    ZWCardConditioned(const ZWCardConditioned& other);
    ZWCardConditioned& operator=(const ZWCardConditioned& other);
    ~ZWCardConditioned() override;

    const char* GetRuntimeClass() const override;
    // The alternatives are written with this card's geometry.
    bool SaveTemplate(XmlDocument::XmlNode node, bool createElement) const override;
    bool GetFromXml(const XmlDocument::XmlNode& element) override;
    // Draws the current alternative in this card's rectangle; nothing
    // without one.
    void Draw(QPainter& dc, const tagDraw& draw) override;
    std::unique_ptr<ZWCardControl> GetClone() const override;
    // Every alternative re-reads its style; true.
    bool UpdateStyleFromFile() override;

    // Layer 0 when the current alternative is a picture, else 1.
    void ActualizeLevel();
    // Removes alternative `index`; the level moves to the alternative now at
    // `index`, or to the last one. False for an index out of range.
    bool DeleteCondition(int index);
    // Appends an alternative; the card is taken. Only label, image, date and
    // formula cards can be alternatives: false (and nothing changes) for
    // another kind or a null card.
    bool AddCondition(const QString& condition, std::unique_ptr<ZWCardControl> card);

    int GetNumberOfConditions() const { return int(controls.size()); }
    ZWCardControl* GetControl(int index) const;
    QString GetCondition(int index) const;
    void SetCondition(int index, const QString& condition);
    // The current alternative's card, or null.
    ZWCardControl* GetCurrentControl() const;
    // The index of the alternative whose card has this id, or −1.
    int FindControl(const QString& controlId) const;

    std::vector<std::unique_ptr<ZWCardControl>> controls;
    std::vector<QString> conditions;
    int level = -1;

private:
    void Clear();
    void CopyAlternatives(const ZWCardConditioned& other);
};
