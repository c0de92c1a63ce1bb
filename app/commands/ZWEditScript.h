#pragma once

#include "template/ZWTemplate.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QUndoStack>
#include <memory>
#include <vector>

class ZWEditTemplateWnd;

// The designer driven by a script: the pages of a report in real page
// windows that never reach the screen, and a list of steps (JSON objects
// with an "op") delivered to them as the user's mouse, keys and commands
// would be. The steps and the result are described by `zwinformes
// edit-script --help`.
class ZWEditScript
{
public:
    explicit ZWEditScript(const ZWTemplate& report);
    ~ZWEditScript();

    // Runs every step in order. On a step that is unknown, lacks an
    // argument, has one of the wrong type or cannot apply, stops there and
    // returns false with the step's number (from 1) and the reason.
    bool Run(const QJsonArray& steps, int& failedStep, QString& reason);
    // One step; false with the reason when it cannot be run.
    bool RunStep(const QJsonObject& step, QString& reason);

    // The report as the designer saves it.
    ZWTemplate Report() const;
    // {"page":I,"zoom":F,"selection":[…],"canUndo":B,"canRedo":B,
    //  "pages":[{"width":W,"height":H,"cards":[{"id","kind","x","y",
    //  "width","height"},…]},…]}
    QByteArray Json() const;

    ZWEditTemplateWnd& Page(int index) const { return *m_pages.at(size_t(index)); }
    int CurrentPage() const { return m_current; }

private:
    void SetCurrent(int index);
    void SendMouse(int type, Qt::MouseButton button, const QPoint& point, Qt::KeyboardModifiers mods);

    ZWTemplate m_report;
    QUndoStack m_stack;
    std::vector<std::unique_ptr<ZWEditTemplateWnd>> m_pages;
    int m_current = 0;
    bool m_buttonDown = false;
};
