#include <kd_lib/exchange/servertarget.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using namespace kd_lib::exchange;

/// A load that is created in a table of another name, and may be unable to remove it.
class StubbornLoad : public ServerLoad {
public:
    StubbornLoad(const std::string& file, const std::vector<Column>& columns, bool removable)
        : ServerLoad(Engine::MySql, file, columns, {}), Removable(removable)
    {
        Loaded = "people_new";
    }

    void begin() override {}
    void write(const Record&) override {}
    void finish() override {}
    bool abandon() noexcept override { return Removable; }

private:
    bool Removable;
};

/// The notes of a load that is abandoned.
std::vector<std::string> notesOfAbandoned(bool removable)
{
    const std::vector<Column> columns(1, Column{.Name = "name", .Type = ColumnType::Text});
    ServerTarget target([removable](const std::string& file, const std::vector<Column>& all) {
        return std::make_unique<StubbornLoad>(file, all, removable);
    });
    target.begin("people.dbf", columns);
    EXPECT_EQ(target.destination(), "table people");
    target.abandon();
    target.abandon();
    std::vector<std::string> texts;
    for (const Note& note : target.notes()) {
        EXPECT_FALSE(note.Loss) << note.Text;
        texts.push_back(note.Text);
    }
    return texts;
}

TEST(ServerTarget, ANoteNamesTheTableThatCannotBeRemoved)
{
    EXPECT_EQ(notesOfAbandoned(true), std::vector<std::string>{});
    EXPECT_EQ(notesOfAbandoned(false), std::vector<std::string>{"a table people_new may be left in the database"});
}

}  // namespace
