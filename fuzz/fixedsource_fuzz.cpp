// Text in fixed columns as a source. The first line is the list of columns.

#include "support/checked_source.h"
#include "support/input_folder.h"
#include "support/options.h"

#include <algorithm>

using kd_lib::exchange::EncodingErrors;
using kd_lib::exchange::SourceKind;
using kd_lib::exchange::SourceOptions;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const char* encodings[] = {"", "cp852", "cp932", "utf-16"};
    kd_fuzz::Options choice(data, size);
    const unsigned int flags = choice.byte();
    const std::string_view content = choice.content();
    const std::size_t line = std::min(content.find('\n'), content.size());
    SourceOptions options;
    options.Kind = SourceKind::Fixed;
    options.FixedColumns = content.substr(0, line);
    options.Encoding = encodings[flags & 3U];
    options.OnEncodingError = static_cast<EncodingErrors>((flags >> 2U & 3U) % 3);
    if ((flags & 16U) != 0) {
        options.Types = {{"a", (flags & 32U) != 0 ? "number" : "date"}};
    }
    kd_fuzz::writeInput("input.txt", content.substr(std::min(line + 1, content.size())));
    kd_fuzz::checkSource(kd_fuzz::inputFolder() + "/input.txt", options);
    return 0;
}
