#pragma once

#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>

namespace oz::device {

class VibrationControllerPrivate;

/*!
 * The vibration motor: starts it for a time or until it is stopped, and stops it. A later request, of
 * whichever object, replaces the former one, and the motor runs on when the object that started it is gone.
 *
 * Requests are messages to the vibrator service, which does not answer; one that cannot be sent is logged as
 * a warning of the category "oz.device", and RequestError has its error.
 *
 * Source: each call opens the object "/pps/services/vibrator", writes to it and closes it.
 *
 * Any thread may call it, but do not move an instance to another.
 */
class OZ_DEVICE_EXPORT VibrationController : public QObject
{
    Q_OBJECT
    /*! True if the vibrator service is there and this process may use it: asked anew at each call. */
    Q_PROPERTY(bool supported READ isSupported CONSTANT FINAL)

public:
    /*! Belongs to \a parent. */
    explicit VibrationController(QObject *parent = nullptr);
    ~VibrationController() override;

    /*! The getter of the property. */
    [[nodiscard]] Q_INVOKABLE bool isSupported() const;

public Q_SLOTS:
    /*! Vibrates at the intensity 100 until stopped. */
    void start();
    /*! The same, whatever the \a intensity. */
    void start(uint intensity);
    /*!
     * Vibrates at the intensity 100, whatever \a intensity is, for so many \a milliseconds; from 2147483647
     * on until stopped.
     */
    void start(uint intensity, uint milliseconds);
    /*! Stops the motor. */
    void stop();

private:
    // All that there is to know stands in the calls.
    VibrationControllerPrivate *d = nullptr;
};

} // namespace oz::device
