// Reading and writing templates: every field of every card kind and of the page,
// what is left out, what a missing element means, and whole files.
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

using zwtest::CardXml;
using zwtest::RoundTrip;
using zwtest::WriteCard;

void SetCommon(ZWCardControl& card)
{
    zwtest::Place(card, 12.345, -3.5, 40.0, 0.004);
    std::tie(card.id, card.field, card.color, card.backcolor)
        = std::tuple(u"card-7"_s, u"BEGIN_DATE"_s, 0x0000FF, 0xFF0000);
}

void SetLabel(ZWCardLabel& label)
{
    SetCommon(label);
    std::tie(label.style, label.font, label.size, label.orientation, label.horizontalAlign, label.verticalAlign,
        label.styleFile, label.value)
        = std::tuple(3, u"Times New Roman"_s, 14.256, 12.37, 2, 8, u"Heading"_s, u"Total <kWh> & \"cost\""_s);
}

// "%.2f" numbers, colours as BGR hex (pure red is "0000FF"), in file order.
const QString kCommonXml = u"<x>12.35</x><y>-3.50</y><width>40.00</width><height>0.00</height><color>0000FF</color>"
                           u"<backcolor>FF0000</backcolor><id>card-7</id><field>BEGIN_DATE</field>"_s;
const QString kLabelXml = kCommonXml
    + u"<font>Times New Roman</font><style>3</style><horizontalAlign>2</horizontalAlign>"
      u"<verticalAlign>8</verticalAlign><orientation>12.37</orientation><size>14.26</size>"
      u"<value>Total &lt;kWh> &amp; \"cost\"</value><styleFile>Heading</styleFile>"_s;

QStringList ChildNames(const XmlDocument::XmlNode& element)
{
    QStringList names;
    for (const XmlDocument::XmlNode& child : element.Children())
        names << child.Name();
    return names;
}

TEST(TemplateRoundTrip, TextCardsWriteEveryFieldInFileOrderAndReadItBack)
{
    ZWCardLabel label;
    SetLabel(label);
    EXPECT_EQ(CardXml(label), u"<label>"_s + kLabelXml + u"</label>"_s);
    auto copy = RoundTrip(label);
    EXPECT_EQ(CardXml(*copy), CardXml(label));
    EXPECT_EQ(copy->layer, 1);

    // The number format is written as built by the format tests.
    ZWCardFormule formule;
    SetLabel(formule);
    formule.integerDigits = 12;
    formule.fillIntegerZeros = formule.thousandSeparator = true;
    EXPECT_EQ(CardXml(formule),
        u"<formule>"_s + kLabelXml + u"<format>0&lt;.3</format><thousandSeparator>T</thousandSeparator></formule>"_s);
    EXPECT_EQ(CardXml(*RoundTrip(formule)), CardXml(formule));

    ZWCardDate date;
    SetLabel(date);
    date.format = u"\"on\" dd/MM/yyyy"_s;
    EXPECT_EQ(CardXml(*RoundTrip(date)), CardXml(date));
    EXPECT_TRUE(CardXml(date).contains(u"<format>\"on\" dd/MM/yyyy</format>"_s));

    label.color = 0x0A0B0C;
    EXPECT_TRUE(CardXml(label).contains(u"<color>0A0B0C</color>"_s));
}

TEST(TemplateRoundTrip, MissingElementsFollowTheirRules)
{
    const auto read = [](ZWCardControl& card, const char* xml) {
        XmlDocument document;
        ASSERT_TRUE(document.Parse(xml));
        card.GetFromXml(document.Root());
    };
    // A label keeps its text fields and its colour, loses its background
    // colour, id and field, and centres and straightens.
    ZWCardLabel label;
    SetLabel(label);
    label.color = 0x123456;
    label.orientation = 45.0;
    read(label, "<label><x>5</x></label>");
    EXPECT_EQ(CardXml(label),
        u"<label><x>5.00</x><y>-3.50</y><width>40.00</width><height>0.00</height><color>123456</color>"
        u"<font>Times New Roman</font><style>3</style>"
        u"<horizontalAlign>16</horizontalAlign><verticalAlign>16</verticalAlign><orientation>0.00</orientation>"
        u"<size>14.26</size><value>Total &lt;kWh> &amp; \"cost\"</value><styleFile>Heading</styleFile></label>"_s);

    // A formule's format goes back to its default; only "T" is true.
    ZWCardFormule formule;
    std::tie(formule.integerDigits, formule.decimals) = std::tuple(5, 1);
    formule.fillIntegerZeros = formule.fillDecimalZeros = formule.thousandSeparator = true;
    read(formule, "<formule><value>1+1</value><thousandSeparator>t</thousandSeparator></formule>");
    EXPECT_EQ(std::tuple(formule.integerDigits, formule.decimals, formule.fillIntegerZeros, formule.fillDecimalZeros,
                  formule.thousandSeparator),
        std::tuple(-1, 3, false, false, false));

    // A date keeps its pattern.
    ZWCardDate date;
    date.format = u"hh:mm"_s;
    read(date, "<date><x>1</x></date>");
    EXPECT_EQ(date.format, u"hh:mm"_s);

    // A picture centres; a missing boolean keeps its value.
    ZWCardImage image;
    std::tie(image.horizontalAlign, image.verticalAlign, image.maintainAspectRatio) = std::tuple(1, 8, false);
    read(image, "<image><x>1</x></image>");
    EXPECT_EQ(
        std::tuple(image.horizontalAlign, image.verticalAlign, image.maintainAspectRatio), std::tuple(16, 16, false));
}

TEST(TemplateRoundTrip, ImageEmbedsItsBytesUnlessItHasAFileWhoseNameIsKeptEvenWhenItHasGone)
{
    const QByteArray png = zwtest::SolidPng(8, 4, Qt::red);
    ZWCardImage image;
    SetCommon(image);
    std::tie(image.horizontalAlign, image.verticalAlign, image.maintainAspectRatio, image.maintainRealSize)
        = std::tuple(2, 4, false, true);
    ASSERT_TRUE(image.SetPictureBytes(png));
    EXPECT_EQ(CardXml(image),
        u"<image>"_s + kCommonXml + u"<value>"_s + QString::fromLatin1(png.toBase64())
            + u"</value><horizontalAlign>2</horizontalAlign><verticalAlign>4</verticalAlign>"
              u"<maintainAspectRatio>F</maintainAspectRatio><maintainRealSize>T</maintainRealSize></image>"_s);
    auto copy = RoundTrip(image);
    EXPECT_EQ(CardXml(*copy), CardXml(image));
    const auto& i = static_cast<const ZWCardImage&>(*copy);
    EXPECT_EQ(std::tuple(i.ByteCount(), i.PictureSize(), i.layer), std::tuple(quint32(png.size()), QSize(8, 4), 0));

    // Transparent, no id and no field: left out, and not made up on reading.
    image.backcolor = ZW_NO_COLOR;
    image.id.clear();
    image.field.clear();
    EXPECT_FALSE(CardXml(image).contains(u"<backcolor>"_s) || CardXml(image).contains(u"<id>"_s)
        || CardXml(image).contains(u"<field>"_s))
        << CardXml(image).toStdString();
    copy = RoundTrip(image);
    EXPECT_EQ(CardXml(*copy), CardXml(image));
    EXPECT_EQ(std::tuple(copy->backcolor, copy->id), std::tuple(ZW_NO_COLOR, QString()));

    zwtest::TempDataDir data;
    ASSERT_TRUE(QDir().mkpath(data.Path() + u"pictures"_s));
    const QByteArray logo = zwtest::SolidPng(6, 6, Qt::blue);
    ASSERT_TRUE(zwtest::WriteFile(data.Path() + u"pictures/logo.png"_s, logo));
    ZWCardImage linked;
    ASSERT_TRUE(linked.SetPictureFile(u"pictures\\logo.png"_s)); // as written on Windows
    EXPECT_EQ(linked.bytes, logo);
    EXPECT_TRUE(CardXml(linked).contains(u"<valueFile>pictures\\logo.png</valueFile>"_s)
        && !CardXml(linked).contains(u"<value>"_s));
    EXPECT_EQ(static_cast<const ZWCardImage&>(*RoundTrip(linked)).PictureSize(), QSize(6, 6));
    // A file that has gone keeps its name, so that saving loses nothing.
    ASSERT_TRUE(QFile::remove(data.Path() + u"pictures/logo.png"_s));
    const auto orphan = RoundTrip(linked);
    EXPECT_FALSE(static_cast<const ZWCardImage&>(*orphan).HasPicture());
    EXPECT_EQ(CardXml(*orphan), CardXml(linked));
}

TEST(TemplateRoundTrip, ConditionedKeepsAlternativesInOrderWithItsGeometryAndSkipsWhatIsNone)
{
    ZWCardConditioned card;
    SetCommon(card);
    auto label = std::make_unique<ZWCardLabel>();
    label->value = u"Within budget"_s;
    label->x = 99.0;
    auto image = std::make_unique<ZWCardImage>();
    image->SetPictureBytes(zwtest::SolidPng(2, 2, Qt::green));
    auto date = std::make_unique<ZWCardDate>();
    date->format = u"yyyy"_s;
    auto formule = std::make_unique<ZWCardFormule>();
    formule->value = u"1+2"_s;
    ASSERT_TRUE(card.AddCondition(u"[a.b] <= 3"_s, std::move(label)));
    ASSERT_TRUE(card.AddCondition(u"[a.b] > 3 && [a.b] < 9"_s, std::move(image)));
    ASSERT_TRUE(card.AddCondition(u"1 == 1"_s, std::move(date)));
    ASSERT_TRUE(card.AddCondition(u"!(1 == 1)"_s, std::move(formule)));

    XmlDocument document;
    const auto controls = WriteCard(card, document).Nodes(u"control"_s);
    ASSERT_EQ(controls.size(), 4u);
    EXPECT_EQ(controls[0].Value(u"condition"_s), u"[a.b] <= 3"_s);
    EXPECT_EQ(ChildNames(controls[1]), QStringList({u"condition"_s, u"image"_s}));
    // Every alternative is stored with the conditioned card's rectangle.
    for (const auto& control : controls) {
        const XmlDocument::XmlNode alternative = control.Children().back();
        EXPECT_EQ(alternative.Value(u"x"_s), u"12.35"_s);
        EXPECT_EQ(alternative.Value(u"height"_s), u"0.00"_s);
    }

    const auto copy = RoundTrip(card);
    EXPECT_EQ(CardXml(*copy), CardXml(card));
    const auto& c = static_cast<const ZWCardConditioned&>(*copy);
    ASSERT_EQ(c.GetNumberOfConditions(), 4);
    EXPECT_STREQ(c.GetControl(3)->GetRuntimeClass(), "ZWCardFormule");
    EXPECT_EQ(std::tuple(c.level, c.layer), std::tuple(0, 1)); // a label is shown

    // Reading skips what is no alternative.
    ASSERT_TRUE(document.Parse("<conditioned><x>1</x>"
                               "<control><condition>a</condition></control>"
                               "<control><condition>b</condition><conditioned/><image><x>2</x></image>"
                               "<label><x>3</x></label></control>"
                               "<other><label/></other>"
                               "<control><label><value>no condition</value></label></control>"
                               "</conditioned>"));
    ZWCardConditioned read;
    read.GetFromXml(document.Root());
    ASSERT_EQ(read.GetNumberOfConditions(), 2);
    EXPECT_STREQ(read.GetControl(0)->GetRuntimeClass(), "ZWCardLabel"); // "label" is tested before "image"
    EXPECT_EQ(std::tuple(read.GetCondition(0), read.GetCondition(1), read.level), std::tuple(u"b"_s, QString(), 0));

    ASSERT_TRUE(document.Parse("<conditioned/>"));
    ZWCardConditioned none;
    none.GetFromXml(document.Root());
    EXPECT_EQ(std::tuple(none.level, none.layer), std::tuple(-1, 1));
}

TEST(TemplateRoundTrip, PagePropertiesAndBackgroundAndAPageWithoutOneGetsAnEmptyOneCoveringIt)
{
    ZWTemplatePage page;
    ZWGlobalProperties& p = page.properties;
    std::tie(p.width, p.height, p.rounded, p.xgrid, p.ygrid) = std::tuple(297.0, 210.0, 4.5, -2.5, 7.0);
    ASSERT_TRUE(p.InitializeBackground(QString::fromLatin1(zwtest::SolidPng(3, 2, Qt::cyan).toBase64())));
    ZWCardImage& b = *p.background;
    std::tie(b.horizontalAlign, b.verticalAlign, b.maintainAspectRatio, b.maintainRealSize)
        = std::tuple(1, 0, false, true);
    for (const char* kind : {"ZWCardImage", "ZWCardLabel", "ZWCardDate", "ZWCardFormule", "ZWCardConditioned"})
        page.cards.push_back(ZWCardControl::CreateObject(QString::fromLatin1(kind)));

    XmlDocument document;
    document.Create(u"design"_s);
    page.SaveTemplate(document.Root());
    const XmlDocument::XmlNode e = document.Node(u"/page"_s);
    EXPECT_EQ(ChildNames(e),
        QStringList({u"width"_s, u"height"_s, u"rounded"_s, u"xgrid"_s, u"ygrid"_s, u"background"_s,
            u"horizontalAlign"_s, u"verticalAlign"_s, u"maintainAspectRatio"_s, u"maintainRealSize"_s, u"image"_s,
            u"label"_s, u"date"_s, u"formule"_s, u"conditioned"_s}));
    EXPECT_EQ(e.Value(u"xgrid"_s), u"-2.50"_s); // the sign is kept

    ZWTemplatePage copy;
    copy.SetTemplate(e);
    XmlDocument again;
    again.Create(u"design"_s);
    copy.SaveTemplate(again.Root());
    EXPECT_EQ(again.ToXml(), document.ToXml());
    // The background covers the page.
    EXPECT_EQ(QSizeF(copy.properties.background->width, copy.properties.background->height), QSizeF(297.0, 210.0));

    // A background from a file writes only its name.
    zwtest::TempDataDir data;
    ASSERT_TRUE(zwtest::WriteFile(data.Path() + u"paper.png"_s, zwtest::SolidPng(4, 4, Qt::gray)));
    ZWGlobalProperties properties;
    ASSERT_TRUE(properties.InitializeBackgroundFile(u"paper.png"_s));
    document.Create(u"page"_s);
    properties.SaveTemplate(document.Root());
    EXPECT_EQ(document.Value(u"/backgroundFile"_s), u"paper.png"_s);
    EXPECT_FALSE(document.Root().HasNode(u"background"_s));
    properties.background->valueFile.clear();
    properties.GetFromXml(document.Root());
    EXPECT_TRUE(properties.ThereAreBackground());
    EXPECT_EQ(properties.background->valueFile, u"paper.png"_s);

    // A page without background gets an empty one covering it.
    const std::pair<const char*, bool> cases[] = {{"<page><width>297.00</width><height>210.00</height></page>", false},
        {"<page><width>210.00</width><height>210.00</height></page>", true},
        {"<page><width>100</width><height>150</height></page>", true}};
    for (const auto& [xml, portrait] : cases) {
        XmlDocument document;
        ASSERT_TRUE(document.Parse(xml));
        ZWGlobalProperties properties;
        ASSERT_TRUE(properties.InitializeBackground(QString::fromLatin1(zwtest::SolidPng(2, 2, Qt::red).toBase64())));
        properties.GetFromXml(document.Root());
        const ZWCardImage& b = *properties.background;
        EXPECT_EQ(std::tuple(properties.IsPortrait(), properties.ThereAreBackground(), b.bytes.isEmpty(), b.backcolor),
            std::tuple(portrait, false, true, 0xFFFFFFu))
            << xml;
        EXPECT_EQ(QRectF(b.x, b.y, b.width, b.height), QRectF(0, 0, properties.width, properties.height));
    }
}

TEST(TemplateRoundTrip, CopiesAreDeepAndKeepTheIdsThatConstructionMakes)
{
    ZWCardLabel a, b;
    EXPECT_NE(a.id, b.id);
    EXPECT_TRUE(a.id.startsWith(QLatin1Char('{')) && a.id.endsWith(QLatin1Char('}')));
    ZWCardLabel copyOfA(a);
    EXPECT_EQ(copyOfA.id, a.id);
    copyOfA.InitializeId();
    EXPECT_NE(copyOfA.id, a.id);

    ZWCardConditioned card;
    card.AddCondition(u"1==1"_s, std::make_unique<ZWCardLabel>());
    const auto clone = card.GetClone();
    auto& c = static_cast<ZWCardConditioned&>(*clone);
    EXPECT_EQ(c.id, card.id);
    ASSERT_EQ(c.GetNumberOfConditions(), 1);
    EXPECT_NE(c.GetControl(0), card.GetControl(0));
    EXPECT_EQ(c.GetControl(0)->id, card.GetControl(0)->id);
    static_cast<ZWCardLabel*>(c.GetControl(0))->value = u"changed"_s;
    EXPECT_TRUE(static_cast<ZWCardLabel*>(card.GetControl(0))->value.isEmpty());
    ZWCardConditioned assigned;
    assigned = card;
    EXPECT_NE(assigned.GetControl(0), card.GetControl(0));
}

TEST(TemplateRoundTrip, EveryCardKindIsMadeByClassAndByElementAndKnowsItsAncestors)
{
    // class, element, ancestors (itself included)
    const std::tuple<const char*, const char*, const char*> rows[] = {
        {"ZWCardControl", "", "ZWCardControl"},
        {"ZWCardImage", "image", "ZWCardImage ZWCardControl"},
        {"ZWCardLabel", "label", "ZWCardLabel ZWCardControl"},
        {"ZWCardDate", "date", "ZWCardDate ZWCardLabel ZWCardControl"},
        {"ZWCardFormule", "formule", "ZWCardFormule ZWCardLabel ZWCardControl"},
        {"ZWCardConditioned", "conditioned", "ZWCardConditioned ZWCardControl"},
        {"ZWCardChart", "chart", "ZWCardChart ZWCardControl"},
        {"ZWCardTable", "table", "ZWCardTable ZWCardControl"},
    };
    ASSERT_EQ(ZWCardKinds::All().size(), std::size(rows));
    for (const auto& [className, element, ancestorList] : rows) {
        SCOPED_TRACE(className);
        const auto card = ZWCardControl::CreateObject(QString::fromLatin1(className));
        ASSERT_TRUE(card);
        EXPECT_STREQ(card->GetRuntimeClass(), className);
        EXPECT_EQ(card->ElementName(), QString::fromLatin1(element));
        EXPECT_STREQ(card->GetClone()->GetRuntimeClass(), className);
        if (*element) {
            const auto fromElement = ZWCardControl::CreateFromElement(QString::fromLatin1(element));
            ASSERT_TRUE(fromElement);
            EXPECT_STREQ(fromElement->GetRuntimeClass(), className);
        }
        const QStringList ancestors = QString::fromLatin1(ancestorList).split(u' ');
        for (const auto& other : rows)
            EXPECT_EQ(card->IsKindOf(std::get<0>(other)), ancestors.contains(QString::fromLatin1(std::get<0>(other))))
                << "kind of " << std::get<0>(other);
    }
    EXPECT_FALSE(ZWCardControl::CreateObject(u"ZWCardMissing"_s) || ZWCardControl::CreateFromElement(u"control"_s)
        || ZWCardControl::CreateFromElement(QString()));
    EXPECT_EQ(std::tuple(ZWCardImage().color, ZWCardImage().backcolor), std::tuple(0x00C06060u, 0x0000FFFFu));
}

TEST(TemplateRoundTrip, WholeTemplateIsWrittenAndReadBack)
{
    ZWTemplate report;
    report.name = u"Rooftop plant"_s;
    report.AddPage().cards.push_back(std::make_unique<ZWCardLabel>());
    ZWTemplatePage& second = report.AddPage();
    std::tie(second.properties.width, second.properties.height) = std::tuple(297.0, 210.0);
    XmlDocument library;
    ASSERT_TRUE(library.Parse("<formules><formule><name>Price</name><text>0.21</text></formule></formules>"));
    report.SetFormules(library.Root());

    XmlDocument document;
    report.Write(document);
    EXPECT_EQ(ChildNames(document.Root()), QStringList({u"id"_s, u"name"_s, u"page"_s, u"page"_s, u"formules"_s}));
    ZWTemplate copy;
    copy.Read(document);
    EXPECT_EQ(copy.formules.Node(u"/formule?name=%s?"_s, u"Price"_s).Value(u"text"_s), u"0.21"_s);
    EXPECT_EQ(copy.ToXml(), report.ToXml());
    // A copy of a template is deep.
    ZWTemplate deep = report;
    deep.formules.Root().Children().front().NewChild(u"extra"_s);
    EXPECT_FALSE(report.formules.Root().Children().front().HasNode(u"extra"_s));
    EXPECT_NE(deep.pages[0].cards[0].get(), report.pages[0].cards[0].get());

    // A template without a library writes none; one without an id gets a new one.
    ZWTemplate plain;
    plain.Write(document);
    EXPECT_FALSE(document.Root().HasNode(u"formules"_s));
    ASSERT_TRUE(document.Parse("<design><name>n</name><page/></design>"));
    ZWTemplate a, b;
    a.Read(document);
    b.Read(document);
    EXPECT_FALSE(a.id.isEmpty());
    EXPECT_NE(a.id, b.id);
    ASSERT_EQ(a.pages.size(), 1u);
    EXPECT_EQ(std::tuple(a.pages[0].properties.width, a.pages[0].properties.xgrid), std::tuple(210.0, -3.0));
}

TEST(TemplateRoundTrip, ExamplesResaveByteForByte)
{
    for (const char* name : {"examples/reports/MonthlyEnergy.XRPT", "examples/reports/LandscapeSummary.XRPT"}) {
        const QString path = zwtest::SourcePath(QString::fromLatin1(name));
        ZWTemplate report;
        ASSERT_TRUE(report.Load(path)) << name;
        QTemporaryDir dir;
        const QString once = dir.filePath(u"once.XRPT"_s);
        ASSERT_TRUE(report.Save(once));
        EXPECT_EQ(zwtest::ReadFile(once), zwtest::ReadFile(path)) << name;
    }
}

TEST(TemplateSave, KeepsThePreviousVersionBesideTheReportAndWithoutItDoesNotSave)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(u"Plant.XRPT"_s);
    ZWTemplate report;
    report.name = u"first"_s;
    ASSERT_TRUE(report.Save(path));
    EXPECT_FALSE(QFile::exists(ZWTemplate::BackupPath(path)));
    report.name = u"second"_s;
    ASSERT_TRUE(report.Save(path));
    ZWTemplate backup, loaded;
    ASSERT_TRUE(backup.Load(ZWTemplate::BackupPath(path)) && loaded.Load(path));
    EXPECT_EQ(std::tuple(backup.name, loaded.name), std::tuple(u"first"_s, u"second"_s));
    // The report list searches "*.XRPT": the backup must not show up there.
    EXPECT_EQ(QDir(dir.path()).entryList({u"*.XRPT"_s}, QDir::Files), QStringList({u"Plant.XRPT"_s}));

    // The backup cannot be written (a folder has its name): the report stays.
    const QByteArray before = zwtest::ReadFile(path);
    ASSERT_TRUE(QFile::remove(ZWTemplate::BackupPath(path)));
    ASSERT_TRUE(QDir().mkpath(ZWTemplate::BackupPath(path)));
    report.name = u"changed"_s;
    QString error;
    EXPECT_FALSE(report.Save(path, &error));
    EXPECT_EQ(std::tuple(error.isEmpty(), zwtest::ReadFile(path)), std::tuple(false, before));
    // Nor does a save into a folder that does not exist create anything.
    EXPECT_FALSE(report.Save(dir.filePath(u"missing/Plant.XRPT"_s)));
}

} // namespace
