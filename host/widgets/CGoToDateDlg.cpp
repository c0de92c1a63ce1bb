#include "host/widgets/CGoToDateDlg.h"

#include "host/core/ZWLoadString.h"
#include "host/core/ZWTextId.h"

#include <QCalendarWidget>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QScreen>
#include <QTimeEdit>
#include <QVBoxLayout>

CGoToDateDlg::CGoToDateDlg(QWidget* parent) : QDialog(parent)
{
    setWindowTitle(ZWLoadString(ZWTextId::GoToDate));
    m_calendar = new QCalendarWidget(this);
    m_calendar->setGridVisible(true);
    m_time = new QTimeEdit(this);
    m_time->setDisplayFormat(QStringLiteral("HH:mm:ss"));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setText(ZWLoadString(ZWTextId::Ok));
    buttons->button(QDialogButtonBox::Cancel)->setText(ZWLoadString(ZWTextId::Cancel));
    connect(buttons, &QDialogButtonBox::accepted, this, &CGoToDateDlg::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &CGoToDateDlg::reject);
    connect(m_calendar, &QCalendarWidget::activated, this, &CGoToDateDlg::accept);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_calendar);
    layout->addWidget(m_time);
    layout->addWidget(buttons);
}

void CGoToDateDlg::SetDate(const ZWDateTime& date)
{
    if (!date.IsValid())
        return;
    int y, m, d;
    date.DateTime2DMY(y, m, d);
    m_calendar->setSelectedDate(QDate(y, m, d));
    m_time->setTime(QTime(date.Hour(), date.Minute(), date.Second()));
}

void CGoToDateDlg::SetAnchor(const QPoint& point)
{
    m_anchor = point;
    m_hasAnchor = true;
}

void CGoToDateDlg::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    if (!m_hasAnchor)
        return;
    QPoint topLeft(m_anchor.x(), m_anchor.y() - height());
    if (const QScreen* screen = this->screen()) {
        const QRect area = screen->availableGeometry();
        topLeft.setX(qBound(area.left(), topLeft.x(), qMax(area.left(), area.right() - width())));
        topLeft.setY(qBound(area.top(), topLeft.y(), qMax(area.top(), area.bottom() - height())));
    }
    move(topLeft);
}

void CGoToDateDlg::accept()
{
    const QDate date = m_calendar->selectedDate();
    const QTime time = m_time->time();
    m_date = ZWDateTime::FromDMY(date.year(), date.month(), date.day(), time.hour(), time.minute(), time.second());
    QDialog::accept();
}

void CGoToDateDlg::reject()
{
    m_date = ZWDateTime();
    QDialog::reject();
}
