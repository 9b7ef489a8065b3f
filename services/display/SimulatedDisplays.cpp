#include "display/SimulatedDisplays.hpp"

namespace oz::services {

namespace {

constexpr int MaxId = 9999;
constexpr int MaxPixels = 65535;
constexpr int MaxMillimetres = 100'000;

const QString Id = QStringLiteral("id");

// Keys whose default depends on the other values of the display.
const QString Name = QStringLiteral("name");
const QString Detachable = QStringLiteral("detachable");

const QStringList &rotations()
{
    static const QStringList all{
        QStringLiteral("0"), QStringLiteral("90"), QStringLiteral("180"), QStringLiteral("270")};
    return all;
}

bool isNameTooLong(const QString &name)
{
    return name.toUtf8().size() > MaxDisplayNameSize;
}

QString knownText(const DisplayTree::Displays &displays)
{
    QStringList texts;
    for (const auto &[id, display] : displays)
        texts.append(QString::number(id));
    return texts.join(QLatin1String(", "));
}

// The choices of the verbs' arguments that are the same whatever displays there are.
const QMap<QString, SimChoice> &argumentRanges()
{
    static const SimChoice pixels{{}, 1, MaxPixels, 1, QStringLiteral("px")};
    static const SimChoice millimetres{{}, 0, MaxMillimetres, 1, QStringLiteral("mm")};
    static const QMap<QString, SimChoice> ranges{{QStringLiteral("WIDTH"), pixels},
        {QStringLiteral("HEIGHT"), pixels}, {QStringLiteral("[MM-WIDTH]"), millimetres},
        {QStringLiteral("[MM-HEIGHT]"), millimetres}, {QStringLiteral("DEGREES"), {rotations()}}};
    return ranges;
}

void setName(Display &display, const QVariant &name)
{
    if (isNameTooLong(name.toString()))
        throw WrongSetting(QStringLiteral("a name has at most 127 bytes"));
    display.name = name.toString();
}

void setRotation(Display &display, const QVariant &degrees)
{
    if (!rotations().contains(degrees.toString()))
        throw WrongSetting(QLatin1String("expected one of ") + rotations().join(QLatin1String(", ")));
    display.rotation = degrees.toInt();
}

Display panel()
{
    return {QStringLiteral("panel"), displayKind(true), true, false, {768, 1280}, {54, 90}, 0, 5};
}

Display hdmi()
{
    return {QStringLiteral("hdmi"), displayKind(false), false, true, {1920, 1080}, {531, 299}, 0, 2};
}

} // namespace

const Settings<Display> &SimulatedDisplays::displayTable()
{
    using C = SettingColumns<Display>;
    static const auto number = [](double least, double most, const char *unit, int (QSize::*get)() const,
                                   void (QSize::*set)(int), QSize Display::*size) {
        ValueType type{ValueType::Number, QString::fromUtf8(unit)};
        type.isWhole = true;
        type.least = least;
        type.most = most;
        return SettingColumn<Display>{type,
            [=](const Display &display) { return QVariant(((display.*size).*get)()); },
            [=](Display &display, const QVariant &value) { ((display.*size).*set)(value.toInt()); }};
    };
    static const auto width = [](double least, double most, const char *unit, QSize Display::*size) {
        return number(least, most, unit, &QSize::width, &QSize::setWidth, size);
    };
    static const auto height = [](double least, double most, const char *unit, QSize Display::*size) {
        return number(least, most, unit, &QSize::height, &QSize::setHeight, size);
    };
    static const Settings<Display> table{
        {"name", C::text(&Display::name).by(setName).kept(), QString(),
            "its name, wireless if it contains miracast; display- and its identifier if left out"},
        {"kind", C::words(&Display::kind, displayKinds()).kept(), QStringLiteral("external"),
            "whether it is built into the device"},
        {"attached", C::truth(&Display::attached).kept(), true, "whether it is attached"},
        {"detachable", C::truth(&Display::detachable).kept(), true,
            "whether it can be detached; false for an internal one if left out"},
        {"width", width(1, MaxPixels, "px", &Display::size).kept(), 1280, "its native width"},
        {"height", height(1, MaxPixels, "px", &Display::size).kept(), 720, "its native height"},
        {"mm-width", width(0, MaxMillimetres, "mm", &Display::physicalSize).kept(), 0,
            "its physical width; 0 for unknown"},
        {"mm-height", height(0, MaxMillimetres, "mm", &Display::physicalSize).kept(), 0,
            "its physical height; 0 for unknown"},
        {"rotation", C::number(&Display::rotation, 0, 270, "°").by(setRotation).kept(), 0,
            "how far its picture is turned, a multiple of 90"},
        {"technology", C::words(&Display::technology, displayTechnologies()).kept(),
            QStringLiteral("unknown"), "the kind of panel"},
    };
    return table;
}

SimulatedDisplays::SimulatedDisplays(const JsonNode &section, SimulatedParts &)
{
    section.allowOnly({List});
    if (!section.contains(List))
        m_state.displays = {{0, panel()}, {1, hdmi()}};
    for (const JsonNode &node : section.maps(List))
        readDisplay(node);
    update();
}

void SimulatedDisplays::readDisplay(const JsonNode &node)
{
    if (!node.contains(Id))
        node.fail(QStringLiteral("a display needs an 'id'"));
    const int id = node.integer(Id, 0, 0, MaxId);
    if (m_state.displays.contains(id))
        node.fail(QStringLiteral("another display has this identifier"), Id);
    Display &display = m_state.displays[id];
    read(node, displayTable().of(&display), {Id});
    if (!node.contains(Name))
        display.name = QLatin1String("display-") + QString::number(id);
    if (!node.contains(Detachable))
        display.detachable = !isInternal(display);
}

std::vector<SimVerb> SimulatedDisplays::verbs(const QString &)
{
    const QString id = QStringLiteral("ID");
    std::vector<SimVerb> verbs{
        {QStringLiteral("add"),
            {id, QStringLiteral("NAME"), QStringLiteral("WIDTH"), QStringLiteral("HEIGHT"),
                QStringLiteral("[MM-WIDTH]"), QStringLiteral("[MM-HEIGHT]")},
            QStringLiteral("adds an external display, attached; one called 'miracast...' is wireless"),
            [this](const QStringList &words) { add(words); }},
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
            [this](const QStringList &words) {
                Display &display = displayNamed(words[0]);
                display.rotation = rotations()[SimArgument::oneOf(words[1], rotations())].toInt();
                update();
            }},
        {QStringLiteral("resize"), {id, QStringLiteral("WIDTH"), QStringLiteral("HEIGHT")},
            QStringLiteral("gives a display another size in pixels"),
            [this](const QStringList &words) {
                Display &display = displayNamed(words[0]);
                display.size = {SimArgument::integer(words[1], 1, MaxPixels),
                    SimArgument::integer(words[2], 1, MaxPixels)};
                update();
            }},
    };
    const SimChoice known = knownDisplays();
    for (SimVerb &verb : verbs) {
        for (const QString &argument : std::as_const(verb.arguments)) {
            if (argumentRanges().contains(argument))
                verb.choices.insert(argument, argumentRanges().value(argument));
        }
        verb.choices.insert(id, verb.name == u"add" ? SimChoice{{}, 0, MaxId, 1} : known);
    }
    return verbs;
}

SimChoice SimulatedDisplays::knownDisplays() const
{
    SimChoice known;
    for (const auto &[number, display] : m_state.displays) {
        known.words.append(QString::number(number));
        known.titles.insert(known.words.last(), display.name);
    }
    return known;
}

// The words are those of the verb's arguments.
void SimulatedDisplays::add(const QStringList &words)
{
    const int number = SimArgument::integer(words[0], 0, MaxId);
    if (m_state.displays.contains(number))
        throw Error(QLatin1String("there is a display ") + words[0] + QLatin1String(" already"));
    if (isNameTooLong(words[1]))
        throw Error(QStringLiteral("a name has at most 127 bytes"));
    const auto millimetres = [&](qsizetype place) {
        return words.size() > place ? SimArgument::integer(words[place], 0, MaxMillimetres) : 0;
    };
    m_state.displays.emplace(number,
        Display{words[1], displayKind(false), true, true,
            {SimArgument::integer(words[2], 1, MaxPixels), SimArgument::integer(words[3], 1, MaxPixels)},
            {millimetres(4), millimetres(5)}, 0, 0});
    update();
}

const Display *SimulatedDisplays::find(int id) const
{
    const auto found = m_state.displays.find(id);
    return found == m_state.displays.end() ? nullptr : &found->second;
}

int SimulatedDisplays::addWireless(const QString &name, QSize size)
{
    int id = 1;
    while (m_state.displays.contains(id))
        ++id;
    m_state.displays.emplace(id, Display{name, displayKind(false), true, true, size, {0, 0}, 0, 0});
    update();
    return id;
}

void SimulatedDisplays::remove(int id)
{
    if (m_state.displays.erase(id))
        update();
}

void SimulatedDisplays::removeWireless(const QString &name)
{
    if (std::erase_if(m_state.displays, [&](const auto &entry) { return entry.second.name == name; }) > 0)
        update();
}

Display &SimulatedDisplays::displayNamed(const QString &id)
{
    bool ok = false;
    const auto found = m_state.displays.find(id.toInt(&ok));
    if (ok && found != m_state.displays.end())
        return found->second;
    throw Error(QLatin1String("there is no display '") + id + QLatin1String("'; there are ")
        + knownText(m_state.displays));
}

void SimulatedDisplays::setAttached(const QString &id, bool attached)
{
    Display &display = displayNamed(id);
    if (!attached && !display.detachable)
        throw Error(QStringLiteral("this display cannot be detached"));
    display.attached = attached;
    update();
}

QVariantList SimulatedDisplays::listOf(const DisplayTree::Displays &displays)
{
    QVariantList list;
    for (auto [id, display] : displays) {
        QVariantMap map = savedOf(displayTable().of(&display));
        map.insert(Id, id);
        list.append(map);
    }
    return list;
}

QVariantMap SimulatedDisplays::saved()
{
    return {{List, listOf(m_state.displays)}};
}

// Where one makes no sense, they are all as the phone's file has them.
void SimulatedDisplays::restore(const QVariantMap &saved)
{
    DisplayTree::Displays displays;
    const QVariant list = saved.value(List);
    bool fits = list.typeId() == QMetaType::QVariantList;
    for (const QVariant &entry : list.toList()) {
        const QVariantMap before = entry.toMap();
        const int id = before.value(Id, -1).toInt();
        Display &display = displays[id];
        fits = fits && id >= 0 && id <= MaxId && restoreTo(displayTable().of(&display), before);
    }
    if (fits)
        m_state.displays = displays;
    update();
}

void SimulatedDisplays::update()
{
    save();
    know(m_state);
}

} // namespace oz::services
