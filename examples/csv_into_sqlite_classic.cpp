// Delimited text into SQLite with the classic classes: a prepared insert that gets the fields of each record.
#include <kd_lib/asciitable.h>
#include <kd_lib/sqliteconnection.h>

#include <iostream>

int main()
{
    kd_lib::DelimitedTable cities;
    cities.setCsvMode();
    if (!cities.open("cities") || !cities.getFieldList()) {
        return 1;
    }

    // createDatabase creates the file `host`/NAME. `host` is "localhost" by default; "" means the current folder.
    kd_lib::SQLite3 world;
    world.host = "";
    if (!world.createDatabase("world.db") || !world.execute("CREATE TABLE city (City, Country, Founded INTEGER)")) {
        return 1;
    }

    world.beginTransaction();
    world.query("SELECT City, Country, Founded FROM city");
    world.prepareInsert("city");
    kd_lib::TableFields values;
    for (const char* name : {":City", ":Country", ":Founded"}) {
        values.add(std::string(name));
    }
    while (cities.fetchRecord()) {
        for (unsigned long i = 0; i < 3; ++i) {
            values.get(i)->Value = cities.Fields.getData(i);
        }
        if (!world.preparedRecord(values)) {
            return 1;  // reported, and the transaction is rolled back
        }
    }
    world.endTransaction();
    std::cout << world.getRecords("city") << " cities\n";
    return 0;
}
