#include <kd_lib/exchange/opensource.h>

#include "detail/sourcekind.h"

#include <kd_lib/exchange/dbfsource.h>
#include <kd_lib/exchange/delimitedsource.h>
#include <kd_lib/exchange/fixedsource.h>
#include <kd_lib/exchange/memsource.h>

namespace kd_lib::exchange {

namespace {

std::unique_ptr<Source> openKind(const std::string& file, const SourceOptions& options)
{
    const SourceKind kind = options.Kind != SourceKind::Automatic ? options.Kind : detail::kindOfName(file);
    switch (kind) {
    case SourceKind::Dbf:
        return std::make_unique<DbfSource>(file, options);
    case SourceKind::Csv:
    case SourceKind::Tsv:
        return std::make_unique<DelimitedSource>(file, options);
    case SourceKind::Fixed:
        return std::make_unique<FixedSource>(file, options);
    case SourceKind::Mem:
        return std::make_unique<MemSource>(file, options);
    default:
        throw OptionError(file, "the kind of the file is not known by its name");
    }
}

}  // namespace

std::unique_ptr<Source> openSource(const std::string& file, const SourceOptions& options)
{
    try {
        return openKind(file, options);
    } catch (const OptionError&) {
        throw;
    } catch (const Error& error) {
        if (!error.Where.File.empty()) {
            throw;
        }
        throw Error(file, error.Reason);  // the failure is in a file that this one needs
    }
}

}  // namespace kd_lib::exchange
