#pragma once

#include <QJsonObject>
#include <QString>

namespace oz::cast {

/*! How a cast ended. */
struct CastEnd
{
    enum Reason {
        Asked, //!< this side was told to end it
        Sink, //!< the display ended it in order
        Lost, //!< the display is unreachable or silent, or the connection broke
        Refused, //!< the display refused a step, or said what cannot be understood
        Failed, //!< the picture, the codec or this program failed
    };

    Reason reason;
    QString text; //!< for a person

    /*! As messages have it, for the cast with the number \a id. */
    [[nodiscard]] QJsonObject toJson(int id) const;
    [[nodiscard]] static CastEnd fromJson(const QJsonObject &json);
};

} // namespace oz::cast
