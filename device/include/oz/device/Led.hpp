#pragma once

#include <oz/device/LedColor.hpp>
#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>

namespace oz::device {

class LedPrivate;

/*!
 * The notification LED: flashes in a colour, a number of times or until it is told to stop.
 *
 * A request is a message to the LED service, which tells nobody whether it took it: without the service the
 * values here change as with it, but no flash is ever seen; RequestError has the error of a message that
 * cannot be sent. Flashes are counted as the service's status shows
 * the LED lit in this object's colour, whoever asked for that, so two objects of one colour count each
 * other's flashes; what was lit when a request began is none. Destroying an active object cancels its
 * request.
 *
 * Source: the object "/pps/services/led/status"; requests go to "/pps/services/led/control".
 *
 * flash(), cancel(), setColor() and resetColor() may be called from any thread, and so may the getters;
 * signals come from the thread of the call, while the object is locked. Flashes are counted from the event
 * loop of the thread that created the object. Do not move it to another.
 */
class OZ_DEVICE_EXPORT Led : public QObject
{
    Q_OBJECT
    /*! The colour of this object's flashes; Red at first. While active, a new colour begins the request anew
     * with the flashes that are left, and None cancels it. */
    Q_PROPERTY(
        oz::device::LedColor::Type color READ color WRITE setColor RESET resetColor NOTIFY colorChanged FINAL)
    /*! How many flashes are still to be seen; 0 while idle, -1 while flashing until cancelled. Changes that a
     * call of flash() or cancel() makes are not signalled. */
    Q_PROPERTY(int remainingFlashCount READ remainingFlashCount NOTIFY remainingFlashCountChanged FINAL)
    /*! True if a request is under way: remainingFlashCount is not 0. */
    Q_PROPERTY(bool active READ isActive NOTIFY activeChanged FINAL)

public:
    /*! The colour Red. */
    explicit Led(QObject *parent = nullptr);
    /*! The colour \a color. */
    explicit Led(LedColor::Type color, QObject *parent = nullptr);
    ~Led() override;

    /*! The getter of the property. */
    [[nodiscard]] LedColor::Type color() const;
    /*!
     * Sets the colour; a value that is one above a colour with red in it means that colour. Announces it, but
     * not where None cancels a request, which activeChanged tells alone. A value without a name ends a
     * request too, which nothing but the colour announces.
     */
    void setColor(LedColor::Type color);
    /*! setColor(Red). */
    void resetColor();
    //!@{
    /*! The getter of the property. */
    [[nodiscard]] int remainingFlashCount() const;
    [[nodiscard]] bool isActive() const;
    //!@}

public Q_SLOTS:
    /*! Flashes until cancelled. */
    void flash();
    /*!
     * Flashes \a count times, until cancelled where that is negative. Does nothing where the colour is None
     * or has no name. While active, 0 cancels, and another count replaces what is left here; the request that
     * is under way stays as it is.
     */
    void flash(int count);
    /*! Ends the request that is under way. */
    void cancel();

Q_SIGNALS:
    //!@{
    /*!
     * The property of this name has changed. A request begins with activeChanged(true); each flash that is
     * seen is a remainingFlashCountChanged, except the last, which is activeChanged(false).
     */
    void colorChanged(oz::device::LedColor::Type value);
    void remainingFlashCountChanged(int value);
    void activeChanged(bool value);
    //!@}

    /*! Follows each colorChanged(LedColor::Type) with the same value as a number. */
    void colorChanged(int value);

private:
    LedPrivate *d;
};

} // namespace oz::device
