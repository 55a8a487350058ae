// A delimited text table: one record per line, a separator between the values, names in the first line.
#include <kd_lib/asciitable.h>
#include <kd_lib/text.h>

#include <fstream>
#include <iostream>

int main()
{
    std::ofstream("cities.csv") << "City,Country,Note\n"
                                   "Oslo,Norway,\"capital\"\n"
                                   "Lima,Peru\n"
                                   "Rome,Italy,\"old, and large\"\n";

    kd_lib::DelimitedTable cities;
    cities.setCsvMode();
    if (!cities.open("cities") || !cities.getFieldList()) {
        return 1;
    }

    // The position is now after the line of names.
    while (cities.fetchRecord()) {
        // Names are looked up in any letter case. Quotes stay part of the values and do not protect separators:
        // removeQuotes removes an enclosing pair, and Rome's note ends at its comma.
        std::cout << cities.Fields.getData("city") << " | " << cities.Fields.getData("COUNTRY") << " | "
                  << kd_lib::removeQuotes(cities.Fields.getData("note")) << "\n";

        // A record with fewer values leaves the other columns unchanged: empty them after use.
        for (kd_lib::TableField& field : cities.Fields) {
            field.Value.clear();
        }
    }
    return 0;
}
