#pragma once

#include "template/ZWCardControl.h"
#include "template/ZWGlobalProperties.h"

#include <QStringList>
#include <memory>
#include <vector>

// One page of a template: its properties and its cards in drawing order,
// bottom first. The page windows of the viewer and the editor keep their
// page in one of these.
class ZWTemplatePage
{
public:
    ZWTemplatePage() = default;
    ZWTemplatePage(const ZWTemplatePage& other);
    ZWTemplatePage& operator=(const ZWTemplatePage& other);
    ZWTemplatePage(ZWTemplatePage&&) noexcept = default;
    ZWTemplatePage& operator=(ZWTemplatePage&&) noexcept = default;

    // Adds a "page" element under `design` and writes the properties and
    // every card into it.
    bool SaveTemplate(XmlDocument::XmlNode design) const;
    // Replaces the page by the one in a "page" element: properties first,
    // then each "image", "label", "date", "formule" and "conditioned" child
    // in document order; other children are skipped. Never fails.
    bool SetTemplate(const XmlDocument::XmlNode& page);
    void DeleteControlList();
    // Every card re-reads its text style.
    void UpdateStylesFromFile();
    // The first card with this id, or null.
    ZWCardControl* FindCard(const QString& cardId) const;
    // The pictures of the page that were not drawn, and why: "background: the
    // picture is not drawn: …", "card {id}: …" (image alternatives of
    // conditioned cards included).
    // Meaningful after drawing (a picture that fails to decode is known then).
    QStringList PictureProblems() const;

    ZWGlobalProperties properties;
    std::vector<std::unique_ptr<ZWCardControl>> cards;
};
