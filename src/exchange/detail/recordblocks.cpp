#include "recordblocks.h"

#include <algorithm>
#include <cstring>

namespace kd_lib::exchange::detail {

namespace {

constexpr std::size_t firstStep = 8192;
constexpr std::size_t largestStep = 131072;

}  // namespace

void RecordBlocks::fill(std::size_t count)
{
    const std::size_t left = End - At;
    Step = std::clamp(Step * 4, firstStep, largestStep);
    const std::size_t room = std::max(count, Step);
    if (Buffer.size() < room + 2 * slack) {
        std::vector<char> larger(room + 2 * slack);
        std::memcpy(larger.data() + slack, Buffer.data() + At, left);
        Buffer.swap(larger);
    } else {
        std::memmove(Buffer.data() + slack, Buffer.data() + At, left);
    }
    At = slack;
    End = slack + left;
    // Records of a pipe are read as they arrive, a file in whole blocks.
    while (End - At < count) {
        const std::size_t got = File.readSome(Buffer.data() + End, slack + room - End);
        if (got == 0) {
            return;
        }
        End += got;
    }
}

void RecordBlocks::seek(std::uint64_t offset)
{
    if (offset >= Offset && offset - Offset <= End - At) {
        skip(static_cast<std::size_t>(offset - Offset));
        return;
    }
    File.seek(offset);
    At = slack;
    End = slack;
    Offset = offset;
    Step = 0;
}

}  // namespace kd_lib::exchange::detail
