#include "atomic_file.h"

#include "failure.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace kd_tool {

namespace {

constexpr mode_t ordinaryMode = 0666;

/// What an ordinary new file gets; the temporary one starts for its owner alone.
mode_t newFileMode()
{
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return ordinaryMode & ~mask;
}

}  // namespace

AtomicFile::TemporaryFile::TemporaryFile(const std::string& path)
    : Name(path + ".XXXXXX"), Descriptor(::mkstemp(Name.data()))
{
    if (Descriptor < 0) {
        throw Failure(path, std::strerror(errno));
    }
    ::fchmod(Descriptor, newFileMode());
}

AtomicFile::TemporaryFile::~TemporaryFile()
{
    if (Descriptor >= 0) {
        ::close(Descriptor);
    }
    if (!Name.empty()) {
        ::unlink(Name.c_str());
    }
}

AtomicFile::AtomicFile(const std::string& path)
    : Path(path), Temporary(path), Buffer(Temporary.Descriptor, false), Stream(&Buffer)
{
}

void AtomicFile::fail(int error) const
{
    throw Failure(Path, std::strerror(error));
}

void AtomicFile::commit()
{
    Stream.flush();
    if (Buffer.error() != 0) {
        fail(Buffer.error());
    }
    if (::fsync(Temporary.Descriptor) != 0) {
        fail(errno);
    }
    if (::close(std::exchange(Temporary.Descriptor, -1)) != 0) {
        fail(errno);
    }
    if (std::rename(Temporary.Name.c_str(), Path.c_str()) != 0) {
        fail(errno);
    }
    Temporary.Name.clear();
}

}  // namespace kd_tool
