#pragma once

#include "editor/ZWPropertyEdit.h"
#include "editor/widgets/ZWPropertyPanel.h"
#include "tests/editor/EditorTestSupport.h"

#include <QtTest>
#include <QtWidgets>
#include <gtest/gtest.h>

namespace zwtest {

// The property panel, shown, on a page of cards of the given kinds: card i
// is "c<i>" at (10 i, 20) mm, 30 × 10 mm. It keeps its messages.
class PanelTest : public testing::Test
{
protected:
    class RecordingPanel : public ZWPropertyPanel
    {
    public:
        QStringList messages;

    protected:
        void ShowMessage(const QString& text) override { messages << text; }
    };

    PanelTest(std::initializer_list<const char*> elements, QSize size)
    {
        for (const char* element : elements) {
            const int n = int(page.cards.size());
            page.cards.push_back(MakeCard(
                QString::fromLatin1(element), {10.0 * n, 20, 30, 10}, QStringLiteral("c") + QString::number(n)));
        }
        panel.SetEdit(&edit);
        panel.resize(size);
        panel.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&panel));
        QObject::connect(&stack, &QUndoStack::indexChanged, &panel, &ZWPropertyPanel::Refresh);
    }
    QByteArray Xml() const { return PageXml(page); }
    void Select(std::vector<int> indices)
    {
        edit.SetSelection(std::move(indices));
        panel.Refresh();
    }
    template <class Card> Card& At(int index) { return static_cast<Card&>(*page.cards[size_t(index)]); }
    static void Type(QLineEdit* line, const QString& text)
    {
        line->setFocus();
        line->selectAll();
        QTest::keyClicks(line, text);
    }

    ZWTemplatePage page;
    QUndoStack stack;
    ZWPropertyEdit edit{page, stack};
    RecordingPanel panel;
};

} // namespace zwtest
