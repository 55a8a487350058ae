/// \file
/// The rules for calls into SQLite.
#pragma once

#include <sqlite3.h>

namespace kd_lib::detail {

/// Makes a call, and repeats it at once while its result is "busy": at most six calls in all.
template <class Call>
int retriedWhileBusy(Call call)
{
    constexpr int callsInAll = 6;
    int result = call();
    for (int calls = 1; result == SQLITE_BUSY && calls < callsInAll; ++calls) {
        result = call();
    }
    return result;
}

}  // namespace kd_lib::detail
