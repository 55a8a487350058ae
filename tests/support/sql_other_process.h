#pragma once

#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>

namespace kd_test {

/// Another process with a separate connection to a database file. It must be created before this process
/// opens the file: SQLite's bookkeeping of locks must not cross a fork.
class OtherProcess {
public:
    explicit OtherProcess(const std::string& path)
    {
        if (::pipe(Requests) == 0 && ::pipe(Replies) == 0) {
            Child = ::fork();
        }
        if (Child == 0) {
            serve(path);
        }
        ::close(Requests[0]);
        ::close(Replies[1]);
    }
    /// Ends the other process, and with it its locks.
    ~OtherProcess()
    {
        ::close(Requests[1]);
        ::close(Replies[0]);
        int status = 0;
        ::waitpid(Child, &status, 0);
    }
    OtherProcess(const OtherProcess&) = delete;
    OtherProcess& operator=(const OtherProcess&) = delete;

    /// Runs SQL statements in the other process; returns SQLite's code, or -1 if there was no reply.
    int run(const std::string& sql)
    {
        const std::string line = sql + '\n';
        std::uint8_t reply = 0;
        const bool replied = ::write(Requests[1], line.data(), line.size()) == static_cast<ssize_t>(line.size()) &&
                             ::read(Replies[0], &reply, 1) == 1;
        return replied ? reply : -1;
    }

private:
    [[noreturn]] void serve(const std::string& path)
    {
        ::close(Requests[1]);
        ::close(Replies[0]);
        sqlite3* handle = nullptr;
        sqlite3_open(path.c_str(), &handle);
        std::string sql;
        for (char c = 0; ::read(Requests[0], &c, 1) == 1;) {
            if (c != '\n') {
                sql += c;
                continue;
            }
            const auto reply = static_cast<std::uint8_t>(sqlite3_exec(handle, sql.c_str(), nullptr, nullptr, nullptr));
            sql.clear();
            if (::write(Replies[1], &reply, 1) != 1) {
                break;
            }
        }
        ::_exit(0);
    }

    int Requests[2] = {-1, -1};
    int Replies[2] = {-1, -1};
    pid_t Child = -1;
};

}  // namespace kd_test
