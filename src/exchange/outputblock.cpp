#include <kd_lib/exchange/outputblock.h>

#include <kd_lib/detail/bytes.h>

#include <algorithm>
#include <utility>

namespace kd_lib::exchange {

OutputBlock::OutputBlock(std::size_t size) : Size(size) {}

OutputBlock::~OutputBlock() = default;

void OutputBlock::flush()
{
    const std::string_view gathered(Block.get(), static_cast<std::size_t>(End - Block.get()));
    End = Block.get();
    if (!gathered.empty()) {
        HandedOn += gathered.size();
        take(gathered);
    }
}

void OutputBlock::makeRoom(std::size_t count)
{
    flush();
    if (!Block || count > Size) {
        Size = std::max(count, Size);
        Block.reset();
        Block = std::make_unique_for_overwrite<char[]>(Size);
        End = Block.get();
        Limit = End + Size;
    }
}

void OutputBlock::write(std::string_view text)
{
    if (text.size() <= static_cast<std::size_t>(Limit - End)) {
        End = kd_lib::detail::copyBytes(End, text);
    } else if (text.size() >= Size) {
        flush();
        HandedOn += text.size();
        take(text);
    } else {
        makeRoom(text.size());
        End = kd_lib::detail::copyBytes(End, text);
    }
}

}  // namespace kd_lib::exchange
