#include "MiracastManagerPrivate.hpp"

#include "MiracastWords.hpp"
#include "NamedValue.hpp"
#include "PpsReading.hpp"
#include "WpsDeviceType.hpp"

#include <oz/PpsObject.hpp>

namespace oz::device {

namespace {

using Category = MiracastDeviceCategory;
using SubCategory = MiracastDeviceSubCategory;
using Connection = MiracastConnectionState;
using State = MiracastManagerPrivate::State;
using M = MiracastManager;

const QString StatusPpsPath = QStringLiteral("/pps/services/miracast/status?delta");
const QString SinksPpsPath = QStringLiteral("/pps/services/miracast/sinks");
const QString InventoryPpsPath = QStringLiteral("/pps/services/hw_info/inventory");

constexpr LogText InventoryOpenFailed{"MiracastManager: Unable to open hw_info"};
constexpr ReadTexts InventoryReading{{"MiracastManager: Unable to read hw_info inventory"},
    {"MiracastManager: Unable to decode hw_info inventory"}};
constexpr LogText StatusOpenFailed{
    "MiracastManager::MiracastManager - Unable to open Miracast status channel. (",
    LogText::ErrorStringJoined};
constexpr LogText StatusUndecodable{"MiracastManager::onStatusReadyRead - Unable to decode status message."};
constexpr LogText SinksOpenFailed{"MiracastManager::readSinks - Unable to open sinks channel."};
constexpr LogText SinksUnreadable{"MiracastManager::readSinks - Unable to parse sinks channel."};

bool isConnected(const State &state)
{
    return state.connectionState == Connection::Connected;
}

// Straight: not by way of another state.
bool isDisconnected(const State &state)
{
    return state.connectionState == Connection::Disconnected && state.wasConnected;
}

using ConnectionField = Fields<&State::connectionState>;
using SinkFields = Fields<&State::deviceName, &State::hardwareAddress, &State::category, &State::subCategory>;

using Changes = ChangeTable<Change<Fields<&State::deviceName>, &M::deviceNameChanged>,
    Change<Fields<&State::hardwareAddress>, &M::hardwareAddressChanged>,
    Change<Fields<&State::category, &State::subCategory>,
        qOverload<Category::Type, SubCategory::Type>(&M::deviceTypeChanged),
        qOverload<int, int>(&M::deviceTypeChanged)>,
    Change<ConnectionField, qOverload<Connection::Type>(&M::connectionStateChanged),
        qOverload<int>(&M::connectionStateChanged)>,
    ConditionalChange<ConnectionField, isConnected, SinkFields,
        qOverload<QString, QString, Category::Type, SubCategory::Type>(&M::deviceConnected),
        qOverload<QString, QString, int, int>(&M::deviceConnected)>,
    ConditionalChange<ConnectionField, isDisconnected, Fields<>, &M::deviceDisconnected>,
    Change<Fields<&State::displayState>, qOverload<MiracastDisplayState::Type>(&M::displayStateChanged),
        qOverload<int>(&M::displayStateChanged)>,
    Change<Fields<&State::sessionId>, &M::sessionIdChanged>,
    Change<Fields<&State::devicePixelSize>, &M::devicePixelSizeChanged>,
    Change<Fields<&State::stopReason>, qOverload<MiracastStopReason::Type>(&M::stopReasonChanged),
        qOverload<int>(&M::stopReasonChanged)>,
    // The twin of this one is never emitted.
    Change<Fields<&State::status>, qOverload<MiracastStatus::Type>(&M::statusChanged)>>;

struct Sink : MiracastSinkType
{
    QString name;
    QString address;
};
using Discovered = Change<Fields<&Sink::name, &Sink::address, &Sink::category, &Sink::subCategory>,
    qOverload<QString, QString, Category::Type, SubCategory::Type>(&M::deviceDiscovered),
    qOverload<QString, QString, int, int>(&M::deviceDiscovered)>;

struct Answer
{
    MiracastResult::Type result;
};
template <auto Typed, auto Number>
constexpr auto Completed = &Change<Fields<&Answer::result>, Typed, Number>::template emitOn<M, Answer>;

using Result = MiracastResult::Type;
const QString ScanRequest = QStringLiteral("miracast_sink_discover");

// The signal that completes each request, by the name that the service echoes.
constexpr NamedValue<void (*)(const QPointer<M> &, const Answer &)> Completions[] = {
    {"miracast_sink_discover",
        Completed<qOverload<Result>(&M::scanCompleted), qOverload<int>(&M::scanCompleted)>},
    {"miracast_session_start",
        Completed<qOverload<Result>(&M::connectCompleted), qOverload<int>(&M::connectCompleted)>},
    {"miracast_session_stop",
        Completed<qOverload<Result>(&M::disconnectCompleted), qOverload<int>(&M::disconnectCompleted)>},
    {"miracast_session_pause",
        Completed<qOverload<Result>(&M::pauseCompleted), qOverload<int>(&M::pauseCompleted)>},
    {"miracast_session_resume",
        Completed<qOverload<Result>(&M::resumeCompleted), qOverload<int>(&M::resumeCompleted)>},
    {"miracast_shutdown",
        Completed<qOverload<Result>(&M::shutdownCompleted), qOverload<int>(&M::shutdownCompleted)>},
};

QVariantMap statusIn(const QVariantMap &message)
{
    return attributesOf(message, QStringLiteral("@status"));
}

// None if one of them is missing or no number.
QSize sizeIn(const QVariantMap &map)
{
    bool isHeight = false;
    bool isWidth = false;
    const int height = map.value(QStringLiteral("height")).toInt(&isHeight);
    const int width = map.value(QStringLiteral("width")).toInt(&isWidth);
    return isHeight && isWidth ? QSize(width, height) : QSize(0, 0);
}

} // namespace

MiracastManagerPrivate::MiracastManagerPrivate(MiracastManager *publicObject)
    : QObject(publicObject), q(publicObject), m_status(new PpsObject(StatusPpsPath, this))
{
    if (!isSupported())
        return;
    connect(m_status, &PpsObject::readyRead, this, &MiracastManagerPrivate::onStatusReadyRead);
    if (!openOrLog(m_status, PpsOpenMode::Subscribe, StatusOpenFailed))
        return;
    m_state.begin(parseStatus(statusIn(PpsObject::decode(m_status->read()))));
    m_requests.setReady();
}

bool MiracastManagerPrivate::isSupported()
{
    PpsObject inventory(InventoryPpsPath);
    if (!openOrLog(&inventory, PpsOpenMode::Subscribe, InventoryOpenFailed))
        return false;
    const auto message = readOrLog(&inventory, InventoryReading);
    return message
        && textIn(attributesOf(*message), "Miracast_Supported")
               .compare(QLatin1String("yes"), Qt::CaseInsensitive)
        == 0;
}

void MiracastManagerPrivate::requestConnect(const QString &hardwareAddress, const QString &pin)
{
    m_requests.send(MiracastRequestKind::Connect, hardwareAddress, pin);
}

void MiracastManagerPrivate::warmup()
{
    m_requests.send(MiracastRequestKind::Warmup, q->property("miracast_name").toString(),
        QString::number(q->property("miracast_persistent").toInt()));
}

void MiracastManagerPrivate::onStatusReadyRead()
{
    const auto message = readOrLog(m_status, {StatusUndecodable, StatusUndecodable});
    if (!message)
        return;
    const QVariantMap status = statusIn(*message);
    const QPointer<MiracastManager> alive(q);
    Changes::storeAndEmit(q, &m_state, parseStatus(status));
    if (!alive || !m_requests.takeAnswered(textIn(status, "last_request_id")))
        return;
    const QString request = textIn(status, "last_request");
    const auto complete = valueNamed(Completions, request);
    if (!complete)
        return;
    const Answer answer{convertErrorCode(status.value(QStringLiteral("last_request_err")).toInt())};
    if (request == ScanRequest && answer.result == MiracastResult::Success)
        announceSinks();
    (*complete)(alive, answer);
}

MiracastManagerPrivate::State MiracastManagerPrivate::parseStatus(const QVariantMap &status) const
{
    State state = *m_state;
    // An attribute that the service has taken back leaves its field as it is.
    const auto ifPresent = [&status](const char *name, const auto &apply) {
        if (const QVariant value = status.value(QLatin1String(name)); value.isValid())
            apply(value);
    };
    ifPresent("sink_device", [&state](const QVariant &value) {
        const QVariantMap sink = value.toMap();
        const WpsDeviceType type = WpsDeviceType::parse(textIn(sink, "type"));
        const auto [category, subCategory] = convertType(type.pieces == 3 ? type : WpsDeviceType());
        state.deviceName = textIn(sink, "name");
        state.hardwareAddress = textIn(sink, "mac");
        state.category = category;
        state.subCategory = subCategory;
    });
    ifPresent("sink_state", [&state](const QVariant &value) {
        const Connection::Type before =
            std::exchange(state.connectionState, miracastConnectionState(value.toString()));
        if (before != state.connectionState)
            state.wasConnected = before == Connection::Connected;
    });
    ifPresent("session",
        [&state](const QVariant &value) { state.displayState = miracastDisplayState(value.toString()); });
    ifPresent("session_id", [&state](const QVariant &value) { state.sessionId = value.toString(); });
    ifPresent("sink_resolution",
        [&state](const QVariant &value) { state.devicePixelSize = sizeIn(value.toMap()); });
    ifPresent("service_stop_reason",
        [&state](const QVariant &value) { state.stopReason = convertStopReasonCode(value.toInt()); });
    ifPresent("service_status",
        [&state](const QVariant &value) { state.status = miracastStatus(value.toString()); });
    return state;
}

QVariantMap MiracastManagerPrivate::readSinks()
{
    PpsObject sinks(SinksPpsPath);
    if (!openOrLog(&sinks, PpsOpenMode::Subscribe, SinksOpenFailed))
        return {};
    const auto message = readOrLog(&sinks, {SinksUnreadable, SinksUnreadable});
    return message ? attributesOf(*message, QStringLiteral("@sinks")) : QVariantMap();
}

// A slot may destroy this object.
void MiracastManagerPrivate::announceSinks()
{
    const QPointer<MiracastManager> alive(q);
    const QVariantMap sinks = readSinks();
    for (const QVariant &entry : sinks) {
        const QVariantMap sink = entry.toMap();
        Discovered::emitOn(alive,
            Sink{convertType(WpsDeviceType::parse(textIn(sink, "type"))), textIn(sink, "name"),
                textIn(sink, "mac")});
    }
}

} // namespace oz::device
