#pragma once

#include "ChangeTable.hpp"

#include <oz/device/CellularNetworkInfo.hpp>

namespace oz {
class PpsObject;
}

namespace oz::device {

class CellularRadioInfo;

/*! The technology of the network \a index while the radio uses \a active. */
[[nodiscard]] CellularTechnology::Type findTechByIndex(int index, CellularTechnology::Types active);

class CellularNetworkInfoPrivate : public QObject
{
    Q_OBJECT

public:
    /*! Which network this is. */
    struct Selection
    {
        int index = 0;
        CellularTechnology::Type technology = CellularTechnology::None;
    };

    /*! One reading of the public object. */
    struct PublicState
    {
        CellularService::Types services;
        QString name;
        QString mobileCountryCode;
        QString mobileNetworkCode;
        int signalStrength = 0;
        bool roaming = false;
    };

    /*! One reading of the private object. */
    struct PrivateState
    {
        int cellId = 0;
        int locationAreaCode = 0;
        int trackingAreaCode = 0;
        int baseStationId = 0;
        int networkId = 0;
        int systemId = 0;
    };

    struct Values : PublicState, PrivateState
    {
        QString displayName;
    };

    CellularNetworkInfoPrivate(int index, CellularNetworkInfo *q);

    void setIndex(int index);
    [[nodiscard]] const Selection &selection() const { return *m_selection; }
    [[nodiscard]] const Values &values() const { return *m_values; }

private Q_SLOTS:
    void updatePpsObjects();
    void updateState();

private:
    void updateFrom(const QObject *source);
    [[nodiscard]] PublicState readPublicState();
    [[nodiscard]] PrivateState readPrivateState();
    [[nodiscard]] QString readSettingsProperty(const QString &key);

    CellularNetworkInfo *q;
    CellularRadioInfo *m_radioInfo;
    oz::PpsObject *m_publicObject = nullptr;
    oz::PpsObject *m_privateObject = nullptr;
    oz::PpsObject *m_settingsObject;
    Announced<Selection> m_selection;
    Announced<Values> m_values;
};

} // namespace oz::device
