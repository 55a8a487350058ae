#include <kd_lib/exchange/describe.h>

#include "detail/wording.h"

#include <kd_lib/exchange/target.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>

namespace kd_lib::exchange {

namespace {

/// Counts records and rejects.
class CountingTarget : public Target {
public:
    void begin(const std::string& /*file*/, const std::vector<Column>& /*columns*/) override {}
    void fit(Record& /*record*/) override {}
    void write(const Record& record) override { Deleted += record.Deleted ? 1 : 0; }
    void finish() override {}
    void abandon() noexcept override {}

    std::uint64_t Deleted = 0;
};

/// Rejects, counted by action, column and reason.
class RejectCount {
public:
    void add(const Reject& reject)
    {
        const Key key{reject.Where.Column, reject.Action, reject.Reason};
        auto found = std::ranges::find(Keys, key);
        if (found == Keys.end()) {
            // Reasons may quote values: there could be as many reasons as records.
            if (Keys.size() == mostReasons) {
                ++Others;
                return;
            }
            Keys.push_back(key);
            Counts.push_back({reject.Where.Record, 0});
            found = Keys.end() - 1;
        }
        ++Counts[static_cast<std::size_t>(found - Keys.begin())].second;
    }

    void addTo(std::vector<Note>& notes) const
    {
        for (std::size_t i = 0; i < Keys.size(); ++i) {
            notes.push_back({lineOf(Keys[i], Counts[i].first, Counts[i].second), true});
        }
        if (Others > 0) {
            notes.push_back({detail::count(Others, "more cell") + " or records with other reasons", true});
        }
    }

private:
    static constexpr std::size_t mostReasons = 200;

    struct Key {
        std::string Column;
        RejectAction Action;
        std::string Reason;
        friend bool operator==(const Key&, const Key&) = default;
    };

    static std::string lineOf(const Key& key, std::uint64_t firstRecord, std::uint64_t number)
    {
        const bool replaced = key.Action == RejectAction::Replace || key.Action == RejectAction::Escape;
        const std::string where = key.Column.empty() ? "" : "column " + key.Column + ": ";
        const std::string what = key.Column.empty() ? detail::count(number, "record") + " not whole"
                                 : replaced         ? detail::count(number, "cell") + " with bytes replaced"
                                                    : detail::count(number, "cell") + " unreadable";
        const std::string first = number == 1 ? " in record " : ", the first in record ";
        return where + what + first + std::to_string(firstRecord) + ": " + key.Reason;
    }

    std::vector<Key> Keys;
    std::vector<std::pair<std::uint64_t, std::uint64_t>> Counts;  ///< the first record, and the count
    std::uint64_t Others = 0;
};

}  // namespace

Description describe(const std::string& file, const SourceOptions& options, const TransferOptions& transferOptions)
{
    const std::unique_ptr<Source> source = openSource(file, options);
    CountingTarget target;
    RejectCount rejects;
    TransferOptions walk = transferOptions;
    walk.Policy = OnError::Null;
    walk.OnReject = [&rejects](const Reject& reject) { rejects.add(reject); };
    transfer(*source, target, walk);

    Description description;
    description.File = file;
    description.Columns = source->columns();
    std::ranges::remove_copy_if(source->notes(), std::back_inserter(description.Notes), &Note::Fact);
    rejects.addTo(description.Notes);
    description.Facts = source->facts();
    const std::uint64_t deleted = source->recordsLeftOut() + target.Deleted;
    const auto afterKind = description.Facts.begin() + (description.Facts.empty() ? 0 : 1);
    std::vector<Fact> counts{{"records", std::to_string(source->recordsRead())}};
    if (deleted > 0) {
        counts.push_back({"deleted", std::to_string(deleted)});
    }
    description.Facts.insert(afterKind, counts.begin(), counts.end());
    return description;
}

}  // namespace kd_lib::exchange
