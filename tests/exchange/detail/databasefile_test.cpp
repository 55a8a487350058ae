#include "detail/databasefile.h"

#include "support/scoped_directory.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstddef>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace {

/// With this error number the file system refuses to rename without replacing; 0: it does not.
int refusal = 0;

}  // namespace

extern "C" int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept
{
    if (refusal != 0) {
        errno = refusal;
        return -1;
    }
    using Function = int (*)(int, const char*, int, const char*, unsigned);
    static const auto real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "renameat2"));
    return real(fromFolder, from, toFolder, to, flags);
}

namespace {

using kd_lib::exchange::detail::DatabaseFile;
using kd_test::readFile;

/// 0: the usual way; otherwise the error number with which the file system refuses it.
class DatabaseFileTest : public testing::TestWithParam<int> {
protected:
    DatabaseFileTest() { refusal = GetParam(); }
    ~DatabaseFileTest() override { refusal = 0; }

    std::ptrdiff_t filesInFolder() const
    {
        return std::distance(std::filesystem::directory_iterator(Folder.path()), {});
    }

    kd_test::ScopedDirectory Folder;
};

TEST_P(DatabaseFileTest, PublishGivesANewFileItsFinalName)
{
    const std::string path = Folder.file("x.db");
    DatabaseFile file(path);
    ASSERT_TRUE(file.isNew());
    std::ofstream(file.path()) << "new";
    EXPECT_TRUE(file.publish());
    EXPECT_FALSE(file.isNew());
    EXPECT_EQ(file.path(), path);
    EXPECT_EQ(readFile(path), "new");
    EXPECT_EQ(filesInFolder(), 1) << "the temporary name is gone";
}

TEST_P(DatabaseFileTest, PublishDoesNotReplaceAFileThatWasMadeMeanwhile)
{
    DatabaseFile file(Folder.file("x.db"));
    const std::string path = Folder.write("x.db", "another's");
    EXPECT_FALSE(file.publish());
    EXPECT_TRUE(file.isNew());
    EXPECT_EQ(readFile(path), "another's");
}

INSTANTIATE_TEST_SUITE_P(Each, DatabaseFileTest, testing::Values(0, EINVAL, ENOSYS, ENOTSUP));

}  // namespace
