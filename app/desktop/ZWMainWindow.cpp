#include "app/desktop/ZWMainWindow.h"

#include "app/desktop/CDlgLoggerDatabase.h"
#include "host/core/ZWLoadString.h"
#include "host/core/ZWMarentaSetup.h"
#include "host/store/ZWLoggerDatabase.h"
#include "viewer/ZWReportData.h"
#include "viewer/ZWReportFiles.h"
#include "viewer/widgets/CDlgViewer.h"
#include "viewer/widgets/ZWViewerIcons.h"

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QListWidget>
#include <QMenuBar>
#include <QMessageBox>
#include <QStatusBar>
#include <QToolBar>

ZWMainWindow::ZWMainWindow(QWidget* parent) : QMainWindow(parent)
{
    setWindowTitle(ZWLoadString(35120));
    setObjectName(QStringLiteral("MainWindow"));
    m_list = new QListWidget(this);
    m_list->setObjectName(QStringLiteral("Reports"));
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    setCentralWidget(m_list);

    m_open = new QAction(ZWViewerIcons::Icon(ZWViewerIcons::Report), ZWLoadString(35122), this);
    m_open->setShortcut(QKeySequence::Open);
    m_refresh = new QAction(ZWViewerIcons::Icon(ZWViewerIcons::Refresh), ZWLoadString(35123), this);
    m_refresh->setShortcut(QKeySequence::Refresh);
    m_chooseDatabase = new QAction(ZWViewerIcons::Icon(ZWViewerIcons::Database), ZWLoadString(35124), this);
    auto* quit = new QAction(ZWLoadString(35125), this);
    quit->setShortcut(QKeySequence::Quit);

    QMenu* file = menuBar()->addMenu(ZWLoadString(35129));
    file->addAction(m_open);
    file->addAction(m_refresh);
    file->addSeparator();
    file->addAction(m_chooseDatabase);
    file->addSeparator();
    file->addAction(quit);
    QToolBar* bar = addToolBar(ZWLoadString(35129));
    bar->setObjectName(QStringLiteral("MainBar"));
    bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    bar->addAction(m_open);
    bar->addAction(m_refresh);
    bar->addAction(m_chooseDatabase);

    m_database = new QLabel(this);
    statusBar()->addPermanentWidget(m_database);

    connect(m_open, &QAction::triggered, this, &ZWMainWindow::OnOpen);
    connect(m_refresh, &QAction::triggered, this, &ZWMainWindow::Refresh);
    connect(m_chooseDatabase, &QAction::triggered, this, &ZWMainWindow::OnLoggerDatabase);
    connect(quit, &QAction::triggered, qApp, &QApplication::closeAllWindows);
    connect(m_list, &QListWidget::itemActivated, this, &ZWMainWindow::OnOpen);
    connect(m_list, &QListWidget::itemSelectionChanged, this,
        [this] { m_open->setEnabled(!m_list->selectedItems().isEmpty()); });

    resize(520, 600);
    Refresh();
    UpdateStatus();
}

ZWMainWindow::~ZWMainWindow()
{
    for (const QPointer<CDlgViewer>& viewer : m_viewers)
        delete viewer.data();
}

bool ZWMainWindow::OpenDatabase()
{
    QString error;
    const bool opened = ZWLoggerDatabase::Install(ZWMarentaSetup::instance().GetLoggerDatabase(), &error);
    UpdateStatus();
    if (!opened)
        ShowMessage(error);
    return opened;
}

void ZWMainWindow::Refresh()
{
    const QListWidgetItem* current = m_list->currentItem();
    const QString keep = current ? current->text() : ZWReportFiles::LastReport();
    m_list->clear();
    const QStringList names = ZWReportFiles::ReportNames();
    const QIcon icon = ZWViewerIcons::Icon(ZWViewerIcons::Report);
    for (const QString& name : names) {
        auto* item = new QListWidgetItem(icon, name, m_list);
        if (name == keep)
            m_list->setCurrentItem(item);
    }
    if (!m_list->currentItem() && m_list->count() > 0)
        m_list->setCurrentRow(0);
    m_open->setEnabled(m_list->currentItem() != nullptr);
    const QString folder = ZWMarentaSetup::instance().GetReportDirectory();
    if (names.isEmpty())
        statusBar()->showMessage(ZWLoadString(35127).arg(folder));
    else
        statusBar()->showMessage(ZWLoadString(35121).arg(folder));
}

void ZWMainWindow::OnOpen()
{
    if (const QListWidgetItem* item = m_list->currentItem())
        OpenReport(item->text());
}

CDlgViewer* ZWMainWindow::OpenReport(const QString& name)
{
    // A report that cannot be read (missing, truncated, not a report) is
    // refused before a viewer opens and gathers data for it.
    ZWReportData probe;
    QString probePath = name;
    if (!probe.GetDesign(probePath)) {
        ShowMessage(ZWLoadString(33100).arg(name, probe.DesignError()));
        return nullptr;
    }
    CDlgViewer* viewer = CreateViewer();
    viewer->setAttribute(Qt::WA_DeleteOnClose);
    m_viewers.append(viewer);
    viewer->show();
    QString path = name;
    if (!viewer->Setup(path, ZWReportFiles::StartUnit())) {
        ShowMessage(ZWLoadString(33100).arg(name, viewer->Data().DesignError()));
        viewer->close();
        return nullptr;
    }
    ZWReportFiles::RememberReport(name);
    return viewer;
}

QList<CDlgViewer*> ZWMainWindow::Viewers() const
{
    QList<CDlgViewer*> out;
    for (const QPointer<CDlgViewer>& viewer : m_viewers)
        if (viewer)
            out << viewer.data();
    return out;
}

void ZWMainWindow::OnLoggerDatabase()
{
    CDlgLoggerDatabase dialog(this);
    if (ExecDialog(dialog) == QDialog::Accepted)
        UpdateStatus();
}

void ZWMainWindow::UpdateStatus()
{
    m_database->setText(ZWLoadString(35126).arg(ZWLoggerDatabase::Display()));
}

CDlgViewer* ZWMainWindow::CreateViewer()
{
    return new CDlgViewer(nullptr);
}

int ZWMainWindow::ExecDialog(QDialog& dialog)
{
    return dialog.exec();
}

void ZWMainWindow::ShowMessage(const QString& text)
{
    QMessageBox::warning(this, windowTitle(), text);
}
