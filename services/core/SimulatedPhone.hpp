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
    /*! Does it, with as many arguments as allowed; throws Error where that is impossible. */
    std::function<void(const QStringList &arguments)> run;

    /*! A verb that switches something, with the argument "on" or "off". */
    static SimVerb onOff(
        const QString &verb, const QString &description, const std::function<void(bool on)> &turn);
};

/*! What the arguments of verbs mean. Each throws Error, which says what was expected. */
namespace SimArgument {
[[nodiscard]] int integer(const QString &word, int least, int most);
[[nodiscard]] double number(const QString &word, double least, double most);
/*! The place of \a word among \a words. */
[[nodiscard]] int oneOf(const QString &word, const QStringList &words);
} // namespace SimArgument

/*! One facility of the simulated phone. */
class SimulatedPart
{
public:
    virtual ~SimulatedPart() = default;
    /*! The name of its section in the phone's file, and in `ozdevice sim`. */
    [[nodiscard]] virtual QString name() const = 0;
    /*! The names of its instances, one of which stands before each verb; an only one needs no name. */
    [[nodiscard]] virtual QStringList instances() const { return {QString()}; }
    /*! What \a instance can be told; all instances can be told the same. */
    [[nodiscard]] virtual std::vector<SimVerb> verbs(const QString &instance) = 0;
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

    /*!
     * Does what \a words, "[INSTANCE] VERB [ARGUMENT...]", tell the part \a name; the reason where that
     * fails, which says what was expected.
     */
    [[nodiscard]] QString run(const QString &name, QStringList words);

    /*!
     * Every part: "verbs", as maps with "name", "arguments" and "help", and "instances" where there are any
     * that have names.
     */
    [[nodiscard]] QVariantMap describe() const;

private:
    std::vector<std::unique_ptr<SimulatedPart>> m_parts;
};

} // namespace oz::services
