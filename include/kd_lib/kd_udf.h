/// \file
/// The whole support library `libkd_udf`.
#pragma once

#include <kd_lib/blanks.h>
#include <kd_lib/byteorder.h>
#include <kd_lib/console.h>
#include <kd_lib/dates.h>
#include <kd_lib/path.h>
#include <kd_lib/replace.h>
#include <kd_lib/text.h>
#include <kd_lib/tokenizer.h>
