#include "formula/ZWEvaluator.h"
#include "formula/ZWResultCode.h"
#include "formula/ZWTreeNode.h"
#include "tests/support/ZWTestSupport.h"

#include <QStringList>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

using R = ZWResultCode;

struct LoopCase
{
    const char* what;
    std::vector<std::pair<const char*, const char*>> library;
    int count;
    int expected;
};

class CheckBucles : public testing::TestWithParam<LoopCase>
{};

TEST_P(CheckBucles, Result)
{
    std::vector<QString> names, texts;
    for (const auto& [name, text] : GetParam().library) {
        names.push_back(QString::fromUtf8(name));
        texts.push_back(QString::fromUtf8(text));
    }
    EXPECT_EQ(ZWEvaluator::CheckBucles(names, texts, GetParam().count), GetParam().expected) << GetParam().what;
}

INSTANTIATE_TEST_SUITE_P(Libraries, CheckBucles,
    testing::ValuesIn(std::vector<LoopCase>{{"no formulas", {}, -1, R::NoLoop},
        {"constants", {{"A", "1"}, {"B", "2"}}, -1, R::NoLoop},
        {"self reference", {{"A", "A + 1"}}, -1, R::ReferenceLoop},
        {"two-formula loop", {{"A", "B"}, {"B", "A"}}, -1, R::ReferenceLoop},
        {"two-formula loop, other order", {{"B", "A"}, {"A", "B"}}, -1, R::ReferenceLoop},
        {"three-formula loop", {{"A", "1+B"}, {"B", "C*2"}, {"C", "sqrt(A)"}}, -1, R::ReferenceLoop},
        {"diamond is no loop", {{"A", "B + C"}, {"B", "D"}, {"C", "D"}, {"D", "1"}}, -1, R::NoLoop},
        {"missing formula", {{"A", "Z + 1"}}, -1, R::MissingFormula},
        {"names are case-sensitive", {{"A", "a"}}, -1, R::MissingFormula},
        {"invalid formula reached", {{"A", "B"}, {"B", "2 +"}}, -1, R::InvalidFormula},
        {"invalid formula checked first", {{"A", "2 +"}, {"B", "B"}}, -1, R::InvalidFormula},
        // Depth first, references in postfix order.
        {"missing before loop", {{"A", "B + C"}, {"B", "Missing"}, {"C", "C"}}, -1, R::MissingFormula},
        {"loop before missing", {{"A", "C + B"}, {"B", "Missing"}, {"C", "C"}}, -1, R::ReferenceLoop},
        {"multiplication first in postfix", {{"A", "B + C * D"}, {"B", "1"}, {"C", "C"}, {"D", "Missing"}}, -1,
            R::ReferenceLoop},
        // count 1 checks the first formula only (the one being edited).
        {"count 1 ignores a later loop", {{"A", "1"}, {"B", "C"}, {"C", "B"}}, 1, R::NoLoop},
        {"count 2 reaches it", {{"A", "1"}, {"B", "C"}, {"C", "B"}}, 2, R::ReferenceLoop},
        {"count beyond the lists", {{"A", "1"}}, 5, R::NoLoop}, {"count 0", {{"A", "A"}}, 0, R::NoLoop},
        {"unnamed formula being edited",
            {{"abc123def456ghi789jkl", "Total * 2"}, {"Total", "abc123def456ghi789jkl + 1"}}, 1, R::ReferenceLoop},
        // The first formula of a name is the one used.
        {"duplicate names", {{"A", "1"}, {"A", "A"}}, -1, R::NoLoop},
        {"device variables are no references", {{"A", "[A.b] + [A]"}}, -1, R::NoLoop}}),
    [](const testing::TestParamInfo<LoopCase>& info) { return zwtest::CaseName(info.param.what); });

// CheckBucles of F1 = F2 + 1, F2 = F3 + 1, ..., the last one 1.
int CheckChain(int length)
{
    std::vector<QString> names, texts;
    for (int i = 1; i <= length; ++i) {
        names.push_back(u"F%1"_s.arg(i));
        texts.push_back(i < length ? u"F%1 + 1"_s.arg(i + 1) : u"1"_s);
    }
    return ZWEvaluator::CheckBucles(names, texts, -1);
}

TEST(CheckBuclesLimits, ChainsDeeperThanEvaluationFollowsCountAsLoops)
{
    EXPECT_EQ(CheckChain(ZWPolaca::MaxReferenceDepth), R::NoLoop);
    EXPECT_EQ(CheckChain(ZWPolaca::MaxReferenceDepth + 1), R::ReferenceLoop);
    // Ten thousand formulas in a chain: a result, not a stack overflow.
    EXPECT_EQ(CheckChain(10000), R::ReferenceLoop);
}

TEST(CheckBuclesLimits, SharedFormulasDoNotMultiplyTheWork)
{
    // G1 = G2+G3, G2 = G3+G4, ...: the number of paths grows like Fibonacci.
    std::vector<QString> names, texts;
    for (int i = 1; i <= 80; ++i) {
        names.push_back(u"G%1"_s.arg(i));
        texts.push_back(i < 79 ? u"G%1 + G%2"_s.arg(i + 1).arg(i + 2) : u"1"_s);
    }
    EXPECT_EQ(ZWEvaluator::CheckBucles(names, texts, -1), R::NoLoop);
    // The same with a loop at the bottom.
    texts.back() = u"G1"_s;
    texts[78] = u"G80"_s;
    EXPECT_EQ(ZWEvaluator::CheckBucles(names, texts, -1), R::ReferenceLoop);
}

QString Describe(const ZWTreeNode* node)
{
    QString s = node->GetValue();
    if (node->GetNumberOfChilds() == 0)
        return s;
    QStringList children;
    for (int i = 0; i < node->GetNumberOfChilds(); ++i)
        children << Describe(node->GetChild(i));
    return s + QLatin1Char('(') + children.join(QLatin1Char(' ')) + QLatin1Char(')');
}

TEST(Expand, GrowsTheWholeTreeDepthFirst)
{
    const std::vector<QString> names = {u"A"_s, u"B"_s, u"C"_s, u"D"_s};
    const std::vector<QString> texts = {u"B + C * B"_s, u"D"_s, u"D - 1"_s, u"2"_s};
    ZWTreeNode root(nullptr, u"A"_s);
    EXPECT_EQ(ZWEvaluator::Expand(&root, names, texts), R::NoLoop);
    // A formula reached on two paths is expanded on both.
    EXPECT_EQ(Describe(&root), u"A(B(D) C(D))"_s);

    ZWTreeNode missing(nullptr, u"Z"_s);
    EXPECT_EQ(ZWEvaluator::Expand(&missing, names, texts), R::MissingFormula);
    ZWTreeNode loop(nullptr, u"A"_s);
    const std::vector<QString> loopTexts = {u"B"_s, u"C"_s, u"A"_s, u"1"_s};
    EXPECT_EQ(ZWEvaluator::Expand(&loop, names, loopTexts), R::ReferenceLoop);
    // Grown up to the formula that closes the loop.
    EXPECT_EQ(Describe(&loop), u"A(B(C))"_s);
}

TEST(ZWTreeNode, IsInBranchFollowsTheParents)
{
    ZWTreeNode root(nullptr, u"A"_s);
    auto* b = new ZWTreeNode(&root, u"B"_s);
    root.AddChild(b);
    root.AddChild(new ZWTreeNode(&root, u"C"_s));
    auto* d = new ZWTreeNode(b, u"D"_s);
    b->AddChild(d);
    // D's branch runs up through B to A, case-sensitively; the root's is itself.
    QString branch;
    for (const QString& name : {u"D"_s, u"B"_s, u"A"_s, u"C"_s, u"a"_s})
        branch += d->IsInBranch(name) ? QLatin1Char('1') : QLatin1Char('0');
    EXPECT_EQ(branch, u"11100"_s);
    EXPECT_FALSE(root.IsInBranch(u"B"_s));
    EXPECT_EQ(Describe(&root), u"A(B(D) C)"_s);
    EXPECT_EQ(root.GetChild(2), nullptr);

    // A copy owns copies of the children, whose parent is the copy.
    const ZWTreeNode copy(root);
    EXPECT_EQ(Describe(&copy), u"A(B(D) C)"_s);
    EXPECT_NE(copy.GetChild(0), b);
    EXPECT_EQ(copy.GetChild(0)->GetParent(), &copy);
    EXPECT_TRUE(copy.GetChild(0)->GetChild(0)->IsInBranch(u"A"_s));
    ZWTreeNode assigned;
    assigned = *b;
    EXPECT_EQ(Describe(&assigned), u"B(D)"_s);
    assigned = *assigned.GetChild(0);
    EXPECT_EQ(Describe(&assigned), u"D"_s);
}

} // namespace
