/// \file
/// A file that appears whole or not at all.
#pragma once

#include "output.h"

#include <memory>
#include <ostream>
#include <string>

namespace kd_tool {

/// Written under a temporary name in the folder of the final one. `commit` brings it to the disk and gives
/// it its final name; without that nothing is left of it.
class AtomicFile {
public:
    explicit AtomicFile(const std::string& path);
    ~AtomicFile();
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

    /// A failed write shows in its state.
    std::ostream& stream() { return Stream; }

    /// Throws a `Failure` that names the file when anything could not be written.
    void commit();

private:
    [[noreturn]] void fail(int error) const;

    std::string Path;
    std::string Temporary;
    int Descriptor;
    std::unique_ptr<DescriptorBuffer> Buffer;
    std::ostream Stream;
};

}  // namespace kd_tool
