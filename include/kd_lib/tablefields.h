/// \file
/// The ordered, owning column list of a table.
#pragma once

#include <kd_lib/export.h>
#include <kd_lib/tablefield.h>

#include <cstddef>
#include <iterator>
#include <string>
#include <vector>

namespace kd_lib {

namespace detail {

/// An iterator over columns through their pointers; `Field` is `TableField` or `const TableField`. Not for client
/// programs.
template <class Field>
class FieldIterator {
public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = TableField;
    using difference_type = std::ptrdiff_t;
    using pointer = Field*;
    using reference = Field&;

    FieldIterator() = default;
    explicit FieldIterator(TableField* const* place) : Place(place) {}

    reference operator*() const { return **Place; }
    pointer operator->() const { return *Place; }
    FieldIterator& operator++()
    {
        ++Place;
        return *this;
    }
    FieldIterator operator++(int) { return FieldIterator(Place++); }
    bool operator==(const FieldIterator&) const = default;

private:
    TableField* const* Place = nullptr;
};

}  // namespace detail

/// Columns in definition order, numbered from 0. The list owns its columns: `add` creates them,
/// `clearList` and destruction delete them. Copying a list copies its columns and their values.
///
///     for (const kd_lib::TableField& column : table.Fields) { std::cout << column.Name << '\n'; }
///
/// Threads: one thread per object.
class KD_LIB_EXPORT TableFields {
public:
    /// The columns. Pointers stay valid until `clearList`, assignment or destruction.
    std::vector<TableField*> List;

    /// False (the default): names are changed to lower case when they are stored and when `get` looks them
    /// up. True: they are stored and compared as passed. Changing this leaves stored names unchanged.
    bool CaseSensitive = false;

    TableFields() = default;                               ///< an empty list
    TableFields(const TableFields& other);                 ///< copies the columns, values included
    TableFields(TableFields&& other) noexcept;             ///< takes the columns; `other` is left empty
    TableFields& operator=(const TableFields& other);      ///< replaces the columns by copies
    TableFields& operator=(TableFields&& other) noexcept;  ///< replaces the columns; `other` is left empty
    ~TableFields();                                        ///< deletes the columns

    /// The number of columns.
    std::size_t size() const { return List.size(); }

    /// \name Iteration
    /// The columns in order. Adding a column, and whatever makes the pointers of `List` invalid, invalidates the
    /// iterators.
    /// @{
    using iterator = detail::FieldIterator<TableField>;              ///< to a column
    using const_iterator = detail::FieldIterator<const TableField>;  ///< to a constant column
    /// The first column.
    iterator begin() { return iterator(List.data()); }
    /// After the last column.
    iterator end() { return iterator(List.data() + List.size()); }
    /// The first column.
    const_iterator begin() const { return const_iterator(List.data()); }
    /// After the last column.
    const_iterator end() const { return const_iterator(List.data() + List.size()); }
    /// @}

    /// Deletes every column.
    void clearList();

    /// Appends a column with this name and of type unknown. Names may be repeated.
    void add(const std::string& name);

    /// Appends a column with the definition of `field`. Its value is not copied; the new one is empty.
    void add(TableField& field);

    /// The first column with this name, folded as in `add`; null when there is none.
    TableField* get(const std::string& name);
    const TableField* get(const std::string& name) const;  ///< the same

    /// The column at `index`; null at or past the end.
    TableField* get(unsigned long index);
    const TableField* get(unsigned long index) const;  ///< the same

    /// The index of the first column with this name; -1 when there is none.
    /// Deliberate: the key is folded only when `CaseSensitive` is true, the opposite of `add` and `get`.
    int findNumber(const std::string& name) const;

    /// The value of `get(name)`; "no field " followed by `name` as passed when there is none.
    std::string getData(const std::string& name) const;

    /// The value of the column at `index`; "no field #" followed by the number at or past the end.
    std::string getData(unsigned long index) const;

    /// Displays "Fields:" and one line per column, tab-separated: number, name, type name, offset,
    /// length, decimals, indexed as 0 or 1.
    void show() const;
};

}  // namespace kd_lib
