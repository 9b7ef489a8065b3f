#include "CellularDataInterfacePrivate.hpp"

#include "ControlExchange.hpp"

#include <oz/PpsObject.hpp>

#include <cerrno>

namespace oz::device {

namespace {

using Result = CellularConnectionRequestResult;
using State = CellularDataInterfacePrivate::State;

const QString CnicePpsDir = QStringLiteral("/pps/services/cds/cnice/");
const QString StatusPpsPath = CnicePpsDir + QStringLiteral("status");

constexpr LogText OpenFailed{
    "CellularDataInterface - failed to open status PPS object: ", LogText::ErrorString};
constexpr ReadTexts Reading{
    {"CellularDataInterface - failed to read status PPS data: ", LogText::ErrorString},
    {"CellularDataInterface - failed to decode status PPS data"}};
// A control object that does not open is told by the result alone.
constexpr ControlTexts Exchange{
    .openFailed = std::nullopt,
    .encodeFailed = {"CellularDataInterface - failed to encode control PPS data"},
    .writeFailed = {"CellularDataInterface - failed to write control PPS data: ", LogText::ErrorString},
    .answer = {{"CellularDataInterface - failed to read control PPS data: ", LogText::ErrorString},
        {"CellularDataInterface - failed to decode control PPS data"}},
};

using Changes = ChangeTable<Change<Fields<&State::valid>, &CellularDataInterface::validChanged>,
    Change<Fields<&State::alwaysOn>, &CellularDataInterface::alwaysOnChanged>,
    Change<Fields<&State::accessControlled>, &CellularDataInterface::accessControlledChanged>,
    Change<Fields<&State::connectionState>,
        qOverload<CellularConnectionState::Type>(&CellularDataInterface::connectionStateChanged),
        qOverload<int>(&CellularDataInterface::connectionStateChanged)>,
    Change<Fields<&State::networkInterfaceName>, &CellularDataInterface::networkInterfaceNameChanged>,
    Change<Fields<&State::accessPointName>, &CellularDataInterface::accessPointNameChanged>>;

// Each exchange has a connection of its own, so requests need no ids to tell their answers apart.
QVariantMap request(const QString &command)
{
    return {{QStringLiteral("msg"), command}, {QStringLiteral("id"), QStringLiteral("123")}};
}

int errorIn(const QVariantMap &answer)
{
    return answer.value(QStringLiteral("err")).toInt();
}

} // namespace

CellularDataInterfacePrivate::CellularDataInterfacePrivate(CellularDataInterface *publicObject)
    : QObject(publicObject), q(publicObject)
{
}

QStringList CellularDataInterfacePrivate::allNames()
{
    PpsObject status(StatusPpsPath);
    if (!openOrLog(&status, PpsOpenMode::Subscribe, OpenFailed))
        return {};
    QVariantMap profiles = attributesOrLog(&status, Reading);
    for (const auto &ofTheService : {QStringLiteral("data_services_status"),
             QStringLiteral("data_roaming_status"), QStringLiteral("user_enabled_data_roaming")})
        profiles.remove(ofTheService);
    return profiles.keys();
}

void CellularDataInterfacePrivate::setName(const QString &name)
{
    if (name == m_name)
        return;
    requestDisconnect();
    delete std::exchange(m_status, nullptr);
    m_name = name;
    if (!m_name.isEmpty()) {
        m_status = new PpsObject(StatusPpsPath + QStringLiteral("?f=") + m_name, this);
        connect(m_status, &PpsObject::readyRead, this, &CellularDataInterfacePrivate::updateState);
        openOrLog(m_status, PpsOpenMode::Subscribe, OpenFailed);
    }
    const QPointer<CellularDataInterface> alive(q);
    updateState();
    // A slot may have set another, which is announced by then.
    if (alive && m_name == name)
        Q_EMIT q->nameChanged(name);
}

void CellularDataInterfacePrivate::updateState()
{
    Changes::storeAndEmit(q, &m_state, readState());
}

CellularDataInterfacePrivate::State CellularDataInterfacePrivate::readState()
{
    const QVariantMap profile = attributesOrLog(m_status, Reading).value(m_name).toMap();
    const auto connectionState = [&profile] {
        if (!profile.value(QStringLiteral("active")).toBool())
            return CellularConnectionState::Disconnected;
        return profile.value(QStringLiteral("connected")).toBool() ? CellularConnectionState::Connected
                                                                   : CellularConnectionState::PendingConnect;
    };
    return {
        .valid = profile.value(QStringLiteral("enabled")).toBool(),
        .alwaysOn = profile.value(QStringLiteral("always_on")).toBool(),
        .accessControlled = profile.value(QStringLiteral("access_controlled")).toBool(),
        .connectionState = connectionState(),
        .networkInterfaceName = profile.value(QStringLiteral("net_if")).toString(),
        .accessPointName = profile.value(QStringLiteral("apn")).toString(),
    };
}

CellularConnectionRequestResult::Type CellularDataInterfacePrivate::requestConnect()
{
    if (m_name.isEmpty())
        return Result::InvalidInterface;
    if (!m_connectId.isEmpty())
        return Result::NotPossible;
    Result::Type result = Result::InternalError;
    const QVariantMap message = sendRecvControlMessage(request(QStringLiteral("connect")), &result);
    if (message.isEmpty())
        return result;
    const QVariantMap answer = attributesOf(message);
    if (const int error = errorIn(answer))
        return error == EACCES ? Result::NotPossible : Result::InternalError;
    m_connectId = memberOf(answer, QStringLiteral("dat"), QStringLiteral("connect_id")).toString();
    return Result::Requested;
}

CellularConnectionRequestResult::Type CellularDataInterfacePrivate::requestDisconnect()
{
    if (m_name.isEmpty())
        return Result::InvalidInterface;
    if (m_connectId.isEmpty())
        return Result::NotPossible;
    QVariantMap disconnect = request(QStringLiteral("disconnect"));
    disconnect.insert(QStringLiteral("dat"), QVariantMap{{QStringLiteral("connect_id"), m_connectId}});
    Result::Type result = Result::InternalError;
    const QVariantMap message = sendRecvControlMessage(disconnect, &result);
    m_connectId.clear();
    // Unlike for connecting, every error is alike here.
    return errorIn(attributesOf(message)) ? Result::InternalError : result;
}

QVariantMap CellularDataInterfacePrivate::sendRecvControlMessage(
    const QVariantMap &request, CellularConnectionRequestResult::Type *result)
{
    const ControlAnswer answer =
        exchange({CnicePpsDir + m_name + QStringLiteral("_control?wait"), request}, Exchange);
    switch (answer.outcome) {
    case ControlAnswer::Answered:
        *result = Result::Requested;
        break;
    case ControlAnswer::NotOpened:
        *result = answer.error == EACCES ? Result::PermissionDenied : Result::InvalidInterface;
        break;
    case ControlAnswer::Failed:
        *result = Result::InternalError;
        break;
    }
    return answer.message;
}

} // namespace oz::device
