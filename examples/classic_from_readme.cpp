#include <kd_lib/kd_db.h>

#include <cstdint>
#include <iostream>

int main()
{
    // A database is a file in the directory `host`, by default "localhost". If that is empty, paths are used as given.
    kd_lib::SQLite3 shop;
    shop.host = "";
    if (!shop.createDatabase("shop.db") || !shop.execute("CREATE TABLE seen (number TEXT)")) {
        std::cerr << shop.failureAt("shop.db") << "\n";
        return 1;
    }

    // Opening a table prints its path. Without a buffer, standard output prints nothing.
    std::streambuf* const buffer = std::cout.rdbuf(nullptr);
    kd_lib::xBaseTable orders;
    const bool opened = orders.openPath("orders.dbf") && orders.getFieldList();
    std::cout.rdbuf(buffer);
    if (!opened) {
        return 1;  // the reason is on standard error
    }

    // fetchRecord returns false after the last record, and also at damage: then too few records were counted.
    std::uint64_t records = 0;
    for (orders.firstRecord(); orders.fetchRecord(); ++records) {
        if (!orders.isDeleted()) {
            shop.execute("INSERT INTO seen VALUES ('" + orders.Fields.getData("number") + "')");
        }
    }
    std::cout << shop.getRecords("seen") << " of " << orders.RecordCount << " records\n";
    return records < orders.RecordCount ? 3 : 0;
}
