#include "app/demo/ZWExampleReports.h"

#include "host/core/ZWSimpleXml.h"
#include "template/ZWCardChart.h"
#include "template/ZWCardConditioned.h"
#include "template/ZWCardDate.h"
#include "template/ZWCardFormule.h"
#include "template/ZWCardImage.h"
#include "template/ZWCardLabel.h"
#include "template/ZWCardTable.h"

#include <QBuffer>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

namespace {

constexpr quint32 Black = ZWRGB(0, 0, 0);
constexpr quint32 DarkBlue = ZWRGB(20, 50, 100);
constexpr quint32 Grey = ZWRGB(90, 90, 90);
constexpr quint32 Green = ZWRGB(0, 130, 60);
constexpr quint32 Red = ZWRGB(200, 30, 30);
constexpr quint32 RowShade = ZWRGB(232, 240, 250);
constexpr int Bold = 1;
constexpr int Italic = 2;

QByteArray Png(const QImage& image)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG", 9);
    return bytes;
}

// A page background for a page of widthMm × heightMm: a white sheet with a
// blue band 32 mm high at the top and a green rule 14 mm above the bottom,
// drawn at 2 pixels per millimetre and stretched over the page.
QByteArray BackgroundPng(int widthMm, int heightMm)
{
    const int width = widthMm * 2, height = heightMm * 2;
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter p(&image);
    QLinearGradient band(0, 0, width, 0);
    band.setColorAt(0.0, QColor(20, 50, 100));
    band.setColorAt(1.0, QColor(60, 120, 190));
    p.fillRect(QRect(0, 0, width, 64), band);
    p.fillRect(QRect(0, 64, width, 2), QColor(0, 130, 60));
    p.fillRect(QRect(20, height - 28, width - 40, 2), QColor(0, 130, 60));
    p.end();
    return Png(image);
}

// Appends a default card of kind Card at (x, y), w × h mm, to the page.
template <typename Card> Card* Add(ZWTemplatePage& page, double x, double y, double w, double h)
{
    auto card = std::make_unique<Card>();
    card->x = x;
    card->y = y;
    card->width = w;
    card->height = h;
    Card* raw = card.get();
    page.cards.push_back(std::move(card));
    return raw;
}

ZWCardLabel* AddLabel(ZWTemplatePage& page, double x, double y, double w, double h, const QString& text,
    double size = 10.0, int style = 0, quint32 colour = Black, int horizontal = ZWCardLabel::AlignLeft)
{
    ZWCardLabel* card = Add<ZWCardLabel>(page, x, y, w, h);
    card->value = text;
    card->size = size;
    card->style = style;
    card->color = colour;
    card->horizontalAlign = horizontal;
    return card;
}

ZWCardFormule* AddFormule(ZWTemplatePage& page, double x, double y, double w, double h, const QString& formula,
    const QString& format, bool thousands = true)
{
    ZWCardFormule* card = Add<ZWCardFormule>(page, x, y, w, h);
    card->value = formula;
    card->SetFormat(format);
    card->thousandSeparator = thousands;
    card->style = Bold;
    card->color = DarkBlue;
    card->horizontalAlign = ZWCardLabel::AlignRight;
    return card;
}

ZWCardDate* AddDate(ZWTemplatePage& page, double x, double y, double w, double h, const QString& field,
    const QString& format, double size = 10.0)
{
    ZWCardDate* card = Add<ZWCardDate>(page, x, y, w, h);
    card->field = field;
    card->format = format;
    card->size = size;
    card->horizontalAlign = ZWCardLabel::AlignLeft;
    return card;
}

void AddShade(ZWTemplatePage& page, double x, double y, double w, double h, quint32 colour)
{
    // A filled rectangle: an image card without a picture paints its colour.
    ZWCardImage* card = Add<ZWCardImage>(page, x, y, w, h);
    card->backcolor = colour;
    card->color = colour;
}

void AddLogo(ZWTemplatePage& page, double x, double y, double w, double h)
{
    ZWCardImage* logo = Add<ZWCardImage>(page, x, y, w, h);
    logo->backcolor = ZW_NO_COLOR;
    logo->horizontalAlign = ZWCardImage::AlignLeft;
    logo->SetPictureBytes(ZWExampleReports::LogoPng());
}

std::unique_ptr<ZWCardLabel> Verdict(const QString& text, quint32 colour)
{
    auto label = std::make_unique<ZWCardLabel>();
    label->value = text;
    label->size = 12.0;
    label->style = Bold;
    label->color = colour;
    return label;
}

// One row of a table: a shaded band on even rows, the name, the value and
// its unit.
void AddRow(ZWTemplatePage& page, int row, double top, const QString& name, const QString& formula,
    const QString& format, const QString& unit)
{
    const double y = top + row * 9.0;
    if (row % 2 == 0)
        AddShade(page, 20.0, y, 170.0, 9.0, RowShade);
    AddLabel(page, 24.0, y, 90.0, 9.0, name);
    AddFormule(page, 114.0, y, 46.0, 9.0, formula, format);
    AddLabel(page, 162.0, y, 26.0, 9.0, unit, 9.0, 0, Grey);
}

void SetLibrary(ZWTemplate& report, const std::vector<std::pair<QString, QString>>& formulas)
{
    ZWSimpleXml xml;
    xml.Open(QStringLiteral("formules"));
    for (const auto& [name, text] : formulas) {
        xml.Open(QStringLiteral("formule"));
        xml.Add(QStringLiteral("name"), name);
        xml.Add(QStringLiteral("text"), text);
        xml.Close(QStringLiteral("formule"));
    }
    xml.Close(QStringLiteral("formules"));
    XmlDocument library;
    library.Parse(xml.GetXml());
    report.SetFormules(library.Root());
}

void AddHeader(ZWTemplatePage& page, double pageWidth, const QString& title, const QString& subtitle)
{
    AddLogo(page, 12.0, 6.0, 30.0, 22.0);
    AddLabel(page, 46.0, 8.0, pageWidth - 58.0, 11.0, title, 20.0, Bold, ZWRGB(255, 255, 255));
    AddLabel(page, 46.0, 19.0, pageWidth - 58.0, 7.0, subtitle, 10.0, Italic, ZWRGB(230, 240, 255));
}

} // namespace

QByteArray ZWExampleReports::LogoPng()
{
    QImage image(160, 120, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(255, 255, 255));
    p.drawEllipse(QRectF(4, 4, 112, 112));
    p.setBrush(QColor(0, 150, 70));
    p.drawEllipse(QRectF(12, 12, 96, 96));
    // A lightning bolt.
    QPainterPath bolt;
    bolt.moveTo(68, 20);
    bolt.lineTo(38, 66);
    bolt.lineTo(58, 66);
    bolt.lineTo(48, 100);
    bolt.lineTo(84, 50);
    bolt.lineTo(63, 50);
    bolt.closeSubpath();
    p.setBrush(QColor(255, 215, 0));
    p.drawPath(bolt);
    p.setBrush(QColor(255, 255, 255));
    p.drawRect(QRectF(124, 30, 8, 60));
    p.drawRect(QRectF(138, 50, 8, 40));
    p.drawRect(QRectF(152, 40, 8, 50));
    p.end();
    return Png(image);
}

namespace {

// A portrait page of the monthly report: background, logo and title.
ZWTemplatePage& AddOfficePage(ZWTemplate& report, const QString& title)
{
    ZWTemplatePage& page = report.AddPage();
    page.properties.InitializeBackground(QString::fromLatin1(BackgroundPng(210, 297).toBase64()));
    page.properties.background->maintainAspectRatio = false;
    AddHeader(page, 210.0, title, QStringLiteral("Head office building"));
    return page;
}

} // namespace

ZWTemplate ZWExampleReports::MonthlyEnergy()
{
    ZWTemplate report;
    report.name = QStringLiteral("MonthlyEnergy");
    SetLibrary(report,
        {
            {QStringLiteral("ElectricityPrice"), QStringLiteral("0.21")},
            {QStringLiteral("GasPrice"), QStringLiteral("0.95")},
            {QStringLiteral("GasCalorific"), QStringLiteral("10.55")},
            // 400 kWh a day, for a period of any length.
            {QStringLiteral("ElectricityBudget"), QStringLiteral("400 / 24 * [Main meter.Active energy:hours]")},
            {QStringLiteral("ElectricityCost"), QStringLiteral("[Main meter.Active energy] * ElectricityPrice")},
            {QStringLiteral("GasEnergy"), QStringLiteral("[Gas meter.Volume] * GasCalorific")},
            {QStringLiteral("GasCost"), QStringLiteral("[Gas meter.Volume] * GasPrice")},
            {QStringLiteral("TotalEnergy"), QStringLiteral("[Main meter.Active energy] + GasEnergy")},
            {QStringLiteral("TotalCost"), QStringLiteral("ElectricityCost + GasCost")},
            {QStringLiteral("PVShare"),
                QStringLiteral("[PV inverter.Energy] / ([Main meter.Active energy] + [PV inverter.Energy]) * 100")},
            // Time-of-use prices of the calendar "Peak-Shoulder-OffPeak"
            // (examples/tariffs/three-period.xml as the data folder's tariffs.xml).
            {QStringLiteral("PricePeak"), QStringLiteral("0.28")},
            {QStringLiteral("PriceShoulder"), QStringLiteral("0.19")},
            {QStringLiteral("PriceOffPeak"), QStringLiteral("0.11")},
            {QStringLiteral("TariffCost"),
                QStringLiteral("[Main meter.Active energy:Peak] * PricePeak + [Main meter.Active energy:Shoulder] * "
                               "PriceShoulder + [Main meter.Active energy:OffPeak] * PriceOffPeak")},
        });

    // Page 1: consumption and cost.
    ZWTemplatePage& first = AddOfficePage(report, QStringLiteral("Monthly energy report"));

    AddLabel(first, 20.0, 40.0, 30.0, 8.0, QStringLiteral("Period:"), 11.0, Bold);
    AddDate(first, 50.0, 40.0, 45.0, 8.0, QStringLiteral("BEGIN_DATE"), QStringLiteral("dd/MM/yyyy hh:mm"), 11.0);
    AddLabel(first, 95.0, 40.0, 10.0, 8.0, QStringLiteral("to"), 11.0, 0, Black, ZWCardLabel::AlignCenter);
    AddDate(first, 105.0, 40.0, 45.0, 8.0, QStringLiteral("END_DATE"), QStringLiteral("dd/MM/yyyy hh:mm"), 11.0);

    AddLabel(first, 20.0, 55.0, 170.0, 9.0, QStringLiteral("Consumption"), 14.0, Bold, DarkBlue);
    int row = 0;
    const double table = 66.0;
    AddRow(first, row++, table, QStringLiteral("Electricity"), QStringLiteral("[Main meter.Active energy]"),
        QStringLiteral(".1"), QStringLiteral("kWh"));
    AddRow(first, row++, table, QStringLiteral("Gas"), QStringLiteral("[Gas meter.Volume]"), QStringLiteral(".02"),
        QStringLiteral("m3"));
    AddRow(first, row++, table, QStringLiteral("Gas energy"), QStringLiteral("GasEnergy"), QStringLiteral(".1"),
        QStringLiteral("kWh"));
    AddRow(first, row++, table, QStringLiteral("Water"), QStringLiteral("[Water meter.Volume]"), QStringLiteral(".02"),
        QStringLiteral("m3"));
    AddRow(first, row++, table, QStringLiteral("Solar production"), QStringLiteral("[PV inverter.Energy]"),
        QStringLiteral(".1"), QStringLiteral("kWh"));
    AddRow(first, row++, table, QStringLiteral("Total energy"), QStringLiteral("TotalEnergy"), QStringLiteral(".0"),
        QStringLiteral("kWh"));

    AddLabel(first, 20.0, 130.0, 170.0, 9.0, QStringLiteral("Cost"), 14.0, Bold, DarkBlue);
    row = 0;
    const double costs = 141.0;
    AddRow(first, row++, costs, QStringLiteral("Electricity"), QStringLiteral("ElectricityCost"), QStringLiteral(".02"),
        QStringLiteral("EUR"));
    AddRow(first, row++, costs, QStringLiteral("Gas"), QStringLiteral("GasCost"), QStringLiteral(".02"),
        QStringLiteral("EUR"));
    AddRow(first, row++, costs, QStringLiteral("Total"), QStringLiteral("TotalCost"), QStringLiteral(".02"),
        QStringLiteral("EUR"));
    AddRow(first, row++, costs, QStringLiteral("Cost per kWh"), QStringLiteral("TotalCost / TotalEnergy"),
        QStringLiteral(".04"), QStringLiteral("EUR/kWh"));

    AddLabel(first, 20.0, 186.0, 90.0, 10.0, QStringLiteral("Electricity budget (400 kWh a day):"), 11.0, Bold);
    ZWCardConditioned* budget = Add<ZWCardConditioned>(first, 112.0, 186.0, 78.0, 10.0);
    budget->color = ZWRGB(96, 192, 96);
    budget->AddCondition(QStringLiteral("[Main meter.Active energy] <= ElectricityBudget"),
        Verdict(QStringLiteral("Within budget"), Green));
    budget->AddCondition(
        QStringLiteral("[Main meter.Active energy] > ElectricityBudget"), Verdict(QStringLiteral("Over budget"), Red));
    budget->level = 0;
    budget->ActualizeLevel();

    AddLabel(first, 20.0, 200.0, 60.0, 8.0, QStringLiteral("Solar share:"), 10.0);
    AddFormule(first, 80.0, 200.0, 30.0, 8.0, QStringLiteral("PVShare"), QStringLiteral(".1"), false);
    AddLabel(first, 111.0, 200.0, 10.0, 8.0, QStringLiteral("%"), 10.0, 0, Grey);

    auto printed = AddDate(first, 20.0, 285.0, 100.0, 6.0, QStringLiteral("ACTUAL_DATE"),
        QStringLiteral("\"Printed on \"dd/MM/yyyy \"at\" hh:mm"), 8.0);
    printed->color = Grey;
    AddLabel(first, 150.0, 285.0, 40.0, 6.0, QStringLiteral("Page 1 of 4"), 8.0, 0, Grey, ZWCardLabel::AlignRight);

    // Page 2: power and comfort.
    ZWTemplatePage& second = AddOfficePage(report, QStringLiteral("Power and comfort"));
    AddLabel(second, 20.0, 40.0, 170.0, 9.0, QStringLiteral("Electric power"), 14.0, Bold, DarkBlue);
    row = 0;
    AddRow(second, row++, 51.0, QStringLiteral("Mean active power"), QStringLiteral("[Main meter.Active power]"),
        QStringLiteral(".2"), QStringLiteral("kW"));
    AddRow(second, row++, 51.0, QStringLiteral("Mean power from energy"),
        QStringLiteral("[Main meter.Active energy] / [Main meter.Active energy:hours]"), QStringLiteral(".2"),
        QStringLiteral("kW"));

    AddLabel(second, 20.0, 80.0, 170.0, 9.0, QStringLiteral("Temperatures"), 14.0, Bold, DarkBlue);
    row = 0;
    AddRow(second, row++, 91.0, QStringLiteral("Boiler room"), QStringLiteral("[Boiler room.Temperature]"),
        QStringLiteral(".1"), QStringLiteral("°C"));
    AddRow(second, row++, 91.0, QStringLiteral("Office"), QStringLiteral("[Office.Temperature]"), QStringLiteral(".1"),
        QStringLiteral("°C"));

    AddLabel(second, 20.0, 115.0, 90.0, 10.0, QStringLiteral("Office comfort:"), 11.0, Bold);
    ZWCardConditioned* comfort = Add<ZWCardConditioned>(second, 112.0, 115.0, 78.0, 10.0);
    comfort->color = ZWRGB(96, 192, 96);
    comfort->AddCondition(QStringLiteral("[Office.Temperature] >= 19 && [Office.Temperature] <= 26"),
        Verdict(QStringLiteral("Comfortable"), Green));
    comfort->AddCondition(QStringLiteral("[Office.Temperature] < 19"), Verdict(QStringLiteral("Too cold"), Red));
    comfort->AddCondition(QStringLiteral("[Office.Temperature] > 26"), Verdict(QStringLiteral("Too warm"), Red));
    comfort->level = 0;
    comfort->ActualizeLevel();

    auto note = AddLabel(second, 20.0, 135.0, 170.0, 8.0,
        QStringLiteral("Gauges show the mean of the period; counters show their increase over it."), 9.0, Italic, Grey);
    note->horizontalAlign = ZWCardLabel::AlignLeft;
    AddLabel(second, 150.0, 285.0, 40.0, 6.0, QStringLiteral("Page 2 of 4"), 8.0, 0, Grey, ZWCardLabel::AlignRight);

    // Page 3: trends and comparisons.
    ZWTemplatePage& third = AddOfficePage(report, QStringLiteral("Trends and comparisons"));

    AddLabel(
        third, 20.0, 38.0, 170.0, 9.0, QStringLiteral("Electricity against earlier periods"), 14.0, Bold, DarkBlue);
    row = 0;
    AddRow(third, row++, 49.0, QStringLiteral("This period"), QStringLiteral("[Main meter.Active energy]"),
        QStringLiteral(".0"), QStringLiteral("kWh"));
    AddRow(third, row++, 49.0, QStringLiteral("The period before"), QStringLiteral("[Main meter.Active energy:@-1]"),
        QStringLiteral(".0"), QStringLiteral("kWh"));
    AddRow(third, row++, 49.0, QStringLiteral("The same period a year before"),
        QStringLiteral("[Main meter.Active energy:@-1y]"), QStringLiteral(".0"), QStringLiteral("kWh"));
    AddRow(third, row++, 49.0, QStringLiteral("Change against a year before"),
        QStringLiteral("([Main meter.Active energy] / [Main meter.Active energy:@-1y] - 1) * 100"),
        QStringLiteral(".1"), QStringLiteral("%"));

    ZWCardChart* daily = Add<ZWCardChart>(third, 20.0, 88.0, 170.0, 70.0);
    daily->title = QStringLiteral("Electricity per day");
    daily->yTitle = QStringLiteral("kWh");
    daily->format = QStringLiteral(".0");
    daily->series = {
        {QStringLiteral("This period"), QStringLiteral("[Main meter.Active energy]"), DarkBlue, QString()},
        {QStringLiteral("A year before"), QStringLiteral("[Main meter.Active energy]"), DarkBlue,
            QStringLiteral("-1y")},
    };

    ZWCardChart* power = Add<ZWCardChart>(third, 20.0, 162.0, 170.0, 55.0);
    power->type = ZWCardChart::Type::Line;
    power->title = QStringLiteral("Electric power per day");
    power->yTitle = QStringLiteral("kW");
    power->format = QStringLiteral(".0");
    power->series = {
        {QStringLiteral("Peak"), QStringLiteral("[Main meter.Active power:max]"), Red, QString()},
        {QStringLiteral("Mean"), QStringLiteral("[Main meter.Active power]"), Green, QString()},
    };

    ZWCardTable* weekly = Add<ZWCardTable>(third, 20.0, 222.0, 170.0, 56.0);
    weekly->unit = QStringLiteral("week");
    weekly->labelTitle = QStringLiteral("Week from");
    weekly->totalTitle = QStringLiteral("Total");
    weekly->size = 8.0;
    weekly->columns = {
        {QStringLiteral("Electricity kWh"), QStringLiteral("[Main meter.Active energy]"), QStringLiteral(".0"), true,
            QString(), QString()},
        {QStringLiteral("Gas m3"), QStringLiteral("[Gas meter.Volume]"), QStringLiteral(".1"), true, QString(),
            QString()},
        {QStringLiteral("Water m3"), QStringLiteral("[Water meter.Volume]"), QStringLiteral(".1"), true, QString(),
            QString()},
        {QStringLiteral("Peak kW"), QStringLiteral("[Main meter.Active power:max]"), QStringLiteral(".1"), false,
            QString(), QStringLiteral("max")},
        {QStringLiteral("Cost EUR"), QStringLiteral("TotalCost"), QStringLiteral(".2"), true, QString(), QString()},
    };
    AddLabel(third, 150.0, 285.0, 40.0, 6.0, QStringLiteral("Page 3 of 4"), 8.0, 0, Grey, ZWCardLabel::AlignRight);

    // Page 4: the electricity by time-of-use period.
    ZWTemplatePage& fourth = AddOfficePage(report, QStringLiteral("Time-of-use tariff"));
    AddLabel(fourth, 20.0, 38.0, 170.0, 9.0, QStringLiteral("Electricity by tariff period"), 14.0, Bold, DarkBlue);
    struct Column
    {
        double x, width;
        const char* title;
    };
    const Column columns[] = {{20.0, 32.0, "Period"}, {52.0, 30.0, "Energy kWh"}, {82.0, 22.0, "Share %"},
        {104.0, 28.0, "Price EUR/kWh"}, {132.0, 28.0, "Cost EUR"}, {160.0, 30.0, "Peak kW"}};
    for (const Column& c : columns)
        AddLabel(fourth, c.x, 49.0, c.width - 2.0, 8.0, QString::fromLatin1(c.title), 9.0, Bold, Grey,
            c.x == 20.0 ? ZWCardLabel::AlignLeft : ZWCardLabel::AlignRight);
    const auto addTariffRow = [&](int line, const QString& name, const QString& energy, const QString& price,
                                  const QString& cost, const QString& peak) {
        const double y = 58.0 + 9.0 * line;
        if (line % 2 == 0)
            AddShade(fourth, 20.0, y, 170.0, 9.0, RowShade);
        AddLabel(fourth, 22.0, y, 30.0, 9.0, name, 10.0, line == 3 ? Bold : 0);
        const QString formulas[]
            = {energy, energy + QStringLiteral(" / [Main meter.Active energy] * 100"), price, cost, peak};
        const char* const formats[] = {".1", ".1", ".02", ".02", ".1"};
        for (int i = 0; i < 5; ++i) {
            ZWCardFormule* value = AddFormule(fourth, columns[i + 1].x, y, columns[i + 1].width - 2.0, 9.0, formulas[i],
                QString::fromLatin1(formats[i]));
            value->style = line == 3 ? Bold : 0;
            value->color = Black;
        }
    };
    int line = 0;
    for (const char* period : {"Peak", "Shoulder", "OffPeak"}) {
        const QString p = QString::fromLatin1(period);
        const QString energy = QStringLiteral("[Main meter.Active energy:%1]").arg(p);
        addTariffRow(line++, p == QLatin1String("OffPeak") ? QStringLiteral("Off-peak") : p, energy,
            QStringLiteral("Price") + p, energy + QStringLiteral(" * Price") + p,
            QStringLiteral("[Main meter.Active power:max:%1]").arg(p));
    }
    addTariffRow(line, QStringLiteral("Total"), QStringLiteral("[Main meter.Active energy]"),
        QStringLiteral("TariffCost / [Main meter.Active energy]"), QStringLiteral("TariffCost"),
        QStringLiteral("[Main meter.Active power:max]"));

    ZWCardChart* shares = Add<ZWCardChart>(fourth, 20.0, 100.0, 170.0, 80.0);
    shares->type = ZWCardChart::Type::Stacked;
    shares->title = QStringLiteral("Electricity per day by tariff period");
    shares->yTitle = QStringLiteral("kWh");
    shares->format = QStringLiteral(".0");
    shares->series = {
        {QStringLiteral("Peak"), QStringLiteral("[Main meter.Active energy:Peak]"), Red, QString()},
        {QStringLiteral("Shoulder"), QStringLiteral("[Main meter.Active energy:Shoulder]"), ZWRGB(230, 150, 30),
            QString()},
        {QStringLiteral("Off-peak"), QStringLiteral("[Main meter.Active energy:OffPeak]"), Green, QString()},
    };
    AddLabel(fourth, 20.0, 186.0, 170.0, 7.0,
        QStringLiteral(
            "Calendar \"Peak-Shoulder-OffPeak\" of the data folder's tariffs.xml. Working days: peak 17-21 h"),
        9.0, Italic, Grey);
    AddLabel(fourth, 20.0, 193.0, 170.0, 7.0,
        QStringLiteral(
            "(October to March) or 12-18 h (April to September), shoulder 7-23 h otherwise; the rest off-peak."),
        9.0, Italic, Grey);
    AddLabel(fourth, 150.0, 285.0, 40.0, 6.0, QStringLiteral("Page 4 of 4"), 8.0, 0, Grey, ZWCardLabel::AlignRight);
    return report;
}

ZWTemplate ZWExampleReports::LandscapeSummary()
{
    ZWTemplate report;
    report.name = QStringLiteral("LandscapeSummary");
    SetLibrary(report,
        {
            {QStringLiteral("ElectricityPrice"), QStringLiteral("0.21")},
            {QStringLiteral("GasCalorific"), QStringLiteral("10.55")},
            {QStringLiteral("SelfSufficiency"),
                QStringLiteral("[PV inverter.Energy] / ([Main meter.Active energy] + [PV inverter.Energy]) * 100")},
        });
    ZWTemplatePage& page = report.AddPage();
    page.properties.width = 297.0;
    page.properties.height = 210.0;
    page.properties.rounded = 6.0;
    page.properties.xgrid = 5.0;
    page.properties.ygrid = 5.0;
    page.properties.InitializeBackground(QString::fromLatin1(BackgroundPng(297, 210).toBase64()));
    page.properties.background->maintainAspectRatio = false;
    AddHeader(page, 297.0, QStringLiteral("Energy summary"), QStringLiteral("All meters of the building"));

    AddLabel(page, 20.0, 38.0, 22.0, 8.0, QStringLiteral("From"), 11.0, Bold);
    AddDate(page, 42.0, 38.0, 45.0, 8.0, QStringLiteral("BEGIN_DATE"), QStringLiteral("dd/MM/yyyy"), 11.0);
    AddLabel(page, 90.0, 38.0, 12.0, 8.0, QStringLiteral("to"), 11.0, Bold);
    AddDate(page, 102.0, 38.0, 45.0, 8.0, QStringLiteral("END_DATE"), QStringLiteral("dd/MM/yyyy"), 11.0);

    struct Tile
    {
        const char* title;
        const char* formula;
        const char* format;
        const char* unit;
    };
    static const Tile tiles[] = {
        {"Electricity", "[Main meter.Active energy]", ".0", "kWh"},
        {"Mean power", "[Main meter.Active power]", ".2", "kW"},
        {"Gas", "[Gas meter.Volume]", ".1", "m3"},
        {"Gas energy", "[Gas meter.Volume] * GasCalorific", ".0", "kWh"},
        {"Water", "[Water meter.Volume]", ".1", "m3"},
        {"Solar", "[PV inverter.Energy]", ".0", "kWh"},
        {"Boiler room", "[Boiler room.Temperature]", ".1", "°C"},
        {"Office", "[Office.Temperature]", ".1", "°C"},
    };
    for (int i = 0; i < 8; ++i) {
        const double x = 20.0 + (i % 4) * 66.0;
        const double y = 52.0 + (i / 4) * 50.0;
        AddShade(page, x, y, 60.0, 42.0, RowShade);
        AddLabel(page, x + 3.0, y + 2.0, 54.0, 9.0, QString::fromUtf8(tiles[i].title), 11.0, Bold, DarkBlue);
        auto value = AddFormule(page, x + 3.0, y + 14.0, 54.0, 14.0, QString::fromUtf8(tiles[i].formula),
            QString::fromLatin1(tiles[i].format));
        value->size = 18.0;
        value->horizontalAlign = ZWCardLabel::AlignCenter;
        AddLabel(page, x + 3.0, y + 30.0, 54.0, 8.0, QString::fromUtf8(tiles[i].unit), 10.0, 0, Grey,
            ZWCardLabel::AlignCenter);
    }
    auto side = AddLabel(page, 282.0, 52.0, 10.0, 92.0, QStringLiteral("Building energy"), 12.0, Bold, Grey);
    side->orientation = 90.0;
    side->horizontalAlign = ZWCardLabel::AlignCenter;

    AddLabel(page, 20.0, 155.0, 60.0, 10.0, QStringLiteral("Self-sufficiency:"), 11.0, Bold);
    AddFormule(page, 80.0, 155.0, 30.0, 10.0, QStringLiteral("SelfSufficiency"), QStringLiteral(".1"), false);
    AddLabel(page, 111.0, 155.0, 10.0, 10.0, QStringLiteral("%"), 11.0, 0, Grey);
    ZWCardConditioned* verdict = Add<ZWCardConditioned>(page, 130.0, 155.0, 80.0, 10.0);
    verdict->AddCondition(QStringLiteral("SelfSufficiency >= 20"), Verdict(QStringLiteral("Good solar share"), Green));
    verdict->AddCondition(QStringLiteral("SelfSufficiency < 20"), Verdict(QStringLiteral("Low solar share"), Red));
    verdict->level = 0;
    verdict->ActualizeLevel();

    auto printed = AddDate(page, 20.0, 198.0, 120.0, 6.0, QStringLiteral("ACTUAL_DATE"),
        QStringLiteral("\"Printed on \"dd/MM/yyyy \"at\" hh:mm"), 8.0);
    printed->color = Grey;
    return report;
}
