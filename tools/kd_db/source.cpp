#include "source.h"

#include "text_source.h"
#include "xbase_source.h"

#include <kd_lib/path.h>
#include <kd_lib/text.h>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kd_tool {

Source::~Source() = default;

void Source::fail(const std::string& reason) const
{
    throw Failure(Argument, reason);
}

void Source::failRecord(const std::string& reason) const
{
    fail("record " + std::to_string(Number) + ' ' + reason);
}

void Source::openFile()
{
    if (FileParts(Argument).Name.empty()) {
        fail("No file name provided for table file");
    }
    requireReadableFile(Argument);
    if (!table().openPath(Argument)) {
        fail("cannot be opened");
    }
}

FileParts::FileParts(const std::string& file)
{
    const std::size_t slash = file.rfind('/');
    const std::size_t start = slash == std::string::npos ? 0 : slash + 1;
    Name = file.substr(start);
    const std::size_t dot = Name.rfind('.');
    if (dot != std::string::npos) {
        Extension = Name.substr(dot + 1);
        Name.resize(dot);
    }
}

bool FileParts::hasExtension(const std::string& lower) const
{
    return kd_lib::stringToLower(Extension) == lower;
}

void requireReadableFile(const std::string& file)
{
    std::string path = file;
    kd_lib::checkHomePath(path);
    struct stat about {};
    if (::stat(path.c_str(), &about) != 0) {
        throw Failure(file, "File does not exist");
    }
    if (!S_ISREG(about.st_mode)) {
        throw Failure(file, S_ISDIR(about.st_mode) ? "is a directory" : "is no regular file");
    }
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        throw Failure(file, errno == EACCES ? "No permission to read file" : std::strerror(errno));
    }
    ::close(descriptor);
}

std::unique_ptr<XBaseSource> openXBase(const std::string& file)
{
    if (!FileParts(file).hasExtension("dbf")) {
        throw UsageError(file + ": the file must end in .dbf");
    }
    return std::make_unique<XBaseSource>(file);
}

std::unique_ptr<Source> openSource(const SourceOptions& options)
{
    const FileParts parts(options.File);
    const bool positional = parts.hasExtension("txt");
    if (positional == options.Columns.empty()) {
        throw UsageError(options.File +
                         (positional ? ": a .txt file needs --columns" : ": --columns is for .txt files"));
    }
    const bool commas = parts.hasExtension("csv");
    const bool tabs = parts.hasExtension("tab") || parts.hasExtension("tsv");
    if (options.Unquote && !commas && !tabs) {
        throw UsageError(options.File + ": --unquote is for .csv, .tab and .tsv files");
    }
    if (positional) {
        return std::make_unique<PositionalSource>(options.File, options.Columns);
    }
    if (commas || tabs) {
        return std::make_unique<DelimitedSource>(options.File, tabs, options.Unquote);
    }
    if (!parts.hasExtension("dbf")) {
        throw UsageError(options.File + ": the file must end in .dbf, .csv, .tab, .tsv or .txt");
    }
    return openXBase(options.File);
}

}  // namespace kd_tool
