/// \file
/// What a .dbf file is, for a description.
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

/// The day of the last change: "2024-03-05"; or why there is none.
std::string lastChange(const DbfLayout& layout);

/// Of a memo file that is open: "people.dbt (dBase III, blocks of 512 bytes)".
std::string memoFact(const MemoFile& memo);

/// What the header tells besides: its state, the database that the table belongs to.
std::vector<Fact> factsOfHeader(const DbfLayout& layout);

}  // namespace kd_lib::exchange::detail
