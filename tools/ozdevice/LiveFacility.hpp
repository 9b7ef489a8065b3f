#pragma once

#include "meta/SignalTap.hpp"
#include "ozdevice/FacilityInstance.hpp"

#include <oz/PpsObject.hpp>

#include <QDeadlineTimer>

#include <functional>
#include <memory>
#include <vector>

namespace oz::tools {

/*! A facility, or one of its instances, with its present values and those that have just changed. */
class LiveFacility
{
public:
    struct Value
    {
        QString name;
        QString text;
        QString unit;
        QDeadlineTimer highlight{}; //!< runs while the last change is recent

        [[nodiscard]] bool isFresh() const { return !highlight.hasExpired(); }
    };

    /*! Calls \a onChange after each change of a value. Throws CommandError if \a selected does not exist. */
    LiveFacility(const FacilityEntry &entry, const QString &selected, const std::function<void()> &onChange);
    LiveFacility(const LiveFacility &) = delete;
    LiveFacility &operator=(const LiveFacility &) = delete;

    [[nodiscard]] const FacilityInstance &instance() const { return m_instance; }
    [[nodiscard]] const std::vector<Value> &values() const { return m_values; }
    /*! The values for a line of an overview: the facility's main ones, then others that are fresh. */
    [[nodiscard]] std::vector<Value> glance() const;

    /*! Reads again the values that the library does not announce. */
    void poll();

private:
    void subscribe(const QString &path, const std::function<void()> &onChange);
    void update();
    [[nodiscard]] std::vector<Value> read() const;

    FacilityInstance m_instance;
    std::vector<std::unique_ptr<PpsObject>> m_objects;
    std::vector<Value> m_values;
    std::unique_ptr<meta::SignalTap> m_tap;
};

} // namespace oz::tools
