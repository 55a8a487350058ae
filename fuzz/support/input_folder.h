#pragma once

#include <string>
#include <string_view>

namespace kd_fuzz {

/// The folder of this process for the files under test. It lies in TMPDIR, where fuzz/run puts a
/// folder in memory and removes it at the end.
const std::string& inputFolder();

/// Writes a file of exactly these bytes into the folder, in place of an older one.
void writeInput(const std::string& name, std::string_view bytes);

}  // namespace kd_fuzz
