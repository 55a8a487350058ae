#include "faulty_files.h"

namespace kd_test {

namespace {

struct State {
    std::uint64_t Count = 0;
    std::uint64_t At = 0;  // 0: nothing fails
    bool Further = false;
    bool Failed = false;
} state;

bool fails()
{
    ++state.Count;
    const bool now = state.At != 0 && (state.Count == state.At || (state.Further && state.Count > state.At));
    state.Failed = state.Failed || now;
    return now;
}

sqlite3_vfs* system = nullptr;
sqlite3_vfs faulty;

/// A file of SQLite; the file of the system follows it in memory.
struct File {
    sqlite3_file Base;

    sqlite3_file* real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};

sqlite3_file* realOf(sqlite3_file* file)
{
    return reinterpret_cast<File*>(file)->real();
}

const sqlite3_io_methods methods = {
    1,
    [](sqlite3_file* f) { return realOf(f)->pMethods != nullptr ? realOf(f)->pMethods->xClose(realOf(f)) : SQLITE_OK; },
    [](sqlite3_file* f, void* to, int size, sqlite3_int64 at) {
        return fails() ? SQLITE_IOERR_READ : realOf(f)->pMethods->xRead(realOf(f), to, size, at);
    },
    [](sqlite3_file* f, const void* from, int size, sqlite3_int64 at) {
        return fails() ? SQLITE_FULL : realOf(f)->pMethods->xWrite(realOf(f), from, size, at);
    },
    [](sqlite3_file* f, sqlite3_int64 size) {
        return fails() ? SQLITE_IOERR_TRUNCATE : realOf(f)->pMethods->xTruncate(realOf(f), size);
    },
    [](sqlite3_file* f, int flags) {
        return fails() ? SQLITE_IOERR_FSYNC : realOf(f)->pMethods->xSync(realOf(f), flags);
    },
    [](sqlite3_file* f, sqlite3_int64* size) { return realOf(f)->pMethods->xFileSize(realOf(f), size); },
    [](sqlite3_file* f, int lock) { return realOf(f)->pMethods->xLock(realOf(f), lock); },
    [](sqlite3_file* f, int lock) { return realOf(f)->pMethods->xUnlock(realOf(f), lock); },
    [](sqlite3_file* f, int* held) { return realOf(f)->pMethods->xCheckReservedLock(realOf(f), held); },
    [](sqlite3_file* f, int what, void* with) { return realOf(f)->pMethods->xFileControl(realOf(f), what, with); },
    [](sqlite3_file* f) { return realOf(f)->pMethods->xSectorSize(realOf(f)); },
    [](sqlite3_file* f) { return realOf(f)->pMethods->xDeviceCharacteristics(realOf(f)); },
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    nullptr};

int openFile(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* got)
{
    file->pMethods = nullptr;
    if (fails()) {
        return SQLITE_CANTOPEN;
    }
    const int code = system->xOpen(system, name, realOf(file), flags, got);
    file->pMethods = realOf(file)->pMethods != nullptr ? &methods : nullptr;
    return code;
}

int removeFile(sqlite3_vfs*, const char* name, int sync)
{
    return fails() ? SQLITE_IOERR_DELETE : system->xDelete(system, name, sync);
}

}  // namespace

FaultyFiles::FaultyFiles()
{
    system = sqlite3_vfs_find(nullptr);
    faulty = *system;
    faulty.zName = "faulty";
    faulty.pNext = nullptr;
    faulty.szOsFile = static_cast<int>(sizeof(File)) + system->szOsFile;
    faulty.xOpen = openFile;
    faulty.xDelete = removeFile;
    state = {};
    sqlite3_vfs_register(&faulty, 1);
}

FaultyFiles::~FaultyFiles()
{
    sqlite3_vfs_unregister(&faulty);
    sqlite3_vfs_register(system, 1);
}

void FaultyFiles::failAt(std::uint64_t operation, Kind kind)
{
    state = {0, operation, kind == Kind::FromThenOn, false};
}

void FaultyFiles::stop()
{
    state.At = 0;
}

bool FaultyFiles::failed() const
{
    return state.Failed;
}

}  // namespace kd_test
