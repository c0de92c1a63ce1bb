#include "viewer/ZWActionTexts.h"
#include "tests/support/ZWTestSupport.h"

#include <gtest/gtest.h>

namespace {

TEST(ZWActionTexts, EveryEntryOfAMenuGetsAMnemonicOfItsOwn)
{
    struct Case
    {
        QStringList texts;
        QStringList expected;
    } cases[] = {
        // First letters of words first.
        {{QStringLiteral("Report"), QStringLiteral("Period"), QStringLiteral("View")},
            {QStringLiteral("&Report"), QStringLiteral("&Period"), QStringLiteral("&View")}},
        {{QStringLiteral("Zoom in"), QStringLiteral("Zoom out"), QStringLiteral("Fit to window")},
            {QStringLiteral("&Zoom in"), QStringLiteral("Zoom &out"), QStringLiteral("&Fit to window")}},
        // Then any free letter, letter case aside.
        {{QStringLiteral("Open"), QStringLiteral("other"), QStringLiteral("Oo")},
            {QStringLiteral("&Open"), QStringLiteral("o&ther"), QStringLiteral("Oo")}},
        {{QStringLiteral("Group by"), QStringLiteral("Go to date"), QStringLiteral("Gtb")},
            {QStringLiteral("&Group by"), QStringLiteral("Go &to date"), QStringLiteral("Gt&b")}},
        // Digits count; an ampersand of the text stays one.
        {{QStringLiteral("Heat & power"), QStringLiteral("200 %")},
            {QStringLiteral("&Heat && power"), QStringLiteral("&200 %")}},
        {{QStringLiteral("A&B"), QStringLiteral("a")}, {QStringLiteral("&A&&B"), QStringLiteral("a")}},
        {{QString(), QStringLiteral("…")}, {QString(), QStringLiteral("…")}},
    };
    for (const Case& c : cases) {
        const QStringList marked = ZWActionTexts::Assign(c.texts);
        EXPECT_EQ(marked, c.expected) << c.texts.join(QLatin1Char('|')).toStdString();
        for (qsizetype i = 0; i < marked.size(); ++i)
            EXPECT_EQ(ZWActionTexts::Plain(marked[i]), c.texts[i]);
    }
}

} // namespace
