#include "../../formats/memoheader.h"
#include "../../formats/numbers.h"
#include "filewindow.h"
#include "inputfile.h"
#include "inspection.h"
#include "memofile.h"
#include "wording.h"

#include <kd_lib/exchange/error.h>

#include <algorithm>
#include <string>

namespace kd_lib::exchange::detail {

namespace {

using namespace formats;

/// Explains a memo file from its first block to its last. Only the table knows which blocks are in use, so everything
/// that looks like a value is explained as one.
class MemoInspection {
public:
    MemoInspection(Inspection& to, const MemoFile& memo)
        : To(to), File(to.file()), Window(File), Kind(memo.kind()), BlockSize(memo.blockSize()),
          HeaderSize(memo.headerSize()), Size(File.size().value_or(0))
    {
    }

    void run()
    {
        const std::string_view header = Window.view(0, HeaderSize);
        if (Size < HeaderSize) {
            To.damaged(0, header, "header", "the file ends within it");
            return;
        }
        if (Kind == MemoKind::Fpt) {
            headerOfFox(header);
        } else {
            headerOfDBase(header);
        }
        if (BlockSize == 0) {
            return;
        }
        // The header fills its first blocks.
        std::uint64_t at = roundedUp(HeaderSize);
        unused(HeaderSize, std::min(at, Size) - HeaderSize, "rest of the header");
        while (at < Size) {
            at = Kind == MemoKind::Dbt3 ? textAt(at) : Kind == MemoKind::Dbt4 ? blockOf4(at) : blockOfFox(at);
        }
    }

private:
    std::uint64_t roundedUp(std::uint64_t at) const { return (at + BlockSize - 1) / BlockSize * BlockSize; }

    std::string numberOf(std::uint64_t at) const { return "block " + std::to_string(at / BlockSize); }

    void nextBlock(std::string_view bytes, std::uint32_t next)
    {
        const std::uint64_t blocks = BlockSize == 0 ? 0 : (Size + BlockSize - 1) / BlockSize;
        const std::string meaning = std::to_string(next);
        if (BlockSize != 0 && next > blocks) {
            To.damaged(0, bytes, "next free block", meaning + ", but the file has " + count(blocks, "block"));
        } else {
            To.report(0, bytes, "next free block", meaning);
        }
    }

    void headerOfDBase(std::string_view header)
    {
        nextBlock(header.substr(dbt4::nextBlockAt, 4), little32(header.data() + dbt4::nextBlockAt));
        if (Kind == MemoKind::Dbt3) {
            To.report(4, header.substr(4, dbt3::versionAt - 4), "reserved", "");
            To.report(dbt3::versionAt, header.substr(dbt3::versionAt, 1), "version",
                      hex(byteAt(header.data(), dbt3::versionAt)));
            To.reportMany(dbt3::versionAt + 1, HeaderSize - dbt3::versionAt - 1,
                          header.substr(dbt3::versionAt + 1, bytesShown), "rest of the header", "");
            return;
        }
        To.report(4, header.substr(4, dbt4::blockSizeAt - 4), "reserved", "");
        const std::uint32_t stated = little16(header.data() + dbt4::blockSizeAt);
        To.report(dbt4::blockSizeAt, header.substr(dbt4::blockSizeAt, 2), "block size",
                  stated != 0 ? std::to_string(stated) : "0, which means 512");
        To.report(dbt4::blockSizeAt + 2, header.substr(dbt4::blockSizeAt + 2), "reserved", "");
    }

    void headerOfFox(std::string_view header)
    {
        nextBlock(header.substr(fpt::nextBlockAt, 4), big32(header.data() + fpt::nextBlockAt));
        To.report(4, header.substr(4, 2), "reserved", "");
        const std::string_view size = header.substr(fpt::blockSizeAt, 2);
        if (BlockSize == 0) {
            To.damaged(fpt::blockSizeAt, size, "block size", "0: no block can be found");
        } else {
            To.report(fpt::blockSizeAt, size, "block size", std::to_string(BlockSize));
        }
        const bool flex = HeaderSize > fpt::headerSize;
        To.reportMany(fpt::blockSizeAt + 2, fpt::headerSize - fpt::blockSizeAt - 2,
                      header.substr(fpt::blockSizeAt + 2, bytesShown), "rest of the header", "");
        if (flex) {
            To.reportMany(fpt::flexMarkAt, HeaderSize - fpt::flexMarkAt, header.substr(fpt::flexMarkAt, bytesShown),
                          "rest of the header", fpt::flexMark);
        }
    }

    /// Unused bytes up to the next block.
    void unused(std::uint64_t at, std::uint64_t length, const char* what)
    {
        if (length > 0) {
            To.reportMany(at, length,
                          Window.view(at, static_cast<std::size_t>(std::min<std::uint64_t>(length, bytesShown))), what,
                          "");
        }
    }

    void value(std::uint64_t at, std::uint64_t length, const std::string& what)
    {
        const std::string_view bytes =
            Window.view(at, static_cast<std::size_t>(std::min<std::uint64_t>(length, bytesShown)));
        To.reportMany(at, length, bytes, what,
                      count(length, "byte") + ": \"" + printable(bytes) + (bytes.size() < length ? "..." : "\""));
    }

    /// A dBase III text up to its end mark. Returns the place of the next block.
    std::uint64_t textAt(std::uint64_t at)
    {
        if (Window.view(at, 1).front() == '\0') {
            return freeBlock(at);
        }
        const std::uint64_t end = markFrom(at);
        if (end == at) {
            To.report(at, {}, numberOf(at), "the empty text");
        } else {
            value(at, end - at, numberOf(at));
        }
        const std::string_view mark = Window.view(end, 2);
        if (mark.empty()) {
            To.report(end, mark, "  end mark", "missing: the text ends with the file");
            return end;
        }
        const std::size_t marks = mark.size() == 2 && mark[1] == dbt3::textEnd ? 2 : 1;
        To.report(end, mark.substr(0, marks), "  end mark", "");
        return skip(at, end + marks);
    }

    /// The place of the first end mark, or the end of the file.
    std::uint64_t markFrom(std::uint64_t at)
    {
        while (at < Size) {
            const std::string_view bytes = Window.viewSome(at);
            const std::size_t mark = bytes.find(dbt3::textEnd);
            at += std::min(mark, bytes.size());
            if (mark != std::string_view::npos || bytes.empty()) {
                break;
            }
        }
        return at;
    }

    std::uint64_t blockOf4(std::uint64_t at)
    {
        const std::string_view header = Window.view(at, dbt4::blockHeaderSize);
        if (header.size() < dbt4::blockHeaderSize || little32(header.data()) != dbt4::blockMark) {
            return freeBlock(at);
        }
        const std::uint32_t length = little32(header.data() + dbt4::lengthAt);
        if (length < dbt4::blockHeaderSize) {
            return damagedLength(at, header, length);
        }
        return block(at, header, "text", length - dbt4::blockHeaderSize);
    }

    std::uint64_t blockOfFox(std::uint64_t at)
    {
        const std::string_view header = Window.view(at, fpt::blockHeaderSize);
        if (header.size() < fpt::blockHeaderSize || big64(header.data()) == 0) {
            return freeBlock(at);
        }
        const std::uint32_t type = big32(header.data() + fpt::typeAt);
        if (type > fpt::objectType) {
            To.report(at, header, numberOf(at), "of an unknown type, or not in use");
            return skip(at, at + fpt::blockHeaderSize);
        }
        constexpr const char* types[] = {"picture", "text", "object"};
        return block(at, header, types[type], big32(header.data() + fpt::lengthAt));
    }

    std::uint64_t block(std::uint64_t at, std::string_view header, const char* type, std::uint64_t length)
    {
        const std::uint64_t first = at + header.size();
        if (length > Size - first) {
            return damagedLength(at, header, length);
        }
        To.report(at, header, numberOf(at), std::string(type) + " of " + count(length, "byte"));
        if (length > 0) {
            value(first, length, "  value");
        }
        return skip(at, first + length);
    }

    std::uint64_t damagedLength(std::uint64_t at, std::string_view header, std::uint64_t length)
    {
        To.damaged(at, header, numberOf(at),
                   "a length of " + std::to_string(length) + ", but the file has " +
                       count(Size - at - header.size(), "byte") + " from here on");
        return skip(at, at + header.size());
    }

    std::uint64_t freeBlock(std::uint64_t at)
    {
        const std::uint64_t next = std::min<std::uint64_t>(at + BlockSize, Size);
        unused(at, next - at, "not in use");
        return next;
    }

    /// Passes over the bytes from the end of a value to the next block.
    std::uint64_t skip(std::uint64_t at, std::uint64_t end)
    {
        const std::uint64_t next = std::min(std::max(roundedUp(end), at + BlockSize), Size);
        unused(end, next - std::min(end, next), "  unused");
        return next;
    }

    Inspection& To;
    InputFile File;
    FileWindow Window;
    MemoKind Kind;
    std::uint32_t BlockSize;
    std::uint64_t HeaderSize;
    std::uint64_t Size;
};

}  // namespace

void inspectMemoFile(Inspection& to)
{
    const MemoFile memo(to.file(), MemoKind::None);
    MemoInspection(to, memo).run();
}

}  // namespace kd_lib::exchange::detail
