#include "app/desktop/ZWMainWindow.h"

#include "app/desktop/CDlgLoggerDatabase.h"
#include "host/core/ZWLoadString.h"
#include "host/core/ZWMarentaSetup.h"
#include "host/core/ZWSettingsKeys.h"
#include "host/core/ZWTextId.h"
#include "host/store/ZWLoggerDatabase.h"
#include "viewer/ZWActionTexts.h"
#include "viewer/ZWReportData.h"
#include "viewer/ZWReportFiles.h"
#include "viewer/widgets/CDlgViewer.h"
#include "viewer/widgets/ZWViewerIcons.h"

#include <QAction>
#include <QApplication>
#include <QFileDialog>
#include <QLabel>
#include <QListWidget>
#include <QMenuBar>
#include <QMessageBox>
#include <QToolBar>
#include <QVBoxLayout>

namespace {

// The text with a break chance after each separator of a path or address,
// so that a long one wraps in its label instead of being cut off.
QString Breakable(const QString& text)
{
    QString out;
    out.reserve(text.size() + text.size() / 4);
    for (const QChar c : text) {
        out += c;
        if (c == QLatin1Char('/') || c == QLatin1Char('\\') || c == QLatin1Char('?') || c == QLatin1Char('&'))
            out += QChar(0x200B);
    }
    return out;
}

QLabel* InfoLabel(QWidget* parent, const char* name)
{
    auto* label = new QLabel(parent);
    label->setObjectName(QString::fromLatin1(name));
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setContentsMargins(6, 2, 6, 2);
    return label;
}

} // namespace

ZWMainWindow::ZWMainWindow(QWidget* parent) : QMainWindow(parent)
{
    setWindowTitle(ZWLoadString(ZWTextId::AppTitle));
    setObjectName(QStringLiteral("MainWindow"));
    // Where the reports and their data come from, above the list; long paths
    // wrap rather than being cut off.
    auto* central = new QWidget(this);
    auto* layout = new QVBoxLayout(central);
    layout->setContentsMargins(0, 4, 0, 0);
    layout->setSpacing(2);
    m_folder = InfoLabel(central, "ReportFolder");
    m_database = InfoLabel(central, "LoggerDatabase");
    m_list = new QListWidget(central);
    m_list->setObjectName(QStringLiteral("Reports"));
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    layout->addWidget(m_folder);
    layout->addWidget(m_database);
    layout->addWidget(m_list, 1);
    setCentralWidget(central);

    m_open = new QAction(ZWViewerIcons::Icon(ZWViewerIcons::Report), ZWLoadString(ZWTextId::AppOpen), this);
    m_open->setShortcut(QKeySequence::Open);
    m_refresh = new QAction(ZWViewerIcons::Icon(ZWViewerIcons::Refresh), ZWLoadString(ZWTextId::AppRefresh), this);
    m_refresh->setShortcut(QKeySequence::Refresh);
    m_chooseFolder
        = new QAction(ZWViewerIcons::Icon(ZWViewerIcons::Folder), ZWLoadString(ZWTextId::AppReportFolder), this);
    m_chooseFolder->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_O));
    m_chooseDatabase
        = new QAction(ZWViewerIcons::Icon(ZWViewerIcons::Database), ZWLoadString(ZWTextId::AppLoggerDatabase), this);
    m_chooseDatabase->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_D));
    auto* quit = new QAction(ZWLoadString(ZWTextId::AppQuit), this);
    quit->setShortcut(QKeySequence::Quit);
    // The commands belong to the window: their keys work with the tool bar hidden.
    for (QAction* action : {m_open, m_refresh, m_chooseFolder, m_chooseDatabase, quit}) {
        ZWActionTexts::ShowShortcutInToolTip(*action);
        addAction(action);
    }

    QMenu* file = menuBar()->addMenu(ZWLoadString(ZWTextId::AppReports));
    file->addAction(m_open);
    file->addAction(m_refresh);
    file->addSeparator();
    file->addAction(m_chooseFolder);
    file->addAction(m_chooseDatabase);
    file->addSeparator();
    file->addAction(quit);
    ZWActionTexts::Apply(menuBar()->actions());
    ZWActionTexts::Apply(file->actions());
    QToolBar* bar = addToolBar(ZWLoadString(ZWTextId::AppReports));
    bar->setObjectName(QStringLiteral("MainBar"));
    bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    bar->addAction(m_open);
    bar->addAction(m_refresh);
    bar->addAction(m_chooseFolder);
    bar->addAction(m_chooseDatabase);

    connect(m_open, &QAction::triggered, this, &ZWMainWindow::OnOpen);
    connect(m_refresh, &QAction::triggered, this, &ZWMainWindow::Refresh);
    connect(m_chooseDatabase, &QAction::triggered, this, &ZWMainWindow::OnLoggerDatabase);
    connect(m_chooseFolder, &QAction::triggered, this, &ZWMainWindow::OnReportFolder);
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
    const QString text = ZWLoadString(names.isEmpty() ? ZWTextId::AppNoReports : ZWTextId::AppReportsIn).arg(folder);
    m_folder->setText(Breakable(text));
    m_folder->setToolTip(text);
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
        ShowMessage(ZWLoadString(ZWTextId::ReportCannotRead).arg(name, probe.DesignError()));
        return nullptr;
    }
    CDlgViewer* viewer = CreateViewer();
    viewer->setAttribute(Qt::WA_DeleteOnClose);
    m_viewers.append(viewer);
    viewer->show();
    QString path = name;
    if (!viewer->Setup(path, ZWReportFiles::StartUnit())) {
        ShowMessage(ZWLoadString(ZWTextId::ReportCannotRead).arg(name, viewer->Data().DesignError()));
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

void ZWMainWindow::OnReportFolder()
{
    const QString folder = ChooseFolder(ZWMarentaSetup::instance().GetReportDirectory());
    if (folder.isEmpty())
        return;
    ZWMarentaSetup::instance().SetReportDirectory(folder);
    ZWMarentaSetup::instance().OpenSettings()->setValue(ZWSettingsKeys::ReportDirectory, folder);
    Refresh();
}

QString ZWMainWindow::ChooseFolder(const QString& current)
{
    return QFileDialog::getExistingDirectory(this, ZWLoadString(ZWTextId::ReportFolderTitle), current);
}

void ZWMainWindow::UpdateStatus()
{
    const QString text = ZWLoadString(ZWTextId::AppLoggedData).arg(ZWLoggerDatabase::Display());
    m_database->setText(Breakable(text));
    m_database->setToolTip(text);
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
