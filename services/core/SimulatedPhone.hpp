#pragma once

#include "core/JsonFile.hpp"

#include <QObject>
#include <QStringList>
#include <QVariantList>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace oz::services {

/*! A thing that a part of the phone can be told to do while it runs. */
struct SimVerb
{
    QString name;
    QStringList arguments; //!< their names, for help; "[NAME]" for one that may be left out
    QString help;
    /*! Does it; the reason where that is impossible, empty where it is done. Gets as many arguments as
     * allowed. */
    std::function<QString(const QStringList &arguments)> run;
};

/*! One facility of the simulated phone. */
class SimulatedPart
{
public:
    virtual ~SimulatedPart() = default;
    /*! The name of its section in the phone's file, and in `ozdevice sim`. */
    [[nodiscard]] virtual QString name() const = 0;
    [[nodiscard]] virtual std::vector<SimVerb> verbs() = 0;
};

/*!
 * The phone that there is not: one part a facility, set up from a commented JSON file and changed by verbs.
 * What a part is made from is its own section of the file.
 */
class SimulatedPhone
{
public:
    /*! Takes over the phone's file; throws Error, naming file, line and key, where it is wrong. */
    explicit SimulatedPhone(const JsonNode &file);
    ~SimulatedPhone();

    /*! The part of type \a Part. */
    template <typename Part>
    [[nodiscard]] Part &part()
    {
        for (const auto &candidate : m_parts) {
            if (auto *found = dynamic_cast<Part *>(candidate.get()))
                return *found;
        }
        Q_UNREACHABLE();
    }

    /*! Does \a verb of the part \a name; the reason where that fails, which says what was expected. */
    [[nodiscard]] QString run(const QString &name, const QString &verb, const QStringList &arguments);

    /*! Every part with its verbs, as maps with "name", "arguments" and "help". */
    [[nodiscard]] QVariantMap describe() const;

private:
    std::vector<std::unique_ptr<SimulatedPart>> m_parts;
};

} // namespace oz::services
