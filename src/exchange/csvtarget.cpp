#include <kd_lib/exchange/csvtarget.h>

#include "detail/fitcheck.h"
#include "detail/names.h"

#include <kd_lib/exchange/outputfile.h>
#include <kd_lib/exchange/rowtext.h>

#include <utility>

namespace kd_lib::exchange {

struct CsvTarget::Work {
    Work(OutputBlock* out, const std::string& path)
        : File(out == nullptr ? std::make_unique<OutputFile>(path) : nullptr), Out(out == nullptr ? *File : *out)
    {
    }

    std::unique_ptr<OutputFile> File;
    OutputBlock& Out;
    detail::FitChecks Checks;
};

CsvTarget::CsvTarget(std::string path, NameCase names) : Path(std::move(path)), Names(names) {}

CsvTarget::CsvTarget(OutputBlock& out, NameCase names) : Out(&out), Names(names) {}

CsvTarget::~CsvTarget() = default;

void CsvTarget::begin(const std::string& file, const std::vector<Column>& columns)
{
    const std::vector<std::string> names = detail::columnNames(file, columns, Names, Notes);
    Current = std::make_unique<Work>(Out, Path);
    Current->Checks = detail::finiteFloats(columns);
    const char* separator = "";
    for (const std::string& name : names) {
        Current->Out.write(std::exchange(separator, ","));
        writeCsvText(name, Current->Out);
    }
    Current->Out.write('\n');
}

void CsvTarget::fit(Record& record)
{
    Current->Checks.apply(record);
}

void CsvTarget::write(const Record& record)
{
    writeCsvRow(record, Current->Out);
}

void CsvTarget::finish()
{
    if (Current->File) {
        Current->File->commit();
    } else {
        Current->Out.flush();
    }
}

void CsvTarget::abandon() noexcept
{
    Current.reset();
}

}  // namespace kd_lib::exchange
