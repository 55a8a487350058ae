/// \file
/// The file of --rejects.
#pragma once

#include <kd_lib/exchange/error.h>
#include <kd_lib/exchange/outputfile.h>

#include <mutex>
#include <string>

namespace kd_tool {

/// A reject as a line of JSON: {"file","record","offset","column","bytes","reason","action"}; members that do not apply
/// are null, and the bytes are hexadecimal.
std::string rejectLine(const kd_lib::exchange::Reject& reject);

/// Accepts rejects of several threads. The file appears whole when it is finished, even after a failure of the work.
class RejectsFile {
public:
    explicit RejectsFile(const std::string& path);

    void write(const kd_lib::exchange::Reject& reject);
    void finish();

private:
    std::mutex Lock;
    kd_lib::exchange::OutputFile File;
};

}  // namespace kd_tool
