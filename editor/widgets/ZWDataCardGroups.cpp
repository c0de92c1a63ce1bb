#include "editor/widgets/ZWDataCardGroups.h"

#include "editor/widgets/ZWColorButton.h"
#include "formula/widgets/ZWFormulaEdit.h"
#include "host/core/ZWDateTime.h"
#include "host/core/ZWLoadString.h"
#include "host/core/ZWTextId.h"
#include "host/drivers/ZWDriverSupport.h"
#include "template/ZWCardFormule.h"
#include "template/ZWFormat.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFontComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>
#include <cstring>
#include <optional>

namespace {

QString Text(int id)
{
    return ZWLoadString(id);
}

QFormLayout* Form(QWidget* widget)
{
    return static_cast<QFormLayout*>(widget->layout());
}

void FillUnits(QComboBox* combo)
{
    const std::pair<int, const char*> units[] = {{ZWTextId::PanelUnitHour, "hour"}, {ZWTextId::PanelUnitDay, "day"},
        {ZWTextId::PanelUnitWeek, "week"}, {ZWTextId::PanelUnitMonth, "month"}};
    for (const auto& [text, name] : units)
        combo->addItem(Text(text), QString::fromLatin1(name));
}

// The totals rules by name; a column may also take its table's rule ("").
void FillTotals(QComboBox* combo, bool tableRule)
{
    if (tableRule)
        combo->addItem(Text(ZWTextId::TotalTable), QString());
    const std::pair<int, const char*> totals[] = {{ZWTextId::TotalNone, "none"}, {ZWTextId::TotalSum, "sum"},
        {ZWTextId::TotalMean, "mean"}, {ZWTextId::TotalMin, "min"}, {ZWTextId::TotalMax, "max"}};
    for (const auto& [text, name] : totals)
        combo->addItem(Text(text), QString::fromLatin1(name));
}

// The usual shifts by name; any other is typed.
void FillShifts(QComboBox* combo)
{
    combo->setEditable(true);
    combo->setInsertPolicy(QComboBox::NoInsert);
    combo->addItem(Text(ZWTextId::ShiftNone), QString());
    combo->addItem(Text(ZWTextId::ShiftPrevious), QStringLiteral("-1"));
    combo->addItem(Text(ZWTextId::ShiftLastYear), QStringLiteral("-1y"));
}

QString ShiftOf(const QComboBox* combo)
{
    const QString text = combo->currentText();
    const int index = combo->findText(text);
    return index >= 0 ? combo->itemData(index).toString() : text.trimmed();
}

void ShowShift(QComboBox* combo, const QString& shift)
{
    const int index = combo->findData(shift);
    if (index >= 0)
        combo->setCurrentIndex(index);
    else
        combo->setEditText(shift);
}

void ShowText(QLineEdit* line, const std::optional<QString>& value)
{
    if (line->text() != value.value_or(QString()))
        line->setText(value.value_or(QString()));
    line->setPlaceholderText(value ? QString() : QStringLiteral("—"));
}

void ShowData(QComboBox* combo, const std::optional<QString>& value)
{
    combo->setCurrentIndex(value ? combo->findData(*value) : -1);
}

void ShowCheck(QCheckBox* check, std::optional<bool> value)
{
    check->setTristate(!value);
    check->setCheckState(!value ? Qt::PartiallyChecked : *value ? Qt::Checked : Qt::Unchecked);
}

QString NumberSample(const QString& format, bool thousands)
{
    return ZWCardFormule::FormatNumber(1234.5678, format, thousands);
}

template <class Card, class T, class Get> std::optional<T> SharedOf(const ZWPropertyEdit& edit, Get get)
{
    return edit.Shared<Card, T>(std::function<T(const Card&)>(get));
}

template <class Card> Card* FirstCard(const ZWPropertyEdit* edit)
{
    const auto cards = edit ? edit->Cards() : std::vector<ZWCardControl*>();
    return cards.empty() ? nullptr : dynamic_cast<Card*>(cards.front());
}

QString RowText(const QString& title, const QString& formula)
{
    return title.isEmpty() ? formula : title;
}

} // namespace

ZWDataCardGroups::ZWDataCardGroups(QWidget* body) : QObject(body)
{
    BuildChart(body);
    BuildTable(body);
}

void ZWDataCardGroups::Pushed(bool changed)
{
    if (changed)
        emit edited();
}

template <class Card>
void ZWDataCardGroups::Change(ZWPropertyEdit::Field field, int textId, std::function<void(Card&)> change)
{
    if (m_refreshing || !m_edit)
        return;
    Pushed(m_edit->Apply<Card>(field, Text(textId), change));
    UpdateSamples();
}

void ZWDataCardGroups::ChangeSeries(
    ZWPropertyEdit::Field field, int textId, const std::function<void(ZWCardChart::Series&)>& change)
{
    const int row = m_chart.rows->currentRow();
    if (m_refreshing || !m_edit || m_edit->Indices().size() != 1 || row < 0)
        return;
    Pushed(m_edit->Apply<ZWCardChart>(ZWPropertyEdit::RowField(field, row), Text(textId), [&](ZWCardChart& c) {
        if (size_t(row) < c.series.size())
            change(c.series[size_t(row)]);
    }));
}

void ZWDataCardGroups::ChangeColumn(
    ZWPropertyEdit::Field field, int textId, const std::function<void(ZWCardTable::Column&)>& change)
{
    const int row = m_table.rows->currentRow();
    if (m_refreshing || !m_edit || m_edit->Indices().size() != 1 || row < 0)
        return;
    Pushed(m_edit->Apply<ZWCardTable>(ZWPropertyEdit::RowField(field, row), Text(textId), [&](ZWCardTable& c) {
        if (size_t(row) < c.columns.size())
            change(c.columns[size_t(row)]);
    }));
    UpdateSamples();
}

void ZWDataCardGroups::BuildRows(Fields& f, QWidget* body, int titleId)
{
    f.rowsBox = new QWidget(body);
    auto* form = new QFormLayout(f.rowsBox);
    form->setContentsMargins(0, 0, 0, 0);
    f.rows = new QListWidget(f.rowsBox);
    f.rows->setMaximumHeight(110);
    auto* add = new QPushButton(Text(ZWTextId::PanelAddRow), f.rowsBox);
    auto* remove = new QPushButton(Text(ZWTextId::PanelRemoveRow), f.rowsBox);
    auto* up = new QPushButton(Text(ZWTextId::PanelUp), f.rowsBox);
    auto* down = new QPushButton(Text(ZWTextId::PanelDown), f.rowsBox);
    add->setObjectName(QStringLiteral("add"));
    remove->setObjectName(QStringLiteral("remove"));
    up->setObjectName(QStringLiteral("up"));
    down->setObjectName(QStringLiteral("down"));
    auto* buttons = new QHBoxLayout;
    for (QPushButton* button : {add, remove, up, down})
        buttons->addWidget(button);
    f.rowTitle = new QLineEdit(f.rowsBox);
    f.rowFormula = new ZWFormulaEdit(f.rowsBox);
    f.rowShift = new QComboBox(f.rowsBox);
    FillShifts(f.rowShift);
    form->addRow(new QLabel(Text(titleId), f.rowsBox));
    form->addRow(f.rows);
    form->addRow(buttons);
    form->addRow(Text(ZWTextId::PanelTitleField), f.rowTitle);
    form->addRow(Text(ZWTextId::PanelFormula), f.rowFormula);
    form->addRow(Text(ZWTextId::PanelShift), f.rowShift);
    Form(f.group)->addRow(f.rowsBox);
    connect(add, &QPushButton::clicked, this, &ZWDataCardGroups::AddRow);
    connect(remove, &QPushButton::clicked, this, &ZWDataCardGroups::RemoveRow);
    connect(up, &QPushButton::clicked, this, [this] { MoveRow(-1); });
    connect(down, &QPushButton::clicked, this, [this] { MoveRow(1); });
    connect(f.rows, &QListWidget::currentRowChanged, this, [this] {
        if (!m_refreshing)
            RefreshRow();
    });
}

void ZWDataCardGroups::BuildChart(QWidget* body)
{
    Fields& f = m_chart;
    f.group = new QGroupBox(Text(ZWTextId::PanelChart), body);
    f.group->setObjectName(QStringLiteral("chart"));
    auto* form = new QFormLayout(f.group);
    f.type = new QComboBox(f.group);
    f.type->addItem(Text(ZWTextId::ChartTypeBar), QStringLiteral("bar"));
    f.type->addItem(Text(ZWTextId::ChartTypeStacked), QStringLiteral("stacked"));
    f.type->addItem(Text(ZWTextId::ChartTypeLine), QStringLiteral("line"));
    f.unit = new QComboBox(f.group);
    FillUnits(f.unit);
    f.title = new QLineEdit(f.group);
    f.xTitle = new QLineEdit(f.group);
    f.yTitle = new QLineEdit(f.group);
    f.format = new QLineEdit(f.group);
    f.thousands = new QCheckBox(Text(ZWTextId::PanelThousands), f.group);
    f.formatSample = new QLabel(f.group);
    f.labelFormat = new QLineEdit(f.group);
    f.labelSample = new QLabel(f.group);
    f.legend = new QCheckBox(Text(ZWTextId::PanelLegend), f.group);
    f.font = new QFontComboBox(f.group);
    f.size = new QDoubleSpinBox(f.group);
    f.size->setRange(1, 200);
    f.size->setDecimals(1);
    f.size->setKeyboardTracking(false);
    form->addRow(Text(ZWTextId::PanelChartType), f.type);
    form->addRow(Text(ZWTextId::PanelUnit), f.unit);
    form->addRow(Text(ZWTextId::PanelTitleField), f.title);
    form->addRow(Text(ZWTextId::PanelXTitle), f.xTitle);
    form->addRow(Text(ZWTextId::PanelYTitle), f.yTitle);
    form->addRow(Text(ZWTextId::PanelValueFormat), f.format);
    form->addRow(QString(), f.thousands);
    form->addRow(Text(ZWTextId::PanelSample), f.formatSample);
    form->addRow(Text(ZWTextId::PanelLabelPattern), f.labelFormat);
    form->addRow(Text(ZWTextId::PanelSample), f.labelSample);
    form->addRow(QString(), f.legend);
    form->addRow(Text(ZWTextId::PanelFont), f.font);
    form->addRow(Text(ZWTextId::PanelSize), f.size);
    BuildRows(f, body, ZWTextId::PanelSeries);
    f.rowColor = new ZWColorButton(false, f.rowsBox);
    Form(f.rowsBox)->addRow(Text(ZWTextId::PanelColor), f.rowColor);

    using Chart = ZWCardChart;
    connect(f.type, &QComboBox::activated, this, [this](int index) {
        const QString name = m_chart.type->itemData(index).toString();
        Change<Chart>(ZWPropertyEdit::ChartType, ZWTextId::PanelChartType,
            [&name](Chart& c) { Chart::TypeFromName(name, c.type); });
    });
    const auto line = [this](QLineEdit* edit, ZWPropertyEdit::Field field, int textId, QString Chart::*member) {
        connect(edit, &QLineEdit::textEdited, this, [this, field, textId, member](const QString& v) {
            Change<Chart>(field, textId, [&](Chart& c) { c.*member = v; });
        });
    };
    line(f.title, ZWPropertyEdit::ChartTitle, ZWTextId::PanelTitleField, &Chart::title);
    line(f.xTitle, ZWPropertyEdit::ChartXTitle, ZWTextId::PanelXTitle, &Chart::xTitle);
    line(f.yTitle, ZWPropertyEdit::ChartYTitle, ZWTextId::PanelYTitle, &Chart::yTitle);
    line(f.format, ZWPropertyEdit::DataFormat, ZWTextId::PanelValueFormat, &Chart::format);
    line(f.labelFormat, ZWPropertyEdit::DataLabelFormat, ZWTextId::PanelLabelPattern, &Chart::labelFormat);
    connect(f.thousands, &QCheckBox::clicked, this, [this](bool on) {
        m_chart.thousands->setTristate(false);
        Change<Chart>(
            ZWPropertyEdit::DataThousands, ZWTextId::PanelThousands, [on](Chart& c) { c.thousandSeparator = on; });
    });
    connect(f.legend, &QCheckBox::clicked, this, [this](bool on) {
        m_chart.legend->setTristate(false);
        Change<Chart>(ZWPropertyEdit::ChartLegend, ZWTextId::PanelLegend, [on](Chart& c) { c.legend = on; });
    });
    connect(f.unit, &QComboBox::activated, this, [this](int index) {
        const QString unit = m_chart.unit->itemData(index).toString();
        Change<Chart>(ZWPropertyEdit::DataUnit, ZWTextId::PanelUnit, [&unit](Chart& c) { c.unit = unit; });
    });
    connect(f.font, &QFontComboBox::currentFontChanged, this, [this](const QFont& font) {
        Change<Chart>(ZWPropertyEdit::DataFont, ZWTextId::PanelFont, [&font](Chart& c) { c.font = font.family(); });
    });
    connect(f.size, &QDoubleSpinBox::valueChanged, this, [this](double value) {
        if (!m_chart.size->text().isEmpty())
            Change<Chart>(ZWPropertyEdit::DataSize, ZWTextId::PanelSize, [value](Chart& c) { c.size = value; });
    });

    connect(f.rowTitle, &QLineEdit::textEdited, this, [this](const QString& v) {
        ChangeSeries(ZWPropertyEdit::RowTitle, ZWTextId::PanelTitleField, [&v](Chart::Series& s) { s.title = v; });
        if (QListWidgetItem* item = m_chart.rows->currentItem())
            item->setText(RowText(v, m_chart.rowFormula->text()));
    });
    // A completion chosen from the popup changes the text without an edit
    // signal of its own.
    connect(f.rowFormula, &QLineEdit::textChanged, this, [this](const QString& v) {
        ChangeSeries(ZWPropertyEdit::RowFormula, ZWTextId::PanelFormula, [&v](Chart::Series& s) { s.formula = v; });
    });
    connect(f.rowColor, &ZWColorButton::colorChosen, this, [this](quint32 colour) {
        ChangeSeries(ZWPropertyEdit::RowColor, ZWTextId::PanelColor, [colour](Chart::Series& s) { s.color = colour; });
    });
    connect(f.rowShift, &QComboBox::currentTextChanged, this, [this] {
        const QString shift = ShiftOf(m_chart.rowShift);
        ChangeSeries(ZWPropertyEdit::RowShift, ZWTextId::PanelShift, [&shift](Chart::Series& s) { s.shift = shift; });
    });
}

void ZWDataCardGroups::BuildTable(QWidget* body)
{
    Fields& f = m_table;
    f.group = new QGroupBox(Text(ZWTextId::PanelTable), body);
    f.group->setObjectName(QStringLiteral("table"));
    auto* form = new QFormLayout(f.group);
    f.unit = new QComboBox(f.group);
    FillUnits(f.unit);
    f.title = new QLineEdit(f.group);
    f.labelFormat = new QLineEdit(f.group);
    f.labelSample = new QLabel(f.group);
    f.font = new QFontComboBox(f.group);
    f.size = new QDoubleSpinBox(f.group);
    f.size->setRange(1, 200);
    f.size->setDecimals(1);
    f.size->setKeyboardTracking(false);
    f.headerColor = new ZWColorButton(true, f.group);
    f.stripeColor = new ZWColorButton(true, f.group);
    f.gridColor = new ZWColorButton(true, f.group);
    f.total = new QComboBox(f.group);
    FillTotals(f.total, false);
    f.totalTitle = new QLineEdit(f.group);
    form->addRow(Text(ZWTextId::PanelUnit), f.unit);
    form->addRow(Text(ZWTextId::PanelLabelTitle), f.title);
    form->addRow(Text(ZWTextId::PanelLabelPattern), f.labelFormat);
    form->addRow(Text(ZWTextId::PanelSample), f.labelSample);
    form->addRow(Text(ZWTextId::PanelFont), f.font);
    form->addRow(Text(ZWTextId::PanelSize), f.size);
    form->addRow(Text(ZWTextId::PanelHeaderColor), f.headerColor);
    form->addRow(Text(ZWTextId::PanelStripeColor), f.stripeColor);
    form->addRow(Text(ZWTextId::PanelGridColor), f.gridColor);
    form->addRow(Text(ZWTextId::PanelTotal), f.total);
    form->addRow(Text(ZWTextId::PanelTotalTitle), f.totalTitle);
    BuildRows(f, body, ZWTextId::PanelColumns);
    f.rowFormat = new QLineEdit(f.rowsBox);
    f.rowThousands = new QCheckBox(Text(ZWTextId::PanelThousands), f.rowsBox);
    f.formatSample = new QLabel(f.rowsBox);
    f.rowTotal = new QComboBox(f.rowsBox);
    FillTotals(f.rowTotal, true);
    Form(f.rowsBox)->addRow(Text(ZWTextId::PanelValueFormat), f.rowFormat);
    Form(f.rowsBox)->addRow(QString(), f.rowThousands);
    Form(f.rowsBox)->addRow(Text(ZWTextId::PanelSample), f.formatSample);
    Form(f.rowsBox)->addRow(Text(ZWTextId::PanelTotal), f.rowTotal);

    using Table = ZWCardTable;
    const auto line = [this](QLineEdit* edit, ZWPropertyEdit::Field field, int textId, QString Table::*member) {
        connect(edit, &QLineEdit::textEdited, this, [this, field, textId, member](const QString& v) {
            Change<Table>(field, textId, [&](Table& c) { c.*member = v; });
        });
    };
    line(f.title, ZWPropertyEdit::TableLabelTitle, ZWTextId::PanelLabelTitle, &Table::labelTitle);
    line(f.labelFormat, ZWPropertyEdit::DataLabelFormat, ZWTextId::PanelLabelPattern, &Table::labelFormat);
    line(f.totalTitle, ZWPropertyEdit::TableTotalTitle, ZWTextId::PanelTotalTitle, &Table::totalTitle);
    const auto colour = [this](ZWColorButton* button, ZWPropertyEdit::Field field, int textId, quint32 Table::*member) {
        connect(button, &ZWColorButton::colorChosen, this, [this, field, textId, member](quint32 v) {
            Change<Table>(field, textId, [&](Table& c) { c.*member = v; });
        });
    };
    colour(f.headerColor, ZWPropertyEdit::TableHeaderColor, ZWTextId::PanelHeaderColor, &Table::headerColor);
    colour(f.stripeColor, ZWPropertyEdit::TableStripeColor, ZWTextId::PanelStripeColor, &Table::stripeColor);
    colour(f.gridColor, ZWPropertyEdit::TableGridColor, ZWTextId::PanelGridColor, &Table::gridColor);
    connect(f.total, &QComboBox::activated, this, [this](int index) {
        const QString name = m_table.total->itemData(index).toString();
        Change<Table>(ZWPropertyEdit::TableTotal, ZWTextId::PanelTotal,
            [&name](Table& c) { Table::TotalFromName(name, c.total); });
    });
    connect(f.unit, &QComboBox::activated, this, [this](int index) {
        const QString unit = m_table.unit->itemData(index).toString();
        Change<Table>(ZWPropertyEdit::DataUnit, ZWTextId::PanelUnit, [&unit](Table& c) { c.unit = unit; });
    });
    connect(f.font, &QFontComboBox::currentFontChanged, this, [this](const QFont& font) {
        Change<Table>(ZWPropertyEdit::DataFont, ZWTextId::PanelFont, [&font](Table& c) { c.font = font.family(); });
    });
    connect(f.size, &QDoubleSpinBox::valueChanged, this, [this](double value) {
        if (!m_table.size->text().isEmpty())
            Change<Table>(ZWPropertyEdit::DataSize, ZWTextId::PanelSize, [value](Table& c) { c.size = value; });
    });

    connect(f.rowTitle, &QLineEdit::textEdited, this, [this](const QString& v) {
        ChangeColumn(ZWPropertyEdit::RowTitle, ZWTextId::PanelTitleField, [&v](Table::Column& c) { c.title = v; });
        if (QListWidgetItem* item = m_table.rows->currentItem())
            item->setText(RowText(v, m_table.rowFormula->text()));
    });
    connect(f.rowFormula, &QLineEdit::textChanged, this, [this](const QString& v) {
        ChangeColumn(ZWPropertyEdit::RowFormula, ZWTextId::PanelFormula, [&v](Table::Column& c) { c.formula = v; });
    });
    connect(f.rowFormat, &QLineEdit::textEdited, this, [this](const QString& v) {
        ChangeColumn(ZWPropertyEdit::RowFormat, ZWTextId::PanelValueFormat, [&v](Table::Column& c) { c.format = v; });
    });
    connect(f.rowThousands, &QCheckBox::clicked, this, [this](bool on) {
        ChangeColumn(ZWPropertyEdit::RowThousands, ZWTextId::PanelThousands,
            [on](Table::Column& c) { c.thousandSeparator = on; });
    });
    connect(f.rowTotal, &QComboBox::activated, this, [this](int index) {
        const QString name = m_table.rowTotal->itemData(index).toString();
        ChangeColumn(ZWPropertyEdit::RowTotal, ZWTextId::PanelTotal, [&name](Table::Column& c) { c.total = name; });
    });
    connect(f.rowShift, &QComboBox::currentTextChanged, this, [this] {
        const QString shift = ShiftOf(m_table.rowShift);
        ChangeColumn(ZWPropertyEdit::RowShift, ZWTextId::PanelShift, [&shift](Table::Column& c) { c.shift = shift; });
    });
}

bool ZWDataCardGroups::IsChart() const
{
    return m_edit && std::strcmp(m_edit->SharedKind(), "ZWCardChart") == 0;
}

void ZWDataCardGroups::Refresh()
{
    const bool was = m_refreshing;
    m_refreshing = true;
    const char* kind = m_edit ? m_edit->SharedKind() : "";
    const bool chart = std::strcmp(kind, "ZWCardChart") == 0;
    const bool table = std::strcmp(kind, "ZWCardTable") == 0;
    m_chart.group->setVisible(chart);
    m_table.group->setVisible(table);
    if (chart)
        RefreshChart();
    if (table)
        RefreshTable();
    m_refreshing = was;
}

void ZWDataCardGroups::RefreshChart()
{
    using Chart = ZWCardChart;
    const ZWPropertyEdit& e = *m_edit;
    Fields& f = m_chart;
    ShowData(f.type, SharedOf<Chart, QString>(e, [](const Chart& c) { return Chart::TypeName(c.type); }));
    ShowData(f.unit, SharedOf<Chart, QString>(e, [](const Chart& c) { return c.unit; }));
    ShowText(f.title, SharedOf<Chart, QString>(e, [](const Chart& c) { return c.title; }));
    ShowText(f.xTitle, SharedOf<Chart, QString>(e, [](const Chart& c) { return c.xTitle; }));
    ShowText(f.yTitle, SharedOf<Chart, QString>(e, [](const Chart& c) { return c.yTitle; }));
    ShowText(f.format, SharedOf<Chart, QString>(e, [](const Chart& c) { return c.format; }));
    ShowText(f.labelFormat, SharedOf<Chart, QString>(e, [](const Chart& c) { return c.labelFormat; }));
    ShowCheck(f.thousands, SharedOf<Chart, bool>(e, [](const Chart& c) { return c.thousandSeparator; }));
    ShowCheck(f.legend, SharedOf<Chart, bool>(e, [](const Chart& c) { return c.legend; }));
    const auto font = SharedOf<Chart, QString>(e, [](const Chart& c) { return c.font; });
    f.font->setCurrentFont(QFont(font.value_or(QString())));
    f.font->setEditText(font.value_or(QString()));
    const auto size = SharedOf<Chart, double>(e, [](const Chart& c) { return c.size; });
    if (size)
        f.size->setValue(*size);
    else
        f.size->clear();

    // The series of one card.
    const Chart* card = e.Indices().size() == 1 ? FirstCard<Chart>(&e) : nullptr;
    f.rowsBox->setVisible(card);
    const int row = f.rows->currentRow();
    f.rows->clear();
    if (card) {
        for (const Chart::Series& s : card->series)
            f.rows->addItem(RowText(s.title, s.formula));
        f.rows->setCurrentRow(std::clamp(row, card->series.empty() ? -1 : 0, int(card->series.size()) - 1));
    }
    RefreshRow();
    UpdateSamples();
}

void ZWDataCardGroups::RefreshTable()
{
    using Table = ZWCardTable;
    const ZWPropertyEdit& e = *m_edit;
    Fields& f = m_table;
    ShowData(f.unit, SharedOf<Table, QString>(e, [](const Table& c) { return c.unit; }));
    ShowText(f.title, SharedOf<Table, QString>(e, [](const Table& c) { return c.labelTitle; }));
    ShowText(f.labelFormat, SharedOf<Table, QString>(e, [](const Table& c) { return c.labelFormat; }));
    ShowText(f.totalTitle, SharedOf<Table, QString>(e, [](const Table& c) { return c.totalTitle; }));
    ShowData(f.total, SharedOf<Table, QString>(e, [](const Table& c) { return Table::TotalName(c.total); }));
    const auto showColour = [&e](ZWColorButton* button, quint32 Table::*member) {
        const auto colour = SharedOf<Table, quint32>(e, [member](const Table& c) { return c.*member; });
        button->SetColor(colour.value_or(ZW_NO_COLOR), !colour);
    };
    showColour(f.headerColor, &Table::headerColor);
    showColour(f.stripeColor, &Table::stripeColor);
    showColour(f.gridColor, &Table::gridColor);
    const auto font = SharedOf<Table, QString>(e, [](const Table& c) { return c.font; });
    f.font->setCurrentFont(QFont(font.value_or(QString())));
    f.font->setEditText(font.value_or(QString()));
    const auto size = SharedOf<Table, double>(e, [](const Table& c) { return c.size; });
    if (size)
        f.size->setValue(*size);
    else
        f.size->clear();

    const Table* card = e.Indices().size() == 1 ? FirstCard<Table>(&e) : nullptr;
    f.rowsBox->setVisible(card);
    const int row = f.rows->currentRow();
    f.rows->clear();
    if (card) {
        for (const Table::Column& c : card->columns)
            f.rows->addItem(RowText(c.title, c.formula));
        f.rows->setCurrentRow(std::clamp(row, card->columns.empty() ? -1 : 0, int(card->columns.size()) - 1));
    }
    RefreshRow();
    UpdateSamples();
}

void ZWDataCardGroups::RefreshRow()
{
    const bool was = m_refreshing;
    m_refreshing = true;
    const bool chart = IsChart();
    Fields& f = chart ? m_chart : m_table;
    const int row = f.rows->currentRow();
    QString title, formula, shift;
    bool valid = false;
    if (chart) {
        if (const auto* card = FirstCard<ZWCardChart>(m_edit); card && row >= 0 && size_t(row) < card->series.size()) {
            const ZWCardChart::Series& s = card->series[size_t(row)];
            title = s.title;
            formula = s.formula;
            shift = s.shift;
            f.rowColor->SetColor(s.color);
            valid = true;
        }
    } else if (const auto* card = FirstCard<ZWCardTable>(m_edit);
               card && row >= 0 && size_t(row) < card->columns.size()) {
        const ZWCardTable::Column& c = card->columns[size_t(row)];
        title = c.title;
        formula = c.formula;
        shift = c.shift;
        f.rowFormat->setText(c.format);
        f.rowThousands->setChecked(c.thousandSeparator);
        f.rowTotal->setCurrentIndex(std::max(0, f.rowTotal->findData(c.total)));
        valid = true;
    }
    for (QWidget* w : std::initializer_list<QWidget*>{
             f.rowTitle, f.rowFormula, f.rowShift, f.rowColor, f.rowFormat, f.rowThousands, f.rowTotal})
        if (w)
            w->setEnabled(valid);
    if (f.rowTitle->text() != title)
        f.rowTitle->setText(title);
    if (f.rowFormula->text() != formula)
        f.rowFormula->setText(formula);
    f.rowFormula->SetStore(ZWDriverSupport::Store().get());
    f.rowFormula->SetFormulas(formulaNames ? formulaNames() : QStringList());
    ShowShift(f.rowShift, shift);
    m_refreshing = was;
    UpdateSamples();
}

void ZWDataCardGroups::UpdateSamples()
{
    const ZWDateTime now = ZWDateTime::LTC();
    if (const auto* chart = FirstCard<ZWCardChart>(m_edit)) {
        m_chart.formatSample->setText(NumberSample(chart->format, chart->thousandSeparator));
        m_chart.labelSample->setText(ZWFormat::ParseDate(chart->labelFormat, now));
    }
    if (const auto* table = FirstCard<ZWCardTable>(m_edit)) {
        m_table.labelSample->setText(ZWFormat::ParseDate(table->labelFormat, now));
        const int row = m_table.rows->currentRow();
        m_table.formatSample->setText(row >= 0 && size_t(row) < table->columns.size()
                ? NumberSample(table->columns[size_t(row)].format, table->columns[size_t(row)].thousandSeparator)
                : QString());
    }
}

void ZWDataCardGroups::AddRow()
{
    if (!m_edit || m_edit->Indices().size() != 1)
        return;
    bool changed = false;
    int row = -1;
    if (IsChart()) {
        changed
            = m_edit->Apply<ZWCardChart>(ZWPropertyEdit::DataRows, Text(ZWTextId::PanelAddRow), [&row](ZWCardChart& c) {
                  if (c.series.size() >= size_t(ZWCardChart::MaxSeries))
                      return;
                  const int n = int(c.series.size());
                  c.series.push_back(
                      {Text(ZWTextId::PanelNewSeries).arg(n + 1), QString(), ZWCardChart::DefaultColor(n), QString()});
                  row = n;
              });
    } else {
        changed
            = m_edit->Apply<ZWCardTable>(ZWPropertyEdit::DataRows, Text(ZWTextId::PanelAddRow), [&row](ZWCardTable& c) {
                  if (c.columns.size() >= size_t(ZWCardTable::MaxColumns))
                      return;
                  ZWCardTable::Column column;
                  column.title = Text(ZWTextId::PanelNewColumn).arg(c.columns.size() + 1);
                  c.columns.push_back(column);
                  row = int(c.columns.size()) - 1;
              });
    }
    if (!changed)
        return;
    Refresh();
    SelectRow(row);
    emit edited();
}

void ZWDataCardGroups::SelectRow(int row)
{
    {
        const QSignalBlocker blocker(Current().rows);
        Current().rows->setCurrentRow(row);
    }
    RefreshRow();
}

void ZWDataCardGroups::RemoveRow()
{
    const int row = Current().rows->currentRow();
    if (!m_edit || m_edit->Indices().size() != 1 || row < 0)
        return;
    const auto erase = [row](auto& rows) {
        if (size_t(row) < rows.size())
            rows.erase(rows.begin() + row);
    };
    const bool changed = IsChart() ? m_edit->Apply<ZWCardChart>(ZWPropertyEdit::DataRows,
                             Text(ZWTextId::PanelRemoveRow), [&](ZWCardChart& c) { erase(c.series); })
                                   : m_edit->Apply<ZWCardTable>(ZWPropertyEdit::DataRows,
                                       Text(ZWTextId::PanelRemoveRow), [&](ZWCardTable& c) { erase(c.columns); });
    if (!changed)
        return;
    Refresh();
    emit edited();
}

void ZWDataCardGroups::MoveRow(int step)
{
    const int row = Current().rows->currentRow();
    const int to = row + step;
    if (!m_edit || m_edit->Indices().size() != 1 || row < 0 || to < 0 || to >= Current().rows->count())
        return;
    const auto swap = [row, to](auto& rows) {
        if (size_t(row) < rows.size() && size_t(to) < rows.size())
            std::swap(rows[size_t(row)], rows[size_t(to)]);
    };
    const bool changed = IsChart() ? m_edit->Apply<ZWCardChart>(ZWPropertyEdit::DataRows, Text(ZWTextId::PanelMoveRow),
                             [&](ZWCardChart& c) { swap(c.series); })
                                   : m_edit->Apply<ZWCardTable>(ZWPropertyEdit::DataRows, Text(ZWTextId::PanelMoveRow),
                                       [&](ZWCardTable& c) { swap(c.columns); });
    if (!changed)
        return;
    Refresh();
    SelectRow(to);
    emit edited();
}
