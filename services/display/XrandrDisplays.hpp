#pragma once

#include "display/DisplaySource.hpp"

#include <QMap>
#include <QSocketNotifier>
#include <QTimer>

#include <memory>
#include <xcb/randr.h>

namespace oz::services {

/*!
 * The displays of the X server that DISPLAY names: its RandR outputs, which get identifiers from 0 in the
 * order in which they are first seen. An output is attached while it is connected and shows something. One
 * that is a built-in panel (by its "ConnectorType", or else by its name: eDP, LVDS, DSI) is internal.
 *
 * Where the server goes away, all outputs are detached until one is there again.
 */
class XrandrDisplays final : public DisplaySource
{
public:
    /*! Connects; throws SourceUnavailable where that fails, or the server is without RandR 1.2. */
    XrandrDisplays();
    ~XrandrDisplays() override;

    [[nodiscard]] std::optional<DisplayTree::Displays> displays() const override { return m_displays; }

private:
    struct Disconnect
    {
        void operator()(xcb_connection_t *connection) const { xcb_disconnect(connection); }
    };

    struct Output
    {
        int id = 0;
        bool hasMode = false;
        bool forced = false; // had no mode, and was given one without being connected
    };

    /*! What kept it from connecting; nothing where it did. */
    [[nodiscard]] QString tryConnect();
    void onReadable();
    [[nodiscard]] bool takeEvents();
    void read();
    void onLost();
    void become(const DisplayTree::Displays &displays);
    [[nodiscard]] bool isPanel(xcb_randr_output_t output, const QByteArray &name);

    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
    std::unique_ptr<QSocketNotifier> m_notifier;
    xcb_window_t m_root = 0;
    xcb_atom_t m_connectorType = 0;
    QMap<QByteArray, Output> m_outputs; // by their names
    DisplayTree::Displays m_displays;
    QTimer m_retry;
};

} // namespace oz::services
