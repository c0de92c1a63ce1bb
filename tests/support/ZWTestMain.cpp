#include <QtGlobal>
#ifdef ZW_TEST_WIDGETS
#include <QApplication>
using App = QApplication;
#else
#include <QGuiApplication>
using App = QGuiApplication;
#endif
#include <gtest/gtest.h>

// Every test runs inside a GUI application on the offscreen platform: the
// template tests measure and draw text, which needs the font database,
// never a display.
int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // Deterministic number and date conventions unless a test sets its own.
    qputenv("ZWINFORMES_LOCALE", "C");
    testing::InitGoogleTest(&argc, argv);
    App app(argc, argv);
    return RUN_ALL_TESTS();
}
