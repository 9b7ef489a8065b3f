#include "Messages.hpp"

#include <oz/DisplayTree.hpp>
#include <oz/PpsPublisher.hpp>
#include <oz/Screen.hpp>

#include <cstdlib>

namespace oz::bench {

namespace {

// The attribute \a name as it is after a change of one of its members.
QVariantMap with(QVariantMap attributes, const QString &name, const QVariant &value)
{
    attributes.insert(name, value);
    return attributes;
}

std::vector<Message> allMessages()
{
    const auto battery = [](int level) {
        return QVariantMap{{"SystemInfo", QVariantMap{{"ChargingState", "CC"}}},
            {"ChargerInfo", QVariantMap{{"NumOfSource", 1}}},
            {"BatteryInfo",
                QVariantMap{{"ActiveBattery", 0},
                    {"BatteryStatus",
                        QVariantList{QVariantMap{{"BatteryPresent", "YES"}, {"StateOfCharge", level},
                            {"StateOfBattery", "OK"}, {"FullChargeCap", 2800}, {"CycleCount", 112},
                            {"Temperature", 2550}}}}}},
            {"WlcSourceInfo",
                QVariantMap{{"WlcSrcParameters", QVariantList{QVariantMap{{"RxID", "null"}}}}}}};
    };
    const auto profile = [](bool connected) {
        QVariantMap attributes{{"enabled", true}, {"always_on", true}, {"access_controlled", false},
            {"active", connected}, {"connected", connected}, {"apn", "internet.example"}};
        if (connected)
            attributes.insert("net_if", "rmnet0");
        return attributes;
    };
    const QVariantMap inventory{{"Processor_Numbers", 2}, {"Processor1_CPUSpeed", "1500MHz"},
        {"Processor1_CPUName", "Simulated core"}, {"Processor2_CPUSpeed", "1500MHz"},
        {"Processor2_CPUName", "Simulated core"}, {"Keyboard", "qwerty"}, {"HDMI", "Micro"},
        {"Miracast_Supported", "yes"}};
    const QVariantMap card{{"uicc_state", QVariantMap{{"state", "READY"}}},
        {"hplmn", QVariantMap{{"mcc", "001"}, {"mnc", "01"}}}, {"iccid", "8900100000000000001"}};
    const QVariantMap radio{{"power_status", "ON"},
        {"provider_capability",
            QVariantMap{{"services", 0x3FF707}, {"tech", QStringList{"gsm", "umts", "cdma_1x", "lte"}}}},
        {"network_technology", QStringList{"lte"}},
        {"band_capability", QVariantMap{{"cdma", 3}, {"gsm", 15}, {"umts", 147}, {"lte", 0x80044}}}};
    const QVariantMap network{{"network_service", 0x200503},
        {"network_name", QVariantMap{{"name", "North Mobile"}}},
        {"serving_network", QVariantMap{{"mcc", "001"}, {"mnc", "01"}}},
        {"signal_strength", QVariantMap{{"RSSI", -85}}},
        {"roaming", QVariantMap{{"state", "HOME"}, {"suppress", false}}}};
    const QVariantMap data{{"data_services_status", "ON"}, {"data_roaming_status", "HOME"},
        {"user_enabled_data_roaming", false}, {"internet", profile(true)}, {"mms", profile(false)},
        {"enterprise", profile(false)}};
    const QVariantMap led{{"red", "off"}, {"green", "off"}, {"blue", "off"}};
    // A hundred peers in sight, of which another one is the last.
    const auto peers = [](int last) {
        QVariantList list;
        for (int i = 1; i <= 100; ++i) {
            const QString number = QString::number(i < 100 ? i : last, 16).rightJustified(4, '0');
            list.append(QVariantMap{{"mac_addr", "02:00:00:00:" + number.left(2) + ':' + number.right(2)},
                {"name", "Peer " + number}, {"type", "10-0050F204-5"}});
        }
        return QVariantMap{{"p2p_mgr_enabled", 0}, {"scanning", true},
            {"last_discover_update", 1'700'000'000}, {"connection", QVariantMap{{"status", "disconnected"}}},
            {"discovered_devices", QVariantMap{{"device_list", list}}},
            {"connected_devices", QVariantMap{{"device_list", QVariantList()}}}};
    };
    const QVariantMap miracast{
        {"sink_device",
            QVariantMap{{"name", "Living room"}, {"mac", "02:00:00:00:02:01"}, {"type", "7-0050F204-1"}}},
        {"sink_state", "CONNECTED"}, {"session", "PLAYING"},
        {"session_id", "6293ab65-06f1-4546-8caf-2b1d80d3795c"},
        {"sink_resolution", QVariantMap{{"width", 1920}, {"height", 1080}}}, {"service_stop_reason", 0},
        {"service_status", "RUNNING"}};
    const auto displays = [](int width) {
        const auto external = ScreenDisplayKind::External;
        return DisplayTree::toAttributes(
            {{0, {"panel", ScreenDisplayKind::Internal, true, false, {width, 1280}, {54, 90}, 0, 5}},
                {1, {"hdmi", external, true, true, {1920, 1080}, {531, 299}, 0, 2}}});
    };
    return {
        {"sdcard", "/pps/system/filesystem/removable/sdcard", {{"mounted", true}, {"busy", false}},
            {{"mounted", false}, {"busy", false}}},
        {"battery", "/pps/system/BattMgr/status", battery(80), battery(81)},
        {"hardware", "/pps/services/hw_info/inventory", inventory, inventory},
        {"simcard", "/pps/services/cellular/uicc/card0/status_private", card,
            with(card, "uicc_state", QVariantMap{{"state", "CHV_REQUESTED"}})},
        {"radio", "/pps/services/cellular/radioctrl/status_public", radio,
            with(radio, "network_technology", QStringList{"lte", "cdma_1x"})},
        {"cellular-network", "/pps/services/cellular/radioctrl/status_cell_public", network,
            with(network, "signal_strength", QVariantMap{{"RSSI", -84}})},
        {"data-profile", "/pps/services/cds/cnice/status", data, with(data, "internet", profile(false))},
        {"led", "/pps/services/led/status", led, with(led, "red", "on")},
        {"display", DisplayTree::PpsPath, displays(768), displays(640)},
        {"wifi-direct", "/pps/services/wifi_p2p/manager/status", peers(100), peers(101)},
        {"miracast", "/pps/services/miracast/status", miracast, with(miracast, "session", "PAUSED")},
    };
}

} // namespace

const std::vector<Message> &messages()
{
    static const std::vector<Message> all = allMessages();
    return all;
}

void publishAll()
{
    const auto publish = [](const QString &path, const QVariantMap &attributes) {
        if (!PpsPublisher(path).publish(attributes))
            std::abort();
    };
    for (const Message &message : messages())
        publish(message.path, message.attributes);
    publish("/pps/services/private/deviceproperties", {{"devicepin", "2A000001"}});
    publish("/pps/services/deviceproperties", {{"hardwareid", "KSL100-1"}, {"devicename", "Phone"}});
    publish("/pps/services/cellular/uicc/card0/status_restricted", {{"imsi", "001010000000001"}});
    publish("/pps/services/cellular/radioctrl/status_persistent",
        {{"configured_technologies", QVariantMap{{"enabled", QStringList{"gsm", "lte"}}}}});
    publish("/pps/services/cellular/radioctrl/status_cell_private",
        {{"serving_network", QVariantMap{{"cell_id", 20481}, {"tac", 301}}}});
    publish("/pps/services/rum/csm/status_public", {{"network_name", "North"}});
}

} // namespace oz::bench
