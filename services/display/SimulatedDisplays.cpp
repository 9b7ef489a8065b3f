#include "display/SimulatedDisplays.hpp"

#include "miracast/MiracastSource.hpp"
#include "publishing/Error.hpp"

namespace oz::services {

namespace {

using Display = DisplayState::Display;
using Technology = DisplayState::Technology;

constexpr int MaxId = 9999;
constexpr int MaxPixels = 65535;
constexpr int MaxMillimetres = 100'000;

// In the order of Technology.
const QStringList &technologies()
{
    static const QStringList all{QStringLiteral("unknown"), QStringLiteral("crt"), QStringLiteral("lcd"),
        QStringLiteral("plasma"), QStringLiteral("led"), QStringLiteral("oled")};
    return all;
}

const QList<int> Rotations{0, 90, 180, 270};

QString numbersText(const QList<int> &numbers)
{
    QStringList texts;
    for (const int number : numbers)
        texts.append(QString::number(number));
    return texts.join(QLatin1String(", "));
}

} // namespace

SimulatedDisplays::SimulatedDisplays(const JsonNode &section, SimulatedPhone &)
{
    section.allowOnly({QStringLiteral("displays")});
    if (!section.contains(QStringLiteral("displays"))) {
        m_state.displays = {
            {0, {QStringLiteral("panel"), true, true, false, {768, 1280}, {54, 90}, 0, Technology::Oled}},
            {1, {QStringLiteral("hdmi"), false, false, true, {1920, 1080}, {531, 299}, 0, Technology::Lcd}}};
    }
    for (const JsonNode &node : section.maps(QStringLiteral("displays")))
        readDisplay(node);
    tell();
}

void SimulatedDisplays::readDisplay(const JsonNode &node)
{
    node.allowOnly({QStringLiteral("id"), QStringLiteral("name"), QStringLiteral("kind"),
        QStringLiteral("attached"), QStringLiteral("detachable"), QStringLiteral("width"),
        QStringLiteral("height"), QStringLiteral("mm-width"), QStringLiteral("mm-height"),
        QStringLiteral("rotation"), QStringLiteral("technology")});
    const QString id = QStringLiteral("id");
    if (!node.contains(id))
        node.fail(QStringLiteral("a display needs an 'id'"));
    const int number = node.integer(id, 0, 0, MaxId);
    if (m_state.displays.contains(number))
        node.fail(QStringLiteral("another display has this identifier"), id);
    Display display;
    display.internal = node.word(QStringLiteral("kind"), QStringLiteral("external"),
                           {QStringLiteral("internal"), QStringLiteral("external")})
        == u"internal";
    display.name = node.text(QStringLiteral("name"), QLatin1String("display-") + QString::number(number));
    if (display.name.toUtf8().size() > MaxDisplayNameSize)
        node.fail(QStringLiteral("a name has at most 127 bytes"), QStringLiteral("name"));
    display.attached = node.boolean(QStringLiteral("attached"), true);
    display.detachable = node.boolean(QStringLiteral("detachable"), !display.internal);
    display.size = {node.integer(QStringLiteral("width"), 1280, 1, MaxPixels),
        node.integer(QStringLiteral("height"), 720, 1, MaxPixels)};
    display.physicalSize = {node.integer(QStringLiteral("mm-width"), 0, 0, MaxMillimetres),
        node.integer(QStringLiteral("mm-height"), 0, 0, MaxMillimetres)};
    const QString rotation = QStringLiteral("rotation");
    display.rotation = node.integer(rotation, 0, 0, 270);
    if (!Rotations.contains(display.rotation))
        node.fail(QLatin1String("expected one of ") + numbersText(Rotations), rotation);
    display.technology = Technology(technologies().indexOf(
        node.word(QStringLiteral("technology"), technologies().constFirst(), technologies())));
    m_state.displays.emplace(number, display);
}

std::vector<SimVerb> SimulatedDisplays::verbs(const QString &)
{
    const QString id = QStringLiteral("ID");
    SimChoice known;
    for (const auto &display : m_state.displays)
        known.words.append(QString::number(display.first));
    QStringList rotations;
    for (const int rotation : Rotations)
        rotations.append(QString::number(rotation));
    std::vector<SimVerb> verbs{
        {QStringLiteral("add"),
            {id, QStringLiteral("NAME"), QStringLiteral("WIDTH"), QStringLiteral("HEIGHT"),
                QStringLiteral("[MM-WIDTH]"), QStringLiteral("[MM-HEIGHT]")},
            QStringLiteral("adds an external display, attached; one called 'miracast...' is wireless"),
            [this](const QStringList &words) {
                const int number = SimArgument::integer(words[0], 0, MaxId);
                if (m_state.displays.contains(number))
                    throw Error(QLatin1String("there is a display ") + words[0] + QLatin1String(" already"));
                if (words[1].toUtf8().size() > MaxDisplayNameSize)
                    throw Error(QStringLiteral("a name has at most 127 bytes"));
                const auto millimetres = [&](qsizetype place) {
                    return words.size() > place ? SimArgument::integer(words[place], 0, MaxMillimetres) : 0;
                };
                m_state.displays.emplace(number,
                    Display{words[1], false, true, true,
                        {SimArgument::integer(words[2], 1, MaxPixels),
                            SimArgument::integer(words[3], 1, MaxPixels)},
                        {millimetres(4), millimetres(5)}, 0, Technology::Unknown});
                tell();
            }},
        {QStringLiteral("remove"), {id}, QStringLiteral("takes a display away"),
            [this](const QStringList &words) {
                if (!displayNamed(words[0]).detachable)
                    throw Error(QStringLiteral("this display cannot be taken away"));
                remove(words[0].toInt());
            }},
        {QStringLiteral("attach"), {id}, QStringLiteral("attaches a display"),
            [this](const QStringList &words) { setAttached(words[0], true); }},
        {QStringLiteral("detach"), {id}, QStringLiteral("detaches a display"),
            [this](const QStringList &words) { setAttached(words[0], false); }},
        {QStringLiteral("rotate"), {id, QStringLiteral("DEGREES")},
            QStringLiteral("turns what a display shows: 0, 90, 180 or 270"),
            [this, rotations](const QStringList &words) {
                Display &display = displayNamed(words[0]);
                display.rotation = Rotations[SimArgument::oneOf(words[1], rotations)];
                tell();
            }},
        {QStringLiteral("resize"), {id, QStringLiteral("WIDTH"), QStringLiteral("HEIGHT")},
            QStringLiteral("gives a display another size in pixels"),
            [this](const QStringList &words) {
                Display &display = displayNamed(words[0]);
                display.size = {SimArgument::integer(words[1], 1, MaxPixels),
                    SimArgument::integer(words[2], 1, MaxPixels)};
                tell();
            }},
    };
    for (SimVerb &verb : verbs) {
        verb.choices.insert(QStringLiteral("DEGREES"), {rotations});
        if (verb.name != u"add")
            verb.choices.insert(id, known);
    }
    return verbs;
}

const Display *SimulatedDisplays::find(int id) const
{
    const auto found = m_state.displays.find(id);
    return found == m_state.displays.end() ? nullptr : &found->second;
}

int SimulatedDisplays::addWireless(const QString &receiver, QSize size)
{
    int id = 1;
    while (m_state.displays.contains(id))
        ++id;
    m_state.displays.emplace(id,
        Display{wirelessDisplayName(receiver, MaxDisplayNameSize), false, true, true, size, {0, 0}, 0,
            Technology::Unknown});
    tell();
    return id;
}

void SimulatedDisplays::remove(int id)
{
    if (m_state.displays.erase(id))
        tell();
}

void SimulatedDisplays::removeWireless(const QString &receiver)
{
    const QString name = wirelessDisplayName(receiver, MaxDisplayNameSize);
    if (std::erase_if(m_state.displays, [&](const auto &entry) { return entry.second.name == name; }) > 0)
        tell();
}

Display &SimulatedDisplays::displayNamed(const QString &id)
{
    bool ok = false;
    const auto found = m_state.displays.find(id.toInt(&ok));
    if (ok && found != m_state.displays.end())
        return found->second;
    QList<int> known;
    for (const auto &[number, display] : m_state.displays)
        known.append(number);
    throw Error(
        QLatin1String("there is no display '") + id + QLatin1String("'; there are ") + numbersText(known));
}

void SimulatedDisplays::setAttached(const QString &id, bool attached)
{
    Display &display = displayNamed(id);
    if (!attached && !display.detachable)
        throw Error(QStringLiteral("this display cannot be detached"));
    display.attached = attached;
    tell();
}

QVariantMap SimulatedDisplays::saved() const
{
    QVariantList list;
    for (const auto &[id, display] : m_state.displays) {
        list.append(QVariantMap{{QStringLiteral("id"), id}, {QStringLiteral("name"), display.name},
            {QStringLiteral("internal"), display.internal}, {QStringLiteral("attached"), display.attached},
            {QStringLiteral("detachable"), display.detachable},
            {QStringLiteral("width"), display.size.width()},
            {QStringLiteral("height"), display.size.height()},
            {QStringLiteral("mm-width"), display.physicalSize.width()},
            {QStringLiteral("mm-height"), display.physicalSize.height()},
            {QStringLiteral("rotation"), display.rotation},
            {QStringLiteral("technology"), int(display.technology)}});
    }
    return {{QStringLiteral("displays"), list}};
}

void SimulatedDisplays::restore(const QVariantMap &saved)
{
    m_state.displays.clear();
    for (const QVariant &entry : saved.value(QStringLiteral("displays")).toList()) {
        const QVariantMap before = entry.toMap();
        const auto number = [&before](const char *name) { return before.value(QLatin1String(name)).toInt(); };
        const auto isSet = [&before](const char *name) { return before.value(QLatin1String(name)).toBool(); };
        const int id = number("id");
        const QString name = before.value(QStringLiteral("name")).toString();
        const QSize size(number("width"), number("height"));
        const QSize physicalSize(number("mm-width"), number("mm-height"));
        const int technology = number("technology");
        if (id < 0 || id > MaxId || name.toUtf8().size() > MaxDisplayNameSize || size.isEmpty()
            || !physicalSize.isValid() || !Rotations.contains(number("rotation")) || technology < 0
            || technology >= technologies().size())
            continue;
        m_state.displays.emplace(id,
            Display{name, isSet("internal"), isSet("attached"), isSet("detachable"), size, physicalSize,
                number("rotation"), Technology(technology)});
    }
    tell();
}

void SimulatedDisplays::tell()
{
    save();
    know(m_state);
}

} // namespace oz::services
