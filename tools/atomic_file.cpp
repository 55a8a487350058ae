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

AtomicFile::AtomicFile(const std::string& path)
    : Path(path), Temporary(path + ".XXXXXX"), Descriptor(::mkstemp(Temporary.data())), Stream(nullptr)
{
    if (Descriptor < 0) {
        fail(errno);
    }
    ::fchmod(Descriptor, newFileMode());
    Buffer = std::make_unique<DescriptorBuffer>(Descriptor, false);
    Stream.rdbuf(Buffer.get());
}

AtomicFile::~AtomicFile()
{
    if (Descriptor >= 0) {
        ::close(Descriptor);
    }
    if (!Temporary.empty()) {
        ::unlink(Temporary.c_str());
    }
}

void AtomicFile::fail(int error) const
{
    throw Failure(Path, std::strerror(error));
}

void AtomicFile::commit()
{
    Stream.flush();
    if (Buffer->error() != 0) {
        fail(Buffer->error());
    }
    if (::fsync(Descriptor) != 0) {
        fail(errno);
    }
    if (::close(std::exchange(Descriptor, -1)) != 0) {
        fail(errno);
    }
    if (std::rename(Temporary.c_str(), Path.c_str()) != 0) {
        fail(errno);
    }
    Temporary.clear();
}

}  // namespace kd_tool
