#include "hardware/HardwarePublisher.hpp"

namespace oz::services {

namespace {

QVariantMap identifiersOf(const HardwareSource::State &hardware)
{
    QVariantMap attributes;
    insertKnown(&attributes, QStringLiteral("devicepin"), hardware.pin);
    insertKnown(&attributes, QStringLiteral("deviceserialnumber"), hardware.serialNumber);
    insertKnown(&attributes, QStringLiteral("IMEI"), hardware.imei);
    insertKnown(&attributes, QStringLiteral("MEID"), hardware.meid);
    return attributes;
}

QVariantMap namesOf(const HardwareSource::State &hardware)
{
    QVariantMap attributes;
    insertKnown(&attributes, QStringLiteral("hardwareid"), hardware.hardwareId);
    insertKnown(&attributes, QStringLiteral("devicename"), hardware.deviceName);
    insertKnown(&attributes, QStringLiteral("modelname"), hardware.modelName);
    insertKnown(&attributes, QStringLiteral("modelnumber"), hardware.modelNumber);
    return attributes;
}

QVariantMap inventoryOf(const HardwareSource::State &hardware)
{
    QVariantMap attributes{{QStringLiteral("Processor_Numbers"), int(hardware.processors.size())}};
    int number = 0;
    for (const HardwareSource::Processor &processor : hardware.processors) {
        const QString prefix = QStringLiteral("Processor") + QString::number(++number);
        attributes.insert(
            prefix + QLatin1String("_CPUSpeed"), QString(QString::number(processor.speed) + u"MHz"));
        attributes.insert(prefix + QLatin1String("_CPUName"), processor.model);
    }
    insertKnown(&attributes, QStringLiteral("Keyboard"), hardware.keyboard);
    if (hardware.hdmi) {
        attributes.insert(QStringLiteral("HDMI"),
            *hardware.hdmi == HardwareSource::Hdmi::Micro ? QStringLiteral("Micro") : QStringLiteral("None"));
    }
    if (hardware.miracast) {
        attributes.insert(QStringLiteral("Miracast_Supported"),
            *hardware.miracast ? QStringLiteral("yes") : QStringLiteral("no"));
    }
    return attributes;
}

} // namespace

HardwarePublisher::HardwarePublisher(HardwareSource &source)
    : m_source(source), m_identifiers(QStringLiteral("/pps/services/private/deviceproperties"), 0640),
      m_names(QStringLiteral("/pps/services/deviceproperties")),
      m_inventory(QStringLiteral("/pps/services/hw_info/inventory"))
{
    connect(&source, &HardwareSource::changed, this, &HardwarePublisher::publish);
    publish();
}

void HardwarePublisher::publish()
{
    const auto hardware = m_source.state();
    if (!hardware)
        return;
    m_identifiers.publish(identifiersOf(*hardware));
    m_names.publish(namesOf(*hardware));
    m_inventory.publish(inventoryOf(*hardware));
}

} // namespace oz::services
