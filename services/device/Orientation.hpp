#pragma once

#include "source/Source.hpp"
#include "table/Fields.hpp"

namespace oz::services {

/*! Which side of the device is up. */
enum class Orientation {
    TopUp,
    BottomUp,
    LeftUp,
    RightUp,
    FaceUp,
    FaceDown,
    Undefined, //!< it cannot be told
};

[[nodiscard]] const WordList<Orientation> &orientationWords();

/*! How the device is held, as any source knows it. */
struct OrientationState
{
    std::optional<Orientation> orientation; //!< nothing while nobody measures it

    bool operator==(const OrientationState &) const = default;
};

class OrientationSource : public StateSource<OrientationState>
{
public:
    /*! True while anybody reads the orientation, for a source that measures only then. */
    virtual void setRead(bool isRead) { Q_UNUSED(isRead) }
};

/*! How it stands in the tree. */
[[nodiscard]] const Fields<OrientationState> &orientationFields();

} // namespace oz::services
