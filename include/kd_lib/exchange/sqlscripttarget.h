/// \file
/// Records as a script of SQL.
#pragma once

#include <kd_lib/exchange/dialect.h>
#include <kd_lib/exchange/target.h>
#include <kd_lib/export.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace kd_lib::exchange {

/// How the records of a script are written.
enum class RowStyle : std::uint8_t {
    Fastest,  ///< COPY for PostgreSQL; INSERT for the others
    Inserts   ///< INSERT
};

/// Writes a script that creates and fills the table in one transaction, whatever the client's settings. The file
/// appears when it is finished.
///
/// If the script fails, PostgreSQL and SQLite store nothing, and an existing table is unchanged. With SQLite this holds
/// even if the client continues after an error, as sqlite3 does without -bail. MySQL commits when a table is created:
/// an empty table may remain. SQLite reads about one in 200 decimal literals of doubles with an error of one unit in
/// the last place; `SqliteTarget` carries them all exactly.
class KD_LIB_EXPORT SqlScriptTarget : public Target {
public:
    /// `path`: as for `OutputFile`, "-" is standard output.
    SqlScriptTarget(std::string path, const Dialect& dialect, TableOptions options = {},
                    RowStyle style = RowStyle::Fastest);
    ~SqlScriptTarget() override;

    void begin(const std::string& file, const std::vector<Column>& columns) override;
    void fit(Record& record) override;
    void write(const Record& record) override;
    void finish() override;
    void abandon() noexcept override;
    std::string destination() const override;

private:
    struct KD_LIB_LOCAL Work;

    std::string Path;
    const Dialect& To;
    TableOptions Options;
    RowStyle Style;
    std::string Table;
    std::unique_ptr<Work> Current;  ///< from `begin` on
};

}  // namespace kd_lib::exchange
