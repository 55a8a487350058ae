#include <kd_lib/exchange/filesource.h>

#include "detail/filereader.h"

#include <utility>

namespace kd_lib::exchange {

FileSource::FileSource(const std::string& file) : Source(file) {}

FileSource::~FileSource() = default;

void FileSource::readBy(std::unique_ptr<detail::FileReader> reader)
{
    Reader = std::move(reader);
}

bool FileSource::read()
{
    return Reader->read();
}

Source::Origin FileSource::origin(std::size_t column) const
{
    return Reader->origin(column);
}

void FileSource::seek(std::uint64_t number)
{
    Reader->seek(number);
}

void FileSource::need(const std::vector<bool>& needed)
{
    Reader->need(needed);
}

std::vector<Fact> FileSource::facts() const
{
    return Reader->facts();
}

std::uint64_t FileSource::position() const
{
    return Reader->file().position();
}

std::optional<std::uint64_t> FileSource::size() const
{
    return Reader->file().size();
}

}  // namespace kd_lib::exchange
