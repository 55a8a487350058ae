#include "listtarget.h"

#include "resultoutput.h"
#include "tableview.h"
#include "terminal.h"

#include <kd_lib/exchange/csvtarget.h>
#include <kd_lib/exchange/jsonlinestarget.h>
#include <kd_lib/exchange/outputfile.h>

#include <unistd.h>

namespace kd_tool {

namespace {

std::unique_ptr<exchange::Target> formatted(const Options& options, exchange::OutputBlock& output, TableStyle style)
{
    switch (options.Format) {
    case ListFormat::Csv:
        return std::make_unique<exchange::CsvTarget>(output, exchange::NameCase::Keep);
    case ListFormat::JsonLines:
        return std::make_unique<exchange::JsonLinesTarget>(output, exchange::NameCase::Keep);
    case ListFormat::Table:
        break;
    }
    return std::make_unique<TableView>(output, style);
}

TableStyle screenStyle(const Options& options)
{
    TableStyle style;
    if (isTerminal(STDOUT_FILENO)) {
        style.Terminal = STDOUT_FILENO;
    }
    style.Colored = useColor(options.Color, STDOUT_FILENO);
    style.Mark = localeIsUtf8() ? "\xE2\x80\xA6" : ">";
    return style;
}

/// A target in one of the formats, with its output.
template <class Output>
class ListTarget : public exchange::Target {
public:
    template <class... Arguments>
    ListTarget(const Options& options, TableStyle style, Arguments&&... arguments)
        : Out(std::forward<Arguments>(arguments)...), Inner(formatted(options, Out, style))
    {
    }

    void begin(const std::string& file, const std::vector<exchange::Column>& columns) override
    {
        Inner->begin(file, columns);
    }
    void fit(exchange::Record& record) override { Inner->fit(record); }
    void write(const exchange::Record& record) override { Inner->write(record); }
    void finish() override
    {
        Inner->finish();
        Notes = Inner->notes();
        close(Out);
    }
    void abandon() noexcept override
    {
        Inner->abandon();
        Out.abandon();
    }

private:
    static void close(ResultOutput& output) { output.finish(); }
    static void close(exchange::OutputFile& output) { output.commit(); }

    Output Out;
    std::unique_ptr<exchange::Target> Inner;
};

}  // namespace

std::unique_ptr<exchange::Target> listTarget(const Options& options, Console& console)
{
    if (options.Output != "-") {
        return std::make_unique<ListTarget<exchange::OutputFile>>(options, TableStyle(), options.Output);
    }
    using Paging = ResultOutput::Paging;
    using Controls = ResultOutput::Controls;
    const bool isTable = options.Format == ListFormat::Table;  // the cells contain no control bytes any more
    return std::make_unique<ListTarget<ResultOutput>>(options, screenStyle(options), console,
                                                      options.Pager ? Paging::LongResults : Paging::Never,
                                                      isTable ? Controls::Pass : Controls::Escape);
}

}  // namespace kd_tool
