#pragma once

#include <kd_lib/tablefields.h>

#include <cstddef>
#include <string>
#include <utility>

namespace kd_fuzz {

/// Whether slicing a record of this many bytes would meet a column that it fills only in part: the case
/// that stops the process by the stated assertion. A column after the record's end causes
/// std::out_of_range instead, so the first column that does not fit decides.
inline bool wouldStop(const kd_lib::TableFields& fields, std::size_t recordSize)
{
    for (const kd_lib::TableField& field : fields) {
        const auto offset = static_cast<std::size_t>(field.Offset);
        if (offset > recordSize) {
            return false;
        }
        if (static_cast<std::size_t>(field.getLength()) > recordSize - offset) {
            return true;
        }
    }
    return false;
}

/// A table that skips the records that would stop the process; the assertion is an outcome.
template <class Table>
class ShapeChecked : public Table {
public:
    using Table::Table;

    bool extractContent(const std::string& record) override
    {
        return wouldStop(this->Fields, record.size()) || Table::extractContent(record);
    }
};

}  // namespace kd_fuzz
