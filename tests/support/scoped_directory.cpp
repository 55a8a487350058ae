#include "support/scoped_directory.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <stdlib.h>

namespace kd_test {

ScopedDirectory::ScopedDirectory()
{
    Path = (std::filesystem::temp_directory_path() / "kd_test_XXXXXX").string();
    if (::mkdtemp(Path.data()) == nullptr) {
        throw std::runtime_error("no scratch directory at " + Path);
    }
}

ScopedDirectory::~ScopedDirectory()
{
    std::error_code ignored;
    std::filesystem::remove_all(Path, ignored);
}

std::string ScopedDirectory::write(const std::string& name, const std::string& bytes) const
{
    std::ofstream out(file(name), std::ios::binary);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();
    EXPECT_TRUE(out.good()) << "cannot write " << file(name);
    return file(name);
}

std::string readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    EXPECT_TRUE(in.is_open()) << "cannot read " << path;
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

}  // namespace kd_test
