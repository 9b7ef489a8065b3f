#pragma once

#include "facility/RecordedScript.hpp"
#include "phone/SimulatedPart.hpp"
#include "publishing/FieldsPublisher.hpp"
#include "publishing/StateStore.hpp"
#include "source/Source.hpp"
#include "table/AskedRequest.hpp"
#include "table/Fields.hpp"

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

/*! Objects that live on their own and feed several facilities. Each is made at its first use. */
class Providers
{
public:
    /*! \a phone gives the simulated phone, and makes it at its first use. */
    Providers(StateStore &store, std::function<SimulatedParts &()> phone)
        : m_store(store), m_phone(std::move(phone))
    {
    }

    /*! For what has to be known again after the daemon died. */
    [[nodiscard]] StateStore &store() const { return m_store; }

    [[nodiscard]] SimulatedParts &phone() const { return m_phone(); }
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

private:
    StateStore &m_store;
    std::function<SimulatedParts &()> m_phone;
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
    QString title; //!< for people: "SD card"
    std::vector<SourceKind> sources;
    std::function<std::unique_ptr<Publisher>(Source &source, const Sources &all, Tree &tree)> publish;
    /*! The values that it publishes. */
    std::vector<Field> fields;
    /*! The requests that applications make. */
    std::vector<AskedRequest> requests;
    /*! The settings of its part of the simulated phone, bound to no part. */
    std::vector<Setting> settings;
    /*! The settings of each instance of that part; without a key where the part has none. */
    InstanceSettings instances;
    /*! Its part of the simulated phone. */
    std::function<std::shared_ptr<SimulatedPart>(const JsonNode &section, SimulatedParts &phone)> part;

    /*! Makes the recorder of everything beside its settings; empty where there is nothing more. */
    std::function<std::unique_ptr<FacilityRecorder>()> recorder;

    /*! This one, recorded by a \a RecorderType too. */
    template <typename RecorderType>
    [[nodiscard]] Facility recordedBy() const
    {
        Facility facility = *this;
        facility.recorder = [] { return std::make_unique<RecorderType>(); };
        return facility;
    }
    /*! This one, which says further fields. */
    [[nodiscard]] Facility saying(const std::vector<Field> &further) const
    {
        Facility facility = *this;
        facility.fields.insert(facility.fields.end(), further.begin(), further.end());
        return facility;
    }
    /*! This one, of which applications ask \a all. */
    [[nodiscard]] Facility asked(const std::vector<AskedRequest> &all) const
    {
        Facility facility = *this;
        facility.requests = all;
        return facility;
    }
    /*! This one, published by a \a PublisherType instead; \a Met are the types of further sources that it
     * follows. */
    template <typename PublisherType, typename... Met>
    [[nodiscard]] Facility publishedBy() const
    {
        Facility facility = *this;
        facility.publish = [own = name](
                               Source &source, const Sources &all, Tree &tree) -> std::unique_ptr<Publisher> {
            return std::make_unique<PublisherType>(
                own, dynamic_cast<typename PublisherType::Followed &>(source), tree, all.find<Met>()...);
        };
        return facility;
    }
};

/*! The name of the source that is the simulated phone. */
inline const QString SimulatedSource = QStringLiteral("simulated");

/*!
 * The facility \a name, which people call \a title. Its source is a \a SourceType, its part of the simulated
 * phone is a \a PartType, and it publishes the fields of \a tables.
 */
template <typename SourceType, typename PartType>
[[nodiscard]] Facility describeFacility(const QString &name, const QString &title,
    const typename FieldsPublisher<SourceType>::Tables &tables,
    const std::vector<SourceKind> &furtherSources = {})
{
    Facility facility;
    facility.name = name;
    facility.title = title;
    facility.sources = {{SimulatedSource, QStringLiteral("the simulated phone"), {},
        [](Providers &providers, const SourceOptions &) -> std::shared_ptr<Source> {
            return providers.phone().part<PartType>();
        },
        {}}};
    facility.sources.insert(facility.sources.end(), furtherSources.begin(), furtherSources.end());
    facility.publish = [name, tables](
                           Source &source, const Sources &, Tree &tree) -> std::unique_ptr<Publisher> {
        return std::make_unique<FieldsPublisher<SourceType>>(
            name, dynamic_cast<SourceType &>(source), tree, tables);
    };
    for (const auto *table : tables)
        facility.fields.insert(facility.fields.end(), table->fields().begin(), table->fields().end());
    if constexpr (requires { PartType::table(); })
        facility.settings = PartType::table().of(nullptr);
    if constexpr (requires { PartType::instanceSettings(); })
        facility.instances = PartType::instanceSettings();
    facility.part = [](const JsonNode &section, SimulatedParts &phone) -> std::shared_ptr<SimulatedPart> {
        return std::make_shared<PartType>(section, phone);
    };
    return facility;
}

/*! Every facility, in the order in which they are published; services/CMakeLists.txt names their folders. */
[[nodiscard]] const std::vector<Facility> &facilities();

/*! The parts of the simulated phone: one of each facility. */
[[nodiscard]] std::vector<PartDescription> phoneParts();

} // namespace oz::services
