#pragma once

#include "phone/SimulatedPhone.hpp"
#include "publishing/Publisher.hpp"
#include "publishing/StateStore.hpp"
#include "source/Source.hpp"

#include <QMap>
#include <QStringList>

#include <functional>
#include <map>
#include <memory>
#include <typeindex>
#include <vector>

namespace oz::services {

/*! The options that stand behind a source's name: "device=mmcblk1". */
using SourceOptions = QMap<QString, QString>;

/*! What has a life of its own and feeds several facilities. Each is made at its first use. */
class Providers
{
public:
    using MakePhone = std::function<std::unique_ptr<SimulatedPhone>()>;

    Providers(StateStore &store, MakePhone makePhone) : m_store(store), m_makePhone(std::move(makePhone)) { }

    /*! For what has to be known again after the daemon died. */
    [[nodiscard]] StateStore &store() const { return m_store; }

    [[nodiscard]] SimulatedPhone &phone()
    {
        if (!m_phone)
            m_phone = m_makePhone();
        return *m_phone;
    }
    /*! The one of this type that all sources share, which is made where there is none. */
    template <typename Type>
    [[nodiscard]] std::shared_ptr<Type> shared()
    {
        return shared<Type>([] { return std::make_shared<Type>(); });
    }
    /*! As shared(), made by \a make. */
    template <typename Type, typename Make>
    [[nodiscard]] std::shared_ptr<Type> shared(const Make &make)
    {
        std::weak_ptr<void> &entry = m_shared[typeid(Type)];
        auto present = std::static_pointer_cast<Type>(entry.lock());
        if (!present)
            entry = present = make();
        return present;
    }
    /*! The simulated phone where something uses it, else null. */
    [[nodiscard]] SimulatedPhone *phoneInUse() const { return m_phone.get(); }

private:
    StateStore &m_store;
    MakePhone m_makePhone;
    std::unique_ptr<SimulatedPhone> m_phone;
    std::map<std::type_index, std::weak_ptr<void>> m_shared;
};

/*! The sources of all facilities that have one. */
class Sources
{
public:
    void add(const QString &facility, std::shared_ptr<Source> source)
    {
        m_sources.emplace_back(facility, std::move(source));
    }
    [[nodiscard]] Source *of(const QString &facility) const
    {
        for (const auto &[name, source] : m_sources) {
            if (name == facility)
                return source.get();
        }
        return nullptr;
    }
    /*! The source of this type; null where the facility has none. */
    template <typename Type>
    [[nodiscard]] Type *find() const
    {
        for (const auto &[name, source] : m_sources) {
            if (auto *found = dynamic_cast<Type *>(source.get()))
                return found;
        }
        return nullptr;
    }

private:
    std::vector<std::pair<QString, std::shared_ptr<Source>>> m_sources;
};

/*! One kind of source of a facility. */
struct SourceKind
{
    QString name;
    QString help; //!< what it is, for a list
    QStringList options; //!< names of the options that it takes
    std::function<std::shared_ptr<Source>(Providers &providers, const SourceOptions &options)> make;
    /*! Why "auto" would not take it here; empty where it would. Nothing for one that "auto" never takes. */
    std::function<QString()> obstacle;
};

/*! For a source that "auto" takes on every system: it is absent, for a reason, until what it asks is there.
 */
inline QString noObstacle()
{
    return {};
}

/*! A facility of the device as the daemon offers it: who can feed it, and who publishes it. */
struct Facility
{
    QString name;
    std::vector<SourceKind> sources;
    std::function<std::unique_ptr<Publisher>(Source &source, const Sources &all, Tree &tree)> publish;
    /*! Its part of the simulated phone. */
    std::function<std::shared_ptr<SimulatedPart>(const JsonNode &section, SimulatedPhone &phone)> part;
};

/*! The name of the source that is the simulated phone. */
inline const QString SimulatedSource = QStringLiteral("simulated");

/*!
 * A facility whose source is a \a SourceType, whose publisher is a \a PublisherType and whose part of the
 * simulated phone is a \a PartType. \a Met are the types of further sources that the publisher follows.
 */
template <typename SourceType, typename PublisherType, typename PartType, typename... Met>
[[nodiscard]] Facility describeFacility(
    const QString &name, const std::vector<SourceKind> &furtherSources = {})
{
    Facility facility;
    facility.name = name;
    facility.sources = {{SimulatedSource, QStringLiteral("the simulated phone"), {},
        [](Providers &providers, const SourceOptions &) -> std::shared_ptr<Source> {
            return providers.phone().part<PartType>();
        },
        {}}};
    facility.sources.insert(facility.sources.end(), furtherSources.begin(), furtherSources.end());
    facility.publish = [name](Source &source, const Sources &all, Tree &tree) -> std::unique_ptr<Publisher> {
        return std::make_unique<PublisherType>(
            name, dynamic_cast<SourceType &>(source), tree, all.find<Met>()...);
    };
    facility.part = [](const JsonNode &section, SimulatedPhone &phone) -> std::shared_ptr<SimulatedPart> {
        return std::make_shared<PartType>(section, phone);
    };
    return facility;
}

/*! Every facility, in the order in which they are published; services/CMakeLists.txt names their folders. */
[[nodiscard]] const std::vector<Facility> &facilities();

/*! The parts of the simulated phone: one of each facility. */
[[nodiscard]] std::vector<PartDescription> phoneParts();

} // namespace oz::services
