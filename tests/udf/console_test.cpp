#include <kd_lib/console.h>

#include "support/console_capture.h"
#include "support/scoped_directory.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <iostream>
#include <poll.h>
#include <pty.h>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <termios.h>
#include <thread>
#include <unistd.h>

using namespace std::string_literals;
using kd_test::captured;
using kd_test::capturedWithInput;
using kd_test::Console;

namespace {

const bool verboseAtStart = kd_lib::isVerbose();

Console messageOf(const std::string& text)
{
    return captured([&text] { kd_lib::message(text); });
}

Console errorMessageOf(const std::string& text)
{
    return captured([&text] { kd_lib::errorMessage(text); });
}

Console displayOf(const std::string& text)
{
    return captured([&text] { kd_lib::display(text); });
}

/// The result and the output of `more` with these bytes in a file as standard input.
struct Outcome {
    bool goesOn = false;
    Console console;
};

Outcome moreWithInput(const std::string& input)
{
    Outcome outcome;
    outcome.console = capturedWithInput(input, [&outcome] { outcome.goesOn = kd_lib::more(); });
    return outcome;
}

/// A pseudo-terminal; a child process runs `more` on it.
class Terminal {
public:
    Terminal()
    {
        if (::openpty(&Master, &Slave, nullptr, nullptr, nullptr) != 0) {
            ADD_FAILURE() << "no pseudo-terminal";
        }
        ::tcgetattr(Slave, &AtStart);
    }
    ~Terminal()
    {
        ::close(Slave);
        ::close(Master);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    int descriptor() const { return Slave; }

    /// Reading a key ends after this time (tenths of a second) even if none was pressed.
    void stopWaitingAfter(unsigned char tenths)
    {
        AtStart.c_cc[VMIN] = 0;
        AtStart.c_cc[VTIME] = tenths;
        ::tcsetattr(Slave, TCSANOW, &AtStart);
    }

    void type(const std::string& keys) const
    {
        ASSERT_EQ(static_cast<ssize_t>(keys.size()), ::write(Master, keys.data(), keys.size()));
    }

    /// Waits until a process reads single keys without echo; false after ten seconds.
    bool waitsForKey() const
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (std::chrono::steady_clock::now() < end) {
            termios now{};
            ::tcgetattr(Slave, &now);
            if ((now.c_lflag & (ICANON | ECHO)) == 0) {
                return true;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        return false;
    }

    /// Whether lines are edited and echoed as at the beginning.
    bool isAsAtStart() const
    {
        termios now{};
        ::tcgetattr(Slave, &now);
        return now.c_lflag == AtStart.c_lflag && now.c_cc[VMIN] == AtStart.c_cc[VMIN] &&
               now.c_cc[VTIME] == AtStart.c_cc[VTIME];
    }

    /// Everything that was printed so far; the terminal shows a line end as CR LF.
    std::string printed() const
    {
        std::string text;
        std::array<char, 512> buffer{};
        pollfd ready{Master, POLLIN, 0};
        while (::poll(&ready, 1, 100) == 1) {
            const ssize_t count = ::read(Master, buffer.data(), buffer.size());
            if (count <= 0) {
                break;
            }
            text.append(buffer.data(), static_cast<std::size_t>(count));
        }
        return text;
    }

private:
    int Master = -1;
    int Slave = -1;
    termios AtStart{};
};

constexpr int goesOnStatus = 41;
constexpr int stopsStatus = 42;

/// A child process that calls `more` with these descriptors and ends with one of two statuses.
class AskingProcess {
public:
    AskingProcess(int standardInput, int standardOutput)
    {
        std::cout.flush();
        Child = ::fork();
        if (Child == 0) {
            ::alarm(20);
            ::dup2(standardInput, STDIN_FILENO);
            ::dup2(standardOutput, STDOUT_FILENO);
            const bool goesOn = kd_lib::more();
            std::cout.flush();
            std::exit(goesOn ? goesOnStatus : stopsStatus);
        }
    }

    /// Waits for the end; -1 if it did not end by itself.
    int status() const
    {
        int status = 0;
        ::waitpid(Child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    pid_t Child = -1;
};

constexpr const char* promptOnTerminal = "-- more (Enter goes on, q stops) --\r\n";

/// Types the keys at the prompt and checks all output.
void expectAfterKeys(const std::string& keys, int expectedStatus)
{
    const Terminal terminal;
    const AskingProcess process(terminal.descriptor(), terminal.descriptor());
    ASSERT_TRUE(terminal.waitsForKey());
    terminal.type(keys);
    EXPECT_EQ(expectedStatus, process.status());
    EXPECT_EQ(promptOnTerminal, terminal.printed());
    EXPECT_TRUE(terminal.isAsAtStart());
}

/// Closes a descriptor at the end of the scope.
class OpenFile {
public:
    OpenFile(const std::string& path, int flags) : Descriptor(::open(path.c_str(), flags, 0600)) {}
    ~OpenFile() { ::close(Descriptor); }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    int descriptor() const { return Descriptor; }

private:
    int Descriptor;
};

}  // namespace

// message

TEST(Message, OfAWordPrintsTheWordAndOneLineEnd)
{
    const Console console = messageOf("word");
    EXPECT_EQ("word\n", console.out);
    EXPECT_EQ("", console.err);
}

TEST(Message, HasNoPrefix)
{
    EXPECT_EQ("Cannot find database\n", messageOf("Cannot find database").out);
}

TEST(Message, OfALineEndAlonePrintsOneEmptyLine)
{
    EXPECT_EQ("\n", messageOf("\n").out);
}

TEST(Message, OfTheEmptyTextPrintsOneEmptyLine)
{
    EXPECT_EQ("\n", messageOf("").out);
}

TEST(Message, OfAnEndedLineGetsNoSecondLineEnd)
{
    EXPECT_EQ("ended\n", messageOf("ended\n").out);
}

TEST(Message, KeepsLineEndsInsideAndZeroBytes)
{
    EXPECT_EQ("one\ntwo\n", messageOf("one\ntwo").out);
    EXPECT_EQ("a\0b\n"s, messageOf("a\0b"s).out);
}

// errorMessage

TEST(ErrorMessage, GoesToStandardErrorAsOneLine)
{
    const Console console = errorMessageOf("File does not exist");
    EXPECT_EQ("File does not exist\n", console.err);
    EXPECT_EQ("", console.out);
}

TEST(ErrorMessage, EndsWithExactlyOneLineEnd)
{
    EXPECT_EQ("\n", errorMessageOf("").err);
    EXPECT_EQ("\n", errorMessageOf("\n").err);
    EXPECT_EQ("ended\n", errorMessageOf("ended\n").err);
}

// display

TEST(Display, PrintsTwoEndedLinesExactly)
{
    const Console console = displayOf("first line\nsecond line\n");
    EXPECT_EQ("first line\nsecond line\n", console.out);
    EXPECT_EQ("", console.err);
}

TEST(Display, AddsNothing)
{
    EXPECT_EQ("no line end", displayOf("no line end").out);
    EXPECT_EQ("", displayOf("").out);
    EXPECT_EQ("  blanks\t", displayOf("  blanks\t").out);
}

TEST(Display, PassesEveryByte)
{
    std::string bytes;
    for (int code = 0; code < 256; ++code) {
        bytes += static_cast<char>(code);
    }
    EXPECT_EQ(bytes, displayOf(bytes).out);
}

// The insertion operator

TEST(Inserter, WritesTheCharactersAndChains)
{
    std::ostringstream stream;
    std::ostream& returned = kd_lib::operator<<(kd_lib::operator<<(stream, "left "), "right");
    EXPECT_EQ("left right", stream.str());
    EXPECT_EQ(&stream, &returned);
}

TEST(Inserter, WritesZeroBytes)
{
    std::ostringstream stream;
    kd_lib::operator<<(stream, "a\0b"s);
    EXPECT_EQ("a\0b"s, stream.str());
}

TEST(Inserter, WritesToStandardOutput)
{
    const Console console = captured([] {
        using kd_lib::operator<<;
        const std::string text = "chained";
        std::cout << text << ' ' << text;
    });
    EXPECT_EQ("chained chained", console.out);
}

// isVerbose, setVerbose

TEST(Verbosity, IsOffByDefault)
{
    EXPECT_FALSE(verboseAtStart);
}

TEST(Verbosity, IsTheValueSetLast)
{
    kd_lib::setVerbose(true);
    EXPECT_TRUE(kd_lib::isVerbose());
    kd_lib::setVerbose(true);
    EXPECT_TRUE(kd_lib::isVerbose());
    kd_lib::setVerbose(false);
    EXPECT_FALSE(kd_lib::isVerbose());
}

// more, with standard input not a terminal

TEST(MoreFromAFile, LineBeginningWithQOrNStops)
{
    for (const char* input : {"q\n", "Q\n", "quit\n", "n\n", "N\n", "no\n", "nothing\n", "q"}) {
        EXPECT_FALSE(moreWithInput(input).goesOn) << input;
    }
}

TEST(MoreFromAFile, AnyOtherLineContinues)
{
    for (const char* input : {"\n", " \n", "y\n", "yes\n", "anything\n", " q\n", "1\n", "y"}) {
        EXPECT_TRUE(moreWithInput(input).goesOn) << input;
    }
}

TEST(MoreFromAFile, EndOfInputContinues)
{
    EXPECT_TRUE(moreWithInput("").goesOn);
}

TEST(MoreFromAFile, PrintsNoPrompt)
{
    const Outcome outcome = moreWithInput("y\n");
    EXPECT_EQ("", outcome.console.out);
    EXPECT_EQ("", outcome.console.err);
}

TEST(MoreFromAFile, ReadsOneLinePerCall)
{
    std::string results;
    capturedWithInput("yes\nno\n\nquit\n", [&results] {
        for (int call = 0; call < 6; ++call) {
            results += kd_lib::more() ? '+' : '-';
        }
    });
    EXPECT_EQ("+-+-++", results);
}

TEST(MoreFromAFile, ReadsALineEvenIfOutputIsATerminal)
{
    const Terminal terminal;
    const kd_test::ScopedDirectory scratch;
    const OpenFile input(scratch.write("replies", "no\n"), O_RDONLY);
    const AskingProcess process(input.descriptor(), terminal.descriptor());
    EXPECT_EQ(stopsStatus, process.status());
    EXPECT_EQ("", terminal.printed());
}

// more, with standard input and output both terminals

TEST(MoreOnATerminal, EnterContinues)
{
    expectAfterKeys("\r", goesOnStatus);
    expectAfterKeys("\n", goesOnStatus);
}

TEST(MoreOnATerminal, BlankContinues)
{
    expectAfterKeys(" ", goesOnStatus);
}

TEST(MoreOnATerminal, QStops)
{
    expectAfterKeys("q", stopsStatus);
    expectAfterKeys("Q", stopsStatus);
}

TEST(MoreOnATerminal, OtherKeysAreIgnored)
{
    expectAfterKeys("xn7 ", goesOnStatus);
    expectAfterKeys("xn7q", stopsStatus);
}

TEST(MoreOnATerminal, OneKeyIsReadAndTheNextStaysForTheNextQuestion)
{
    const Terminal terminal;
    const AskingProcess first(terminal.descriptor(), terminal.descriptor());
    ASSERT_TRUE(terminal.waitsForKey());
    terminal.type(" q");
    EXPECT_EQ(goesOnStatus, first.status());
    const AskingProcess second(terminal.descriptor(), terminal.descriptor());
    EXPECT_EQ(stopsStatus, second.status());
}

TEST(MoreOnATerminal, WaitsForAKeyWhateverTheTerminalWasSetTo)
{
    Terminal terminal;
    terminal.stopWaitingAfter(1);
    const AskingProcess process(terminal.descriptor(), terminal.descriptor());
    ASSERT_TRUE(terminal.waitsForKey());
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    terminal.type("q");
    EXPECT_EQ(stopsStatus, process.status());
    EXPECT_TRUE(terminal.isAsAtStart());
}

// more, with only standard input a terminal

TEST(MoreWithOutputNoTerminal, ContinuesWithoutAPrompt)
{
    const Terminal terminal;
    const kd_test::ScopedDirectory scratch;
    const OpenFile output(scratch.file("output"), O_WRONLY | O_CREAT);
    const AskingProcess process(terminal.descriptor(), output.descriptor());
    EXPECT_EQ(goesOnStatus, process.status());
    EXPECT_EQ("", kd_test::readFile(scratch.file("output")));
    EXPECT_EQ("", terminal.printed());
}

TEST(MoreWithOutputNoTerminal, LeavesTypedKeysUnread)
{
    const Terminal terminal;
    const kd_test::ScopedDirectory scratch;
    const OpenFile output(scratch.file("output"), O_WRONLY | O_CREAT);
    terminal.type("q\n");
    const AskingProcess process(terminal.descriptor(), output.descriptor());
    EXPECT_EQ(goesOnStatus, process.status());
    std::array<char, 8> buffer{};
    EXPECT_EQ(2, ::read(terminal.descriptor(), buffer.data(), buffer.size()));
    EXPECT_EQ("q\n", std::string(buffer.data()));
}
