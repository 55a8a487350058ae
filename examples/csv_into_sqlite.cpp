// Delimited text into SQLite, with the types of its columns found in the text.
#include <kd_lib/exchange/opensource.h>
#include <kd_lib/exchange/sqlitesource.h>
#include <kd_lib/exchange/sqlitetarget.h>
#include <kd_lib/exchange/transfer.h>

#include <iostream>

using namespace kd_lib::exchange;

int main()
{
    try {
        const auto cities = openSource("cities.csv", {.Infer = true});
        SqliteTarget target("world.db", {.Table = "city"});
        transfer(*cities, target, {.OnReject = [](const Reject& reject) { std::cerr << reject.Reason << "\n"; }});

        SqliteSource old("world.db", "SELECT city, founded FROM city WHERE founded < 1500 ORDER BY founded");
        for (const Record& row : old) {
            std::cout << *row["city"].text() << ", " << *row["founded"].integer() << "\n";
        }
        return 0;
    } catch (const Error& error) {
        std::cerr << error.what() << "\n";
        return 1;
    }
}
