/// \file
/// The parts of a script before and after the rows.
#pragma once

#include <kd_lib/exchange/tablelayout.h>

#include <string>

namespace kd_lib::exchange::detail {

/// A script in three parts: `Before`, the rows into the table `Table` (as written in SQL), `After`.
struct ScriptFrame {
    std::string Before;
    std::string Table;
    std::string After;
};

/// `copies`: the rows follow COPY, not INSERT (PostgreSQL).
ScriptFrame scriptFrame(const TableLayout& layout, bool copies);

}  // namespace kd_lib::exchange::detail
