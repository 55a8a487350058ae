#include <kd_lib/exchange/csvtarget.h>

#include <kd_lib/exchange/rowtext.h>

#include <utility>

namespace kd_lib::exchange {

CsvTarget::~CsvTarget() = default;

void CsvTarget::open(const std::vector<std::string>& names)
{
    const char* separator = "";
    for (const std::string& name : names) {
        out().write(std::exchange(separator, ","));
        writeCsvText(name, out());
    }
    out().write('\n');
}

void CsvTarget::write(const Record& record)
{
    writeCsvRow(record, out());
}

}  // namespace kd_lib::exchange
