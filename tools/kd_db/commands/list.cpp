#include "commands.h"

#include "../output.h"
#include "../xbase_source.h"

#include <kd_lib/console.h>
#include <kd_lib/text.h>

#include <algorithm>
#include <vector>

namespace kd_tool {

namespace {

constexpr const char* deletionMark = "* ";
constexpr const char* noMark = "  ";

/// Prints the columns of a table: padded on the left to their widths with a blank between, as query
/// results are, or, where columns have no widths, separated by tabs.
class Listing {
public:
    explicit Listing(const Source& source, const kd_lib::TableFields& fields, bool marked);

    void header();
    void record(bool deleted);

private:
    void line(std::string kd_lib::TableField::*text, const char* mark);

    const kd_lib::TableFields& Fields;
    bool Marked;
    bool Padded;
    std::vector<std::size_t> Widths;
    std::string Line;
};

Listing::Listing(const Source& source, const kd_lib::TableFields& fields, bool marked)
    : Fields(fields), Marked(marked), Padded(source.hasWidths())
{
    for (const kd_lib::TableField& field : fields) {
        Widths.push_back(Padded ? std::max(static_cast<std::size_t>(field.Length), field.Name.size()) : 0);
    }
}

void Listing::line(std::string kd_lib::TableField::*text, const char* mark)
{
    Line = Marked ? mark : "";
    for (std::size_t i = 0; i < Widths.size(); ++i) {
        const std::string& value = Fields.List[i]->*text;
        if (i > 0) {
            Line += Padded ? ' ' : '\t';
        }
        if (value.size() < Widths[i]) {
            Line.append(Widths[i] - value.size(), ' ');
        }
        Line += value;
    }
    Line += '\n';
    kd_lib::display(Line);
}

void Listing::header()
{
    line(&kd_lib::TableField::Name, noMark);
    if (Padded) {
        kd_lib::display(std::string(Line.size() - 1, '-') + '\n');
    }
}

void Listing::record(bool deleted)
{
    line(&kd_lib::TableField::Value, deleted ? deletionMark : noMark);
}

/// Only an xBase table has deleted records; it extracts them when they are listed.
void extractDeleted(Source& source)
{
    auto* table = dynamic_cast<XBaseSource*>(&source);
    if (table == nullptr) {
        throw UsageError(source.file() + ": --deleted is for .dbf files");
    }
    table->ReadDeleted = true;
}

}  // namespace

void list(const ListOptions& options)
{
    const std::unique_ptr<Source> source = openSource(options.Source);
    if (options.Deleted) {
        extractDeleted(*source);
    }
    kd_lib::FileTable& table = source->table();
    ResultOutput results;
    Listing listing(*source, table.Fields, options.Deleted);
    listing.header();
    table.firstRecord();
    while (!results.failed() && table.fetchRecord()) {
        if (options.Deleted || !source->deleted()) {
            listing.record(source->deleted());
        }
    }
    results.finish();
}

}  // namespace kd_tool
