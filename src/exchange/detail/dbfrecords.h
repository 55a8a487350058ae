/// \file
/// The records of a .dbf file in order, even if their count in the header is wrong.
#pragma once

#include "dbflayout.h"
#include "inputfile.h"
#include "recordblocks.h"

#include <kd_lib/exchange/error.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kd_lib::exchange::detail {

/// Reads the records in order, up to the end mark or the end of the file, whatever count the header has.
class DbfRecords {
public:
    /// The file must be at the first record, after its header.
    DbfRecords(InputFile& file, const DbfLayout& layout);

    enum class Found : std::uint8_t {
        Record,
        CutRecord,  ///< the file ends within this last record
        End
    };

    /// Reads the next record.
    Found next();

    std::string_view bytes() const { return Bytes; }  ///< of the record, from its deletion mark on
    std::uint64_t number() const { return Number; }   ///< of the record, from 1; 0 before the first
    std::uint64_t offset() const { return Offset; }   ///< of the record in the file
    bool deleted() const { return Bytes.front() == formats::deletedMark; }

    /// Makes `next` read the record of this number, or the end. Standard input is read up to it; throws an `Error` if
    /// it has passed the record already.
    void goTo(std::uint64_t number);

    /// After the end: the bytes after the records that are in memory, and their place.
    std::string_view rest() const { return Rest; }
    std::uint64_t restOffset() const { return Blocks.offset(); }

    /// Whether there are notes, and the notes.
    bool hasNotes() const { return !Notes.empty(); }
    std::vector<Note> takeNotes() { return std::exchange(Notes, {}); }

    /// After the end: a text if the header's count is wrong, which is also one of the notes.
    const std::optional<std::string>& wrongCount() const { return WrongCount; }

private:
    Found end(std::string_view rest);
    bool isRecord(char mark);
    bool recordFollows();
    void noteMark(char mark);
    void noteEnd(std::string_view rest, bool cut);
    bool countIsRight();
    std::uint64_t lastRecord();
    void stepTo(std::uint64_t number);

    InputFile& File;
    RecordBlocks Blocks;
    std::uint64_t Count;
    std::uint32_t Length;
    std::uint64_t First;  ///< byte of the first record

    std::string_view Bytes;
    std::uint64_t Number = 0;
    std::uint64_t Offset = 0;
    bool AtEnd = false;
    std::string_view Rest;

    std::optional<std::uint64_t> Last;  ///< number of the last record, if it was needed
    std::vector<Note> Notes;
    std::optional<std::string> WrongCount;
    bool Silent = false;
    bool NotedMark = false;
    bool NotedEnd = false;
};

}  // namespace kd_lib::exchange::detail
