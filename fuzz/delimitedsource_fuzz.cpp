// Delimited text as a source.

#include "support/checked_source.h"
#include "support/input_folder.h"
#include "support/options.h"

using kd_lib::exchange::EncodingErrors;
using kd_lib::exchange::SourceKind;
using kd_lib::exchange::SourceOptions;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const char* encodings[] = {"", "utf-8", "cp852", "cp932", "utf-16", "utf-16be", "ebcdic-us", "gb18030"};
    const char* delimiters[] = {"", "auto", ";", "|"};
    const char* types[] = {"number", "date", "integer", "timestamp"};
    kd_fuzz::Options choice(data, size);
    const unsigned int flags = choice.byte();
    const unsigned int more = choice.byte();
    SourceOptions options;
    options.Kind = (flags & 1U) != 0 ? SourceKind::Csv : SourceKind::Tsv;
    options.Header = (flags & 2U) == 0;
    options.Infer = (flags & 4U) != 0;
    options.Quote = (flags & 8U) != 0 ? "'" : "\"";
    options.Encoding = encodings[flags >> 5U];
    options.Delimiter = delimiters[more & 3U];
    options.OnEncodingError = static_cast<EncodingErrors>((more >> 2U & 3U) % 3);
    if ((more & 16U) != 0) {
        options.Null = "NA";
    }
    if ((more & 32U) != 0) {
        options.Types = {{options.Header ? "a" : "column_1", types[more >> 6U]}};
    }
    kd_fuzz::writeInput("input.csv", choice.content());
    kd_fuzz::checkSource(kd_fuzz::inputFolder() + "/input.csv", options);
    return 0;
}
