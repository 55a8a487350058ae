#pragma once

#include <unistd.h>

namespace kd_test {

/// If this process runs as root, makes it run as a user without rights. This cannot be undone, so only the child
/// process of a death test may call it.
inline void giveUpRights()
{
    constexpr unsigned nobody = 65534;
    if (::getuid() == 0 && (::setresgid(nobody, nobody, nobody) != 0 || ::setresuid(nobody, nobody, nobody) != 0)) {
        ::_exit(2);
    }
}

}  // namespace kd_test
