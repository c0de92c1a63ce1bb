#pragma once

#include <QDialog>
#include <QPointer>
#include <memory>
#include <vector>

class CDlgViewer;
class QTemporaryDir;

class ZWEditorFrame;

// The editor dialog: a report's editor frame filling the dialog. Closing it
// offers to save a modified report.
class CDlgEditor : public QDialog
{
    Q_OBJECT

public:
    explicit CDlgEditor(QWidget* parent = nullptr);
    ~CDlgEditor() override;

    ZWEditorFrame* Frame() const { return m_frame; }
    // Loads the report file into the frame; false when it could not be read
    // (the frame then holds a new empty report).
    bool Setup(const QString& path);
    // The save question when modified; false when the user cancelled or the
    // save did not happen.
    bool Save();
    // Opens the report as it is now, saved or not, in a viewer at the last
    // complete period of the unit last chosen; null when it cannot be
    // written or read.
    CDlgViewer* Preview();

public slots:
    void reject() override;

private:
    ZWEditorFrame* m_frame;
    // The unsaved states the previews read, kept while the editor lives.
    std::vector<std::unique_ptr<QTemporaryDir>> m_previewDirs;
};
