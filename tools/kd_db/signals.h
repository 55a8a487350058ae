/// \file
/// Signals that end the program.
#pragma once

#include <stop_token>
#include <sys/types.h>

namespace kd_tool {

/// From now on SIGINT, SIGTERM and SIGHUP end the program at once, with status 128 plus the signal's number; a
/// closed pipe and the limit of a file's size become failed writes. A signal that was ignored before stays ignored.
void watchSignals();

/// From now on these signals only request a stop, through `stopToken`: work that changes files undoes everything and
/// ends by itself. A third signal still ends the program at once.
void finishOnSignal();

/// A stop is requested when a signal arrives.
std::stop_token stopToken();

/// The signal that requested the stop; 0: none.
int signalReceived();

/// While a pager shows the results, the pager handles SIGINT, and the program only stops writing. The other signals end
/// the pager too. 0: no pager.
void setPager(pid_t process);

/// Lets a child process receive signals as usual; between fork and exec.
void restoreSignals();

}  // namespace kd_tool
