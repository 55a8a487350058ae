// The sum of a column, exactly, and the difference between the end of a table and damage.
#include <kd_lib/exchange/opensource.h>

#include <algorithm>
#include <cstdint>
#include <iostream>

using namespace kd_lib::exchange;

int main()
{
    try {
        const auto orders = openSource("orders.dbf");
        std::int64_t cents = 0;
        for (const Record& record : *orders) {
            // An unreadable cell throws an `Error` that names it, so the sum is never wrong.
            cents += record["amount"].scaled(2).value_or(0);
        }
        std::cout << cents / 100 << '.' << cents / 10 % 10 << cents % 10 << "\n";

        // After the last record, the notes report any damage of the file.
        const bool damaged = std::ranges::any_of(orders->notes(), &Note::Loss);
        std::cout << (damaged ? "the table is damaged\n" : "that is the whole table\n");
        return damaged ? 3 : 0;
    } catch (const Error& error) {
        std::cerr << error.what() << "\n";
        return 1;
    }
}
