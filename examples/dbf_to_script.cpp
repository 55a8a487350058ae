// Turning an xBase table into SQL text, and into a script file.
#include "stock_dbf.h"

#include <kd_lib/xbase2sql.h>

#include <fstream>
#include <iostream>

int main()
{
    example::writeStock();

    kd_lib::xBase2Sql stock("stock");
    if (!stock.open() || !stock.getFieldList()) {
        return 1;
    }

    // Statement by statement, without the deleted records.
    stock.KeyColumn = "id";
    std::cout << stock.createTable(false);
    for (stock.firstRecord(); stock.fetchRecord();) {
        if (!stock.isDeleted()) {
            std::cout << stock.insert();
        }
    }
    std::cout << stock.prepareInsert("mysql");

    // Or the whole script at once. Here the deleted record repeats the one before it; with ReadDeleted
    // it would be written like any other.
    const std::string script = stock.convert();
    std::cout << script << ":\n" << std::ifstream(script).rdbuf();
    return script.empty() ? 1 : 0;
}
