/// \file
/// The ordered, owning column list of a table.
#pragma once

#include <kd_lib/export.h>
#include <kd_lib/tablefield.h>

#include <string>
#include <vector>

namespace kd_lib {

/// Columns in definition order, numbered from 0. The list owns its columns: `add` makes them,
/// `clearList` and destruction delete them. A copy of a list has columns of its own, values included.
/// Threads: one thread per object.
class KD_LIB_EXPORT TableFields {
public:
    /// The columns. Pointers stay valid until `clearList`, assignment or destruction.
    std::vector<TableField*> List;

    /// False (the start): names are folded to lower case when stored and when `get` looks them up.
    /// True: they are stored and matched as passed. A change leaves stored names as they are.
    bool CaseSensitive = false;

    TableFields() = default;                               ///< an empty list
    TableFields(const TableFields& other);                 ///< copies the columns, values included
    TableFields(TableFields&& other) noexcept;             ///< takes the columns; `other` is left empty
    TableFields& operator=(const TableFields& other);      ///< replaces the columns by copies
    TableFields& operator=(TableFields&& other) noexcept;  ///< replaces the columns; `other` is left empty
    ~TableFields();                                        ///< deletes the columns

    /// The number of columns.
    std::size_t size() const { return List.size(); }

    /// Deletes every column.
    void clearList();

    /// Appends a column of this name, of type unknown. Names may repeat.
    void add(const std::string& name);

    /// Appends a column with the definition of `field`. Its value is not copied: it starts empty.
    void add(TableField& field);

    /// The first column with this name, folded as in `add`; null when there is none.
    TableField* get(const std::string& name);

    /// The column at `index`; null at or past the end.
    TableField* get(unsigned long index);

    /// The index of the first column with this name; -1 when there is none.
    /// Deliberate: the key is folded only when `CaseSensitive` is true, the opposite of `add` and `get`.
    int findNumber(const std::string& name);

    /// The value of `get(name)`; "no field " followed by `name` as passed when there is none.
    std::string getData(const std::string& name);

    /// The value of the column at `index`; "no field #" followed by the number at or past the end.
    std::string getData(unsigned long index);

    /// Displays "Fields:" and one line per column, tab-separated: number, name, type name, offset,
    /// length, decimals, indexed as 0 or 1.
    void show();
};

}  // namespace kd_lib
