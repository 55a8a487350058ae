#include "signals.h"

#include "exitstatus.h"

#include <atomic>
#include <csignal>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kd_tool {

namespace {

constexpr int patience = 3;
constexpr std::size_t stackSize = 65536;

std::atomic<int> received = 0;
std::atomic<bool> finishing = false;
std::atomic<pid_t> pager = 0;
sigset_t watched;
sigset_t maskBefore;

/// Never destroyed: the thread that requests the stop runs until the end of the process.
std::stop_source& stopSource()
{
    static auto* source = new std::stop_source;
    return *source;
}

[[noreturn]] void endNow(int signal)
{
    const pid_t shown = pager;
    if (shown > 0) {
        ::kill(shown, SIGTERM);
        ::waitpid(shown, nullptr, 0);
    }
    ::_exit(statusSignal + signal);
}

/// A separate thread receives the signals, because a signal handler could not request a stop.
void* watch(void*)
{
    for (int count = 1;; ++count) {
        int signal = 0;
        if (::sigwait(&watched, &signal) != 0) {
            return nullptr;
        }
        received = signal;
        const bool waits = finishing || (pager > 0 && signal == SIGINT);
        if (!waits || count >= patience) {
            endNow(signal);
        }
        stopSource().request_stop();
    }
}

bool startWatching()
{
    pthread_attr_t attributes;
    pthread_t thread{};
    ::pthread_attr_init(&attributes);
    ::pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    ::pthread_attr_setstacksize(&attributes, stackSize);
    const bool started = ::pthread_create(&thread, &attributes, watch, nullptr) == 0;
    ::pthread_attr_destroy(&attributes);
    return started;
}

bool isIgnored(int signal)
{
    struct sigaction action {};
    return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

}  // namespace

void watchSignals()
{
    static bool watching = false;
    if (watching) {
        return;
    }
    watching = true;
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    sigemptyset(&watched);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        if (!isIgnored(signal)) {
            sigaddset(&watched, signal);
        }
    }
    stopSource();
    ::pthread_sigmask(SIG_BLOCK, &watched, &maskBefore);
    if (!startWatching()) {
        // Without the thread a signal ends the program by itself.
        ::pthread_sigmask(SIG_SETMASK, &maskBefore, nullptr);
    }
}

void finishOnSignal()
{
    finishing = true;
}

std::stop_token stopToken()
{
    return stopSource().get_token();
}

int signalReceived()
{
    return received;
}

void setPager(pid_t process)
{
    pager = process;
}

void restoreSignals()
{
    std::signal(SIGPIPE, SIG_DFL);
    std::signal(SIGXFSZ, SIG_DFL);
    ::pthread_sigmask(SIG_SETMASK, &maskBefore, nullptr);
}

}  // namespace kd_tool
