#pragma once

#include "host/core/XmlDocument.h"
#include "host/core/ZWMarentaSetup.h"
#include "viewer/widgets/CDlgViewer.h"
#include "viewer/widgets/ZWViewReportFrame.h"
#include "viewer/widgets/ZWViewTemplateWnd.h"

#include <QApplication>
#include <QTemporaryDir>
#include <QTest>
#include <functional>
#include <gtest/gtest.h>
#include <vector>

namespace zwtest {

// Three A4 portrait pages with a label each, as a report file holds them.
inline QString ThreePagesXml()
{
    QString xml = QStringLiteral("<design><id>{1}</id><name>Three pages</name>");
    for (const char* text : {"one", "two", "three"})
        xml += QStringLiteral("<page><width>210.00</width><height>297.00</height><label><x>20</x><y>20</y>"
                              "<width>100</width><height>10</height><id>T</id><value>%1</value></label></page>")
                   .arg(QLatin1String(text));
    return xml + QStringLiteral("</design>");
}

inline XmlDocument ThreePages()
{
    XmlDocument doc;
    EXPECT_TRUE(doc.Parse(ThreePagesXml()));
    return doc;
}

// The zoom factor of a page window (negative: fitted).
inline double Factor(const ZWViewTemplateWnd* wnd)
{
    double f = 0.0;
    wnd->GetMode(f);
    return f;
}

// A key pressed on the widget that has the keyboard.
inline void Key(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    QWidget* focus = QApplication::focusWidget();
    ASSERT_NE(focus, nullptr);
    QTest::keyClick(focus, Qt::Key(key), modifiers);
}

// A viewer (or frame) whose modal dialogs are answered by the test instead
// of a user (cancelled when it gives no answer), and whose messages are
// recorded.
template <class Window> class Answered : public Window
{
public:
    std::function<int(QDialog&)> onDialog;
    std::vector<QString> messages;
    int dialogs = 0;

protected:
    int ExecDialog(QDialog& dialog) override
    {
        ++dialogs;
        return onDialog ? onDialog(dialog) : int(QDialog::Rejected);
    }
};

class TestViewer : public Answered<CDlgViewer>
{
protected:
    void ShowMessage(const QString& text) override { messages.push_back(text); }
};

using TestFrame = Answered<ZWViewReportFrame>;

// Settings and the report folder in a temporary folder of each test.
class WindowTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        ZWMarentaSetup::instance().SetSettingsFile(m_dir.filePath(QStringLiteral("settings.ini")));
        ZWMarentaSetup::instance().SetReportDirectory(m_dir.path());
    }
    void TearDown() override
    {
        ZWMarentaSetup::instance().SetReportDirectory(QString());
        ZWMarentaSetup::instance().SetSettingsFile(QString());
    }

    QTemporaryDir m_dir;
};

} // namespace zwtest
