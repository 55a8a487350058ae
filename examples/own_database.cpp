// Your own SQL back end: it runs nothing, but lists the statements that it receives.
#include <kd_lib/sqldatabase.h>

#include <fstream>
#include <iostream>

namespace {

/// A dry run. Statements are kept in order; every query returns the list of them. Script import,
/// transactions and the printing of results come from SqlDatabase.
class StatementLog : public kd_lib::SqlDatabase {
public:
    StatementLog() { engine = "LOG"; }

    // The connection: there is none, so nothing fails.
    bool isDisconnected() const override { return false; }
    void setError() override {}
    bool getDatabaseList() override { return true; }
    bool getTableList() override { return clearTableList(); }
    bool getColumnList(std::string) override { return clearTableList(); }

    // Statements.
    bool prepare(std::string sql) override
    {
        clearResults();
        rowsFetched = 0;
        Current = sql;
        return true;
    }

    bool execute() override
    {
        Statements.push_back(Current);
        return true;
    }

    bool execute(const std::string& sql) override { return prepare(sql) && execute(); }
    bool prepareInsert(const std::string& table) override { return prepare("INSERT INTO " + table); }
    bool preparedRecord(kd_lib::TableFields) override { return execute(); }

    // Results.
    bool query() override
    {
        queryColumns.add(std::string("number"));
        queryColumns.add(std::string("statement"));
        columnCount = 2;
        resultRows = 1;
        return true;
    }

    bool query(const std::string& sql) override { return prepare(sql) && query(); }

    bool fetchRow() override
    {
        if (rowsFetched == Statements.size()) {
            resultRows = rowsFetched;
            return false;
        }
        queryColumns.get(0UL)->Value = std::to_string(rowsFetched + 1);
        queryColumns.get(1UL)->Value = Statements[rowsFetched];
        ++rowsFetched;
        return true;
    }

private:
    std::string Current;
    std::vector<std::string> Statements;
};

}  // namespace

int main()
{
    std::ofstream("shop.sql") << "CREATE TABLE article (name TEXT);  # a comment\n"
                                 "INSERT INTO article VALUES ('bolt; short');\n"
                                 "INSERT INTO article VALUES ('no end mark')\n";

    StatementLog log;
    log.beginTransaction();
    log.importSqlFile("shop.sql");
    log.endTransaction();
    log.query("the statements");
    log.queryResults();
    return 0;
}
