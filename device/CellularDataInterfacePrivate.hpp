#pragma once

#include "ChangeTable.hpp"

#include <oz/device/CellularDataInterface.hpp>

#include <QVariantMap>

namespace oz {
class PpsObject;
}

namespace oz::device {

class CellularDataInterfacePrivate : public QObject
{
    Q_OBJECT

public:
    /*! One reading of the profile's status. */
    struct State
    {
        bool valid = false;
        bool alwaysOn = false;
        bool accessControlled = false;
        CellularConnectionState::Type connectionState = CellularConnectionState::Disconnected;
        QString networkInterfaceName;
        QString accessPointName;
    };

    explicit CellularDataInterfacePrivate(CellularDataInterface *q);

    [[nodiscard]] static QStringList allNames();
    [[nodiscard]] QString name() const { return m_name; }
    void setName(const QString &name);
    [[nodiscard]] const State &state() const { return *m_state; }
    CellularConnectionRequestResult::Type requestConnect();
    CellularConnectionRequestResult::Type requestDisconnect();

private Q_SLOTS:
    void updateState();

private:
    [[nodiscard]] State readState();
    [[nodiscard]] QVariantMap sendRecvControlMessage(
        const QVariantMap &request, CellularConnectionRequestResult::Type *result);

    CellularDataInterface *q;
    QString m_name;
    oz::PpsObject *m_status = nullptr;
    QString m_connectId; // the connection that was requested here; empty for none
    Announced<State> m_state;
};

} // namespace oz::device
