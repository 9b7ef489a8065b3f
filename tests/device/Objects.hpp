#pragma once

#include <QString>

// The content of the objects in the tests of their facilities. Where a name occurs twice in a message the
// last line counts, so a test appends the lines that matter to it.
namespace oz::harness {

inline const QByteArray BatteryText = R"(@status
SystemInfo:json:{"ChargingState":"CC"}
ChargerInfo:json:{"NumOfSource":1}
BatteryInfo:json:{"ActiveBattery":1,"BatteryStatus":[{},{"StateOfCharge":80,"BatteryPresent":"YES","StateOfBattery":"OK","FullChargeCap":2900,"CycleCount":120,"Temperature":2550}]}
WlcSourceInfo:json:{"WlcSrcParameters":[{"RxID":"7F01"},{"RxID":"other"}]}
)";

inline const QByteArray RadioText = R"(@status_public
power_status::ON
provider_capability:json:{"services":2,"tech":["lte"]}
network_technology:json:["umts"]
band_capability:json:{"umts":1}
)";

inline const QByteArray CellText = R"(@status_cell_public
network_service:n:1
network_name:json:{"name":"North"}
serving_network:json:{"mcc":"310","mnc":"26"}
signal_strength:json:{"RSSI":-71}
roaming:json:{"state":"ROAMING","suppress":false}
)";

inline const QByteArray SimCardText = R"(@status_private
uicc_state:json:{"state":"READY"}
hplmn:json:{"mcc":"310","mnc":"26"}
iccid::8944500102
)";

// As a warning ends where an object is not there.
inline const QString Missing = "  \"No such file or directory\"";

} // namespace oz::harness
