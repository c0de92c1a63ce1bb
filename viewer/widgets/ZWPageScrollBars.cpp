#include "viewer/widgets/ZWPageScrollBars.h"

#include "viewer/ZWViewZoom.h"

#include <QAbstractScrollArea>
#include <QScrollBar>
#include <algorithm>

namespace {

// Whether the bar is needed.
bool SetUp(QScrollBar* bar, int page, int client, int singleStep, int pageStep)
{
    bar->setSingleStep(singleStep > 0 ? singleStep : ZWViewZoom::LineStep(client));
    bar->setPageStep(pageStep > 0 ? pageStep : ZWViewZoom::PageStep(client));
    if (client < page - 1) {
        // Positions 0 .. page − client: the last shows the page's far edge.
        const int last = page - client;
        const int position = std::min(bar->value(), last);
        bar->setRange(0, last);
        bar->setValue(position);
        return true;
    }
    bar->setValue(0);
    return false;
}

Qt::ScrollBarPolicy Policy(bool on)
{
    return on ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAlwaysOff;
}

} // namespace

void ZWPageScrollBars::Fit(QAbstractScrollArea& area, const QSize& page, int singleStep, int pageStep)
{
    QWidget* viewport = area.viewport();
    area.setHorizontalScrollBarPolicy(
        Policy(SetUp(area.horizontalScrollBar(), page.width(), viewport->width(), singleStep, pageStep)));
    area.setVerticalScrollBarPolicy(
        Policy(SetUp(area.verticalScrollBar(), page.height(), viewport->height(), singleStep, pageStep)));
}

void ZWPageScrollBars::Hide(QAbstractScrollArea& area)
{
    area.horizontalScrollBar()->setValue(0);
    area.verticalScrollBar()->setValue(0);
    area.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
}
