#pragma once

#include <filesystem>
#include <string>

namespace kd_test {

/// A new directory that is removed with its contents at the end of the scope.
class ScopedDirectory {
public:
    ScopedDirectory();
    ~ScopedDirectory();
    ScopedDirectory(const ScopedDirectory&) = delete;
    ScopedDirectory& operator=(const ScopedDirectory&) = delete;

    /// The directory, without a slash at the end.
    const std::string& path() const { return Path; }

    /// The path of `name` inside.
    std::string file(const std::string& name) const { return Path + "/" + name; }

    /// Writes a file of exactly these bytes and returns its path.
    std::string write(const std::string& name, const std::string& bytes) const;

private:
    std::string Path;
};

/// All bytes of a file; the test fails if it cannot be read.
std::string readFile(const std::string& path);

}  // namespace kd_test
