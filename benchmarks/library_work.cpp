#include "library_work.h"

#include "generator.h"

#include <kd_lib/kd_db.h>

#include <charconv>
#include <filesystem>
#include <iostream>
#include <stdexcept>

namespace kd_bench::library {

namespace {

void require(bool succeeded, const std::string& what)
{
    if (!succeeded) {
        throw std::runtime_error(what + ": the library returned false");
    }
}

/// While it exists, the table's lines about its file are discarded.
class Muted {
public:
    Muted() : Before(std::cout.rdbuf(nullptr)) {}
    ~Muted() { std::cout.rdbuf(Before); }
    Muted(const Muted&) = delete;
    Muted& operator=(const Muted&) = delete;

private:
    std::streambuf* Before;
};

void open(kd_lib::FileTable& table, const Files& files)
{
    const Muted quiet;
    table.Path = files.Folder;
    require(table.open(files.Table), files.Table);
    require(table.getFieldList(), files.Table);
}

void add(Tally& tally, const kd_lib::TableFields& fields)
{
    ++tally.Records;
    for (const kd_lib::TableField& field : fields) {
        tally.Bytes += field.Value.size();
    }
}

template <class Number>
Number numberIn(std::string_view text)
{
    Number number{};
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

/// Binds a value of an xBase table by its type; empty ones as NULL. Texts must not move until the statement has run.
bool bindValue(kd_lib::SQLite3& database, int index, const kd_lib::TableField& field)
{
    const std::string_view value = kd_lib::allTrimView(field.Value);
    if (value.empty()) {
        return database.bindNULL(index);
    }
    switch (field.Type) {
    case kd_lib::INTEGER_TYPE:
    case kd_lib::FLOAT_TYPE:
        return field.Decimals == 0 ? database.bind(index, numberIn<int>(value))
                                   : database.bind(index, numberIn<double>(value));
    case kd_lib::BOOLEAN_TYPE:
        return database.bind(index, kd_lib::stringToBool(field.Value) ? 1 : 0);
    case kd_lib::DATE_TYPE: {
        std::string date(value);
        return database.bind(index, date.insert(6, 1, '-').insert(4, 1, '-'));
    }
    default:
        return database.bindKept(index, field.Value);
    }
}

void createTable(kd_lib::SQLite3& database, const std::string& name, const kd_lib::TableFields& fields)
{
    std::string create = "CREATE TABLE " + name + " (";
    std::string insert = "INSERT INTO " + name + " VALUES (";
    for (const kd_lib::TableField& field : fields) {
        create += kd_lib::convertField2Sql(field) + ',';
        insert += "?,";
    }
    create.back() = ')';
    insert.back() = ')';
    require(database.execute(create), create);
    require(database.prepare(insert), insert);
}

void openDatabase(kd_lib::SQLite3& database, const std::string& path, bool create)
{
    database.host = "";
    require(database.openDatabase(path, create, ""), path);
}

}  // namespace

Tally walkDbf(const Files& files)
{
    kd_lib::xBaseTable table;
    open(table, files);
    Tally tally;
    for (table.firstRecord(); table.fetchRecord();) {
        if (!table.isDeleted()) {
            add(tally, table.Fields);
        }
    }
    return tally;
}

Tally walkCsv(const Files& files)
{
    kd_lib::DelimitedTable table;
    table.setCsvMode();
    table.RecordLength = 4096;
    open(table, files);
    Tally tally;
    while (table.fetchRecord()) {
        add(tally, table.Fields);
    }
    return tally;
}

Tally walkFixed(const Files& files)
{
    kd_lib::FileTable table;
    int offset = 0;
    for (const Column& column : columnsOf(Profile::Short)) {
        const auto width = static_cast<int>(column.Width);
        kd_lib::TableField field(column.Name, kd_lib::UNKNOWN_TYPE, offset, width, 0, false);
        table.Fields.add(field);
        offset += width;
    }
    open(table, files);
    Tally tally;
    for (table.firstRecord(); table.fetchRecord();) {
        add(tally, table.Fields);
    }
    return tally;
}

Tally writeScript(const Files& files)
{
    // The script is written into the folder of its table: a link keeps it out of the input's folder.
    const std::string link = files.output(".dbf");
    std::filesystem::remove(link);
    std::filesystem::create_symlink(std::filesystem::absolute(files.input(".dbf")), link);
    kd_lib::xBase2Sql table;
    open(table, {files.Scratch, files.Table, files.Scratch});
    const std::string script = table.convert();
    require(!script.empty(), link);
    return {table.RecordCount, std::filesystem::file_size(script)};
}

Tally importScript(const Files& files)
{
    kd_lib::SQLite3 database;
    openDatabase(database, files.output(".db"), true);
    bool stopped = true;
    {
        const Muted quiet;
        stopped = database.importSqlFile(files.input(".sql"));
    }
    require(!stopped, files.input(".sql"));
    return {static_cast<std::uint64_t>(database.getRecords(files.Table)), 0};
}

Tally loadRecords(const Files& files)
{
    kd_lib::xBaseTable table;
    open(table, files);
    kd_lib::SQLite3 database;
    openDatabase(database, files.output(".db"), true);
    database.beginTransaction();
    createTable(database, files.Table, table.Fields);
    Tally tally;
    for (table.firstRecord(); table.fetchRecord();) {
        if (table.isDeleted()) {
            continue;
        }
        int index = 0;
        for (const kd_lib::TableField& field : table.Fields) {
            require(bindValue(database, ++index, field), field.Name);
        }
        // execute() without an argument runs the statement that is prepared.
        require(static_cast<kd_lib::SqlDatabase&>(database).execute(), files.Table);
        database.resetResults();
        ++tally.Records;
    }
    database.endTransaction();
    return tally;
}

Tally printQuery(const Files& files)
{
    kd_lib::SQLite3 database;
    openDatabase(database, files.input(".db"), false);
    require(database.query("SELECT * FROM " + files.Table), files.Table);
    require(database.queryResults(), files.Table);
    std::cout.flush();
    return {database.resultRows, 0};
}

}  // namespace kd_bench::library
