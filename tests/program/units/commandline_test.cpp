#include "commandline.h"
#include "exitstatus.h"

#include <gtest/gtest.h>

namespace kd_tool {

using Words = std::vector<std::string>;

Options parsed(const char* command, const Words& arguments)
{
    return parseArguments(commandNamed(command), arguments);
}

/// The reason why arguments are refused.
std::string refused(const char* command, const Words& arguments)
{
    try {
        parsed(command, arguments);
        return "taken";
    } catch (const UsageError& error) {
        EXPECT_EQ(error.Command, command);
        return error.what();
    }
}

TEST(CommandLine, OptionsMayBeAnywhere)
{
    const Options options = parsed("load", {"--into", "a.db", "x.dbf", "--key=id", "-q", "y.csv"});
    EXPECT_EQ(options.Arguments, (Words{"x.dbf", "y.csv"}));
    EXPECT_EQ(options.Into, "a.db");
    EXPECT_EQ(options.Table.Key, "id");
    EXPECT_TRUE(options.Quiet);
}

TEST(CommandLine, TwoDashesEndTheOptions)
{
    EXPECT_EQ(parsed("load", {"--into", "a.db", "--", "-x.csv", "--append"}).Arguments, (Words{"-x.csv", "--append"}));
    EXPECT_EQ(parsed("convert", {"-"}).Arguments, Words{"-"});
}

TEST(CommandLine, LettersMayBeAloneOrTogether)
{
    EXPECT_EQ(parsed("list", {"a", "-o", "x"}).Output, "x");
    EXPECT_EQ(parsed("list", {"a", "-ox"}).Output, "x");
    const Options options = parsed("list", {"a", "-qo", "x"});
    EXPECT_EQ(options.Output, "x");
    EXPECT_TRUE(options.Quiet);
}

TEST(CommandLine, AValueMayBeEmptyOrBeginWithADash)
{
    EXPECT_EQ(parsed("list", {"a", "--null="}).Source.Null, "");
    EXPECT_EQ(parsed("list", {"a", "--null", ""}).Source.Null, "");
    EXPECT_EQ(parsed("list", {"a", "--null", "-"}).Source.Null, "-");
    EXPECT_EQ(parsed("list", {"a", "--delimiter", "-"}).Source.Delimiter, "-");
}

TEST(CommandLine, RecordsAreARange)
{
    const auto range = [](const char* text) {
        const exchange::RecordRange records = parsed("list", {"a", "--records", text}).Source.Records;
        return std::pair(records.First, records.Last);
    };
    constexpr std::uint64_t end = std::numeric_limits<std::uint64_t>::max();
    EXPECT_EQ(range("3-7"), std::pair(std::uint64_t{3}, std::uint64_t{7}));
    EXPECT_EQ(range("3-"), std::pair(std::uint64_t{3}, end));
    EXPECT_EQ(range("-7"), std::pair(std::uint64_t{1}, std::uint64_t{7}));
    EXPECT_EQ(range("5"), std::pair(std::uint64_t{5}, std::uint64_t{5}));
    for (const char* wrong : {"-", "0", "7-3", "a-b", "1-2-3", "0-4", "1-99999999999999999999", " 1", "+1"}) {
        EXPECT_EQ(refused("list", {"a", std::string("--records=") + wrong}).substr(0, 11), "--records: ") << wrong;
    }
}

TEST(CommandLine, SelectedNamesMayHoldCommasInsideQuotes)
{
    EXPECT_EQ(parsed("list", {"a", "--select", "NAME"}).Source.Select, Words{"NAME"});
    EXPECT_EQ(parsed("list", {"a", "--select", "A, b,C"}).Source.Select, (Words{"A", " b", "C"}));
    EXPECT_EQ(parsed("list", {"a", "--select", "\"a,b\",\"say \"\"x\"\"\",c"}).Source.Select,
              (Words{"a,b", "say \"x\"", "c"}));
}

TEST(CommandLine, TypesAreRepeatable)
{
    const Options options = parsed("list", {"a", "--type", "ZIP=text", "--type", "a=b=number"});
    ASSERT_EQ(options.Source.Types.size(), 2U);
    EXPECT_EQ(options.Source.Types[0], std::pair(std::string("ZIP"), std::string("text")));
    EXPECT_EQ(options.Source.Types[1], std::pair(std::string("a=b"), std::string("number")));
    EXPECT_EQ(refused("list", {"a", "--type", "ZIP"}), "--type: \"ZIP\" is not COLUMN=TYPE");
}

TEST(CommandLine, WrongUsageIsNamed)
{
    EXPECT_EQ(refused("show", {}), "FILE is missing");
    EXPECT_EQ(refused("query", {"a.db"}), "SQL is missing");
    EXPECT_EQ(refused("verify", {"a.dbf"}), "DATABASE is missing");
    EXPECT_EQ(refused("list", {"a", "b"}), "unexpected argument \"b\"");
    EXPECT_EQ(refused("list", {""}), "FILE is empty");
    EXPECT_EQ(refused("load", {"a", "--intoo", "b"}), "unknown option \"--intoo\"; did you mean \"--into\"?");
    EXPECT_EQ(refused("load", {"a", "--xyzzy=3"}), "unknown option \"--xyzzy\"");
    EXPECT_EQ(refused("load", {"a", "-x"}), "unknown option \"-x\"");
    EXPECT_EQ(refused("load", {"a", "--into"}), "--into needs a value");
    EXPECT_EQ(refused("load", {"a", "--into", ""}), "--into: needs a value");
    EXPECT_EQ(refused("load", {"a", "--append=x"}), "--append takes no value");
    EXPECT_EQ(refused("load", {"a", "--append", "--replace"}), "--replace: --append and --replace exclude each other");
    EXPECT_EQ(refused("list", {"a", "--deleted", "all"}), "--deleted: \"all\" is not one of skip, keep, mark");
    EXPECT_EQ(refused("list", {"a", "--delimiter", ";;"}), "--delimiter: \";;\" is neither one character nor auto");
    EXPECT_EQ(refused("load", {"a", "--jobs", "0"}), "--jobs: \"0\" is not a number above 0");
}

TEST(CommandLine, TheFirstWrongArgumentIsNamed)
{
    EXPECT_EQ(refused("list", {"a", "b", "--wrong", "c"}), "unexpected argument \"b\"");
    EXPECT_EQ(refused("list", {"a", "--wrong", "b"}), "unknown option \"--wrong\"");
}

TEST(CommandLine, AnUnknownCommandIsNamedWithTheNearestOne)
{
    try {
        commandNamed("shwo");
        FAIL();
    } catch (const UsageError& error) {
        EXPECT_STREQ(error.what(), "unknown command \"shwo\"; did you mean \"show\"?");
    }
}

TEST(CommandLine, ACharacterMayBeGivenAsTab)
{
    EXPECT_EQ(parsed("list", {"a", "--delimiter", "\\t"}).Source.Delimiter, "\t");
    EXPECT_EQ(parsed("list", {"a", "--delimiter", "auto"}).Source.Delimiter, "auto");
    EXPECT_EQ(parsed("list", {"a", "--quote", "none"}).Source.Quote, "");
    EXPECT_EQ(parsed("list", {"a", "--quote", "'"}).Source.Quote, "'");
}

TEST(ExitStatus, AFailureOutweighsWrongUsageAndThatALoss)
{
    EXPECT_EQ(worse(statusDone, statusLoss), statusLoss);
    EXPECT_EQ(worse(statusUsage, statusLoss), statusUsage);
    EXPECT_EQ(worse(statusFailed, statusUsage), statusFailed);
    EXPECT_EQ(worse(statusLoss, statusFailed), statusFailed);
}

}  // namespace kd_tool
