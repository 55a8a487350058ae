// Running an SQL script file into SQLite.
#include <kd_lib/sqliteconnection.h>

#include <fstream>
#include <iostream>

int main()
{
    std::ofstream("shop.sql") << "# A comment reaches to the end of its line; this one holds a ';'.\n"
                                 "BEGIN TRANSACTION;\n"
                                 "CREATE TABLE article (name TEXT, price INTEGER);\n"
                                 "INSERT INTO article VALUES ('bolt; short', 3);  # quotes protect the ';'\n"
                                 "INSERT INTO article VALUES ('nut', 2);\n"
                                 "END TRANSACTION;\n";
    std::ofstream("broken.sql") << "INSERT INTO article VALUES ('drill', 19);\n"
                                   "INSERT INTO articel VALUES ('saw', 25);\n"
                                   "INSERT INTO article VALUES ('file', 7);\n";

    kd_lib::SQLite3 shop;
    shop.host = "";  // the directory of database files: empty for the working directory
    shop.createDatabase("shop.db");

    // The result is inverted: false for a script that ran to its end.
    for (const char* script : {"shop.sql", "broken.sql"}) {
        const bool stopped = shop.importSqlFile(script);
        std::cout << script << (stopped ? " stopped at a failing statement\n" : " ran to its end\n");
    }

    // The effects of earlier statements stay, unless beginTransaction was called before: then they are
    // rolled back.
    if (shop.query("SELECT name, price FROM article")) {
        shop.queryResults();
        shop.finalize();
    }
    return 0;
}
