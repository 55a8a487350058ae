/// \file
/// Records as lines of JSON.
#pragma once

#include <kd_lib/exchange/rowtext.h>
#include <kd_lib/exchange/texttarget.h>
#include <kd_lib/export.h>

#include <optional>
#include <string>
#include <vector>

namespace kd_lib::exchange {

/// Writes one object per record, each on a separate line (`JsonRow`).
class KD_LIB_EXPORT JsonLinesTarget : public TextTarget {
public:
    using TextTarget::TextTarget;
    ~JsonLinesTarget() override;

    void write(const Record& record) override;

private:
    void open(const std::vector<std::string>& names) override;

    std::optional<JsonRow> Row;  // from `open` on
};

}  // namespace kd_lib::exchange
