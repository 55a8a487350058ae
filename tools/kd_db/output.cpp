#include "output.h"

#include "failure.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <iostream>
#include <unistd.h>

namespace kd_tool {

namespace {

constexpr std::size_t blockSize = 65536;

}  // namespace

DescriptorBuffer::DescriptorBuffer(int descriptor, bool escapeControls)
    : Descriptor(descriptor), EscapeControls(escapeControls), Block(blockSize)
{
    setp(Block.data(), Block.data() + Block.size());
}

bool DescriptorBuffer::writeOut()
{
    std::string_view rest(pbase(), static_cast<std::size_t>(pptr() - pbase()));
    setp(Block.data(), Block.data() + Block.size());
    if (EscapeControls) {
        Escaped.clear();
        Escaper.append(Escaped, rest);
        rest = Escaped;
    }
    while (!rest.empty() && Error == 0) {
        const ssize_t written = ::write(Descriptor, rest.data(), rest.size());
        if (written >= 0) {
            rest.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno != EINTR) {
            Error = errno;
        }
    }
    return Error == 0;
}

DescriptorBuffer::int_type DescriptorBuffer::overflow(int_type c)
{
    if (!writeOut()) {
        return traits_type::eof();
    }
    if (!traits_type::eq_int_type(c, traits_type::eof())) {
        sputc(traits_type::to_char_type(c));
    }
    return traits_type::not_eof(c);
}

int DescriptorBuffer::sync()
{
    return writeOut() ? 0 : -1;
}

ResultOutput::ResultOutput() : Buffer(STDOUT_FILENO, ::isatty(STDOUT_FILENO) != 0), Before(std::cout.rdbuf(&Buffer)) {}

ResultOutput::~ResultOutput()
{
    Buffer.pubsync();
    std::cout.rdbuf(Before);
}

void ResultOutput::finish()
{
    Buffer.pubsync();
    if (Buffer.error() == EPIPE) {
        throw ReaderGone();
    }
    if (Buffer.error() != 0) {
        throw Failure("standard output", std::strerror(Buffer.error()));
    }
}

NoteOutput::NoteOutput() : Buffer(STDERR_FILENO, ::isatty(STDERR_FILENO) != 0), Before(std::cout.rdbuf(&Buffer)) {}

NoteOutput::~NoteOutput()
{
    Buffer.pubsync();
    std::cout.rdbuf(Before);
}

void keepStandardDescriptors()
{
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(descriptor, F_GETFD) < 0) {
            // Not for writing, so that results which go nowhere are an error. The lowest free number is
            // the missing one.
            static_cast<void>(::open("/dev/null", descriptor == STDERR_FILENO ? O_WRONLY : O_RDONLY));
        }
    }
}

void note(const std::string& text)
{
    std::cout.flush();
    std::cerr << oneLine(text) + '\n';
}

std::string counted(std::uint64_t count, const std::string& word)
{
    return std::to_string(count) + ' ' + word + (count == 1 ? "" : "s");
}

void reportFailure(const std::string& file, const std::string& reason)
{
    note("kd_db: " + file + ": " + reason);
}

}  // namespace kd_tool
