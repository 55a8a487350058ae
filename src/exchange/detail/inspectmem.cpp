#include "../../formats/memfile.h"
#include "../../formats/numbers.h"
#include "filewindow.h"
#include "inputfile.h"
#include "inspection.h"
#include "memreader.h"
#include "memvalues.h"
#include "wording.h"

#include <kd_lib/exchange/codepage.h>

#include <algorithm>
#include <string>

namespace kd_lib::exchange::detail {

namespace {

namespace memfile = formats::memfile;

/// The variables of a .mem file, one after the other.
class MemInspection {
public:
    explicit MemInspection(Inspection& to)
        : To(to), File(to.file()), Raw(to.file()), Window(Raw), Reader(File), Size(Raw.size().value_or(0)),
          Page(to.options().Encoding.empty() ? "CP1252" : to.options().Encoding)
    {
    }

    void run()
    {
        using Found = MemReader::Found;
        Found found = Reader.next();
        for (; found == Found::Variable; found = Reader.next()) {
            endOfValue(Reader.offset());
            ++Number;
            variable();
        }
        const std::uint64_t at = Reader.offset();
        endOfValue(at);
        if (found == Found::End) {
            endOfFile(at);
        } else if (found == Found::Cut) {
            To.damaged(at, Window.view(at, bytesShown), "variable " + std::to_string(Number + 1),
                       "the file ends within it");
        } else {
            const std::uint64_t typeAt = at + memfile::typeAt;
            To.damaged(typeAt, Window.view(typeAt, 1), "variable " + std::to_string(Number + 1),
                       "an unknown type; nothing can be explained from byte " + std::to_string(at) + " on");
        }
    }

private:
    void part(std::uint64_t at, std::uint64_t length, const std::string& what, const std::string& meaning)
    {
        const std::size_t shown = static_cast<std::size_t>(std::min<std::uint64_t>(length, bytesShown));
        To.reportMany(at, length, Window.view(at, shown), what, meaning);
        Explained = at + length;
    }

    void variable()
    {
        const std::uint64_t at = Reader.offset();
        const bool longName = Reader.offsetOf(Reader.name()) >= at + memfile::entrySize;
        part(at, memfile::nameWidth, "variable " + std::to_string(Number), longName ? "" : name());
        part(at + memfile::typeAt, 1, "  type",
             memTypeName(Reader.type()) + std::string(", form of ") + memFormName(Reader.form()));
        const std::uint64_t header = memfile::entrySize - memfile::typeAt - 1;
        part(at + memfile::typeAt + 1, header, "  lengths", lengthsMeaning());
        const std::uint64_t valueAt = Reader.offsetOf(Reader.value());
        if (longName) {
            part(at + memfile::entrySize, valueAt - at - memfile::entrySize, "  name", name());
        }
        value(valueAt);
    }

    std::string lengthsMeaning() const
    {
        const std::string_view lengths = Reader.lengths();
        const std::string first = std::to_string(formats::byteAt(lengths.data(), 0));
        const std::string second = std::to_string(formats::byteAt(lengths.data(), 1));
        switch (Reader.type()) {
        case 'C':
            return count(Reader.value().size(), "byte") + " of text";
        case 'N':
            return "shown with " + first + " characters, " + second + " decimals";
        default:
            return "";
        }
    }

    std::string name() { return std::string(Page.decode(Reader.name(), EncodingErrors::Replace, Scratch).Text); }

    void value(std::uint64_t at)
    {
        const std::string_view bytes = Reader.value();
        if (Reader.type() == 'C') {
            const CodePage::Decoded text = Page.decode(bytes, EncodingErrors::Replace, Scratch);
            part(at, bytes.size(), "  value", quotedBeginning(text.Text));
            return;
        }
        const MemText text = textOfVariable(Reader, Scratch);
        if (text.Problem != nullptr) {
            To.damaged(at, bytes, "  value", text.Problem);
            Explained = at + bytes.size();
        } else {
            part(at, bytes.size(), "  value", text.Text ? std::string(*text.Text) : "NULL");
        }
    }

    /// The zero byte after a text, or the mark after digits.
    void endOfValue(std::uint64_t next)
    {
        if (next > Explained) {
            part(Explained, next - Explained, "  end of the value", "");
        }
    }

    void endOfFile(std::uint64_t at)
    {
        if (!Reader.hasEndMark()) {
            if (Number == 0) {
                To.damaged(at, {}, "end of the file", "there are neither variables nor an end mark");
            }
            return;
        }
        part(at, 1, "end of the variables", "");
        if (Size > at + 1) {
            part(at + 1, Size - at - 1, "rest of the file", "not read");
        }
    }

    Inspection& To;
    InputFile File;
    InputFile Raw;
    FileWindow Window;
    MemReader Reader;
    std::uint64_t Size;
    const CodePage Page;
    std::string Scratch;
    std::uint64_t Number = 0;
    std::uint64_t Explained = 0;
};

}  // namespace

void inspectMem(Inspection& to)
{
    MemInspection(to).run();
}

}  // namespace kd_lib::exchange::detail
