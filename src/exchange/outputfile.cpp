#include <kd_lib/exchange/outputfile.h>

#include "detail/newfile.h"

#include <utility>

namespace kd_lib::exchange {

OutputFile::OutputFile(const std::string& path) : File(std::make_unique<detail::NewFile>(path)) {}

OutputFile::~OutputFile()
{
    abandon();
}

void OutputFile::take(std::string_view piece)
{
    File->write(piece);
}

void OutputFile::sync()
{
    flush();
    File->sync();
}

void OutputFile::commit()
{
    flush();
    File->commit();
}

void OutputFile::abandon() noexcept
{
    discard();
    File->abandon();
}

bool OutputFile::isStraight() const
{
    return File->isStraight();
}

}  // namespace kd_lib::exchange
