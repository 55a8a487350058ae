// Column names made safe against the words that SQL reserves.
#include <kd_lib/console.h>
#include <kd_lib/sqlkeyword.h>
#include <kd_lib/tablefields.h>

#include <iostream>

int main()
{
    kd_lib::SqlKeyword words;
    std::cout << words.keywords.size() << " words, from " << words.keywords.front() << " to " << words.keywords.back()
              << "\n";

    // Words are passed in upper case.
    std::cout << "ORDER " << words.isReserved("ORDER") << ", order " << words.isReserved("order") << "\n";

    kd_lib::TableFields fields;
    for (const char* name : {"Customer", "Order", "Date", "Price"}) {
        fields.add(std::string(name));
    }

    kd_lib::setVerbose(true);  // each reserved name is noted
    words.checkReserved(fields.List);
    fields.show();

    // Another dialect, another quote. Names that already have quotes are not changed.
    fields.clearList();
    fields.add(std::string("Group"));
    words.quoteChar = '`';
    words.checkReserved(fields.List);
    std::cout << fields.List.front()->Name << "\n";
    return 0;
}
