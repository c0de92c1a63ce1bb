#include "host/widgets/CDlgProgress.h"

#include <QEventLoop>
#include <QMetaObject>

CDlgProgress::CDlgProgress(QWidget* parent) : m_dialog(new QProgressDialog(parent))
{
    m_dialog->setWindowModality(Qt::WindowModal);
    m_dialog->setMinimumDuration(0);
    m_dialog->setAutoClose(false);
    m_dialog->setAutoReset(false);
    m_dialog->setRange(0, 100);
    m_dialog->setValue(0);
    connect(m_dialog, &QProgressDialog::canceled, this, [this] { m_cancelled = true; });
}

CDlgProgress::~CDlgProgress()
{
    delete m_dialog;
}

bool CDlgProgress::DoModal()
{
    if (m_ended)
        return m_result;
    QEventLoop loop;
    connect(this, &CDlgProgress::ended, &loop, &QEventLoop::quit, Qt::QueuedConnection);
    m_dialog->show();
    if (!m_ended)
        loop.exec();
    m_dialog->hide();
    return m_result;
}

void CDlgProgress::SetTitle(const QString& title)
{
    QMetaObject::invokeMethod(this, [this, title] {
        if (m_dialog)
            m_dialog->setWindowTitle(title);
    });
}

void CDlgProgress::SetText(const QString& text)
{
    QMetaObject::invokeMethod(this, [this, text] {
        if (m_dialog)
            m_dialog->setLabelText(text);
    });
}

void CDlgProgress::SetRange(int minimum, int maximum)
{
    QMetaObject::invokeMethod(this, [this, minimum, maximum] {
        if (m_dialog)
            m_dialog->setRange(minimum, qMax(minimum, maximum));
    });
}

void CDlgProgress::SetPos(int position)
{
    QMetaObject::invokeMethod(this, [this, position] {
        if (m_dialog)
            m_dialog->setValue(position);
    });
}

void CDlgProgress::End(bool ok)
{
    QMetaObject::invokeMethod(this, [this, ok] {
        m_result = ok;
        m_ended = true;
        emit ended(ok);
    });
}
