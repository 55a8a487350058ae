// A .dbf table with its memo file into a SQLite database, whole or not at all.
#include <kd_lib/exchange/opensource.h>
#include <kd_lib/exchange/sqlitetarget.h>
#include <kd_lib/exchange/transfer.h>

#include <iostream>

using namespace kd_lib::exchange;

int main()
{
    try {
        const auto source = openSource("clients.dbf");
        SqliteTarget target("clients.db");
        const Tally tally = transfer(*source, target);
        std::cout << tally.Read << " records read, " << tally.Stored << " stored in " << target.destination() << "\n";
        for (const Note& note : source->notes()) {
            std::cout << note.Text << "\n";
        }
        return tally.Loss ? 3 : 0;
    } catch (const Error& error) {
        std::cerr << error.what() << "\n";  // nothing is stored
        return 1;
    }
}
