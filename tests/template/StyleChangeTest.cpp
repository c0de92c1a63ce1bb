// The style editor's OK without its window: which styles it refuses, when it
// asks before replacing another style, and what a rename leaves on disk.
#include "host/core/ZWTextId.h"
#include "template/ZWStyleChange.h"
#include "tests/template/TemplateTestSupport.h"

#include <QFileInfo>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using Verdict = ZWStyleChange::Verdict;

namespace {

ZWTextStyle Style(const QString& name, double size = 10.0)
{
    ZWTextStyle style;
    style.name = name;
    style.size = size;
    return style;
}

TEST(StyleChange, VerdictsFollowTheNameSizeAndExistingFilesAndACommitMovesOrReplacesTheFile)
{
    zwtest::TempDataDir data;
    ASSERT_TRUE(Style(u"Taken"_s).SaveByName());
    ASSERT_TRUE(Style(u"Mine"_s).SaveByName());
    ZWTextStyle mineBigger = Style(u"Mine"_s, 12.0);
    const std::tuple<const char*, std::optional<ZWTextStyle>, bool, ZWTextStyle, Verdict, int> cases[] = {
        {"an empty name", std::nullopt, false, Style(QString()), Verdict::NameMissing, ZWTextId::StyleNameMissing},
        {"a name with a folder", std::nullopt, false, Style(u"a/b"_s), Verdict::NameNotAFileName,
            ZWTextId::StyleNameNotAFileName},
        {"a name of two dots", std::nullopt, false, Style(u".."_s), Verdict::NameNotAFileName,
            ZWTextId::StyleNameNotAFileName},
        {"size zero", std::nullopt, false, Style(u"New"_s, 0.0), Verdict::SizeNotPositive,
            ZWTextId::StyleSizeNotPositive},
        {"a negative size", Style(u"Mine"_s), true, Style(u"Mine"_s, -1.0), Verdict::SizeNotPositive,
            ZWTextId::StyleSizeNotPositive},
        {"a new style named like another", std::nullopt, false, Style(u"Taken"_s), Verdict::NameTaken,
            ZWTextId::StyleNameTaken},
        {"a new style named like another, may replace", std::nullopt, true, Style(u"Taken"_s), Verdict::AskReplace,
            ZWTextId::StyleReplaceQuestion},
        {"a rename onto another", Style(u"Mine"_s), true, Style(u"Taken"_s), Verdict::AskReplace,
            ZWTextId::StyleReplaceQuestion},
        {"a rename onto another, may not replace", Style(u"Mine"_s), false, Style(u"Taken"_s), Verdict::NameTaken,
            ZWTextId::StyleNameTaken},
        {"nothing changed", Style(u"Mine"_s), true, Style(u"Mine"_s), Verdict::Unchanged, 0},
        {"a bigger size", Style(u"Mine"_s), true, mineBigger, Verdict::Write, 0},
        {"a free new name", std::nullopt, false, Style(u"Fresh"_s), Verdict::Write, 0},
    };
    for (const auto& [what, opened, mayOverwrite, edited, verdict, message] : cases) {
        SCOPED_TRACE(what);
        const Verdict judged = ZWStyleChange(opened, mayOverwrite).Judge(edited);
        EXPECT_EQ(judged, verdict);
        EXPECT_EQ(ZWStyleChange::MessageId(judged), message);
    }

    // A renamed style moves its file; renaming onto another (after the user
    // said yes) replaces it.
    ASSERT_TRUE(ZWStyleChange(Style(u"Mine"_s), true).Commit(Style(u"Renamed"_s, 14.0)));
    EXPECT_FALSE(QFileInfo::exists(ZWTextStyle::PathFor(u"Mine"_s)));
    ZWTextStyle read;
    ASSERT_TRUE(read.Load(ZWTextStyle::PathFor(u"Renamed"_s)));
    EXPECT_EQ(std::tuple(read.name, read.size), std::tuple(u"Renamed"_s, 14.0));
    ASSERT_TRUE(ZWStyleChange(Style(u"Renamed"_s), true).Commit(Style(u"Taken"_s, 9.0)));
    EXPECT_EQ(ZWTextStyle::List(), QStringList{u"Taken"_s});
    ASSERT_TRUE(read.Load(ZWTextStyle::PathFor(u"Taken"_s)));
    EXPECT_EQ(read.size, 9.0);
}

} // namespace
