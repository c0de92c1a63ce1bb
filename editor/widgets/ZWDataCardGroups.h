#pragma once

#include "editor/ZWPropertyEdit.h"
#include "template/ZWCardChart.h"
#include "template/ZWCardTable.h"

#include <QObject>
#include <QStringList>
#include <functional>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QFontComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QWidget;
class ZWColorButton;
class ZWFormulaEdit;

// The property groups of chart and table cards: type, unit, titles, number
// and label formats with their samples, legend, font, colours and totals,
// and the list of series (or columns) with add, remove, move and the fields
// of the chosen one. Every edit is one undo step through ZWPropertyEdit;
// typing in one field of one row merges into one step. The property panel
// places the two groups and shows them for what the selection shares.
class ZWDataCardGroups : public QObject
{
    Q_OBJECT

public:
    // The groups are made as children of `body` ("chart" and "table").
    explicit ZWDataCardGroups(QWidget* body);

    QGroupBox* ChartGroup() const { return m_chart.group; }
    QGroupBox* TableGroup() const { return m_table.group; }

    void SetEdit(ZWPropertyEdit* edit) { m_edit = edit; }
    // Shows the group of the selection's kind with its values.
    void Refresh();

    // Add, remove and move the chosen series or column of the selected card.
    void AddRow();
    void RemoveRow();
    void MoveRow(int step);

    // The names of the report's formulas, offered while a formula is typed.
    std::function<QStringList()> formulaNames;

    // The fields, for tests and the panel.
    struct Fields
    {
        QGroupBox* group = nullptr;
        QComboBox* type = nullptr; // chart only
        QComboBox* unit = nullptr;
        QLineEdit* title = nullptr; // chart: title; table: label column title
        QLineEdit* xTitle = nullptr;
        QLineEdit* yTitle = nullptr;
        QLineEdit* format = nullptr; // chart only
        QCheckBox* thousands = nullptr;
        QLabel* formatSample = nullptr;
        QLineEdit* labelFormat = nullptr;
        QLabel* labelSample = nullptr;
        QCheckBox* legend = nullptr;
        QFontComboBox* font = nullptr;
        QDoubleSpinBox* size = nullptr;
        ZWColorButton* headerColor = nullptr; // table only
        ZWColorButton* stripeColor = nullptr;
        ZWColorButton* gridColor = nullptr;
        QComboBox* total = nullptr;
        QLineEdit* totalTitle = nullptr;
        // The rows and the chosen row's fields.
        QWidget* rowsBox = nullptr;
        QListWidget* rows = nullptr;
        QLineEdit* rowTitle = nullptr;
        ZWFormulaEdit* rowFormula = nullptr;
        ZWColorButton* rowColor = nullptr; // chart
        QLineEdit* rowFormat = nullptr;    // table
        QCheckBox* rowThousands = nullptr; // table
        QComboBox* rowTotal = nullptr;     // table
        QComboBox* rowShift = nullptr;
    };
    const Fields& Chart() const { return m_chart; }
    const Fields& Table() const { return m_table; }

signals:
    // A step was pushed: the page must be redrawn.
    void edited();

private:
    void BuildChart(QWidget* body);
    void BuildTable(QWidget* body);
    void BuildRows(Fields& f, QWidget* body, int titleId);
    void RefreshChart();
    void RefreshTable();
    void RefreshRow();
    void SelectRow(int row);
    void UpdateSamples();
    bool IsChart() const;
    Fields& Current() { return IsChart() ? m_chart : m_table; }
    void Pushed(bool changed);
    // Changes every edited card of kind Card as one step.
    template <class Card> void Change(ZWPropertyEdit::Field field, int textId, std::function<void(Card&)> change);
    // Changes the chosen series (column) of the one selected card.
    void ChangeSeries(ZWPropertyEdit::Field field, int textId, const std::function<void(ZWCardChart::Series&)>& change);
    void ChangeColumn(ZWPropertyEdit::Field field, int textId, const std::function<void(ZWCardTable::Column&)>& change);

    ZWPropertyEdit* m_edit = nullptr;
    bool m_refreshing = false;
    Fields m_chart;
    Fields m_table;
};
