#include <kd_lib/path.h>

#include <cstdlib>
#include <pwd.h>
#include <unistd.h>
#include <vector>

namespace kd_lib {

namespace {

std::string homeFromUserDatabase()
{
    std::vector<char> text(16384);
    passwd entry{};
    passwd* found = nullptr;
    ::getpwuid_r(::getuid(), &entry, text.data(), text.size(), &found);
    return found != nullptr && found->pw_dir != nullptr ? found->pw_dir : "";
}

std::string homeDirectory()
{
    const char* home = std::getenv("HOME");
    return home != nullptr && *home != '\0' ? home : homeFromUserDatabase();
}

}  // namespace

void checkHomePath(std::string& path)
{
    if (path.empty() || path[0] != '~' || (path.size() > 1 && path[1] != '/')) {
        return;
    }
    const std::string home = homeDirectory();
    if (!home.empty()) {
        path.replace(0, 1, home);
    }
}

void addEndSlash(std::string& dir)
{
    if (!dir.empty() && dir.back() != '/') {
        dir += '/';
    }
}

}  // namespace kd_lib
