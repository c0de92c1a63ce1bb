#include "viewer/ZWActionTexts.h"
#include "tests/support/ZWTestSupport.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

TEST(ZWActionTexts, EveryEntryOfAMenuGetsAMnemonicOfItsOwn)
{
    struct Case
    {
        QStringList texts;
        QStringList expected;
    } cases[] = {
        // First letters of words first.
        {{u"Report"_s, u"Period"_s, u"View"_s}, {u"&Report"_s, u"&Period"_s, u"&View"_s}},
        {{u"Zoom in"_s, u"Zoom out"_s, u"Fit to window"_s}, {u"&Zoom in"_s, u"Zoom &out"_s, u"&Fit to window"_s}},
        // Then any free letter, letter case aside.
        {{u"Open"_s, u"other"_s, u"Oo"_s}, {u"&Open"_s, u"o&ther"_s, u"Oo"_s}},
        {{u"Group by"_s, u"Go to date"_s, u"Gtb"_s}, {u"&Group by"_s, u"Go &to date"_s, u"Gt&b"_s}},
        // Digits count; an ampersand of the text stays one.
        {{u"Heat & power"_s, u"200 %"_s}, {u"&Heat && power"_s, u"&200 %"_s}},
        {{u"A&B"_s, u"a"_s}, {u"&A&&B"_s, u"a"_s}},
        {{QString(), u"…"_s}, {QString(), u"…"_s}},
    };
    for (const Case& c : cases) {
        const QStringList marked = ZWActionTexts::Assign(c.texts);
        EXPECT_EQ(marked, c.expected) << c.texts.join(QLatin1Char('|')).toStdString();
        for (qsizetype i = 0; i < marked.size(); ++i)
            EXPECT_EQ(ZWActionTexts::Plain(marked[i]), c.texts[i]);
    }
}

} // namespace
