#include "led/SysfsLed.hpp"

#include "linux/SysFolder.hpp"
#include "publishing/StateStore.hpp"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <unistd.h>

namespace oz::services {

namespace {

using Elements = LedState::Elements;
using Lamp = SysfsLed::Lamp;
using Lamps = SysfsLed::Lamps;
using Found = SysfsLed::Found;
using SysFolder::readFile;

const QString Leds = QStringLiteral("/sys/class/leds");
const QString Brightness = QStringLiteral("brightness");
const QString MostBrightness = QStringLiteral("max_brightness");
const QString Trigger = QStringLiteral("trigger");
const QString ColorOrder = QStringLiteral("multi_index");
const QString Intensity = QStringLiteral("multi_intensity");
const QString NoTrigger = QStringLiteral("none");

const QString SavedName = QStringLiteral("led-found");

// Longer than it is dark between two flashes.
constexpr std::chrono::seconds RestTime(1);

struct Written
{
    int error = 0;
    QString text;
};

Written writeFile(const QString &file, const QString &value)
{
    const int fd = ::open(QFile::encodeName(file).constData(), O_WRONLY | O_CLOEXEC | O_TRUNC);
    const QByteArray bytes = value.toLatin1();
    const bool done = fd >= 0 && ::write(fd, bytes.constData(), std::size_t(bytes.size())) == bytes.size();
    const int error = done ? 0 : errno;
    if (fd >= 0)
        ::close(fd);
    return done ? Written() : Written{error, QString(file + QLatin1String(": ") + qt_error_string(error))};
}

// The trigger that is in force stands in brackets.
QString triggerIn(const QString &content)
{
    static const QRegularExpression brackets(QStringLiteral("\\[(.*)\\]"));
    const QString current = brackets.match(content).captured(1);
    return current.isEmpty() ? NoTrigger : current;
}

// The parts of a name, as in "rgb:status" or "phone:blue:indicator".
QStringList partsOf(const QString &name)
{
    static const QRegularExpression separators(QStringLiteral("[:_-]"));
    return name.split(separators, Qt::SkipEmptyParts);
}

bool isForNotifications(const QStringList &parts)
{
    static const QStringList functions{QStringLiteral("indicator"), QStringLiteral("status"),
        QStringLiteral("notification"), QStringLiteral("rgb")};
    return std::any_of(functions.begin(), functions.end(),
        [&](const QString &function) { return parts.contains(function); });
}

const QStringList ElementNames{QStringLiteral("red"), QStringLiteral("green"), QStringLiteral("blue")};

Elements elementsOf(const QString &color)
{
    if (!ElementNames.contains(color))
        return {true, true, true};
    return {color == ElementNames[0], color == ElementNames[1], color == ElementNames[2]};
}

bool isLit(const Elements &elements, const QString &color)
{
    return (color == ElementNames[0] && elements.red) || (color == ElementNames[1] && elements.green)
        || (color == ElementNames[2] && elements.blue);
}

// The best that there is: several colours in one, one of each, or one alone.
Lamps lampsFor(const QString &device)
{
    const QStringList names = QDir(Leds).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    Lamps several;
    QMap<QString, Lamps> siblings; // those that differ in their colour alone
    Lamps single;
    for (const QString &name : names) {
        if (device.isEmpty() ? !isForNotifications(partsOf(name)) : name != device)
            continue;
        Lamp lamp{Leds + u'/' + name, {}, {true, true, true}};
        if (const auto order = readFile(lamp.folder + u'/' + ColorOrder)) {
            lamp.colors = order->split(u' ', Qt::SkipEmptyParts);
            several.push_back(lamp);
            continue;
        }
        QStringList others = partsOf(name);
        for (const QString &part : partsOf(name)) {
            if (ElementNames.contains(part)) {
                lamp.shows = elementsOf(part);
                others.removeAll(part);
                siblings[others.join(u':')].push_back(lamp);
            }
        }
        single.push_back(lamp);
    }
    if (!several.empty())
        return {several.front()};
    for (const Lamps &lamps : siblings) {
        if (lamps.size() == std::size_t(ElementNames.size()))
            return lamps;
    }
    // Alone it stands for every colour.
    for (Lamp &lamp : single)
        lamp.shows = {true, true, true};
    return single.empty() ? Lamps() : Lamps{single.front()};
}

// The reason why the lamps cannot be lit; empty where they can.
QString obstacleOf(const Lamps &lamps, const QString &device)
{
    if (lamps.empty()) {
        return device.isEmpty() ? QStringLiteral("the kernel has no LED for notifications in ") + Leds
                                : QString(QLatin1String("there is no ") + Leds + u'/' + device);
    }
    for (const Lamp &lamp : lamps) {
        const QString file = lamp.folder + u'/' + Brightness;
        if (::access(QFile::encodeName(file).constData(), W_OK) < 0)
            return QLatin1String("may not write ") + file + QLatin1String(": ") + qt_error_string(errno)
                + QLatin1String("; the group 'ozdevice' may, by the udev rule 60-ozdevice.rules");
    }
    return {};
}

// In the order in which it has to be put back: writing brightness 0 takes a trigger away.
Found stateOf(const Lamps &lamps)
{
    Found found;
    for (const Lamp &lamp : lamps) {
        QStringList files{Intensity, Brightness};
        const QString trigger = triggerIn(readFile(lamp.folder + u'/' + Trigger).value_or(QString()));
        for (const QString &name : files) {
            if (const auto value = readFile(lamp.folder + u'/' + name))
                found.append({lamp.folder + u'/' + name, *value});
        }
        if (trigger == NoTrigger)
            continue;
        found.append({lamp.folder + u'/' + Trigger, trigger});
        for (const QString &name : {QStringLiteral("delay_on"), QStringLiteral("delay_off")}) {
            if (const auto value = readFile(lamp.folder + u'/' + name))
                found.append({lamp.folder + u'/' + name, *value});
        }
    }
    return found;
}

void writeBack(const Found &found)
{
    for (const auto &[file, value] : found)
        (void)writeFile(file, value); // one that is gone has taken its state along
}

Written show(const Lamps &lamps, const Elements &elements)
{
    const bool dark = elements == Elements();
    for (const Lamp &lamp : lamps) {
        const QString trigger = lamp.folder + u'/' + Trigger;
        const auto triggers = readFile(trigger);
        if (triggers && triggerIn(*triggers) != NoTrigger) {
            if (const Written written = writeFile(trigger, NoTrigger); written.error)
                return written;
        }
        const QString most = readFile(lamp.folder + u'/' + MostBrightness).value_or(QStringLiteral("1"));
        bool lit = (elements.red && lamp.shows.red) || (elements.green && lamp.shows.green)
            || (elements.blue && lamp.shows.blue);
        if (!lamp.colors.isEmpty()) {
            lit = !dark;
            QStringList intensities;
            for (const QString &color : lamp.colors)
                intensities.append(isLit(elements, color) ? most : QStringLiteral("0"));
            if (const Written written = writeFile(lamp.folder + u'/' + Intensity, intensities.join(u' '));
                written.error)
                return written;
        }
        if (const Written written =
                writeFile(lamp.folder + u'/' + Brightness, lit ? most : QStringLiteral("0"));
            written.error)
            return written;
    }
    return {};
}

} // namespace

SysfsLed::SysfsLed(StateStore &store, const QString &device)
    : m_store(store), m_device(device), m_monitor(QStringLiteral("leds"), [this] { find(); })
{
    m_rest.setSingleShot(true);
    m_rest.setInterval(RestTime);
    m_rest.callOnTimeout(this, [this] { putBack(); });
    // A daemon that was killed may have left lamps lit.
    Found left;
    const QVariantList saved = m_store.load(SavedName).value(SavedName).toList();
    for (const QVariant &entry : saved)
        left.append({entry.toStringList().value(0), entry.toStringList().value(1)});
    if (!left.isEmpty()) {
        m_found = left;
        m_rest.start();
    }
    find();
}

SysfsLed::~SysfsLed()
{
    putBack();
}

void SysfsLed::find()
{
    m_worker.post(
        this,
        [device = m_device] {
            const Lamps lamps = lampsFor(device);
            return std::pair(lamps, obstacleOf(lamps, device));
        },
        [this](const std::pair<Lamps, QString> &result) {
            const auto &[lamps, obstacle] = result;
            m_lamps = obstacle.isEmpty() ? lamps : Lamps();
            if (obstacle.isEmpty())
                know(m_state);
            else
                setAbsent(obstacle);
        });
}

void SysfsLed::light(const Elements &elements, const Done &done)
{
    m_wanted = elements;
    m_isApplied = false;
    m_waiting.push_back(done);
    step();
}

// One thing after the other: what is found has to be saved before it is changed.
void SysfsLed::step()
{
    if (m_isBusy || m_isApplied)
        return;
    if (m_lamps.empty()) {
        report(ENODEV, absence());
        return;
    }
    m_rest.stop();
    m_isBusy = true;
    if (!m_found) {
        if (m_wanted == Elements()) { // nothing is lit that would have to be darkened
            m_isBusy = false;
            report(0, {});
            return;
        }
        m_worker.post(
            this, [lamps = m_lamps] { return stateOf(lamps); },
            [this](const Found &found) {
                m_isBusy = false;
                m_found = found;
                QVariantList saved;
                for (const auto &[file, value] : found)
                    saved.append(QStringList{file, value});
                m_store.save(SavedName, {{SavedName, saved}});
                step();
            });
        return;
    }
    m_isApplied = true;
    m_worker.post(
        this, [lamps = m_lamps, wanted = m_wanted] { return show(lamps, wanted); },
        [this, wanted = m_wanted](const Written &written) {
            m_isBusy = false;
            if (!m_isApplied) {
                step(); // something newer is wanted by now
                return;
            }
            if (wanted == Elements())
                m_rest.start();
            report(written.error, written.text);
            if (written.error)
                find();
        });
}

void SysfsLed::report(int error, const QString &text)
{
    m_isApplied = true;
    const std::vector<Done> waiting = std::exchange(m_waiting, {});
    if (!error) {
        m_state.lit = m_wanted;
        know(m_state);
    }
    for (const Done &done : waiting)
        done({error, text, {}});
}

void SysfsLed::putBack()
{
    if (!m_found)
        return;
    m_worker.enqueue([found = *m_found] { writeBack(found); });
    m_found.reset();
    m_store.save(SavedName, {});
}

} // namespace oz::services
