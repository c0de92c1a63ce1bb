#pragma once

#include "viewer/ZWReportData.h"

#include <QDialog>
#include <QString>
#include <array>

class QAction;
class QActionGroup;
class QLabel;
class QMenu;
class QMenuBar;
class QToolBar;
class QToolButton;
class ZWViewReportFrame;

// The report viewer: menus and a tool bar of the period (previous, next, go
// to date, group by) above the report frame. Every change of period gathers
// the logged data and computes the report on a worker thread while a modal
// progress dialog keeps the window alive, then shows the values.
//
// Every command has its place in a menu (with mnemonics) and its keys work
// from anywhere in the window: Alt+Left/Right previous and next period,
// Ctrl+G go to date, Ctrl+1..5 day to year, Ctrl+6 a user interval, Ctrl+W
// close; the frame adds the page, zoom and print keys. The viewer opens
// where it was last closed, never larger than the screen.
//
// The host opens it with Setup(reportName, unit); SetupUserInterval gives
// the interval of the user unit beforehand.
class CDlgViewer : public QDialog
{
    Q_OBJECT

public:
    explicit CDlgViewer(QWidget* parent = nullptr);
    ~CDlgViewer() override;

    // Loads the report (an empty name: the last one, "LastInforme"), builds
    // its page windows and shows the unit `unit` that contains the present.
    // False when the report could not be read (an empty report is shown).
    virtual bool Setup(QString& reportName, int unit);
    // Stores the interval of the user unit; nothing is reloaded.
    virtual void SetupUserInterval(const ZWDateTime& from, const ZWDateTime& to);

    // Sets the period from a requested end and unit and, when it changed (or
    // `force`), gathers the data and shows it. True when data was gathered.
    bool SetupData(const ZWDateTime& end, int unit, bool force);
    // The unit's period that contains `date` (the present one if that lies
    // in the future); what the go-to-date dialog leads to.
    bool GoTo(const ZWDateTime& date);

    void OnPrevious();
    void OnNext();
    void OnGoTo();
    // Pops the group-by menu up under its button.
    void OnGroupBy();
    void OnGroupByMenuItem(int id);
    // Reads the logged data of the present period again.
    void OnRefresh();
    // Asks for a file and writes the values shown into it, in the format its
    // extension names (xlsx, csv, json, xml); a failure is shown.
    void OnExport();
    // Fills `menu` with the six units, the current one checked; its items
    // lead to OnGroupByMenuItem.
    bool CreateGroupByMenu(QMenu& menu);
    // Enabled states of next and go to date.
    void UpdateNext();
    void UpdateGoTo();

    ZWReportData& Data() { return m_data; }
    const ZWReportData& Data() const { return m_data; }
    ZWViewReportFrame* Frame() const { return m_frame; }
    QToolBar* ToolBar() const { return m_toolBar; }
    // The tool bar's actions by command id (31858, 31859, 31849, 31851).
    QAction* Action(int command) const;
    QToolButton* Button(int command) const;
    // The command of a group-by unit (31894..31899), checked for the present unit.
    QAction* UnitAction(int unit) const;
    QMenuBar* MenuBar() const { return m_menuBar; }
    QAction* ExportAction() const { return m_export; }
    // How many gatherings have run (each period change, each refresh).
    int GatheringCount() const { return m_gatherings; }
    bool IsGathering() const { return m_gathering; }

signals:
    // A gathering ended; `ok` is false when the logged data could not be read.
    void gathered(bool ok);

protected:
    void closeEvent(QCloseEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void changeEvent(QEvent* event) override;
    // Runs a modal dialog (the go-to date and user interval dialogs) and
    // returns its result; tests fill the dialog and accept it instead.
    virtual int ExecDialog(QDialog& dialog);
    // Tells the user something went wrong; tests record it instead.
    virtual void ShowMessage(const QString& text);

private:
    void InitializeToolBar();
    void InitializeMenus();
    // Puts the window where it was last, inside the screen's free area.
    void RestorePlacement();
    void SavePlacement();
    void UpdateUnitChecks();
    void Gather(bool reload);
    void UpdateCommands();
    void UpdateTitle();
    ZWDateTime Now() const { return m_data.Now(); }

    ZWReportData m_data;
    QString m_reportName;
    ZWViewReportFrame* m_frame = nullptr;
    QToolBar* m_toolBar = nullptr;
    QLabel* m_notice = nullptr;
    QAction* m_previous = nullptr;
    QAction* m_next = nullptr;
    QAction* m_goTo = nullptr;
    QAction* m_groupBy = nullptr;
    QAction* m_export = nullptr;
    QMenu* m_groupByMenu = nullptr;
    QMenuBar* m_menuBar = nullptr;
    // The units in the group-by menu's order: user interval, day … year.
    std::array<QAction*, 6> m_units{};
    QActionGroup* m_unitGroup = nullptr;
    bool m_gathering = false;
    int m_gatherings = 0;
};
