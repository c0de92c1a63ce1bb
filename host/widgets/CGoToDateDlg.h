#pragma once

#include "host/core/ZWDateTime.h"

#include <QDialog>
#include <QPoint>

class QCalendarWidget;
class QTimeEdit;

// The go-to-date dialog: a calendar and a time, opened next to the button
// that asked for it. A cancelled dialog leaves an invalid date.
class CGoToDateDlg : public QDialog
{
    Q_OBJECT

public:
    explicit CGoToDateDlg(QWidget* parent = nullptr);

    void SetDate(const ZWDateTime& date);
    // The chosen date after OK; invalid after Cancel.
    ZWDateTime GetDate() const { return m_date; }
    // The dialog's bottom-left corner goes to `point` (screen coordinates),
    // kept on the screen.
    void SetAnchor(const QPoint& point);

    QCalendarWidget* Calendar() const { return m_calendar; }
    QTimeEdit* Time() const { return m_time; }

public slots:
    void accept() override;
    void reject() override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    ZWDateTime m_date;
    QCalendarWidget* m_calendar;
    QTimeEdit* m_time;
    QPoint m_anchor;
    bool m_hasAnchor = false;
};
