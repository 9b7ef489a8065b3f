#pragma once

#include "display/Displays.hpp"

#include <QTimer>

#include <memory>

namespace oz::services {

/*!
 * The displays of an X server: its RandR outputs, which get identifiers from 0 in the order in which they are
 * first seen. An output is attached while it is connected and shows something. One that is a built-in panel
 * (by its "ConnectorType", or else by its name: eDP, LVDS, DSI) is internal.
 *
 * A thread of its own talks to the server, so that one which does not answer holds nobody up. Where the
 * server is not there, or says nothing for the grace time, the source is absent until it does.
 */
class XrandrDisplays final : public DisplaySource
{
    Q_OBJECT

public:
    /*! The displays of the server that \a display names, or DISPLAY where that is empty. */
    explicit XrandrDisplays(const QString &display = {});
    ~XrandrDisplays() override;

private:
    struct Shared;
    class Reader;

    /*! While the reader waits for the server, for whom that takes too long is told. */
    void onWaiting(bool waits);

    QString m_server;
    std::shared_ptr<Shared> m_shared;
    QTimer m_grace;
};

} // namespace oz::services
