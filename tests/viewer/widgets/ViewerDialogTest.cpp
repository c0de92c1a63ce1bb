#include "host/core/ZWLoadString.h"
#include "host/core/ZWTextId.h"
#include "host/drivers/ZWDriverSupport.h"
#include "host/widgets/CGoToDateDlg.h"
#include "template/ZWCardLabel.h"
#include "tests/host/store/ZWStoreTestSupport.h"
#include "tests/support/ZWTestSupport.h"
#include "tests/viewer/widgets/ViewerTestSupport.h"
#include "viewer/widgets/CDlgUserInterval.h"

#include <QAction>
#include <QCalendarWidget>
#include <QFileDialog>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QProgressDialog>
#include <QSemaphore>
#include <QSettings>
#include <QThread>
#include <QTimer>
#include <QToolButton>
#include <ctime>

using namespace Qt::StringLiterals;

namespace {

using zwtest::TestViewer;

// Holds the first selection of logged data until the test lets it go, and
// notes the thread it ran on.
class GatedLoggerData : public ZWLoggerData
{
public:
    bool SelectData(const ZWDateTime& start, const ZWDateTime& end, ZWProgress* progress) override
    {
        thread = QThread::currentThread();
        entered.release();
        release.acquire();
        return ZWLoggerData::SelectData(start, end, progress);
    }
    QThread* thread = nullptr;
    QSemaphore entered;
    QSemaphore release;
};

ZWDateTime At(int y, int m, int d, int h = 0, int min = 0)
{
    return ZWDateTime::FromDMY(y, m, d, h, min, 0);
}

// A report with the energy of the period and the period's bounds.
const char* kReport = R"(<design><id>{1}</id><name>Daily energy</name>
<page><width>210.00</width><height>297.00</height>
<label><x>10</x><y>10</y><width>80</width><height>10</height><id>T</id><value>Energy</value></label>
<formule><x>10</x><y>30</y><width>80</width><height>10</height><id>E</id>
  <value>[Main meter.Active energy]</value><format>.1</format></formule>
<date><x>10</x><y>50</y><width>80</width><height>10</height><id>B</id><field>BEGIN_DATE</field>
  <format>yyyy-MM-dd hh:mm</format></date>
<date><x>10</x><y>70</y><width>80</width><height>10</height><id>N</id><field>END_DATE</field>
  <format>yyyy-MM-dd hh:mm</format></date>
</page>
<page><width>210.00</width><height>297.00</height>
<formule><x>10</x><y>30</y><width>80</width><height>10</height><id>E2</id>
  <value>[Main meter.Active energy] * 2</value><format>.0</format></formule>
</page></design>)";

class ViewerDialog : public zwtest::WindowTest
{
protected:
    void SetUp() override
    {
        qputenv("TZ", "UTC");
        tzset();
        WindowTest::SetUp();
        ASSERT_TRUE(zwtest::WriteFile(m_dir.filePath(u"Energy.XRPT"_s), kReport));

        // An hourly meter from 1 January to 1 April 2026 that counts, each
        // hour, the day of the month in kWh: day D uses 24 × D kWh.
        ZWLoggerUrl url;
        QString error;
        ASSERT_TRUE(url.Parse(u"sqlite:"_s + m_dir.filePath(u"logger.sqlite"_s), &error));
        auto store = std::make_shared<ZWSqlLoggerStore>(url, ZWSqlLoggerStore::Creation::CreateMissing);
        ASSERT_TRUE(store->Open(&error)) << error.toStdString();
        zwtest::Samples samples;
        double reading = 1000.0;
        for (qint64 t = At(2026, 1, 1).Seconds(); t <= At(2026, 4, 1).Seconds(); t += 3600) {
            samples.emplace_back(t, reading);
            reading += ZWDateTime::FromSeconds(t).Day();
        }
        zwtest::WriteSamples(*store, u"Main meter.Active energy"_s, ZWSqlLoggerStore::Kind::Counter, samples);
        ZWDriverSupport::SetStore(store);
    }

    void TearDown() override
    {
        ZWDriverSupport::SetStore(nullptr);
        WindowTest::TearDown();
    }

    // Opens the report as the host does, at `now`.
    void Open(TestViewer& viewer, int unit, const ZWDateTime& now = At(2026, 3, 10, 12))
    {
        viewer.Data().SetNow(now);
        QString name = u"Energy"_s;
        ASSERT_TRUE(viewer.Setup(name, unit));
        viewer.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&viewer));
    }

    static QString Card(const TestViewer& viewer, const char* id, int page = 0)
    {
        const ZWCardControl* card = viewer.Frame()->PageWnd(page)->Page().Page().FindCard(QString::fromLatin1(id));
        const auto* label = dynamic_cast<const ZWCardLabel*>(card);
        return label ? label->value : u"(no card)"_s;
    }

    // The period's bounds as the report shows them.
    static QString Period(const TestViewer& viewer) { return Card(viewer, "B") + u" to "_s + Card(viewer, "N"); }

    // Gatherings so far, the energy, the period, and whether Next and Go to
    // are enabled.
    static QString State(const TestViewer& v)
    {
        return u"%1: %2, %3%4%5"_s.arg(v.GatheringCount())
            .arg(Card(v, "E"), Period(v), v.Action(ID_VIEWER_NEXT)->isEnabled() ? u", next"_s : QString(),
                v.Action(ID_VIEWER_GOTO)->isEnabled() ? u", go to"_s : QString());
    }

    static void Click(const TestViewer& viewer, int command)
    {
        QToolButton* button = viewer.Button(command);
        ASSERT_NE(button, nullptr);
        QTest::mouseClick(button, Qt::LeftButton);
    }

    static QAction* UnitAction(QMenu& menu, int unit)
    {
        for (QAction* action : menu.actions())
            if (action->data().toInt() == unit)
                return action;
        return nullptr;
    }
};

TEST_F(ViewerDialog, OpensOnThePresentDayStepsThroughDaysAndGoesToADate)
{
    TestViewer viewer;
    Open(viewer, ID_GROUPBY_DAY);
    // The present day is not over: no next day yet.
    EXPECT_EQ(State(viewer), u"1: 240, 2026-03-10 00:00 to 2026-03-11 00:00, go to"_s);
    // Every page window got the same values.
    EXPECT_EQ(Card(viewer, "E2", 1), u"480"_s);
    EXPECT_EQ(viewer.Frame()->UserData(), viewer.Data().ValueDocument());
    EXPECT_EQ(viewer.windowTitle(), u"Daily energy — 10 Mar 2026 00:00:00 to 11 Mar 2026 00:00:00"_s);

    Click(viewer, ID_VIEWER_PREVIOUS);
    EXPECT_EQ(State(viewer), u"2: 216, 2026-03-09 00:00 to 2026-03-10 00:00, next, go to"_s);
    Click(viewer, ID_VIEWER_NEXT);
    EXPECT_EQ(State(viewer), u"3: 240, 2026-03-10 00:00 to 2026-03-11 00:00, go to"_s);
    // A disabled button does nothing.
    Click(viewer, ID_VIEWER_NEXT);
    EXPECT_EQ(viewer.GatheringCount(), 3);

    // Go to date, cancelled: nothing changes.
    Click(viewer, ID_VIEWER_PREVIOUS);
    Click(viewer, ID_VIEWER_PREVIOUS);
    Click(viewer, ID_VIEWER_GOTO);
    EXPECT_EQ(viewer.dialogs, 1);
    EXPECT_EQ(State(viewer), u"5: 192, 2026-03-08 00:00 to 2026-03-09 00:00, next, go to"_s);
    // The dialog opens on the period's start and leads to the chosen day.
    QDate shown;
    viewer.onDialog = [&](QDialog& dialog) {
        auto& goTo = dynamic_cast<CGoToDateDlg&>(dialog);
        shown = goTo.Calendar()->selectedDate();
        goTo.Calendar()->setSelectedDate(QDate(2026, 1, 20));
        goTo.accept();
        return dialog.result();
    };
    Click(viewer, ID_VIEWER_GOTO);
    EXPECT_EQ(shown, QDate(2026, 3, 8));
    EXPECT_EQ(State(viewer), u"6: 480, 2026-01-20 00:00 to 2026-01-21 00:00, next, go to"_s);
    EXPECT_TRUE(viewer.messages.empty());
}

TEST_F(ViewerDialog, GroupByUnitsAndTheUserInterval)
{
    TestViewer viewer;
    Open(viewer, ID_GROUPBY_DAY);
    QMenu menu;
    ASSERT_TRUE(viewer.CreateGroupByMenu(menu));
    QStringList texts;
    for (QAction* action : menu.actions())
        texts << action->text() + (action->isChecked() ? u"*"_s : QString());
    EXPECT_EQ(
        texts, (QStringList{u"&User interval..."_s, u"&Day*"_s, u"&Week"_s, u"&Month"_s, u"&Quarter"_s, u"&Year"_s}));

    // The same unit again: nothing is gathered.
    UnitAction(menu, ID_GROUPBY_DAY)->trigger();
    EXPECT_EQ(viewer.GatheringCount(), 1);

    // Month: the present month, remembered for the next report.
    const auto lastGroup
        = [] { return ZWMarentaSetup::instance().OpenSettings()->value(u"LastReportGroup"_s).toString(); };
    UnitAction(menu, ID_GROUPBY_MONTH)->trigger();
    EXPECT_EQ(viewer.GatheringCount(), 2);
    EXPECT_EQ(Period(viewer), u"2026-03-01 00:00 to 2026-04-01 00:00"_s);
    EXPECT_EQ(lastGroup(), u"MONTH"_s);
    EXPECT_FALSE(viewer.Action(ID_VIEWER_NEXT)->isEnabled());
    Click(viewer, ID_VIEWER_PREVIOUS);
    // February: 24 × (1 + 2 + ... + 28) kWh.
    EXPECT_EQ(Card(viewer, "E"), u"9744"_s);

    // Through the tool bar button, as a user does: its menu checks the unit
    // in use, and a choice there applies.
    QStringList checked;
    QTimer::singleShot(0, [&] {
        auto* popup = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        if (!popup)
            return;
        for (QAction* action : popup->actions())
            if (action->isChecked())
                checked << action->text();
        QAction* year = UnitAction(*popup, ID_GROUPBY_YEAR);
        popup->close();
        if (year)
            year->trigger();
    });
    Click(viewer, ID_VIEWER_GROUPBY);
    EXPECT_EQ(checked, QStringList{u"&Month"_s});
    EXPECT_EQ(Period(viewer), u"2026-01-01 00:00 to 2027-01-01 00:00"_s);
    EXPECT_EQ(lastGroup(), u"YEAR"_s);

    // The user interval, cancelled: nothing.
    UnitAction(menu, ID_GROUPBY_USER)->trigger();
    EXPECT_EQ(viewer.dialogs, 1);
    EXPECT_EQ(viewer.GatheringCount(), 4);
    viewer.onDialog = [](QDialog& dialog) {
        auto& interval = dynamic_cast<CDlgUserInterval&>(dialog);
        interval.SetInterval(At(2026, 3, 1, 6), At(2026, 3, 2, 6));
        interval.accept();
        return interval.result();
    };
    UnitAction(menu, ID_GROUPBY_USER)->trigger();
    // 18 hours of day 1 and 6 of day 2; neither Next nor Go to. The user
    // unit is not remembered as the last unit.
    EXPECT_EQ(State(viewer), u"5: 30, 2026-03-01 06:00 to 2026-03-02 06:00"_s);
    EXPECT_EQ(lastGroup(), u"YEAR"_s);
    // The same interval again still reloads.
    QMenu again;
    viewer.CreateGroupByMenu(again);
    EXPECT_TRUE(UnitAction(again, ID_GROUPBY_USER)->isChecked());
    UnitAction(again, ID_GROUPBY_USER)->trigger();
    EXPECT_EQ(viewer.GatheringCount(), 6);

    // An interval set by the host beforehand is the one a user unit opens on.
    TestViewer hosted;
    hosted.SetupUserInterval(At(2026, 2, 1), At(2026, 2, 3));
    Open(hosted, ID_GROUPBY_USER);
    EXPECT_EQ(Card(hosted, "E"), u"72"_s);
}

TEST_F(ViewerDialog, GatheringRunsOnAWorkerWhileTheWindowLives)
{
    TestViewer viewer;
    auto gated = std::make_unique<GatedLoggerData>();
    GatedLoggerData* gate = gated.get();
    viewer.Data().SetLoggerData(std::move(gated));

    bool sawGathering = false, closeRefused = false;
    QString title;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        if (!gate->entered.tryAcquire())
            return;
        // The worker waits in the middle of its gathering; this thread runs
        // events, shows the progress dialog and keeps the viewer open.
        timer.stop();
        sawGathering = viewer.IsGathering();
        viewer.close();
        closeRefused = viewer.isVisible();
        QTest::qWait(20);
        for (QProgressDialog* progress : viewer.findChildren<QProgressDialog*>())
            if (progress->isVisible())
                title = progress->windowTitle() + QLatin1Char('|') + progress->labelText();
        gate->release.release();
    });
    timer.start(5);
    viewer.show();
    Open(viewer, ID_GROUPBY_DAY);
    EXPECT_TRUE(sawGathering);
    EXPECT_TRUE(closeRefused);
    EXPECT_TRUE(gate->thread && gate->thread != QThread::currentThread());
    EXPECT_TRUE(title.startsWith(ZWLoadString(ZWTextId::GatheringTitle) + QLatin1Char('|'))) << title.toStdString();
    EXPECT_FALSE(viewer.IsGathering());
    EXPECT_EQ(Card(viewer, "E"), u"240"_s);

    // Once done, the window closes again.
    viewer.close();
    EXPECT_FALSE(viewer.isVisible());
}

TEST_F(ViewerDialog, SaysWhenThePeriodHasNoDataTheDatabaseNoVariablesOrTheDataCannotBeRead)
{
    TestViewer viewer;
    Open(viewer, ID_GROUPBY_MONTH);
    const QLabel* notice = viewer.findChild<QLabel*>(u"Notice"_s);
    ASSERT_NE(notice, nullptr);
    EXPECT_TRUE(notice->isHidden());

    // The data begins in January 2026: June 2025 has none.
    viewer.GoTo(At(2025, 6, 10));
    EXPECT_TRUE(notice->isVisible());
    EXPECT_EQ(notice->text(), u"No logged data between 1 Jun 2025 00:00:00 and 1 Jul 2025 00:00:00."_s);
    EXPECT_EQ(Card(viewer, "E"), u"[Main meter.Active energy]"_s);
    viewer.GoTo(At(2026, 2, 10));
    EXPECT_TRUE(notice->isHidden());

    // A database without any variable.
    ZWLoggerUrl url;
    QString error;
    ASSERT_TRUE(url.Parse(u"sqlite:"_s + m_dir.filePath(u"empty.sqlite"_s), &error));
    auto empty = std::make_shared<ZWSqlLoggerStore>(url, ZWSqlLoggerStore::Creation::CreateMissing);
    ASSERT_TRUE(empty->Open(&error)) << error.toStdString();
    ZWDriverSupport::SetStore(empty);
    viewer.OnRefresh();
    EXPECT_TRUE(notice->isVisible());
    EXPECT_TRUE(notice->text().startsWith(u"The logger database holds no variables"_s)) << notice->text().toStdString();
    EXPECT_TRUE(viewer.messages.empty());

    // No data that can be read: said once, and the report still shows its period.
    ZWDriverSupport::SetStore(nullptr);
    viewer.OnRefresh();
    ASSERT_EQ(viewer.messages.size(), 1u);
    EXPECT_TRUE(viewer.messages[0].startsWith(u"The logged data could not be read: "_s))
        << viewer.messages[0].toStdString();
    EXPECT_EQ(Card(viewer, "B"), u"2026-02-01 00:00"_s);

    // A report that is missing opens empty and says so.
    TestViewer missing;
    QString name = u"Gone"_s;
    EXPECT_FALSE(missing.Setup(name, ID_GROUPBY_DAY));
    EXPECT_EQ(missing.Frame()->PageCount(), 1);
}

TEST_F(ViewerDialog, EmptyNameOpensTheLastReport)
{
    ZWMarentaSetup::instance().OpenSettings()->setValue(u"LastInforme"_s, u"Energy"_s);
    TestViewer viewer;
    viewer.Data().SetNow(At(2026, 3, 10, 12));
    QString name;
    EXPECT_TRUE(viewer.Setup(name, ID_GROUPBY_WEEK));
    EXPECT_EQ(viewer.Frame()->PageCount(), 2);
    EXPECT_EQ(viewer.Frame()->Title(), u"Daily energy"_s);
    // The week of 10 March 2026 (a Tuesday) under the C locale's Monday.
    EXPECT_EQ(Card(viewer, "B"), u"2026-03-09 00:00"_s);
}

TEST_F(ViewerDialog, ExportWritesTheValuesShownInTheFormatOfTheFilesExtension)
{
    TestViewer viewer;
    Open(viewer, ID_GROUPBY_DAY);
    QAction* exportAction = nullptr;
    for (QAction* menu : viewer.MenuBar()->actions())
        if (menu->menu() && menu->menu()->actions().contains(viewer.ExportAction()))
            exportAction = viewer.ExportAction();
    ASSERT_NE(exportAction, nullptr) << "Export… is in the Report menu";

    const struct
    {
        const char* what;
        QString file; // typed into the dialog; empty cancels it
        int filter;   // the filter chosen (0 xlsx, 1 csv, 2 json, 3 xml)
        QString written;
        const char* content; // a part of the file written, or of the message shown
    } cases[] = {
        {"csv by its extension", u"values.csv"_s, 0, u"values.csv"_s,
            "id,kind,text,value\r\nE,formule,[Main meter.Active energy],240\r\n"},
        {"json by the chosen filter", u"values"_s, 2, u"values.json"_s,
            R"({"id":"E","kind":"formule","number":240,"text":"[Main meter.Active energy]","value":"240"})"},
        {"the value document", u"values.XML"_s, 0, u"values.XML"_s, "<formule><id>E2</id><value>480</value></formule>"},
        {"a folder that does not exist", u"none/values.xlsx"_s, 0, QString(), "The values could not be exported to "},
        {"cancelled", QString(), 0, QString(), ""},
    };
    for (const auto& c : cases) {
        viewer.messages.clear();
        QStringList filters;
        viewer.onDialog = [&](QDialog& dialog) {
            auto* files = qobject_cast<QFileDialog*>(&dialog);
            if (!files || c.file.isEmpty())
                return int(QDialog::Rejected);
            filters = files->nameFilters();
            files->selectNameFilter(filters.value(c.filter));
            files->selectFile(m_dir.filePath(c.file));
            return int(QDialog::Accepted);
        };
        exportAction->trigger();
        EXPECT_EQ(filters.size(), c.file.isEmpty() ? 0 : 4) << c.what;
        // A file written and no message, or a message and no file.
        const bool failed = c.written.isEmpty() && !c.file.isEmpty();
        EXPECT_EQ(viewer.messages.size(), failed ? 1u : 0u) << c.what;
        const QString got = c.written.isEmpty() ? (viewer.messages.empty() ? QString() : viewer.messages.front())
                                                : QString::fromUtf8(zwtest::ReadFile(m_dir.filePath(c.written)));
        const QString want = QString::fromUtf8(c.content) + (failed ? m_dir.filePath(c.file) : QString());
        EXPECT_TRUE(failed ? got.startsWith(want) : got.contains(want)) << c.what << "\n" << got.toStdString();
    }
}

} // namespace
