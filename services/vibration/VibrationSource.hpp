#pragma once

#include "source/Source.hpp"

namespace oz::services {

struct VibrationState
{
    std::optional<bool> present; //!< whether there is a motor

    bool operator==(const VibrationState &) const = default;
};

/*! The vibration motor, whoever has it. */
class VibrationSource : public StateSource<VibrationState>
{
public:
    /*! Lets the motor run at an \a intensity of 1 to 100 until it is told otherwise; 0 stops it. */
    virtual void drive(int intensity, const Done &done) = 0;
};

} // namespace oz::services
