#include "dbfrecords.h"

#include "wording.h"

#include <algorithm>

namespace kd_lib::exchange::detail {

namespace {

using namespace formats;

bool isUsualMark(char mark)
{
    return mark == validMark || mark == deletedMark;
}

}  // namespace

DbfRecords::DbfRecords(InputFile& file, const DbfLayout& layout)
    : File(file), Blocks(file), Count(layout.RecordCount), Length(layout.RecordLength), First(layout.HeaderLength)
{
}

DbfRecords::Found DbfRecords::next()
{
    if (AtEnd) {
        return Found::End;
    }
    const std::string_view bytes = Blocks.ahead(Length);
    if (bytes.size() < Length) {
        return end(bytes);
    }
    if (!isUsualMark(bytes.front()) && !isRecord(bytes.front())) {
        return end(Blocks.ahead(Length));
    }
    Bytes = Blocks.ahead(Length).substr(0, Length);
    Offset = Blocks.offset();
    ++Number;
    Blocks.skip(Length);
    return Found::Record;
}

/// Whether a record begins with this unusual mark.
bool DbfRecords::isRecord(char mark)
{
    if (Number >= Count || (mark == fileEnd && !recordFollows())) {
        return false;
    }
    noteMark(mark);
    return true;
}

/// The end mark may also be the damaged mark of a record. Then a whole record begins with it, followed by further
/// records or the end.
bool DbfRecords::recordFollows()
{
    const std::string_view bytes = Blocks.ahead(std::size_t{Length} + 1);
    if (bytes.substr(0, Length).find_first_not_of(std::string_view("\x1A \0", 3)) == std::string_view::npos) {
        return false;
    }
    if (Number + 1 == Count) {
        return bytes.size() == Length || bytes[Length] == fileEnd;
    }
    return bytes.size() > Length && isUsualMark(bytes[Length]);
}

void DbfRecords::noteMark(char mark)
{
    if (!NotedMark && !Silent) {
        NotedMark = true;
        Notes.push_back({"record " + std::to_string(Number + 1) + " has the deletion mark " +
                         hex(static_cast<std::uint8_t>(mark)) + ", which is unknown; such records are kept"});
    }
}

DbfRecords::Found DbfRecords::end(std::string_view rest)
{
    AtEnd = true;
    Rest = rest;
    const bool marked = !rest.empty() && rest.front() == fileEnd;
    const bool cut = !rest.empty() && !marked && rest.size() < Length && (Number < Count || isUsualMark(rest.front()));
    if (!NotedEnd && !Silent) {
        NotedEnd = true;
        noteEnd(rest, cut);
    }
    if (!cut) {
        return Found::End;
    }
    ++Number;
    Offset = Blocks.offset();
    Bytes = rest;
    return Found::CutRecord;
}

void DbfRecords::noteEnd(std::string_view rest, bool cut)
{
    const std::uint64_t found = Number + (cut ? 1 : 0);
    if (found != Count) {
        WrongCount = "the header counts " + count(Count, "record") + ", the file holds " + std::to_string(Number) +
                     (cut ? " whole ones" : "");
        Notes.push_back({*WrongCount, true});
    }
    if (rest.empty() || cut) {
        return;
    }
    const bool marked = rest.front() == fileEnd;
    const std::uint64_t from = Blocks.offset() + (marked ? 1 : 0);
    const std::string what = marked ? " after the end mark" : " after the last record";
    const std::uint64_t bytes = File.seekable() ? std::max(*File.size(), from) - from : rest.size() - (marked ? 1 : 0);
    if (bytes == 0) {
        return;
    }
    // Bytes that are as long as a record and not empty may be a record with a damaged mark.
    const bool mayBeRecord =
        !marked && rest.size() >= Length && rest.substr(0, Length).find_first_not_of('\0') != std::string_view::npos;
    Notes.push_back({"not read: " + (File.seekable() ? count(bytes, "byte") : "bytes") + what, mayBeRecord});
}

/// Whether the records end at the place that follows from the header's count.
bool DbfRecords::countIsRight()
{
    const std::uint64_t end = First + Count * Length;
    if (*File.size() < end) {
        return false;
    }
    char mark = 0;
    if (File.readAt(end, &mark, 1) == 1 && mark != fileEnd) {
        return false;
    }
    return Count == 0 || (File.readAt(end - Length, &mark, 1) == 1 && isUsualMark(mark));
}

/// The number of the last whole record, found by reading all marks if the header is wrong.
std::uint64_t DbfRecords::lastRecord()
{
    if (!Last && countIsRight()) {
        Last = Count;
    }
    if (!Last) {
        Silent = true;
        Blocks.seek(First);
        Number = 0;
        AtEnd = false;
        while (next() == Found::Record) {
            Last = Number;
        }
        Last = Last.value_or(0);
        Silent = false;
    }
    return *Last;
}

void DbfRecords::stepTo(std::uint64_t number)
{
    if (number <= Number) {
        throw Error(File.path(), "record " + std::to_string(number) + " was passed already");
    }
    while (Number + 1 < number && next() == Found::Record) {
    }
}

void DbfRecords::goTo(std::uint64_t number)
{
    if (!File.seekable()) {
        stepTo(number);
        return;
    }
    const std::uint64_t to = std::min(number, lastRecord() + 1);
    Blocks.seek(First + (to - 1) * Length);
    Number = to - 1;
    AtEnd = false;
}

}  // namespace kd_lib::exchange::detail
