#include <kd_lib/exchange/jsonlinestarget.h>

#include "detail/fitcheck.h"
#include "detail/names.h"

#include <kd_lib/exchange/outputfile.h>
#include <kd_lib/exchange/rowtext.h>

#include <utility>

namespace kd_lib::exchange {

struct JsonLinesTarget::Work {
    Work(OutputBlock* out, const std::string& path, const std::vector<std::string>& names)
        : File(out == nullptr ? std::make_unique<OutputFile>(path) : nullptr), Out(out == nullptr ? *File : *out),
          Row(names)
    {
    }

    std::unique_ptr<OutputFile> File;
    OutputBlock& Out;
    JsonRow Row;
    detail::FitChecks Checks;
};

JsonLinesTarget::JsonLinesTarget(std::string path, NameCase names) : Path(std::move(path)), Names(names) {}

JsonLinesTarget::JsonLinesTarget(OutputBlock& out, NameCase names) : Out(&out), Names(names) {}

JsonLinesTarget::~JsonLinesTarget() = default;

void JsonLinesTarget::begin(const std::string& file, const std::vector<Column>& columns)
{
    Current = std::make_unique<Work>(Out, Path, detail::columnNames(file, columns, Names, Notes));
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
    if (Current->File) {
        Current->File->commit();
    } else {
        Current->Out.flush();
    }
}

void JsonLinesTarget::abandon() noexcept
{
    Current.reset();
}

}  // namespace kd_lib::exchange
