#include <kd_lib/version.h>

#include <kd_lib/dates.h>
#include <kd_lib/text.h>

const unsigned char kd_db_1VersionString[] = "@(#)PROGRAM:kd_db.1  PROJECT:kd_lib-1.1\n";

const double kd_db_1VersionNumber = 1.1;
