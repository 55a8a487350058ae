#include <kd_lib/exchange/texttarget.h>

#include "detail/fitcheck.h"
#include "detail/names.h"

#include <kd_lib/exchange/outputfile.h>

#include <utility>

namespace kd_lib::exchange {

struct TextTarget::Work {
    Work(OutputBlock* out, const std::string& path, const std::vector<Column>& columns)
        : File(out == nullptr ? std::make_unique<OutputFile>(path) : nullptr), Out(out == nullptr ? *File : *out),
          Checks(detail::finiteFloats(columns))
    {
    }

    std::unique_ptr<OutputFile> File;
    OutputBlock& Out;
    detail::FitChecks Checks;
};

TextTarget::TextTarget(std::string path, NameCase names) : Path(std::move(path)), Names(names) {}

TextTarget::TextTarget(OutputBlock& out, NameCase names) : Out(&out), Names(names) {}

TextTarget::~TextTarget() = default;

void TextTarget::begin(const std::string& file, const std::vector<Column>& columns)
{
    const std::vector<std::string> names = detail::columnNames(file, columns, Names, Notes);
    Current = std::make_unique<Work>(Out, Path, columns);
    open(names);
}

void TextTarget::fit(Record& record)
{
    Current->Checks.apply(record);
}

OutputBlock& TextTarget::out()
{
    return Current->Out;
}

void TextTarget::finish()
{
    if (Current->File) {
        Current->File->commit();
    } else {
        Current->Out.flush();
    }
}

void TextTarget::abandon() noexcept
{
    Current.reset();
}

}  // namespace kd_lib::exchange
