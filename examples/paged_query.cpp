// A result as a paged table on the console.
#include <kd_lib/sqliteconnection.h>

#include <iostream>

int main()
{
    kd_lib::SQLite3 numbers;
    numbers.createDatabase(":memory:");
    numbers.execute("CREATE TABLE number (n INTEGER, square INTEGER)");
    numbers.execute("WITH RECURSIVE up(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM up WHERE n < 30) "
                    "INSERT INTO number SELECT n, n * n FROM up");
    std::cout << numbers.getRecords("number") << " records\n";

    // Whenever more than pageRows values have been printed, the listing asks whether to continue. On a terminal
    // that is a prompt; this program is tested with the two lines "" and "q" as its input, so that it
    // continues once and then stops.
    numbers.pageRows = 10;
    if (!numbers.query("SELECT n, square FROM number ORDER BY n")) {
        return 1;
    }

    // The columns of a query have no width. With a width they are padded, and a rule is printed.
    for (kd_lib::TableField& column : numbers.queryColumns) {
        column.Length = 6;
    }
    numbers.queryResults();
    numbers.finalize();  // the result was not read to its end
    return 0;
}
