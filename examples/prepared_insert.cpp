// Many records through one prepared statement, in one transaction.
#include <kd_lib/sqliteconnection.h>

#include <iostream>
#include <string>

int main()
{
    kd_lib::SQLite3 shop;
    shop.createDatabase(":memory:");
    shop.execute("CREATE TABLE article (name TEXT, price INTEGER CHECK (price > 0))");

    // The transaction comes first: beginning it ends the current statement.
    shop.beginTransaction();

    // The insert takes its columns from the current result, here that of an empty query.
    shop.query("SELECT name, price FROM article");
    shop.prepareInsert("article");  // INSERT INTO article (name,price) VALUES (:name,:price)

    // The fields of a record have the names of the parameters, including the colon.
    kd_lib::TableFields record;
    record.add(std::string(":name"));
    record.add(std::string(":price"));
    const char* articles[][2] = {{"bolt", "3"}, {"driver's seat", "180"}, {"nut", "2"}};
    for (const auto& [name, price] : articles) {
        record.get(0)->Value = name;
        record.get(1)->Value = price;
        if (!shop.preparedRecord(record)) {
            return 1;  // reported, and the transaction is rolled back
        }
    }
    shop.endTransaction();
    std::cout << shop.getRecords("article") << " articles stored\n";

    if (shop.query("SELECT name, price, typeof(price) AS type FROM article")) {
        shop.queryResults();
        shop.finalize();
    }

    // A record that SQLite refuses rolls the whole transaction back.
    shop.beginTransaction();
    shop.execute("INSERT INTO article VALUES ('drill', 19)");
    if (!shop.execute("INSERT INTO article VALUES ('air', 0)")) {
        std::cout << "refused, in transaction: " << shop.inTransaction << "\n";
    }
    std::cout << shop.getRecords("article") << " articles stored\n";
    return 0;
}
