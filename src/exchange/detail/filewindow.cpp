#include "filewindow.h"

#include <algorithm>

namespace kd_lib::exchange::detail {

std::string_view FileWindow::view(std::uint64_t at, std::size_t count)
{
    count = std::min(count, capacity);
    const bool inside = at >= First && at - First <= Bytes.size() && count <= Bytes.size() - (at - First);
    if (!inside) {
        Bytes.resize(capacity);
        Bytes.resize(File.readAt(at, Bytes.data(), capacity));
        First = at;
    }
    return std::string_view(Bytes).substr(at - First, count);
}

std::string_view FileWindow::viewSome(std::uint64_t at)
{
    if (view(at, 1).empty()) {
        return {};
    }
    return std::string_view(Bytes).substr(at - First);
}

}  // namespace kd_lib::exchange::detail
