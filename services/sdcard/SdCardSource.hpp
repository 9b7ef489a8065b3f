#pragma once

#include <QObject>

#include <optional>

namespace oz::services {

/*! What the removable SD card is like, whoever knows it. */
class SdCardSource : public QObject
{
    Q_OBJECT

public:
    struct State
    {
        bool mounted = false;
        bool busy = false; //!< being read or written
    };

    /*! The card's state; nothing while it is not known yet, which is then not published either. */
    [[nodiscard]] virtual std::optional<State> state() const = 0;

Q_SIGNALS:
    void changed();
};

} // namespace oz::services
