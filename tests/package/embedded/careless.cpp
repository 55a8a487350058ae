// Causes warnings that are errors in the libraries' code: they must not be errors in a project that embeds them.
#include <kd_lib/kd_db.h>

unsigned careless(double value)
{
    int shadowed = (int)value;
    {
        int shadowed = 2;
        (void)shadowed;
    }
    return shadowed;
}
