// oracle_dump read FOLDER NAME: the columns and every record of FOLDER/NAME.dbf, tab-separated: "column",
// name, type; "record", deletion mark, values.
// oracle_dump script FOLDER NAME: writes FOLDER/NAME.sql.

#include <kd_lib/xbase2sql.h>

#include <iostream>
#include <string>

namespace {

bool read(const std::string& folder, const std::string& name)
{
    kd_lib::xBaseTable table;
    table.Path = folder;
    table.ReadDeleted = true;
    if (!table.open(name) || !table.getFieldList()) {
        return false;
    }
    for (const kd_lib::TableField& field : table.Fields) {
        std::cout << "column\t" << field.Name << '\t' << kd_lib::getFieldTypeName(field.Type) << '\n';
    }
    for (table.firstRecord(); table.fetchRecord();) {
        std::cout << "record\t" << (table.isDeleted() ? '*' : ' ');
        for (const kd_lib::TableField& field : table.Fields) {
            std::cout << '\t' << field.Value;
        }
        std::cout << '\n';
    }
    return true;
}

bool writeScript(const std::string& folder, const std::string& name)
{
    kd_lib::xBase2Sql table(name);
    table.Path = folder;
    return !table.convert().empty();
}

}  // namespace

int main(int argc, char** argv)
{
    const std::string work = argc == 4 ? argv[1] : "";
    if (work != "read" && work != "script") {
        std::cerr << "usage: oracle_dump read|script FOLDER NAME\n";
        return 2;
    }
    return (work == "read" ? read(argv[2], argv[3]) : writeScript(argv[2], argv[3])) ? 0 : 1;
}
