// A program of another project: it stores rows in an SQLite database in memory and prints them as a table.

#include <kd_lib/kd_db.h>

#include <iostream>

int main()
{
    kd_lib::SQLite3 shop;
    const bool filled = shop.openDatabase(":memory:", true, "") &&
                        shop.execute("CREATE TABLE stock (item TEXT, price REAL)") &&
                        shop.execute("INSERT INTO stock VALUES ('hammer', 12.5), ('saw', 8.75)");
    if (!filled || !shop.query("SELECT item, price FROM stock ORDER BY price")) {
        kd_lib::errorMessage(shop.errorText);
        return 1;
    }
    shop.queryResults();
    shop.finalize();
    std::cout << "kd_lib " << kd_db_1VersionNumber << '\n';
    return 0;
}
