/// \file
/// A file that appears whole or not at all.
#pragma once

#include <kd_lib/exchange/outputblock.h>
#include <kd_lib/export.h>

#include <memory>
#include <string>
#include <string_view>

namespace kd_lib::exchange {

namespace detail {
class NewFile;
}

/// An output file. It has no name, or a temporary one in the folder of its own, until `commit` brings it to the disk
/// and puts it in the place of what was there. It keeps mode and, where permitted, owner of a file that it replaces.
/// Through a symbolic link it replaces the file that the link leads to.
///
/// "-" is standard output. That, a pipe, a device (/dev/stdout) and the like are written straight: what was handed on
/// stays.
///
/// Every operation throws an `Error` that names the file when it fails. Threads: one thread per object.
class KD_LIB_EXPORT OutputFile : public OutputBlock {
public:
    /// Opens the file for writing. What is there stays as it is.
    explicit OutputFile(const std::string& path);

    /// Abandons what is not committed.
    ~OutputFile() override;

    /// Writes what is left to the disk, which may take long. Then `commit` has little more to do than to give the file
    /// its name.
    void sync();

    /// Writes what is left and makes the file appear. Nothing can be written afterwards.
    void commit();

    /// Leaves nothing of the file; what was there stays.
    void abandon() noexcept;

    /// True where the output goes straight to where others may read it already.
    bool isStraight() const;

protected:
    void take(std::string_view piece) override;

private:
    std::unique_ptr<detail::NewFile> File;
};

}  // namespace kd_lib::exchange
