/// \file
/// A load of a table into a server.
#pragma once

#include <kd_lib/exchange/existingcolumn.h>
#include <kd_lib/exchange/rowchunks.h>
#include <kd_lib/exchange/tablelayout.h>
#include <kd_lib/exchange/target.h>
#include <kd_lib/export.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kd_lib::exchange {

/// The reason why a server refuses rows and, if the server names them, the row and the column.
struct RowRefusal {
    std::string Reason;
    std::optional<std::size_t> Row;  ///< index in the chunk
    std::string Column;
};

/// One running load, with a separate connection. Each server has a class derived from it; its constructor connects.
class KD_LIB_EXPORT ServerLoad {
public:
    virtual ~ServerLoad();
    ServerLoad(const ServerLoad&) = delete;
    ServerLoad& operator=(const ServerLoad&) = delete;

    const TableLayout& layout() const { return Layout; }

    /// The table that gets the rows. If its name is not the layout's, it is renamed at the end.
    const std::string& loaded() const { return Loaded; }

    virtual void begin() = 0;  ///< creates the table, or finds the columns of an existing one
    void fit(Record& record);
    virtual void write(const Record& record) = 0;
    virtual void finish() = 0;

    /// Undoes everything; false if the table `loaded` may remain.
    virtual bool abandon() noexcept = 0;

protected:
    /// As `TableLayout`; `columns` must live until the end of the work.
    ServerLoad(Engine engine, const std::string& file, const std::vector<Column>& columns, const TableOptions& table);

    /// The names of the columns that take the rows, without quotes.
    std::vector<std::string> columnNames() const;

    std::string quoted(const std::string& name) const { return Layout.dialect().quoteName(name); }

    /// Throws an `Error` that names the record and the column that were refused.
    [[noreturn]] void refuse(const RowChunks::Chunk& chunk, const RowRefusal& refusal,
                             const std::string& database) const;

    TableLayout Layout;
    std::optional<ExistingColumns> Existing;  ///< if records are appended
    std::string Loaded;

private:
    std::string SourceFile;
    const std::vector<Column>& Source;
};

/// Loads a table into a server.
class KD_LIB_EXPORT ServerTarget final : public Target {
public:
    /// `make` returns a new load from a file of this name and these columns.
    using Maker =
        std::function<std::unique_ptr<ServerLoad>(const std::string& file, const std::vector<Column>& columns)>;

    explicit ServerTarget(Maker make);
    ~ServerTarget() override;

    void begin(const std::string& file, const std::vector<Column>& columns) override;
    void fit(Record& record) override;
    void write(const Record& record) override;
    void finish() override;
    void abandon() noexcept override;
    std::string destination() const override { return Destination; }

private:
    Maker Make;
    std::string Destination;
    std::unique_ptr<ServerLoad> Load;  // null: none is running
};

}  // namespace kd_lib::exchange
