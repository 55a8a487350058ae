// The sum of a column by the classic classes.
#include <kd_lib/text.h>
#include <kd_lib/xbasetable.h>

#include <cmath>
#include <cstdint>
#include <iostream>
#include <string>

int main()
{
    // While a file is opened, a line about it goes to standard output. A program that needs this stream for its results
    // removes its buffer meanwhile.
    std::streambuf* const results = std::cout.rdbuf(nullptr);
    kd_lib::xBaseTable orders("orders");
    const bool opened = orders.open() && orders.getFieldList();
    std::cout.rdbuf(results);
    if (!opened) {
        return 1;  // the reason is on standard error
    }

    long long cents = 0;
    std::uint64_t records = 0;
    for (orders.firstRecord(); orders.fetchRecord(); ++records) {
        if (!orders.isDeleted()) {
            cents += std::llround(std::stod(orders.Fields.getData("amount")) * 100);
        }
    }
    std::cout << cents / 100 << '.' << cents / 10 % 10 << cents % 10 << "\n";

    // fetchRecord returns false at the end of the file, and also for a last record that is cut. The header has the
    // number of records.
    std::cout << (records < orders.RecordCount ? "the table is damaged\n" : "that is the whole table\n");
    return records < orders.RecordCount ? 3 : 0;
}
