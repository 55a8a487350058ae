#pragma once

#include <unistd.h>

namespace kd_test {

/// Makes this process, where it belongs to root, one of a user without rights. There is no way back, so
/// only a death test's child may do it.
inline void giveUpRights()
{
    constexpr unsigned nobody = 65534;
    if (::getuid() == 0 && (::setresgid(nobody, nobody, nobody) != 0 || ::setresuid(nobody, nobody, nobody) != 0)) {
        ::_exit(2);
    }
}

}  // namespace kd_test
