#include <kd_lib/exchange/serverrows.h>

#include <utility>

namespace kd_lib::exchange {

void ServerRows::run(std::string sql)
{
    Sql = std::move(sql);
    rerun();
}

void ServerRows::rerun()
{
    Number = 0;
    Pending = Running = start();
}

/// Makes the next row the current one; false at the end.
bool ServerRows::advance()
{
    if (!std::exchange(Pending, false)) {
        Running = Running && take();
    }
    Number += Running ? 1 : 0;
    return Running;
}

bool ServerRows::read()
{
    if (!advance()) {
        return false;
    }
    Current.Number = Number;
    Current.Cells.resize(Columns.size());
    fill();
    ++Read;
    return true;
}

void ServerRows::seek(std::uint64_t number)
{
    if (number <= Number) {
        while (Running) {
            Running = take();
        }
        forbidChanges();
        rerun();
    }
    while (Number + 1 < number && advance()) {
    }
}

}  // namespace kd_lib::exchange
