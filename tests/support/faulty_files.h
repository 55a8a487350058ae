#pragma once

#include <sqlite3.h>

#include <cstdint>

namespace kd_test {

/// While this object exists, a chosen operation on SQLite's files fails, or all from that one on: opening, reading,
/// writing, syncing, truncating or removing. One object at a time.
class FaultyFiles {
public:
    enum class Kind { Once, FromThenOn };

    FaultyFiles();
    ~FaultyFiles();
    FaultyFiles(const FaultyFiles&) = delete;
    FaultyFiles& operator=(const FaultyFiles&) = delete;

    /// The operation of this number fails, counted from now, from 1.
    void failAt(std::uint64_t operation, Kind kind);

    /// No operation fails any longer.
    void stop();

    /// Whether the operation was reached.
    bool failed() const;
};

}  // namespace kd_test
