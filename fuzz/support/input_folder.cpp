#include "support/input_folder.h"

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

namespace kd_fuzz {

const std::string& inputFolder()
{
    static const std::string folder = [] {
        std::string path = (std::filesystem::temp_directory_path() / "kd_fuzz_XXXXXX").string();
        if (::mkdtemp(path.data()) == nullptr) {
            std::abort();
        }
        return path;
    }();
    return folder;
}

void writeInput(const std::string& name, std::string_view bytes)
{
    const std::string path = inputFolder() + "/" + name;
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (file < 0 || ::write(file, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
        std::abort();
    }
    ::close(file);
}

}  // namespace kd_fuzz
