#include <kd_lib/version.h>

#include "support/scoped_directory.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <fstream>
#include <string>

namespace {

/// The text is composed here, so that a statically linked test program contains it only once.
std::string whatString()
{
    std::string text(1, '@');
    text += "(#)PROGRAM:kd_db.1  PROJECT:kd_lib-1.1\n";
    return text;
}

/// The path of the loaded shared library; empty in a statically linked program.
std::string loadedLibrary()
{
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        if (line.find("/libkd_db.so") != std::string::npos) {
            return line.substr(line.find('/'));
        }
    }
    return "";
}

}  // namespace

TEST(Version, StringIsTheWhatStringByteForByte)
{
    EXPECT_EQ(whatString(), std::string(reinterpret_cast<const char*>(kd_db_1VersionString)));
}

TEST(Version, StringEndsWithAZeroByte)
{
    EXPECT_EQ(0, kd_db_1VersionString[whatString().size()]);
    EXPECT_EQ('\n', kd_db_1VersionString[whatString().size() - 1]);
}

TEST(Version, NumberIsOnePointOne)
{
    EXPECT_EQ(1.1, kd_db_1VersionNumber);
}

TEST(Version, StringIsFoundInTheBuiltFile)
{
    const std::string library = loadedLibrary();
    const std::string file = kd_test::readFile(library.empty() ? "/proc/self/exe" : library);
    EXPECT_NE(std::string::npos, file.find(whatString() + '\0'));
}

TEST(Version, SymbolsAreExportedWithoutANamespace)
{
    const std::string library = loadedLibrary();
    if (library.empty()) {
        GTEST_SKIP() << "linked statically";
    }
    void* const loaded = ::dlopen(library.c_str(), RTLD_LAZY | RTLD_NOLOAD);
    ASSERT_NE(nullptr, loaded);
    const void* const text = ::dlsym(loaded, "kd_db_1VersionString");
    const void* const number = ::dlsym(loaded, "kd_db_1VersionNumber");
    ::dlclose(loaded);
    ASSERT_NE(nullptr, text);
    ASSERT_NE(nullptr, number);
    EXPECT_EQ(whatString(), static_cast<const char*>(text));
    EXPECT_EQ(1.1, *static_cast<const double*>(number));
}
