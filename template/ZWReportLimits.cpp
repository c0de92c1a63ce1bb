#include "template/ZWReportLimits.h"

#include "host/core/ZWLoadString.h"
#include "host/core/ZWTextId.h"
#include "template/ZWCardKinds.h"

#include <vector>

namespace {

bool IsCard(const QString& name)
{
    return ZWCardKinds::ByElement(name) != nullptr;
}

// The longest text of `card` and the elements below it, skipping the
// pictures' bytes; `where` gets that element's name.
qsizetype LongestText(const XmlDocument::XmlNode& card, QString& where)
{
    qsizetype longest = 0;
    std::vector<QDomElement> stack{card.Element()};
    while (!stack.empty()) {
        const QDomElement element = stack.back();
        stack.pop_back();
        for (QDomNode n = element.firstChild(); !n.isNull(); n = n.nextSibling()) {
            if (n.isElement()) {
                const QDomElement child = n.toElement();
                const bool picture
                    = child.tagName() == QLatin1String("value") && element.tagName() == QLatin1String("image");
                if (!picture)
                    stack.push_back(child);
            } else if (n.isText() || n.isCDATASection()) {
                const qsizetype length = n.nodeValue().size();
                if (length > longest) {
                    longest = length;
                    where = element.tagName();
                }
            }
        }
    }
    return longest;
}

} // namespace

QString ZWReportLimits::Problem(const XmlDocument& design)
{
    int pageNumber = 0;
    for (const XmlDocument::XmlNode& page : design.Root().Nodes(QStringLiteral("page"))) {
        ++pageNumber;
        int cards = 0;
        for (const XmlDocument::XmlNode& card : page.Children()) {
            if (!IsCard(card.Name()))
                continue;
            if (++cards > MaxCardsPerPage)
                return ZWLoadString(ZWTextId::TooManyCards).arg(pageNumber).arg(MaxCardsPerPage);
            QString where;
            const qsizetype longest = LongestText(card, where);
            if (longest > MaxCardText)
                return ZWLoadString(ZWTextId::CardTextTooLong)
                    .arg(pageNumber)
                    .arg(cards)
                    .arg(card.Name(), where)
                    .arg(longest)
                    .arg(MaxCardText);
        }
    }
    return QString();
}
