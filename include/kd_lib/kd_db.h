/// \file
/// The whole table-access library `libkd_db`, with the support library under it.
#pragma once

#include <kd_lib/kd_udf.h>

#include <kd_lib/asciitable.h>
#include <kd_lib/database.h>
#include <kd_lib/databasetable.h>
#include <kd_lib/filetable.h>
#include <kd_lib/sqldatabase.h>
#include <kd_lib/sqliteconnection.h>
#include <kd_lib/sqlkeyword.h>
#include <kd_lib/sqlliteral.h>
#include <kd_lib/sqlquery.h>
#include <kd_lib/tablefield.h>
#include <kd_lib/tablefields.h>
#include <kd_lib/version.h>
#include <kd_lib/xbase2sql.h>
#include <kd_lib/xbasememory.h>
#include <kd_lib/xbasetable.h>
