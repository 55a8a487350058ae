#include <kd_lib/exchange/opensource.h>
#include <kd_lib/exchange/sqlitetarget.h>
#include <kd_lib/exchange/transfer.h>

#include <iostream>

using namespace kd_lib::exchange;

int main()
{
    // Read a table. Values are typed, and empty if the table has none.
    const auto clients = openSource("clients.dbf");
    for (const Record& record : *clients) {
        std::cout << *record["name"].text() << ": " << record["limit"].digits().value_or("no limit") << "\n";
    }

    // Carry it into a database, whole or not at all. Each value that cannot be carried is reported.
    SqliteTarget database("clients.db");
    const Tally tally = transfer(*openSource("clients.dbf"), database,
                                 {.OnReject = [](const Reject& reject) { std::cerr << reject.Reason << "\n"; }});
    std::cout << tally.Stored << " records stored in " << database.destination() << "\n";
    return tally.Loss ? 3 : 0;
}
