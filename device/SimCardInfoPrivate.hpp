#pragma once

#include "ChangeTable.hpp"

#include <oz/device/SimCardInfo.hpp>

namespace oz {
class PpsObject;
}

namespace oz::device {

class SimCardInfoPrivate : public QObject
{
    Q_OBJECT

public:
    /*! One reading of the private object. */
    struct PrivateState
    {
        SimCardState::Type state = SimCardState::NotDetected;
        QString mobileCountryCode;
        QString mobileNetworkCode;
        QString serialNumber;
    };

    struct Values : PrivateState
    {
        QString subscriberIdentifier;
    };

    explicit SimCardInfoPrivate(SimCardInfo *q);

    [[nodiscard]] const Values &values() const { return *m_values; }

private Q_SLOTS:
    void updatePrivateState();
    void updateRestrictedState();

private:
    [[nodiscard]] PrivateState readPrivateState();
    [[nodiscard]] QString readRestrictedState();

    SimCardInfo *q;
    oz::PpsObject *m_privateObject;
    oz::PpsObject *m_restrictedObject;
    Announced<Values> m_values;
};

} // namespace oz::device
