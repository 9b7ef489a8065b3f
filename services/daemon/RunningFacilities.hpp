#pragma once

#include "daemon/Configuration.hpp"
#include "facility/Facility.hpp"
#include "phone/SimulatedPhone.hpp"
#include "scenario/Scenario.hpp"

#include <QObject>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace oz::services {

/*! The sources and publishers of one configuration, and the simulated phone where one of them needs it. */
class RunningFacilities : public QObject
{
public:
    /*! Makes the sources; throws Error. The simulated phone is made from \a phoneFile, or else from the
     * configuration's file. */
    RunningFacilities(
        const Configuration &configuration, const std::optional<JsonNode> &phoneFile, StateStore &store);

    /*! Publishes everything; apart from making the sources, so that a wrong configuration disturbs nothing.
     */
    void publish(Tree &tree);
    [[nodiscard]] bool hasSettled() const;
    void onChange(QObject *context, const std::function<void()> &slot);

    /*! The name of each facility's source. */
    [[nodiscard]] QVariantMap sources() const;
    /*! The facilities that the same source fed \a before, which are names as sources() gives them. */
    [[nodiscard]] QStringList continuedFrom(const QVariantMap &before) const;
    /*! Of each facility "title", "source", "state" and, where there is one, "reason"; "auto" for a source
     * that the configuration does not name. */
    [[nodiscard]] QVariantMap states() const;
    /*! The names of sinks in their reasons. */
    [[nodiscard]] QStringList sinkNames() const;

    /*! Null where nothing uses the phone. */
    [[nodiscard]] SimulatedPhone *phoneInUse() const { return m_phone.get(); }
    /*! Throws Error where nothing uses it. */
    [[nodiscard]] SimulatedPhone &phone() const;
    /*! Tells the part \a name of the phone; throws Error where it cannot be told \a words. */
    void tellPhone(const QString &name, const QStringList &words);
    /*! Tells orders to a phone that is like this one, and that nobody sees. */
    [[nodiscard]] Scenario::CheckOrder makeOrderCheck();

private:
    struct Row
    {
        const Facility *facility;
        QString source;
        bool isAutomatic; // not by name in the configuration
        QString reason; // why it is none
        std::unique_ptr<Publisher> publisher;
    };

    [[nodiscard]] QString simulatedPart(const QString &name) const;
    [[nodiscard]] Row rowOf(const Facility &facility);
    [[nodiscard]] SimulatedPhone &usePhone(const std::optional<JsonNode> &file, StateStore &store);
    [[nodiscard]] std::vector<SimVerb> furtherVerbs(const QString &name, const QString &instance);

    Configuration m_configuration;
    Tree *m_tree = nullptr;
    std::optional<JsonNode> m_phoneFile;
    std::unique_ptr<SimulatedPhone> m_phone;
    Providers m_providers;
    Sources m_sources;
    std::vector<Row> m_rows; // last, so that publishers go before what they follow
};

} // namespace oz::services
