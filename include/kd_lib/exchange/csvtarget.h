/// \file
/// Records as comma-separated values.
#pragma once

#include <kd_lib/exchange/texttarget.h>
#include <kd_lib/export.h>

#include <string>
#include <vector>

namespace kd_lib::exchange {

/// Writes RFC 4180 with "\n": a header line, then a line for each record (`writeCsvRow`).
class KD_LIB_EXPORT CsvTarget : public TextTarget {
public:
    using TextTarget::TextTarget;
    ~CsvTarget() override;

    void write(const Record& record) override;

private:
    void open(const std::vector<std::string>& names) override;
};

}  // namespace kd_lib::exchange
