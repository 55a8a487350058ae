#pragma once

#include <unistd.h>

namespace kd_test {

/// If this process belongs to root, makes it a process of a user without rights. There is no way back, so
/// only the child process of a death test may do it.
inline void giveUpRights()
{
    constexpr unsigned nobody = 65534;
    if (::getuid() == 0 && (::setresgid(nobody, nobody, nobody) != 0 || ::setresuid(nobody, nobody, nobody) != 0)) {
        ::_exit(2);
    }
}

}  // namespace kd_test
