#pragma once

#include <QString>

namespace oz::device {

/*! An id that no other call in this process gets: "1", "2" and so on. Any thread may call it. */
[[nodiscard]] QString createKey();

} // namespace oz::device
