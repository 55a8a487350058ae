#include <kd_lib/exchange/jsonlinestarget.h>

namespace kd_lib::exchange {

JsonLinesTarget::~JsonLinesTarget() = default;

void JsonLinesTarget::open(const std::vector<std::string>& names)
{
    Row.emplace(names);
}

void JsonLinesTarget::write(const Record& record)
{
    Row->write(record, out());
}

}  // namespace kd_lib::exchange
