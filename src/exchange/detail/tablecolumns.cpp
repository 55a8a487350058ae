#include "tablecolumns.h"

#include "fieldform.h"
#include "wording.h"

#include <algorithm>

namespace kd_lib::exchange::detail {

namespace {

void addColumn(TableColumns& to, const DbfLayout& layout, std::size_t index, const CodePage& page)
{
    const DbfField& field = layout.Fields[index];
    const FieldForm form = formOf(field, layout);
    Column column = columnOf(field, form);
    std::string scratch;
    const CodePage::Decoded name = page.decode(field.Name, EncodingErrors::Replace, scratch);
    column.Name = name.Text;
    to.HighBytes = to.HighBytes || !isAscii(field.Name);
    if (name.Result != CodePage::Decoded::Outcome::Known) {
        to.Notes.push_back({"name of column " + std::to_string(to.Columns.size() + 1) + ": " +
                                page.reason(field.Name, name) + "; replaced",
                            true});
    }
    if (form == FieldForm::Unknown) {
        to.Notes.push_back({"column " + column.Name + ": type " + printable({&field.Letter, 1}) + " of " +
                            count(field.Length, "byte") + " is not known; carried as bytes"});
    }
    to.Columns.push_back(std::move(column));
    to.Fields.push_back(index);
}

/// Missing bits count as 0, so that NULL would become a value.
void checkNullFlags(TableColumns& to, const DbfLayout& layout)
{
    const DbfField* const flags = nullFlagsOf(layout);
    if (flags == nullptr) {
        return;
    }
    int bits = 0;
    for (const NullBits& one : nullBitsOf(layout)) {
        bits = std::max({bits, one.Varying + 1, one.Null + 1});
    }
    if (flags->Length < (static_cast<std::uint32_t>(bits) + 7) / 8) {
        to.Notes.push_back({"the null flags have " + count(flags->Length, "byte") + ", too few for " +
                                count(static_cast<std::uint64_t>(bits), "bit") + "; some NULLs are not known",
                            true});
    }
}

}  // namespace

TableColumns columnsOfTable(const DbfLayout& layout, const CodePage& page, bool withMemos)
{
    TableColumns columns;
    for (std::size_t i = 0; i < layout.Fields.size(); ++i) {
        const FieldForm form = formOf(layout.Fields[i], layout);
        if (form != FieldForm::NullFlags && (withMemos || !isMemo(form))) {
            addColumn(columns, layout, i, page);
        }
    }
    checkNullFlags(columns, layout);
    return columns;
}

}  // namespace kd_lib::exchange::detail
