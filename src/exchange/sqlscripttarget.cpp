#include <kd_lib/exchange/sqlscripttarget.h>

#include "detail/scriptframe.h"

#include <kd_lib/exchange/outputfile.h>
#include <kd_lib/exchange/rowtext.h>
#include <kd_lib/exchange/tablelayout.h>

#include <utility>

namespace kd_lib::exchange {

namespace {

// One statement of many rows is read faster than many statements, but servers refuse very long ones.
constexpr std::uint64_t rowsOfStatement = 500;
constexpr std::uint64_t bytesOfStatement = 262144;

}  // namespace

struct SqlScriptTarget::Work {
    Work(TableLayout layout, const std::string& path, bool copies)
        : Layout(std::move(layout)), Frame(detail::scriptFrame(Layout, copies)), Out(path), Copies(copies)
    {
    }

    void start()
    {
        Out.write(Frame.Before);
        const std::string into = Frame.Table + " (" + Layout.columnList() + ")";
        if (Copies) {
            Out.write("COPY " + into + " FROM stdin;\n");
        } else {
            Lead = "INSERT INTO " + into + " VALUES\n";
        }
    }

    void insert(const Record& record)
    {
        if (Rows == 0) {
            StatementStart = Out.size();
            Out.write(Lead);
        } else {
            Out.write(",\n");
        }
        writeInsertRow(Layout, record, Out);
        if (++Rows == rowsOfStatement || Out.size() - StatementStart >= bytesOfStatement) {
            endInsert();
        }
    }

    void endInsert()
    {
        if (Rows != 0) {
            Out.write(";\n");
            Rows = 0;
        }
    }

    void end()
    {
        if (Copies) {
            Out.write("\\.\n");
        }
        endInsert();
        Out.write(Frame.After);
        Out.commit();
    }

    TableLayout Layout;
    detail::ScriptFrame Frame;
    OutputFile Out;
    bool Copies;
    std::string Lead;
    std::uint64_t Rows = 0;  ///< of the INSERT that is open
    std::uint64_t StatementStart = 0;
};

SqlScriptTarget::SqlScriptTarget(std::string path, const Dialect& dialect, TableOptions options, RowStyle style)
    : Path(std::move(path)), To(dialect), Options(std::move(options)), Style(style)
{
}

SqlScriptTarget::~SqlScriptTarget() = default;

void SqlScriptTarget::begin(const std::string& file, const std::vector<Column>& columns)
{
    const bool copies = To.Is == Engine::PostgreSql && Style == RowStyle::Fastest;
    TableLayout layout(To, file, columns, Options);
    Table = layout.table();
    Current = std::make_unique<Work>(std::move(layout), Path, copies);
    Current->start();
}

void SqlScriptTarget::fit(Record& record)
{
    Current->Layout.fit(record);
}

void SqlScriptTarget::write(const Record& record)
{
    if (Current->Copies) {
        writeCopyRow(record, Current->Out);
    } else {
        Current->insert(record);
    }
}

void SqlScriptTarget::finish()
{
    Current->end();
    Notes = Current->Layout.notes();
}

void SqlScriptTarget::abandon() noexcept
{
    Current.reset();
}

std::string SqlScriptTarget::destination() const
{
    return "table " + Table;
}

}  // namespace kd_lib::exchange
