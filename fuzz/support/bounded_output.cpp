#include "support/bounded_output.h"

#include <cstdio>
#include <cstdlib>
#include <iostream>

namespace kd_fuzz {

BoundedOutput::BoundedOutput(std::size_t limit) : Left(limit), Out(std::cout.rdbuf(this)), Err(std::cerr.rdbuf(this)) {}

BoundedOutput::~BoundedOutput()
{
    std::cout.rdbuf(Out);
    std::cerr.rdbuf(Err);
}

void BoundedOutput::take(std::size_t count)
{
    if (count > Left) {
        std::fputs("finding: output without bound\n", stderr);
        std::abort();
    }
    Left -= count;
}

BoundedOutput::int_type BoundedOutput::overflow(int_type c)
{
    take(1);
    return traits_type::not_eof(c);
}

std::streamsize BoundedOutput::xsputn(const char*, std::streamsize count)
{
    take(static_cast<std::size_t>(count));
    return count;
}

}  // namespace kd_fuzz
