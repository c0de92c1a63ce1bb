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
        label.font = QStringLiteral("Courier New");
        label.size = 8.0;
        label.color = 0x111111;
        label.style = 0;
        label.orientation = 30.0;
        return label;
    }
    zwtest::TempDataDir m_data;
};

TEST_F(TextStyle, AStyleFileSetsTheLook)
{
    Write("Heading",
        "<design><id>x</id><name>Heading</name><font>Arial</font><style>1</style>"
        "<orientation>90.00</orientation><size>16.50</size><color>0000FF</color></design>");
    ZWCardLabel label = Plain();
    EXPECT_TRUE(label.GetStyleFromFile(QStringLiteral("Heading")));
    EXPECT_EQ(label.font, QStringLiteral("Arial"));
    EXPECT_EQ(label.style, 1);
    EXPECT_DOUBLE_EQ(label.orientation, 90.0);
    EXPECT_DOUBLE_EQ(label.size, 16.5);
    EXPECT_EQ(label.color, 0x0000FFu);
}

TEST_F(TextStyle, OnlyTheElementsPresentChangeTheLabel)
{
    Write("Partial", "<design><size>12</size></design>");
    ZWCardLabel label = Plain();
    EXPECT_TRUE(label.GetStyleFromFile(QStringLiteral("Partial")));
    EXPECT_DOUBLE_EQ(label.size, 12.0);
    EXPECT_DOUBLE_EQ(label.orientation, 30.0); // no "orientation": unchanged
    EXPECT_EQ(label.font, QStringLiteral("Courier New"));
    EXPECT_EQ(label.color, 0x111111u);
}

TEST_F(TextStyle, UnreadableOrMissingStylesChangeNothing)
{
    Write("Broken", "<design><size>12</design>");
    for (const char* name : {"Missing", "Broken", "", "../Broken", "sub/Heading"}) {
        ZWCardLabel label = Plain();
        EXPECT_FALSE(label.GetStyleFromFile(QString::fromLatin1(name))) << name;
        EXPECT_DOUBLE_EQ(label.size, 8.0) << name;
        EXPECT_EQ(label.font, QStringLiteral("Courier New")) << name;
    }
}

TEST_F(TextStyle, UpdateStyleFromFileUsesTheCardsStyle)
{
    Write("Value", "<design><font>Times New Roman</font><size>14</size></design>");
    ZWCardFormule formule;
    formule.styleFile = QStringLiteral("Value");
    EXPECT_TRUE(formule.UpdateStyleFromFile());
    EXPECT_EQ(formule.font, QStringLiteral("Times New Roman"));

    ZWCardLabel none = Plain();
    EXPECT_FALSE(none.UpdateStyleFromFile()); // no style: keeps its own look
    EXPECT_DOUBLE_EQ(none.size, 8.0);

    ZWCardLabel missing = Plain();
    missing.styleFile = QStringLiteral("Gone");
    EXPECT_FALSE(missing.UpdateStyleFromFile());
    EXPECT_DOUBLE_EQ(missing.size, 8.0);

    ZWCardConditioned conditioned;
    auto alternative = std::make_unique<ZWCardLabel>();
    alternative->styleFile = QStringLiteral("Value");
    conditioned.AddCondition(QStringLiteral("1==1"), std::move(alternative));
    conditioned.AddCondition(QStringLiteral("1==0"), std::make_unique<ZWCardLabel>());
    EXPECT_TRUE(conditioned.UpdateStyleFromFile());
    EXPECT_DOUBLE_EQ(static_cast<ZWCardLabel*>(conditioned.GetControl(0))->size, 14.0);
    EXPECT_TRUE(ZWCardControl().UpdateStyleFromFile());
}

TEST_F(TextStyle, WritingAStyleFile)
{
    ZWTextStyle style;
    style.name = QStringLiteral("Total");
    style.font = QStringLiteral("Arial");
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
    EXPECT_EQ(first.Root().Name(), QStringLiteral("design"));
    EXPECT_EQ(names, QStringList({u"id"_s, u"name"_s, u"font"_s, u"style"_s, u"orientation"_s, u"size"_s, u"color"_s}));
    EXPECT_EQ(first.Value(u"/orientation"_s), QStringLiteral("12.35"));
    EXPECT_EQ(first.Value(u"/color"_s), QStringLiteral("00FF00"));
    const QString firstId = first.Value(u"/id"_s);

    ASSERT_TRUE(style.SaveByName());
    XmlDocument second;
    ASSERT_TRUE(second.Load(m_data.Path() + u"Total.XSTY"_s));
    EXPECT_NE(second.Value(u"/id"_s), firstId); // a new GUID at every save

    ZWTextStyle read;
    ASSERT_TRUE(read.LoadByName(QStringLiteral("Total")));
    EXPECT_EQ(read.name, QStringLiteral("Total"));
    EXPECT_EQ(read.style, 3);
    EXPECT_DOUBLE_EQ(read.orientation, 12.35);
    EXPECT_EQ(read.color, 0x00FF00u);

    ZWTextStyle other;
    other.name = QStringLiteral("Another");
    ASSERT_TRUE(other.SaveByName());
    EXPECT_EQ(ZWTextStyle::List(), QStringList({u"Another"_s, u"Total"_s}));
    ZWTextStyle bad;
    bad.name = QStringLiteral("../escape");
    EXPECT_FALSE(bad.SaveByName());
}

} // namespace
