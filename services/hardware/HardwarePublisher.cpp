#include "hardware/HardwarePublisher.hpp"

#include "publishing/StateStore.hpp"

namespace oz::services {

namespace {

// In the store.
const QString SavedInventory = QStringLiteral("inventory");
const QString SavedMiracast = QStringLiteral("miracast-supported");

// Each processor has attributes of its own.
void addProcessors(const Hardware &hardware, QVariantMap *inventory)
{
    int number = 0;
    for (const Hardware::Processor &processor : hardware.processors.value_or(QList<Hardware::Processor>())) {
        const QString prefix = QStringLiteral("Processor") + QString::number(++number);
        if (processor.speed) {
            inventory->insert(
                prefix + QLatin1String("_CPUSpeed"), QString(QString::number(*processor.speed) + u"MHz"));
        }
        insertKnown(inventory, prefix + QLatin1String("_CPUName"), processor.model);
    }
}

} // namespace

HardwarePublisher::HardwarePublisher(
    const QString &facility, HardwareSource &source, Tree &tree, const MiracastSupport *miracast)
    : FieldsPublisher(facility, source, tree, {&deviceIdentifierFields(), &deviceNameFields()}, Unfollowed()),
      m_miracast(miracast), m_inventory(tree, inventoryFields().path())
{
    declare(m_inventory);
    // A source that has to find it out, as the same did before, does not take back what applications read
    // once.
    const QVariant before = tree.store().load(SavedInventory).value(SavedMiracast);
    if (miracast && before.isValid() && tree.isContinued(QStringLiteral("miracast")))
        m_isMiracastSupported = before.toBool();
    if (miracast)
        connect(&miracast->source(), &Source::changed, this, &HardwarePublisher::republish);
    follow();
}

void HardwarePublisher::publishState(const Hardware &hardware)
{
    FieldsPublisher::publishState(hardware);
    QVariantMap inventory = inventoryFields().attributes(hardware);
    addProcessors(hardware, &inventory);
    if (const auto known = m_miracast ? m_miracast->isMiracastSupported() : std::nullopt)
        m_isMiracastSupported = known;
    tree().store().save(SavedInventory,
        m_isMiracastSupported ? QVariantMap{{SavedMiracast, *m_isMiracastSupported}} : QVariantMap());
    if (m_isMiracastSupported) {
        inventory.insert(QStringLiteral("Miracast_Supported"),
            *m_isMiracastSupported ? QStringLiteral("yes") : QStringLiteral("no"));
    }
    m_inventory.publish(inventory);
}

} // namespace oz::services
