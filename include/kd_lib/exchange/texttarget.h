/// \file
/// Records as rows of text.
#pragma once

#include <kd_lib/exchange/outputblock.h>
#include <kd_lib/exchange/target.h>
#include <kd_lib/export.h>

#include <memory>
#include <string>
#include <vector>

namespace kd_lib::exchange {

/// The common part of targets that write one text: to a file, which appears when it is finished, or to a block of the
/// caller. Floats that are not finite are rejected.
class KD_LIB_EXPORT TextTarget : public Target {
public:
    /// `path`: as for `OutputFile`, "-" is standard output.
    explicit TextTarget(std::string path, NameCase names = NameCase::Lower);

    /// Writes to a block of the caller, which must live until the end of the work. `finish` flushes the block;
    /// `abandon` leaves it unchanged.
    explicit TextTarget(OutputBlock& out, NameCase names = NameCase::Lower);
    ~TextTarget() override;

    void begin(const std::string& file, const std::vector<Column>& columns) override;
    void fit(Record& record) override;
    void finish() override;
    void abandon() noexcept override;

protected:
    /// Begins the text. `names` are those of the columns.
    virtual void open(const std::vector<std::string>& names) = 0;

    /// The destination of the text, from `begin` on.
    OutputBlock& out();

private:
    struct KD_LIB_LOCAL Work;

    std::string Path;
    OutputBlock* Out = nullptr;  // the caller's; null: a file
    NameCase Names;
    std::unique_ptr<Work> Current;  ///< from `begin` on
};

}  // namespace kd_lib::exchange
