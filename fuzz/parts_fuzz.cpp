// The parts without a file: lists of columns, texts, paths, the console, the query builder and the reserved words.

#include "support/bounded_output.h"
#include "support/calls.h"

#include <kd_lib/databasetable.h>
#include <kd_lib/kd_udf.h>
#include <kd_lib/sqlkeyword.h>
#include <kd_lib/sqlquery.h>

#include <cstdlib>
#include <exception>
#include <iostream>
#include <sstream>
#include <utility>

namespace {

constexpr std::size_t outputLimit = 16U << 20U;
constexpr int longestSequence = 300;

class Parts {
public:
    explicit Parts(kd_fuzz::Calls calls) : Sequence(calls) {}

    void run()
    {
        for (int i = 0; i < longestSequence && Sequence.more(); ++i) {
            switch (Sequence.below(6)) {
            case 0:
                lists();
                break;
            case 1:
                texts();
                break;
            case 2:
                paths();
                break;
            case 3:
                console();
                break;
            case 4:
                query();
                break;
            default:
                names();
                break;
            }
        }
    }

private:
    void lists()
    {
        switch (Sequence.below(7)) {
        case 0:
            Fields.add(Sequence.text());
            break;
        case 1: {
            kd_lib::TableField field(Sequence.text(), static_cast<kd_lib::FIELD_TYPE>(Sequence.number()), 0, 1, 2,
                                     true);
            Fields.add(field);
            break;
        }
        case 2:
            Other = Fields;
            kd_fuzz::require(Other.size() == Fields.size(), "a copy has every column");
            break;
        case 3:
            Other = std::move(Fields);
            Fields = kd_lib::TableFields(Other);
            break;
        case 4: {
            kd_lib::TableFields moved(std::move(Other));
            Other = moved;
            break;
        }
        case 5:
            Fields.CaseSensitive = Sequence.flag();
            Fields.getData(Sequence.text());
            Fields.getData(static_cast<unsigned long>(Sequence.byte()));
            std::as_const(Fields).get(Sequence.text());
            std::as_const(Fields).get(static_cast<unsigned long>(Sequence.byte()));
            Fields.findNumber(Sequence.text());
            break;
        default:
            root();
            break;
        }
    }

    void root()
    {
        kd_lib::DatabaseTable table(Sequence.text());
        kd_lib::DatabaseTable nameless;
        table.Fields = Fields;
        table.RecordCount = Sequence.byte();
        table.showHeader();
        kd_fuzz::require(table.is_open() && table.getFieldList() && table.skipHeader() && table.fetchRecord(),
                         "the root's defaults");
        table.open(Sequence.text());
        table.open();
        Sequence.flag() ? static_cast<void>(table.close()) : table.defineFields();
        kd_fuzz::require(table.Fields.size() == 0, "the root's close empties the columns");
    }

    void texts()
    {
        const std::string text = Sequence.text();
        const char c = static_cast<char>(Sequence.byte());
        kd_fuzz::require(kd_lib::stringToLower(kd_lib::stringToUpper(text)) == kd_lib::stringToLower(text), "folding");
        kd_fuzz::require(kd_lib::rightTrim(kd_lib::allTrim(text)) == kd_lib::allTrim(text), "trims agree");
        kd_fuzz::require(kd_lib::leftPad(text, Sequence.number(), c).size() >= text.size(), "padding keeps the text");
        kd_fuzz::require(kd_lib::replaceChar(text, c, 'x').find(c) == std::string::npos || c == 'x',
                         "all are replaced");
        kd_fuzz::require(kd_lib::inQuotes(text, c).size() >= text.size() + 2, "quotes on both sides");
        const int count = Sequence.number();
        kd_fuzz::require(kd_lib::replicateChar(c, count).size() == static_cast<std::size_t>(std::max(count, 0)),
                         "copies");
        kd_lib::removeQuotes(text);
        kd_lib::stringToBool(text);
        kd_lib::findStrings(text, {Sequence.text(), text});
        kd_lib::rotate2b(static_cast<short>(Sequence.byte()));
        kd_lib::rotate4b(Sequence.byte());
        pieces(text, c);
    }

    static void pieces(const std::string& text, char c)
    {
        kd_lib::Tokenizer tokenizer;
        tokenizer.split(text, std::string(1, c));
        std::string joined = tokenizer.getToken(0);
        for (std::size_t i = 1; i < tokenizer.tokens.size(); ++i) {
            joined += c + tokenizer.getToken(i);
        }
        kd_fuzz::require(joined == text, "the pieces are the text");
        tokenizer.split(text, "|:;");
    }

    void paths()
    {
        std::string path = (Sequence.flag() ? "~/" : "") + Sequence.text();
        Sequence.flag() ? ::setenv("HOME", Sequence.flag() ? "/home/of/nobody" : "", 1) : ::unsetenv("HOME");
        kd_lib::checkHomePath(path);
        kd_lib::addEndSlash(path);
        kd_fuzz::require(path.empty() || path.back() == '/', "a slash at the end");
    }

    void console()
    {
        std::istringstream replies(Sequence.text());
        std::streambuf* const input = std::cin.rdbuf(replies.rdbuf());
        kd_lib::setVerbose(Sequence.flag());
        kd_lib::message(Sequence.text());
        kd_lib::errorMessage(Sequence.text());
        kd_lib::display(Sequence.text());
        kd_lib::operator<<(std::cout, Sequence.text());
        kd_lib::more();
        std::cin.rdbuf(input);
        std::cin.clear();
    }

    void query()
    {
        switch (Sequence.below(7)) {
        case 0:
            Query.setFields(Sequence.text());
            break;
        case 1:
            Query.setTables(Sequence.text());
            break;
        case 2:
            Query.setOrder(Sequence.text());
            break;
        case 3:
            Query.setFilter(Sequence.text(), Sequence.text());
            break;
        case 4: {
            std::string condition = Sequence.text();
            std::string conjunction = Sequence.text();
            Query.setSubFilter(condition, conjunction);
            break;
        }
        case 5:
            Query.setInClause({Sequence.text(), Sequence.text()});
            Query.setInClause({});
            Query.distinct = Sequence.flag();
            Query.join = Sequence.text();
            Query.limit = Sequence.text();
            break;
        default:
            if (Sequence.flag()) {
                Query.resetQuery();
            }
            break;
        }
        Query.selectQuery();
        Query.countQuery();
    }

    void names()
    {
        if (Sequence.flag()) {
            Fields.add(std::string(Sequence.flag() ? "order" : "Select"));
        }
        Words.checkReserved(Fields.List);
        for (const kd_lib::TableField& field : Fields) {
            kd_fuzz::require(kd_lib::stringToLower(field.Name) == field.Name, "names come back in lower case");
        }
        if (Sequence.flag()) {
            Words.createList();
        }
    }

    kd_fuzz::Calls Sequence;
    kd_lib::TableFields Fields;
    kd_lib::TableFields Other;
    kd_lib::SqlQuery Query;
    kd_lib::SqlKeyword Words;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const kd_fuzz::BoundedOutput output(outputLimit);
    Parts(kd_fuzz::Calls(std::string_view(reinterpret_cast<const char*>(data), size))).run();
    return 0;
}
