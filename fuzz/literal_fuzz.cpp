// Column definitions, values as SQL literals, and the text functions that they use, which must agree with
// the simplest loop that does the same.

#include "support/options.h"

#include <kd_lib/sqlliteral.h>
#include <kd_lib/text.h>

#include <exception>
#include <iostream>
#include <string>

namespace {

void require(bool holds, const char* what)
{
    if (!holds) {
        std::cerr << "finding: " << what << std::endl;
        std::abort();
    }
}

bool isBlank(char c)
{
    return std::string_view(" \t\r\n\v\f").find(c) != std::string_view::npos;
}

void checkTrims(const std::string& value)
{
    std::string trimmed = value;
    while (!trimmed.empty() && isBlank(trimmed.back())) {
        trimmed.pop_back();
    }
    require(kd_lib::rightTrim(value) == trimmed, "rightTrim");
    while (!trimmed.empty() && isBlank(trimmed.front())) {
        trimmed.erase(0, 1);
    }
    require(kd_lib::allTrim(value) == trimmed, "allTrim");
}

void checkQuotes(const std::string& value)
{
    const std::string quoted = kd_lib::inQuotes(value, '\'');
    for (std::size_t i = 1; i + 1 < quoted.size(); ++i) {
        if (quoted[i] == '\'') {
            ++i;
            require(i + 1 < quoted.size() && quoted[i] == '\'', "a quote that ends the text");
        }
    }
    kd_lib::removeQuotes(value);
    require(value.find('\'') != std::string::npos || kd_lib::removeQuotes(quoted) == value, "removeQuotes");
}

/// A text as a literal, character by character: a quote inside the text becomes a backquote.
std::string plainTextLiteral(const std::string& value)
{
    std::string text = kd_lib::rightTrim(value);
    if (text.empty()) {
        return "NULL";
    }
    for (char& c : text) {
        c = c == '\'' ? '`' : c;
    }
    return "'" + text + "'";
}

void checkLiteral(const kd_lib::TableField& field)
{
    try {
        const std::string literal = kd_lib::convertValue2Sql(field);
        if (field.Type >= kd_lib::CHAR_TYPE && field.Type <= kd_lib::TEXT_TYPE) {
            require(literal == plainTextLiteral(field.Value), "a text literal");
        }
    } catch (const std::exception&) {
        // A standard exception is an outcome.
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    kd_fuzz::Options options(data, size);
    const auto type = static_cast<kd_lib::FIELD_TYPE>(options.byte() % 17);
    const int length = static_cast<int>(options.byte());
    kd_lib::TableField field("column", type, 1, length, length / 3, false);
    field.Value = options.content();
    kd_lib::convertField2Sql(field);
    checkLiteral(field);
    checkTrims(field.Value);
    checkQuotes(field.Value);
    kd_lib::stringToBool(field.Value);
    kd_lib::leftPad(field.Value, length, ' ');
    return 0;
}
