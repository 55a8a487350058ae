/// \file
/// Records as comma separated values.
#pragma once

#include <kd_lib/exchange/outputblock.h>
#include <kd_lib/exchange/target.h>
#include <kd_lib/export.h>

#include <memory>
#include <string>
#include <vector>

namespace kd_lib::exchange {

/// Writes RFC 4180 with "\n": a header line, then a line for each record (`writeCsvRow`). The file appears when it is
/// finished.
class KD_LIB_EXPORT CsvTarget : public Target {
public:
    /// `path`: as for `OutputFile`, "-" is standard output.
    explicit CsvTarget(std::string path, NameCase names = NameCase::Lower);

    /// Writes to a block of the caller, which must outlive this object: `finish` flushes it, `abandon` leaves it as it
    /// is.
    explicit CsvTarget(OutputBlock& out, NameCase names = NameCase::Lower);
    ~CsvTarget() override;

    void begin(const std::string& file, const std::vector<Column>& columns) override;
    void fit(Record& record) override;
    void write(const Record& record) override;
    void finish() override;
    void abandon() noexcept override;

private:
    struct Work;

    std::string Path;
    OutputBlock* Out = nullptr;  // the caller's; null: a file
    NameCase Names;
    std::unique_ptr<Work> Current;  ///< from `begin` on
};

}  // namespace kd_lib::exchange
