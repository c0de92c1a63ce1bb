// Text style files: reading them into labels and writing them.
#include "host/core/XmlDocument.h"
#include "template/ZWCardConditioned.h"
#include "template/ZWCardFormule.h"
#include "template/ZWCardLabel.h"
#include "template/ZWTextStyle.h"
#include "tests/support/ZWTestSupport.h"
#include "tests/template/TemplateTestSupport.h"

#include <QRegularExpression>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

class TextStyle : public ::testing::Test
{
protected:
    void Write(const char* name, const char* xml)
    {
        ASSERT_TRUE(zwtest::WriteFile(m_data.Path() + QString::fromLatin1(name) + u".XSTY"_s, QByteArray(xml)));
    }
    ZWCardLabel Plain()
    {
        ZWCardLabel label;
        std::tie(label.font, label.size, label.color, label.style, label.orientation)
            = std::tuple(u"Courier New"_s, 8.0, 0x111111, 0, 30.0);
        return label;
    }
    zwtest::TempDataDir m_data;
};

TEST_F(TextStyle, AStyleFileSetsTheLookByTheElementsPresentABadOneChangesNothingAndCardsUpdateFromTheirs)
{
    Write("Heading",
        "<design><id>x</id><name>Heading</name><font>Arial</font><style>1</style>"
        "<orientation>90.00</orientation><size>16.50</size><color>0000FF</color></design>");
    Write("Partial", "<design><size>12</size></design>");
    Write("Broken", "<design><size>12</design>");
    const auto look = [](const ZWCardLabel& l) {
        return u"%1 %2 %3 %4 %5"_s.arg(l.font)
            .arg(l.style)
            .arg(l.orientation)
            .arg(l.size)
            .arg(l.color, 6, 16, QLatin1Char('0'));
    };
    const std::pair<const char*, const char*> cases[] = {
        {"Heading", "Arial 1 90 16.5 0000ff"},
        {"Partial", "Courier New 0 30 12 111111"}, // no "orientation": unchanged
        {"Missing", nullptr},
        {"Broken", nullptr},
        {"", nullptr},
        {"../Broken", nullptr},
        {"sub/Heading", nullptr},
    };
    for (const auto& [name, expected] : cases) {
        ZWCardLabel label = Plain();
        EXPECT_EQ(label.GetStyleFromFile(QString::fromLatin1(name)), expected != nullptr) << name;
        EXPECT_EQ(look(label), QString::fromLatin1(expected ? expected : "Courier New 0 30 8 111111")) << name;
    }

    // Cards update from the style they name.
    Write("Value", "<design><font>Times New Roman</font><size>14</size></design>");
    ZWCardFormule formule;
    formule.styleFile = u"Value"_s;
    EXPECT_TRUE(formule.UpdateStyleFromFile());
    EXPECT_EQ(formule.font, u"Times New Roman"_s);

    ZWCardConditioned conditioned;
    auto alternative = std::make_unique<ZWCardLabel>();
    alternative->styleFile = u"Value"_s;
    conditioned.AddCondition(u"1==1"_s, std::move(alternative));
    conditioned.AddCondition(u"1==0"_s, std::make_unique<ZWCardLabel>());
    EXPECT_TRUE(conditioned.UpdateStyleFromFile());
    EXPECT_DOUBLE_EQ(static_cast<ZWCardLabel*>(conditioned.GetControl(0))->size, 14.0);
    EXPECT_TRUE(ZWCardControl().UpdateStyleFromFile());
}

TEST_F(TextStyle, WritingAStyleFile)
{
    ZWTextStyle style;
    std::tie(style.name, style.font, style.style, style.orientation, style.size, style.color)
        = std::tuple(u"Total"_s, u"Arial"_s, 3, 12.345, 11.0, 0x00FF00);
    ASSERT_TRUE(style.SaveByName());
    XmlDocument file;
    ASSERT_TRUE(file.Load(m_data.Path() + u"Total.XSTY"_s));
    const QString firstId = file.Value(u"/id"_s);
    EXPECT_EQ(file.Root().Children().front().Name(), u"id"_s);
    file.Root().RemoveChild(file.Node(u"/id"_s));
    EXPECT_EQ(QString::fromUtf8(file.Root().ToXml()).remove(QRegularExpression(u"\\s"_s)),
        u"<design><name>Total</name><font>Arial</font><style>3</style><orientation>12.35</orientation>"
        u"<size>11.00</size><color>00FF00</color></design>"_s);
    ASSERT_TRUE(style.SaveByName());
    ASSERT_TRUE(file.Load(m_data.Path() + u"Total.XSTY"_s));
    EXPECT_NE(file.Value(u"/id"_s), firstId); // a new GUID at every save

    ZWTextStyle read;
    ASSERT_TRUE(read.LoadByName(u"Total"_s));
    EXPECT_EQ(
        std::tuple(read.name, read.style, read.orientation, read.color), std::tuple(u"Total"_s, 3, 12.35, 0x00FF00u));

    ZWTextStyle other;
    other.name = u"Another"_s;
    ASSERT_TRUE(other.SaveByName());
    EXPECT_EQ(ZWTextStyle::List(), QStringList({u"Another"_s, u"Total"_s}));
    ZWTextStyle bad;
    bad.name = u"../escape"_s;
    EXPECT_FALSE(bad.SaveByName());
}

} // namespace
