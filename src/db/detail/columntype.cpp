#include "columntype.h"

#include <kd_lib/text.h>

#include <algorithm>
#include <charconv>
#include <string_view>

namespace kd_lib::detail {

namespace {

struct Word {
    std::string_view Begin;
    FIELD_TYPE Type;
};

// The first of these words with which a type begins decides.
constexpr Word words[] = {
    {"TINYINT(1)", BOOLEAN_TYPE}, {"BOOL", BOOLEAN_TYPE},        {"TINYINT", SMALLINT_TYPE},
    {"SMALLINT", SMALLINT_TYPE},  {"MEDIUMINT", INTEGER_TYPE},   {"INTEGER", INTEGER_TYPE},
    {"INTERVAL", UNKNOWN_TYPE},   {"INT", INTEGER_TYPE},         {"BIGINT", BIGINT_TYPE},
    {"DEC", DECIMAL_TYPE},        {"NUMERIC", DECIMAL_TYPE},     {"FLOAT", FLOAT_TYPE},
    {"DOUBLE", FLOAT_TYPE},       {"REAL", FLOAT_TYPE},          {"CHARACTER VARYING", VARCHAR_TYPE},
    {"CHAR", CHAR_TYPE},          {"VARCHAR", VARCHAR_TYPE},     {"TEXT", TEXT_TYPE},
    {"TINYTEXT", TEXT_TYPE},      {"MEDIUMTEXT", TEXT_TYPE},     {"LONGTEXT", TEXT_TYPE},
    {"BYTEA", BLOB_TYPE},         {"BLOB", BLOB_TYPE},           {"TINYBLOB", BLOB_TYPE},
    {"MEDIUMBLOB", BLOB_TYPE},    {"LONGBLOB", BLOB_TYPE},       {"BINARY", BLOB_TYPE},
    {"VARBINARY", BLOB_TYPE},     {"TIMESTAMP", TIMESTAMP_TYPE}, {"DATETIME", TIMESTAMP_TYPE},
    {"DATE", DATE_TYPE},          {"TIME", TIME_TYPE},
};

}  // namespace

FIELD_TYPE serverType(const std::string& type)
{
    // An array does not have the type of its elements.
    if (type.find('[') != std::string::npos) {
        return UNKNOWN_TYPE;
    }
    for (const auto& [begin, meaning] : words) {
        if (type.starts_with(begin)) {
            return meaning;
        }
    }
    return UNKNOWN_TYPE;
}

TableField serverColumn(const std::string& name, FIELD_TYPE type, const std::string& typeWords)
{
    int numbers[2] = {};
    const char* at = typeWords.data() + std::min(typeWords.find('('), typeWords.size());
    const char* end = typeWords.data() + typeWords.size();
    for (int& number : numbers) {
        at = at != end ? std::from_chars(at + 1, end, number).ptr : end;
        if (at == end || *at != ',') {
            break;
        }
    }
    return {name, type, 0, numbers[0], numbers[1], false};
}

}  // namespace kd_lib::detail
