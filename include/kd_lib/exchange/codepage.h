/// \file
/// Bytes of a code page as UTF-8.
#pragma once

#include <kd_lib/detail/words.h>
#include <kd_lib/export.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace kd_lib::exchange {

/// How a byte that the code page lacks is decoded. `Replace`: as U+FFFD. `Strict`: not at all; the cell is unreadable.
/// `Escape`: as the four characters \xNN.
enum class EncodingErrors : std::uint8_t { Replace, Strict, Escape };

/// True if all bytes are below 128.
inline bool isAscii(std::string_view bytes)
{
    using kd_lib::detail::Word;
    using kd_lib::detail::wordSize;
    constexpr Word highBits = 0x8080808080808080U;
    const char* at = bytes.data();
    std::size_t left = bytes.size();
    for (; left >= wordSize; at += wordSize, left -= wordSize) {
        if ((kd_lib::detail::valueAt<Word>(at) & highBits) != 0) {
            return false;
        }
    }
    for (; left > 0; ++at, --left) {
        if ((static_cast<unsigned char>(*at) & 0x80U) != 0) {
            return false;
        }
    }
    return true;
}

/// One code page, for decoding. A page with one byte per character uses a table of 256 entries. The others use the
/// system's converter and keep its handle open. Threads: one thread per object.
///
///     CodePage page("cp852");
///     std::string scratch;
///     const CodePage::Decoded text = page.decode(bytes, EncodingErrors::Replace, scratch);
///     use(text.Text);
class KD_LIB_EXPORT CodePage {
public:
    /// Finds a page by its name, without regard to case: any name that iconv knows; a number with or without a prefix
    /// (`852`, `cp852`, `ANSI 1252`, `windows-1252`, `65001`); ISO 8859 in any spelling (`ISO 88591`, `885915`);
    /// `LDID/87`, the page of a .dbf language byte; `kamenicky`, `mazovia`, `macgreek`, `shiftjis`. Throws an
    /// `OptionError` for any other name.
    explicit CodePage(std::string_view name);
    ~CodePage();
    CodePage(CodePage&&) noexcept;
    CodePage& operator=(CodePage&&) noexcept;

    /// Whether the constructor accepts this name.
    static bool knows(std::string_view name);

    /// The page of a .dbf file's language byte, as a name that the constructor accepts; empty if the byte names none.
    static std::string nameOfLanguageByte(std::uint8_t byte);

    /// The page's name for messages: "CP852", "UTF-8".
    const std::string& name() const { return Name; }

    bool isUtf8() const { return Utf8; }

    /// Every character is one byte.
    bool isSingleByte() const { return SingleByte; }

    /// Bytes below 128 are the ASCII characters, unless they are the second byte of a character.
    bool isAsciiBased() const { return AsciiBased; }

    /// The result of `decode`.
    struct Decoded {
        enum class Outcome : std::uint8_t {
            Known,     ///< the page has all bytes
            Replaced,  ///< bytes that it lacks became U+FFFD
            Escaped,   ///< bytes that it lacks became \xNN
            Failed     ///< it lacks bytes and the text is unusable (`Strict`)
        };

        std::string_view Text;  ///< UTF-8; empty if `Failed`
        Outcome Result = Outcome::Known;
        std::size_t FirstUnknown = 0;  ///< index of the first byte that the page lacks, unless `Known`
    };

    /// Decodes. The text is `bytes` itself if that is the same in UTF-8. Otherwise it is in `scratch`, which only
    /// grows, to at most four times the size of `bytes` and a few bytes more; further only if bytes of the page become
    /// several characters. Do not use the contents of `scratch` directly. One U+FFFD replaces each unknown character: a
    /// byte of a page with one byte per character; a double-byte character, even if the end cuts it; the longest
    /// beginning of a character in UTF-8.
    Decoded decode(std::string_view bytes, EncodingErrors onError, std::string& scratch) const
    {
        if (AsciiBased && isAscii(bytes)) {
            return {bytes};
        }
        return decodeOther(bytes, onError, scratch);
    }

    /// The reason for a message: "byte 81 is not in code page CP1252". `decoded` is what `decode` returned for `bytes`.
    std::string reason(std::string_view bytes, const Decoded& decoded) const;

private:
    class KD_LIB_LOCAL Decoder;

    // exported, because `decode` is inline
    Decoded decodeOther(std::string_view bytes, EncodingErrors onError, std::string& scratch) const;

    std::string Name;
    bool Utf8 = false;
    bool SingleByte = false;
    bool AsciiBased = false;
    std::unique_ptr<Decoder> TheDecoder;
};

}  // namespace kd_lib::exchange
