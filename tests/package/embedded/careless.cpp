// Draws warnings that the libraries' own code may not: they must not stop an embedding project.
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
