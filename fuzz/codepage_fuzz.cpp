// Bytes decoded by a page of every kind, and names of pages.

#include "exchange/detail/utf8.h"
#include "support/checked_source.h"
#include "support/options.h"

#include <kd_lib/exchange/codepage.h>
#include <kd_lib/exchange/error.h>

#include <memory>
#include <vector>

using kd_lib::exchange::CodePage;
using kd_lib::exchange::EncodingErrors;
using Outcome = CodePage::Decoded::Outcome;

namespace {

const std::vector<CodePage>& pages()
{
    static const std::vector<CodePage> all = [] {
        std::vector<CodePage> made;
        for (const char* name : {"utf-8",       "cp437", "cp1252",    "cp1255",     "kamenicky", "mazovia",  "macgreek",
                                 "cp932",       "gbk",   "cp949",     "big5",       "gb18030",   "utf-16le", "utf-16",
                                 "iso-2022-jp", "utf-7", "ebcdic-us", "big5-hkscs", "euc-jp",    "tcvn"}) {
            made.emplace_back(name);
        }
        return made;
    }();
    return all;
}

void require(bool condition, const char* what)
{
    if (!condition) {
        kd_fuzz::finding(what);
    }
}

void check(const CodePage& page, std::string_view bytes)
{
    // A copy of the exact size, so that a read past the end is found.
    const std::unique_ptr<char[]> exact(new char[bytes.size()]);
    bytes.copy(exact.get(), bytes.size());
    bytes = {exact.get(), bytes.size()};
    std::string scratch;
    const CodePage::Decoded strict = page.decode(bytes, EncodingErrors::Strict, scratch);
    const bool known = strict.Result == Outcome::Known;
    for (const EncodingErrors onError : {EncodingErrors::Replace, EncodingErrors::Escape}) {
        const CodePage::Decoded text = page.decode(bytes, onError, scratch);
        require(kd_lib::exchange::detail::validUtf8Length(text.Text) == text.Text.size(), "a text that is not UTF-8");
        require((text.Result == Outcome::Known) == known, "strict or not, what is known differs");
        require(known || (text.FirstUnknown == strict.FirstUnknown && text.FirstUnknown < bytes.size()),
                "the first unknown byte differs");
        require(known || !page.reason(bytes, text).empty(), "no reason");
    }
}

void checkName(std::string_view name)
{
    try {
        const CodePage page(name);
        require(!page.name().empty(), "a page without a name");
    } catch (const kd_lib::exchange::OptionError&) {
        // The name of no page is an outcome.
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    kd_fuzz::Options choice(data, size);
    const unsigned int which = choice.byte();
    check(pages()[which % pages().size()], choice.content());
    if (which >= 250) {
        checkName(choice.content().substr(0, 40));
    }
    return 0;
}
