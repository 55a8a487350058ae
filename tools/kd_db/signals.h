/// \file
/// Signals that end the program.
#pragma once

#include <stop_token>
#include <sys/types.h>

namespace kd_tool {

/// From now on SIGINT, SIGTERM and SIGHUP end the program at once, with status 128 plus the signal's number; a
/// closed pipe and the limit of a file's size become failed writes. A signal that was ignored before stays so.
void watchSignals();

/// From now on the three signals only request a stop, through `stopToken`: work that changes files undoes everything
/// and ends by itself. The third signal still ends the program at once.
void finishOnSignal();

/// Requested to stop when a signal comes.
std::stop_token stopToken();

/// The signal that requested the stop; 0: none.
int signalReceived();

/// While a pager shows the results, SIGINT is left to it and only makes the program stop writing; the other signals end
/// the pager too. 0: no pager.
void setPager(pid_t process);

/// Lets a child process receive signals as usual; between fork and exec.
void restoreSignals();

}  // namespace kd_tool
