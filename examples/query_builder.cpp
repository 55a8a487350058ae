// Composing SELECT statements, and running them.
#include <kd_lib/sqliteconnection.h>
#include <kd_lib/sqlquery.h>

#include <iostream>

int main()
{
    kd_lib::SqlQuery query;
    query.setFields("name");
    query.setFields("price");
    query.setTables("article");
    query.setFilter("price < 20", "");  // the conjunction of the first condition is ignored
    query.setFilter("name " + query.setInClause({"bolt", "driver's seat", "nut"}), "AND");
    query.setOrder("price DESC");
    query.limit = "10";
    std::cout << query.selectQuery() << query.countQuery();

    kd_lib::SQLite3 shop;
    shop.createDatabase(":memory:");
    shop.execute("CREATE TABLE article (name TEXT, price INTEGER)");
    shop.execute("INSERT INTO article VALUES ('bolt', 3), ('nut', 2), ('drill', 19), ('driver''s seat', 180)");

    if (shop.query(query.selectQuery())) {
        shop.queryResults();
        shop.finalize();
    }

    // The column of a row count is named "count".
    if (shop.query(query.countQuery()) && shop.fetchRow()) {
        std::cout << "articles: " << shop.queryColumns.getData("count") << "\n";
    }
    return 0;
}
