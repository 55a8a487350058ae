#include "dbffacts.h"

#include "../../formats/dbfheader.h"
#include "moments.h"
#include "wording.h"

#include <filesystem>

namespace kd_lib::exchange::detail {

namespace {

using namespace formats;

const char* nameOf(MemoKind kind)
{
    switch (kind) {
    case MemoKind::Dbt3:
        return "dBase III";
    case MemoKind::Dbt4:
        return "dBase IV";
    case MemoKind::Fpt:
        return "FoxPro";
    case MemoKind::Smt:
        return "SIx driver, which cannot be read";
    case MemoKind::None:
        break;
    }
    return "of an unknown kind";
}

std::string stateOf(const DbfLayout& layout)
{
    std::string state;
    const auto add = [&state](bool is, const char* what) {
        if (is) {
            state += state.empty() ? what : std::string(", ") + what;
        }
    };
    add(layout.Encrypted, "encrypted");
    add(layout.InTransaction, "a transaction is unfinished");
    add((layout.Flags & dbfheader::indexFlag) != 0, "with an index file");
    add(layout.FoxFlags && (layout.Flags & dbfheader::containerFlag) != 0, "a database container");
    return state;
}

}  // namespace

std::string kindOfTable(const DbfLayout& layout)
{
    const std::string byte = "version byte " + hex(layout.Version);
    return layout.Known != nullptr ? layout.Known->Program + (" (" + byte + ")")
                                   : "read as dBase III: " + byte + " is not known";
}

std::string lastChange(const DbfLayout& layout)
{
    const std::string stated =
        std::to_string(layout.Year) + ", " + std::to_string(layout.Month) + ", " + std::to_string(layout.Day);
    if (layout.Month == 0 && layout.Day == 0) {
        return "not stated";
    }
    const std::optional<Date> day = dayOfCalendar(
        static_cast<unsigned>(layout.Year), static_cast<unsigned>(layout.Month), static_cast<unsigned>(layout.Day));
    if (!day) {
        return "not a day of the calendar: year " + stated;
    }
    std::string text(dateSize, '\0');
    putDate(text.data(), *day);
    return text;
}

std::string memoFact(const MemoFile& memo)
{
    const std::string blocks = memo.blockSize() > 0 ? ", blocks of " + count(memo.blockSize(), "byte") : "";
    return memo.path() + " (" + nameOf(memo.kind()) + blocks + ')';
}

std::vector<Fact> factsOfHeader(const DbfLayout& layout)
{
    std::vector<Fact> facts{{"record length", std::to_string(layout.RecordLength)},
                            {"header length", std::to_string(layout.HeaderLength)}};
    if (!layout.Database.empty()) {
        facts.push_back({"database", printable(layout.Database)});
    }
    if (const std::string state = stateOf(layout); !state.empty()) {
        facts.push_back({"state", state});
    }
    return facts;
}

}  // namespace kd_lib::exchange::detail
