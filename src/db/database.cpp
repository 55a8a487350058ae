#include <kd_lib/database.h>

namespace kd_lib {

template class Database<DatabaseTable>;

}  // namespace kd_lib
