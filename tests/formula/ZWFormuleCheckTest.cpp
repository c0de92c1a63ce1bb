#include "formula/ZWFormuleCheck.h"
#include "host/core/XmlDocument.h"
#include "host/core/ZWTextId.h"
#include "tests/formula/FormulaTestSupport.h"
#include "tests/support/ZWTestSupport.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

TEST(FormuleName, FollowsTheNameRule)
{
    // Letters beyond ASCII count; function names are compared with their case.
    const std::pair<const char*, bool> cases[] = {{"Total", true}, {"kWh2024", true}, {"Energía", true}, {"Sqrt", true},
        {"LOG10", true}, {"", false}, {"2Total", false}, {"Total cost", false}, {"total_cost", false}, {"a.b", false},
        {"[a.b]", false}, {"sqrt", false}, {"atan2", false}, {"log10", false}};
    for (const auto& [name, valid] : cases)
        EXPECT_EQ(ZWFormuleCheck::IsValidName(QString::fromUtf8(name)), valid) << name;
}

struct CheckCase
{
    const char* what;
    const char* name;
    const char* text;
    // Which entry of the library is the formula's previous form (-1: new).
    int edited;
    int textId;
    bool okEnabled;
    // A part of the result line.
    const char* shows;
};

class FormuleCheck : public testing::TestWithParam<CheckCase>
{};

// Price and Total are in the library; Cost refers to Total, Total to the
// edited entry's old name "Old"; Broken to a device variable nobody knows,
// UsesBroken to Broken.
TEST_P(FormuleCheck, ResultLineAndOk)
{
    zwtest::LiveValuesScope live;
    live.Set(u"meter.energy"_s, 1520.5);
    live.Set(u"meter.power"_s, std::nullopt);
    const std::vector<QString> names{u"Price"_s, u"Old"_s, u"Total"_s, u"Cost"_s, u"Broken"_s, u"UsesBroken"_s};
    const std::vector<QString> texts{
        u"0.25"_s, u"1"_s, u"Old * 2"_s, u"Total * Price"_s, u"[meter.volume] * 2"_s, u"Broken * 2"_s};
    const CheckCase& c = GetParam();
    const ZWFormuleCheck::Result r
        = ZWFormuleCheck::Evaluate(QString::fromUtf8(c.name), QString::fromUtf8(c.text), names, texts, c.edited);
    EXPECT_EQ(r.textId, c.textId) << r.text.toStdString();
    EXPECT_EQ(r.okEnabled, c.okEnabled);
    EXPECT_TRUE(r.text.contains(QString::fromUtf8(c.shows))) << r.text.toStdString();
}

INSTANTIATE_TEST_SUITE_P(Checks, FormuleCheck,
    testing::ValuesIn(std::vector<CheckCase>{{"empty text", "A", "", -1, ZWTextId::FormulaEmpty, false, ""},
        {"empty text before a bad name", "2x", "", -1, ZWTextId::FormulaEmpty, false, ""},
        {"empty name", "", "1", -1, ZWTextId::FormulaNameInvalid, false, ""},
        {"name with a blank", "A B", "1", -1, ZWTextId::FormulaNameInvalid, false, ""},
        {"capitalised function name", "Sqrt", "4", -1, ZWTextId::FormulaValue, true, "4.00000"},
        {"bad name before a bad text", "a-b", "2 +", -1, ZWTextId::FormulaNameInvalid, false, ""},
        {"name of another formula", "Price", "1", -1, ZWTextId::FormulaNameTaken, false, ""},
        {"taken name before a bad text", "Total", "2 +", -1, ZWTextId::FormulaNameTaken, false, ""},
        {"names are case-sensitive", "price", "1", -1, ZWTextId::FormulaValue, true, "1.00000"},
        {"its own name when modified", "Price", "0.5", 0, ZWTextId::FormulaValue, true, "0.50000"},
        {"invalid text", "A", "2 +", -1, ZWTextId::FormulaInvalid, false, ""},
        {"boolean result", "A", "1 < 2", -1, ZWTextId::FormulaInvalid, false, ""},
        {"refers to itself", "A", "A + 1", -1, ZWTextId::FormulaRefersToItself, false, ""},
        {"loop through the library", "Old", "Cost + 1", 1, ZWTextId::FormulaRefersToItself, false, ""},
        {"the old text is left out", "Old", "3", 1, ZWTextId::FormulaValue, true, "3.00000"},
        {"value through references", "A", "Cost * 8", -1, ZWTextId::FormulaValue, true, "4.00000"},
        {"device variable", "A", "[meter.energy] * Price", -1, ZWTextId::FormulaValue, true, "380.12500"},
        {"unknown device variable", "A", "[meter.volume]", -1, ZWTextId::FormulaUnknownVariable, false, ""},
        {"missing formula is code 40", "A", "Missing + 1", -1, ZWTextId::FormulaValueMissing, true,
            "Not in the library: Missing"},
        {"a referenced formula's fault is named", "A", "Broken + Cost", -1, ZWTextId::FormulaValueMissing, true,
            "Broken cannot be evaluated: A device variable"},
        {"only where it comes from", "A", "UsesBroken + Price", -1, ZWTextId::FormulaValueMissing, true,
            "Without a value: Broken, UsesBroken\nBroken cannot be evaluated: A device variable of the formula is not "
            "known to the host, or its name carries a filter while filters (discriminators) are not allowed here. "
            "Check the name between the square brackets."},
        {"no current value is code 62", "A", "[meter.power] * 2", -1, ZWTextId::FormulaNoCurrentValue, true,
            "Without a value: [meter.power]"},
        {"division by zero", "A", "Price / 0", -1, ZWTextId::FormulaCannotEvaluate, false, "Division by zero"}}),
    [](const testing::TestParamInfo<CheckCase>& info) { return zwtest::CaseName(info.param.what); });

TEST(FormuleCheck, AFormulaOutsideTheLibraryNeedsNoName)
{
    const ZWFormuleCheck::Result named = ZWFormuleCheck::Evaluate(QString(), u"2*3"_s, {}, {}, -1);
    EXPECT_EQ(named.textId, ZWTextId::FormulaNameInvalid);
    const ZWFormuleCheck::Result card
        = ZWFormuleCheck::Evaluate(QString(), u"2*3"_s, {}, {}, -1, /*nameRequired=*/false);
    EXPECT_EQ(std::pair(card.textId, card.value), std::pair(int(ZWTextId::FormulaValue), 6.0));
    // Unnamed, it still may not refer to a formula that refers back to it.
    const ZWFormuleCheck::Result loop
        = ZWFormuleCheck::Evaluate(QString(), u"B"_s, {u"B"_s, u"C"_s}, {u"C"_s, u"B"_s}, -1, false);
    EXPECT_EQ(loop.textId, ZWTextId::FormulaRefersToItself);
}

TEST(FormuleCheck, LibraryDocumentLeavesOutTheEditedFormula)
{
    const std::vector<QString> names{u"A"_s, u"B"_s, u"C"_s};
    const std::vector<QString> texts{u"1"_s, u"A+1"_s, u"B<2"_s};
    XmlDocument doc;
    ASSERT_TRUE(ZWFormuleCheck::BuildFormulesDoc(names, texts, 1, doc));
    EXPECT_EQ(doc.Root().Name(), u"formules"_s);
    EXPECT_EQ(doc.Node(u"/formule?name=%s?"_s, u"C"_s).Value(u"/text"_s), u"B<2"_s);
    EXPECT_TRUE(doc.Node(u"/formule?name=%s?"_s, u"B"_s).IsNull());
    EXPECT_EQ(doc.Root().Nodes(u"formule"_s).size(), 2u);
}

TEST(FormuleCheck, OnlyALoopRefusesALibraryAndValuesShowFiveDecimals)
{
    using V = std::vector<QString>;
    EXPECT_FALSE(ZWFormuleCheck::HasLoop(V{u"A"_s, u"B"_s}, V{u"B + 1"_s, u"2"_s}));
    EXPECT_FALSE(ZWFormuleCheck::HasLoop(V{u"A"_s}, V{u"Missing"_s}));
    EXPECT_FALSE(ZWFormuleCheck::HasLoop(V{u"A"_s}, V{u"2 +"_s}));
    EXPECT_TRUE(ZWFormuleCheck::HasLoop(V{u"A"_s, u"B"_s, u"C"_s}, V{u"1"_s, u"C"_s, u"B"_s}));
    EXPECT_EQ(ZWFormuleCheck::FormatValue(2.0 / 3.0), u"0.66667"_s);
    EXPECT_EQ(ZWFormuleCheck::FormatValue(-1234567.0), u"-1234567.00000"_s);
    EXPECT_EQ(ZWFormuleCheck::FormatValue(0.000004), u"0.00000"_s);
}

} // namespace
