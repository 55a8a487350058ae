#include <kd_lib/console.h>

#include <atomic>
#include <iostream>
#include <termios.h>
#include <unistd.h>

namespace kd_lib {

namespace {

std::atomic<bool> verbose{false};

void writeLine(std::ostream& out, const std::string& text)
{
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
    if (text.empty() || text.back() != '\n') {
        out.put('\n');
    }
}

/// While it exists, single keys can be read from the terminal, without echo.
class KeyMode {
public:
    KeyMode()
    {
        Known = ::tcgetattr(STDIN_FILENO, &Saved) == 0;
        if (Known) {
            termios keys = Saved;
            keys.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
            keys.c_cc[VMIN] = 1;
            keys.c_cc[VTIME] = 0;
            ::tcsetattr(STDIN_FILENO, TCSANOW, &keys);
        }
    }
    ~KeyMode()
    {
        if (Known) {
            ::tcsetattr(STDIN_FILENO, TCSANOW, &Saved);
        }
    }
    KeyMode(const KeyMode&) = delete;
    KeyMode& operator=(const KeyMode&) = delete;

private:
    termios Saved{};
    bool Known = false;
};

bool askForKey()
{
    std::cout << "-- more (Enter goes on, q stops) --" << std::flush;
    bool goOn = true;
    {
        const KeyMode keyMode;
        char key = 0;
        while (::read(STDIN_FILENO, &key, 1) == 1) {
            goOn = key != 'q' && key != 'Q';
            if (!goOn || key == '\n' || key == '\r' || key == ' ') {
                break;
            }
        }
    }
    std::cout << std::endl;
    return goOn;
}

bool askForLine()
{
    std::string reply;
    std::getline(std::cin, reply);
    return reply.empty() || std::string("qQnN").find(reply.front()) == std::string::npos;
}

}  // namespace

void message(const std::string& text)
{
    writeLine(std::cout, text);
}

void errorMessage(const std::string& text)
{
    writeLine(std::cerr, text);
}

void display(const std::string& text)
{
    std::cout.write(text.data(), static_cast<std::streamsize>(text.size()));
}

bool isVerbose()
{
    return verbose;
}

void setVerbose(bool on)
{
    verbose = on;
}

bool more()
{
    if (::isatty(STDIN_FILENO) == 0) {
        return askForLine();
    }
    return ::isatty(STDOUT_FILENO) == 0 || askForKey();
}

std::ostream& operator<<(std::ostream& out, std::string text)
{
    return out << std::string_view(text);
}

}  // namespace kd_lib
