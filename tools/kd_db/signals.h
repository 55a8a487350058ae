/// \file
/// Signals that end the program.
#pragma once

namespace kd_tool {

/// SIGINT, SIGTERM and SIGHUP end the program at once, with the terminal as it was before. A closed pipe
/// and the limit of a file's size become failed writes.
void installSignals();

/// From now on the three signals only ask for the end: work that changes files looks for them and leaves
/// everything as it was before. The third one still ends the program at once.
void finishOnSignal();

/// The signal that asked for the end; 0: none.
int signalReceived();

/// Throws `Interrupted` when a signal asked for the end.
void throwIfInterrupted();

}  // namespace kd_tool
