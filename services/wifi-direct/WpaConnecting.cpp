#include "wifi-direct/WpaConnecting.hpp"

#include <QDBusArgument>

#include <cerrno>
#include <chrono>
#include <functional>

namespace oz::services {

namespace {

using namespace std::chrono_literals;
using Intent = WiFiDirectSource::Intent;
using WpsMethod = WiFiDirectSource::WpsMethod;

constexpr std::chrono::seconds SearchTime = 15s;
// wpa_supplicant gives up after 120 s; this is for when it does not say so.
constexpr std::chrono::seconds LongestConnecting = 130s;
constexpr std::chrono::seconds RefusalTime = 20s;

constexpr int OwnerIntent = 15;
constexpr int ClientIntent = 0;
constexpr int AnyIntent = 7;

QString methodWord(WpsMethod method)
{
    switch (method) {
    case WpsMethod::PushButton:
        return QStringLiteral("pbc");
    case WpsMethod::RandomPin:
        return QStringLiteral("display");
    case WpsMethod::PresetPin:
        return QStringLiteral("keypad");
    }
    return {};
}

int intentNumber(Intent intent)
{
    switch (intent) {
    case Intent::GroupOwner:
        return OwnerIntent;
    case Intent::Client:
        return ClientIntent;
    case Intent::Any:
        return AnyIntent;
    }
    return AnyIntent;
}

int numberIn(const QVariant &map, const char *name)
{
    return qdbus_cast<QVariantMap>(map).value(QLatin1String(name)).toInt();
}

// The status codes of the standard.
WpaConnecting::Failure negotiationFailure(const QVariantList &arguments)
{
    constexpr int IncompatibleMethod = 10;
    constexpr int RejectedByUser = 11;
    const int status = numberIn(arguments.value(0), "status");
    return status == IncompatibleMethod ? WpaConnecting::Failure::OtherMethod
        : status == RejectedByUser      ? WpaConnecting::Failure::Refused
                                        : WpaConnecting::Failure::Other;
}

// The configuration errors of Wi-Fi Protected Setup.
WpaConnecting::Failure wpsFailure(const QVariantList &arguments)
{
    constexpr int PasswordFailure = 18;
    return numberIn(arguments.value(1), "config_error") == PasswordFailure ? WpaConnecting::Failure::WrongPin
                                                                           : WpaConnecting::Failure::Other;
}

} // namespace

WpaConnecting::WpaConnecting(WpaSupplicant &supplicant, WpaPeers &peers, NetworkManagerP2p &manager)
    : m_supplicant(supplicant), m_peers(peers), m_manager(manager)
{
    m_limit.setSingleShot(true);
    m_limit.callOnTimeout(this, &WpaConnecting::cancel);
    m_refusal.setSingleShot(true);
    m_refusal.setInterval(RefusalTime);
    connect(&m_manager, &NetworkManagerP2p::ended, this, &WpaConnecting::end);
    connect(&m_peers, &WpaPeers::found, this, &WpaConnecting::onFound);
    // From the radio's object before there is an interface for the group, from the group's afterwards.
    const auto hear = [this](const char *signal, const std::function<Failure(const QVariantList &)> &read) {
        m_supplicant.hear({}, Wpa::P2p, QLatin1String(signal), this,
            [this, read](const QDBusMessage &message) { fail(read(message.arguments())); });
    };
    hear("GONegotiationFailure", negotiationFailure);
    hear("WpsFailed", wpsFailure);
    hear("GroupFormationFailure", [](const QVariantList &) { return Failure::Other; });
}

void WpaConnecting::begin(const Request &request, const Done &done)
{
    m_refusal.stop();
    m_request = request;
    m_failure = Failure::Other;
    if (m_peers.isReachable(request.address))
        connectPeer(done);
    else
        search(done);
}

// wpa_supplicant has forgotten the peer, as nobody has scanned for a while.
void WpaConnecting::search(const Done &done)
{
    m_isSearching = true;
    m_limit.start(SearchTime);
    m_peers.search(WpaPeers::Channels::Social, SearchTime, [this, done](const QDBusMessage &answer) {
        if (isError(answer))
            end();
        else
            Q_EMIT changed();
        done(outcomeOf(answer));
    });
}

void WpaConnecting::onFound(const QString &address)
{
    if (!m_isSearching || !m_request || m_request->address.compare(address, Qt::CaseInsensitive) != 0)
        return;
    m_isSearching = false;
    connectPeer([](const Outcome &) {});
}

void WpaConnecting::connectPeer(const Done &done)
{
    m_limit.start(LongestConnecting);
    const auto answered = [this, done](const QDBusMessage &answer) {
        if (!isError(answer)) {
            Q_EMIT changed();
            return done({});
        }
        end();
        // All arguments are as it wants them, so this is about the peer.
        if (answer.errorName() == Wpa::Name + QLatin1String(".InvalidArgs"))
            return done({ENODEV, QStringLiteral("wpa_supplicant does not know the peer"), {}});
        done(outcomeOf(answer));
    };
    const QString &address = m_request->address;
    if (m_manager.ownsRadio())
        m_manager.connectPeer(
            address, m_peers.find(address)->name, m_supplicant.displayElements(), this, answered);
    else
        m_supplicant.call(
            m_supplicant.radio(), Wpa::P2p, QStringLiteral("Connect"), {settings()}, this, answered);
}

// The arguments of Connect.
QVariantMap WpaConnecting::settings() const
{
    QVariantMap settings{
        {QStringLiteral("peer"), QVariant::fromValue(QDBusObjectPath(m_peers.objectOf(m_request->address)))},
        {QStringLiteral("wps_method"), methodWord(m_request->method)}};
    if (m_request->method != WpsMethod::PushButton)
        settings.insert(QStringLiteral("pin"), m_request->pin);
    if (m_peers.ownsGroup(m_request->address))
        settings.insert(QStringLiteral("join"), true);
    else
        settings.insert(QStringLiteral("go_intent"), intentNumber(m_request->intent));
    return settings;
}

void WpaConnecting::cancel()
{
    m_manager.disconnectPeer();
    // It sends no signal, and a group may form nevertheless.
    m_supplicant.call(m_supplicant.radio(), Wpa::P2p,
        m_isSearching ? QStringLiteral("StopFind") : QStringLiteral("Cancel"), {}, this,
        [](const QDBusMessage &) {});
    m_refusal.start();
    end();
}

void WpaConnecting::fail(Failure failure)
{
    if (m_request)
        m_failure = failure;
    end();
}

void WpaConnecting::end()
{
    if (!m_request)
        return;
    m_request.reset();
    m_isSearching = false;
    m_limit.stop();
    Q_EMIT changed();
}

} // namespace oz::services
