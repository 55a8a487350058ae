/// \file
/// The system's converter to UTF-8.
#pragma once

#include <kd_lib/exchange/error.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <iconv.h>
#include <string>
#include <utility>

namespace kd_lib::exchange::detail {

/// A handle of iconv that converts to UTF-8.
class SystemConverter {
public:
    /// Why `convert` returned.
    enum class Stop {
        Done,       ///< everything is converted
        Full,       ///< the output is full
        Unknown,    ///< the next bytes of the input are not in the page
        Incomplete  ///< the rest of the input is the beginning of a character
    };

    explicit SystemConverter(const std::string& from)
        : Handle(isName(from) ? ::iconv_open("UTF-8", from.c_str()) : nullptr)
    {
        if (!isOpen() && isName(from) && !canOpenAny()) {
            throw Error(std::string(), "the system's tables of code pages cannot be opened");
        }
    }
    ~SystemConverter()
    {
        if (isOpen()) {
            ::iconv_close(Handle);
        }
    }
    SystemConverter(const SystemConverter&) = delete;
    SystemConverter& operator=(const SystemConverter&) = delete;

    /// False if iconv does not know the page.
    bool isOpen() const { return isHandle(Handle); }

    /// Resets the converter.
    void reset() { ::iconv(Handle, nullptr, nullptr, nullptr, nullptr); }

    /// Converts from `from` to `to`; advances both and reduces both counts.
    Stop convert(const char*& from, std::size_t& size, char*& to, std::size_t& room)
    {
        // iconv does not write to its input, although its declaration lacks the const.
        return stopOf(::iconv(Handle, const_cast<char**>(&from), &size, &to, &room));
    }

    /// Writes the characters that the converter has held back, such as a letter that an accent may follow.
    Stop finish(char*& to, std::size_t& room) { return stopOf(::iconv(Handle, nullptr, nullptr, &to, &room)); }

private:
    /// False if even a page that every system has cannot be opened, for lack of memory or file descriptors.
    static bool canOpenAny()
    {
        const iconv_t any = ::iconv_open("UTF-8", "ISO-8859-2");
        return isHandle(any) && ::iconv_close(any) == 0;
    }

    /// iconv_open returns -1 on failure.
    static bool isHandle(iconv_t handle) { return handle != nullptr && reinterpret_cast<std::intptr_t>(handle) != -1; }

    /// iconv treats "" as the page of the environment, and a part after a slash as an instruction.
    static bool isName(const std::string& name) { return !name.empty() && name.find('/') == std::string::npos; }

    static Stop stopOf(std::size_t result)
    {
        if (result != static_cast<std::size_t>(-1)) {
            return Stop::Done;
        }
        return errno == E2BIG ? Stop::Full : errno == EINVAL ? Stop::Incomplete : Stop::Unknown;
    }

    iconv_t Handle;
};

}  // namespace kd_lib::exchange::detail
