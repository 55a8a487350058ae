#include "memofile.h"

#include "../../formats/numbers.h"
#include "companionfile.h"

#include <kd_lib/exchange/error.h>

#include <algorithm>
#include <filesystem>

namespace kd_lib::exchange::detail {

namespace {

using namespace formats;

constexpr const char* outsideFile = "the memo pointer is outside the memo file";
constexpr const char* intoHeader = "the memo pointer is within the memo file's header";
constexpr const char* notInUse = "the memo block is not in use";
constexpr const char* unknownBlock = "the memo block is of an unknown type";
constexpr const char* tooShort = "the memo's length is less than that of its header";
constexpr const char* beyondEnd = "the memo's length goes beyond the end of the memo file";
constexpr const char* noBlockSize = "the memo file's header gives a block size of 0";
constexpr const char* ofSixDriver = "memo files of the SIx driver cannot be read";
constexpr const char* noHeader = "the memo file ends within its header";

std::string lowerExtension(const std::string& path)
{
    std::string extension = std::filesystem::path(path).extension().string();
    std::ranges::transform(extension, extension.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return extension;
}

MemoKind kindOf(const DbfLayout& layout)
{
    if (layout.Known != nullptr && layout.Known->Memo != MemoKind::None) {
        return layout.Known->Memo;
    }
    return layout.FoxFlags ? MemoKind::Fpt : MemoKind::None;
}

/// Whether a dBase III text ends at this mark. A single end mark may be a character of the text: it is the end if
/// another one or the end of the file follows, or if the rest of its block is unused.
bool endsText(std::string_view fromMark, std::uint64_t markAt, std::uint64_t fileSize)
{
    if (fromMark.size() > 1 && fromMark[1] == dbt3::textEnd) {
        return true;
    }
    const std::uint64_t blockEnd = std::min((markAt / dbt3::blockSize + 1) * dbt3::blockSize, fileSize);
    const std::string_view rest = fromMark.substr(1, static_cast<std::size_t>(blockEnd - markAt) - 1);
    const auto unused = [rest](char filler) { return rest.find_first_not_of(filler) == std::string_view::npos; };
    return unused('\0') || unused(' ');
}

}  // namespace

MemoFile::MemoFile(const std::string& path, MemoKind kind) : File(path), Window(File), Kind(kind)
{
    if (!File.seekable()) {
        // Like a pipe, an empty file has no known size; but it is a damaged memo file, without a header.
        if (!std::filesystem::is_regular_file(path)) {
            throw Error(path, "a memo file must be a regular file");
        }
    }
    if (Kind == MemoKind::None) {
        Kind = lowerExtension(path) == ".fpt" ? MemoKind::Fpt : kindOfContents();
    }
    readHeader();
}

/// The header of a .dbt file, or its first block, shows whether it is dBase IV's.
MemoKind MemoFile::kindOfContents()
{
    const std::string_view header = Window.view(0, dbt4::headerSize);
    if (header.size() < dbt4::headerSize) {
        return MemoKind::Dbt3;
    }
    const std::uint32_t stated = little16(header.data() + dbt4::blockSizeAt);
    const std::uint32_t size = stated != 0 ? stated : dbt4::defaultBlockSize;
    const std::string_view first = Window.view(size, dbt4::blockHeaderSize);
    const bool marked = first.size() == dbt4::blockHeaderSize && little32(first.data()) == dbt4::blockMark;
    return marked ? MemoKind::Dbt4 : MemoKind::Dbt3;
}

void MemoFile::readHeader()
{
    if (Kind == MemoKind::Dbt3) {
        BlockSize = dbt3::blockSize;
        HeaderSize = dbt3::headerSize;
        return;
    }
    HeaderSize = Kind == MemoKind::Fpt ? fpt::headerSize : dbt4::headerSize;
    const std::string_view header = Window.view(0, fpt::flexHeaderSize);
    if (header.size() < dbt4::headerSize) {
        return;
    }
    if (Kind == MemoKind::Dbt4) {
        const std::uint32_t stated = little16(header.data() + dbt4::blockSizeAt);
        BlockSize = stated != 0 ? stated : dbt4::defaultBlockSize;
        return;
    }
    BlockSize = big16(header.data() + fpt::blockSizeAt);
    if (header.size() > fpt::flexMarkAt && header.substr(fpt::flexMarkAt).starts_with(fpt::flexMark)) {
        HeaderSize = fpt::flexHeaderSize;
    }
}

const char* MemoFile::read(std::uint64_t block, std::string& value)
{
    value.clear();
    if (Kind == MemoKind::Smt) {
        return ofSixDriver;
    }
    const std::uint64_t size = File.size().value_or(0);
    if (size < dbt4::headerSize) {
        return noHeader;
    }
    if (BlockSize == 0) {
        return noBlockSize;
    }
    // A number has at most ten digits and a block size 16 bits, so the product fits.
    const std::uint64_t at = block * BlockSize;
    if (at < HeaderSize) {
        return intoHeader;
    }
    if (at >= size) {
        return outsideFile;
    }
    switch (Kind) {
    case MemoKind::Dbt3:
        return readToMark(at, value);
    case MemoKind::Dbt4:
        return readBlockOf4(at, value);
    default:
        return readBlockOfFox(at, value);
    }
}

const char* MemoFile::readToMark(std::uint64_t at, std::string& value)
{
    while (true) {
        const std::string_view bytes = Window.viewSome(at);
        const std::size_t mark = bytes.find(dbt3::textEnd);
        value.append(bytes.substr(0, mark));
        if (bytes.empty()) {
            return nullptr;
        }
        at += std::min(mark, bytes.size());
        if (mark == std::string_view::npos) {
            continue;
        }
        if (endsText(Window.view(at, dbt3::blockSize + 1), at, *File.size())) {
            return nullptr;
        }
        value += dbt3::textEnd;
        ++at;
    }
}

const char* MemoFile::readBlockOf4(std::uint64_t at, std::string& value)
{
    const std::string_view header = Window.view(at, dbt4::blockHeaderSize);
    if (header.size() < dbt4::blockHeaderSize) {
        return outsideFile;
    }
    if (little32(header.data()) != dbt4::blockMark) {
        return notInUse;
    }
    const std::uint32_t length = little32(header.data() + dbt4::lengthAt);
    if (length < dbt4::blockHeaderSize) {
        return tooShort;
    }
    return readBytes(at + dbt4::blockHeaderSize, length - dbt4::blockHeaderSize, value);
}

const char* MemoFile::readBlockOfFox(std::uint64_t at, std::string& value)
{
    const std::string_view header = Window.view(at, fpt::blockHeaderSize);
    if (header.size() < fpt::blockHeaderSize) {
        return outsideFile;
    }
    if (big32(header.data() + fpt::typeAt) > fpt::objectType) {
        return unknownBlock;
    }
    return readBytes(at + fpt::blockHeaderSize, big32(header.data() + fpt::lengthAt), value);
}

const char* MemoFile::readBytes(std::uint64_t at, std::uint64_t length, std::string& value)
{
    if (length > *File.size() - std::min(at, *File.size())) {
        return beyondEnd;
    }
    while (length > 0) {
        const std::string_view bytes =
            Window.view(at, static_cast<std::size_t>(std::min<std::uint64_t>(length, FileWindow::capacity)));
        if (bytes.empty()) {
            return beyondEnd;  // the file has become shorter
        }
        value.append(bytes);
        at += bytes.size();
        length -= bytes.size();
    }
    return nullptr;
}

std::optional<std::string> findMemoFile(const std::string& table, const DbfLayout& layout)
{
    switch (kindOf(layout)) {
    case MemoKind::Fpt:
        return findCompanion(table, {"fpt"});
    case MemoKind::Smt:
        return findCompanion(table, {"smt"});
    case MemoKind::None:
        return findCompanion(table, {"dbt", "fpt"});
    default:
        return findCompanion(table, {"dbt"});
    }
}

MemoKind memoKindOf(const DbfLayout& layout, const std::string& path)
{
    const std::string extension = lowerExtension(path);
    const MemoKind kind = kindOf(layout);
    if (extension == ".fpt") {
        return MemoKind::Fpt;
    }
    return extension == ".dbt" && kind == MemoKind::Fpt ? MemoKind::None : kind;
}

std::string likelyMemoFile(const std::string& table, const DbfLayout& layout)
{
    const MemoKind kind = kindOf(layout);
    return std::filesystem::path(table)
        .replace_extension(kind == MemoKind::Fpt   ? "fpt"
                           : kind == MemoKind::Smt ? "smt"
                                                   : "dbt")
        .string();
}

}  // namespace kd_lib::exchange::detail
