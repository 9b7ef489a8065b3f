#include "hardware/HardwarePublisher.hpp"

namespace oz::services {

namespace {

QVariantMap identifiersOf(const HardwareState &hardware)
{
    QVariantMap attributes;
    insertKnown(&attributes, QStringLiteral("devicepin"), hardware.pin);
    insertKnown(&attributes, QStringLiteral("deviceserialnumber"), hardware.serialNumber);
    insertKnown(&attributes, QStringLiteral("IMEI"), hardware.imei);
    insertKnown(&attributes, QStringLiteral("MEID"), hardware.meid);
    return attributes;
}

QVariantMap namesOf(const HardwareState &hardware)
{
    QVariantMap attributes;
    insertKnown(&attributes, QStringLiteral("hardwareid"), hardware.hardwareId);
    insertKnown(&attributes, QStringLiteral("devicename"), hardware.deviceName);
    insertKnown(&attributes, QStringLiteral("modelname"), hardware.modelName);
    insertKnown(&attributes, QStringLiteral("modelnumber"), hardware.modelNumber);
    return attributes;
}

QVariantMap inventoryOf(const HardwareState &hardware)
{
    QVariantMap attributes;
    if (hardware.processors)
        attributes.insert(QStringLiteral("Processor_Numbers"), int(hardware.processors->size()));
    int number = 0;
    for (const HardwareState::Processor &processor :
        hardware.processors.value_or(QList<HardwareState::Processor>())) {
        const QString prefix = QStringLiteral("Processor") + QString::number(++number);
        if (processor.speed) {
            attributes.insert(
                prefix + QLatin1String("_CPUSpeed"), QString(QString::number(*processor.speed) + u"MHz"));
        }
        insertKnown(&attributes, prefix + QLatin1String("_CPUName"), processor.model);
    }
    insertKnown(&attributes, QStringLiteral("Keyboard"), hardware.keyboard);
    if (hardware.hdmi) {
        attributes.insert(QStringLiteral("HDMI"),
            *hardware.hdmi == HardwareState::Hdmi::Micro ? QStringLiteral("Micro") : QStringLiteral("None"));
    }
    return attributes;
}

} // namespace

HardwarePublisher::HardwarePublisher(
    const QString &facility, HardwareSource &source, Tree &tree, const MiracastSource *miracast)
    : PublisherOf(facility, source, tree), m_miracast(miracast),
      m_identifiers(tree, QStringLiteral("/pps/services/private/deviceproperties"), 0640),
      m_names(tree, QStringLiteral("/pps/services/deviceproperties")),
      m_inventory(tree, QStringLiteral("/pps/services/hw_info/inventory"))
{
    for (StatePublisher *object : {&m_identifiers, &m_names, &m_inventory})
        declare(*object);
    if (miracast)
        connect(miracast, &MiracastSource::changed, this, &HardwarePublisher::republish);
    follow();
}

void HardwarePublisher::publishState(const HardwareState &hardware)
{
    m_identifiers.publish(identifiersOf(hardware));
    m_names.publish(namesOf(hardware));
    QVariantMap inventory = inventoryOf(hardware);
    if (m_miracast && m_miracast->isKnown())
        m_isMiracastSupported = m_miracast->state()->supported;
    if (m_isMiracastSupported) {
        inventory.insert(QStringLiteral("Miracast_Supported"),
            *m_isMiracastSupported ? QStringLiteral("yes") : QStringLiteral("no"));
    }
    m_inventory.publish(inventory);
}

} // namespace oz::services
