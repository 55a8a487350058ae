/// \file
/// A file that appears whole or not at all.
#pragma once

#include "output.h"

#include <ostream>
#include <string>

namespace kd_tool {

/// Written under a temporary name in the folder of the final one. `commit` brings it to the disk and gives
/// it its final name; without that nothing is left of it.
class AtomicFile {
public:
    explicit AtomicFile(const std::string& path);
    ~AtomicFile() = default;
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

    /// A failed write shows in its state.
    std::ostream& stream() { return Stream; }

    /// Throws a `Failure` that names the file when anything could not be written.
    void commit();

private:
    /// The file under its temporary name. It owns itself: whatever fails behind it, it goes.
    struct TemporaryFile {
        explicit TemporaryFile(const std::string& path);
        ~TemporaryFile();
        TemporaryFile(const TemporaryFile&) = delete;
        TemporaryFile& operator=(const TemporaryFile&) = delete;

        std::string Name;  ///< empty once it has its final name
        int Descriptor;    ///< -1 once it is closed
    };

    [[noreturn]] void fail(int error) const;

    std::string Path;
    TemporaryFile Temporary;
    DescriptorBuffer Buffer;
    std::ostream Stream;
};

}  // namespace kd_tool
