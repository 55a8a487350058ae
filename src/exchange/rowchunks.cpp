#include <kd_lib/exchange/rowchunks.h>

#include <utility>

namespace kd_lib::exchange {

namespace {

constexpr std::size_t chunkBytes = 2 << 20;
constexpr std::size_t chunkRows = 65536;

void clear(RowChunks::Chunk& chunk)
{
    // The memory of one very long row is not kept for the rest of the load.
    if (chunk.Text.capacity() > 2 * chunkBytes) {
        std::string().swap(chunk.Text);
    }
    chunk.Text.clear();
    chunk.Ends.clear();
    chunk.Records.clear();
}

}  // namespace

RowChunks::RowChunks(std::function<void(const Chunk&)> send) : Send(std::move(send)) {}

RowChunks::~RowChunks()
{
    discard();
}

void RowChunks::endRow(std::uint64_t record)
{
    Gathered.Ends.push_back(Gathered.Text.size());
    Gathered.Records.push_back(record);
    if (Gathered.Text.size() >= chunkBytes || Gathered.Ends.size() >= chunkRows) {
        hand();
    }
}

void RowChunks::hand()
{
    if (Sender.valid()) {
        Sender.get();
    }
    std::swap(Gathered, Sending);
    clear(Gathered);
    Sender = std::async(std::launch::async, [this] { Send(Sending); });
}

void RowChunks::finish()
{
    if (!Gathered.Ends.empty()) {
        hand();
    }
    if (Sender.valid()) {
        Sender.get();
    }
}

void RowChunks::discard() noexcept
{
    if (Sender.valid()) {
        Sender.wait();
        Sender = {};
    }
    clear(Gathered);
}

std::size_t RowChunks::rowsTaken(const Chunk& chunk, const std::function<bool(std::size_t)>& takes)
{
    std::size_t taken = 0;
    std::size_t refused = chunk.Ends.size();
    while (taken + 1 < refused) {
        const std::size_t middle = taken + (refused - taken) / 2;
        (takes(middle) ? taken : refused) = middle;
    }
    return taken;
}

}  // namespace kd_lib::exchange
