#include "editor/widgets/CDlgEditor.h"

#include "editor/widgets/ZWEditorFrame.h"
#include "viewer/ZWReportFiles.h"
#include "viewer/widgets/CDlgViewer.h"

#include <QTemporaryDir>

#include <QVBoxLayout>

CDlgEditor::CDlgEditor(QWidget* parent) : QDialog(parent), m_frame(new ZWEditorFrame(this))
{
    setWindowFlag(Qt::WindowMaximizeButtonHint);
    setWindowFlag(Qt::WindowMinimizeButtonHint);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_frame);
    connect(m_frame, &ZWEditorFrame::captionChanged, this, &CDlgEditor::setWindowTitle);
    connect(m_frame, &ZWEditorFrame::closeRequested, this, &CDlgEditor::close);
    connect(m_frame, &ZWEditorFrame::previewRequested, this, &CDlgEditor::Preview);
    setWindowTitle(m_frame->windowTitle());
    resize(1200, 800);
}

CDlgEditor::~CDlgEditor() = default;

bool CDlgEditor::Setup(const QString& path)
{
    return m_frame->Setup(path);
}

bool CDlgEditor::Save()
{
    return m_frame->MaybeSave(true);
}

void CDlgEditor::reject()
{
    // Escape and the window's close button (through closeEvent) both come
    // here.
    if (Save())
        QDialog::reject();
}

CDlgViewer* CDlgEditor::Preview()
{
    auto dir = std::make_unique<QTemporaryDir>();
    const ZWTemplate report = m_frame->ToTemplate();
    const QString name = report.name.isEmpty() ? QStringLiteral("preview") : report.name;
    QString path = dir->filePath(name + QStringLiteral(".XRPT"));
    if (!dir->isValid() || !report.Save(path))
        return nullptr;
    auto* viewer = new CDlgViewer(this);
    viewer->setAttribute(Qt::WA_DeleteOnClose);
    if (!viewer->Setup(path, ZWReportFiles::StartUnit())) {
        delete viewer;
        return nullptr;
    }
    m_previewDirs.push_back(std::move(dir));
    viewer->show();
    // The viewer opens on the period that holds the present, which is not
    // over yet: the last complete one is the period before it.
    viewer->OnPrevious();
    return viewer;
}
