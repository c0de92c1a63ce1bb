#pragma once

#include <QIcon>

// The images of the viewer's tool bars: the desktop theme's icon when there
// is one, else a simple drawn one, so that the buttons never go blank on a
// desktop without an icon theme.
class ZWViewerIcons
{
public:
    enum Kind {
        PreviousPeriod,
        NextPeriod,
        GoToDate,
        GroupBy,
        PreviousPage,
        NextPage,
        Print,
        Refresh,
        ZoomIn,
        ZoomOut,
        ZoomFit,
        Report,
        Database,
        Folder,
    };

    static QIcon Icon(Kind kind);
};
