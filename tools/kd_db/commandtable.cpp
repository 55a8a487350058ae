#include "commandline.h"

#include "commands/commands.h"

namespace kd_tool {

const std::vector<CommandSpec>& commands()
{
    static const std::vector<CommandSpec> all = {
        {"show",
         "FILE...",
         "Columns, counts, code page, memo file",
         "Describes a file: its kind and the program that wrote it, its code page and why, the number of records, "
         "its columns, its memo file, and what would not be carried.",
         "kd_db show clients.dbf\n"
         "kd_db show cities.csv --infer",
         {&fileOptions, &generalOptions},
         show},
        {"list",
         "FILE",
         "Prints the records of a file",
         "Prints records as an aligned table, fitted to the terminal's width; full width elsewhere.",
         "kd_db list clients.dbf --select name,town,limit\n"
         "kd_db list parts.txt --columns 'kind:6-12,size:13-20' --format jsonl",
         {&viewOptions, &limitOptions, &recordOptions, &fileOptions, &rejectOptions, &progressOptions, &generalOptions},
         list},
        {"convert",
         "FILE --to FORMAT",
         "Writes an SQL script, CSV or JSON lines",
         "Writes the records of a file as an SQL script that creates the table in one transaction, as CSV or as JSON "
         "lines.",
         "kd_db convert clients.dbf --to sqlite -o clients.sql\n"
         "kd_db convert orders.dbf --to csv",
         {&convertOptions, &tableOptions, &recordOptions, &fileOptions, &rejectOptions, &progressOptions,
          &generalOptions},
         convert},
        {"load",
         "FILE... --into DATABASE",
         "Loads tables into a database",
         "Creates a table for each file, each in one transaction: it holds all records or does not exist. A folder "
         "means all tables in it.",
         "kd_db load clients.dbf orders.dbf --into shop.db\n"
         "kd_db load cities.csv --into shop.db --infer",
         {&intoOptions, &loadOptions, &tableOptions, &recordOptions, &fileOptions, &rejectOptions, &progressOptions,
          &generalOptions},
         load},
        {"query",
         "DATABASE... SQL",
         "Prints the result of an SQL statement",
         "Runs one statement. DATABASE may also be files, or folders of files: each file is then a table, named like "
         "the file without its extension, in SQLite's SQL.",
         "kd_db query shop.db \"SELECT name, town FROM clients WHERE active\"\n"
         "kd_db query clients.dbf orders.dbf \"SELECT name, sum(amount) FROM clients JOIN orders ON client = id GROUP "
         "BY id\"",
         {&viewOptions, &recordOptions, &fileOptions, &rejectOptions, &progressOptions, &generalOptions},
         query},
        {"verify",
         "FILE DATABASE",
         "Compares a table in a database with its file",
         "Compares every value of the file with the table in the database; for each column that differs it prints "
         "the first record and both values. Status 0: they agree; 1: they differ.",
         "kd_db verify clients.dbf shop.db\n"
         "kd_db verify cities.csv shop.db --infer",
         {&verifyOptions, &recordOptions, &fileOptions, &rejectOptions, &progressOptions, &generalOptions},
         verify},
        {"inspect",
         "FILE",
         "Explains the bytes of a .dbf, memo or .mem file",
         "Explains a .dbf, memo or .mem file byte by byte, and reports damage. Status 0: sound; 3: damaged.",
         "kd_db inspect clients.dbf\n"
         "kd_db inspect settings.mem",
         {&generalOptions},
         inspect},
        {"import",
         "SCRIPT --into DATABASE",
         "Runs an SQL script, all or nothing",
         "Runs the statements of an SQL script in one transaction.",
         "kd_db import clients.sql --into imported.db\n"
         "kd_db import clients.sql --into second.db --quiet",
         {&intoOptions, &progressOptions, &generalOptions},
         import},
        {"memory",
         "FILE",
         "Prints the variables of a .mem file",
         "Prints name, type and value of each variable.",
         "kd_db memory settings.mem\n"
         "kd_db memory settings.mem --format jsonl",
         {&viewOptions, &fileOptions, &rejectOptions, &generalOptions},
         memory},
        {"script",
         "FILE",
         "Writes the classic script of a .dbf table",
         "Writes FILE.sql next to the table, in the classic form, and prints its path. convert writes scripts that "
         "servers accept unchanged.",
         "kd_db script stock.dbf\n"
         "kd_db script stock.dbf --definition-only --key id",
         {&scriptOptions, &generalOptions},
         script},
    };
    return all;
}

}  // namespace kd_tool
