#pragma once

#include <oz/device/DisplayAspectType.hpp>
#include <oz/device/DisplayTechnology.hpp>
#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>
#include <QSize>
#include <QSizeF>
#include <QString>
#include <QVariant>

namespace oz::device {

class DisplayInfoPrivate;

/*!
 * One display of the device: the screen it has, or one outside of it, with a cable or without.
 *
 * The values are there from construction on and change from the event loop. All of them are read anew when
 * the display is attached or detached and when its size changes while it is attached, also those that are
 * said to be constant; no signal tells of these. Where no display has the identifier, or the display service
 * cannot be reached, the object stays invalid: its values are the unknown ones for good. A display that is
 * detached, or taken away, keeps the values it had last.
 *
 * Source: the display service.
 *
 * Create and use an instance on one thread, which has an event loop by then: without one, changes are taken
 * in on the platform's own thread, unsynchronized. Do not move it to another thread. Failures are logged as
 * warnings of the category "oz.device".
 */
class OZ_DEVICE_EXPORT DisplayInfo : public QObject
{
    Q_OBJECT
    /*! The identifier given at construction, whether or not there is such a display. */
    Q_PROPERTY(int displayId READ displayId CONSTANT FINAL)
    /*! The service's name for the display; empty where not known. */
    Q_PROPERTY(QString displayName READ displayName CONSTANT FINAL)
    /*! Width and height in pixels as the user sees them, so turned with the display; (-1, -1) where not
     * known.
     */
    Q_PROPERTY(QSize pixelSize READ pixelSize NOTIFY pixelSizeChanged FINAL)
    /*! Width and height in millimetres, in the display's native orientation; (-1, -1) where not known, 0 for
     * what the display does not tell. */
    Q_PROPERTY(QSizeF physicalSize READ physicalSize CONSTANT FINAL)
    /*! Pixels per metre, horizontally and vertically; 0 where physicalSize is 0, and without meaning where
     * one of the sizes is not known. */
    Q_PROPERTY(QSizeF resolution READ resolution NOTIFY pixelSizeChanged FINAL)
    /*! How the width in pixels compares with the height, as it was at the last change; Landscape in an
     * invalid object, Square for a size that is not known. */
    Q_PROPERTY(oz::device::DisplayAspectType::Type aspectType READ aspectType CONSTANT FINAL)
    /*! True if the display can be seen now; false also for unknown. */
    Q_PROPERTY(bool attached READ isAttached NOTIFY attachedChanged FINAL)
    /*! True if the display can be taken off; false also for unknown. */
    Q_PROPERTY(bool detachable READ isDetachable CONSTANT FINAL)
    /*! The technology of the display; Unknown where it does not tell. */
    Q_PROPERTY(oz::device::DisplayTechnology::Type displayTechnology READ displayTechnology CONSTANT
            REVISION 1 FINAL)
    /*! True if the display is reached over the air, which is so if its name holds "miracast". */
    Q_PROPERTY(bool wireless READ isWireless CONSTANT REVISION 2 FINAL)

public:
    /*! Describes the primary display. */
    explicit DisplayInfo(QObject *parent = nullptr);
    /*! Describes the display with the identifier \a displayId. */
    explicit DisplayInfo(int displayId, QObject *parent = nullptr);
    ~DisplayInfo() override;

    /*! The identifier of the device's own display; -1 where it has none. */
    [[nodiscard]] static int primaryDisplayId();
    /*! The identifier of the first display that is not the device's own; -1 where there is none. */
    [[nodiscard]] static int secondaryDisplayId();

    /*! True if the display was found at construction. */
    [[nodiscard]] bool isValid() const;
    //!@{
    /*! The getter of the property. */
    [[nodiscard]] int displayId() const;
    [[nodiscard]] QString displayName() const;
    [[nodiscard]] QSize pixelSize() const;
    [[nodiscard]] QSizeF physicalSize() const;
    [[nodiscard]] QSizeF resolution() const;
    [[nodiscard]] DisplayAspectType::Type aspectType() const;
    [[nodiscard]] bool isAttached() const;
    [[nodiscard]] bool isDetachable() const;
    [[nodiscard]] DisplayTechnology::Type displayTechnology() const;
    [[nodiscard]] bool isWireless() const;
    //!@}

Q_SIGNALS:
    /*! The display was attached or detached. Its other values may have changed with that; no other signal
     * says so. */
    void attachedChanged(bool attached);
    /*! The size changed while the display stayed attached. */
    void pixelSizeChanged(QSize pixelSize);
    /*! Follows each pixelSizeChanged(QSize) with a map of the same values: "width" and "height". */
    void pixelSizeChanged(QVariant pixelSize);

private:
    DisplayInfoPrivate *d;
};

} // namespace oz::device
