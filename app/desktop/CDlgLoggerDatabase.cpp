#include "app/desktop/CDlgLoggerDatabase.h"

#include "host/core/ZWLoadString.h"
#include "host/core/ZWMarentaSetup.h"
#include "host/core/ZWTextId.h"
#include "host/store/ZWLoggerDatabase.h"
#include "viewer/ZWReportFiles.h"

#include <QDialogButtonBox>
#include <QFileDialog>
#include <QGridLayout>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>

CDlgLoggerDatabase::CDlgLoggerDatabase(QWidget* parent) : QDialog(parent)
{
    setWindowTitle(ZWLoadString(ZWTextId::DatabaseDialogTitle));
    m_address = new QLineEdit(ZWMarentaSetup::instance().GetLoggerDatabase(), this);
    m_address->setObjectName(QStringLiteral("address"));
    m_address->setMinimumWidth(420);
    auto* browse = new QPushButton(ZWLoadString(ZWTextId::DatabaseDialogSqliteFile), this);
    auto* hint = new QLabel(ZWLoadString(ZWTextId::DatabaseDialogHint), this);
    hint->setWordWrap(true);
    // Enter means OK, wherever the focus is (also after a file was chosen
    // with this button): it never opens the file chooser again.
    browse->setAutoDefault(false);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setDefault(true);
    buttons->button(QDialogButtonBox::Ok)->setText(ZWLoadString(ZWTextId::Ok));
    buttons->button(QDialogButtonBox::Cancel)->setText(ZWLoadString(ZWTextId::Cancel));
    connect(buttons, &QDialogButtonBox::accepted, this, &CDlgLoggerDatabase::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &CDlgLoggerDatabase::reject);
    connect(browse, &QPushButton::clicked, this, &CDlgLoggerDatabase::OnBrowse);

    auto* grid = new QGridLayout(this);
    grid->addWidget(new QLabel(ZWLoadString(ZWTextId::DatabaseDialogIntro), this), 0, 0, 1, 2);
    grid->addWidget(m_address, 1, 0);
    grid->addWidget(browse, 1, 1);
    grid->addWidget(hint, 2, 0, 1, 2);
    grid->addWidget(buttons, 3, 0, 1, 2);
}

QString CDlgLoggerDatabase::Url() const
{
    return m_address->text().trimmed();
}

void CDlgLoggerDatabase::OnBrowse()
{
    const QString file = ChooseFile();
    if (!file.isEmpty())
        m_address->setText(QStringLiteral("sqlite:") + file);
    m_address->setFocus();
}

QString CDlgLoggerDatabase::ChooseFile()
{
    return QFileDialog::getOpenFileName(this, ZWLoadString(ZWTextId::DatabaseDialogTitle), QString(),
        ZWLoadString(ZWTextId::DatabaseDialogSqliteFilter));
}

void CDlgLoggerDatabase::accept()
{
    QString error;
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    const bool opened = ZWLoggerDatabase::Install(Url(), &error);
    QGuiApplication::restoreOverrideCursor();
    if (!opened) {
        ShowMessage(error);
        return;
    }
    ZWLoggerDatabase::Remember(Url());
    QDialog::accept();
}

void CDlgLoggerDatabase::ShowMessage(const QString& text)
{
    QMessageBox::warning(this, windowTitle(), text);
}
