/// \file
/// Facts about a .dbf file, for a description.
#pragma once

#include "dbflayout.h"
#include "memofile.h"
#include "tablecodepage.h"

#include <kd_lib/exchange/source.h>

#include <string>
#include <vector>

namespace kd_lib::exchange::detail {

/// The kind of the table: "dBase III with memo (version byte 83)".
std::string kindOfTable(const DbfLayout& layout);

/// The day of the last change: "2024-03-05", or the reason why there is none.
std::string lastChange(const DbfLayout& layout);

/// Of a memo file that is open: "people.dbt (dBase III, blocks of 512 bytes)".
std::string memoFact(const MemoFile& memo);

/// Further facts of the header: the table's state, the database that it belongs to.
std::vector<Fact> factsOfHeader(const DbfLayout& layout);

}  // namespace kd_lib::exchange::detail
