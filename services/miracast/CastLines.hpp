#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QSize>
#include <QString>
#include <QStringList>

#include <chrono>
#include <optional>
#include <variant>

namespace oz::services {

/*! The longest line of either side, in bytes. */
inline constexpr qsizetype MaxCastLine = 65'536;

/*! What ozcast says in a line, checked: a JSON object with one member, which is named by what it says. */
namespace CastLines {

/*! What it can do; said first, and again whenever that has changed. */
struct Hello
{
    int version = 0;
    QString capture; //!< how it takes the screen; empty where it cannot
    QString captureRemark; //!< which capture and why, for a person
    QString encoder; //!< empty for none
    QString audio; //!< the encoder of sound; empty for none
    QString missing; //!< what is not installed, for a person; empty where all is there

    bool operator==(const Hello &) const = default;
};

/*! Which of the addresses of a probe accept connections. */
struct Probed
{
    int id = 0;
    QStringList accepting;
};

/*! What a cast waits for, for a person. */
struct Step
{
    int id = 0;
    QString text;
    std::optional<std::chrono::milliseconds> limit = {}; //!< for this step, where it has one of its own
};

/*! The first packet of a cast is out, or it goes on after a pause. */
struct Playing
{
    int id = 0;
    QSize size;
};

struct Paused
{
    int id = 0;
};

/*! A cast is over. */
struct Ended
{
    enum class Why {
        Asked,
        Sink, //!< the sink has ended it
        Lost, //!< the sink does not answer
        Refused, //!< by the sink
        Failed, //!< the capture, an encoder or ozcast
    };
    int id = 0;
    Why why = Why::Failed;
    QString text; //!< for a person
};

/*! Something that this version does not know. */
struct Unknown
{
};

using Line = std::variant<Hello, Probed, Step, Playing, Paused, Ended, Unknown>;

/*! Nothing where the line is malformed, as \a problem then tells. */
[[nodiscard]] std::optional<Line> read(const QByteArray &line, QString *problem);

/*! The line that says \a kind with these \a values. */
[[nodiscard]] QByteArray write(const QString &kind, const QJsonObject &values);

} // namespace CastLines

} // namespace oz::services
