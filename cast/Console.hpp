#pragma once

#include "CastOrder.hpp"
#include "CastProcess.hpp"

#include <QObject>

#include <optional>

namespace oz::cast {

/*! A display's address, and the port of its control connection, as a person writes them. */
struct DisplayName
{
    QHostAddress address;
    quint16 controlPort;

    /*! Reads "10.0.0.2", "10.0.0.2:7250" or "[fd00::2]:7250". */
    [[nodiscard]] static std::optional<DisplayName> parse(const QString &text);
};

/*! One cast for a person at a terminal, with its steps on standard output. */
class Console : public QObject
{
    Q_OBJECT

public:
    explicit Console(const CastOrder &order);

    void stop() { m_cast.end(); }

Q_SIGNALS:
    void finished(int status);

private:
    CastProcess m_cast;
};

/*! Prints what could be cast, and with what. Returns false if nothing can. */
[[nodiscard]] bool printCheck(Picture picture, const Elements &elements);

} // namespace oz::cast
