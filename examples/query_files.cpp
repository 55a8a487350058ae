// SQL over files in place, page by page. Nothing is imported.
#include <kd_lib/exchange/sqlitesource.h>
#include <kd_lib/exchange/virtualtables.h>

#include <iostream>

using namespace kd_lib::exchange;

int main()
{
    try {
        TableConnection tables({{.File = "clients.dbf", .Table = ""}, {.File = "orders.dbf", .Table = ""}});
        SqliteSource orders(tables.handle(), "files",
                            "SELECT name, number, amount FROM orders JOIN clients ON id = client ORDER BY number");

        constexpr int pageRows = 2;
        int rows = 0;
        for (const Record& row : orders) {
            if (rows++ % pageRows == 0) {
                std::cout << "page " << rows / pageRows + 1 << "\n";
            }
            std::cout << "  " << *row[0].text() << ", order " << *row[1].integer() << ": " << *row[2].real() << "\n";
        }
        return 0;
    } catch (const Error& error) {
        std::cerr << error.what() << "\n";
        return 1;
    }
}
