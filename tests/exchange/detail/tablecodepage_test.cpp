#include "detail/tablecodepage.h"

#include "support/scoped_directory.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace kd_lib::exchange::detail;

class TableCodePageTest : public testing::Test {
protected:
    /// The page of a table with this .cpg file, and the reason.
    std::string withCpg(const std::string& text, const std::string& asked = "") const
    {
        Folder.write("t.cpg", text);
        return shown(chooseCodePage(Folder.file("t.dbf"), {}, asked));
    }

    static std::string withHeader(std::uint8_t byte, const std::string& driver)
    {
        DbfLayout layout;
        layout.LanguageByte = byte;
        layout.Driver = driver;
        return shown(chooseCodePage("none/t.dbf", layout, ""));
    }

    static std::string shown(const PageChoice& choice) { return choice.Page + ": " + choice.Reason; }

    kd_test::ScopedDirectory Folder;
};

TEST_F(TableCodePageTest, TheFileThatNamesThePage)
{
    EXPECT_EQ(withCpg("UTF-8"), "UTF-8: t.cpg");
    EXPECT_EQ(withCpg("\xEF\xBB\xBF"
                      "UTF-8\r\nmore"),
              "UTF-8: t.cpg");
    EXPECT_EQ(withCpg("UTF-8\x1A"), "UTF-8: t.cpg");
    EXPECT_EQ(withCpg("UTF-8", "CP850"), "CP850: as requested");
}

TEST_F(TableCodePageTest, AnUnknownNameIsShownWithoutControlCharacters)
{
    EXPECT_EQ(withCpg("klingon"), "CP1252: t.cpg names the unknown code page \"klingon\"");
    EXPECT_EQ(withCpg("\x1B[31m~\x7F"), "CP1252: t.cpg names the unknown code page \"[31m~\"");
    EXPECT_EQ(withCpg(""), "CP1252: t.cpg names the unknown code page \"\"");
}

TEST_F(TableCodePageTest, TheHeader)
{
    EXPECT_EQ(withHeader(0, ""), "CP1252: the file names none");
    EXPECT_EQ(withHeader(0x64, ""), "CP852: language byte 64");
    EXPECT_EQ(withHeader(0xFE, ""), "CP1252: language byte FE is not known");
    EXPECT_EQ(withHeader(0x64, "DBWINUS0"), "CP852: language byte 64");
    EXPECT_EQ(withHeader(0, "DBWINUS0"), "1252: language driver DBWINUS0");
    EXPECT_EQ(withHeader(0, "XYZ"), "CP1252: language driver XYZ is not known");
}

}  // namespace
