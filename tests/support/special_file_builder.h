/// \file
/// Special files under a table's name: directories, pipes and endless devices.
#pragma once

#include "support/scoped_directory.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kd_test {

/// A named pipe that holds these bytes and then ends, for one reader that opens it while this lives.
class Fifo {
public:
    Fifo(const ScopedDirectory& directory, const std::string& name, const std::string& bytes)
    {
        const std::string path = directory.file(name);
        EXPECT_EQ(0, ::mkfifo(path.c_str(), 0600));
        // Opens both ends, so that neither this nor the reader's open waits for the other.
        Descriptor = ::open(path.c_str(), O_RDWR);
        EXPECT_NE(-1, Descriptor);
        EXPECT_EQ(static_cast<ssize_t>(bytes.size()), ::write(Descriptor, bytes.data(), bytes.size()));
    }
    ~Fifo() { end(); }
    Fifo(const Fifo&) = delete;
    Fifo& operator=(const Fifo&) = delete;

    /// Lets the pipe end after its bytes; call it after the reader has opened the pipe.
    void end()
    {
        if (Descriptor >= 0) {
            ::close(Descriptor);
            Descriptor = -1;
        }
    }

private:
    int Descriptor = -1;
};

/// A file of zero bytes without an end.
inline void makeEndless(const ScopedDirectory& directory, const std::string& name)
{
    std::filesystem::create_symlink("/dev/zero", directory.file(name));
}

inline void makeDirectory(const ScopedDirectory& directory, const std::string& name)
{
    std::filesystem::create_directory(directory.file(name));
}

}  // namespace kd_test
