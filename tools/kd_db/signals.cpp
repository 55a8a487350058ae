#include "signals.h"

#include "failure.h"

#include <csignal>
#include <termios.h>
#include <unistd.h>

namespace kd_tool {

namespace {

constexpr int patience = 3;

volatile std::sig_atomic_t received = 0;
volatile std::sig_atomic_t count = 0;
volatile std::sig_atomic_t finishing = 0;

bool terminalKnown = false;
termios terminal;

extern "C" void onSignal(int signal)
{
    received = signal;
    count = count + 1;
    if (finishing == 0 || count >= patience) {
        if (terminalKnown) {
            ::tcsetattr(STDIN_FILENO, TCSANOW, &terminal);
        }
        ::_exit(exitSignalBase + signal);
    }
}

void handle(int signal, void (*handler)(int))
{
    struct sigaction action {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    ::sigaction(signal, &action, nullptr);
}

bool isIgnored(int signal)
{
    struct sigaction action {};
    return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

}  // namespace

void installSignals()
{
    terminalKnown = ::tcgetattr(STDIN_FILENO, &terminal) == 0;
    handle(SIGPIPE, SIG_IGN);
    handle(SIGXFSZ, SIG_IGN);
    handle(SIGINT, onSignal);
    handle(SIGTERM, onSignal);
    if (!isIgnored(SIGHUP)) {
        handle(SIGHUP, onSignal);
    }
}

void finishOnSignal()
{
    finishing = 1;
}

int signalReceived()
{
    return received;
}

void throwIfInterrupted()
{
    if (received != 0) {
        throw Interrupted{received};
    }
}

}  // namespace kd_tool
