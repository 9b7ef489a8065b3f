#pragma once

#include "phone/ShippedPhone.hpp"
#include "phone/SimulatedPart.hpp"

#include <map>

namespace oz::services {

/*!
 * The devices around the phone: a map of the part's section of the phone's file, each under the key by which
 * verbs call it. A \a Device has its settings in a static table(), "name", "address" and "in-range" among
 * them, and gives them by name(), address() and inRange.
 */
template <typename Device>
class Surroundings
{
public:
    /*! Reads the map \a name of \a section, or of the shipped phone's \a part where it is not there. What a
     * device leaves out is \a initial, beside its name and its address, which is the \a first or follows it;
     * \a taken is the phone's own. */
    void read(const JsonNode &section, const QString &part, const QString &name, int first,
        const std::function<QVariant(const QString &key, const Setting &setting)> &initial = {},
        const QString &taken = {})
    {
        for (const auto &[key, node] : givenOrShipped(section, part, name).members()) {
            Device device;
            std::vector<Setting> settings = Device::table().of(&device);
            for (Setting &setting : settings) {
                if (setting.key == u"name")
                    setting.initial = key;
                else if (setting.key == Address)
                    setting.initial = addressAt(first + int(m_keys.size()));
                else if (initial && initial(key, setting).isValid())
                    setting.initial = initial(key, setting);
            }
            SimulatedPart::read(node, settings);
            if (isSame(device.address(), taken))
                node.fail(QStringLiteral("is the phone's own"), Address);
            if (const QString other = withAddress(m_keys, device.address()); !other.isEmpty())
                node.fail(QLatin1String("is that of ") + other, Address);
            m_keys.append(key);
            m_devices.emplace(key, device);
        }
    }

    /*! In the order of the file. */
    [[nodiscard]] const QStringList &keys() const { return m_keys; }
    [[nodiscard]] bool contains(const QString &key) const { return m_devices.contains(key); }
    [[nodiscard]] const Device &at(const QString &key) const { return m_devices.at(key); }
    /*! The device that a verb calls \a key; throws where there is none. */
    [[nodiscard]] Device &called(const QString &key)
    {
        return m_devices.at(m_keys[SimArgument::oneOf(key, m_keys)]);
    }
    /*! Those that a verb calls so, with commas between them; throws for one that there is not. */
    [[nodiscard]] QStringList allCalled(const QString &words)
    {
        const QStringList keys = words.split(u',', Qt::SkipEmptyParts);
        for (const QString &key : keys)
            (void)called(key);
        return keys;
    }
    /*! The one of \a keys with this hardware address, whatever its case; empty where there is none. */
    [[nodiscard]] QString withAddress(const QStringList &keys, const QString &address) const
    {
        for (const QString &key : keys) {
            if (isSame(at(key).address(), address))
                return key;
        }
        return {};
    }
    /*! Brings \a keys into range, and no others. */
    void setInRange(const QStringList &keys)
    {
        for (auto &[key, device] : m_devices)
            device.inRange = keys.contains(key);
    }

    [[nodiscard]] SimulatedPart::Neighbourhood neighbourhood(const QString &comes, const QString &goes) const
    {
        SimulatedPart::Neighbourhood around{comes, goes, {}};
        for (const QString &key : m_keys)
            around.neighbours.append({key, at(key).name(), at(key).inRange});
        return around;
    }
    [[nodiscard]] QVariantMap saved()
    {
        QVariantMap saved;
        for (auto &[key, device] : m_devices)
            saved.insert(key, SimulatedPart::savedOf(Device::table().of(&device)));
        return saved;
    }
    void restore(const QVariantMap &saved)
    {
        for (auto &[key, device] : m_devices)
            (void)SimulatedPart::restoreTo(Device::table().of(&device), saved.value(key).toMap());
    }
    /*! Those of the keys in \a saved that there are, each once. */
    [[nodiscard]] QStringList knownOf(const QVariant &saved) const
    {
        QStringList known;
        for (const QString &key : saved.toStringList()) {
            if (contains(key) && !known.contains(key))
                known.append(key);
        }
        return known;
    }

private:
    inline static const QString Address = QStringLiteral("address");

    [[nodiscard]] static bool isSame(const QString &one, const QString &other)
    {
        return one.compare(other, Qt::CaseInsensitive) == 0;
    }
    [[nodiscard]] static QString addressAt(int number)
    {
        const QString digits = QString::number(number, 16).rightJustified(4, u'0');
        return QLatin1String("02:00:00:00:") + digits.first(2) + u':' + digits.sliced(2);
    }

    QStringList m_keys;
    std::map<QString, Device> m_devices;
};

} // namespace oz::services
