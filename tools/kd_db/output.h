/// \file
/// Where the program's output goes: results to standard output, everything else to standard error.
#pragma once

#include "escape.h"

#include <cstdint>
#include <ostream>
#include <streambuf>
#include <string>
#include <vector>

namespace kd_tool {

/// Writes blocks to a file descriptor. After the first failed write it takes nothing more.
class DescriptorBuffer : public std::streambuf {
public:
    /// With `escapeControls` control bytes other than line ends and tabs become escapes.
    DescriptorBuffer(int descriptor, bool escapeControls);

    /// The system's error number of the first failed write; 0: none failed.
    int error() const { return Error; }

protected:
    int_type overflow(int_type c) override;
    int sync() override;

private:
    bool writeOut();

    int Descriptor;
    bool EscapeControls;
    int Error = 0;
    ControlEscaper Escaper{true};
    std::string Escaped;
    std::vector<char> Block;  // not on the stack, whose growth under a memory limit ends the process
};

/// As long as it lives, what the library displays goes to standard output in blocks; a terminal shows
/// control bytes of the data as escapes. `finish` at the end.
class ResultOutput {
public:
    ResultOutput();
    ~ResultOutput();
    ResultOutput(const ResultOutput&) = delete;
    ResultOutput& operator=(const ResultOutput&) = delete;

    /// Nothing that is displayed arrives any more.
    bool failed() const { return Buffer.error() != 0; }

    /// Writes what is left. Throws `ReaderGone` or a `Failure` when not everything could be written.
    void finish();

private:
    DescriptorBuffer Buffer;
    std::streambuf* Before;
};

/// As long as it lives, what the library says on standard output goes to standard error. Made once, at the
/// start of the program.
class NoteOutput {
public:
    NoteOutput();
    ~NoteOutput();
    NoteOutput(const NoteOutput&) = delete;
    NoteOutput& operator=(const NoteOutput&) = delete;

private:
    DescriptorBuffer Buffer;
    std::streambuf* Before;
};

/// As long as it lives, `stream` says nothing.
class Muted {
public:
    explicit Muted(std::ostream& stream) : Stream(stream), Before(stream.rdbuf(nullptr)) {}
    ~Muted() { Stream.rdbuf(Before); }
    Muted(const Muted&) = delete;
    Muted& operator=(const Muted&) = delete;

private:
    std::ostream& Stream;
    std::streambuf* Before;
};

/// Makes sure that the standard descriptors are open, so that no file of the data gets one of their
/// numbers. A closed standard output fails when it is written to.
void keepStandardDescriptors();

/// Says `text` on standard error, as one line.
void note(const std::string& text);

/// `count` and the word for it: "1 record", "2 records".
std::string counted(std::uint64_t count, const std::string& word);

/// The error line of a failure.
void reportFailure(const std::string& file, const std::string& reason);

}  // namespace kd_tool
