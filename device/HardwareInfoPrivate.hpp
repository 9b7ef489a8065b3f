#pragma once

namespace oz::device {

/*! Empty: everything is read where it is asked for. */
class HardwareInfoPrivate
{
};

} // namespace oz::device
