#pragma once

#include <QDialog>

class QLineEdit;

// The choice of the logger database the reports read: a SQLite file or a
// PostgreSQL address. OK opens it first; one that cannot be opened is
// refused with the reason and the dialog stays open. An accepted database
// is kept in the settings ("LoggerDatabase") and used from then on.
class CDlgLoggerDatabase : public QDialog
{
    Q_OBJECT

public:
    explicit CDlgLoggerDatabase(QWidget* parent = nullptr);

    QLineEdit* Address() const { return m_address; }
    QString Url() const;

public slots:
    void accept() override;

protected:
    // Shows why the database was refused; tests record it instead.
    virtual void ShowMessage(const QString& text);
    // Asks for a SQLite file; empty when cancelled.
    virtual QString ChooseFile();

private:
    void OnBrowse();

    QLineEdit* m_address;
};
