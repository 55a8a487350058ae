// A memo file of any kind: every block read, and its bytes explained.

#include "exchange/detail/memofile.h"
#include "support/checked_source.h"
#include "support/input_folder.h"
#include "support/options.h"

#include <kd_lib/exchange/inspect.h>

namespace {

using namespace kd_lib::exchange;
using kd_lib::formats::MemoKind;

void readBlocks(const std::string& file, MemoKind kind, std::size_t size)
{
    detail::MemoFile memo(file, kind);
    std::string value;
    std::string again;
    for (std::uint64_t block = 0; block < 64; ++block) {
        const char* const reason = memo.read(block, value);
        if (reason == nullptr && value.size() > size) {
            kd_fuzz::finding("a value larger than its file");
        }
        if (memo.read(block, again) != reason || (reason == nullptr && again != value)) {
            kd_fuzz::finding("another value at the second reading");
        }
    }
    for (const std::uint64_t block : {std::uint64_t{9999999999}, std::uint64_t{0xFFFFFFFF}}) {
        if (memo.read(block, value) == nullptr && memo.blockSize() > 1) {
            kd_fuzz::finding("a value outside of the file");
        }
    }
}

/// Whether the lines explain each byte, in order.
void explain(const std::string& file, std::size_t size)
{
    std::uint64_t end = 0;
    const bool sound = inspect(file, [&end](const InspectedBytes& part) {
        if (part.Offset > end) {
            kd_fuzz::finding("bytes that are not explained");
        }
        end = std::max(end, part.Offset + part.Length);
    });
    if (sound && end != size) {
        kd_fuzz::finding("bytes at the end that are not explained");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr MemoKind kinds[] = {MemoKind::None, MemoKind::Dbt3, MemoKind::Dbt4, MemoKind::Fpt, MemoKind::Smt};
    kd_fuzz::Options choice(data, size);
    const unsigned int flags = choice.byte();
    const std::string name = (flags & 1U) != 0 ? "input.fpt" : "input.dbt";
    kd_fuzz::writeInput(name, choice.content());
    const std::string file = kd_fuzz::inputFolder() + "/" + name;
    readBlocks(file, kinds[(flags >> 1U) % std::size(kinds)], choice.content().size());
    explain(file, choice.content().size());
    return 0;
}
