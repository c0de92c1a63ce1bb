#include "app/desktop/ZWMainWindow.h"

#include "app/desktop/CDlgLoggerDatabase.h"
#include "editor/ZWRecovery.h"
#include "editor/widgets/CDlgEditor.h"
#include "editor/widgets/ZWEditorFrame.h"
#include "host/core/ZWGuid.h"
#include "host/core/ZWLoadString.h"
#include "host/core/ZWMarentaSetup.h"
#include "host/core/ZWSettingsKeys.h"
#include "host/core/ZWTextId.h"
#include "host/store/ZWLoggerDatabase.h"
#include "template/ZWTemplate.h"
#include "viewer/ZWActionTexts.h"
#include "viewer/ZWReportData.h"
#include "viewer/ZWReportFiles.h"
#include "viewer/widgets/CDlgInformesList.h"
#include "viewer/widgets/CDlgViewer.h"
#include "viewer/widgets/ZWViewerIcons.h"

#include <QAction>
#include <QApplication>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QListWidget>
#include <QLocale>
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
    m_new = new QAction(ZWLoadString(ZWTextId::AppNewReport), this);
    m_new->setShortcut(QKeySequence::New);
    m_edit = new QAction(ZWLoadString(ZWTextId::AppEditReport), this);
    m_edit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_E));
    m_delete = new QAction(ZWLoadString(ZWTextId::AppDeleteReport), this);
    m_delete->setShortcut(QKeySequence::Delete);
    m_duplicate = new QAction(ZWLoadString(ZWTextId::AppDuplicateReport), this);
    auto* quit = new QAction(ZWLoadString(ZWTextId::AppQuit), this);
    quit->setShortcut(QKeySequence::Quit);
    // The commands belong to the window: their keys work with the tool bar hidden.
    for (QAction* action :
        {m_open, m_new, m_edit, m_delete, m_duplicate, m_refresh, m_chooseFolder, m_chooseDatabase, quit}) {
        ZWActionTexts::ShowShortcutInToolTip(*action);
        addAction(action);
    }

    QMenu* file = menuBar()->addMenu(ZWLoadString(ZWTextId::AppReports));
    file->addAction(m_open);
    file->addAction(m_edit);
    file->addAction(m_new);
    file->addAction(m_duplicate);
    file->addAction(m_delete);
    file->addSeparator();
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
    bar->addAction(m_edit);
    bar->addAction(m_new);
    bar->addAction(m_refresh);
    bar->addAction(m_chooseFolder);
    bar->addAction(m_chooseDatabase);

    connect(m_open, &QAction::triggered, this, &ZWMainWindow::OnOpen);
    connect(m_new, &QAction::triggered, this, &ZWMainWindow::OnNewReport);
    connect(m_edit, &QAction::triggered, this, &ZWMainWindow::OnEdit);
    connect(m_delete, &QAction::triggered, this, &ZWMainWindow::OnDelete);
    connect(m_duplicate, &QAction::triggered, this, &ZWMainWindow::OnDuplicate);
    connect(m_refresh, &QAction::triggered, this, &ZWMainWindow::Refresh);
    connect(m_chooseDatabase, &QAction::triggered, this, &ZWMainWindow::OnLoggerDatabase);
    connect(m_chooseFolder, &QAction::triggered, this, &ZWMainWindow::OnReportFolder);
    connect(quit, &QAction::triggered, qApp, &QApplication::closeAllWindows);
    connect(m_list, &QListWidget::itemActivated, this, &ZWMainWindow::OnOpen);
    connect(m_list, &QListWidget::itemSelectionChanged, this, &ZWMainWindow::UpdateActions);
    m_recovery
        = std::make_shared<ZWRecovery>(ZWRecovery::FolderBeside(ZWMarentaSetup::instance().OpenSettings()->fileName()));

    resize(520, 600);
    Refresh();
    UpdateStatus();
}

ZWMainWindow::~ZWMainWindow()
{
    for (const QPointer<CDlgViewer>& viewer : m_viewers)
        delete viewer.data();
    for (const QPointer<CDlgEditor>& editor : m_editors)
        delete editor.data();
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
    UpdateActions();
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
    // The viewer opens the report's editor with the same key as the list.
    auto* edit = new QAction(ZWLoadString(ZWTextId::AppEditReport), viewer);
    edit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_E));
    viewer->addAction(edit);
    connect(edit, &QAction::triggered, this, [this, name] { EditReport(name); });
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

void ZWMainWindow::UpdateActions()
{
    const bool any = !m_list->selectedItems().isEmpty() || m_list->currentItem() != nullptr;
    for (QAction* action : {m_open, m_edit, m_delete, m_duplicate})
        action->setEnabled(any);
}

void ZWMainWindow::SetRecovery(std::shared_ptr<ZWRecovery> recovery)
{
    m_recovery = std::move(recovery);
}

CDlgEditor* ZWMainWindow::CreateEditor()
{
    return new CDlgEditor(nullptr);
}

CDlgEditor* ZWMainWindow::ShowEditor(CDlgEditor* editor)
{
    editor->setAttribute(Qt::WA_DeleteOnClose);
    editor->Frame()->SetRecovery(m_recovery);
    m_editors.append(editor);
    // A report saved in the editor appears in the list.
    connect(editor->Frame(), &ZWEditorFrame::modifiedChanged, this, [this](bool modified) {
        if (!modified)
            Refresh();
    });
    editor->show();
    return editor;
}

CDlgEditor* ZWMainWindow::OnNewReport()
{
    return ShowEditor(CreateEditor());
}

CDlgEditor* ZWMainWindow::OnEdit()
{
    const QListWidgetItem* item = m_list->currentItem();
    return item ? EditReport(item->text()) : nullptr;
}

CDlgEditor* ZWMainWindow::EditReport(const QString& name)
{
    const QString path = ZWReportFiles::ReportPath(name);
    CDlgEditor* editor = CreateEditor();
    if (!editor->Setup(path)) {
        ShowMessage(ZWLoadString(ZWTextId::ReportCannotRead).arg(name, path));
        delete editor;
        return nullptr;
    }
    ZWReportFiles::RememberReport(name);
    return ShowEditor(editor);
}

QList<CDlgEditor*> ZWMainWindow::Editors() const
{
    QList<CDlgEditor*> out;
    for (const QPointer<CDlgEditor>& editor : m_editors)
        if (editor)
            out << editor.data();
    return out;
}

int ZWMainWindow::OfferRecovery()
{
    if (!m_recovery)
        return 0;
    const auto pending = m_recovery->Pending();
    if (pending.empty())
        return 0;
    QString text = ZWLoadString(ZWTextId::RecoveryQuestion);
    for (const ZWRecovery::Entry& entry : pending) {
        const QString name = entry.reportPath.isEmpty() ? ZWLoadString(ZWTextId::UntitledReport)
                                                        : QFileInfo(entry.reportPath).completeBaseName();
        text += QStringLiteral("\n")
            + ZWLoadString(ZWTextId::RecoveryItem)
                  .arg(name, QLocale().toString(entry.written.toLocalTime(), QLocale::ShortFormat));
    }
    if (!Ask(text)) {
        for (const ZWRecovery::Entry& entry : pending)
            m_recovery->Remove(entry.key);
        return 0;
    }
    int restored = 0;
    for (const ZWRecovery::Entry& entry : pending) {
        QByteArray content;
        if (!ZWRecovery::Read(entry, content))
            continue;
        CDlgEditor* editor = CreateEditor();
        editor->Frame()->SetupFromXml(content, entry.reportPath);
        // The state now lives in the editor, which writes it again under
        // its own key.
        m_recovery->Remove(entry.key);
        ShowEditor(editor);
        editor->Frame()->WriteRecovery();
        ++restored;
    }
    return restored;
}

bool ZWMainWindow::OnDelete()
{
    const QListWidgetItem* item = m_list->currentItem();
    if (!item)
        return false;
    const QString name = item->text();
    const QString path = ZWReportFiles::ReportPath(name);
    const QString backup = ZWTemplate::BackupPath(path);
    if (!Ask(ZWLoadString(ZWTextId::DeleteReportQuestion).arg(name, QFileInfo(backup).fileName())))
        return false;
    QFile::remove(backup);
    if (!QFile::rename(path, backup)) {
        ShowMessage(ZWLoadString(ZWTextId::ReportDeleteFailed).arg(path));
        return false;
    }
    Refresh();
    return true;
}

bool ZWMainWindow::OnDuplicate()
{
    const QListWidgetItem* item = m_list->currentItem();
    if (!item)
        return false;
    const QString source = ZWReportFiles::ReportPath(item->text());
    const QString name = ChooseNewName(item->text());
    if (name.isEmpty())
        return false;
    ZWTemplate report;
    QString error;
    if (!report.Load(source, &error)) {
        ShowMessage(ZWLoadString(ZWTextId::AppDuplicateFailed).arg(error));
        return false;
    }
    report.id = guidtow(NewGUID());
    report.name = name;
    const QString target = ZWMarentaSetup::instance().GetReportDirectory() + name + QStringLiteral(".XRPT");
    if (!report.Save(target, &error)) {
        ShowMessage(ZWLoadString(ZWTextId::AppDuplicateFailed).arg(error));
        return false;
    }
    Refresh();
    for (int i = 0; i < m_list->count(); ++i)
        if (m_list->item(i)->text() == name)
            m_list->setCurrentRow(i);
    return true;
}

bool ZWMainWindow::Ask(const QString& text)
{
    return QMessageBox::question(this, windowTitle(), text) == QMessageBox::Yes;
}

QString ZWMainWindow::ChooseNewName(const QString& proposal)
{
    CDlgInformesList list(this);
    list.SetType(CDlgInformesList::NewName);
    list.SetName(proposal);
    if (ExecDialog(list) != QDialog::Accepted || list.GetNumberOfNames() == 0)
        return QString();
    QString name;
    list.GetName(name, 0);
    return name;
}
