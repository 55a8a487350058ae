#pragma once

#include <dlfcn.h>
#include <sqlite3.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <string>
#include <vector>

// These functions replace those of SQLite: the library's calls come here first. They
// are defined in this header, so only one source file of a program includes it.

namespace kd_test {

/// One call of `sqlite3_open_v2`.
struct OpenCall {
    std::string Path;
    int Flags;
    bool NamesFileSystem;
};

/// The calls since the last `reset`, and the results to return instead of SQLite's.
struct SqliteCalls {
    std::vector<OpenCall> Opens;
    std::vector<std::string> Prepared;     ///< the texts given to `sqlite3_prepare_v2`
    std::vector<sqlite3_stmt*> Finalized;  ///< the statements given to `sqlite3_finalize`
    int Steps = 0;
    int Closes = 0;

    /// Results by function: the given code this number of times, without the real call.
    struct Reply {
        int Code = SQLITE_OK;
        int Times = 0;
    };
    std::map<std::string, Reply> Replies;

    void reset() { *this = SqliteCalls(); }

    /// Whether this call gets a reply from here; each such call uses up one.
    bool takes(const std::string& function, int& code)
    {
        Reply& reply = Replies[function];
        code = reply.Code;
        return reply.Times > 0 && reply.Times-- > 0;
    }
};

inline SqliteCalls sqliteCalls;

/// The real function of this name.
template <class Function>
Function* realCall(const char* name)
{
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

}  // namespace kd_test

extern "C" {

int sqlite3_open_v2(const char* path, sqlite3** handle, int flags, const char* fileSystem)
{
    static auto* const real = kd_test::realCall<decltype(sqlite3_open_v2)>("sqlite3_open_v2");
    kd_test::sqliteCalls.Opens.push_back({path, flags, fileSystem != nullptr});
    return real(path, handle, flags, fileSystem);
}

int sqlite3_prepare_v2(sqlite3* handle, const char* sql, int bytes, sqlite3_stmt** statement, const char** tail)
{
    static auto* const real = kd_test::realCall<decltype(sqlite3_prepare_v2)>("sqlite3_prepare_v2");
    const std::size_t length = bytes < 0 ? std::strlen(sql) : ::strnlen(sql, static_cast<std::size_t>(bytes));
    kd_test::sqliteCalls.Prepared.emplace_back(sql, length);
    return real(handle, sql, bytes, statement, tail);
}

int sqlite3_step(sqlite3_stmt* statement)
{
    static auto* const real = kd_test::realCall<decltype(sqlite3_step)>("sqlite3_step");
    ++kd_test::sqliteCalls.Steps;
    int code = SQLITE_OK;
    return kd_test::sqliteCalls.takes("step", code) ? code : real(statement);
}

int sqlite3_reset(sqlite3_stmt* statement)
{
    static auto* const real = kd_test::realCall<decltype(sqlite3_reset)>("sqlite3_reset");
    int code = SQLITE_OK;
    return kd_test::sqliteCalls.takes("reset", code) ? code : real(statement);
}

/// Destroys the statement whatever it returns, as SQLite does.
int sqlite3_finalize(sqlite3_stmt* statement)
{
    static auto* const real = kd_test::realCall<decltype(sqlite3_finalize)>("sqlite3_finalize");
    kd_test::sqliteCalls.Finalized.push_back(statement);
    int code = SQLITE_OK;
    const bool taken = kd_test::sqliteCalls.takes("finalize", code);
    const int reply = real(statement);
    return taken ? code : reply;
}

int sqlite3_close_v2(sqlite3* handle)
{
    static auto* const real = kd_test::realCall<decltype(sqlite3_close_v2)>("sqlite3_close_v2");
    ++kd_test::sqliteCalls.Closes;
    int code = SQLITE_OK;
    return kd_test::sqliteCalls.takes("close", code) ? code : real(handle);
}

}  // extern "C"
