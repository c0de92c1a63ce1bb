// The conditioned card's alternatives: which one is current, its layer, and
// deleting alternatives.
#include "template/ZWCardConditioned.h"
#include "template/ZWCardImage.h"
#include "template/ZWCardLabel.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

std::unique_ptr<ZWCardConditioned> WithAlternatives(const QString& kinds)
{
    auto card = std::make_unique<ZWCardConditioned>();
    for (const QChar kind : kinds) {
        std::unique_ptr<ZWCardControl> control;
        if (kind == QLatin1Char('L'))
            control = std::make_unique<ZWCardLabel>();
        else
            control = std::make_unique<ZWCardImage>();
        control->id = u"alt%1"_s.arg(card->GetNumberOfConditions());
        card->AddCondition(u"c%1"_s.arg(card->GetNumberOfConditions()), std::move(control));
    }
    return card;
}

TEST(Conditioned, LayerFollowsTheCurrentAlternative)
{
    const std::tuple<const char*, int, int> cases[]
        = {{"", -1, 1}, {"LI", 1, 0}, {"LI", 0, 1}, {"LI", -1, 1}, {"LI", 2, 1}, {"I", 0, 0}, {"IL", 1, 1}};
    for (const auto& [kinds, level, layer] : cases) {
        auto card = WithAlternatives(QString::fromLatin1(kinds));
        card->level = level;
        card->ActualizeLevel();
        EXPECT_EQ(card->layer, layer) << kinds << " level " << level;
    }
}

TEST(Conditioned, DeletingAnAlternativeMovesTheLevelOntoTheOneThatTakesItsPlace)
{
    // alternatives, level, deleted, result, level after, ids after
    const std::tuple<int, int, int, bool, int, const char*> cases[]
        = {{3, 2, 2, true, 1, "alt0,alt1"},                           // the last of three: level on the new last
            {3, 0, 0, true, 0, "alt1,alt2"},                          // the first: the former second is current
            {3, 2, 1, true, 1, "alt0,alt2"}, {1, 0, 0, true, -1, ""}, // the only one: none left
            {3, 1, 3, false, 1, "alt0,alt1,alt2"}, {3, 1, -1, false, 1, "alt0,alt1,alt2"}, {0, -1, 0, false, -1, ""}};
    for (const auto& [count, level, remove, result, levelAfter, idsAfter] : cases) {
        auto card = WithAlternatives(QString(count, QLatin1Char('L')));
        card->level = level;
        card->ActualizeLevel();
        SCOPED_TRACE(testing::Message() << count << "/" << remove);
        EXPECT_EQ(card->DeleteCondition(remove), result);
        QStringList ids;
        for (int i = 0; i < card->GetNumberOfConditions(); ++i)
            ids << card->GetControl(i)->id;
        EXPECT_EQ(
            std::tuple(card->level, ids.join(QLatin1Char(','))), std::tuple(levelAfter, QString::fromLatin1(idsAfter)));
        EXPECT_EQ(card->conditions.size(), card->controls.size());
    }
}

TEST(Conditioned, DeletingThePictureMakesTheLabelCurrentAndOnlyPlainCardsAreAlternatives)
{
    auto card = WithAlternatives(u"IL"_s);
    card->level = 0;
    card->ActualizeLevel();
    EXPECT_EQ(card->layer, 0);
    ASSERT_TRUE(card->DeleteCondition(0));
    EXPECT_EQ(std::tuple(card->level, card->layer), std::tuple(0, 1));

    EXPECT_FALSE(card->AddCondition(u"1"_s, std::make_unique<ZWCardConditioned>()));
    EXPECT_FALSE(card->AddCondition(u"1"_s, std::make_unique<ZWCardControl>()));
    EXPECT_FALSE(card->AddCondition(u"1"_s, nullptr));
    EXPECT_EQ(std::tuple(card->GetNumberOfConditions(), WithAlternatives(u"LIL"_s)->FindControl(u"alt2"_s),
                  card->FindControl(u"alt9"_s)),
        std::tuple(1, 2, -1));
}

} // namespace
