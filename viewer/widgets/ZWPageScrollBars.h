#pragma once

#include <QSize>

class QAbstractScrollArea;

// The scroll bars of a page window: a bar in each direction in which the
// page is larger than the viewport, ranging over the positions that show
// the page's far edge last, and keeping the present position as far as the
// new range allows. Shared by the viewer's and the designer's page windows.
class ZWPageScrollBars
{
public:
    // `page` in pixels at the present zoom. Steps below 1 take the viewer's
    // (a twentieth of the viewport per line, the whole viewport per page).
    static void Fit(QAbstractScrollArea& area, const QSize& page, int singleStep = 0, int pageStep = 0);
    // Both bars hidden, at 0.
    static void Hide(QAbstractScrollArea& area);
};
