#include "sourcekind.h"

#include "lettercase.h"

#include <kd_lib/exchange/error.h>

#include <filesystem>
#include <string_view>
#include <utility>

namespace kd_lib::exchange::detail {

namespace {

bool isDelimited(SourceKind kind)
{
    return kind == SourceKind::Csv || kind == SourceKind::Tsv;
}

const char* nameOf(SourceKind kind)
{
    switch (kind) {
    case SourceKind::Dbf:
        return "a .dbf file";
    case SourceKind::Fixed:
        return "text in fixed columns";
    case SourceKind::Mem:
        return "a .mem file";
    default:
        return "delimited text";
    }
}

}  // namespace

SourceKind kindOfName(const std::string& file)
{
    constexpr std::pair<std::string_view, SourceKind> kinds[] = {
        {".dbf", SourceKind::Dbf}, {".csv", SourceKind::Csv},   {".tsv", SourceKind::Tsv},
        {".tab", SourceKind::Tsv}, {".txt", SourceKind::Fixed}, {".mem", SourceKind::Mem}};
    const std::string extension = std::filesystem::path(file).extension().string();
    for (const auto& [known, kind] : kinds) {
        if (equalWithoutCase(extension, known)) {
            return kind;
        }
    }
    return SourceKind::Automatic;
}

void refuseForeignOptions(const std::string& file, SourceKind kind, const SourceOptions& options)
{
    const SourceOptions defaults;
    const auto refuse = [&](bool given, const char* what) {
        if (given) {
            throw OptionError(file, std::string(what) + " does not fit " + nameOf(kind));
        }
    };
    refuse(kind != SourceKind::Dbf && !options.MemoFile.empty(), "a memo file");
    refuse(kind != SourceKind::Fixed && !options.FixedColumns.empty(), "a list of fixed columns");
    if (!isDelimited(kind)) {
        refuse(!options.Delimiter.empty(), "a delimiter");
        refuse(options.Quote != defaults.Quote, "a quote");
        refuse(!options.Header, "a missing header");
        refuse(options.Infer, "finding the types of columns");
        refuse(options.Null.has_value(), "a text for NULL");
    }
}

}  // namespace kd_lib::exchange::detail
