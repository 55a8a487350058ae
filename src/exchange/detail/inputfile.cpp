#include "inputfile.h"

#include <kd_lib/exchange/error.h>

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace kd_lib::exchange::detail {

InputFile::InputFile(const std::string& path, std::stop_token stop) : Path(path), Stop(std::move(stop))
{
    const bool standardInput = path == "-";
    Descriptor = standardInput ? STDIN_FILENO : ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (Descriptor < 0) {
        fail(errno);
    }
    struct stat status = {};
    if (::fstat(Descriptor, &status) != 0 || S_ISDIR(status.st_mode)) {
        const int error = S_ISDIR(status.st_mode) ? EISDIR : errno;
        if (!standardInput) {
            ::close(Descriptor);
        }
        fail(error);
    }
    // Standard input may be a file that another program has begun to read, so it is read once, like a pipe. The length
    // of a file of /proc is 0, whatever it holds, so it is read like a pipe too.
    if (S_ISREG(status.st_mode) && !standardInput && status.st_size > 0) {
        Size = static_cast<std::uint64_t>(status.st_size);
    }
}

InputFile::~InputFile()
{
    if (Descriptor > STDIN_FILENO) {
        ::close(Descriptor);
    }
}

/// A pipe is opened without waiting for its writer, so the first read waits.
void InputFile::waitForBytes() const
{
    constexpr int interval = 100;  // milliseconds
    pollfd waiting = {Descriptor, POLLIN, 0};
    while (::poll(&waiting, 1, Stop.stop_possible() ? interval : -1) <= 0) {
        if (Stop.stop_requested()) {
            throw Stopped(Path, "stopped");
        }
    }
}

std::size_t InputFile::readSome(char* to, std::size_t count)
{
    ssize_t got = 0;
    do {
        if (!seekable()) {
            waitForBytes();
        }
        got = ::read(Descriptor, to, count);
    } while (got < 0 && (errno == EINTR || errno == EAGAIN));
    if (got < 0) {
        fail(errno);
    }
    Position += static_cast<std::uint64_t>(got);
    return static_cast<std::size_t>(got);
}

std::size_t InputFile::read(char* to, std::size_t count)
{
    std::size_t got = 0;
    while (got < count) {
        const std::size_t more = readSome(to + got, count - got);
        if (more == 0) {
            break;
        }
        got += more;
    }
    return got;
}

std::size_t InputFile::readAt(std::uint64_t offset, char* to, std::size_t count) const
{
    std::size_t got = 0;
    while (got < count) {
        const ssize_t more = ::pread(Descriptor, to + got, count - got, static_cast<off_t>(offset + got));
        if (more < 0 && errno != EINTR) {
            fail(errno);
        }
        if (more == 0) {
            break;
        }
        got += more > 0 ? static_cast<std::size_t>(more) : 0;
    }
    return got;
}

void InputFile::seek(std::uint64_t offset)
{
    if (::lseek(Descriptor, static_cast<off_t>(offset), SEEK_SET) < 0) {
        fail(errno);
    }
    Position = offset;
}

void InputFile::fail(int error) const
{
    throw Error(Path, std::generic_category().message(error));
}

}  // namespace kd_lib::exchange::detail
