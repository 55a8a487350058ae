/// \file
/// An open connection of libmariadb.
#pragma once

#include "mariadbopen.h"

#include <kd_lib/detail/serverconnection.h>

#include <memory>
#include <string>
#include <vector>

namespace kd_lib::detail {

/// A statement without parameters runs as text, which the server accepts for every kind of statement; one with
/// parameters is prepared by the server.
class MariadbConnection final : public ServerConnection {
public:
    explicit MariadbConnection(Mysql open);
    ~MariadbConnection() override;

    MYSQL* handle() const { return Handle.get(); }

    bool alive() const override { return !Lost; }
    SqlForm form() const override { return SqlForm::MariaDb; }
    bool backslashes() const override;
    bool prepare(const StatementText& statement) override;
    bool run(const StatementText& statement, const std::vector<Parameter>& parameters,
             std::vector<std::string>& columns) override;
    bool next(TableFields& row) override;
    bool readRest() override;
    std::uint64_t changedRows() const override { return Changed; }
    bool command(const char* sql) override;
    void drop() override;

private:
    struct StatementCloser {
        void operator()(MYSQL_STMT* statement) const { mysql_stmt_close(statement); }
    };
    struct ResultFreer {
        void operator()(MYSQL_RES* result) const { mysql_free_result(result); }
    };
    using Result = std::unique_ptr<MYSQL_RES, ResultFreer>;

    /// Receives the server's value of a column.
    struct Buffer {
        std::string Text;
        unsigned long Length = 0;
        my_bool Null = 0;
        my_bool Cut = 0;
    };

    bool fail();
    bool failPrepared();
    bool takeResult();
    bool runPrepared(const StatementText& statement, const std::vector<Parameter>& parameters);
    void bindBuffers();
    bool nextText(TableFields& row);
    bool nextPrepared(TableFields& row);
    bool readPreparedRest();

    Mysql Handle;
    std::unique_ptr<MYSQL_STMT, StatementCloser> Prepared;  // null: the current statement runs as text
    Result Rows;                                            // of a text statement, or the columns of a prepared one
    bool Open = false;                                      // results may still come
    bool RowsOpen = false;                                  // rows of the current result may still come
    bool Lost = false;
    std::uint64_t Changed = 0;
    std::vector<Buffer> Buffers;
    std::vector<MYSQL_BIND> Bound;
};

}  // namespace kd_lib::detail
