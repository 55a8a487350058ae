// The records of a table with typed values, which are empty if the table has none.
#include <kd_lib/exchange/opensource.h>

#include <iostream>

using namespace kd_lib::exchange;

int main()
{
    const auto clients = openSource("clients.dbf");
    for (const Record& record : *clients) {
        std::cout << *record["name"].text() << " of " << *record["town"].text();
        if (const auto day = record["since"].date()) {
            std::cout << ", since " << static_cast<int>(day->year());
        }
        std::cout << ", up to " << record["limit"].digits().value_or("any amount") << "\n";
    }
    return 0;
}
