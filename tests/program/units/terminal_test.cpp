#include "terminal.h"

#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <string>
#include <sys/ioctl.h>
#include <unistd.h>

namespace kd_tool {

/// Sets the variables of the environment that the terminal's facts depend on, and restores them.
class TerminalFacts : public testing::Test {
protected:
    TerminalFacts()
    {
        for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG", "COLUMNS", "LINES", "TERM", "NO_COLOR"}) {
            const char* value = std::getenv(name);
            Before[name] = value != nullptr ? std::optional<std::string>(value) : std::nullopt;
            ::unsetenv(name);
        }
    }

    ~TerminalFacts() override
    {
        for (const auto& [name, value] : Before) {
            value ? ::setenv(name.c_str(), value->c_str(), 1) : ::unsetenv(name.c_str());
        }
        ::close(NoTerminal);
    }

    static void set(const char* name, const char* value) { ::setenv(name, value, 1); }

    const int NoTerminal = ::open("/dev/null", O_RDONLY);

private:
    std::map<std::string, std::optional<std::string>> Before;
};

TEST_F(TerminalFacts, LocaleIsUtf8ByItsName)
{
    EXPECT_FALSE(localeIsUtf8());
    for (const char* name : {"C.UTF-8", "de_DE.utf8", "en_GB.Utf-8"}) {
        set("LANG", name);
        EXPECT_TRUE(localeIsUtf8()) << name;
    }
    set("LANG", "de_DE.ISO-8859-1");
    EXPECT_FALSE(localeIsUtf8());
}

TEST_F(TerminalFacts, LocaleIsThatOfTheFirstVariableThatIsNotEmpty)
{
    set("LANG", "C");
    set("LC_CTYPE", "C.UTF-8");
    EXPECT_TRUE(localeIsUtf8());
    set("LC_ALL", "C");
    EXPECT_FALSE(localeIsUtf8());
    set("LC_ALL", "");
    EXPECT_TRUE(localeIsUtf8());
    set("LC_CTYPE", "C");
    set("LANG", "C.UTF-8");
    EXPECT_FALSE(localeIsUtf8());
}

TEST_F(TerminalFacts, SizeWithoutATerminalIsThatOfTheEnvironment)
{
    EXPECT_EQ(screenSize(NoTerminal).Columns, 80U);
    EXPECT_EQ(screenSize(NoTerminal).Rows, 24U);
    set("COLUMNS", "1");
    set("LINES", "10000");
    EXPECT_EQ(screenSize(NoTerminal).Columns, 1U);
    EXPECT_EQ(screenSize(NoTerminal).Rows, 10000U);
}

TEST_F(TerminalFacts, SizesThatNoScreenHasAreIgnored)
{
    for (const char* size : {"", "0", "-5", "10001", "wide", "99999999999999999999"}) {
        set("COLUMNS", size);
        EXPECT_EQ(screenSize(NoTerminal).Columns, 80U) << size;
    }
}

TEST_F(TerminalFacts, SizeOfATerminalIsItsOwnUnlessItIsZero)
{
    set("COLUMNS", "70");
    set("LINES", "30");
    const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_GE(terminal, 0);
    for (const unsigned cells : {0U, 1U, 2U, 200U}) {
        winsize size{};
        size.ws_col = static_cast<unsigned short>(cells);
        size.ws_row = static_cast<unsigned short>(cells);
        ASSERT_EQ(::ioctl(terminal, TIOCSWINSZ, &size), 0);
        EXPECT_EQ(screenSize(terminal).Columns, cells > 0 ? cells : 70U);
        EXPECT_EQ(screenSize(terminal).Rows, cells > 0 ? cells : 30U);
    }
    ::close(terminal);
}

TEST_F(TerminalFacts, ColourNeedsATerminalUnlessItIsDemanded)
{
    EXPECT_FALSE(isTerminal(NoTerminal));
    EXPECT_FALSE(useColor(When::Auto, NoTerminal));
    EXPECT_TRUE(useColor(When::Always, NoTerminal));
    EXPECT_FALSE(useColor(When::Never, NoTerminal));
}

TEST_F(TerminalFacts, ColourOfATerminalObeysTheEnvironment)
{
    const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_GE(terminal, 0);
    EXPECT_TRUE(useColor(When::Auto, terminal));
    set("NO_COLOR", "");
    EXPECT_TRUE(useColor(When::Auto, terminal));
    set("NO_COLOR", "1");
    EXPECT_FALSE(useColor(When::Auto, terminal));
    ::unsetenv("NO_COLOR");
    set("TERM", "dumb");
    EXPECT_FALSE(useColor(When::Auto, terminal));
    ::close(terminal);
}

}  // namespace kd_tool
