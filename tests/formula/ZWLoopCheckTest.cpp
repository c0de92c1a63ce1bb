#include "formula/ZWEvaluator.h"
#include "formula/ZWResultCode.h"
#include "formula/ZWTreeNode.h"
#include "tests/support/ZWTestSupport.h"

#include <QStringList>
#include <gtest/gtest.h>

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
    testing::Values(LoopCase{"no formulas", {}, -1, R::NoLoop},
        LoopCase{"constants", {{"A", "1"}, {"B", "2"}}, -1, R::NoLoop},
        LoopCase{"self reference", {{"A", "A + 1"}}, -1, R::ReferenceLoop},
        LoopCase{"two-formula loop", {{"A", "B"}, {"B", "A"}}, -1, R::ReferenceLoop},
        LoopCase{"two-formula loop, other order", {{"B", "A"}, {"A", "B"}}, -1, R::ReferenceLoop},
        LoopCase{"three-formula loop", {{"A", "1+B"}, {"B", "C*2"}, {"C", "sqrt(A)"}}, -1, R::ReferenceLoop},
        LoopCase{"diamond is no loop", {{"A", "B + C"}, {"B", "D"}, {"C", "D"}, {"D", "1"}}, -1, R::NoLoop},
        LoopCase{"missing formula", {{"A", "Z + 1"}}, -1, R::MissingFormula},
        LoopCase{"names are case-sensitive", {{"A", "a"}}, -1, R::MissingFormula},
        LoopCase{"invalid formula reached", {{"A", "B"}, {"B", "2 +"}}, -1, R::InvalidFormula},
        LoopCase{"invalid formula checked first", {{"A", "2 +"}, {"B", "B"}}, -1, R::InvalidFormula},
        // Depth first, references in postfix order.
        LoopCase{"missing before loop", {{"A", "B + C"}, {"B", "Missing"}, {"C", "C"}}, -1, R::MissingFormula},
        LoopCase{"loop before missing", {{"A", "C + B"}, {"B", "Missing"}, {"C", "C"}}, -1, R::ReferenceLoop},
        LoopCase{"multiplication first in postfix", {{"A", "B + C * D"}, {"B", "1"}, {"C", "C"}, {"D", "Missing"}}, -1,
            R::ReferenceLoop},
        // count 1 checks the first formula only (the one being edited).
        LoopCase{"count 1 ignores a later loop", {{"A", "1"}, {"B", "C"}, {"C", "B"}}, 1, R::NoLoop},
        LoopCase{"count 2 reaches it", {{"A", "1"}, {"B", "C"}, {"C", "B"}}, 2, R::ReferenceLoop},
        LoopCase{"count beyond the lists", {{"A", "1"}}, 5, R::NoLoop}, LoopCase{"count 0", {{"A", "A"}}, 0, R::NoLoop},
        LoopCase{"unnamed formula being edited",
            {{"abc123def456ghi789jkl", "Total * 2"}, {"Total", "abc123def456ghi789jkl + 1"}}, 1, R::ReferenceLoop},
        // The first formula of a name is the one used.
        LoopCase{"duplicate names", {{"A", "1"}, {"A", "A"}}, -1, R::NoLoop},
        LoopCase{"device variables are no references", {{"A", "[A.b] + [A]"}}, -1, R::NoLoop}),
    [](const testing::TestParamInfo<LoopCase>& info) { return zwtest::CaseName(info.param.what); });

std::pair<std::vector<QString>, std::vector<QString>> Chain(int length)
{
    std::vector<QString> names, texts;
    for (int i = 1; i <= length; ++i) {
        names.push_back(QStringLiteral("F%1").arg(i));
        texts.push_back(i < length ? QStringLiteral("F%1 + 1").arg(i + 1) : QStringLiteral("1"));
    }
    return {names, texts};
}

TEST(CheckBuclesLimits, ChainsDeeperThanEvaluationFollowsCountAsLoops)
{
    auto [names, texts] = Chain(ZWPolaca::MaxReferenceDepth);
    EXPECT_EQ(ZWEvaluator::CheckBucles(names, texts, -1), R::NoLoop);
    std::tie(names, texts) = Chain(ZWPolaca::MaxReferenceDepth + 1);
    EXPECT_EQ(ZWEvaluator::CheckBucles(names, texts, -1), R::ReferenceLoop);
    // Ten thousand formulas in a chain: a result, not a stack overflow.
    std::tie(names, texts) = Chain(10000);
    EXPECT_EQ(ZWEvaluator::CheckBucles(names, texts, -1), R::ReferenceLoop);
}

TEST(CheckBuclesLimits, SharedFormulasDoNotMultiplyTheWork)
{
    // G1 = G2+G3, G2 = G3+G4, ...: the number of paths grows like Fibonacci.
    std::vector<QString> names, texts;
    for (int i = 1; i <= 80; ++i) {
        names.push_back(QStringLiteral("G%1").arg(i));
        texts.push_back(i < 79 ? QStringLiteral("G%1 + G%2").arg(i + 1).arg(i + 2) : QStringLiteral("1"));
    }
    EXPECT_EQ(ZWEvaluator::CheckBucles(names, texts, -1), R::NoLoop);
    // The same with a loop at the bottom.
    texts.back() = QStringLiteral("G1");
    texts[78] = QStringLiteral("G80");
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
    const std::vector<QString> names
        = {QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C"), QStringLiteral("D")};
    const std::vector<QString> texts
        = {QStringLiteral("B + C * B"), QStringLiteral("D"), QStringLiteral("D - 1"), QStringLiteral("2")};
    ZWTreeNode root(nullptr, QStringLiteral("A"));
    EXPECT_EQ(ZWEvaluator::Expand(&root, names, texts), R::NoLoop);
    // A formula reached on two paths is expanded on both.
    EXPECT_EQ(Describe(&root), QStringLiteral("A(B(D) C(D))"));

    ZWTreeNode missing(nullptr, QStringLiteral("Z"));
    EXPECT_EQ(ZWEvaluator::Expand(&missing, names, texts), R::MissingFormula);
    ZWTreeNode loop(nullptr, QStringLiteral("A"));
    const std::vector<QString> loopTexts
        = {QStringLiteral("B"), QStringLiteral("C"), QStringLiteral("A"), QStringLiteral("1")};
    EXPECT_EQ(ZWEvaluator::Expand(&loop, names, loopTexts), R::ReferenceLoop);
    // Grown up to the formula that closes the loop.
    EXPECT_EQ(Describe(&loop), QStringLiteral("A(B(C))"));
}

TEST(ZWTreeNode, IsInBranchFollowsTheParents)
{
    ZWTreeNode root(nullptr, QStringLiteral("A"));
    auto* b = new ZWTreeNode(&root, QStringLiteral("B"));
    root.AddChild(b);
    auto* c = new ZWTreeNode(&root, QStringLiteral("C"));
    root.AddChild(c);
    auto* d = new ZWTreeNode(b, QStringLiteral("D"));
    b->AddChild(d);
    EXPECT_TRUE(d->IsInBranch(QStringLiteral("D")));
    EXPECT_TRUE(d->IsInBranch(QStringLiteral("B")));
    EXPECT_TRUE(d->IsInBranch(QStringLiteral("A")));
    EXPECT_FALSE(d->IsInBranch(QStringLiteral("C")));
    EXPECT_FALSE(d->IsInBranch(QStringLiteral("a")));
    EXPECT_FALSE(root.IsInBranch(QStringLiteral("B")));
    EXPECT_EQ(root.GetNumberOfChilds(), 2);
    EXPECT_EQ(root.GetChild(1), c);
    EXPECT_EQ(root.GetChild(2), nullptr);

    // A copy owns copies of the children, whose parent is the copy.
    const ZWTreeNode copy(root);
    ASSERT_EQ(copy.GetNumberOfChilds(), 2);
    EXPECT_NE(copy.GetChild(0), b);
    EXPECT_EQ(copy.GetChild(0)->GetParent(), &copy);
    EXPECT_TRUE(copy.GetChild(0)->GetChild(0)->IsInBranch(QStringLiteral("A")));
    ZWTreeNode assigned;
    assigned = *b;
    EXPECT_EQ(Describe(&assigned), QStringLiteral("B(D)"));
    assigned = *assigned.GetChild(0);
    EXPECT_EQ(Describe(&assigned), QStringLiteral("D"));
}

} // namespace
