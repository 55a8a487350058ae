/// \file
/// An output file that does not have its name yet.
#pragma once

#include <string>
#include <string_view>
#include <sys/types.h>

namespace kd_lib::exchange::detail {

/// Owns the descriptor of an output file and gives the file its name; see `OutputFile`, which collects the text.
class NewFile {
public:
    explicit NewFile(const std::string& path);
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    void write(std::string_view text);
    void sync();
    void commit();
    void abandon() noexcept;
    bool isStraight() const { return Straight; }

private:
    void openStraight(const std::string& path);
    void openNew();
    void openTemporary(mode_t mode);
    void takeOver(mode_t mode, uid_t owner, gid_t group);
    void giveName();
    void close() noexcept;
    [[noreturn]] void fail(int error) const;

    std::string Path;       ///< as the caller named it
    std::string Final;      ///< the same through symbolic links
    std::string Temporary;  ///< the file's name so far; empty: none
    int Descriptor = -1;
    bool Straight = false;
    bool Replaces = false;  ///< a file of the final name existed
};

}  // namespace kd_lib::exchange::detail
