#include "detail/companionfile.h"

#include "support/scoped_directory.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <initializer_list>
#include <string>
#include <string_view>

namespace {

using kd_lib::exchange::detail::findCompanion;

class CompanionFileTest : public testing::Test {
protected:
    /// The name of the file found for a table, in a folder of these files.
    std::string found(const std::string& table, std::initializer_list<std::string_view> extensions) const
    {
        const auto path = findCompanion(Folder.file(table), extensions);
        if (!path) {
            return "none";
        }
        EXPECT_EQ(std::filesystem::path(*path).parent_path().string(), Folder.path());
        return std::filesystem::path(*path).filename().string();
    }

    void make(std::initializer_list<std::string> names) const
    {
        for (const std::string& name : names) {
            Folder.write(name, "");
        }
    }

    kd_test::ScopedDirectory Folder;
};

TEST_F(CompanionFileTest, HasTheStemAndTheExtension)
{
    make({"people.dbt", "people.fpt", "peoples.smt", "peopl.smt", "people.smtx", "people.sm", "people"});
    EXPECT_EQ(found("people.dbf", {"dbt"}), "people.dbt");
    EXPECT_EQ(found("people.dbf", {"fpt"}), "people.fpt");
    EXPECT_EQ(found("people.dbf", {"smt"}), "none");
    EXPECT_EQ(found("other.dbf", {"dbt"}), "none");
}

TEST_F(CompanionFileTest, HasTheFirstExtensionThatExists)
{
    make({"a.dbt", "a.fpt", "b.fpt"});
    EXPECT_EQ(found("a.dbf", {"fpt", "dbt"}), "a.fpt");
    EXPECT_EQ(found("a.dbf", {"dbt", "fpt"}), "a.dbt");
    EXPECT_EQ(found("b.dbf", {"dbt", "fpt"}), "b.fpt");
    EXPECT_EQ(found("b.dbf", {}), "none");
}

TEST_F(CompanionFileTest, AnotherCaseIsFound)
{
    make({"ALPHA.DBT", "Zeta.dBt", "az@[`{.dbt"});
    EXPECT_EQ(found("alpha.dbf", {"dbt"}), "ALPHA.DBT");
    EXPECT_EQ(found("zeta.DBF", {"dbt"}), "Zeta.dBt");
    EXPECT_EQ(found("AZ@[`{.dbf", {"dbt"}), "az@[`{.dbt") << "the letters at both ends, and their neighbours";
    EXPECT_EQ(found("az`{@[.dbf", {"dbt"}), "none");
}

TEST_F(CompanionFileTest, AnEqualStemComesFirstThenTheCaseOfTheExtension)
{
    make({"Ab.dBt", "AB.dbt", "ab.dbT"});
    EXPECT_EQ(found("Ab.dbf", {"dbt"}), "Ab.dBt");
    EXPECT_EQ(found("ab.dbf", {"dbt"}), "ab.dbT");
    EXPECT_EQ(found("aB.dbf", {"dbt"}), "AB.dbt");
}

TEST_F(CompanionFileTest, CapitalsOfTheTableAreExpectedOfItsCompanion)
{
    make({"t.dbt", "t.DBT", "u.DBT", "u.dBt"});
    EXPECT_EQ(found("t.DBF", {"dbt"}), "t.DBT");
    EXPECT_EQ(found("t.dbf", {"dbt"}), "t.dbt");
    EXPECT_EQ(found("t.Dbf", {"dbt"}), "t.dbt");
    EXPECT_EQ(found("t", {"dbt"}), "t.dbt");
    EXPECT_EQ(found("t.", {"dbt"}), "t.dbt") << "a point alone has no capitals";
    EXPECT_EQ(found("U.DBF", {"dbt"}), "u.DBT");
    EXPECT_EQ(found("U.dbf", {"dbt"}), "u.DBT") << "neither is of the table's case: by name";
}

TEST_F(CompanionFileTest, TheExpectedCaseOfTheExtensionDecidesBetweenStemsOfAnotherCase)
{
    make({"Ab.dbt", "ab.DBT", "Xy.DBT", "xy.dbt"});
    EXPECT_EQ(found("AB.DBF", {"dbt"}), "ab.DBT");
    EXPECT_EQ(found("XY.dbf", {"dbt"}), "xy.dbt");
}

TEST_F(CompanionFileTest, AFolderIsNotACompanion)
{
    std::filesystem::create_directory(Folder.file("a.dbt"));
    EXPECT_EQ(found("a.dbf", {"dbt"}), "none");
    make({"A.DBT"});
    EXPECT_EQ(found("a.dbf", {"dbt"}), "A.DBT");
}

TEST_F(CompanionFileTest, ATableWithoutAFolderIsInTheCurrentOne)
{
    make({"HERE.DBT", "there.dbt"});
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(Folder.path());
    const auto searched = findCompanion("here.dbf", {"dbt"});
    const auto direct = findCompanion("there.dbf", {"dbt"});
    std::filesystem::current_path(before);
    EXPECT_EQ(searched, "HERE.DBT");
    EXPECT_EQ(direct, "there.dbt");
}

TEST_F(CompanionFileTest, StandardInputAndAMissingFolderHaveNone)
{
    make({"-.dbt"});
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(Folder.path());
    EXPECT_EQ(findCompanion("-", {"dbt"}), std::nullopt);
    std::filesystem::current_path(before);
    EXPECT_EQ(findCompanion(Folder.file("no/t.dbf"), {"dbt"}), std::nullopt);
}

}  // namespace
