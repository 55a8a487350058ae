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

/// An output file. It has no name, or a temporary one in the same folder, until `commit` writes it to the disk and
/// gives it its name, in place of an existing file. It keeps the mode and, if permitted, the owner of the file that it
/// replaces. If the path is a symbolic link, the file that the link leads to is replaced.
///
/// "-" is standard output. Standard output, pipes and devices (/dev/stdout) are written directly: output cannot be
/// taken back.
///
/// An operation that fails throws an `Error` that names the file. Threads: one thread per object.
class KD_LIB_EXPORT OutputFile : public OutputBlock {
public:
    /// Opens the file for writing. An existing file stays unchanged until `commit`.
    explicit OutputFile(const std::string& path);

    /// Discards the output unless it is committed.
    ~OutputFile() override;

    /// Writes the rest to the disk, which may take a long time. After that, `commit` does little more than give the
    /// file its name.
    void sync();

    /// Writes the rest and makes the file appear. Nothing can be written afterwards.
    void commit();

    /// Discards the output; an existing file stays unchanged.
    void abandon() noexcept;

    /// True if others may already read the output, because it is written directly.
    bool isStraight() const;

protected:
    void take(std::string_view piece) override;

private:
    std::unique_ptr<detail::NewFile> File;
};

}  // namespace kd_lib::exchange
