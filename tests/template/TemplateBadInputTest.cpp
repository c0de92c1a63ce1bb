// Templates from hostile or damaged files: reading never fails, keeps
// defaults, and stays within bounds.
#include "host/core/ZWRemote.h"
#include "template/ZWCardFormule.h"
#include "template/ZWCardImage.h"
#include "template/ZWPageRenderer.h"
#include "template/ZWReportLimits.h"
#include "template/ZWTemplate.h"
#include "template/ZWXmlFields.h"
#include "tests/support/ZWTestSupport.h"
#include "tests/template/TemplateTestSupport.h"

#include <QPainter>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

TEST(TemplateBadInput, NumbersThatAreNotNumbersReadAsZero)
{
    const std::pair<const char*, double> doubles[] = {{"12.50", 12.5}, {"  7", 7.0}, {"12.5mm", 12.5}, {"+3", 3.0},
        {"-2.25", -2.25}, {".5", 0.5}, {"1e3", 1000.0}, {"abc", 0.0}, {"", 0.0}, {"-", 0.0}, {"--1", 0.0}, {"nan", 0.0},
        {"inf", 0.0}, {"-inf", 0.0}, {"1e400", 0.0}, {"0x10", 0.0}, {"12,5", 12.0}, {"\xd9\xa1\xd9\xa2", 0.0}};
    for (const auto& [text, value] : doubles)
        EXPECT_EQ(ZWXmlFields::ReadDouble(QString::fromUtf8(text)), value) << text;
    const std::pair<const char*, int> ints[]
        = {{"16", 16}, {"-5", -5}, {"12.7", 12}, {"x", 0}, {"99999999999", 0}, {" 4 ", 4}, {"2147483647", 2147483647}};
    for (const auto& [text, value] : ints)
        EXPECT_EQ(ZWXmlFields::ReadInt(QString::fromUtf8(text)), value) << text;
    const std::pair<const char*, quint32> colours[]
        = {{"FF0000", 0xFF0000u}, {"ff", 0xFFu}, {"0x0000FF", 0xFFu}, {"FFFFFFFF", 0xFFFFFFFFu}, {"zz", 0u},
            {"-1", 0xFFFFFFFFu}, {"123456789", 0u}, {"", 0u}, {"00FF00xyz", 0x00FF00u}};
    for (const auto& [text, value] : colours)
        EXPECT_EQ(ZWXmlFields::ReadColor(QString::fromUtf8(text)), value) << text;
    for (const char* text : {"t", "true", "TRUE", " T", "T ", "", "1"})
        EXPECT_FALSE(ZWXmlFields::ReadBool(QString::fromUtf8(text))) << text;
    EXPECT_TRUE(ZWXmlFields::ReadBool(u"T"_s));
}

TEST(TemplateBadInput, CardWithGarbageEverywhere)
{
    XmlDocument document;
    ASSERT_TRUE(document.Parse("<formule><x>left</x><y>1e999</y><width>NaN</width><height>-</height>"
                               "<color>green</color><backcolor>?</backcolor><style>bold</style>"
                               "<horizontalAlign>right</horizontalAlign><size>big</size>"
                               "<orientation>up</orientation><format>x.y.z</format><unknown>1</unknown>"
                               "<thousandSeparator>yes</thousandSeparator></formule>"));
    ZWCardFormule card;
    card.GetFromXml(document.Root());
    // Every number 0; the format's "x" is one character, 'x' − '0' = 72, cut
    // to 12 digits, and "y.z" is too long: the default 3 decimals stay.
    EXPECT_EQ(zwtest::CardXml(card),
        u"<formule><x>0.00</x><y>0.00</y><width>0.00</width><height>0.00</height><color>000000</color>"
        u"<backcolor>000000</backcolor><font>Arial</font><style>0</style><horizontalAlign>0</horizontalAlign>"
        u"<verticalAlign>16</verticalAlign><orientation>0.00</orientation><size>0.00</size><value/><styleFile/>"
        u"<format>&lt;.3</format><thousandSeparator>F</thousandSeparator></formule>"_s);
}

TEST(TemplateBadInput, Base64ThatIsNotBase64AndBytesThatAreNoPicture)
{
    const std::tuple<const char*, bool, const char*> cases[] = {{"aGVsbG8=", true, "hello"}, {"aGVsbG8", true, "hello"},
        {"aGVs\n bG8=", true, "hello"}, {"", true, ""}, {"a", false, ""}, {"aGVs!G8=", false, ""},
        {"aGVsbG8=aGVs", false, ""}, {"\xc3\xa9\xc3\xa9\xc3\xa9\xc3\xa9", false, ""}};
    for (const auto& [text, ok, decoded] : cases) {
        QByteArray out("stale");
        EXPECT_EQ(DecodeBase64(QString::fromUtf8(text), out), ok) << text;
        EXPECT_EQ(out, QByteArray(decoded)) << text;
    }
    EXPECT_GE(DecodedBase64Size(u"aGVs bG8="_s), 5);

    XmlDocument document;
    ASSERT_TRUE(document.Parse("<image><value>%%% not base64 %%%</value></image>"));
    ZWCardImage card;
    card.GetFromXml(document.Root());
    EXPECT_EQ(std::tuple(card.HasPicture(), card.bytes), std::tuple(false, QByteArray()));

    // Bytes that are no picture are kept and written back.
    const QByteArray bytes("%PDF-1.4 this is not a picture at all");
    ASSERT_TRUE(document.Parse(u"<image><value>%1</value></image>"_s.arg(EncodeBase64(bytes))));
    card.GetFromXml(document.Root());
    EXPECT_EQ(std::tuple(card.HasPicture(), card.bytes), std::tuple(false, bytes));
    XmlDocument out;
    EXPECT_EQ(zwtest::WriteCard(card, out).Value(u"value"_s), EncodeBase64(bytes));
}

// Which bytes XML refuses is the XML document's table; a template takes any
// refusal alike.
TEST(TemplateBadInput, FilesThatAreNoTemplate)
{
    QTemporaryDir dir;
    const std::tuple<const char*, QByteArray> cases[]
        = {{"malformed", "<design><page><label><x>1</x></page></design>"}, {"empty", ""}};
    for (const auto& [name, bytes] : cases) {
        const QString path = dir.filePath(QString::fromLatin1(name));
        ASSERT_TRUE(zwtest::WriteFile(path, bytes));
        ZWTemplate report;
        report.name = u"before"_s;
        QString error;
        EXPECT_FALSE(report.Load(path, &error)) << name;
        EXPECT_EQ(std::tuple(error.isEmpty(), report.pages.empty(), report.name, report.id.isEmpty()),
            std::tuple(false, true, QString(), false))
            << name;
    }
    ZWTemplate missing;
    EXPECT_FALSE(missing.Load(dir.filePath(u"nothing-here.XRPT"_s)));
}

TEST(TemplateBadInput, UnknownElementsAreSkipped)
{
    XmlDocument document;
    ASSERT_TRUE(document.Parse("<design><id>i</id><future>x</future><page><width>100</width>"
                               "<hologram><x>1</x></hologram><label><x>2</x><sparkle/></label>"
                               "<Label><x>3</x></Label><control><label/></control></page>"
                               "<page><page/></page></design>"));
    ZWTemplate report;
    report.Read(document);
    ASSERT_EQ(report.pages.size(), 2u);
    ASSERT_EQ(report.pages[0].cards.size(), 1u); // names are case-sensitive
    EXPECT_DOUBLE_EQ(report.pages[0].cards[0]->x, 2.0);
    EXPECT_TRUE(report.pages[1].cards.empty());
}

TEST(TemplateBadInput, AbsurdGeometryDrawsWithoutHarm)
{
    zwtest::TempDataDir data;
    XmlDocument document;
    ASSERT_TRUE(document.Parse("<design><page><width>1e300</width><height>0</height>"
                               "<label><x>-1e300</x><y>1e300</y><width>1e300</width><height>1e300</height>"
                               "<size>1e300</size><orientation>1e300</orientation><value>big</value></label>"
                               "<image><width>1e300</width><height>1e-300</height><value>%1</value>"
                               "<maintainAspectRatio>F</maintainAspectRatio></image></page></design>"));
    ZWTemplate report;
    report.Read(document);
    ASSERT_EQ(report.pages.size(), 1u);
    QImage image = zwtest::WhiteImage(200, 200);
    QPainter painter(&image);
    tagDraw draw = zwtest::PageDraw(5.0);
    for (const auto& card : report.pages[0].cards)
        card->Draw(painter, draw);
    draw.pageWidthMm = 0.0;
    for (const auto& card : report.pages[0].cards) {
        card->Draw(painter, draw);
        card->DrawBorder(painter, draw.CardRect(card->x, card->y, card->width, card->height), true, true, true, 3);
    }
    painter.end();
    EXPECT_TRUE(ZWPageRenderer::RenderPage(report.pages[0], 150.0).isNull());
}

QByteArray Page(int labels, int textLength = 1, const QByteArray& extra = QByteArray())
{
    QByteArray xml = "<design><page><width>210</width></page><page>";
    for (int i = 0; i < labels; ++i)
        xml += "<label><value>" + QByteArray(textLength, 'x') + "</value></label>";
    return xml + extra + "</page></design>";
}

TEST(TemplateBadInput, ReportsBeyondTheLimitsAreNamedWithTheirFirstProblem)
{
    // the design, its problem (empty: within the limits)
    const std::tuple<const char*, QByteArray, const char*> cases[] = {
        {"a full page", Page(ZWReportLimits::MaxCardsPerPage), ""},
        {"one card too many", Page(ZWReportLimits::MaxCardsPerPage + 1), "page 2 has more than 5000 cards"},
        {"the longest text", Page(3, ZWReportLimits::MaxCardText), ""},
        {"a longer text", Page(3, ZWReportLimits::MaxCardText + 1),
            "page 2, card 1 (label): its \"value\" holds 10001 characters; a card's text may hold at most 10000"},
        {"a long condition",
            Page(1, 1,
                "<conditioned><control><condition>" + QByteArray(20000, '1') + "</condition></control></conditioned>"),
            "page 2, card 2 (conditioned): its \"condition\" holds 20000 characters; a card's text may hold at most "
            "10000"},
        {"a picture's bytes, which are no text",
            Page(1, 1, "<image><value>" + QByteArray(100000, 'A') + "</value></image>"), ""},
    };
    for (const auto& [what, xml, problem] : cases) {
        XmlDocument design;
        ASSERT_TRUE(design.Parse(xml)) << what;
        EXPECT_EQ(ZWReportLimits::Problem(design), QString::fromUtf8(problem)) << what;
    }
}

TEST(TemplateBadInput, FiftyMegabyteTemplate)
{
    // 40 000 labels of 1 KiB text each on eight pages (as many as a page may
    // hold), and one 8 MB embedded "picture" on a ninth.
    QByteArray xml = "<?xml version=\"1.0\"?><design><id>big</id><name>big</name><page>";
    const QByteArray text(1024, 'k');
    for (int i = 0; i < 40000; ++i) {
        if (i > 0 && i % ZWReportLimits::MaxCardsPerPage == 0)
            xml += "</page><page>";
        xml += "<label><x>" + QByteArray::number(i % 200) + "</x><value>" + text + "</value></label>";
    }
    xml += "</page><page><image><value>" + QByteArray(8 * 1024 * 1024, 'A') + "</value></image>";
    xml += "</page></design>";
    ASSERT_GT(xml.size(), 50'000'000);
    QTemporaryDir dir;
    const QString path = dir.filePath(u"big.XRPT"_s);
    ASSERT_TRUE(zwtest::WriteFile(path, xml));
    xml.clear();
    ZWTemplate report;
    QString error;
    ASSERT_TRUE(report.Load(path, &error)) << error.toStdString();
    ASSERT_EQ(report.pages.size(), 9u);
    EXPECT_EQ(report.CountCards(), 40001);
    const auto& image = static_cast<const ZWCardImage&>(*report.pages[8].cards.back());
    EXPECT_EQ(std::tuple(image.bytes.size(), image.HasPicture()), std::tuple(qsizetype(6 * 1024 * 1024), false));
}

} // namespace
