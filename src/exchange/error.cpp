#include <kd_lib/exchange/error.h>

#include <utility>

namespace kd_lib::exchange {

namespace {

std::string lineOf(const Place& place, const std::string& reason)
{
    std::string line = place.File;
    if (!line.empty()) {
        line += ": ";
    }
    std::string inside;
    const auto add = [&inside](const std::string& piece) { inside += (inside.empty() ? "" : ", ") + piece; };
    if (place.Record != 0) {
        add("record " + std::to_string(place.Record));
    }
    if (!place.Column.empty()) {
        add("column " + place.Column);
    }
    if (place.Offset) {
        add("byte " + std::to_string(*place.Offset));
    }
    return line + inside + (inside.empty() ? "" : ": ") + reason;
}

}  // namespace

Error::Error(Place place, std::string reason)
    : std::runtime_error(lineOf(place, reason)), Where(std::move(place)), Reason(std::move(reason))
{
}

const char* actionName(RejectAction action)
{
    switch (action) {
    case RejectAction::Null:
        return "null";
    case RejectAction::Replace:
        return "replace";
    case RejectAction::Escape:
        return "escape";
    case RejectAction::Cut:
        return "cut";
    case RejectAction::Skip:
        return "skip";
    case RejectAction::Stop:
        return "stop";
    }
    return "";
}

}  // namespace kd_lib::exchange
