#include <kd_lib/exchange/source.h>

#include <utility>

namespace kd_lib::exchange {

Source::~Source() = default;

bool Source::next()
{
    Current.Columns = &Columns;
    Current.Flaws.clear();
    Current.Plain = false;
    return read();
}

void Source::note(std::string text, bool loss)
{
    Notes.push_back({std::move(text), loss});
}

void Source::noteFact(std::string text)
{
    Notes.push_back({std::move(text), false, true});
}

}  // namespace kd_lib::exchange
