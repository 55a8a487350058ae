/// \file
/// The rules for calls into SQLite.
#pragma once

#include <sqlite3.h>

namespace kd_lib::detail {

/// Calls until the answer is something else than busy, at once, six times in all.
template <class Call>
int retriedWhileBusy(Call call)
{
    constexpr int callsInAll = 6;
    int answer = call();
    for (int calls = 1; answer == SQLITE_BUSY && calls < callsInAll; ++calls) {
        answer = call();
    }
    return answer;
}

}  // namespace kd_lib::detail
