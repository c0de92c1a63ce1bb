#include "host/core/XmlDocument.h"
#include "host/core/ZWSimpleXml.h"
#include "tests/support/ZWTestSupport.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

QByteArray Nested(int depth)
{
    return QByteArray("<a>").repeated(depth) + "x" + QByteArray("</a>").repeated(depth);
}

// A root element with `count` attributes, each `valueBytes` long.
QByteArray Attributes(int count, int valueBytes = 1)
{
    QByteArray s = "<design";
    const QByteArray value(valueBytes, 'v');
    for (int i = 0; i < count; ++i)
        s += " a" + QByteArray::number(i) + "=\"" + value + "\"";
    return s + "><name>x</name></design>";
}

struct RefusedCase
{
    const char* what;
    QByteArray xml;
    XmlDocument::Error error;
};

class XmlRefused : public testing::TestWithParam<RefusedCase>
{};

TEST_P(XmlRefused, FailsToLoadWithItsReason)
{
    XmlDocument doc;
    EXPECT_FALSE(doc.Parse(GetParam().xml)) << GetParam().what;
    EXPECT_EQ(doc.LastError(), GetParam().error) << GetParam().what;
    EXPECT_TRUE(doc.IsEmpty());
}

const RefusedCase kRefused[]
    = {{"billion laughs",
           "<?xml version=\"1.0\"?><!DOCTYPE lolz [<!ENTITY lol \"lol\"><!ENTITY lol2 "
           "\"&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;\">]><design><name>&lol2;</name></design>",
           XmlDocument::Error::Doctype},
        {"external entity", "<!DOCTYPE d [<!ENTITY e SYSTEM \"file:///etc/passwd\">]><design>&e;</design>",
            XmlDocument::Error::Doctype},
        {"undeclared entity", "<design><name>&nope;</name></design>", XmlDocument::Error::Syntax},
        {"one level too deep", Nested(XmlDocument::MaxDepth + 1), XmlDocument::Error::TooDeep},
        {"fifty thousand levels", Nested(50000), XmlDocument::Error::TooDeep},
        {"truncated", "<design><page><width>210.00</width>", XmlDocument::Error::Syntax},
        {"two roots", "<a/><b/>", XmlDocument::Error::Syntax}, {"empty", "", XmlDocument::Error::Empty},
        {"not xml", "\x89PNG\r\n\x1a\n", XmlDocument::Error::Syntax},
        {"one element too many", "<a>" + QByteArray("<b/>").repeated(XmlDocument::MaxElements) + "</a>",
            XmlDocument::Error::TooManyElements},
        {"one attribute too many", Attributes(XmlDocument::MaxAttributes + 1), XmlDocument::Error::TagTooLarge},
        {"two hundred thousand attributes", Attributes(200000), XmlDocument::Error::TagTooLarge},
        {"a start tag over the length", Attributes(1, XmlDocument::MaxTagBytes), XmlDocument::Error::TagTooLarge},
        {"an unclosed start tag over the length", "<design a=\"" + QByteArray(XmlDocument::MaxTagBytes + 10, '>'),
            XmlDocument::Error::TagTooLarge}};

INSTANTIATE_TEST_SUITE_P(Hostile, XmlRefused, testing::ValuesIn(kRefused),
    [](const testing::TestParamInfo<RefusedCase>& info) { return zwtest::CaseName(info.param.what); });

TEST(XmlDocument, NestingAndStartTagsUpToTheLimitsAndWhatOnlyLooksLikeTags)
{
    XmlDocument doc;
    ASSERT_TRUE(doc.Parse(Nested(XmlDocument::MaxDepth)));
    EXPECT_EQ(doc.Value(u"/a"_s.repeated(XmlDocument::MaxDepth - 1)), u"x"_s);
    // Serialising a document at the limit must not crash either.
    EXPECT_FALSE(doc.ToXml().isEmpty());
    EXPECT_TRUE(doc.Parse(Attributes(XmlDocument::MaxAttributes))) << doc.ErrorString().toStdString();
    EXPECT_TRUE(doc.Parse(Attributes(1, XmlDocument::MaxTagBytes - 100))) << doc.ErrorString().toStdString();
    // Attribute-like text in comments, CDATA, processing instructions and
    // quoted values is no start tag.
    const QByteArray many = Attributes(1000).mid(1);
    const QByteArray xml = "<?xml version=\"1.0\"?><!-- <" + many + " --><design note=\"a > b = c\"><name><![CDATA[<"
        + many + "]]></name><?pi <" + many + "?><value>1 &gt; 0</value></design>";
    ASSERT_TRUE(doc.Parse(xml)) << doc.ErrorString().toStdString();
    EXPECT_EQ(doc.Value(u"/value"_s), u"1 > 0"_s);
    // A refusal says where the tag begins; a syntax error where it is.
    EXPECT_FALSE(doc.Parse("<design>\n  <name>x</name>\n  " + Attributes(300).left(4000) + "/></design>"));
    EXPECT_TRUE(doc.ErrorString().startsWith(u"line 3, column 3: an element with more than 256 attributes"_s))
        << doc.ErrorString().toStdString();
    ASSERT_FALSE(doc.Parse(QByteArray("<design>\n<name>x</nam>\n</design>")));
    EXPECT_EQ(doc.ErrorLine(), 2);
    EXPECT_GT(doc.ErrorColumn(), 0);
    EXPECT_TRUE(doc.ErrorString().startsWith(u"line 2, column %1: "_s.arg(doc.ErrorColumn())))
        << doc.ErrorString().toStdString();
}

TEST(XmlDocument, PathsAndKeyFilter)
{
    XmlDocument doc;
    ASSERT_TRUE(doc.Parse(QByteArray("<formules>"
                                     "<formule><name>A</name><text>1+2</text></formule>"
                                     "<formule><name>B</name><text>A*2</text></formule>"
                                     "<formule><name>a'\"]/?=%s</name><text>7</text></formule>"
                                     "</formules>")));
    EXPECT_EQ(doc.Root().Name(), u"formules"_s);
    EXPECT_EQ(doc.Node(u"/"_s).Name(), u"formules"_s);
    EXPECT_EQ(doc.Node(u"/formule?name=%s?"_s, u"B"_s).Value(u"/text"_s), u"A*2"_s);
    // Names are compared as text, case-sensitively, whatever they hold.
    EXPECT_TRUE(doc.Node(u"/formule?name=%s?"_s, u"b"_s).IsNull());
    EXPECT_EQ(doc.Node(u"/formule?name=%s?"_s, u"a'\"]/?=%s"_s).Value(u"/text"_s), u"7"_s);
    EXPECT_TRUE(doc.Node(u"/formule?name=%s?"_s, u"' or '1'='1"_s).IsNull());
    EXPECT_TRUE(doc.Node(u"/formule?name=%s?"_s, u"A/text"_s).IsNull());
    EXPECT_EQ(doc.Value(u"/formule/name"_s), u"A"_s);
    EXPECT_EQ(doc.Value(u"/missing/name"_s, u"def"_s), u"def"_s);
    EXPECT_EQ(doc.Root().Nodes(u"formule"_s).size(), 3u);
}

TEST(XmlDocument, BlankTextInLeavesSurvivesIndentationDoesNot)
{
    XmlDocument doc;
    ASSERT_TRUE(doc.Parse(QByteArray("<design>\n  <value>   </value>\n  <other> a b </other>\n</design>")));
    EXPECT_EQ(doc.Value(u"/value"_s), u"   "_s);
    EXPECT_EQ(doc.Value(u"/other"_s), u" a b "_s);
    EXPECT_EQ(doc.Root().Children().size(), 2u);
    XmlDocument again;
    ASSERT_TRUE(again.Parse(doc.ToXml()));
    EXPECT_EQ(again.Value(u"/value"_s), u"   "_s);
    EXPECT_EQ(again.ToXml(), doc.ToXml());
}

TEST(XmlDocument, TextThatXmlCannotCarryIsDroppedSoTheFileReadsBack)
{
    XmlDocument doc;
    doc.Create(u"design"_s);
    QString text = u"a"_s;
    text += QChar(0x01);
    text += QChar(0xD800); // a lone surrogate
    text += u"b<&>\u00e9"_s;
    text += QString::fromUcs4(U"\U0001F600");
    doc.Root().NewChild(u"name"_s, text);
    XmlDocument back;
    ASSERT_TRUE(back.Parse(doc.ToXml()));
    EXPECT_EQ(back.Value(u"/name"_s), u"ab<&>\u00e9"_s + QString::fromUcs4(U"\U0001F600"));

    ZWSimpleXml writer;
    writer.Open(u"fields"_s);
    writer.Add(u"value"_s, text);
    XmlDocument fromWriter;
    ASSERT_TRUE(fromWriter.Parse(writer.GetXml()));
    EXPECT_EQ(fromWriter.Value(u"/value"_s), back.Value(u"/name"_s));
}

TEST(XmlDocument, SaveIsAtomicAndKeepsThePreviousFileOnFailure)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(u"r.XRPT"_s);
    XmlDocument doc;
    doc.Create(u"design"_s);
    doc.Root().NewChild(u"name"_s, u"first"_s);
    ASSERT_TRUE(doc.SaveAs(path));
    XmlDocument loaded;
    ASSERT_TRUE(loaded.Load(path));
    EXPECT_EQ(loaded.Value(u"/name"_s), u"first"_s);
    // A target in a folder that does not exist cannot be written; nothing is left behind.
    EXPECT_FALSE(doc.SaveAs(dir.filePath(u"missing/r.XRPT"_s)));
    EXPECT_FALSE(loaded.Load(dir.filePath(u"missing.XRPT"_s)));
    EXPECT_EQ(loaded.LastError(), XmlDocument::Error::File);
}

} // namespace
