// Walking an xBase table: header, records, deleted records.
#include "stock_dbf.h"

#include <kd_lib/text.h>
#include <kd_lib/xbasetable.h>

#include <iostream>

int main()
{
    example::writeStock();

    kd_lib::xBaseTable stock("stock");  // the extension is "dbf" from the start
    if (!stock.open() || !stock.getFieldList()) {
        return 1;
    }
    stock.showHeader();

    // A deleted record is fetched with the values of the record before it: ask, and pass over it.
    for (stock.firstRecord(); stock.fetchRecord();) {
        if (!stock.isDeleted()) {
            std::cout << stock.Fields.getData("name") << ": " << kd_lib::allTrim(stock.Fields.getData("qty")) << "\n";
        }
    }

    // With ReadDeleted its own values are read.
    stock.ReadDeleted = true;
    stock.goRecord(2);
    if (stock.fetchRecord()) {
        std::cout << stock.Fields.getData("name") << (stock.isDeleted() ? " is deleted\n" : " is not deleted\n");
    }
    return 0;
}
