/// \file
/// Records of a file.
#pragma once

#include <kd_lib/exchange/source.h>
#include <kd_lib/export.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kd_lib::exchange {

namespace detail {
class FileReader;
}

/// The common part of the sources of files. Each derived source creates a reader for its format.
class KD_LIB_EXPORT FileSource : public Source {
public:
    ~FileSource() override;

    Origin origin(std::size_t column) const override;
    void seek(std::uint64_t number) override;
    void need(const std::vector<bool>& needed) override;
    std::vector<Fact> facts() const override;
    std::uint64_t position() const override;
    std::optional<std::uint64_t> size() const override;

protected:
    explicit FileSource(const std::string& file);

    /// Sets the reader; derived classes must call it in their constructor.
    void readBy(std::unique_ptr<detail::FileReader> reader);

private:
    bool read() override;

    std::unique_ptr<detail::FileReader> Reader;
};

}  // namespace kd_lib::exchange
