#include "host/core/ZWNoValue.h"
#include "host/core/ZWSettingsKeys.h"
#include "tests/support/ZWTestSupport.h"
#include "tests/viewer/widgets/ViewerTestSupport.h"
#include "viewer/ZWViewZoom.h"

#include <QAction>
#include <QComboBox>
#include <QMenu>
#include <QMenuBar>
#include <QRegularExpression>
#include <QScreen>
#include <QScrollBar>
#include <QSet>
#include <QSettings>
#include <QToolBar>
#include <QToolButton>
#include <QWheelEvent>

using namespace Qt::StringLiterals;

// Keyboard, wheel and window behaviour of the viewer, driven by real events.
namespace {

using zwtest::PrintTo;

using zwtest::Factor;
using zwtest::Key;
using zwtest::TestFrame;
using zwtest::TestViewer;

void Wheel(QWidget* target, const QPointF& at, QPoint angle, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    QWheelEvent event(at, target->mapToGlobal(at), QPoint(), angle, Qt::NoButton, modifiers, Qt::NoScrollPhase, false);
    QApplication::sendEvent(target, &event);
}

class ViewerKeys : public zwtest::WindowTest
{
protected:
    void SetUp() override
    {
        WindowTest::SetUp();
        ASSERT_TRUE(zwtest::WriteFile(m_dir.filePath(u"Pages.XRPT"_s), zwtest::ThreePagesXml().toUtf8()));
    }

    // The frame as its own window, active, showing page 1 at `factor`
    // (0: fit), with the keyboard on the page. Its tool bars are hidden: the
    // keys work without them.
    void Show(ZWViewReportFrame& frame, double factor)
    {
        frame.SetTemplate(zwtest::ThreePages());
        frame.resize(700, 500);
        for (QAction* toggle : frame.ToolBarActions())
            toggle->trigger();
        frame.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&frame));
        frame.Refresh();
        if (factor > 0.0)
            frame.OnZoomSelector(ZWViewZoom::SelectorIndex(factor));
        ASSERT_EQ(QApplication::focusWidget(), frame.CurrentPageWnd());
    }
};

// Every entry of every menu level has a mnemonic of its own.
void ExpectMnemonics(const QList<QAction*>& actions, const QString& where)
{
    QSet<QChar> seen;
    for (QAction* action : actions) {
        if (action->isSeparator())
            continue;
        const QString text = action->text();
        const qsizetype at = text.indexOf(QRegularExpression(u"&[^&]"_s));
        ASSERT_GE(at, 0) << (where + QLatin1Char('/') + text).toStdString();
        const QChar key = text[at + 1].toLower();
        EXPECT_FALSE(seen.contains(key)) << (where + QLatin1Char('/') + text).toStdString();
        seen.insert(key);
        if (QMenu* sub = action->menu())
            ExpectMnemonics(sub->actions(), where + QLatin1Char('/') + text);
    }
}

TEST_F(ViewerKeys, TheViewerOpensWithTheKeyboardOnTheFittedPageAndEveryCommandHasAKey)
{
    // As the desktop application opens a report: the window first, then the report.
    TestViewer viewer;
    viewer.show();
    QString name = u"Pages"_s;
    ASSERT_TRUE(viewer.Setup(name, ID_GROUPBY_DAY));
    ZWViewReportFrame* frame = viewer.Frame();
    ZWViewTemplateWnd* page = frame->CurrentPageWnd();
    EXPECT_EQ(viewer.focusWidget(), page);
    // (The offscreen platform does not give the window back its activation
    // after the progress dialog of a gathering; a desktop does.)
    const auto reactivate = [&viewer] {
        viewer.activateWindow();
        return QTest::qWaitForWindowActive(&viewer);
    };
    ASSERT_TRUE(reactivate());
    EXPECT_EQ(QApplication::focusWidget(), page);
    EXPECT_LT(Factor(page), 0.0);
    EXPECT_FALSE(IsNoValue(Factor(page)));
    // Down scrolls (there is nothing to scroll when fitted): neither the
    // page nor the zoom changes.
    Key(Qt::Key_Down);
    Key(Qt::Key_Down);
    EXPECT_EQ(
        std::tuple(frame->CurrentPage(), frame->PageSelector()->currentIndex(), frame->ZoomSelector()->currentIndex()),
        std::tuple(0, 0, 0));
    // A click on a selector leaves the keyboard with the page.
    QTest::mouseClick(frame->ZoomSelector(), Qt::LeftButton);
    if (QWidget* popup = QApplication::activePopupWidget())
        popup->close();
    EXPECT_EQ(QApplication::focusWidget(), page);

    ASSERT_NE(viewer.MenuBar(), nullptr);
    ExpectMnemonics(viewer.MenuBar()->actions(), u"viewer"_s);
    // The units have keys that work from the page, and the keyboard stays
    // with the page through the gathering.
    const int before = viewer.GatheringCount();
    Key(Qt::Key_3, Qt::ControlModifier);
    EXPECT_EQ(viewer.Data().Period().Unit(), ID_GROUPBY_MONTH);
    EXPECT_TRUE(viewer.UnitAction(ID_GROUPBY_MONTH)->isChecked());
    EXPECT_EQ(viewer.GatheringCount(), before + 1);
    EXPECT_EQ(viewer.focusWidget(), page);
    ASSERT_TRUE(reactivate());
    Key(Qt::Key_5, Qt::ControlModifier);
    EXPECT_EQ(viewer.Data().Period().Unit(), ID_GROUPBY_YEAR);
    ASSERT_TRUE(reactivate());
    // The user interval asks first; cancelled, the unit in use stays checked.
    Key(Qt::Key_6, Qt::ControlModifier);
    EXPECT_EQ(viewer.dialogs, 1);
    EXPECT_EQ(viewer.Data().Period().Unit(), ID_GROUPBY_YEAR);
    EXPECT_TRUE(viewer.UnitAction(ID_GROUPBY_YEAR)->isChecked());
    EXPECT_FALSE(viewer.UnitAction(ID_GROUPBY_USER)->isChecked());
    // Go to date and previous period, from the page too.
    Key(Qt::Key_G, Qt::ControlModifier);
    EXPECT_EQ(viewer.dialogs, 2);
    const int gathered = viewer.GatheringCount();
    ASSERT_TRUE(reactivate());
    Key(Qt::Key_Left, Qt::AltModifier);
    EXPECT_EQ(viewer.GatheringCount(), gathered + 1);
    // Tool tips name the keys.
    EXPECT_EQ(viewer.Button(ID_VIEWER_PREVIOUS)->toolTip(), u"Previous (Alt+Left)"_s);
}

// One key from a place on a page of the frame at 200 %.
enum class At { Top, Middle, Bottom };
enum class Then { Top, Bottom, Same, OneLineOn, OneLineBack, OneViewOn, OneViewBack };

struct KeyCase
{
    const char* what;
    int page;
    At at;
    int key;
    int pageAfter;
    Then then;
    Qt::KeyboardModifiers modifiers = Qt::NoModifier;
    bool sideways = false;
};

class PageKeys : public ViewerKeys, public testing::WithParamInterface<KeyCase>
{};

TEST_P(PageKeys, ScrollOrTurnThePage)
{
    const KeyCase& c = GetParam();
    TestFrame frame;
    Show(frame, 2.0);
    frame.GoToPage(c.page);
    ZWViewTemplateWnd* wnd = frame.CurrentPageWnd();
    ASSERT_EQ(QApplication::focusWidget(), wnd);
    QScrollBar* bar = c.sideways ? wnd->horizontalScrollBar() : wnd->verticalScrollBar();
    ASSERT_TRUE(bar->isVisible());
    const int start = c.at == At::Top ? 0 : c.at == At::Bottom ? bar->maximum() : bar->maximum() / 2;
    bar->setValue(start);
    const int view = c.sideways ? wnd->viewport()->width() : wnd->viewport()->height();
    const int line = std::max(1, int(std::lround(view / 20.0)));

    Key(c.key, c.modifiers);

    EXPECT_EQ(frame.CurrentPage(), c.pageAfter);
    ZWViewTemplateWnd* now = frame.CurrentPageWnd();
    // The zoom goes with the reader from page to page, and so does the keyboard.
    EXPECT_DOUBLE_EQ(Factor(now), 2.0);
    EXPECT_EQ(QApplication::focusWidget(), now);
    QScrollBar* after = c.sideways ? now->horizontalScrollBar() : now->verticalScrollBar();
    // What each `Then` leaves, in its order.
    const int expected[] = {0, after->maximum(), start, start + line, start - line,
        std::min(start + view, after->maximum()), std::max(start - view, 0)};
    EXPECT_EQ(after->value(), expected[int(c.then)]);
}

INSTANTIATE_TEST_SUITE_P(Viewer, PageKeys,
    testing::ValuesIn(
        std::vector<KeyCase>{{"Down scrolls a twentieth of the window", 0, At::Top, Qt::Key_Down, 0, Then::OneLineOn},
            {"Up at the top stays on the page", 1, At::Top, Qt::Key_Up, 1, Then::Top},
            {"Right scrolls a twentieth sideways", 0, At::Top, Qt::Key_Right, 0, Then::OneLineOn, Qt::NoModifier, true},
            {"Page Down scrolls the window's height", 0, At::Top, Qt::Key_PageDown, 0, Then::OneViewOn},
            {"Page Up scrolls back the window's height", 0, At::Bottom, Qt::Key_PageUp, 0, Then::OneViewBack},
            {"Shift Space scrolls back the window's height", 0, At::Bottom, Qt::Key_Space, 0, Then::OneViewBack,
                Qt::ShiftModifier},
            {"End goes to the bottom of the page", 0, At::Top, Qt::Key_End, 0, Then::Bottom},
            {"Home goes to the top of the page", 0, At::Middle, Qt::Key_Home, 0, Then::Top},
            {"Page Down at the bottom goes on to the next page's top", 0, At::Bottom, Qt::Key_PageDown, 1, Then::Top},
            {"Space at the bottom goes on to the next page's top", 1, At::Bottom, Qt::Key_Space, 2, Then::Top},
            {"Page Up at the top goes back to the previous page's bottom", 2, At::Top, Qt::Key_PageUp, 1, Then::Bottom},
            {"Page Down at the bottom of the last page stays", 2, At::Bottom, Qt::Key_PageDown, 2, Then::Bottom},
            {"Page Up at the top of the first page stays", 0, At::Top, Qt::Key_PageUp, 0, Then::Top},
            {"Ctrl Page Down goes to the next page's top", 0, At::Middle, Qt::Key_PageDown, 1, Then::Top,
                Qt::ControlModifier},
            {"Ctrl Page Up goes to the previous page's top", 2, At::Middle, Qt::Key_PageUp, 1, Then::Top,
                Qt::ControlModifier},
            {"a new page keeps the sideways position", 0, At::Middle, Qt::Key_PageDown, 1, Then::Same,
                Qt::ControlModifier, true}}),
    [](const testing::TestParamInfo<KeyCase>& info) { return zwtest::CaseName(info.param.what); });

TEST_F(ViewerKeys, WheelAndArrowStepsFollowTheWindowSize)
{
    ZWViewReportFrame frame;
    Show(frame, 2.0);
    ZWViewTemplateWnd* wnd = frame.CurrentPageWnd();
    QScrollBar* vbar = wnd->verticalScrollBar();
    QScrollBar* hbar = wnd->horizontalScrollBar();
    for (const QSize size : {QSize(700, 500), QSize(900, 760)}) {
        frame.resize(size);
        QApplication::processEvents();
        const QSize view = wnd->viewport()->size();
        const int vline = vbar->singleStep(), hline = hbar->singleStep();
        EXPECT_EQ(std::tuple(vline, vbar->pageStep(), hline, hbar->pageStep()),
            std::tuple(
                ZWViewZoom::LineStep(view.height()), view.height(), ZWViewZoom::LineStep(view.width()), view.width()));
        // One notch of the wheel down is one line; Shift turns it sideways;
        // the wheel never turns the page.
        vbar->setValue(0);
        hbar->setValue(0);
        for (const auto& [notches, modifiers, down, across] :
            {std::tuple(-1, Qt::NoModifier, 1, 0), std::tuple(-2, Qt::NoModifier, 3, 0),
                std::tuple(1, Qt::NoModifier, 2, 0), std::tuple(-1, Qt::ShiftModifier, 2, 1)}) {
            Wheel(wnd->viewport(), QPointF(50, 50), QPoint(0, 120 * notches), modifiers);
            EXPECT_EQ(std::tuple(vbar->value(), hbar->value(), frame.CurrentPage()),
                std::tuple(down * vline, across * hline, 0));
        }
    }
}

// A zoom from a place on the page, by Ctrl+wheel at a point or by keys at
// the middle of the window.
struct ZoomCase
{
    const char* what;
    double from;
    QPointF mouse; // fractions of the window; none: the keys
    int key;       // with Ctrl; 0: the wheel
    int notches;
    double to;
};

class ZoomKeepsItsPoint : public ViewerKeys, public testing::WithParamInterface<ZoomCase>
{};

// The page's millimetre under a point of the window.
QPointF MmUnder(const ZWViewTemplateWnd* wnd, const QPointF& point)
{
    const double f = std::fabs(Factor(wnd));
    const QPointF px = wnd->PixelsPerMm();
    const QSize view = wnd->viewport()->size();
    const auto origin = [](double pageExtent, int viewExtent, int scroll) {
        const double centred = (viewExtent - pageExtent) / 2;
        return std::lround(centred) < 0 ? -double(scroll) : centred;
    };
    const double left = origin(f * wnd->GetWidth() * px.x(), view.width(), wnd->horizontalScrollBar()->value());
    const double top = origin(f * wnd->GetHeight() * px.y(), view.height(), wnd->verticalScrollBar()->value());
    return QPointF((point.x() - left) / (f * px.x()), (point.y() - top) / (f * px.y()));
}

TEST_P(ZoomKeepsItsPoint, WhileTheFactorChanges)
{
    const ZoomCase& c = GetParam();
    ZWViewReportFrame frame;
    Show(frame, c.from);
    ZWViewTemplateWnd* wnd = frame.CurrentPageWnd();
    wnd->horizontalScrollBar()->setValue(wnd->horizontalScrollBar()->maximum() / 2);
    wnd->verticalScrollBar()->setValue(wnd->verticalScrollBar()->maximum() / 2);
    const QSize view = wnd->viewport()->size();
    const QPointF point = c.key ? QRectF(wnd->viewport()->rect()).center()
                                : QPointF(c.mouse.x() * view.width(), c.mouse.y() * view.height());
    const QPointF before = MmUnder(wnd, point);

    if (c.key)
        Key(c.key, Qt::ControlModifier);
    else
        Wheel(wnd->viewport(), point, QPoint(0, 120 * c.notches), Qt::ControlModifier);

    ASSERT_DOUBLE_EQ(Factor(wnd), c.to);
    const QPointF after = MmUnder(wnd, point);
    // Within a pixel at the new factor.
    const double tolerance = 1.0 / (c.to * wnd->PixelsPerMm().x());
    EXPECT_NEAR(after.x(), before.x(), tolerance);
    EXPECT_NEAR(after.y(), before.y(), tolerance);
}

INSTANTIATE_TEST_SUITE_P(Viewer, ZoomKeepsItsPoint,
    testing::ValuesIn(
        std::vector<ZoomCase>{{"Ctrl wheel up keeps the point under the mouse", 2.0, {0.3, 0.7}, 0, 1, 2.5},
            {"Ctrl wheel down keeps the point under the mouse", 3.0, {0.8, 0.2}, 0, -1, 2.5},
            {"Ctrl plus keeps the middle of the window", 2.0, {}, Qt::Key_Plus, 0, 2.5}}),
    [](const testing::TestParamInfo<ZoomCase>& info) { return zwtest::CaseName(info.param.what); });

TEST_F(ViewerKeys, TheFramesZoomAndPrintKeys)
{
    TestFrame frame;
    Show(frame, 0.0);
    ASSERT_TRUE(frame.PagesBar()->isHidden() && frame.ZoomBar()->isHidden());
    ZWViewTemplateWnd* first = frame.CurrentPageWnd();
    const double fit = -Factor(first);
    const double up = *ZWViewZoom::ZoomIn(-fit);
    for (const auto& [key, factor] : {std::pair(Qt::Key_Equal, up), std::pair(Qt::Key_Plus, up + 0.5),
             std::pair(Qt::Key_Minus, up), std::pair(Qt::Key_0, -fit)}) {
        Key(key, Qt::ControlModifier);
        EXPECT_DOUBLE_EQ(Factor(first), factor) << key;
    }
    Key(Qt::Key_P, Qt::ControlModifier);
    EXPECT_EQ(frame.dialogs, 1);

    // The tool tips name the keys.
    EXPECT_EQ(frame.Action(ZWViewReportFrame::ID_ZOOM_IN)->toolTip(), u"Zoom in (Ctrl++)"_s);
}

QRect Stored()
{
    return ZWMarentaSetup::instance().OpenSettings()->value(ZWSettingsKeys::ViewerGeometry).toRect();
}

TEST_F(ViewerKeys, TheViewerOpensWhereItWasNeverLargerThanTheScreen)
{
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    const QRect placed(screen.topLeft() + QPoint(30, 40), QSize(500, 400));
    {
        // The first time: the default size, cut to the screen.
        TestViewer viewer;
        viewer.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&viewer));
        EXPECT_TRUE(screen.contains(viewer.frameGeometry())) << screen.width() << 'x' << screen.height();
        EXPECT_EQ(viewer.width(), std::min(1000, screen.width() - (viewer.frameGeometry().width() - viewer.width())));
        viewer.setGeometry(placed);
        viewer.close();
    }
    EXPECT_EQ(Stored(), placed);
    {
        TestViewer viewer;
        viewer.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&viewer));
        EXPECT_EQ(viewer.geometry(), placed);
        viewer.close();
    }
    // Remembered on a larger screen, or half off this one: it comes back whole.
    ZWMarentaSetup::instance().OpenSettings()->setValue(
        ZWSettingsKeys::ViewerGeometry, QRect(screen.right() - 100, screen.top() + 50, 4000, 3000));
    TestViewer viewer;
    viewer.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&viewer));
    EXPECT_EQ(viewer.frameGeometry(), screen);
}

} // namespace
