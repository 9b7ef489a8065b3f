#include "MiracastManagerPrivate.hpp"

#include "Frame.hpp"
#include "WpsDeviceType.hpp"

#include <oz/PpsObject.hpp>

#include <QDateTime>

namespace oz::device {

namespace {

using Result = MiracastResult;
using Category = MiracastDeviceCategory;
using SubCategory = MiracastDeviceSubCategory;
using StopReason = MiracastStopReason;
using State = MiracastManagerPrivate::State;

const QString StatusPpsPath = QStringLiteral("/pps/services/miracast/status?delta");
const QString SinksPpsPath = QStringLiteral("/pps/services/miracast/sinks");
const QString ControlPpsPath = QStringLiteral("/pps/services/miracast/control");
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
constexpr LogText ControlOpenFailed{
    "MiracastManager::sendCommand - Unable to connect to Miracast service. (", LogText::ErrorStringJoined};

constexpr NamedValue<MiracastConnectionState::Type> ConnectionStateNames[] = {
    {"CONNECTED", MiracastConnectionState::Connected},
    {"CONNECTING", MiracastConnectionState::Connecting},
    {"DISCONNECTED", MiracastConnectionState::Disconnected},
};
constexpr NamedValue<MiracastDisplayState::Type> DisplayStateNames[] = {
    {"PLAYING", MiracastDisplayState::Playing},
    {"PAUSED", MiracastDisplayState::Paused},
    {"STOPPED", MiracastDisplayState::Stopped},
};
constexpr NamedValue<MiracastStatus::Type> StatusNames[] = {
    {"RUNNING", MiracastStatus::Running},
    {"STOPPED", MiracastStatus::Stopped},
};

// The sub-categories of each category, which count from 1.
constexpr struct
{
    int category;
    SubCategory::Type first;
    SubCategory::Type last;
} SubCategories[] = {
    {1, SubCategory::PC, SubCategory::Tablet},
    {2, SubCategory::Keyboard, SubCategory::BarcodeReader},
    {3, SubCategory::PrinterOrPrintServer, SubCategory::AllInOne},
    {4, SubCategory::DigitalStillCamera, SubCategory::SecurityCamera},
    {5, SubCategory::NAS, SubCategory::NAS},
    {6, SubCategory::AP, SubCategory::Gateway},
    {7, SubCategory::Television, SubCategory::Monitor},
    {8, SubCategory::DAR, SubCategory::PortableVideoPlayer},
    {9, SubCategory::XBox, SubCategory::PortableGamingDevice},
    {10, SubCategory::WindowsMobile, SubCategory::SmartphoneDualMode},
    {11, SubCategory::AudioTunerReceiver, SubCategory::Microphone},
};

// By the service's codes, from 0.
constexpr StopReason::Type StopReasons[] = {StopReason::NotStopped, StopReason::Internal,
    StopReason::Application, StopReason::Internal, StopReason::NotSupported, StopReason::ItPolicy,
    StopReason::P2PFailure, StopReason::P2PFailure, StopReason::P2PFailure, StopReason::P2PFailure};

// The service's error codes, and the warning with its code where there is one.
struct Outcome
{
    int code;
    Result::Type result;
    const char *warning = nullptr;
};

constexpr const char *ConnectionCode = "MiracastManager:  Connection Code (";
constexpr Outcome Outcomes[] = {
    {0, Result::Success},
    {-1000, Result::PinRequired},
    {-1001, Result::PinIncorrect},
    {-1002, Result::ConnectionFailed, ConnectionCode},
    {-1003, Result::ConnectionFailed, ConnectionCode},
    {-1004, Result::ConnectionFailed, ConnectionCode},
    {-1005, Result::InvalidRequest},
    {-1007, Result::RequestCancelled},
    {-1008, Result::WiFiFailure},
    {-1009, Result::DeviceNotFound},
    {-1010, Result::MiracastFailure},
    {-1012, Result::DisabledByPolicy},
};
constexpr Outcome OtherOutcome{0, Result::InternalError, "MiracastManager:  Error Code ("};

struct Sink
{
    QString name;
    QString address;
    Category::Type category = Category::Unknown;
    SubCategory::Type subCategory = SubCategory::Unknown;
};

// What is announced together, the typed signal first.
using M = MiracastManager;
using TypeFields = Fields<&State::category, &State::subCategory>;
using SinkFields = Fields<&State::deviceName, &State::hardwareAddress, &State::category, &State::subCategory>;

using DeviceName = Change<Fields<&State::deviceName>, &M::deviceNameChanged>;
using HardwareAddress = Change<Fields<&State::hardwareAddress>, &M::hardwareAddressChanged>;
using DeviceType = Change<TypeFields, qOverload<Category::Type, SubCategory::Type>(&M::deviceTypeChanged),
    qOverload<int, int>(&M::deviceTypeChanged)>;
using ConnectionState = Change<Fields<&State::connectionState>,
    qOverload<MiracastConnectionState::Type>(&M::connectionStateChanged),
    qOverload<int>(&M::connectionStateChanged)>;
using Connected =
    Change<SinkFields, qOverload<QString, QString, Category::Type, SubCategory::Type>(&M::deviceConnected),
        qOverload<QString, QString, int, int>(&M::deviceConnected)>;
using DisplayState = Change<Fields<&State::displayState>,
    qOverload<MiracastDisplayState::Type>(&M::displayStateChanged), qOverload<int>(&M::displayStateChanged)>;
using SessionId = Change<Fields<&State::sessionId>, &M::sessionIdChanged>;
using DevicePixelSize = Change<Fields<&State::devicePixelSize>, &M::devicePixelSizeChanged>;
using StopReasonChange = Change<Fields<&State::stopReason>,
    qOverload<StopReason::Type>(&M::stopReasonChanged), qOverload<int>(&M::stopReasonChanged)>;
// The twin of this one is never emitted.
using StatusChange = Change<Fields<&State::status>, qOverload<MiracastStatus::Type>(&M::statusChanged)>;
using Discovered = Change<Fields<&Sink::name, &Sink::address, &Sink::category, &Sink::subCategory>,
    qOverload<QString, QString, Category::Type, SubCategory::Type>(&M::deviceDiscovered),
    qOverload<QString, QString, int, int>(&M::deviceDiscovered)>;

template <auto Typed, auto Number>
using Completed = Change<Fields<&Outcome::result>, Typed, Number>;
using ScanCompleted =
    Completed<qOverload<Result::Type>(&M::scanCompleted), qOverload<int>(&M::scanCompleted)>;
using ConnectCompleted =
    Completed<qOverload<Result::Type>(&M::connectCompleted), qOverload<int>(&M::connectCompleted)>;
using PauseCompleted =
    Completed<qOverload<Result::Type>(&M::pauseCompleted), qOverload<int>(&M::pauseCompleted)>;
using ResumeCompleted =
    Completed<qOverload<Result::Type>(&M::resumeCompleted), qOverload<int>(&M::resumeCompleted)>;
using DisconnectCompleted =
    Completed<qOverload<Result::Type>(&M::disconnectCompleted), qOverload<int>(&M::disconnectCompleted)>;
using ShutdownCompleted =
    Completed<qOverload<Result::Type>(&M::shutdownCompleted), qOverload<int>(&M::shutdownCompleted)>;

Category::Type convertCategoryId(int id)
{
    return wpsCategory<Category>(id);
}

SubCategory::Type convertSubCategoryId(int category, int subCategory)
{
    for (const auto &[number, first, last] : SubCategories) {
        if (number == category && subCategory >= 1 && subCategory <= last - first + 1)
            return SubCategory::Type(first + subCategory - 1);
    }
    return SubCategory::Unknown;
}

StopReason::Type convertStopReasonCode(int code)
{
    return code >= 0 && code < int(std::size(StopReasons)) ? StopReasons[code] : StopReason::Internal;
}

// Warns of codes that say more than the result, or that are not known.
Result::Type convertErrorCode(int code)
{
    const auto *known = std::find_if(std::begin(Outcomes), std::end(Outcomes),
        [code](const Outcome &outcome) { return outcome.code == code; });
    const Outcome &outcome = known == std::end(Outcomes) ? OtherOutcome : *known;
    if (outcome.warning)
        qCWarning(logDevice) << outcome.warning << code << ")";
    return outcome.result;
}

Outcome outcomeIn(const QVariantMap &status)
{
    const int code = status.value(QStringLiteral("last_request_err")).toInt();
    return {code, convertErrorCode(code)};
}

// The category and sub-category of a type text of which both are known; Unknown for both otherwise.
std::pair<Category::Type, SubCategory::Type> convertType(const WpsDeviceType &type)
{
    if (!type.category || !type.subCategory)
        return {Category::Unknown, SubCategory::Unknown};
    return {convertCategoryId(*type.category), convertSubCategoryId(*type.category, *type.subCategory)};
}

template <typename Value>
bool store(Value *field, const Value &value)
{
    const bool changed = *field != value;
    *field = value;
    return changed;
}

QString textIn(const QVariantMap &map, const char *name)
{
    return map.value(QLatin1String(name)).toString();
}

} // namespace

/*! One kind of request: the prefix of its token, and its message, of which %1 is the token. */
struct MiracastManagerPrivate::Request
{
    const char *prefix;
    const char *message;
    bool hasSecret = false; //!< whether %3 is for no log
};

namespace {

using Request = MiracastManagerPrivate::Request;

constexpr Request Scan{"requestscan", "msg::miracast_sink_discover\nid::%1"};
constexpr Request Connect{"requestconnect",
    "msg::miracast_session_start\nid::%1\ndat:json:{\"sink_mac\":\"%2\",\"pin\":\"%3\"}", true};
constexpr Request Pause{"requestpause", "msg::miracast_session_pause\nid::%1"};
constexpr Request Resume{"requestresume", "msg::miracast_session_resume\nid::%1"};
constexpr Request Disconnect{"requestdisconnect", "msg::miracast_session_stop\nid::%1"};
constexpr Request Shutdown{"requestshutdown", "msg::miracast_shutdown\nid::%1"};
constexpr Request Warmup{
    "warmup", "msg::miracast_app_context\nid::%1\ndat:json:{\"name\":\"%2\",\"persistent\":\"%3\"}"};

// The message with its values in their places. What is in a value stays as it is, "%1" too.
QString filled(const char *message, const QStringList &values)
{
    QString text;
    for (const char *next = message; *next; ++next) {
        if (*next == '%')
            text += values.value(*++next - '1');
        else
            text += QLatin1Char(*next);
    }
    return text;
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
    parseStatus(readStatus());
    m_ready = true;
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

void MiracastManagerPrivate::requestScan()
{
    send(Scan);
}

void MiracastManagerPrivate::requestConnect(const QString &hardwareAddress, const QString &pin)
{
    send(Connect, hardwareAddress, pin);
}

void MiracastManagerPrivate::requestPause()
{
    send(Pause);
}

void MiracastManagerPrivate::requestResume()
{
    send(Resume);
}

void MiracastManagerPrivate::requestDisconnect()
{
    send(Disconnect);
}

void MiracastManagerPrivate::requestShutdown()
{
    send(Shutdown);
}

void MiracastManagerPrivate::warmup()
{
    send(Warmup, q->property("miracast_name").toString(),
        QString::number(q->property("miracast_persistent").toInt()));
}

QString MiracastManagerPrivate::getRequestToken(const QString &prefix)
{
    return prefix + QString::number(quint64(QDateTime::currentMSecsSinceEpoch()));
}

void MiracastManagerPrivate::send(const Request &request, const QString &first, const QString &second)
{
    const QString token = getRequestToken(QLatin1String(request.prefix));
    sendCommand(token, filled(request.message, {token, first, second}),
        filled(request.message, {token, first, request.hasSecret ? QStringLiteral("...") : second}));
}

void MiracastManagerPrivate::sendCommand(const QString &token, const QString &message, const QString &logged)
{
    if (!m_ready)
        return;
    PpsObject control(ControlPpsPath);
    if (!openOrLog(&control, PpsOpenMode::Publish, ControlOpenFailed))
        return;
    if (control.write(message.toUtf8())) {
        m_pending.append(token);
    } else {
        qCWarning(logDevice) << QString(
            QLatin1String("MiracastManager::sendCommand - Unable to write message: ") + logged);
    }
    control.close();
}

QVariantMap MiracastManagerPrivate::readStatus()
{
    return attributesOf(PpsObject::decode(m_status->read()), QStringLiteral("@status"));
}

QVariantMap MiracastManagerPrivate::readSinks()
{
    PpsObject sinks(SinksPpsPath);
    if (!openOrLog(&sinks, PpsOpenMode::Subscribe, SinksOpenFailed))
        return {};
    const auto message = readOrLog(&sinks, {SinksUnreadable, SinksUnreadable});
    return message ? attributesOf(*message, QStringLiteral("@sinks")) : QVariantMap();
}

void MiracastManagerPrivate::onStatusReadyRead()
{
    const auto message = readOrLog(m_status, {StatusUndecodable, StatusUndecodable});
    if (!message)
        return;
    const QVariantMap status = attributesOf(*message, QStringLiteral("@status"));
    const QPointer<MiracastManager> alive(q);
    parseStatus(status);
    if (alive && m_pending.removeAll(textIn(status, "last_request_id")) > 0)
        handleResult(status);
}

void MiracastManagerPrivate::parseStatus(const QVariantMap &status)
{
    // What a service has taken back leaves its field as it is.
    const auto ifPresent = [&status](const char *name, const auto &apply) {
        const QVariant value = status.value(QLatin1String(name));
        return value.isValid() && apply(value);
    };
    bool nameChanged = false;
    bool addressChanged = false;
    bool typeChanged = false;
    ifPresent("sink_device", [&](const QVariant &value) {
        const QVariantMap sink = value.toMap();
        nameChanged = setDeviceName(textIn(sink, "name"));
        addressChanged = setHardwareAddress(textIn(sink, "mac"));
        typeChanged = setType(textIn(sink, "type"));
        return true;
    });
    const bool connectionChanged = ifPresent(
        "sink_state", [this](const QVariant &value) { return setConnectionState(value.toString()); });
    const bool displayChanged =
        ifPresent("session", [this](const QVariant &value) { return setDisplayState(value.toString()); });
    const bool sessionChanged =
        ifPresent("session_id", [this](const QVariant &value) { return setSessionId(value.toString()); });
    const bool sizeChanged = ifPresent("sink_resolution", [this](const QVariant &value) {
        bool isHeight = false;
        bool isWidth = false;
        const QVariantMap size = value.toMap();
        const int height = size.value(QStringLiteral("height")).toInt(&isHeight);
        const int width = size.value(QStringLiteral("width")).toInt(&isWidth);
        return isHeight && isWidth ? setDevicePixelSize(width, height) : setDevicePixelSize(0, 0);
    });
    const bool reasonChanged = ifPresent(
        "service_stop_reason", [this](const QVariant &value) { return setStopReason(value.toInt()); });
    const bool statusChanged =
        ifPresent("service_status", [this](const QVariant &value) { return setStatus(value.toString()); });

    const struct
    {
        bool changed;
        void (MiracastManagerPrivate::*notify)();
    } announcements[] = {
        {nameChanged, &MiracastManagerPrivate::notifyDeviceName},
        {addressChanged, &MiracastManagerPrivate::notifyHardwareAddress},
        {typeChanged, &MiracastManagerPrivate::notifyType},
        {connectionChanged, &MiracastManagerPrivate::notifyConnectionState},
        {displayChanged, &MiracastManagerPrivate::notifyDisplayState},
        {sessionChanged, &MiracastManagerPrivate::notifySessionId},
        {sizeChanged, &MiracastManagerPrivate::notifyDevicePixelSize},
        {reasonChanged, &MiracastManagerPrivate::notifyStopReason},
        {statusChanged, &MiracastManagerPrivate::notifyStatus},
    };
    const QPointer<MiracastManager> alive(q);
    for (const auto &[changed, notify] : announcements) {
        if (changed && alive)
            (this->*notify)();
    }
}

bool MiracastManagerPrivate::setDeviceName(const QString &name)
{
    return store(&m_state.deviceName, name);
}

bool MiracastManagerPrivate::setHardwareAddress(const QString &address)
{
    return store(&m_state.hardwareAddress, address);
}

bool MiracastManagerPrivate::setType(const QString &type)
{
    const WpsDeviceType parsed = WpsDeviceType::parse(type);
    const auto [category, subCategory] = convertType(parsed.pieces == 3 ? parsed : WpsDeviceType());
    const bool categoryChanged = store(&m_state.category, category);
    return store(&m_state.subCategory, subCategory) || categoryChanged;
}

bool MiracastManagerPrivate::setConnectionState(const QString &text)
{
    const auto known = valueNamed(ConnectionStateNames, text);
    if (!known) {
        qCWarning(logDevice) << QString(
            QLatin1String("MiracastManager::setConnectionState - Invalid connection state (") + text + u')');
    }
    const MiracastConnectionState::Type before = m_state.connectionState;
    if (!store(&m_state.connectionState, known.value_or(MiracastConnectionState::Unknown)))
        return false;
    m_wasConnected = before == MiracastConnectionState::Connected;
    return true;
}

bool MiracastManagerPrivate::setDisplayState(const QString &text)
{
    const auto known = valueNamed(DisplayStateNames, text);
    if (!known) {
        qCWarning(logDevice) << QString(
            QLatin1String("MiracastManager::setDisplayState - Invalid display state (") + text + u')');
    }
    return store(&m_state.displayState, known.value_or(MiracastDisplayState::Unknown));
}

bool MiracastManagerPrivate::setSessionId(const QString &id)
{
    return store(&m_state.sessionId, id);
}

bool MiracastManagerPrivate::setDevicePixelSize(int width, int height)
{
    return store(&m_state.devicePixelSize, QSize(width, height));
}

bool MiracastManagerPrivate::setStopReason(int code)
{
    return store(&m_state.stopReason, convertStopReasonCode(code));
}

bool MiracastManagerPrivate::setStatus(const QString &status)
{
    return store(&m_state.status, valueNamed(StatusNames, status).value_or(MiracastStatus::Unknown));
}

void MiracastManagerPrivate::notifyDeviceName()
{
    DeviceName::emitOn<MiracastManager>(q, m_state);
}

void MiracastManagerPrivate::notifyHardwareAddress()
{
    HardwareAddress::emitOn<MiracastManager>(q, m_state);
}

void MiracastManagerPrivate::notifyType()
{
    DeviceType::emitOn<MiracastManager>(q, m_state);
}

void MiracastManagerPrivate::notifyConnectionState()
{
    const QPointer<MiracastManager> alive(q);
    ConnectionState::emitOn(alive, m_state);
    if (!alive)
        return;
    if (m_state.connectionState == MiracastConnectionState::Connected) {
        Connected::emitOn(alive, m_state);
    } else if (m_state.connectionState == MiracastConnectionState::Disconnected && m_wasConnected) {
        m_wasConnected = false;
        Q_EMIT q->deviceDisconnected();
    }
}

void MiracastManagerPrivate::notifyDisplayState()
{
    DisplayState::emitOn<MiracastManager>(q, m_state);
}

void MiracastManagerPrivate::notifySessionId()
{
    SessionId::emitOn<MiracastManager>(q, m_state);
}

void MiracastManagerPrivate::notifyDevicePixelSize()
{
    DevicePixelSize::emitOn<MiracastManager>(q, m_state);
}

void MiracastManagerPrivate::notifyStopReason()
{
    StopReasonChange::emitOn<MiracastManager>(q, m_state);
}

void MiracastManagerPrivate::notifyStatus()
{
    StatusChange::emitOn<MiracastManager>(q, m_state);
}

void MiracastManagerPrivate::handleResult(const QVariantMap &status)
{
    static constexpr struct
    {
        const char *request;
        void (MiracastManagerPrivate::*handle)(const QVariantMap &);
    } handlers[] = {
        {"miracast_sink_discover", &MiracastManagerPrivate::handleScanResult},
        {"miracast_session_start", &MiracastManagerPrivate::handleConnectResult},
        {"miracast_session_stop", &MiracastManagerPrivate::handleDisconnectResult},
        {"miracast_session_pause", &MiracastManagerPrivate::handlePauseResult},
        {"miracast_session_resume", &MiracastManagerPrivate::handleResumeResult},
        {"miracast_shutdown", &MiracastManagerPrivate::handleShutdownResult},
    };
    const QString request = textIn(status, "last_request");
    for (const auto &[name, handle] : handlers) {
        if (request == QLatin1String(name))
            return (this->*handle)(status);
    }
}

void MiracastManagerPrivate::handleScanResult(const QVariantMap &status)
{
    const QPointer<MiracastManager> alive(q);
    const Outcome outcome = outcomeIn(status);
    if (outcome.result == Result::Success) {
        const QVariantMap sinks = readSinks();
        for (const QVariant &entry : sinks) {
            const QVariantMap map = entry.toMap();
            const auto [category, subCategory] = convertType(WpsDeviceType::parse(textIn(map, "type")));
            Discovered::emitOn(alive, Sink{textIn(map, "name"), textIn(map, "mac"), category, subCategory});
        }
    }
    ScanCompleted::emitOn(alive, outcome);
}

void MiracastManagerPrivate::handleConnectResult(const QVariantMap &status)
{
    ConnectCompleted::emitOn<MiracastManager>(q, outcomeIn(status));
}

void MiracastManagerPrivate::handleDisconnectResult(const QVariantMap &status)
{
    DisconnectCompleted::emitOn<MiracastManager>(q, outcomeIn(status));
}

void MiracastManagerPrivate::handlePauseResult(const QVariantMap &status)
{
    PauseCompleted::emitOn<MiracastManager>(q, outcomeIn(status));
}

void MiracastManagerPrivate::handleResumeResult(const QVariantMap &status)
{
    ResumeCompleted::emitOn<MiracastManager>(q, outcomeIn(status));
}

void MiracastManagerPrivate::handleShutdownResult(const QVariantMap &status)
{
    ShutdownCompleted::emitOn<MiracastManager>(q, outcomeIn(status));
}

} // namespace oz::device
