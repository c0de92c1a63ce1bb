#pragma once

#include "editor/ZWPropertyCommand.h"
#include "template/ZWCardControl.h"
#include "template/ZWTemplatePage.h"

#include <QUndoStack>
#include <functional>
#include <optional>
#include <vector>

// What a property panel edits, without the panel: the selected cards of a
// page (or the page itself when none is selected, or one alternative of a
// conditioned card), the values they share, and every change as one undo
// command on the report's stack. Typing in one field merges into one step.
class ZWPropertyEdit
{
public:
    // The fields, for merging the steps of one field.
    enum Field : int {
        X,
        Y,
        Width,
        Height,
        Color,
        Backcolor,
        Layer,
        Binding,
        Text,
        Font,
        Size,
        Bold,
        Italic,
        Orientation,
        HorizontalAlign,
        VerticalAlign,
        StyleFile,
        Thousands,
        IntegerDigits,
        Decimals,
        FillIntegerZeros,
        FillDecimalZeros,
        DatePattern,
        Picture,
        AspectRatio,
        RealSize,
        Conditions,
        PageWidth,
        PageHeight,
        PageRounded,
        PageGridX,
        PageGridY,
        PageBackground,
        PageOutColor,
        PageSize,
        ChartType,
        ChartTitle,
        ChartXTitle,
        ChartYTitle,
        ChartLegend,
        DataUnit,
        DataFormat,
        DataThousands,
        DataLabelFormat,
        DataFont,
        DataSize,
        TableLabelTitle,
        TableHeaderColor,
        TableStripeColor,
        TableGridColor,
        TableTotal,
        TableTotalTitle,
        // Fields of one series or column: RowField() tells the rows apart.
        RowTitle,
        RowFormula,
        RowColor,
        RowShift,
        RowFormat,
        RowThousands,
        RowTotal,
        // Adding, removing and moving series or columns: never merged.
        DataRows = -1,
    };

    // The field of row `row` of a card's series or columns, so that typing in
    // one row merges into one step but never with typing in another.
    static Field RowField(Field field, int row) { return Field(int(field) + 1000 * (row + 1)); }

    ZWPropertyEdit(ZWTemplatePage& page, QUndoStack& stack);

    // The cards at these positions of the page's list; none means the page.
    void SetSelection(std::vector<int> indices);
    // One alternative of the conditioned card at `index`; −1 goes back to
    // the card itself.
    void SetAlternative(int alternative);
    const std::vector<int>& Indices() const { return m_indices; }
    int Alternative() const { return m_alternative; }
    ZWTemplatePage& Page() const { return m_page; }
    QUndoStack& Stack() const { return m_stack; }

    // The cards edited: the selected ones, or the chosen alternative.
    std::vector<ZWCardControl*> Cards() const;
    // The most derived kind every edited card is or derives from, among
    // "ZWCardDate", "ZWCardFormule", "ZWCardLabel", "ZWCardImage",
    // "ZWCardConditioned", "ZWCardChart", "ZWCardTable" and "ZWCardControl"; empty
    // for the page.
    const char* SharedKind() const;

    // The value of a field when every edited card has the same, else none.
    template <class Card, class T> std::optional<T> Shared(const std::function<T(const Card&)>& get) const
    {
        std::optional<T> value;
        for (ZWCardControl* card : Cards()) {
            const auto* typed = dynamic_cast<const Card*>(card);
            if (!typed)
                return std::nullopt;
            T v = get(*typed);
            if (value && !(*value == v))
                return std::nullopt;
            value = std::move(v);
        }
        return value;
    }

    // Changes every edited card of kind Card as one step named `text`;
    // false when nothing changed.
    template <class Card> bool Apply(Field field, const QString& text, const std::function<void(Card&)>& change)
    {
        return ApplyAny(field, text, [&](ZWCardControl& card) {
            if (auto* typed = dynamic_cast<Card*>(&card))
                change(*typed);
        });
    }
    bool ApplyPage(Field field, const QString& text, const std::function<void(ZWGlobalProperties&)>& change);

private:
    bool ApplyAny(Field field, const QString& text, const std::function<void(ZWCardControl&)>& change);

    ZWTemplatePage& m_page;
    QUndoStack& m_stack;
    std::vector<int> m_indices;
    int m_alternative = -1;
};
