// Reading and writing templates: every field of every card kind and of the
// page, the text encodings, what is left out and what a missing element
// means, and whole files.
#include "host/core/ZWRemote.h"
#include "template/ZWCardConditioned.h"
#include "template/ZWCardDate.h"
#include "template/ZWCardFormule.h"
#include "template/ZWCardImage.h"
#include "template/ZWCardKinds.h"
#include "template/ZWCardLabel.h"
#include "template/ZWTemplate.h"
#include "tests/support/ZWTestSupport.h"
#include "tests/template/TemplateTestSupport.h"

#include <QDir>
#include <QFile>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

using zwtest::RoundTrip;
using zwtest::WriteCard;

void SetCommon(ZWCardControl& card)
{
    card.x = 12.345;
    card.y = -3.5;
    card.width = 40.0;
    card.height = 0.004;
    card.id = QStringLiteral("card-7");
    card.field = QStringLiteral("BEGIN_DATE");
    card.color = 0x0000FF;
    card.backcolor = 0xFF0000;
}

void ExpectCommon(const ZWCardControl& card)
{
    EXPECT_DOUBLE_EQ(card.x, 12.35);
    EXPECT_DOUBLE_EQ(card.y, -3.5);
    EXPECT_DOUBLE_EQ(card.width, 40.0);
    EXPECT_DOUBLE_EQ(card.height, 0.0);
    EXPECT_EQ(card.id, QStringLiteral("card-7"));
    EXPECT_EQ(card.field, QStringLiteral("BEGIN_DATE"));
    EXPECT_EQ(card.color, 0x0000FFu);
    EXPECT_EQ(card.backcolor, 0xFF0000u);
}

void SetLabel(ZWCardLabel& label)
{
    SetCommon(label);
    label.style = 3;
    label.font = QStringLiteral("Times New Roman");
    label.size = 14.256;
    label.orientation = 12.37;
    label.horizontalAlign = 2;
    label.verticalAlign = 8;
    label.styleFile = QStringLiteral("Heading");
    label.value = QStringLiteral("Total <kWh> & \"cost\"");
}

void ExpectLabel(const ZWCardLabel& label)
{
    ExpectCommon(label);
    EXPECT_EQ(label.style, 3);
    EXPECT_EQ(label.font, QStringLiteral("Times New Roman"));
    EXPECT_DOUBLE_EQ(label.size, 14.26);
    EXPECT_DOUBLE_EQ(label.orientation, 12.37);
    EXPECT_EQ(label.horizontalAlign, 2);
    EXPECT_EQ(label.verticalAlign, 8);
    EXPECT_EQ(label.styleFile, QStringLiteral("Heading"));
    EXPECT_EQ(label.value, QStringLiteral("Total <kWh> & \"cost\""));
    EXPECT_EQ(label.layer, 1);
}

QStringList ChildNames(const XmlDocument::XmlNode& element)
{
    QStringList names;
    for (const XmlDocument::XmlNode& child : element.Children())
        names << child.Name();
    return names;
}

TEST(TemplateRoundTrip, LabelKeepsEveryField)
{
    ZWCardLabel label;
    SetLabel(label);
    const auto copy = RoundTrip(label);
    ASSERT_STREQ(copy->GetRuntimeClass(), "ZWCardLabel");
    ExpectLabel(static_cast<const ZWCardLabel&>(*copy));
}

TEST(TemplateRoundTrip, ElementsAreWrittenInTheFileOrder)
{
    ZWCardFormule formule;
    SetLabel(formule);
    XmlDocument document;
    const XmlDocument::XmlNode element = WriteCard(formule, document);
    EXPECT_EQ(element.Name(), QStringLiteral("formule"));
    EXPECT_EQ(ChildNames(element),
        QStringList({u"x"_s, u"y"_s, u"width"_s, u"height"_s, u"color"_s, u"backcolor"_s, u"id"_s, u"field"_s,
            u"font"_s, u"style"_s, u"horizontalAlign"_s, u"verticalAlign"_s, u"orientation"_s, u"size"_s, u"value"_s,
            u"styleFile"_s, u"format"_s, u"thousandSeparator"_s}));

    ZWCardImage image;
    XmlDocument imageDocument;
    EXPECT_EQ(ChildNames(WriteCard(image, imageDocument)),
        QStringList({u"x"_s, u"y"_s, u"width"_s, u"height"_s, u"color"_s, u"backcolor"_s, u"id"_s, u"value"_s,
            u"horizontalAlign"_s, u"verticalAlign"_s, u"maintainAspectRatio"_s, u"maintainRealSize"_s}));
}

TEST(TemplateRoundTrip, TextEncodings)
{
    ZWCardLabel label;
    SetLabel(label);
    XmlDocument document;
    const XmlDocument::XmlNode e = WriteCard(label, document);
    EXPECT_EQ(e.Value(u"x"_s), QStringLiteral("12.35")); // "%.2f"
    EXPECT_EQ(e.Value(u"y"_s), QStringLiteral("-3.50"));
    EXPECT_EQ(e.Value(u"height"_s), QStringLiteral("0.00"));
    EXPECT_EQ(e.Value(u"color"_s), QStringLiteral("0000FF")); // pure red: blue byte first
    EXPECT_EQ(e.Value(u"backcolor"_s), QStringLiteral("FF0000"));
    EXPECT_EQ(e.Value(u"orientation"_s), QStringLiteral("12.37"));
    EXPECT_EQ(e.Value(u"size"_s), QStringLiteral("14.26"));
    EXPECT_EQ(e.Value(u"style"_s), QStringLiteral("3"));
    EXPECT_EQ(e.Value(u"horizontalAlign"_s), QStringLiteral("2"));

    label.color = 0x0A0B0C;
    XmlDocument small;
    EXPECT_EQ(WriteCard(label, small).Value(u"color"_s), QStringLiteral("0A0B0C"));
}

TEST(TemplateRoundTrip, TransparentEmptyIdAndNoFieldAreLeftOut)
{
    ZWCardImage image; // an image card's own default colour is yellow
    image.backcolor = ZW_NO_COLOR;
    image.id.clear();
    image.field.clear();
    XmlDocument document;
    const XmlDocument::XmlNode e = WriteCard(image, document);
    EXPECT_FALSE(e.HasNode(u"backcolor"_s));
    EXPECT_FALSE(e.HasNode(u"id"_s));
    EXPECT_FALSE(e.HasNode(u"field"_s));

    const auto copy = RoundTrip(image);
    EXPECT_EQ(copy->backcolor, ZW_NO_COLOR);
    EXPECT_TRUE(copy->id.isEmpty()); // no new GUID on reading
    EXPECT_TRUE(copy->field.isEmpty());
}

TEST(TemplateRoundTrip, FormuleKeepsItsFormat)
{
    struct Case
    {
        int integerDigits;
        int decimals;
        bool fillIntegerZeros;
        bool fillDecimalZeros;
        bool thousands;
        const char* format;
    };
    const Case cases[] = {
        {3, 2, true, true, true, "03.02"},
        {-1, 3, false, false, false, ".3"},
        {-1, -1, false, false, true, "."},
        {10, 0, false, false, false, ":.0"},
        {12, 9, true, true, false, "0<.09"},
    };
    for (const Case& c : cases) {
        ZWCardFormule formule;
        SetLabel(formule);
        formule.value = QStringLiteral("[Main meter.Active energy] * ElectricityPrice");
        formule.integerDigits = c.integerDigits;
        formule.decimals = c.decimals;
        formule.fillIntegerZeros = c.fillIntegerZeros;
        formule.fillDecimalZeros = c.fillDecimalZeros;
        formule.thousandSeparator = c.thousands;
        XmlDocument document;
        const XmlDocument::XmlNode e = WriteCard(formule, document);
        EXPECT_EQ(e.Value(u"format"_s), QString::fromLatin1(c.format));
        EXPECT_EQ(e.Value(u"thousandSeparator"_s), c.thousands ? QStringLiteral("T") : QStringLiteral("F"));

        const auto copy = RoundTrip(formule);
        const auto& f = static_cast<const ZWCardFormule&>(*copy);
        EXPECT_EQ(f.integerDigits, c.integerDigits) << c.format;
        EXPECT_EQ(f.decimals, c.decimals) << c.format;
        EXPECT_EQ(f.fillIntegerZeros, c.fillIntegerZeros) << c.format;
        EXPECT_EQ(f.fillDecimalZeros, c.fillDecimalZeros) << c.format;
        EXPECT_EQ(f.thousandSeparator, c.thousands) << c.format;
        EXPECT_EQ(f.value, formule.value);
    }
}

TEST(TemplateRoundTrip, FormuleReadingResetsTheFormatAndReadsOnlyT)
{
    XmlDocument document;
    ASSERT_TRUE(document.Parse("<formule><value>1+1</value><thousandSeparator>t</thousandSeparator></formule>"));
    ZWCardFormule formule;
    formule.integerDigits = 5;
    formule.decimals = 1;
    formule.fillIntegerZeros = true;
    formule.fillDecimalZeros = true;
    formule.thousandSeparator = true;
    formule.GetFromXml(document.Root());
    EXPECT_EQ(formule.integerDigits, -1);
    EXPECT_EQ(formule.decimals, 3);
    EXPECT_FALSE(formule.fillIntegerZeros);
    EXPECT_FALSE(formule.fillDecimalZeros);
    EXPECT_FALSE(formule.thousandSeparator); // "t" is not "T"
}

TEST(TemplateRoundTrip, DateKeepsItsPatternAndMissingPatternKeepsTheCurrentOne)
{
    ZWCardDate date;
    SetLabel(date);
    date.format = QStringLiteral("\"on\" dd/MM/yyyy");
    const auto copy = RoundTrip(date);
    ASSERT_STREQ(copy->GetRuntimeClass(), "ZWCardDate");
    EXPECT_EQ(static_cast<const ZWCardDate&>(*copy).format, date.format);
    ExpectLabel(static_cast<const ZWCardLabel&>(*copy));

    XmlDocument document;
    ASSERT_TRUE(document.Parse("<date><x>1</x></date>"));
    ZWCardDate reader;
    reader.format = QStringLiteral("hh:mm");
    reader.GetFromXml(document.Root());
    EXPECT_EQ(reader.format, QStringLiteral("hh:mm"));
}

TEST(TemplateRoundTrip, ImageEmbedsItsBytesUnlessItHasAFile)
{
    const QByteArray png = zwtest::SolidPng(8, 4, Qt::red);
    ZWCardImage image;
    SetCommon(image);
    image.horizontalAlign = 2;
    image.verticalAlign = 4;
    image.maintainAspectRatio = false;
    image.maintainRealSize = true;
    ASSERT_TRUE(image.SetPictureBytes(png));

    XmlDocument document;
    const XmlDocument::XmlNode e = WriteCard(image, document);
    EXPECT_EQ(e.Value(u"value"_s), QString::fromLatin1(png.toBase64()));
    EXPECT_FALSE(e.HasNode(u"valueFile"_s));
    EXPECT_EQ(e.Value(u"maintainAspectRatio"_s), QStringLiteral("F"));
    EXPECT_EQ(e.Value(u"maintainRealSize"_s), QStringLiteral("T"));

    const auto copy = RoundTrip(image);
    const auto& i = static_cast<const ZWCardImage&>(*copy);
    ExpectCommon(i);
    EXPECT_EQ(i.bytes, png);
    EXPECT_EQ(i.ByteCount(), quint32(png.size()));
    EXPECT_EQ(i.PictureSize(), QSize(8, 4));
    EXPECT_TRUE(i.HasPicture());
    EXPECT_EQ(i.horizontalAlign, 2);
    EXPECT_EQ(i.verticalAlign, 4);
    EXPECT_FALSE(i.maintainAspectRatio);
    EXPECT_TRUE(i.maintainRealSize);
    EXPECT_EQ(i.layer, 0);
}

TEST(TemplateRoundTrip, ImageWithAFileWritesOnlyTheName)
{
    zwtest::TempDataDir data;
    const QByteArray png = zwtest::SolidPng(6, 6, Qt::blue);
    ASSERT_TRUE(QDir().mkpath(data.Path() + u"pictures"_s));
    ASSERT_TRUE(zwtest::WriteFile(data.Path() + u"pictures/logo.png"_s, png));

    ZWCardImage image;
    ASSERT_TRUE(image.SetPictureFile(QStringLiteral("pictures\\logo.png"))); // as written on Windows
    EXPECT_EQ(image.bytes, png);
    XmlDocument document;
    const XmlDocument::XmlNode e = WriteCard(image, document);
    EXPECT_EQ(e.Value(u"valueFile"_s), QStringLiteral("pictures\\logo.png"));
    EXPECT_FALSE(e.HasNode(u"value"_s));

    const auto copy = RoundTrip(image);
    const auto& i = static_cast<const ZWCardImage&>(*copy);
    EXPECT_EQ(i.valueFile, QStringLiteral("pictures\\logo.png"));
    EXPECT_EQ(i.PictureSize(), QSize(6, 6));

    // A file that has gone keeps its name, so that saving loses nothing.
    ASSERT_TRUE(QFile::remove(data.Path() + u"pictures/logo.png"_s));
    const auto orphan = RoundTrip(image);
    const auto& o = static_cast<const ZWCardImage&>(*orphan);
    EXPECT_FALSE(o.HasPicture());
    EXPECT_EQ(o.valueFile, QStringLiteral("pictures\\logo.png"));
}

TEST(TemplateRoundTrip, ImageAlignmentsDefaultTo16WhenMissing)
{
    XmlDocument document;
    ASSERT_TRUE(document.Parse("<image><x>1</x></image>"));
    ZWCardImage image;
    image.horizontalAlign = 1;
    image.verticalAlign = 8;
    image.maintainAspectRatio = false;
    image.GetFromXml(document.Root());
    EXPECT_EQ(image.horizontalAlign, 16);
    EXPECT_EQ(image.verticalAlign, 16);
    EXPECT_FALSE(image.maintainAspectRatio); // a missing boolean keeps its value
}

TEST(TemplateRoundTrip, LabelMissingElementsFollowTheirRules)
{
    XmlDocument document;
    ASSERT_TRUE(document.Parse("<label><x>5</x></label>"));
    ZWCardLabel label;
    label.font = QStringLiteral("Courier New");
    label.style = 2;
    label.size = 20.0;
    label.value = QStringLiteral("kept");
    label.styleFile = QStringLiteral("kept style");
    label.horizontalAlign = 1;
    label.verticalAlign = 4;
    label.orientation = 45.0;
    label.color = 0x123456;
    label.backcolor = 0x654321;
    label.GetFromXml(document.Root());
    EXPECT_EQ(label.font, QStringLiteral("Courier New"));
    EXPECT_EQ(label.style, 2);
    EXPECT_DOUBLE_EQ(label.size, 20.0);
    EXPECT_EQ(label.value, QStringLiteral("kept"));
    EXPECT_EQ(label.styleFile, QStringLiteral("kept style"));
    EXPECT_EQ(label.horizontalAlign, 16);
    EXPECT_EQ(label.verticalAlign, 16);
    EXPECT_DOUBLE_EQ(label.orientation, 0.0);
    EXPECT_EQ(label.color, 0x123456u);
    EXPECT_EQ(label.backcolor, ZW_NO_COLOR);
    EXPECT_DOUBLE_EQ(label.x, 5.0);
}

TEST(TemplateRoundTrip, ConditionedKeepsAlternativesInOrderWithItsGeometry)
{
    ZWCardConditioned card;
    SetCommon(card);
    auto label = std::make_unique<ZWCardLabel>();
    label->value = QStringLiteral("Within budget");
    label->x = 99.0;
    auto image = std::make_unique<ZWCardImage>();
    image->SetPictureBytes(zwtest::SolidPng(2, 2, Qt::green));
    auto date = std::make_unique<ZWCardDate>();
    date->format = QStringLiteral("yyyy");
    auto formule = std::make_unique<ZWCardFormule>();
    formule->value = QStringLiteral("1+2");
    const QString ids[] = {label->id, image->id, date->id, formule->id};
    ASSERT_TRUE(card.AddCondition(QStringLiteral("[a.b] <= 3"), std::move(label)));
    ASSERT_TRUE(card.AddCondition(QStringLiteral("[a.b] > 3 && [a.b] < 9"), std::move(image)));
    ASSERT_TRUE(card.AddCondition(QStringLiteral("1 == 1"), std::move(date)));
    ASSERT_TRUE(card.AddCondition(QStringLiteral("!(1 == 1)"), std::move(formule)));

    XmlDocument document;
    const XmlDocument::XmlNode e = WriteCard(card, document);
    const auto controls = e.Nodes(u"control"_s);
    ASSERT_EQ(controls.size(), 4u);
    EXPECT_EQ(controls[0].Value(u"condition"_s), QStringLiteral("[a.b] <= 3"));
    EXPECT_EQ(ChildNames(controls[1]), QStringList({u"condition"_s, u"image"_s}));
    // Every alternative is stored with the conditioned card's rectangle.
    for (const auto& control : controls) {
        const XmlDocument::XmlNode alternative = control.Children().back();
        EXPECT_EQ(alternative.Value(u"x"_s), QStringLiteral("12.35"));
        EXPECT_EQ(alternative.Value(u"height"_s), QStringLiteral("0.00"));
    }

    const auto copy = RoundTrip(card);
    const auto& c = static_cast<const ZWCardConditioned&>(*copy);
    ExpectCommon(c);
    ASSERT_EQ(c.GetNumberOfConditions(), 4);
    const char* kinds[] = {"ZWCardLabel", "ZWCardImage", "ZWCardDate", "ZWCardFormule"};
    for (int i = 0; i < 4; ++i) {
        EXPECT_STREQ(c.GetControl(i)->GetRuntimeClass(), kinds[i]);
        EXPECT_EQ(c.GetControl(i)->id, ids[i]);
        EXPECT_EQ(c.GetCondition(i), card.GetCondition(i));
    }
    EXPECT_EQ(c.level, 0);
    EXPECT_EQ(c.layer, 1); // a label is shown
    EXPECT_EQ(static_cast<const ZWCardDate*>(c.GetControl(2))->format, QStringLiteral("yyyy"));
}

TEST(TemplateRoundTrip, ConditionedReadingSkipsWhatIsNoAlternative)
{
    XmlDocument document;
    ASSERT_TRUE(document.Parse("<conditioned><x>1</x>"
                               "<control><condition>a</condition></control>"
                               "<control><condition>b</condition><conditioned/><image><x>2</x></image>"
                               "<label><x>3</x></label></control>"
                               "<other><label/></other>"
                               "<control><label><value>no condition</value></label></control>"
                               "</conditioned>"));
    ZWCardConditioned card;
    card.GetFromXml(document.Root());
    ASSERT_EQ(card.GetNumberOfConditions(), 2);
    EXPECT_STREQ(card.GetControl(0)->GetRuntimeClass(), "ZWCardLabel"); // "label" is tested before "image"
    EXPECT_EQ(card.GetCondition(0), QStringLiteral("b"));
    EXPECT_EQ(card.GetCondition(1), QString());
    EXPECT_EQ(card.level, 0);

    XmlDocument empty;
    ASSERT_TRUE(empty.Parse("<conditioned/>"));
    ZWCardConditioned none;
    none.GetFromXml(empty.Root());
    EXPECT_EQ(none.level, -1);
    EXPECT_EQ(none.layer, 1);
}

TEST(TemplateRoundTrip, PageProperties)
{
    ZWTemplatePage page;
    page.properties.width = 297.0;
    page.properties.height = 210.0;
    page.properties.rounded = 4.5;
    page.properties.xgrid = -2.5;
    page.properties.ygrid = 7.0;
    const QByteArray png = zwtest::SolidPng(3, 2, Qt::cyan);
    ASSERT_TRUE(page.properties.InitializeBackground(QString::fromLatin1(png.toBase64())));
    page.properties.background->horizontalAlign = 1;
    page.properties.background->verticalAlign = 0;
    page.properties.background->maintainAspectRatio = false;
    page.properties.background->maintainRealSize = true;
    page.cards.push_back(std::make_unique<ZWCardImage>());
    page.cards.push_back(std::make_unique<ZWCardLabel>());
    page.cards.push_back(std::make_unique<ZWCardDate>());
    page.cards.push_back(std::make_unique<ZWCardFormule>());
    page.cards.push_back(std::make_unique<ZWCardConditioned>());

    XmlDocument document;
    document.Create(QStringLiteral("design"));
    page.SaveTemplate(document.Root());
    const XmlDocument::XmlNode e = document.Node(u"/page"_s);
    EXPECT_EQ(ChildNames(e),
        QStringList({u"width"_s, u"height"_s, u"rounded"_s, u"xgrid"_s, u"ygrid"_s, u"background"_s,
            u"horizontalAlign"_s, u"verticalAlign"_s, u"maintainAspectRatio"_s, u"maintainRealSize"_s, u"image"_s,
            u"label"_s, u"date"_s, u"formule"_s, u"conditioned"_s}));
    EXPECT_EQ(e.Value(u"xgrid"_s), QStringLiteral("-2.50"));

    ZWTemplatePage copy;
    copy.SetTemplate(e);
    const ZWGlobalProperties& p = copy.properties;
    EXPECT_DOUBLE_EQ(p.width, 297.0);
    EXPECT_DOUBLE_EQ(p.height, 210.0);
    EXPECT_DOUBLE_EQ(p.rounded, 4.5);
    EXPECT_DOUBLE_EQ(p.xgrid, -2.5); // the sign is kept
    EXPECT_DOUBLE_EQ(p.ygrid, 7.0);
    EXPECT_FALSE(p.IsPortrait());
    EXPECT_TRUE(p.ThereAreBackground());
    EXPECT_EQ(p.background->bytes, png);
    EXPECT_EQ(p.background->horizontalAlign, 1);
    EXPECT_EQ(p.background->verticalAlign, 0);
    EXPECT_FALSE(p.background->maintainAspectRatio);
    EXPECT_TRUE(p.background->maintainRealSize);
    EXPECT_DOUBLE_EQ(p.background->width, 297.0); // covers the page
    EXPECT_DOUBLE_EQ(p.background->height, 210.0);
    ASSERT_EQ(copy.cards.size(), 5u);
    const char* kinds[] = {"ZWCardImage", "ZWCardLabel", "ZWCardDate", "ZWCardFormule", "ZWCardConditioned"};
    for (size_t i = 0; i < 5; ++i)
        EXPECT_STREQ(copy.cards[i]->GetRuntimeClass(), kinds[i]);
}

TEST(TemplateRoundTrip, BackgroundFromAFileWritesOnlyTheName)
{
    zwtest::TempDataDir data;
    ASSERT_TRUE(zwtest::WriteFile(data.Path() + u"paper.png"_s, zwtest::SolidPng(4, 4, Qt::gray)));
    ZWGlobalProperties properties;
    ASSERT_TRUE(properties.InitializeBackgroundFile(QStringLiteral("paper.png")));
    XmlDocument document;
    document.Create(QStringLiteral("page"));
    properties.SaveTemplate(document.Root());
    EXPECT_EQ(document.Value(u"/backgroundFile"_s), QStringLiteral("paper.png"));
    EXPECT_FALSE(document.Root().HasNode(u"background"_s));

    ZWGlobalProperties copy;
    copy.GetFromXml(document.Root());
    EXPECT_TRUE(copy.ThereAreBackground());
    EXPECT_EQ(copy.background->valueFile, QStringLiteral("paper.png"));
}

TEST(TemplateRoundTrip, PageWithoutBackgroundGetsAnEmptyOneCoveringThePage)
{
    struct Case
    {
        const char* xml;
        bool portrait;
    };
    const Case cases[] = {
        {"<page><width>297.00</width><height>210.00</height></page>", false},
        {"<page><width>210.00</width><height>210.00</height></page>", true},
        {"<page><width>100</width><height>150</height></page>", true},
    };
    for (const Case& c : cases) {
        XmlDocument document;
        ASSERT_TRUE(document.Parse(c.xml));
        ZWGlobalProperties properties;
        ASSERT_TRUE(properties.InitializeBackground(QString::fromLatin1(zwtest::SolidPng(2, 2, Qt::red).toBase64())));
        properties.GetFromXml(document.Root());
        EXPECT_EQ(properties.IsPortrait(), c.portrait) << c.xml;
        EXPECT_FALSE(properties.ThereAreBackground());
        EXPECT_TRUE(properties.background->bytes.isEmpty());
        EXPECT_DOUBLE_EQ(properties.background->x, 0.0);
        EXPECT_DOUBLE_EQ(properties.background->width, properties.width);
        EXPECT_DOUBLE_EQ(properties.background->height, properties.height);
        EXPECT_EQ(properties.background->backcolor, 0xFFFFFFu);
    }
}

TEST(TemplateRoundTrip, CopiesAreDeep)
{
    ZWCardConditioned card;
    card.AddCondition(QStringLiteral("1==1"), std::make_unique<ZWCardLabel>());
    const auto clone = card.GetClone();
    auto& c = static_cast<ZWCardConditioned&>(*clone);
    EXPECT_EQ(c.id, card.id);
    ASSERT_EQ(c.GetNumberOfConditions(), 1);
    EXPECT_NE(c.GetControl(0), card.GetControl(0));
    EXPECT_EQ(c.GetControl(0)->id, card.GetControl(0)->id);
    static_cast<ZWCardLabel*>(c.GetControl(0))->value = QStringLiteral("changed");
    EXPECT_TRUE(static_cast<ZWCardLabel*>(card.GetControl(0))->value.isEmpty());

    ZWCardConditioned assigned;
    assigned = card;
    EXPECT_NE(assigned.GetControl(0), card.GetControl(0));

    ZWTemplate report;
    report.AddPage().cards.push_back(std::make_unique<ZWCardLabel>());
    XmlDocument library;
    ASSERT_TRUE(library.Parse("<formules><formule><name>A</name><text>1</text></formule></formules>"));
    report.SetFormules(library.Root());
    ZWTemplate copy = report;
    copy.formules.Root().Children().front().NewChild(QStringLiteral("extra"));
    EXPECT_FALSE(report.formules.Root().Children().front().HasNode(u"extra"_s));
    EXPECT_NE(copy.pages[0].cards[0].get(), report.pages[0].cards[0].get());
}

TEST(TemplateRoundTrip, IdsAreMadeAtConstructionAndKeptByCopies)
{
    ZWCardLabel a;
    ZWCardLabel b;
    EXPECT_FALSE(a.id.isEmpty());
    EXPECT_NE(a.id, b.id);
    EXPECT_TRUE(a.id.startsWith(QLatin1Char('{')) && a.id.endsWith(QLatin1Char('}')));
    ZWCardLabel copy(a);
    EXPECT_EQ(copy.id, a.id);
    copy.InitializeId();
    EXPECT_NE(copy.id, a.id);
}

TEST(TemplateRoundTrip, EveryCardKindIsMadeByClassAndByElementAndKnowsItsAncestors)
{
    struct Row
    {
        const char* className;
        const char* element;
        const char* ancestors; // space-separated, itself included
    };
    const Row rows[] = {
        {"ZWCardControl", "", "ZWCardControl"},
        {"ZWCardImage", "image", "ZWCardImage ZWCardControl"},
        {"ZWCardLabel", "label", "ZWCardLabel ZWCardControl"},
        {"ZWCardDate", "date", "ZWCardDate ZWCardLabel ZWCardControl"},
        {"ZWCardFormule", "formule", "ZWCardFormule ZWCardLabel ZWCardControl"},
        {"ZWCardConditioned", "conditioned", "ZWCardConditioned ZWCardControl"},
    };
    ASSERT_EQ(ZWCardKinds::All().size(), std::size(rows));
    for (const Row& row : rows) {
        const auto card = ZWCardControl::CreateObject(QString::fromLatin1(row.className));
        ASSERT_TRUE(card) << row.className;
        EXPECT_STREQ(card->GetRuntimeClass(), row.className);
        EXPECT_EQ(card->ElementName(), QString::fromLatin1(row.element));
        EXPECT_STREQ(card->GetClone()->GetRuntimeClass(), row.className);
        if (*row.element) {
            const auto fromElement = ZWCardControl::CreateFromElement(QString::fromLatin1(row.element));
            ASSERT_TRUE(fromElement) << row.element;
            EXPECT_STREQ(fromElement->GetRuntimeClass(), row.className);
        }
        const QStringList ancestors = QString::fromLatin1(row.ancestors).split(u' ');
        for (const Row& other : rows) {
            EXPECT_EQ(card->IsKindOf(other.className), ancestors.contains(QString::fromLatin1(other.className)))
                << row.className << " kind of " << other.className;
        }
    }
    EXPECT_FALSE(ZWCardControl::CreateObject(u"ZWCardMissing"_s));
    EXPECT_FALSE(ZWCardControl::CreateFromElement(u"control"_s));
    EXPECT_FALSE(ZWCardControl::CreateFromElement(QString()));
    EXPECT_EQ(ZWCardImage().layer, 0);
    EXPECT_EQ(ZWCardFormule().layer, 1);
    EXPECT_EQ(ZWCardImage().color, 0x00C06060u);
    EXPECT_EQ(ZWCardImage().backcolor, 0x0000FFFFu);
}

TEST(TemplateRoundTrip, WholeTemplateIsWrittenAndReadBack)
{
    ZWTemplate report;
    report.name = QStringLiteral("Rooftop plant");
    report.AddPage().cards.push_back(std::make_unique<ZWCardLabel>());
    ZWTemplatePage& second = report.AddPage();
    second.properties.width = 297.0;
    second.properties.height = 210.0;
    XmlDocument library;
    ASSERT_TRUE(library.Parse("<formules><formule><name>Price</name><text>0.21</text></formule></formules>"));
    report.SetFormules(library.Root());

    XmlDocument document;
    report.Write(document);
    EXPECT_EQ(ChildNames(document.Root()), QStringList({u"id"_s, u"name"_s, u"page"_s, u"page"_s, u"formules"_s}));

    ZWTemplate copy;
    copy.Read(document);
    EXPECT_EQ(copy.id, report.id);
    EXPECT_EQ(copy.name, report.name);
    ASSERT_EQ(copy.pages.size(), 2u);
    EXPECT_EQ(copy.pages[0].cards.size(), 1u);
    EXPECT_FALSE(copy.pages[1].properties.IsPortrait());
    ASSERT_TRUE(copy.HasFormules());
    EXPECT_EQ(
        copy.formules.Node(u"/formule?name=%s?"_s, QStringLiteral("Price")).Value(u"text"_s), QStringLiteral("0.21"));
    EXPECT_EQ(copy.ToXml(), report.ToXml());

    // A template without a library writes none.
    ZWTemplate plain;
    XmlDocument plainDocument;
    plain.Write(plainDocument);
    EXPECT_FALSE(plainDocument.Root().HasNode(u"formules"_s));
}

TEST(TemplateRoundTrip, MissingIdMakesANewOne)
{
    XmlDocument document;
    ASSERT_TRUE(document.Parse("<design><name>n</name><page/></design>"));
    ZWTemplate a;
    a.Read(document);
    ZWTemplate b;
    b.Read(document);
    EXPECT_FALSE(a.id.isEmpty());
    EXPECT_NE(a.id, b.id);
    ASSERT_EQ(a.pages.size(), 1u);
    EXPECT_DOUBLE_EQ(a.pages[0].properties.width, 210.0);
    EXPECT_DOUBLE_EQ(a.pages[0].properties.xgrid, -3.0);
}

TEST(TemplateRoundTrip, ExamplesResaveByteForByte)
{
    for (const char* name : {"examples/reports/MonthlyEnergy.XRPT", "examples/reports/LandscapeSummary.XRPT"}) {
        const QString path = zwtest::SourcePath(QString::fromLatin1(name));
        const QByteArray original = zwtest::ReadFile(path);
        ASSERT_FALSE(original.isEmpty()) << name;
        ZWTemplate report;
        ASSERT_TRUE(report.Load(path)) << name;
        QTemporaryDir dir;
        const QString once = dir.filePath(u"once.XRPT"_s);
        const QString twice = dir.filePath(u"twice.XRPT"_s);
        ASSERT_TRUE(report.Save(once));
        ZWTemplate again;
        ASSERT_TRUE(again.Load(once));
        ASSERT_TRUE(again.Save(twice));
        EXPECT_EQ(zwtest::ReadFile(once), zwtest::ReadFile(twice)) << name;
        EXPECT_EQ(zwtest::ReadFile(once), original) << name;
    }
}

TEST(TemplateRoundTrip, MonthlyExampleHoldsWhatTheDemonstrationNeeds)
{
    ZWTemplate report;
    ASSERT_TRUE(report.Load(zwtest::SourcePath(u"examples/reports/MonthlyEnergy.XRPT"_s)));
    ASSERT_EQ(report.pages.size(), 2u);
    ASSERT_TRUE(report.HasFormules());
    EXPECT_TRUE(report.pages[0].properties.ThereAreBackground());
    int formules = 0, dates = 0, images = 0, conditioned = 0;
    QStringList fields;
    for (const auto& page : report.pages)
        for (const auto& card : page.cards) {
            formules += card->IsKindOf("ZWCardFormule");
            dates += card->IsKindOf("ZWCardDate");
            images += card->IsKindOf("ZWCardImage") && static_cast<ZWCardImage&>(*card).HasPicture();
            conditioned += card->IsKindOf("ZWCardConditioned");
            if (!card->field.isEmpty())
                fields << card->field;
        }
    EXPECT_GE(formules, 10);
    EXPECT_TRUE(fields.contains(u"BEGIN_DATE"_s) && fields.contains(u"END_DATE"_s));
    EXPECT_GE(images, 2);
    EXPECT_GE(conditioned, 2);
    const QByteArray xml = zwtest::ReadFile(zwtest::SourcePath(u"examples/reports/MonthlyEnergy.XRPT"_s));
    for (const char* variable : {"[Main meter.Active energy]", "[Gas meter.Volume]", "[Water meter.Volume]",
             "[PV inverter.Energy]", "[Main meter.Active power]", "[Office.Temperature]"})
        EXPECT_TRUE(xml.contains(variable)) << variable;
}

TEST(TemplateSave, KeepsThePreviousVersionBesideTheReport)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(u"Plant.XRPT"_s);
    ZWTemplate report;
    report.name = QStringLiteral("first");
    ASSERT_TRUE(report.Save(path));
    EXPECT_FALSE(QFile::exists(ZWTemplate::BackupPath(path)));
    report.name = QStringLiteral("second");
    ASSERT_TRUE(report.Save(path));
    ZWTemplate previous;
    ASSERT_TRUE(previous.Load(ZWTemplate::BackupPath(path)));
    EXPECT_EQ(previous.name, QStringLiteral("first"));
    ZWTemplate current;
    ASSERT_TRUE(current.Load(path));
    EXPECT_EQ(current.name, QStringLiteral("second"));
    // The report list searches "*.XRPT": the backup must not show up there.
    EXPECT_EQ(QDir(dir.path()).entryList({QStringLiteral("*.XRPT")}, QDir::Files), QStringList({u"Plant.XRPT"_s}));
}

TEST(TemplateSave, NoBackupNoSave)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(u"Plant.XRPT"_s);
    ZWTemplate report;
    report.name = QStringLiteral("good");
    ASSERT_TRUE(report.Save(path));
    const QByteArray before = zwtest::ReadFile(path);
    // The backup cannot be written (a folder has its name): the report stays.
    ASSERT_TRUE(QDir().mkpath(ZWTemplate::BackupPath(path)));
    report.name = QStringLiteral("changed");
    QString error;
    EXPECT_FALSE(report.Save(path, &error));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_EQ(zwtest::ReadFile(path), before);
    // Nor does a save into a folder that does not exist create anything.
    EXPECT_FALSE(report.Save(dir.filePath(u"missing/Plant.XRPT"_s)));
}

} // namespace
