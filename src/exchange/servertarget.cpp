#include <kd_lib/exchange/servertarget.h>

#include <utility>

namespace kd_lib::exchange {

ServerLoad::ServerLoad(Engine engine, const std::string& file, const std::vector<Column>& columns,
                       const TableOptions& table)
    : Layout(dialectOf(engine), file, columns, table), Loaded(Layout.table()), SourceFile(file), Source(columns)
{
}

ServerLoad::~ServerLoad() = default;

void ServerLoad::fit(Record& record)
{
    if (Existing) {
        Existing->fit(record, Layout.dialect().Is);
    } else {
        Layout.fit(record);
    }
}

std::vector<std::string> ServerLoad::columnNames() const
{
    std::vector<std::string> names;
    for (std::size_t i = 0; i < Layout.columns().size(); ++i) {
        names.push_back(Existing ? Existing->all()[i].Name : Layout.columns()[i].Name);
    }
    return names;
}

void ServerLoad::refuse(const RowChunks::Chunk& chunk, const RowRefusal& refusal, const std::string& database) const
{
    Place place{SourceFile, 0, {}, {}};
    if (refusal.Row && *refusal.Row < chunk.Records.size()) {
        place.Record = chunk.Records[*refusal.Row];
    }
    const std::vector<std::string> names = columnNames();
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (names[i] == refusal.Column) {
            place.Column = Source[i].Name;
        }
    }
    throw Error(place, database + ": " + refusal.Reason);
}

ServerTarget::ServerTarget(Maker make) : Make(std::move(make)) {}

ServerTarget::~ServerTarget()
{
    ServerTarget::abandon();
}

void ServerTarget::begin(const std::string& file, const std::vector<Column>& columns)
{
    Load = Make(file, columns);
    Destination = "table " + Load->layout().table();
    Notes = Load->layout().notes();
    Load->begin();
}

void ServerTarget::fit(Record& record)
{
    Load->fit(record);
}

void ServerTarget::write(const Record& record)
{
    Load->write(record);
}

void ServerTarget::finish()
{
    Load->finish();
    Notes = Load->layout().notes();
    Load.reset();
}

void ServerTarget::abandon() noexcept
{
    if (Load && !Load->abandon()) {
        Notes.push_back({"a table " + Load->loaded() + " may be left in the database", false});
    }
    Load.reset();
}

}  // namespace kd_lib::exchange
