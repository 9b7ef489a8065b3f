#pragma once

#include <QObject>

namespace oz::services {

/*! The vibration motor, whoever has it. */
class VibrationSource : public QObject
{
    Q_OBJECT

public:
    /*! Whether there is a motor; without one there is no vibrator object either. */
    [[nodiscard]] virtual bool isPresent() const = 0;
    /*! Lets the motor run at an \a intensity of 1 to 100 until it is told otherwise; 0 stops it. */
    virtual void drive(int intensity) = 0;

Q_SIGNALS:
    void presentChanged();
};

} // namespace oz::services
