// Walking an xBase table: header, records, deleted records.
#include "bolts_dbf.h"

#include <kd_lib/text.h>
#include <kd_lib/xbasetable.h>

#include <iostream>

int main()
{
    example::writeBolts();

    kd_lib::xBaseTable bolts;
    if (!bolts.openPath("bolts.dbf") || !bolts.getFieldList()) {
        return 1;
    }
    bolts.showHeader();

    // A deleted record is fetched with the values of the previous record: test for it, and skip it.
    for (bolts.firstRecord(); bolts.fetchRecord();) {
        if (!bolts.isDeleted()) {
            std::cout << bolts.Fields.getData("name") << ": " << kd_lib::allTrim(bolts.Fields.getData("qty")) << "\n";
        }
    }

    // With ReadDeleted the values of a deleted record are read too.
    bolts.ReadDeleted = true;
    bolts.goRecord(2);
    if (bolts.fetchRecord()) {
        std::cout << bolts.Fields.getData("name") << (bolts.isDeleted() ? " is deleted\n" : " is not deleted\n");
    }
    return 0;
}
