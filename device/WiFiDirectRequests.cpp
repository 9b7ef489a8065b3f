#include "WiFiDirectRequests.hpp"

#include "ControlErrors.hpp"
#include "ControlExchange.hpp"
#include "WiFiDirectWords.hpp"

#include <oz/PpsObject.hpp>

#include <span>

namespace oz::device::WiFiDirectRequests {

namespace {

using namespace WiFiDirectWords;
using Result = WiFiDirectResult;

const QString StatusPpsPath = QStringLiteral("/pps/services/wifi_p2p/manager/status");
const QString ControlPpsPath = QStringLiteral("/pps/services/wifi_p2p/manager/control?wait");
const QString WIFIDIRECT_PPSID = QStringLiteral("oz.device.WiFiDirect");

constexpr LogText SupportOpenFailed{"WiFiDirect: Unable to locate WiFiDirect PPS channel."};
constexpr ReadTexts SupportReading{{"WiFiDirect: Unable to read WiFiDirect PPS channel."},
    {"WiFiDirect: Unable to parse WiFiDirect status."}};

constexpr LogText ControlOpenFailed{"WiFiDirect: Unable to open control. (", LogText::ErrorStringInBrackets};
constexpr LogText ControlWriteFailed{
    "WiFiDirect: Unable to write to control. (", LogText::ErrorStringInBrackets};
constexpr LogText ControlReadFailed{"WiFiDirect: Unable to read control. (", LogText::ErrorStringInBrackets};
constexpr ControlTexts PlainTexts{
    .openFailed = ControlOpenFailed,
    .encodeFailed = {"WiFiDirect: Unable to encode message to control."},
    .writeFailed = ControlWriteFailed,
    .answer = {ControlReadFailed, {"WiFiDirect: Unable to decode control result."}},
};
constexpr ControlTexts BlockingTexts{
    .openFailed = ControlOpenFailed,
    .encodeFailed = {"WiFiDirect: Unable to encode message for control."},
    .writeFailed = ControlWriteFailed,
    .answer = {ControlReadFailed,
        {"WiFiDirect: Unable to decode control result. (", LogText::ErrorStringInBrackets}},
};

// The meaning of a manager's error to one request: its result, and a warning where there is one.
struct Refusal
{
    ManagerError error;
    Result::Type result;
    const char *warning = nullptr;
    bool tellsError = false; // behind the warning, with a closing bracket
};

constexpr Refusal ConnectRefusals[] = {
    {Busy, Result::Busy},
    {NoDevice, Result::DeviceNotFound},
    {Invalid, Result::InternalError, "WiFiDirect: Service reports unable to parse message."},
};
constexpr Refusal CancelRefusals[] = {
    {Invalid, Result::NoRequestToCancel},
};
constexpr Refusal StartSessionRefusals[] = {
    {NoNetwork, Result::NoNetworkConnection},
};
constexpr Refusal StopSessionRefusals[] = {
    {Invalid, Result::InvalidSession},
    {NoNetwork, Result::NoNetworkConnection},
};
constexpr Refusal IpAddressRefusals[] = {
    {Busy, Result::InternalError, "WiFiDirect: Control was busy. (", true},
    {NoDevice, Result::InternalError, "WiFiDirect: Device not found. (", true},
    {Invalid, Result::InternalError, "WiFiDirect: Internal error reported from control. (", true},
    // The doubled word is how the warning is known.
    {NoNetwork, Result::InternalError, "WiFiDirect: Device not not connected to network. (", true},
};

// One kind of request: its name, how it is exchanged, and what the manager's refusals mean to it.
struct Command
{
    enum Exchange { Plain, Blocking };

    const char *name;
    Exchange exchange;
    std::span<const Refusal> refusals;
};

constexpr Command Scan{"wifi_p2p_scan_and_listen", Command::Plain, ConnectRefusals};
constexpr Command Connect{"wifi_p2p_connect", Command::Blocking, ConnectRefusals};
constexpr Command CancelConnect{"wifi_p2p_cancel_connect", Command::Blocking, CancelRefusals};
constexpr Command StartSession{"wifi_p2p_start_session", Command::Plain, StartSessionRefusals};
constexpr Command StopSession{"wifi_p2p_stop_session", Command::Plain, StopSessionRefusals};
constexpr Command GetIpAddress{"wifi_p2p_get_ip_address", Command::Blocking, IpAddressRefusals};

Result::Type resultOf(int error, std::span<const Refusal> refusals)
{
    for (const Refusal &refusal : refusals) {
        if (refusal.error != error)
            continue;
        if (refusal.tellsError)
            qCWarning(logDevice) << refusal.warning << error << ")";
        else if (refusal.warning)
            qCWarning(logDevice) << refusal.warning;
        return refusal.result;
    }
    qCWarning(logDevice) << "WiFiDirect: Unknown error condition. (" << error << ")";
    return Result::InternalError;
}

// Sends command with argument, and gives what was answered to it.
Result::Type request(
    const Command &command, const QVariantMap &argument = {}, QVariantMap *answered = nullptr)
{
    if (!isSupported())
        return Result::NotSupported;
    QVariantMap message{
        {QStringLiteral("msg"), QLatin1String(command.name)}, {QStringLiteral("id"), WIFIDIRECT_PPSID}};
    if (!argument.isEmpty())
        message.insert(QStringLiteral("dat"), argument);
    const bool isBlocking = command.exchange == Command::Blocking;
    const ControlAnswer exchanged =
        exchange({ControlPpsPath, message, isBlocking}, isBlocking ? BlockingTexts : PlainTexts);
    if (exchanged.outcome != ControlAnswer::Answered)
        return Result::InternalError;
    const QVariantMap answer = attributesOf(exchanged.message, QStringLiteral("@control"));
    if (textIn(answer, "res") != QLatin1String(command.name) || textIn(answer, "id") != WIFIDIRECT_PPSID) {
        qCWarning(logDevice) << "WiFiDirect: Malformed response from control.";
        ControlErrors::noteMalformed();
        return Result::InternalError;
    }
    if (const int error = answer.value(QStringLiteral("err")).toInt())
        return resultOf(error, command.refusals);
    if (answered)
        *answered = answer.value(QStringLiteral("dat")).toMap();
    return Result::Success;
}

} // namespace

bool isSupported()
{
    constexpr int NotSupported = 2;
    PpsObject status(StatusPpsPath);
    if (!openOrLog(&status, PpsOpenMode::Subscribe, SupportOpenFailed))
        return false;
    const auto message = readOrLog(&status, SupportReading);
    return message
        && attributesOf(*message, QStringLiteral("@status")).value(QStringLiteral("p2p_mgr_enabled")).toInt()
        != NotSupported;
}

WiFiDirectResult::Type scan()
{
    return request(Scan);
}

WiFiDirectResult::Type startSession(QString *session)
{
    QVariantMap answered;
    const Result::Type result = request(StartSession, {}, &answered);
    *session = textIn(answered, "session_key");
    return result;
}

WiFiDirectResult::Type stopSession(const QString &session)
{
    return request(StopSession, {{QStringLiteral("session_key"), session}});
}

WiFiDirectResult::Type connectTo(
    const QString &hardwareAddress, int intent, int wpsMethod, const QString &wpsPin)
{
    // A value that is no enumerator has no word or number for the manager, and is left out.
    QVariantMap argument{{QStringLiteral("addr"), hardwareAddress},
        {QStringLiteral("wps_pin"), wpsPin.isEmpty() ? QStringLiteral("NULL") : wpsPin}};
    for (const auto &[name, value] : Intents) {
        if (value == intent)
            argument.insert(QStringLiteral("go_intent"), QLatin1String(name));
    }
    for (const auto &[method, number] : WpsMethods) {
        if (method == wpsMethod)
            argument.insert(QStringLiteral("wps_method"), number);
    }
    return request(Connect, argument);
}

WiFiDirectResult::Type cancelConnect()
{
    return request(CancelConnect);
}

QString ipAddress(const QString &hardwareAddress)
{
    QVariantMap answered;
    if (request(GetIpAddress, {{QStringLiteral("addr"), hardwareAddress}}, &answered) != Result::Success)
        return {};
    return textIn(answered, "ip_address");
}

} // namespace oz::device::WiFiDirectRequests
