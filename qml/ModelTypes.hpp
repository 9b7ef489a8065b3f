#pragma once

#include <oz/models/CellularNetworkModel.hpp>
#include <oz/models/DataProfileModel.hpp>
#include <oz/models/DisplayModel.hpp>
#include <oz/models/MiracastSinkModel.hpp>
#include <oz/models/NetworkInterfaceModel.hpp>
#include <oz/models/ScriptRequests.hpp>
#include <oz/models/WiFiDirectPeerModel.hpp>

#include <QtQml/qqml.h>

#define OZ_MODEL(CLASS, NAME)                                                                                \
    struct CLASS##Type                                                                                       \
    {                                                                                                        \
        Q_GADGET                                                                                             \
        QML_FOREIGN(oz::models::CLASS)                                                                       \
        QML_NAMED_ELEMENT(NAME)                                                                              \
        QML_ADDED_IN_VERSION(1, 0)                                                                           \
    };

namespace oz::qml {

OZ_MODEL(CellularNetworkModel, CellularNetworkModel)
OZ_MODEL(DataProfileModel, DataProfileModel)
OZ_MODEL(DisplayModel, DisplayModel)
OZ_MODEL(MiracastSinkModel, MiracastSinkModel)
OZ_MODEL(NetworkInterfaceModel, NetworkInterfaceModel)
OZ_MODEL(ScriptRequests, DeviceRequests)
OZ_MODEL(WiFiDirectPeerModel, WiFiDirectPeerModel)

struct DeviceRequestType
{
    Q_GADGET
    QML_FOREIGN(oz::models::DeviceRequest)
    QML_NAMED_ELEMENT(DeviceRequest)
    QML_UNCREATABLE("DeviceRequests makes it.")
    QML_ADDED_IN_VERSION(1, 0)
};

// QML's tools need the bases of the models.
#define OZ_BASE(NAME, CLASS)                                                                                 \
    struct NAME##Type                                                                                        \
    {                                                                                                        \
        Q_GADGET                                                                                             \
        QML_FOREIGN(CLASS)                                                                                   \
        QML_ANONYMOUS                                                                                        \
        QML_ADDED_IN_VERSION(1, 0)                                                                           \
    };

OZ_BASE(AbstractItemModel, QAbstractItemModel)
OZ_BASE(AbstractListModel, QAbstractListModel)
OZ_BASE(RecordModel, oz::models::RecordModel)
OZ_BASE(ObjectModel, oz::models::ObjectModel)

} // namespace oz::qml
