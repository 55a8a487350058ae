#include <kd_lib/tablefields.h>

#include <kd_lib/console.h>

#include <algorithm>
#include <memory>
#include <sstream>
#include <utility>

namespace kd_lib {

namespace {

std::string foldedIf(bool fold, const std::string& name)
{
    return fold ? stringToLower(name) : name;
}

int indexOf(const std::vector<TableField*>& list, const std::string& key)
{
    const auto found =
        std::find_if(list.begin(), list.end(), [&key](const TableField* field) { return field->Name == key; });
    return found == list.end() ? -1 : static_cast<int>(found - list.begin());
}

void append(std::vector<TableField*>& list, std::unique_ptr<TableField> field)
{
    list.push_back(field.get());
    static_cast<void>(field.release());
}

}  // namespace

// Delegating: once the empty list is constructed, its destructor deletes the columns of a copy that fails.
TableFields::TableFields(const TableFields& other) : TableFields()
{
    CaseSensitive = other.CaseSensitive;
    List.reserve(other.List.size());
    for (const TableField& field : other) {
        append(List, std::make_unique<TableField>(field));
    }
}

TableFields::TableFields(TableFields&& other) noexcept
    : List(std::exchange(other.List, {})), CaseSensitive(other.CaseSensitive)
{
}

TableFields& TableFields::operator=(const TableFields& other)
{
    return *this = TableFields(other);
}

TableFields& TableFields::operator=(TableFields&& other) noexcept
{
    std::swap(List, other.List);
    std::swap(CaseSensitive, other.CaseSensitive);
    if (this != &other) {
        other.clearList();
    }
    return *this;
}

TableFields::~TableFields()
{
    clearList();
}

void TableFields::clearList()
{
    for (const TableField* field : List) {
        delete field;
    }
    List.clear();
}

void TableFields::add(const std::string& name)
{
    append(List, std::make_unique<TableField>(foldedIf(!CaseSensitive, name)));
}

void TableFields::add(TableField& field)
{
    append(List, std::make_unique<TableField>(foldedIf(!CaseSensitive, field.Name), field.Type, field.Offset,
                                              field.Length, field.Decimals, field.Indexed));
}

TableField* TableFields::get(const std::string& name)
{
    const int index = indexOf(List, foldedIf(!CaseSensitive, name));
    return index < 0 ? nullptr : List[static_cast<std::size_t>(index)];
}

const TableField* TableFields::get(const std::string& name) const
{
    const int index = indexOf(List, foldedIf(!CaseSensitive, name));
    return index < 0 ? nullptr : List[static_cast<std::size_t>(index)];
}

TableField* TableFields::get(unsigned long index)
{
    return index < List.size() ? List[index] : nullptr;
}

const TableField* TableFields::get(unsigned long index) const
{
    return index < List.size() ? List[index] : nullptr;
}

int TableFields::findNumber(const std::string& name) const
{
    // Deliberate: the opposite of add and get.
    return indexOf(List, foldedIf(CaseSensitive, name));
}

std::string TableFields::getData(const std::string& name) const
{
    const TableField* field = get(name);
    return field != nullptr ? field->Value : "no field " + name;
}

std::string TableFields::getData(unsigned long index) const
{
    const TableField* field = get(index);
    return field != nullptr ? field->Value : "no field #" + std::to_string(index);
}

void TableFields::show() const
{
    std::ostringstream text;
    text << "Fields:\n";
    int number = 0;
    for (const TableField& field : *this) {
        text << number++ << '\t' << field.Name << '\t' << getFieldTypeName(field.Type) << '\t' << field.Offset << '\t'
             << field.Length << '\t' << field.Decimals << '\t' << field.Indexed << '\n';
    }
    display(text.str());
}

}  // namespace kd_lib
