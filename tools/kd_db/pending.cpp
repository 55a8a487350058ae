// Operations of the library that are being written: until then the commands that need them fail.
#include <kd_lib/exchange/inspect.h>
#include <kd_lib/exchange/virtualtables.h>

namespace kd_lib::exchange {

bool inspect(const std::string& file, const InspectLine&, const InspectOptions&)
{
    throw Error(file, "not possible yet");
}

TableConnection::TableConnection(const std::vector<FileTableOptions>& files, VirtualTableEvents, std::stop_token)
{
    throw Error(files.front().File, "not possible yet");
}

TableConnection::~TableConnection() = default;

std::vector<FileTableOptions> tableFilesIn(const std::string& folder, const SourceOptions&)
{
    throw Error(folder, "not possible yet");
}

}  // namespace kd_lib::exchange
