#include <kd_lib/tablefield.h>

#include <array>

namespace kd_lib {

TableField::TableField(const std::string& name) : Name(name) {}

TableField::TableField(const std::string& name, FIELD_TYPE type, int offset, int length, int decimals, bool indexed)
    : Name(name), Type(type), Offset(offset), Length(length), Decimals(decimals), Indexed(indexed)
{
}

std::string getFieldTypeName(FIELD_TYPE type)
{
    static constexpr std::array<const char*, 15> names = {"unknown", "boolean", "decimal", "float", "smallint",
                                                          "integer", "bigint",  "date",    "time",  "timestamp",
                                                          "char",    "varchar", "text",    "memo",  "blob"};
    const auto index = static_cast<unsigned int>(static_cast<int>(type));
    return names[index < names.size() ? index : 0];
}

}  // namespace kd_lib
