#include <kd_lib/exchange/jsonlinestarget.h>

#include "detail/fitcheck.h"
#include "detail/names.h"

#include <kd_lib/exchange/outputfile.h>
#include <kd_lib/exchange/rowtext.h>

#include <utility>

namespace kd_lib::exchange {

struct JsonLinesTarget::Work {
    Work(const std::string& path, const std::vector<std::string>& names) : Out(path), Row(names) {}

    OutputFile Out;
    JsonRow Row;
    detail::FitChecks Checks;
};

JsonLinesTarget::JsonLinesTarget(std::string path, NameCase names) : Path(std::move(path)), Names(names) {}

JsonLinesTarget::~JsonLinesTarget() = default;

void JsonLinesTarget::begin(const std::string& file, const std::vector<Column>& columns)
{
    Current = std::make_unique<Work>(Path, detail::columnNames(file, columns, Names, Notes));
    Current->Checks = detail::finiteFloats(columns);
}

void JsonLinesTarget::fit(Record& record)
{
    Current->Checks.apply(record);
}

void JsonLinesTarget::write(const Record& record)
{
    Current->Row.write(record, Current->Out);
}

void JsonLinesTarget::finish()
{
    Current->Out.commit();
}

void JsonLinesTarget::abandon() noexcept
{
    Current.reset();
}

}  // namespace kd_lib::exchange
