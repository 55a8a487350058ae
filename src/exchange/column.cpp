#include <kd_lib/exchange/column.h>

namespace kd_lib::exchange {

std::string typeName(ColumnType type)
{
    switch (type) {
    case ColumnType::Text:
        return "text";
    case ColumnType::Number:
    case ColumnType::Currency:
        return "number";
    case ColumnType::Integer:
    case ColumnType::BigInteger:
        return "integer";
    case ColumnType::Float:
        return "float";
    case ColumnType::Boolean:
        return "boolean";
    case ColumnType::Date:
        return "date";
    case ColumnType::Time:
        return "time";
    case ColumnType::Timestamp:
        return "timestamp";
    case ColumnType::Bytes:
        return "bytes";
    }
    return "";
}

}  // namespace kd_lib::exchange
