#include "viewer/widgets/CDlgUserInterval.h"

#include "host/core/ZWLoadString.h"
#include "host/core/ZWMarentaSetup.h"
#include "host/core/ZWTextId.h"
#include "viewer/ZWUserInterval.h"

#include <QDateEdit>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTimeEdit>

namespace {

QDate ToQDate(const ZWDateTime& t)
{
    int y, m, d;
    t.DateTime2DMY(y, m, d);
    return QDate(y, m, d);
}

ZWDateTime Compose(const QDate& date, const QTime& time)
{
    return ZWDateTime::FromDMY(date.year(), date.month(), date.day(), time.hour(), time.minute(), time.second());
}

} // namespace

CDlgUserInterval::CDlgUserInterval(QWidget* parent, const ZWDateTime& now) : QDialog(parent), m_now(now)
{
    setWindowTitle(ZWLoadString(ZWTextId::UserIntervalTitle));
    m_fromDate = new QDateEdit(this);
    m_fromTime = new QTimeEdit(this);
    m_toDate = new QDateEdit(this);
    m_toTime = new QTimeEdit(this);
    for (QDateEdit* e : {m_fromDate, m_toDate}) {
        e->setCalendarPopup(true);
        e->setDisplayFormat(QStringLiteral("yyyy-MM-dd"));
    }
    for (QTimeEdit* e : {m_fromTime, m_toTime})
        e->setDisplayFormat(QStringLiteral("HH:mm:ss"));
    m_fromDate->setObjectName(QStringLiteral("fromDate"));
    m_fromTime->setObjectName(QStringLiteral("fromTime"));
    m_toDate->setObjectName(QStringLiteral("toDate"));
    m_toTime->setObjectName(QStringLiteral("toTime"));

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setText(ZWLoadString(ZWTextId::Ok));
    buttons->button(QDialogButtonBox::Cancel)->setText(ZWLoadString(ZWTextId::Cancel));
    connect(buttons, &QDialogButtonBox::accepted, this, &CDlgUserInterval::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &CDlgUserInterval::reject);

    auto* grid = new QGridLayout(this);
    grid->addWidget(new QLabel(ZWLoadString(ZWTextId::UserIntervalFrom), this), 0, 0);
    grid->addWidget(m_fromDate, 0, 1);
    grid->addWidget(m_fromTime, 0, 2);
    grid->addWidget(new QLabel(ZWLoadString(ZWTextId::UserIntervalTo), this), 1, 0);
    grid->addWidget(m_toDate, 1, 1);
    grid->addWidget(m_toTime, 1, 2);
    grid->addWidget(buttons, 2, 0, 1, 3);

    const ZWUserInterval stored = ZWUserInterval::Load(*ZWMarentaSetup::instance().OpenSettings(), Now());
    SetInterval(stored.from, stored.to);
}

ZWDateTime CDlgUserInterval::Now() const
{
    return m_now.IsValid() ? m_now : ZWDateTime::LTC();
}

void CDlgUserInterval::SetInterval(const ZWDateTime& from, const ZWDateTime& to)
{
    m_from = from;
    m_to = to;
    m_fromDate->setDate(ToQDate(from));
    m_fromTime->setTime(QTime(from.Hour(), from.Minute(), from.Second()));
    m_toDate->setDate(ToQDate(to));
    m_toTime->setTime(QTime(to.Hour(), to.Minute(), to.Second()));
}

void CDlgUserInterval::accept()
{
    const ZWDateTime from = Compose(m_fromDate->date(), m_fromTime->time());
    const ZWDateTime to = Compose(m_toDate->date(), m_toTime->time());
    const ZWDateTime now = Now();
    const ZWUserInterval::Check check = ZWUserInterval::Validate(from, to, now);
    if (check == ZWUserInterval::FromNotBeforeTo || check == ZWUserInterval::ShorterThanAnHour) {
        ShowMessage(check);
        return;
    }
    // The interval is kept even when it is then refused for ending in the future.
    m_from = from;
    m_to = to;
    if (check == ZWUserInterval::EndsInTheFuture) {
        ShowMessage(check);
        return;
    }
    ZWUserInterval accepted;
    accepted.from = from;
    accepted.to = to;
    accepted.Save(*ZWMarentaSetup::instance().OpenSettings());
    QDialog::accept();
}

void CDlgUserInterval::ShowMessage(int textId)
{
    emit messageShown(textId);
    QMessageBox::warning(this, windowTitle(), ZWLoadString(textId));
}
