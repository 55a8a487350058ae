// A MySQL client library without a server, for LD_PRELOAD: a program that sends statements to a server writes
// them to standard output instead, so that its own work can be measured.

#include <cstdio>

namespace {

constexpr int succeeded = 0;

/// The connection and the result of the callers, who never look inside.
int connectionMark = 0;
int resultMark = 0;

}  // namespace

extern "C" {

void* mysql_init(void* given)
{
    return given != nullptr ? given : &connectionMark;
}

int mysql_options(void*, int, const void*)
{
    return succeeded;
}

void* mysql_real_connect(void* connection, const char*, const char*, const char*, const char*, unsigned int,
                         const char*, unsigned long)
{
    return connection;
}

int mysql_query(void*, const char* statement)
{
    return std::fputs(statement, stdout) < 0 || std::fputs(";\n", stdout) < 0 ? 1 : succeeded;
}

/// A list without a table.
void* mysql_list_tables(void*, const char*)
{
    return &resultMark;
}

char** mysql_fetch_row(void*)
{
    return nullptr;
}

void mysql_free_result(void*) {}

const char* mysql_error(void*)
{
    return "";
}

void mysql_close(void*)
{
    std::fflush(stdout);
}
}
