#include "miracast/AirSinks.hpp"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <utility>

namespace oz::services {

namespace {

using namespace std::chrono_literals;
using Availability = WiFiDirectState::Availability;

// Displays take their time after they have got an address.
constexpr std::chrono::milliseconds ConnectLimit = 30s;

// The subelement of every wireless display, as Wi-Fi Display has it: what it is, the port of its
// conversation, and its greatest throughput in Mbit/s.
constexpr char DeviceInformation = 0;
constexpr int KindMask = 3; // in the last bits of what it is
constexpr int PrimarySink = 1;
constexpr int SourceOrSink = 3;
constexpr char SessionPossible = 0x10;
constexpr char Throughput = 50;

// What displays see of this device, which is a source.
QByteArray ownElements(int port)
{
    const char elements[] = {
        DeviceInformation, 0, 6, 0, SessionPossible, char(port >> 8), char(port & 0xff), 0, Throughput};
    return {elements, sizeof elements};
}

bool isSink(const WiFiDirectState::Peer &peer)
{
    if (!peer.displayInfo)
        return false;
    const QByteArray elements = QByteArray::fromHex(peer.displayInfo->toLatin1());
    // Each has an identifier, a size of two bytes, and its content.
    for (qsizetype at = 0; at + 3 <= elements.size();) {
        const qsizetype size = quint8(elements[at + 1]) << 8 | quint8(elements[at + 2]);
        if (elements[at] == DeviceInformation && size >= 2 && at + 5 <= elements.size()) {
            const int kind = elements[at + 4] & KindMask;
            return kind == PrimarySink || kind == SourceOrSink;
        }
        at += 3 + size;
    }
    return false;
}

bool isSame(const QString &address, const QString &other)
{
    return address.compare(other, Qt::CaseInsensitive) == 0;
}

} // namespace

AirSinks::AirSinks(std::shared_ptr<WpaWiFiDirect> radio, int port) : m_radio(std::move(radio))
{
    m_radio->supplicant().setDisplayElements(ownElements(port));
    connect(m_radio.get(), &WpaWiFiDirect::changed, this, &AirSinks::onRadio);
}

bool AirSinks::isOn() const
{
    return m_radio->isKnown() && m_radio->state()->availability == Availability::Enabled;
}

void AirSinks::onRadio()
{
    if (const QString text = remark(); std::exchange(m_lastRemark, text) != text)
        Q_EMIT remarkChanged();
    // The session of a daemon that died is over.
    if (!m_leftOver.isEmpty() && isOn() && m_radio->state()->group)
        m_radio->stopSession(std::exchange(m_leftOver, {}), [](const Outcome &) {});
    if (m_scanned && !isOn())
        return std::exchange(m_scanned, nullptr)(Result::WiFiFailed);
    if (m_scanned && m_isScanning && !m_radio->state()->scanning) {
        m_sinks.clear();
        for (const WiFiDirectState::Peer &peer : m_radio->state()->visible) {
            if (isSink(peer))
                m_sinks.append({peer.name, peer.address, peer.type});
        }
        std::exchange(m_scanned, nullptr)(Result::Success);
    }
    if (m_sink.isEmpty())
        return;
    if (!isOn())
        return fail(Result::WiFiFailed);
    const WiFiDirectState state = *m_radio->state();
    if (state.group)
        onGroup(state);
    else if (m_session.isEmpty() && m_isAsked && !state.connecting)
        fail(failureOfRadio());
    else if (!m_session.isEmpty())
        fail(Result::SinkLost);
}

void AirSinks::scan(const Scanned &scanned)
{
    if (!isOn())
        return scanned(Result::WiFiFailed);
    m_scanned = scanned;
    m_isScanning = false;
    m_radio->scan([this](const Outcome &outcome) {
        if (!m_scanned)
            return; // it was cancelled, or the radio is off
        // One that an application has asked for will do.
        if (outcome.error && (outcome.error != EBUSY || !m_radio->state()->scanning))
            return std::exchange(m_scanned, nullptr)(Result::WiFiFailed);
        m_isScanning = true;
        onRadio();
    });
}

void AirSinks::reach(const QString &address, const QString &pin, const Reached &reached)
{
    m_sink = address;
    m_reached = reached;
    m_hasPin = !pin.isEmpty();
    if (!isOn())
        return fail(Result::WiFiFailed);
    // A group in which the sink is already will do.
    if (m_radio->state()->group)
        return onGroup(*m_radio->state());
    if (!m_hasPin && !m_radio->hasPushButton(address))
        return fail(Result::PinRequired);
    connectSink(pin);
}

void AirSinks::connectSink(const QString &pin)
{
    WiFiDirectSource::ConnectRequest request;
    request.address = m_sink;
    if (m_hasPin) {
        request.method = WiFiDirectSource::WpsMethod::PresetPin;
        request.pin = pin;
    }
    m_radio->connectPeer(request, [this, sink = m_sink](const Outcome &outcome) {
        if (sink != m_sink)
            return; // it has been given up meanwhile
        if (outcome.error)
            return fail(outcome.error == ENODEV ? Result::SinkNotFound : Result::WiFiFailed);
        m_isAsked = true;
        onRadio();
    });
}

// The sink is a member once its address is known.
void AirSinks::onGroup(const WiFiDirectState &state)
{
    const auto member = std::find_if(state.connected.cbegin(), state.connected.cend(),
        [this](const WiFiDirectState::ConnectedPeer &each) { return isSame(each.address, m_sink); });
    const bool isMember = member != state.connected.cend();
    if (!m_reached) {
        if (!isMember)
            fail(Result::SinkLost);
        return;
    }
    if (!isMember && !m_isAsked)
        return fail(Result::WiFiFailed); // the radio is in a group with others
    if (m_session.isEmpty())
        m_radio->startSession([this](const Outcome &outcome) { m_session = outcome.text; });
    if (!isMember)
        return;
    if (member->ipAddress.isEmpty())
        return fail(Result::SinkLost);
    std::exchange(m_reached, nullptr)(Result::Success, {member->ipAddress, 0, ConnectLimit});
}

AirSinks::Result AirSinks::failureOfRadio() const
{
    switch (m_radio->failure()) {
    case WpaConnecting::Failure::WrongPin:
        return m_hasPin ? Result::PinIncorrect : Result::PinRequired;
    case WpaConnecting::Failure::OtherMethod:
        return m_hasPin ? Result::SinkRefused : Result::PinRequired;
    case WpaConnecting::Failure::Refused:
        return Result::SinkRefused;
    case WpaConnecting::Failure::Other:
        return Result::SinkLost;
    }
    return Result::SinkLost;
}

void AirSinks::fail(Result result)
{
    const Reached reached = std::exchange(m_reached, nullptr);
    const bool wasReached = !reached && !m_sink.isEmpty();
    leave();
    if (reached)
        reached(result, {});
    else if (wasReached)
        Q_EMIT lost();
}

void AirSinks::leave()
{
    const auto ignore = [](const Outcome &) {};
    const bool isConnecting = m_isAsked && m_session.isEmpty();
    m_sink.clear();
    m_reached = nullptr;
    m_isAsked = false;
    if (const QString session = std::exchange(m_session, {}); !session.isEmpty())
        m_radio->stopSession(session, ignore);
    else if (isConnecting)
        m_radio->cancelConnect(ignore);
}

QString AirSinks::remark() const
{
    if (!m_radio->isKnown())
        return QLatin1String("none on the air: ") + m_radio->absence();
    if (!isOn())
        return QLatin1String("none on the air: ") + m_radio->remark();
    return QLatin1String("on the air by Wi-Fi Direct of ") + m_radio->supplicant().interfaceName();
}

QVariantList AirSinks::saved() const
{
    QVariantList saved;
    for (const Sink &sink : m_sinks)
        saved.append(QVariant(QStringList{sink.name, sink.address, sink.type}));
    if (!m_session.isEmpty())
        saved.append(m_session);
    return saved;
}

void AirSinks::restore(const QVariantList &saved)
{
    for (const QVariant &each : saved) {
        if (each.typeId() == QMetaType::QString) {
            m_leftOver = each.toString();
            continue;
        }
        const QStringList sink = each.toStringList();
        m_sinks.append({sink.value(0), sink.value(1), sink.value(2)});
    }
}

} // namespace oz::services
