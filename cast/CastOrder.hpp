#pragma once

#include "DisplayControl.hpp"
#include "Elements.hpp"
#include "Screen.hpp"

#include <QHostAddress>
#include <QJsonObject>

#include <chrono>

namespace oz::cast {

/*! The times after which a display that does nothing is given up. */
struct CastLimits
{
    std::chrono::milliseconds step{6000}; //!< for each of its steps
    std::chrono::milliseconds keepAlive{5000}; //!< between questions whether it is there
    std::chrono::milliseconds connect{6000}; //!< until it connects
};

/*! A cast that is to be made. */
struct CastOrder
{
    int id = 0;
    QHostAddress display;
    quint16 controlPort = 0; //!< 0 where the display connects without being asked to
    DisplayControl::Source source;
    CastLimits limits;
    Picture picture = Picture::OfScreen;
    QString videoEncoder;
    QString audioEncoder; //!< empty for no sound

    /*! The order in a message. Members that it lacks stay as they are in \a fallback. */
    [[nodiscard]] static CastOrder fromJson(const QJsonObject &json, const CastOrder &fallback);
    [[nodiscard]] QJsonObject toJson() const;
    /*! What is wrong with it, for a person; empty if nothing is. */
    [[nodiscard]] QString problem() const;
};

} // namespace oz::cast
