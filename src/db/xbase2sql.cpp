#include <kd_lib/xbase2sql.h>

#include "detail/appendliterals.h"
#include "detail/messages.h"

#include <kd_lib/console.h>
#include <kd_lib/detail/bytes.h>
#include <kd_lib/path.h>
#include <kd_lib/sqlliteral.h>

#include <algorithm>
#include <fstream>
#include <typeinfo>
#include <utility>
#include <vector>

namespace kd_lib {

namespace {

/// The script is written in blocks of about this size.
constexpr std::size_t blockSize = 262144;

void appendNames(std::string& sql, const TableFields& fields, const char* before)
{
    const char* separator = "";
    for (const TableField& field : fields) {
        sql += separator;
        sql += before;
        sql += field.Name;
        separator = ",";
    }
}

/// The beginning of an INSERT, up to its values. It is kept for all records and composed again when a name has changed:
/// a derived class may change names between two records.
class InsertLead {
public:
    InsertLead(const std::string& table, const TableFields& fields) { make(table, fields); }

    const std::string& text() const { return Text; }

    void follow(const std::string& table, const TableFields& fields)
    {
        if (!isOf(table, fields)) {
            make(table, fields);
        }
    }

private:
    bool isOf(const std::string& table, const TableFields& fields) const
    {
        const auto isName = [](const std::string& name, const TableField* field) {
            return detail::sameBytes(name, field->Name);
        };
        return detail::sameBytes(Table, table) &&
               std::equal(Names.begin(), Names.end(), fields.List.begin(), fields.List.end(), isName);
    }

    void make(const std::string& table, const TableFields& fields)
    {
        Table = table;
        Names.clear();
        for (const TableField& field : fields) {
            Names.push_back(field.Name);
        }
        Text = "INSERT INTO " + stringToLower(table) + "(";
        appendNames(Text, fields, "");
        Text += ") \n VALUES (";
    }

    std::string Table;
    std::vector<std::string> Names;
    std::string Text;
};

void appendInsert(detail::TextBuffer& sql, const InsertLead& lead, const TableFields& fields)
{
    sql.append(lead.text());
    detail::appendLiterals(sql, fields.List);
    sql.append(");\n");
}

std::string placeholder(const std::string& dialect, std::size_t index)
{
    return dialect == "postgresql" ? '$' + std::to_string(index) : "?";
}

/// Collects whole statements and writes them in blocks. Complete statements are written even if a later one
/// throws.
class StatementWriter {
public:
    explicit StatementWriter(std::ostream& out) : Out(out) {}
    ~StatementWriter()
    {
        try {
            write();
        } catch (...) {
            // An exception of the caller's stream is dropped, because another one may be active already.
        }
    }
    StatementWriter(const StatementWriter&) = delete;
    StatementWriter& operator=(const StatementWriter&) = delete;

    detail::TextBuffer Block;  ///< statements are appended here

    /// The block ends with a whole statement.
    void statementEnds()
    {
        Complete = Block.size();
        if (Complete >= blockSize) {
            write();
        }
    }

    /// Writes the complete statements. They are not written again if the stream throws.
    void write()
    {
        const std::size_t size = std::exchange(Complete, 0);
        Out.write(Block.text().data(), static_cast<std::streamsize>(size));
        Block.clear();
    }

private:
    std::ostream& Out;
    std::size_t Complete = 0;
};

}  // namespace

xBase2Sql::xBase2Sql() = default;

xBase2Sql::xBase2Sql(const std::string& name) : xBaseTable(name) {}

xBase2Sql::~xBase2Sql() = default;

bool xBase2Sql::openWithHeader()
{
    if (!is_open()) {
        open();
    }
    if (!is_open()) {
        errorMessage(detail::messages::tableNotOpen);
        return false;
    }
    if (Fields.size() == 0) {
        readHeader();
    }
    return true;
}

std::string xBase2Sql::createTable(bool dropFirst)
{
    if (!openWithHeader()) {
        return detail::messages::tableNotOpenResult;
    }
    const std::string table = stringToLower(Name);
    std::string sql;
    if (dropFirst) {
        sql += "DROP TABLE IF EXISTS " + table + ";\n";
    }
    sql += "CREATE TABLE IF NOT EXISTS " + table + " (\n";
    if (!KeyColumn.empty()) {
        sql += KeyColumn + " INTEGER  PRIMARY KEY AUTOINCREMENT,\n";
    }
    for (std::size_t i = 0; i < Fields.size(); ++i) {
        sql += convertField2Sql(*Fields.List[i]);
        sql += i + 1 < Fields.size() ? ",\n" : "\n";
    }
    return sql + ");\n";
}

std::string xBase2Sql::prepareInsert(const std::string& dialect)
{
    std::string sql = "INSERT INTO " + stringToLower(Name) + " (";
    // Deliberate: the colons belong to the names, not to the placeholders.
    appendNames(sql, Fields, dialect == "sqlite" ? ":" : "");
    sql += ")\n VALUES (";
    for (std::size_t i = 0; i < Fields.size(); ++i) {
        sql += i > 0 ? "," : "";
        sql += placeholder(dialect, i);
    }
    return sql + ");\n";
}

std::string xBase2Sql::insert()
{
    detail::TextBuffer sql;
    appendInsert(sql, InsertLead(Name, Fields), Fields);
    return std::string(sql.text());
}

void xBase2Sql::writeRecords(std::ostream& out)
{
    InsertLead lead(Name, Fields);
    const bool mayBeRenamed = NamesMayChange && typeid(*this) != typeid(xBase2Sql);
    StatementWriter writer(out);
    firstRecord();
    while (out && fetchRecord()) {
        if (mayBeRenamed) {
            lead.follow(Name, Fields);
        }
        appendInsert(writer.Block, lead, Fields);
        writer.statementEnds();
    }
    writer.write();
}

void xBase2Sql::writeScript(std::ostream& out)
{
    const std::string definition = createTable(true);
    out.write(definition.data(), static_cast<std::streamsize>(definition.size()));
    if (InsertRecords && is_open()) {
        writeRecords(out);
    }
}

std::string xBase2Sql::convert()
{
    std::string path = Path;
    addEndSlash(path);
    path += Name + ".sql";
    checkHomePath(path);
    if (!openWithHeader()) {
        return "";
    }
    std::ofstream script(path);
    if (!script.is_open()) {
        return "";
    }
    writeScript(script);
    close();
    script.close();
    return path;
}

}  // namespace kd_lib
