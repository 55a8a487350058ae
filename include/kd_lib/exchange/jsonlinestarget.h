/// \file
/// Records as lines of JSON.
#pragma once

#include <kd_lib/exchange/outputblock.h>
#include <kd_lib/exchange/target.h>
#include <kd_lib/export.h>

#include <memory>
#include <string>
#include <vector>

namespace kd_lib::exchange {

/// Writes one object per record, each on its own line (`JsonRow`). The file appears when it is finished.
class KD_LIB_EXPORT JsonLinesTarget : public Target {
public:
    /// `path`: as for `OutputFile`, "-" is standard output.
    explicit JsonLinesTarget(std::string path, NameCase names = NameCase::Lower);

    /// Writes to a block of the caller, which must outlive this object: `finish` flushes it, `abandon` leaves it as it
    /// is.
    explicit JsonLinesTarget(OutputBlock& out, NameCase names = NameCase::Lower);
    ~JsonLinesTarget() override;

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
