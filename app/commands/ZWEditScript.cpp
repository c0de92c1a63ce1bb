#include "app/commands/ZWEditScript.h"

#include "app/commands/ZWJsonWriter.h"
#include "editor/widgets/ZWEditTemplateWnd.h"

#include <QApplication>
#include <QJsonValue>
#include <QKeyEvent>
#include <QMouseEvent>
#include <cmath>
#include <functional>
#include <map>
#include <optional>

namespace {

// The arguments of one step, read with their types checked.
class StepArgs
{
public:
    StepArgs(const QJsonObject& step, QString& reason) : m_step(step), m_reason(reason) {}

    bool Has(const char* name) const { return m_step.contains(QLatin1String(name)); }

    std::optional<double> Number(const char* name)
    {
        const QJsonValue v = m_step.value(QLatin1String(name));
        if (v.isUndefined())
            return Fail(name, "is missing");
        if (!v.isDouble())
            return Fail(name, "must be a number");
        return v.toDouble();
    }

    // A whole number within ±limit.
    std::optional<int> Integer(const char* name, double limit = 1e6)
    {
        const std::optional<double> v = Number(name);
        if (!v)
            return std::nullopt;
        if (*v != std::floor(*v))
            return Fail(name, "must be a whole number");
        if (std::fabs(*v) > limit)
            return Fail(name, "is out of range");
        return int(*v);
    }

    // An optional flag: false when absent.
    std::optional<bool> Flag(const char* name, bool absent = false)
    {
        const QJsonValue v = m_step.value(QLatin1String(name));
        if (v.isUndefined())
            return absent;
        if (!v.isBool())
            return Fail(name, "must be true or false");
        return v.toBool();
    }

    std::optional<QString> Text(const char* name)
    {
        const QJsonValue v = m_step.value(QLatin1String(name));
        if (v.isUndefined())
            return Fail(name, "is missing");
        if (!v.isString())
            return Fail(name, "must be a string");
        return v.toString();
    }

    // One of the names of `choices`.
    template <typename T> std::optional<T> Choice(const char* name, const std::map<QString, T>& choices)
    {
        const std::optional<QString> text = Text(name);
        if (!text)
            return std::nullopt;
        const auto it = choices.find(*text);
        if (it == choices.end()) {
            QStringList names;
            for (const auto& [key, value] : choices)
                names << QLatin1Char('"') + key + QLatin1Char('"');
            m_reason = QStringLiteral("\"%1\" must be one of %2, not \"%3\"")
                           .arg(QLatin1String(name), names.join(QLatin1String(", ")), *text);
            return std::nullopt;
        }
        return it->second;
    }

    std::nullopt_t Fail(const char* name, const char* what)
    {
        m_reason = QStringLiteral("\"%1\" %2").arg(QLatin1String(name), QLatin1String(what));
        return std::nullopt;
    }

private:
    const QJsonObject& m_step;
    QString& m_reason;
};

const std::map<QString, int>& Tools()
{
    static const std::map<QString, int> tools = {
        {QStringLiteral("select"), ZWEditPage::SelectTool},
        {QStringLiteral("label"), ZWEditPage::LabelTool},
        {QStringLiteral("image"), ZWEditPage::ImageTool},
        {QStringLiteral("date"), ZWEditPage::DateTool},
        {QStringLiteral("formule"), ZWEditPage::FormuleTool},
        {QStringLiteral("conditioned"), ZWEditPage::ConditionedTool},
        {QStringLiteral("chart"), ZWEditPage::ChartTool},
        {QStringLiteral("table"), ZWEditPage::TableTool},
    };
    return tools;
}

const std::map<QString, int>& Kinds()
{
    static const std::map<QString, int> kinds = [] {
        std::map<QString, int> k = Tools();
        k.erase(QStringLiteral("select"));
        return k;
    }();
    return kinds;
}

const std::map<QString, Qt::Key>& Keys()
{
    static const std::map<QString, Qt::Key> keys = {
        {QStringLiteral("Delete"), Qt::Key_Delete},
        {QStringLiteral("Left"), Qt::Key_Left},
        {QStringLiteral("Right"), Qt::Key_Right},
        {QStringLiteral("Up"), Qt::Key_Up},
        {QStringLiteral("Down"), Qt::Key_Down},
        {QStringLiteral("C"), Qt::Key_C},
        {QStringLiteral("V"), Qt::Key_V},
        {QStringLiteral("X"), Qt::Key_X},
        {QStringLiteral("Z"), Qt::Key_Z},
        {QStringLiteral("Y"), Qt::Key_Y},
    };
    return keys;
}

// The window's client area when the script does not say.
constexpr int DefaultWidth = 800;
constexpr int DefaultHeight = 600;

} // namespace

ZWEditScript::ZWEditScript(const ZWTemplate& report) : m_report(report)
{
    if (m_report.pages.empty())
        m_report.AddPage();
    for (const ZWTemplatePage& page : m_report.pages) {
        auto wnd = std::make_unique<ZWEditTemplateWnd>();
        // Real windows, laid out and given events, that never appear.
        wnd->setAttribute(Qt::WA_DontShowOnScreen);
        wnd->SetUndoStack(&m_stack);
        wnd->SetPage(page);
        wnd->resize(DefaultWidth, DefaultHeight);
        // An undo shows the page it changed, as the editor does.
        ZWEditTemplateWnd* raw = wnd.get();
        QObject::connect(raw, &ZWEditTemplateWnd::pageShowRequested, raw, [this, raw] {
            for (size_t i = 0; i < m_pages.size(); ++i)
                if (m_pages[i].get() == raw)
                    SetCurrent(int(i));
        });
        m_pages.push_back(std::move(wnd));
    }
    SetCurrent(0);
}

ZWEditScript::~ZWEditScript()
{
    // The windows go before the stack whose commands point into them.
    m_pages.clear();
}

void ZWEditScript::SetCurrent(int index)
{
    if (index == m_current && m_pages[size_t(index)]->isVisible())
        return;
    for (size_t i = 0; i < m_pages.size(); ++i)
        if (int(i) != index)
            m_pages[i]->hide();
    m_current = index;
    m_pages[size_t(index)]->show();
}

bool ZWEditScript::Run(const QJsonArray& steps, int& failedStep, QString& reason)
{
    for (qsizetype i = 0; i < steps.size(); ++i) {
        failedStep = int(i + 1);
        if (!steps[i].isObject()) {
            reason = QStringLiteral("a step is a JSON object with an \"op\"");
            return false;
        }
        if (!RunStep(steps[i].toObject(), reason))
            return false;
        // What the step left for later (a menu's deletion) is done before
        // the next one.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    failedStep = 0;
    return true;
}

void ZWEditScript::SendMouse(int type, Qt::MouseButton button, const QPoint& point, Qt::KeyboardModifiers mods)
{
    QWidget* area = m_pages[size_t(m_current)]->viewport();
    if (button == Qt::LeftButton)
        m_buttonDown = type == QEvent::MouseButtonPress;
    // The buttons held once the event has happened.
    Qt::MouseButtons buttons = m_buttonDown ? Qt::LeftButton : Qt::NoButton;
    if (type == QEvent::MouseButtonPress)
        buttons |= button;
    QMouseEvent event(QEvent::Type(type), QPointF(point), area->mapToGlobal(QPointF(point)), button, buttons, mods);
    QCoreApplication::sendEvent(area, &event);
}

bool ZWEditScript::RunStep(const QJsonObject& step, QString& reason)
{
    StepArgs args(step, reason);
    const std::optional<QString> op = args.Text("op");
    if (!op)
        return false;
    ZWEditTemplateWnd& page = *m_pages[size_t(m_current)];
    const auto mods = [&]() -> std::optional<Qt::KeyboardModifiers> {
        const std::optional<bool> ctrl = args.Flag("ctrl");
        const std::optional<bool> shift = ctrl ? args.Flag("shift") : std::nullopt;
        if (!ctrl || !shift)
            return std::nullopt;
        Qt::KeyboardModifiers m;
        if (*ctrl)
            m |= Qt::ControlModifier;
        if (*shift)
            m |= Qt::ShiftModifier;
        return m;
    };

    if (*op == QLatin1String("window")) {
        const std::optional<int> w = args.Integer("width", 20000);
        const std::optional<int> h = w ? args.Integer("height", 20000) : std::nullopt;
        const std::optional<double> ppm = h ? args.Number("pixelsPerMm") : std::nullopt;
        if (!ppm)
            return false;
        if (*w < 1 || *h < 1) {
            reason = QStringLiteral("the window needs a width and a height of at least 1 pixel");
            return false;
        }
        if (!(*ppm > 0.0 && *ppm <= 1000.0)) {
            reason = QStringLiteral("\"pixelsPerMm\" must lie above 0 and at most 1000");
            return false;
        }
        for (auto& wnd : m_pages) {
            wnd->SetPixelsPerMm(*ppm, *ppm);
            wnd->resize(*w, *h);
        }
        return true;
    }
    if (*op == QLatin1String("zoom")) {
        if (args.Has("factor")) {
            const std::optional<double> f = args.Number("factor");
            if (!f)
                return false;
            if (!(std::fabs(*f) >= 0.01 && std::fabs(*f) <= 100.0)) {
                reason = QStringLiteral("a zoom factor lies between 0.01 and 100 (negative for fit mode)");
                return false;
            }
            page.SetMode(*f);
            return true;
        }
        if (!args.Has("mode")) {
            reason = QStringLiteral("\"zoom\" needs a \"factor\" or a \"mode\"");
            return false;
        }
        const std::optional<int> mode = args.Integer("mode");
        if (!mode)
            return false;
        page.SetMode(*mode);
        return true;
    }
    if (*op == QLatin1String("orientation")) {
        const std::optional<int> value = args.Integer("value");
        if (!value)
            return false;
        page.SetOrientation(*value);
        return true;
    }
    if (*op == QLatin1String("page")) {
        const std::optional<int> index = args.Integer("index");
        if (!index)
            return false;
        if (*index < 0 || *index >= int(m_pages.size())) {
            reason = QStringLiteral("page %1 does not exist: the report has %2 page(s), numbered from 0")
                         .arg(*index)
                         .arg(m_pages.size());
            return false;
        }
        SetCurrent(*index);
        return true;
    }
    if (*op == QLatin1String("tool")) {
        const std::optional<int> tool = args.Choice("tool", Tools());
        if (!tool)
            return false;
        // The tool is the editor's: every page takes it.
        for (auto& wnd : m_pages)
            wnd->SetActiveState(*tool);
        return true;
    }
    if (*op == QLatin1String("press") || *op == QLatin1String("move") || *op == QLatin1String("release")
        || *op == QLatin1String("rightClick")) {
        const std::optional<int> x = args.Integer("x");
        const std::optional<int> y = x ? args.Integer("y") : std::nullopt;
        const std::optional<Qt::KeyboardModifiers> m = y ? mods() : std::nullopt;
        if (!m)
            return false;
        const QPoint point(*x, *y);
        if (*op == QLatin1String("press")) {
            SendMouse(QEvent::MouseButtonPress, Qt::LeftButton, point, *m);
        } else if (*op == QLatin1String("move")) {
            SendMouse(QEvent::MouseMove, Qt::NoButton, point, *m);
        } else if (*op == QLatin1String("release")) {
            SendMouse(QEvent::MouseButtonRelease, Qt::LeftButton, point, *m);
        } else {
            SendMouse(QEvent::MouseButtonPress, Qt::RightButton, point, *m);
            SendMouse(QEvent::MouseButtonRelease, Qt::RightButton, point, *m);
            // Nobody chooses from the menu: it closes as it opened.
            if (QWidget* popup = QApplication::activePopupWidget())
                popup->close();
        }
        return true;
    }
    if (*op == QLatin1String("key")) {
        const std::optional<Qt::Key> key = args.Choice("key", Keys());
        const std::optional<Qt::KeyboardModifiers> m = key ? mods() : std::nullopt;
        if (!m)
            return false;
        const QString text = (*m & Qt::ControlModifier) || *key < Qt::Key_A || *key > Qt::Key_Z
            ? QString()
            : QString(QChar(u'a' + (*key - Qt::Key_A)));
        QKeyEvent press(QEvent::KeyPress, *key, *m, text);
        QCoreApplication::sendEvent(&page, &press);
        QKeyEvent release(QEvent::KeyRelease, *key, *m, text);
        QCoreApplication::sendEvent(&page, &release);
        return true;
    }
    if (*op == QLatin1String("selectId")) {
        const std::optional<QString> id = args.Text("id");
        if (!id)
            return false;
        page.SelectControlById(*id);
        return true;
    }
    if (*op == QLatin1String("align") || *op == QLatin1String("distribute")) {
        const std::optional<int> mode = args.Integer("mode");
        if (!mode)
            return false;
        if (*op == QLatin1String("align"))
            page.AlignSelectedControls(*mode);
        else
            page.DistributeSelectedControls(*mode);
        return true;
    }
    if (*op == QLatin1String("justify")) {
        const std::optional<int> mode = args.Integer("mode");
        const std::optional<bool> group = mode ? args.Flag("group", true) : std::nullopt;
        if (!group)
            return false;
        page.JustifySelectedControls(*mode, *group);
        return true;
    }
    if (*op == QLatin1String("sameSize")) {
        const std::optional<bool> width = args.Flag("width");
        const std::optional<bool> height = width ? args.Flag("height") : std::nullopt;
        if (!height)
            return false;
        page.ResizeSelectedControls(*width, *height);
        return true;
    }
    if (*op == QLatin1String("new")) {
        const std::optional<int> kind = args.Choice("kind", Kinds());
        if (!kind)
            return false;
        switch (*kind) {
        case ZWEditPage::LabelTool:
            page.OnNewLabel();
            break;
        case ZWEditPage::ImageTool:
            page.OnNewImage();
            break;
        case ZWEditPage::DateTool:
            page.OnNewDate();
            break;
        case ZWEditPage::FormuleTool:
            page.OnNewFormule();
            break;
        case ZWEditPage::ChartTool:
            page.OnNewChart();
            break;
        case ZWEditPage::TableTool:
            page.OnNewTable();
            break;
        default:
            page.OnNewConditioned();
            break;
        }
        return true;
    }
    const std::map<QString, std::function<void()>> plain = {
        {QStringLiteral("copy"), [&] { page.ControlCopy(); }},
        {QStringLiteral("cut"), [&] { page.ControlCut(); }},
        {QStringLiteral("paste"), [&] { page.ControlPaste(); }},
        {QStringLiteral("delete"), [&] { page.DeleteSelectedControls(); }},
        {QStringLiteral("undo"), [&] { page.Undo(); }},
        {QStringLiteral("redo"), [&] { page.Redo(); }},
    };
    if (const auto it = plain.find(*op); it != plain.end()) {
        it->second();
        return true;
    }
    reason = QStringLiteral("unknown op \"%1\"").arg(*op);
    return false;
}

ZWTemplate ZWEditScript::Report() const
{
    ZWTemplate report;
    report.id = m_report.id;
    report.name = m_report.name;
    report.formules = m_report.formules;
    for (const auto& wnd : m_pages)
        report.pages.push_back(wnd->Page());
    return report;
}

QByteArray ZWEditScript::Json() const
{
    const ZWEditTemplateWnd& current = *m_pages[size_t(m_current)];
    double zoom = 0.0;
    current.GetMode(zoom);
    ZWJsonWriter json;
    json.BeginObject();
    json.Key("page").Int(m_current);
    json.Key("zoom").Number(zoom);
    json.Key("selection").BeginArray();
    for (const QString& id : current.SelectedIds())
        json.String(id);
    json.EndArray();
    json.Key("canUndo").Bool(m_stack.canUndo());
    json.Key("canRedo").Bool(m_stack.canRedo());
    json.Key("pages").BeginArray();
    for (const auto& wnd : m_pages) {
        const ZWTemplatePage& page = wnd->Page();
        json.BeginObject();
        json.Key("width").Number(page.properties.width);
        json.Key("height").Number(page.properties.height);
        json.Key("cards").BeginArray();
        for (const auto& card : page.cards) {
            json.BeginObject();
            json.Key("id").String(card->id);
            json.Key("kind").String(card->ElementName());
            json.Key("x").Number(card->x);
            json.Key("y").Number(card->y);
            json.Key("width").Number(card->width);
            json.Key("height").Number(card->height);
            json.EndObject();
        }
        json.EndArray();
        json.EndObject();
    }
    json.EndArray();
    json.EndObject();
    return json.Json();
}
