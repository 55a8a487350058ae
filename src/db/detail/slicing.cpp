#include "slicing.h"

#include <kd_lib/detail/bytes.h>

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace kd_lib::detail {

namespace {

/// Not the standard macro, because this check is also made in optimised builds.
[[noreturn]] void stopOnAssertion(const char* expression, const char* unit, const char* function)
{
    std::fflush(nullptr);
    std::fprintf(stderr, "%s: %s: Assertion `%s' failed.\n", unit, function, expression);
    std::abort();
}

}  // namespace

void sliceRecord(TableFields& fields, const std::string& record, bool trim, const char* unit)
{
    const std::string_view text = record;
    for (TableField* field : fields.List) {
        // A negative number becomes a huge one: such an offset is after the end of every record, and such
        // a length fails the assertion.
        const auto offset = static_cast<std::size_t>(field->Offset);
        const auto length = static_cast<std::size_t>(field->getLength());
        const std::string_view slice = text.substr(offset, length);
        if (slice.size() != length) {
            stopOnAssertion("tmp_str.size() == Fields.get(f)->getLength()", unit, "extractContent");
        }
        const std::size_t size = trim ? rightTrimView(slice).size() : length;
        if (size == length) {
            assignValue(field->Value, slice);
        } else {
            // Copying the whole width, which is the same in every record, and cutting it is faster than
            // copying only the text.
            replaceValue(field->Value, slice);
            field->Value.resize(size);
        }
    }
}

}  // namespace kd_lib::detail
