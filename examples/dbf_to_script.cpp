// Turning an xBase table into SQL text, and into a script file.
#include "bolts_dbf.h"

#include <kd_lib/xbase2sql.h>

#include <fstream>
#include <iostream>

int main()
{
    example::writeBolts();

    kd_lib::xBase2Sql bolts("bolts");
    if (!bolts.open() || !bolts.getFieldList()) {
        return 1;
    }

    // Statement by statement, without the deleted records.
    bolts.KeyColumn = "id";
    std::cout << bolts.createTable(false);
    for (bolts.firstRecord(); bolts.fetchRecord();) {
        if (!bolts.isDeleted()) {
            std::cout << bolts.insert();
        }
    }
    std::cout << bolts.prepareInsert("mysql");

    // Or the whole script at once. Here the deleted record repeats the previous one; with ReadDeleted
    // it would be written like any other.
    const std::string script = bolts.convert();
    std::cout << script << ":\n" << std::ifstream(script).rdbuf();
    return script.empty() ? 1 : 0;
}
