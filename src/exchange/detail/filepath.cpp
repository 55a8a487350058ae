#include "filepath.h"

#include <climits>
#include <cstddef>
#include <sys/types.h>
#include <unistd.h>

namespace kd_lib::exchange::detail {

std::string folderOf(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "./" : path.substr(0, slash + 1);
}

std::string linkTarget(const std::string& path)
{
    std::string target(PATH_MAX, '\0');
    const ssize_t size = ::readlink(path.c_str(), target.data(), target.size());
    target.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    return target.empty() || target.front() == '/' ? target : folderOf(path) + target;
}

}  // namespace kd_lib::exchange::detail
