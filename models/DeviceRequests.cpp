#include <oz/models/DeviceRequests.hpp>

#include "AwaitedConnection.hpp"
#include "InvalidArgument.hpp"
#include "RequestThread.hpp"

#include <oz/device/CellularConnectionRequestResult.hpp>
#include <oz/device/CellularDataInterface.hpp>
#include <oz/device/Led.hpp>
#include <oz/device/MiracastManager.hpp>
#include <oz/device/RequestError.hpp>
#include <oz/device/VibrationController.hpp>
#include <oz/device/WiFiDirect.hpp>

#include <QMetaEnum>
#include <QMutex>
#include <QPointer>
#include <QTimer>

#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <optional>

namespace oz::models {

using namespace device;

namespace {

// A result whose reason is the enumerator's name.
template <typename Enum>
RequestResult resultOf(Enum code, Enum success)
{
    if (code == success)
        return {true, int(code), QString()};
    return {false, int(code), QString::fromLatin1(QMetaEnum::fromType<Enum>().valueToKey(int(code)))};
}

RequestResult resultOf(WiFiDirectResult::Type code)
{
    return resultOf(code, WiFiDirectResult::Success);
}

RequestResult resultOf(CellularConnectionRequestResult::Type code)
{
    return resultOf(code, CellularConnectionRequestResult::Requested);
}

// The result of a request that waits for its answer, with the service's error if it failed.
template <typename Ask>
RequestResult resultOfAsking(Ask ask)
{
    const RequestError error;
    RequestResult result = resultOf(ask());
    if (!result.succeeded) {
        result.errorNumber = error.number();
        result.errorString = error.text();
    }
    return result;
}

using MiracastCompleted = void (MiracastManager::*)(MiracastResult::Type);

// A manager for this request alone, so that it receives the answer to no other. Null without Miracast, after
// the request has been finished.
MiracastManager *managerOf(RunningRequest *request, MiracastCompleted completed)
{
    auto *manager = new MiracastManager(request);
    if (!manager->isSupported()) {
        request->finish({false, 0, QStringLiteral("NotSupported")});
        return nullptr;
    }
    QObject::connect(manager, completed, request,
        [request](MiracastResult::Type code) { request->finish(resultOf(code, MiracastResult::Success)); });
    return manager;
}

// The name of the running requests for a connection of a profile.
const QString ConnectingProfile = QStringLiteral("connecting");

QList<RunningRequest *> connectingBeside(const RunningRequest *request)
{
    return request->parent()->findChildren<RunningRequest *>(ConnectingProfile, Qt::FindDirectChildrenOnly);
}

// The object that holds a profile's connection from one request to the next.
CellularDataInterface *profileOf(const RunningRequest *request, const QString &name)
{
    auto *profile = request->parent()->findChild<CellularDataInterface *>({}, Qt::FindDirectChildrenOnly);
    return profile ? profile : new CellularDataInterface(name, request->parent());
}

} // namespace

class DeviceRequests::Private
{
public:
    QFuture<RequestResult> request(const QString &subject, const std::function<void(RunningRequest *)> &begin)
    {
        const auto promise = std::make_shared<RequestPromise>();
        const QMutexLocker locker(&m_mutex);
        if (!m_cancellations)
            m_cancellations.emplace();
        m_cancellations->watch(promise);
        m_threads[subject].run(promise, begin);
        return promise->future();
    }

private:
    QMutex m_mutex;
    // Few threads: one per facility, and one per data profile that was asked for.
    std::map<QString, RequestThread> m_threads;
    std::optional<CancellationThread> m_cancellations;
};

DeviceRequests::DeviceRequests() : d(std::make_unique<Private>()) { }

DeviceRequests::~DeviceRequests() = default;

QFuture<RequestResult> DeviceRequests::connectProfile(const QString &name)
{
    return d->request(u"data-profile/" + name, [name](RunningRequest *request) {
        CellularDataInterface *profile = profileOf(request, name);
        const auto ask = [profile] {
            return resultOfAsking(
                [profile] { return CellularConnectionRequestResult::Type(profile->requestConnect()); });
        };
        const auto release = [profile] { profile->requestDisconnect(); };
        RequestResult result = ask();
        // The object still holds a connection that has ended by itself; release that one and ask again.
        if (result.code == CellularConnectionRequestResult::NotPossible && connectingBeside(request).isEmpty()
            && progressOf(CellularDataInterface(name)) == Connecting::Idle
            && profile->requestDisconnect() != CellularConnectionRequestResult::NotPossible)
            result = ask();
        if (!result.succeeded) {
            request->finish(result);
            return;
        }
        request->setObjectName(ConnectingProfile);
        request->whenCancelled(release);
        // A new object has the state as of now; that of `profile` follows from the event loop.
        awaitConnection(request, new CellularDataInterface(name, request),
            qOverload<CellularConnectionState::Type>(&CellularDataInterface::connectionStateChanged),
            [release](bool) { release(); });
    });
}

QFuture<RequestResult> DeviceRequests::disconnectProfile(const QString &name)
{
    return d->request(u"data-profile/" + name, [name](RunningRequest *request) {
        CellularDataInterface *profile = profileOf(request, name);
        request->finish(resultOfAsking(
            [profile] { return CellularConnectionRequestResult::Type(profile->requestDisconnect()); }));
        // The profile may stay connected for another client, so its state may never end the pending requests.
        for (RunningRequest *connecting : connectingBeside(request))
            connecting->finish(ConnectionFailed);
    });
}

QFuture<RequestResult> DeviceRequests::scanPeers()
{
    return d->request(QStringLiteral("wifi-direct"), [](RunningRequest *request) {
        request->finish(resultOfAsking([] { return WiFiDirectResult::Type(WiFiDirect().requestScan()); }));
    });
}

QFuture<RequestResult> DeviceRequests::connectPeer(const QString &hardwareAddress,
    WiFiDirectIntent::Type intent, WiFiDirectWpsMethod::Type wpsMethod, const QString &wpsPin)
{
    return d->request(QStringLiteral("wifi-direct"), [=](RunningRequest *request) {
        const RequestResult result = resultOfAsking(
            [&] { return WiFiDirect().requestConnect(hardwareAddress, intent, wpsMethod, wpsPin); });
        if (!result.succeeded) {
            request->finish(result);
            return;
        }
        const auto giveUp = [] { WiFiDirect().cancelConnectRequest(); };
        request->whenCancelled(giveUp);
        awaitConnection(request, new WiFiDirect(request),
            qOverload<WiFiDirectConnectionState::Type>(&WiFiDirect::connectionStateChanged),
            [giveUp](bool wasPending) {
                if (!wasPending)
                    giveUp();
            });
    });
}

QFuture<RequestResult> DeviceRequests::cancelPeer()
{
    return d->request(QStringLiteral("wifi-direct"), [](RunningRequest *request) {
        request->finish(
            resultOfAsking([] { return WiFiDirectResult::Type(WiFiDirect().cancelConnectRequest()); }));
    });
}

QFuture<RequestResult> DeviceRequests::startPeerSession()
{
    return d->request(QStringLiteral("wifi-direct"), [](RunningRequest *request) {
        // The object outlives a cancelled request, to close its session as soon as that is open.
        auto *wifi = new WiFiDirect(request->parent());
        QObject::connect(
            wifi, &WiFiDirect::sessionStarted, wifi, [wifi, request = QPointer(request)](const QString &key) {
                const auto close = [wifi, key] { wifi->requestStopSession(key); };
                if (!request) {
                    close();
                    return wifi->deleteLater();
                }
                wifi->setParent(request);
                request->whenCancelled(close);
                request->finish({true, WiFiDirectResult::Success, {}, key});
            });
        const RequestResult result =
            resultOfAsking([wifi] { return WiFiDirectResult::Type(wifi->requestStartSession()); });
        if (!result.succeeded) {
            request->finish(result);
            wifi->deleteLater();
        }
    });
}

QFuture<RequestResult> DeviceRequests::stopPeerSession(const QString &key)
{
    return d->request(QStringLiteral("wifi-direct"), [key](RunningRequest *request) {
        request->finish(
            resultOfAsking([&] { return WiFiDirectResult::Type(WiFiDirect().requestStopSession(key)); }));
    });
}

QFuture<RequestResult> DeviceRequests::peerIpAddress(const QString &hardwareAddress)
{
    return d->request(QStringLiteral("wifi-direct"), [hardwareAddress](RunningRequest *request) {
        QString address;
        RequestResult result = resultOfAsking([&] {
            address = WiFiDirect().ipAddress(hardwareAddress);
            return address.isEmpty() ? WiFiDirectResult::DeviceNotFound : WiFiDirectResult::Success;
        });
        result.value = address;
        request->finish(result);
    });
}

QFuture<RequestResult> DeviceRequests::scanSinks()
{
    return d->request(QStringLiteral("miracast"), [](RunningRequest *request) {
        if (auto *manager = managerOf(request, &MiracastManager::scanCompleted))
            manager->requestScan();
    });
}

QFuture<RequestResult> DeviceRequests::pauseSink()
{
    return d->request(QStringLiteral("miracast"), [](RunningRequest *request) {
        if (auto *manager = managerOf(request, &MiracastManager::pauseCompleted)) {
            manager->requestPause();
            request->whenCancelled([manager] { manager->requestResume(); });
        }
    });
}

QFuture<RequestResult> DeviceRequests::resumeSink()
{
    return d->request(QStringLiteral("miracast"), [](RunningRequest *request) {
        if (auto *manager = managerOf(request, &MiracastManager::resumeCompleted)) {
            manager->requestResume();
            request->whenCancelled([manager] { manager->requestPause(); });
        }
    });
}

QFuture<RequestResult> DeviceRequests::shutDownMiracast()
{
    return d->request(QStringLiteral("miracast"), [](RunningRequest *request) {
        if (auto *manager = managerOf(request, &MiracastManager::shutdownCompleted))
            manager->requestShutdown();
    });
}

QFuture<RequestResult> DeviceRequests::connectSink(const QString &hardwareAddress, const QString &pin)
{
    return d->request(QStringLiteral("miracast"), [=](RunningRequest *request) {
        if (auto *manager = managerOf(request, &MiracastManager::connectCompleted)) {
            manager->requestConnect(hardwareAddress, pin);
            request->whenCancelled([manager] { manager->requestDisconnect(); });
        }
    });
}

QFuture<RequestResult> DeviceRequests::disconnectSink()
{
    return d->request(QStringLiteral("miracast"), [](RunningRequest *request) {
        if (auto *manager = managerOf(request, &MiracastManager::disconnectCompleted))
            manager->requestDisconnect();
    });
}

QFuture<RequestResult> DeviceRequests::flash(LedColor::Type color, int count)
{
    if (LedColor::toName(color).isNull()) {
        const QString found = color == LedColor::None
            ? QStringLiteral("None")
            : QStringLiteral("0x%1").arg(uint(color), 6, 16, QChar(u'0'));
        return refuse({FlashCall, "color", FlashColor, found});
    }
    return d->request(QStringLiteral("led"), [=](RunningRequest *request) {
        auto *led = new Led(color, request); // the LED goes out with the request
        led->flash(count);
        if (!led->isActive()) {
            request->finish(Done);
            return;
        }
        const auto ended = [request](bool active) {
            if (!active)
                request->finish(Done);
        };
        // Queued, because the LED is locked while it emits.
        QObject::connect(led, &Led::activeChanged, request, ended, Qt::QueuedConnection);
    });
}

QFuture<RequestResult> DeviceRequests::vibrate(uint milliseconds)
{
    return d->request(QStringLiteral("vibration"), [=](RunningRequest *request) {
        auto *vibrator = new VibrationController(request);
        if (!vibrator->isSupported()) {
            request->finish({false, 0, QStringLiteral("NotSupported")});
            return;
        }
        vibrator->start(100, milliseconds);
        request->whenCancelled([vibrator] { vibrator->stop(); });
        if (milliseconds < uint(std::numeric_limits<int>::max()))
            QTimer::singleShot(int(milliseconds), request, [request] { request->finish(Done); });
    });
}

} // namespace oz::models
