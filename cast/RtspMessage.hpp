#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace oz::cast {

/*! A request or an answer of RTSP 1.0. */
struct RtspMessage
{
    struct Header
    {
        QByteArray name;
        QByteArray value;
    };

    QByteArray method; //!< empty for an answer
    QByteArray target; //!< of a request
    int status = 0; //!< of an answer
    QByteArray reason; //!< of an answer
    QList<Header> headers = {};
    QByteArray body = {};

    [[nodiscard]] bool isRequest() const { return !method.isEmpty(); }
    /*! The value of the first header of that name, whatever its case; empty without one. */
    [[nodiscard]] QByteArray header(const char *name) const;
    /*! The number that joins an answer to its request (CSeq); -1 without one. */
    [[nodiscard]] int sequence() const;
    /*! The value of the parameter \a name of the body, which has one on each line; nullopt without it. */
    [[nodiscard]] std::optional<QByteArray> parameter(const char *name) const;
    /*! As it is sent, with the Content-Length of a body. */
    [[nodiscard]] QByteArray toBytes() const;
};

/*! Takes messages out of a stream of bytes from a stranger. */
class RtspReader
{
public:
    static constexpr qsizetype MaxHeaderSize = 16 * 1024;
    static constexpr qsizetype MaxBodySize = 64 * 1024;

    void feed(const QByteArray &bytes) { m_buffer += bytes; }
    /*! The next whole message; nullopt if there is none yet, and for good once there is a problem(). */
    [[nodiscard]] std::optional<RtspMessage> next();
    /*! Why the stream cannot be read any further, for a person; empty while it can. */
    [[nodiscard]] const QString &problem() const { return m_problem; }

private:
    [[nodiscard]] bool readHeader();
    [[nodiscard]] bool readLines(const QByteArray &header);
    bool fail(const char *problem);

    QByteArray m_buffer;
    RtspMessage m_message; // whose body is missing while m_bodySize is not negative
    qsizetype m_bodySize = -1;
    QString m_problem;
};

} // namespace oz::cast
