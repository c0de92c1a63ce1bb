#pragma once

#include "host/core/ZWProgress.h"

#include <QObject>
#include <QPointer>
#include <QProgressDialog>
#include <atomic>

// The modal progress dialog of long work. SetText, SetRange, SetPos and End
// may be called from a worker thread: they are queued to the dialog's thread.
class CDlgProgress : public QObject, public ZWProgress
{
    Q_OBJECT

public:
    explicit CDlgProgress(QWidget* parent = nullptr);
    ~CDlgProgress() override;

    // Runs the dialog until End is called; returns End's argument.
    bool DoModal();
    QProgressDialog* Dialog() const { return m_dialog; }

    void SetTitle(const QString& title);
    void SetText(const QString& text) override;
    void SetRange(int minimum, int maximum) override;
    void SetPos(int position) override;
    void End(bool ok) override;
    bool IsCancelled() const override { return m_cancelled.load(); }

signals:
    void ended(bool ok);

private:
    QPointer<QProgressDialog> m_dialog;
    std::atomic<bool> m_cancelled{false};
    std::atomic<bool> m_ended{false};
    bool m_result = false;
};
