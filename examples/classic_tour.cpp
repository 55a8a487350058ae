#include <kd_lib/kd_db.h>

#include <iostream>

int main()
{
    // Read a .dbf table record by record.
    kd_lib::xBaseTable table("members");
    if (!table.open() || !table.getFieldList()) {
        return 1;
    }
    for (table.firstRecord(); table.fetchRecord();) {
        if (!table.isDeleted()) {
            std::cout << table.Fields.getData("name") << "\n";
        }
    }

    // Turn it into a script, run that into SQLite, and print a result.
    kd_lib::xBase2Sql converter("members");
    const std::string script = converter.convert();  // members.sql
    kd_lib::SQLite3 database;
    database.createDatabase(":memory:");
    database.importSqlFile(script);
    if (database.query("SELECT name, fee FROM members ORDER BY fee")) {
        database.queryResults();
        database.finalize();
    }
    return 0;
}
