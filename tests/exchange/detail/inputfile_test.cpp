#include "detail/inputfile.h"

#include "support/scoped_directory.h"

#include <kd_lib/exchange/error.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <unistd.h>

namespace {

using kd_lib::exchange::Error;
using kd_lib::exchange::detail::InputFile;

TEST(InputFileTest, AFolderIsRefusedAtOnce)
{
    const kd_test::ScopedDirectory folder;
    try {
        const InputFile file(folder.path());
        FAIL() << "the folder was opened";
    } catch (const Error& error) {
        EXPECT_EQ(error.what(), folder.path() + ": Is a directory");
    }
}

TEST(InputFileTest, AFileOfTheKernelIsReadLikeAPipe)
{
    InputFile file("/proc/self/cmdline");
    EXPECT_FALSE(file.seekable()) << "its length is 0, whatever it holds";
    EXPECT_FALSE(file.size());
    char byte = 0;
    EXPECT_EQ(file.read(&byte, 1), 1U);
}

TEST(InputFileTest, AnOrdinaryFileHasItsSize)
{
    const kd_test::ScopedDirectory folder;
    const InputFile file(folder.write("f", "abc"));
    EXPECT_TRUE(file.seekable());
    EXPECT_EQ(file.size(), 3U);
}

TEST(InputFileDeathTest, AnErrorNumberFromBeforeDoesNotRepeatARead)
{
    const kd_test::ScopedDirectory folder;
    const std::string path = folder.write("f", "abc");
    const auto readAll = [&path] {
        ::alarm(20);  // a read that is repeated at the end of the file never ends
        InputFile file(path);
        std::string bytes(8, '\0');
        errno = EINTR;
        const std::size_t first = file.readSome(bytes.data(), bytes.size());
        errno = EAGAIN;
        const std::size_t second = file.readSome(bytes.data() + first, bytes.size() - first);
        ::_exit(first == 3 && second == 0 ? 0 : 1);
    };
    EXPECT_EXIT(readAll(), testing::ExitedWithCode(0), "");
}

}  // namespace
