// A positional text table: one record per line, each column a fixed range of bytes.
#include <kd_lib/filetable.h>

#include <fstream>
#include <iostream>

int main()
{
    std::ofstream("weather.txt") << "0001  oslo  -3.5  nw 4\n"
                                    "0002  rome  14.0  se 2\n"
                                    "0003  lima  18.2  sw 3\n";

    kd_lib::FileTable weather("weather");  // the extension is "txt" by default
    if (!weather.open()) {
        return 1;
    }

    // A column starts at each number; its width is the distance from the number before it. So this
    // line gives bytes 6 to 11 and 12 to 17, named field#0 and field#1.
    weather.setFieldOffsets("6|12");

    // Any other column is added by hand: name, type, offset, length, decimals, indexed.
    kd_lib::TableField wind("wind", kd_lib::CHAR_TYPE, 18, 4, 0, false);
    weather.Fields.add(wind);
    weather.Fields.show();

    for (weather.firstRecord(); weather.fetchRecord();) {
        std::cout << weather.Fields.getData(0) << ": " << weather.Fields.getData("field#1") << " degrees, wind "
                  << weather.Fields.getData("wind") << "\n";
    }

    // Records are numbered from 1. A table that was read to its end can be read again from anywhere.
    weather.goRecord(2);
    if (weather.fetchRecord()) {
        std::cout << "Record 2 is " << weather.Fields.getData(0) << ".\n";
    }
    return 0;
}
