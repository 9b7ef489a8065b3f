#pragma once

#include "core/Mishaps.hpp"

#include <QObject>

#include <chrono>
#include <optional>

namespace oz::services {

/*! The notification LED, whoever has it: its elements, and how long a flash is. */
class LedSource : public QObject
{
    Q_OBJECT

public:
    struct Elements
    {
        bool red = false;
        bool green = false;
        bool blue = false;

        bool operator==(const Elements &) const = default;
    };

    struct Flash
    {
        std::chrono::milliseconds on{250};
        std::chrono::milliseconds off{250}; //!< at least, before the next one
    };

    /*! Which elements are lit; nothing while it is not known yet, which is then not published either. */
    [[nodiscard]] virtual std::optional<Elements> lit() const = 0;
    /*! Lights these elements and no others. */
    virtual void light(const Elements &elements) = 0;
    [[nodiscard]] virtual Flash flash() const = 0;
    /*! What goes wrong with the request \a message that has come, where that can be arranged. */
    [[nodiscard]] virtual std::optional<Mishap> takeMishap(const QString & /*message*/) { return {}; }

Q_SIGNALS:
    void changed();
};

} // namespace oz::services
