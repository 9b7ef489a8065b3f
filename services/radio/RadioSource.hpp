#pragma once

#include <QList>
#include <QObject>
#include <QStringList>

#include <optional>

namespace oz::services {

/*! What the cellular radio can do and does, whoever knows it. Technologies and services: CellularTerms. */
class RadioSource : public QObject
{
    Q_OBJECT

public:
    struct Bands
    {
        QList<int> cdma; //!< band classes: 0, 1, 15
        QList<int> gsm; //!< MHz: 850, 900, 1800, 1900
        QList<int> umts; //!< operating bands: 1 to 10
        QList<int> lte; //!< operating bands: 1 to 31
    };

    struct State
    {
        bool poweredOn = false;
        QStringList technologies; //!< of the hardware
        QStringList services; //!< of the hardware
        Bands bands; //!< of the hardware
        QStringList enabledTechnologies; //!< by the user
        QStringList networks; //!< the technology of each network in use
    };

    /*! The state; nothing while it is not known yet, which is then not published either. */
    [[nodiscard]] virtual std::optional<State> state() const = 0;

Q_SIGNALS:
    void changed();
};

} // namespace oz::services
