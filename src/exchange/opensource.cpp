#include <kd_lib/exchange/opensource.h>

#include "detail/lettercase.h"

#include <kd_lib/exchange/dbfsource.h>

#include <filesystem>
#include <utility>

namespace kd_lib::exchange {

namespace {

SourceKind kindOfName(const std::string& file)
{
    constexpr std::pair<std::string_view, SourceKind> kinds[] = {
        {".dbf", SourceKind::Dbf}, {".csv", SourceKind::Csv},   {".tsv", SourceKind::Tsv},
        {".tab", SourceKind::Tsv}, {".txt", SourceKind::Fixed}, {".mem", SourceKind::Mem}};
    const std::string extension = std::filesystem::path(file).extension().string();
    for (const auto& [known, kind] : kinds) {
        if (detail::equalWithoutCase(extension, known)) {
            return kind;
        }
    }
    return SourceKind::Automatic;
}

}  // namespace

std::unique_ptr<Source> openSource(const std::string& file, const SourceOptions& options)
{
    const SourceKind kind = options.Kind != SourceKind::Automatic ? options.Kind : kindOfName(file);
    switch (kind) {
    case SourceKind::Dbf:
        return std::make_unique<DbfSource>(file, options);
    default:
        throw OptionError(file, "the kind of the file is not known by its name");
    }
}

}  // namespace kd_lib::exchange
