#include "detail/filewindow.h"

#include "support/scoped_directory.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>

namespace {

using namespace kd_lib::exchange::detail;

class FileWindowTest : public testing::Test {
protected:
    std::string_view bytes(std::size_t at, std::size_t count) const
    {
        return std::string_view(Content).substr(std::min(at, Content.size()), count);
    }

    std::string Content = [] {
        std::mt19937 random(7);
        std::string text;
        for (int i = 0; i < 200000; ++i) {
            text += static_cast<char>(random());
        }
        return text;
    }();
    kd_test::ScopedDirectory Folder;
    std::string Path = Folder.write("f", Content);
    InputFile File{Path};
    FileWindow Window{File};
};

TEST_F(FileWindowTest, ViewsBytesInAnyOrder)
{
    std::mt19937 random(8);
    for (int i = 0; i < 3000; ++i) {
        const std::size_t at = random() % (Content.size() + 10);
        const std::size_t count = random() % 300;
        ASSERT_EQ(Window.view(at, count), bytes(at, count)) << at << " " << count;
    }
}

TEST_F(FileWindowTest, ViewsNoMoreThanItHolds)
{
    EXPECT_EQ(Window.view(10, FileWindow::capacity), bytes(10, FileWindow::capacity));
    EXPECT_EQ(Window.view(20, FileWindow::capacity + 1), bytes(20, FileWindow::capacity));
    EXPECT_EQ(Window.view(5, 3), bytes(5, 3)) << "before what was kept";
}

TEST_F(FileWindowTest, EndsWithTheFile)
{
    EXPECT_EQ(Window.view(Content.size() - 3, 10), bytes(Content.size() - 3, 3));
    EXPECT_EQ(Window.view(Content.size(), 1), "");
    EXPECT_EQ(Window.view(Content.size() + 100000, 1), "");
    EXPECT_EQ(Window.view(0, 4), bytes(0, 4));
}

TEST_F(FileWindowTest, KeepsTheBytesThatWereRead)
{
    EXPECT_EQ(Window.view(100, 1), bytes(100, 1));
    Folder.write("f", std::string(Content.size(), '-'));
    EXPECT_EQ(Window.view(100, 50), bytes(100, 50));
    EXPECT_EQ(Window.view(100 + FileWindow::capacity - 1, 1), bytes(100 + FileWindow::capacity - 1, 1));
    EXPECT_EQ(Window.view(100 + FileWindow::capacity, 1), "-");
}

TEST_F(FileWindowTest, ViewsSomeUpToTheEndOfARead)
{
    EXPECT_EQ(Window.viewSome(0), bytes(0, FileWindow::capacity));
    EXPECT_EQ(Window.viewSome(10), bytes(10, FileWindow::capacity - 10));
    EXPECT_EQ(Window.viewSome(FileWindow::capacity), bytes(FileWindow::capacity, FileWindow::capacity));
    EXPECT_EQ(Window.viewSome(Content.size() - 1), bytes(Content.size() - 1, 1));
    EXPECT_EQ(Window.viewSome(Content.size()), "");
}

}  // namespace
