#include <oz/testing/PhoneParts.hpp>

#include "PhoneLink.hpp"
#include "PhoneWords.hpp"

namespace oz::testing {

using namespace device;

PhonePart::PhonePart(PhoneLink &link, const QString &name, const QString &instance)
    : m_link(&link), m_name(name), m_instance(instance)
{
}

void PhonePart::tell(const char *verb, const QStringList &arguments)
{
    QStringList words{m_name};
    if (!m_instance.isEmpty())
        words.append(m_instance);
    m_link->tell(words + QStringList{QLatin1String(verb)} + arguments);
}

void PhonePart::turn(const char *verb, bool on)
{
    tell(verb, {on ? QStringLiteral("on") : QStringLiteral("off")});
}

QStringList PhonePart::list(const QStringList &names)
{
    return names.isEmpty() ? QStringList() : QStringList{names.join(u',')};
}

QVariant PhonePart::value(const char *name) const
{
    QStringList words{m_name};
    if (!m_instance.isEmpty())
        words.append(m_instance);
    words.append(QLatin1String(name));
    return m_link->value(words.join(u'.'));
}

void AnsweringPart::answerLate(std::chrono::milliseconds delay)
{
    tell("answer-late", {QString::number(delay.count())});
}

void PhoneBattery::setCondition(BatteryCondition::Type condition)
{
    tell("condition", {PhoneWords::of(condition)});
}

void PhoneTime::advance(std::chrono::milliseconds time)
{
    m_link->tell({QStringLiteral("clock"), QStringLiteral("advance"),
        QString::number(double(time.count()) / 1000, 'f', 3)});
}

void PhoneTime::setSpeed(double factor)
{
    m_link->tell({QStringLiteral("clock"), QStringLiteral("speed"), QString::number(factor)});
}

CellularConnectionState::Type PhoneProfile::connection() const
{
    const QString word = value("connection").toString();
    return word == u"connected" ? CellularConnectionState::Connected
        : word == u"connecting" ? CellularConnectionState::PendingConnect
                                : CellularConnectionState::Disconnected;
}

void PhoneDisplays::add(int id, const QString &name, const QSize &pixels, const QSize &millimetres)
{
    tell("add",
        {QString::number(id), name, QString::number(pixels.width()), QString::number(pixels.height()),
            QString::number(millimetres.width()), QString::number(millimetres.height())});
}

void PhoneDisplays::resize(int id, const QSize &pixels)
{
    tell("resize", {QString::number(id), QString::number(pixels.width()), QString::number(pixels.height())});
}

LedColor::Type PhoneLed::lit() const
{
    return PhoneWords::colorOf(value("lit").toString());
}

LedColor::Type PhoneLed::color() const
{
    return PhoneWords::colorOf(value("color").toString());
}

void PhoneMiracast::stop(MiracastStopReason::Type reason)
{
    tell("stop", {PhoneWords::of(reason)});
}

void PhoneMiracast::setSession(MiracastDisplayState::Type state, const QString &name)
{
    tell("session",
        QStringList{PhoneWords::of(state)} + list(name.isEmpty() ? QStringList() : QStringList{name}));
}

void PhoneOrientation::hold(DeviceOrientation::Type orientation)
{
    tell(PhoneWords::of(orientation).toLatin1().constData());
}

void PhoneRadio::enable(CellularTechnology::Types technologies)
{
    tell("enable", {PhoneWords::of(technologies).join(u',')});
}

void PhoneSimCard::setState(SimCardState::Type state)
{
    tell(state == SimCardState::NotDetected ? "remove" : PhoneWords::of(state).toLatin1().constData());
}

PhoneVibration::Run PhoneVibration::last() const
{
    const auto time = [this](
                          const char *name) { return std::chrono::milliseconds(value(name).toLongLong()); };
    return {time("last-duration"), time("last-ran"), value("last-intensity").toInt(),
        value("last-end").toString()};
}

void PhoneWiFiDirect::setGroup(WiFiDirectRole::Type role, const QStringList &names)
{
    tell("group", QStringList{PhoneWords::of(role)} + list(names));
}

} // namespace oz::testing
