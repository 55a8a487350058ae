/// \file
/// Reading xBase tables (`.dbf`); docs/dbf-format.md describes the bytes.
#pragma once

#include <kd_lib/export.h>
#include <kd_lib/filetable.h>

#include <string>

namespace kd_lib {

/// An xBase table: a binary file with a header that defines the columns, then fixed-length records.
///
///     kd_lib::xBaseTable stock("stock");
///     if (stock.open() && stock.getFieldList()) {
///         for (stock.firstRecord(); stock.fetchRecord();) {
///             if (!stock.isDeleted()) { use(stock.Fields.getData("price")); }
///         }
///     }
///
/// Threads: one thread per object.
class KD_LIB_EXPORT xBaseTable : public FileTable {
public:
    int Version = 0;           ///< first byte of the header, 0 to 255
    std::string LastUpdate;    ///< year, month and day in decimal without padding: 202435 is 5 March 2024
    bool ReadDeleted = false;  ///< true: deleted records are extracted like any other

    xBaseTable();                                  ///< extension "dbf", binary, fixed-length records
    explicit xBaseTable(const std::string& name);  ///< the same, with `Name` set
    ~xBaseTable() override;

    /// Goes to byte `HeaderLength`; false only when not open.
    bool skipHeader() override;

    /// Displays the header, then the column list, then an empty line.
    void showHeader() override;

    /// Reads the record at the current position; bytes that the C locale's `isprint` rejects become
    /// blanks. True when the stream is then in none of the states fail, bad and end-of-file.
    /// - Not open: error line "Table is not open", false.
    /// - A deleted record while `ReadDeleted` is false: true; the values of the previous record stay, and
    ///   `isDeleted` returns true.
    /// - A record truncated by the end of the file, or a `RecordLength` of 0: false, the values stay.
    /// - End or damage? Count the records that were fetched: fewer than `RecordCount` mean that the file is damaged.
    bool fetchRecord() override;

    /// Reads the header and the field descriptors into `Version`, `LastUpdate`, `RecordCount`,
    /// `HeaderLength`, `RecordLength` and `Fields`, which it clears first; then one byte, the
    /// terminator, so that the position is the first record's in an ordinary file.
    /// False when not open or when the file is empty. The missing bytes of a truncated file count as
    /// zero bytes. A header length below 32, read as a signed number, throws std::length_error.
    bool readHeader() override;

    /// True when the record read last has the deletion mark.
    bool isDeleted() const { return deleted_; }

    /// C char, D date, F float, L boolean, M memo, N integer, P blob; every other byte is unknown.
    /// Deliberate: N is integer, even with decimals.
    FIELD_TYPE convertXbaseFieldType(unsigned char letter);

    /// False when the first character of `value` is f, F, n or N; true otherwise, also when it is empty.
    bool convertBoolean(const std::string& value);

private:
    KD_LIB_LOCAL void readDescriptors(int count);

    bool deleted_ = false;
};

}  // namespace kd_lib
