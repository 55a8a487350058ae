#pragma once

#include <cstddef>
#include <streambuf>

namespace kd_fuzz {

/// Replaces standard output and standard error for one input, discards the bytes and stops the process
/// if there are more of them than `limit`: output without bound is a finding.
class BoundedOutput : public std::streambuf {
public:
    explicit BoundedOutput(std::size_t limit);
    ~BoundedOutput() override;
    BoundedOutput(const BoundedOutput&) = delete;
    BoundedOutput& operator=(const BoundedOutput&) = delete;

protected:
    int_type overflow(int_type c) override;
    std::streamsize xsputn(const char* text, std::streamsize count) override;

private:
    void take(std::size_t count);

    std::size_t Left;
    std::streambuf* Out;
    std::streambuf* Err;
};

}  // namespace kd_fuzz
