#pragma once

#include "host/core/ZWDateTime.h"

#include <QDialog>

class QDateEdit;
class QTimeEdit;

// The user's own report interval: a date and a time for its start and its
// end. It opens on the interval last accepted (or today 00:00 to now) and
// refuses, with a message, an empty or inverted interval, one shorter than
// an hour and one ending in the future.
class CDlgUserInterval : public QDialog
{
    Q_OBJECT

public:
    explicit CDlgUserInterval(QWidget* parent = nullptr, const ZWDateTime& now = ZWDateTime());

    ZWDateTime From() const { return m_from; }
    ZWDateTime To() const { return m_to; }
    // Shows `from` and `to` in the pickers.
    void SetInterval(const ZWDateTime& from, const ZWDateTime& to);

    QDateEdit* FromDate() const { return m_fromDate; }
    QTimeEdit* FromTime() const { return m_fromTime; }
    QDateEdit* ToDate() const { return m_toDate; }
    QTimeEdit* ToTime() const { return m_toTime; }

public slots:
    void accept() override;

signals:
    void messageShown(int textId);

protected:
    virtual void ShowMessage(int textId);

private:
    ZWDateTime Now() const;

    ZWDateTime m_now;
    ZWDateTime m_from;
    ZWDateTime m_to;
    QDateEdit* m_fromDate;
    QTimeEdit* m_fromTime;
    QDateEdit* m_toDate;
    QTimeEdit* m_toTime;
};
