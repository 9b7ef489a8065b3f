#pragma once

#include "Screen.hpp"

#include <oz/GrowingPause.hpp>

#include <QObject>
#include <QSocketNotifier>
#include <QTimer>

#include <memory>

namespace oz::cast {

/*! Knows the screen that can be cast, as it comes and goes. It waits for no screen's server. */
class ScreenWatch : public QObject
{
    Q_OBJECT

public:
    explicit ScreenWatch(Picture picture);

    [[nodiscard]] const Screen &screen() const { return m_screen; }

    /*! True while a thread of the program waits for a screen's server. */
    [[nodiscard]] static bool isAnyLooking();

Q_SIGNALS:
    /*! Another screen is known, or that there is none. The first time it is emitted, it is known at all. */
    void changed();

private:
    void look();
    void onFound(const Screen &screen);
    void onInput();

    const Picture m_picture;
    Screen m_screen;
    std::unique_ptr<QSocketNotifier> m_input;
    GrowingPause<> m_pause;
    QTimer m_again;
    QTimer m_grace;
};

} // namespace oz::cast
