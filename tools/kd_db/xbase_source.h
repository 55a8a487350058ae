/// \file
/// xBase tables for the commands.
#pragma once

#include "source.h"

#include <kd_lib/xbase2sql.h>

namespace kd_tool {

/// An xBase table whose header fits its file. Its records end where one would start with the end mark
/// (0x1A), or with the file; fewer records than the header counts are a failure.
class XBaseSource : public Source, public kd_lib::xBase2Sql {
public:
    explicit XBaseSource(const std::string& file);

    kd_lib::FileTable& table() override { return *this; }
    bool deleted() const override { return isDeleted(); }
    bool fetchRecord() override;

    /// Deleted records met so far.
    std::uint64_t deletedRecords() const { return DeletedRecords; }

private:
    void readColumns();
    void dropBehindTerminator();
    void checkShape();
    void endOfRecords();
    std::uint64_t fileSize();
    std::uint64_t blankedBytes();

    std::uint64_t DeletedRecords = 0;
};

}  // namespace kd_tool
