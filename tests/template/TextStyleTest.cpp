// Text style files: reading them into labels and writing them.
#include "host/core/XmlDocument.h"
#include "template/ZWCardConditioned.h"
#include "template/ZWCardFormule.h"
#include "template/ZWCardLabel.h"
#include "template/ZWTextStyle.h"
#include "tests/support/ZWTestSupport.h"
#include "tests/template/TemplateTestSupport.h"

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
        label.font = u"Courier New"_s;
        label.size = 8.0;
        label.color = 0x111111;
        label.style = 0;
        label.orientation = 30.0;
        return label;
    }
    zwtest::TempDataDir m_data;
};

TEST_F(TextStyle, AStyleFileSetsTheLookOnlyByTheElementsPresentAndABadOneChangesNothing)
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
}

TEST_F(TextStyle, UpdateStyleFromFileUsesTheCardsStyle)
{
    Write("Value", "<design><font>Times New Roman</font><size>14</size></design>");
    ZWCardFormule formule;
    formule.styleFile = u"Value"_s;
    EXPECT_TRUE(formule.UpdateStyleFromFile());
    EXPECT_EQ(formule.font, u"Times New Roman"_s);

    ZWCardLabel none = Plain();
    EXPECT_FALSE(none.UpdateStyleFromFile()); // no style: keeps its own look
    EXPECT_DOUBLE_EQ(none.size, 8.0);

    ZWCardLabel missing = Plain();
    missing.styleFile = u"Gone"_s;
    EXPECT_FALSE(missing.UpdateStyleFromFile());
    EXPECT_DOUBLE_EQ(missing.size, 8.0);

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
    style.name = u"Total"_s;
    style.font = u"Arial"_s;
    style.style = 3;
    style.orientation = 12.345;
    style.size = 11.0;
    style.color = 0x00FF00;
    ASSERT_TRUE(style.SaveByName());
    XmlDocument first;
    ASSERT_TRUE(first.Load(m_data.Path() + u"Total.XSTY"_s));
    QStringList names;
    for (const auto& child : first.Root().Children())
        names << child.Name();
    EXPECT_EQ(first.Root().Name(), u"design"_s);
    EXPECT_EQ(names, QStringList({u"id"_s, u"name"_s, u"font"_s, u"style"_s, u"orientation"_s, u"size"_s, u"color"_s}));
    EXPECT_EQ(first.Value(u"/orientation"_s), u"12.35"_s);
    EXPECT_EQ(first.Value(u"/color"_s), u"00FF00"_s);
    const QString firstId = first.Value(u"/id"_s);

    ASSERT_TRUE(style.SaveByName());
    XmlDocument second;
    ASSERT_TRUE(second.Load(m_data.Path() + u"Total.XSTY"_s));
    EXPECT_NE(second.Value(u"/id"_s), firstId); // a new GUID at every save

    ZWTextStyle read;
    ASSERT_TRUE(read.LoadByName(u"Total"_s));
    EXPECT_EQ(read.name, u"Total"_s);
    EXPECT_EQ(read.style, 3);
    EXPECT_DOUBLE_EQ(read.orientation, 12.35);
    EXPECT_EQ(read.color, 0x00FF00u);

    ZWTextStyle other;
    other.name = u"Another"_s;
    ASSERT_TRUE(other.SaveByName());
    EXPECT_EQ(ZWTextStyle::List(), QStringList({u"Another"_s, u"Total"_s}));
    ZWTextStyle bad;
    bad.name = u"../escape"_s;
    EXPECT_FALSE(bad.SaveByName());
}

} // namespace
