#pragma once

#include "source/Source.hpp"

namespace oz::services {

/*! How the device is held: which of its sides is up. */
enum class Orientation {
    TopUp,
    BottomUp,
    LeftUp,
    RightUp,
    FaceUp,
    FaceDown,
    Undefined, //!< it cannot be told
};

struct OrientationState
{
    std::optional<Orientation> orientation; //!< nothing while nobody measures it

    bool operator==(const OrientationState &) const = default;
};

/*! How the device is held, whoever knows it. */
class OrientationSource : public StateSource<OrientationState>
{
public:
    /*! Whether anybody reads the orientation, for a source that measures it only then. */
    virtual void setRead(bool isRead) { Q_UNUSED(isRead) }
};

} // namespace oz::services
