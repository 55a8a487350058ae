/// \file
/// Sources of records.
#pragma once

#include <kd_lib/exchange/column.h>
#include <kd_lib/exchange/error.h>
#include <kd_lib/exchange/record.h>
#include <kd_lib/export.h>

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kd_lib::exchange {

/// One fact about a file: "code page" and "CP1252 (language byte 57)".
struct Fact {
    std::string Label;  ///< small letters, no colon
    std::string Value;
};

/// An open table that is read once, from its first record to its last. Sources differ only in how they are created
/// (`openSource` chooses by the file's name); all are used in the same way:
///
///     const auto source = openSource("people.dbf");
///     for (const Record& record : *source) {
///         use(record["name"].text(), record["born"].date());
///     }
///
/// The records are those that the options select: deleted records and those outside the range are left out. Threads:
/// one thread per object. After an exception the source cannot be used further.
class KD_LIB_EXPORT Source {
public:
    virtual ~Source();
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;

    /// The file as the caller named it.
    const std::string& file() const { return File; }

    /// The columns of each record. They do not change.
    const std::vector<Column>& columns() const { return Columns; }

    /// Reads the next record; false at the end. Throws an `Error` if the rest of the file cannot be read.
    bool next();

    /// The record that `next` read. Mutable, so that a target can mark what it cannot hold.
    Record& record() { return Current; }

    /// The place of the current record's cell in the file, and its bytes there; for rejects.
    struct Origin {
        std::optional<std::uint64_t> Offset;  ///< of the cell in the file; nothing: it has no bytes there
        std::string_view Bytes;               ///< valid until `next`
    };
    virtual Origin origin(std::size_t column) const = 0;

    /// Makes `next` read the record of this number, or the first selected one after it. A source of fixed record length
    /// goes there in one step; others read up to it, if necessary from the beginning. Throws an `Error` if the source
    /// cannot go back (standard input).
    virtual void seek(std::uint64_t number) = 0;

    /// From the next record on only these columns are decoded. The cells of the others are null and never rejected.
    /// `needed` has an element for each column.
    virtual void need(const std::vector<bool>& needed) { Needed = needed; }

    /// Notes about the file so far, in the order in which they arose. Complete once `next` has returned false.
    const std::vector<Note>& notes() const { return Notes; }

    /// Facts for a description of the file: its kind first.
    virtual std::vector<Fact> facts() const { return {}; }

    std::uint64_t recordsRead() const { return Read; }        ///< records of the range read from the file
    std::uint64_t recordsLeftOut() const { return LeftOut; }  ///< of these, the deleted records that were left out

    /// Bytes of the file that have been read, for a progress display.
    virtual std::uint64_t position() const = 0;
    /// Bytes of the file; nothing if that is not known.
    virtual std::optional<std::uint64_t> size() const = 0;

    /// Iterates over the records that are left.
    class Iterator {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = const Record;
        using difference_type = std::ptrdiff_t;
        using pointer = const Record*;
        using reference = const Record&;

        Iterator() = default;
        explicit Iterator(Source& source) : Of(source.next() ? &source : nullptr) {}
        const Record& operator*() const { return Of->Current; }
        const Record* operator->() const { return &Of->Current; }
        Iterator& operator++()
        {
            if (!Of->next()) {
                Of = nullptr;
            }
            return *this;
        }
        void operator++(int) { ++*this; }
        friend bool operator==(const Iterator&, const Iterator&) = default;

    private:
        Source* Of = nullptr;
    };

    Iterator begin() { return Iterator(*this); }
    Iterator end() { return {}; }

protected:
    explicit Source(std::string file) : File(std::move(file)) {}

    /// Fills `Current` (number, offset, deleted, every cell, flaws) with the next selected record, and counts `Read`
    /// and `LeftOut`. False at the end. `Current.Flaws` is empty when it is called.
    virtual bool read() = 0;

    /// Adds a note about the file, unless it has been added already.
    void note(std::string text, bool loss = false);

    /// The same for a note that one of the facts repeats.
    void noteFact(std::string text);

    bool needed(std::size_t column) const { return Needed.empty() || Needed[column]; }

    std::string File;
    std::vector<Column> Columns;
    Record Current;
    std::vector<bool> Needed;
    std::uint64_t Read = 0;
    std::uint64_t LeftOut = 0;

private:
    std::vector<Note> Notes;
};

}  // namespace kd_lib::exchange
