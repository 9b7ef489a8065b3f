#include <oz/models/DeviceRequests.hpp>

#include "RequestThread.hpp"

#include <oz/device/CellularConnectionRequestResult.hpp>
#include <oz/device/CellularDataInterface.hpp>
#include <oz/device/Led.hpp>
#include <oz/device/MiracastManager.hpp>
#include <oz/device/VibrationController.hpp>
#include <oz/device/WiFiDirect.hpp>

#include <QMetaEnum>
#include <QMutex>
#include <QPointer>
#include <QTimer>

#include <limits>
#include <map>

namespace oz::models {

using namespace device;

namespace {

// The result of a class, whose reason is its enumerator's name.
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

void finishAsWiFi(RunningRequest *request, int code)
{
    request->finish(resultOf(WiFiDirectResult::Type(code)));
}

using MiracastCompleted = void (MiracastManager::*)(MiracastResult::Type);

// A manager of the request's own, which hears the answer to no other request; nothing where there is no
// Miracast.
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

// The object that holds the connection from one request to the next.
CellularDataInterface *profileOf(RunningRequest *request, const QString &name)
{
    auto *profile = request->parent()->findChild<CellularDataInterface *>();
    return profile ? profile : new CellularDataInterface(name, request->parent());
}

const RequestResult Done{true, 0, QString()};

} // namespace

class DeviceRequests::Private
{
public:
    // Threads are never many: one a facility, and one a data profile that was asked for.
    RequestThread &thread(const QString &subject)
    {
        const QMutexLocker locker(&m_mutex);
        return m_threads[subject];
    }

private:
    QMutex m_mutex;
    std::map<QString, RequestThread> m_threads;
};

DeviceRequests::DeviceRequests() : d(std::make_unique<Private>()) { }

DeviceRequests::~DeviceRequests() = default;

QFuture<RequestResult> DeviceRequests::connectProfile(const QString &name)
{
    return d->thread(u"data-profile/" + name).request([name](RunningRequest *request) {
        CellularDataInterface *profile = profileOf(request, name);
        const int code = profile->requestConnect();
        if (request->isCancelled() && code == CellularConnectionRequestResult::Requested)
            profile->requestDisconnect();
        request->finish(resultOf(CellularConnectionRequestResult::Type(code)));
    });
}

QFuture<RequestResult> DeviceRequests::disconnectProfile(const QString &name)
{
    return d->thread(u"data-profile/" + name).request([name](RunningRequest *request) {
        const int code = profileOf(request, name)->requestDisconnect();
        request->finish(resultOf(CellularConnectionRequestResult::Type(code)));
    });
}

QFuture<RequestResult> DeviceRequests::scanPeers()
{
    return d->thread(QStringLiteral("wifi-direct")).request([](RunningRequest *request) {
        finishAsWiFi(request, WiFiDirect().requestScan());
    });
}

QFuture<RequestResult> DeviceRequests::connectPeer(const QString &hardwareAddress,
    WiFiDirectIntent::Type intent, WiFiDirectWpsMethod::Type wpsMethod, const QString &wpsPin)
{
    return d->thread(QStringLiteral("wifi-direct")).request([=](RunningRequest *request) {
        WiFiDirect wifi;
        const WiFiDirectResult::Type code = wifi.requestConnect(hardwareAddress, intent, wpsMethod, wpsPin);
        if (request->isCancelled() && code == WiFiDirectResult::Success)
            wifi.cancelConnectRequest();
        finishAsWiFi(request, code);
    });
}

QFuture<RequestResult> DeviceRequests::cancelPeer()
{
    return d->thread(QStringLiteral("wifi-direct")).request([](RunningRequest *request) {
        finishAsWiFi(request, WiFiDirect().cancelConnectRequest());
    });
}

QFuture<RequestResult> DeviceRequests::startPeerSession()
{
    return d->thread(QStringLiteral("wifi-direct")).request([](RunningRequest *request) {
        // It outlives a request that is cancelled, whose session it closes when that is there.
        auto *wifi = new WiFiDirect(request->parent());
        QObject::connect(
            wifi, &WiFiDirect::sessionStarted, wifi, [wifi, request = QPointer(request)](const QString &key) {
                if (request && !request->isCancelled())
                    request->finish({true, WiFiDirectResult::Success, {}, key});
                else
                    wifi->requestStopSession(key);
                wifi->deleteLater();
            });
        if (const int code = wifi->requestStartSession(); code != WiFiDirectResult::Success) {
            finishAsWiFi(request, code);
            wifi->deleteLater();
        }
    });
}

QFuture<RequestResult> DeviceRequests::stopPeerSession(const QString &key)
{
    return d->thread(QStringLiteral("wifi-direct")).request([key](RunningRequest *request) {
        finishAsWiFi(request, WiFiDirect().requestStopSession(key));
    });
}

QFuture<RequestResult> DeviceRequests::peerIpAddress(const QString &hardwareAddress)
{
    return d->thread(QStringLiteral("wifi-direct")).request([hardwareAddress](RunningRequest *request) {
        const QString address = WiFiDirect().ipAddress(hardwareAddress);
        RequestResult result =
            resultOf(address.isEmpty() ? WiFiDirectResult::DeviceNotFound : WiFiDirectResult::Success);
        result.value = address;
        request->finish(result);
    });
}

QFuture<RequestResult> DeviceRequests::scanSinks()
{
    return d->thread(QStringLiteral("miracast")).request([](RunningRequest *request) {
        if (auto *manager = managerOf(request, &MiracastManager::scanCompleted))
            manager->requestScan();
    });
}

QFuture<RequestResult> DeviceRequests::pauseSink()
{
    return d->thread(QStringLiteral("miracast")).request([](RunningRequest *request) {
        if (auto *manager = managerOf(request, &MiracastManager::pauseCompleted)) {
            request->whenCancelled([manager] { manager->requestResume(); });
            manager->requestPause();
        }
    });
}

QFuture<RequestResult> DeviceRequests::resumeSink()
{
    return d->thread(QStringLiteral("miracast")).request([](RunningRequest *request) {
        if (auto *manager = managerOf(request, &MiracastManager::resumeCompleted)) {
            request->whenCancelled([manager] { manager->requestPause(); });
            manager->requestResume();
        }
    });
}

QFuture<RequestResult> DeviceRequests::shutDownMiracast()
{
    return d->thread(QStringLiteral("miracast")).request([](RunningRequest *request) {
        if (auto *manager = managerOf(request, &MiracastManager::shutdownCompleted))
            manager->requestShutdown();
    });
}

QFuture<RequestResult> DeviceRequests::connectSink(const QString &hardwareAddress, const QString &pin)
{
    return d->thread(QStringLiteral("miracast")).request([=](RunningRequest *request) {
        if (auto *manager = managerOf(request, &MiracastManager::connectCompleted)) {
            request->whenCancelled([manager] { manager->requestDisconnect(); });
            manager->requestConnect(hardwareAddress, pin);
        }
    });
}

QFuture<RequestResult> DeviceRequests::disconnectSink()
{
    return d->thread(QStringLiteral("miracast")).request([](RunningRequest *request) {
        if (auto *manager = managerOf(request, &MiracastManager::disconnectCompleted))
            manager->requestDisconnect();
    });
}

QFuture<RequestResult> DeviceRequests::flash(LedColor::Type color, int count)
{
    return d->thread(QStringLiteral("led")).request([=](RunningRequest *request) {
        auto *led = new Led(color, request); // goes out with the request
        led->flash(count);
        if (!led->isActive()) {
            request->finish(Done);
            return;
        }
        const auto ended = [request](bool active) {
            if (!active)
                request->finish(Done);
        };
        // The LED is locked while it tells.
        QObject::connect(led, &Led::activeChanged, request, ended, Qt::QueuedConnection);
    });
}

QFuture<RequestResult> DeviceRequests::vibrate(uint milliseconds)
{
    return d->thread(QStringLiteral("vibration")).request([=](RunningRequest *request) {
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
