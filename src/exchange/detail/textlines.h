/// \file
/// The lines of a text.
#pragma once

#include "textwindow.h"

#include <cstdint>
#include <string_view>

namespace kd_lib::exchange::detail {

/// Reads lines that end with LF or CR LF, or with CR if the first line does.
class TextLines {
public:
    /// Starts at the beginning of `window`, which must outlive the object.
    explicit TextLines(TextWindow& window) : Window(window) { restart(); }

    /// Reads the next line; false at the end. The end mark of DOS is not a line.
    bool next();

    /// The line, without its end. It views the window until the next call.
    std::string_view line() const { return Line; }

    std::uint64_t number() const { return Number; }  ///< of the line, from 1

    /// Whether the text ended with the end mark of DOS.
    bool hasEndMark() const { return EndMark; }

    /// Starts again at the beginning of the window, which has been restarted.
    void restart();

private:
    void findLineEnd();

    TextWindow& Window;
    const char* Next = nullptr;
    std::string_view Line;
    std::uint64_t Number = 0;
    char LineEnd = '\0';  // not known before the first line
    bool EndMark = false;
};

}  // namespace kd_lib::exchange::detail
